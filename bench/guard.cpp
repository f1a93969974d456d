// SPDX-License-Identifier: MIT
#include "guard.h"

#include <algorithm>
#include <memory>

namespace lum::bench {
namespace {

constexpr double kTolerance = 1.03;
constexpr int kAttempts = 5;
constexpr double kLongest = 4;  // times the wanted time

std::vector<Slower> slower_of(const std::vector<Level>& levels, const std::vector<double>& least) {
  std::vector<Slower> found;
  size_t best = 0;
  for (size_t i = 1; i < levels.size(); ++i) {
    if (least[i] > kTolerance * least[best]) {
      found.push_back({levels[i], levels[best], least[i] / least[best]});
    }
    if (least[i] < least[best]) best = i;
  }
  return found;
}

}  // namespace

std::vector<Slower> find_slower(const Row& row, FrameSize size, const std::vector<Level>& levels,
                                const Buffers& buffers, MeasureOptions options) {
  options.loops = false;
  const double longest = kLongest * options.min_seconds;
  std::vector<double> least(levels.size(), 1e9);
  std::vector<Slower> found;
  std::vector<std::unique_ptr<Buffers>> elsewhere;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    // None is freed before: its memory would be what the next ones get.
    if (attempt > 0) elsewhere.push_back(std::make_unique<Buffers>(size, buffers.pairs()));
    const Buffers& used = elsewhere.empty() ? buffers : *elsewhere.back();
    const RowResult result = measure(row, size, levels, {}, used, options);
    for (size_t i = 0; i < levels.size(); ++i) {
      least[i] = std::min(least[i], result.levels[i].minimum);
    }
    found = slower_of(levels, least);
    if (found.empty()) break;
    options.min_seconds = std::min(longest, 2 * options.min_seconds);
  }
  return found;
}

}  // namespace lum::bench
