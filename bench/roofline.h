// SPDX-License-Identifier: MIT
// What the memory system allows: loops that read and write as many bytes as a conversion and
// compute nothing.
#ifndef LUM_BENCH_ROOFLINE_H
#define LUM_BENCH_ROOFLINE_H

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <vector>

namespace lum::bench {

// The bytes that one call moves.
struct Traffic {
  size_t read = 0, written = 0;
  bool keeps_fourth = false;  // every fourth destination byte keeps its value
  bool in_place = false;      // source and destination are the same buffer
};

struct Loop {
  std::string name;
  // destination and source, aligned to 64 bytes
  void (*run)(uint8_t* dst, const uint8_t* src, const Traffic& traffic);
};

// The loops that this processor can run and that move this traffic. Which of them is the fastest
// depends on the frame's size and on the machine, so they all are measured.
std::vector<Loop> roofline_loops(const Traffic& traffic);

}  // namespace lum::bench

#endif
