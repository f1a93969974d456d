// SPDX-License-Identifier: MIT
#include "guard.h"

#include <algorithm>
#include <memory>

namespace lum::bench {
namespace {

constexpr double kTolerance = 1.03;
constexpr int kAttempts = 5;
constexpr double kLongest = 4;  // times the wanted time

// How much longer than n's w's times are, by what says less of it.
double ratio(const Times& w, const Times& n) {
  return std::min(w.minimum / n.minimum, w.median / n.median);
}

std::vector<Slower> slower_of(const std::vector<Level>& levels, const std::vector<Times>& times) {
  std::vector<Slower> found;
  for (size_t i = 1; i < levels.size(); ++i) {
    Slower worst = {levels[i], levels[i], kTolerance};
    for (size_t j = 0; j < i; ++j) {
      const double r = ratio(times[i], times[j]);
      if (r > worst.ratio) worst = {levels[i], levels[j], r};
    }
    if (worst.ratio > kTolerance) found.push_back(worst);
  }
  return found;
}

}  // namespace

std::vector<Slower> find_slower(const Row& row, FrameSize size, const std::vector<Level>& levels,
                                const Buffers& buffers, MeasureOptions options) {
  options.loops = false;
  const double longest = kLongest * options.min_seconds;
  std::vector<Times> least(levels.size(), Times{1e9, 1e9});
  std::vector<Slower> found;
  std::vector<std::unique_ptr<Buffers>> elsewhere;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    // None is freed before: its memory would be what the next ones get.
    if (attempt > 0) elsewhere.push_back(std::make_unique<Buffers>(size, buffers.pairs()));
    const Buffers& used = elsewhere.empty() ? buffers : *elsewhere.back();
    const RowResult result = measure(row, size, levels, {}, used, options);
    for (size_t i = 0; i < levels.size(); ++i) {
      least[i].minimum = std::min(least[i].minimum, result.levels[i].minimum);
      least[i].median = std::min(least[i].median, result.levels[i].median);
    }
    found = slower_of(levels, least);
    if (found.empty()) break;
    options.min_seconds = std::min(longest, 2 * options.min_seconds);
  }
  return found;
}

}  // namespace lum::bench
