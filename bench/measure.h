// SPDX-License-Identifier: MIT
// One row at one frame size: levels, loops and peers timed in turn.
#ifndef LUM_BENCH_MEASURE_H
#define LUM_BENCH_MEASURE_H

#include <stdint.h>

#include <memory>
#include <string>
#include <vector>

#include "peers/peers.h"
#include "rows.h"

namespace lum::bench {

struct FrameSize {
  uint32_t width, height;
  size_t pixels() const { return size_t{width} * height; }
};

struct MeasureOptions {
  double min_seconds = 0.05;
  unsigned rotate = 1;
  bool loops = true;
  size_t stream_above = 0;  // as in Kernels
};

// Pairs of buffers, large enough for every row, on pages that are in memory.
class Buffers {
 public:
  Buffers(FrameSize size, unsigned pairs);

  unsigned pairs() const { return static_cast<unsigned>(pairs_.size()); }
  uint8_t* src(unsigned pair) const { return pairs_[pair].src.get(); }
  uint8_t* dst(unsigned pair) const { return pairs_[pair].dst.get(); }

 private:
  struct Free {
    void operator()(uint8_t* p) const;
  };
  using Bytes = std::unique_ptr<uint8_t, Free>;
  static Bytes allocate(size_t bytes);

  struct Pair {
    Bytes src, dst;
  };
  std::vector<Pair> pairs_;
};

// Seconds for a call.
struct Times {
  double minimum, median;
};

struct PeerResult {
  const Peer* peer;
  Times times;
};

struct RowResult {
  std::string name;
  FrameSize size;
  size_t bytes;  // read and written
  std::vector<Times> levels;
  Times roofline;    // the best of all loops
  std::string loop;  // the one with the least minimum
  std::vector<PeerResult> peers;

  double nanoseconds_per_pixel(double seconds) const {
    return seconds * 1e9 / static_cast<double>(size.pixels());
  }
  double gigabytes_per_second(double seconds) const {
    return static_cast<double>(bytes) / seconds * 1e-9;
  }
};

RowResult measure(const Row& row, FrameSize size, const std::vector<Level>& levels,
                  const std::vector<const Peer*>& peers, const Buffers& buffers,
                  const MeasureOptions& options);

}  // namespace lum::bench

#endif
