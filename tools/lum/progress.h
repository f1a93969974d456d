// SPDX-License-Identifier: MIT
// A line on standard error while many frames are converted: only when somebody watches, so only
// on a terminal.
#ifndef LUM_TOOLS_PROGRESS_H
#define LUM_TOOLS_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <optional>

namespace lum_tool {

class Progress {
 public:
  explicit Progress(std::optional<uint64_t> total);
  ~Progress();
  void done(uint64_t frames);

 private:
  using Clock = std::chrono::steady_clock;
  std::optional<uint64_t> total_;
  bool shown_;
  bool drawn_ = false;
  Clock::time_point start_, last_;
};

}  // namespace lum_tool

#endif
