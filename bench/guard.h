// SPDX-License-Identifier: MIT
// Levels that are slower than a narrower one.
#ifndef LUM_BENCH_GUARD_H
#define LUM_BENCH_GUARD_H

#include <vector>

#include "measure.h"

namespace lum::bench {

struct Slower {
  Level wide, narrow;
  double ratio;  // of the least times or of the medians, whichever is less
};

// The levels, narrowest first, that take more than 3 % longer than one before them, by their least
// times and by their medians: the least one is one lucky turn, and what is slower is so in the
// middle, too. What looks so is measured again a few times, longer each time and on other buffers,
// and the least minimum and the least median count: other programs on the machine make a time
// longer, never shorter, and which lines of the caches a buffer has is chance. Levels with the same
// kernel come out equal.
std::vector<Slower> find_slower(const Row& row, FrameSize size, const std::vector<Level>& levels,
                                const Buffers& buffers, MeasureOptions options);

}  // namespace lum::bench

#endif
