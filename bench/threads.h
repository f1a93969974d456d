// SPDX-License-Identifier: MIT
// Several threads, each converting frames of its own.
#ifndef LUM_BENCH_THREADS_H
#define LUM_BENCH_THREADS_H

#include <string>
#include <vector>

#include "measure.h"

namespace lum::bench {

struct ThreadsResult {
  std::string row;
  FrameSize size;
  std::string contender;  // a level, or the loop that is the fastest of all on one thread
  bool is_loop;
  unsigned threads;
  double pixels_per_second, median;  // of all threads together; the most, the median
};

// One result for the level and one for the loop for each number of threads, which take turns.
std::vector<ThreadsResult> measure_threads(const Row& row, FrameSize size, Level level,
                                           const std::vector<unsigned>& threads);

}  // namespace lum::bench

#endif
