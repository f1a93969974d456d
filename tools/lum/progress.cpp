// SPDX-License-Identifier: MIT
#include "progress.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace lum_tool {
namespace {

constexpr auto kRedraw = std::chrono::milliseconds(100);
constexpr unsigned kBarWidth = 30;

}  // namespace

Progress::Progress(std::optional<uint64_t> total)
    : total_(total),
      shown_(isatty(STDERR_FILENO) && total.value_or(2) > 1),
      start_(Clock::now()),
      last_(start_) {}

Progress::~Progress() {
  if (drawn_) std::fputc('\n', stderr);
}

void Progress::done(uint64_t frames) {
  const Clock::time_point now = Clock::now();
  if (!shown_ || (now - last_ < kRedraw && frames != total_.value_or(0))) return;
  last_ = now;
  drawn_ = true;
  const double rate = double(frames) / (std::chrono::duration<double>(now - start_).count() + 1e-9);
  if (!total_) {
    std::fprintf(stderr, "\r%llu frames, %.1f frames/s\033[K", (unsigned long long)frames, rate);
    return;
  }
  const auto filled = static_cast<unsigned>(kBarWidth * frames / *total_);
  const std::string bar = std::string(filled, '=') + std::string(kBarWidth - filled, ' ');
  std::fprintf(stderr, "\r[%s] %llu/%llu frames, %.1f frames/s, %.0f s left\033[K", bar.c_str(),
               (unsigned long long)frames, (unsigned long long)*total_, rate,
               double(*total_ - frames) / rate);
}

}  // namespace lum_tool
