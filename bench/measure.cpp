// SPDX-License-Identifier: MIT
#include "measure.h"

#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <algorithm>
#include <new>
#include <random>

namespace lum::bench {
namespace {

// Wall-clock seconds. Processor time would hide the time slices that other programs take, but under
// a hypervisor its accounting now and then reports less than passed, and a minimum finds just that.
double now() {
  timespec t;
  clock_gettime(CLOCK_MONOTONIC, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

// Samples shorter than this would show the clock.
constexpr double kShortestSample = 30e-6;
// A turn is long enough for the caches to be this contender's, and short enough for all of them to
// meet the same disturbances.
constexpr double kTurn = 200e-6;
constexpr int kMostSamplesInTurn = 16;
// Loops that are this much slower than the fastest after a few rounds are out of the race, and so
// are peers that are this much slower than the fastest level.
constexpr int kTrialRounds = 5;
constexpr double kHopelessLoop = 1.25, kHopelessPeer = 2;
// A peer that is this much slower than the fastest level, with calls this long, does not start.
constexpr double kTooSlow = 6, kLongCall = 20e-3;
// Contenders with long calls rest after this time and the trial rounds, or after all the time that
// there is, if that is more.
constexpr double kEnough = 0.5;
constexpr int kLeastRounds = 12;
// The minima stand still when the last third of the rounds lowered none of them by more.
constexpr double kStill = 0.005;
// Rounds end when this many times the wanted time has passed, whether they stand still or not.
constexpr double kPatience = 4;

enum class Kind { level, loop, peer };

struct Contender {
  Conversion call;
  std::string name;
  Kind kind;
  bool racing = true;
  int calls_in_sample = 1;
  double seconds = 0;
  std::vector<double> samples = {};
  std::vector<double> minima = {};  // after each round

  double minimum() const { return minima.empty() ? 1e9 : minima.back(); }
};

class Race {
 public:
  Race(const Buffers& buffers, bool in_place) : buffers_(buffers), in_place_(in_place) {}

  // Levels before peers.
  void add(Contender contender) {
    double once = sample(contender, 1);
    if (contender.kind == Kind::peer && once > kLongCall && once > kTooSlow * fastest_level_) {
      contender.samples = {once};
      contender.minima = {once};
      contender.racing = false;
    } else {
      // Again: the first call may have met code and data that no cache had.
      once = sample(contender, 1);
      contender.calls_in_sample =
          std::max(1, static_cast<int>(kShortestSample / std::max(once, 1e-8)));
    }
    if (contender.kind == Kind::level) fastest_level_ = std::min(fastest_level_, once);
    contenders_.push_back(std::move(contender));
  }

  void run(double min_seconds) {
    const double most = kPatience * min_seconds, enough = std::max(kEnough, most);
    for (int round = 0;; ++round) {
      double least = 1e9;
      for (Contender& c : contenders_) {
        if (!c.racing) continue;
        if (round <= kTrialRounds || c.seconds < enough) turn(c);
        least = std::min(least, c.seconds);
      }
      if (round == kTrialRounds) drop_hopeless();
      if (round + 1 < kLeastRounds || least < min_seconds) continue;
      if (still() || least >= most) return;
    }
  }

  const std::vector<Contender>& contenders() const { return contenders_; }

 private:
  double sample(Contender& c, int calls) {
    const double begin = now();
    for (int i = 0; i < calls; ++i) {
      uint8_t* const src = buffers_.src(next_pair_);
      uint8_t* const dst = in_place_ ? src : buffers_.dst(next_pair_);
      next_pair_ = (next_pair_ + 1) % buffers_.pairs();
      c.call(dst, src);
      benchmark::DoNotOptimize(dst);
      benchmark::ClobberMemory();
    }
    return (now() - begin) / calls;
  }

  void turn(Contender& c) {
    // One call that does not count: the contender before may have written past the caches. Long
    // calls show little of that.
    if (buffers_.pairs() == 1 && c.minimum() < kLongCall) sample(c, 1);
    double spent = 0, least = c.minimum();
    for (int i = 0; i < kMostSamplesInTurn && spent < kTurn; ++i) {
      const double seconds = sample(c, c.calls_in_sample);
      c.samples.push_back(seconds);
      least = std::min(least, seconds);
      spent += seconds * c.calls_in_sample;
    }
    c.seconds += spent;
    c.minima.push_back(least);
  }

  double best(Kind kind) const {
    double best = 1e9;
    for (const Contender& c : contenders_) {
      if (c.kind == kind) best = std::min(best, c.minimum());
    }
    return best;
  }

  void drop_hopeless() {
    const double loop = kHopelessLoop * best(Kind::loop), peer = kHopelessPeer * best(Kind::level);
    for (Contender& c : contenders_) {
      if (c.kind == Kind::loop && c.minimum() > loop) c.racing = false;
      if (c.kind == Kind::peer && c.minimum() > peer) c.racing = false;
    }
  }

  bool still() const {
    return std::all_of(contenders_.begin(), contenders_.end(), [](const Contender& c) {
      return !c.racing || c.minima.back() > (1 - kStill) * c.minima[c.minima.size() * 2 / 3];
    });
  }

  const Buffers& buffers_;
  bool in_place_;
  // One count for all: a pair that the contender before has just used would not be cold.
  unsigned next_pair_ = 0;
  double fastest_level_ = 1e9;
  std::vector<Contender> contenders_;
};

Times times_of(const Contender& c) {
  std::vector<double> sorted = c.samples;
  std::sort(sorted.begin(), sorted.end());
  return {sorted.front(), sorted[sorted.size() / 2]};
}

}  // namespace

void Buffers::Free::operator()(uint8_t* p) const { free(p); }

Buffers::Bytes Buffers::allocate(size_t bytes) {
  constexpr size_t kPage = 4096, kBlock = (1 << 20) - 64;  // no power of 2: rows differ
  auto* const p = static_cast<uint8_t*>(aligned_alloc(kPage, (bytes + kPage - 1) / kPage * kPage));
  if (p == nullptr) throw std::bad_alloc();
  // Bytes of the middle of the range, so that clamps seldom act; and the pages get faulted in.
  static const std::vector<uint8_t> block = [] {
    std::mt19937 random(1);
    std::uniform_int_distribution<unsigned> middle(48, 208);
    std::vector<uint8_t> made(kBlock);
    for (uint8_t& byte : made) byte = static_cast<uint8_t>(middle(random));
    return made;
  }();
  for (size_t i = 0; i < bytes; i += kBlock) {
    memcpy(p + i, block.data(), std::min(kBlock, bytes - i));
  }
  return Bytes(p);
}

Buffers::Buffers(FrameSize size, unsigned pairs) {
  for (unsigned i = 0; i < pairs; ++i) {
    pairs_.push_back({allocate(size.pixels() * kLargestSourcePixel),
                      allocate(size.pixels() * kLargestDestinationPixel)});
  }
}

RowResult measure(const Row& row, FrameSize size, const std::vector<Level>& levels,
                  const std::vector<const Peer*>& peers, const Buffers& buffers,
                  const MeasureOptions& options) {
  const Traffic traffic = row.traffic(size.width, size.height);
  Race race(buffers, row.in_place);
  for (const Level level : levels) {
    Kernels kernels = *kernels_of(level);
    kernels.stream_above = options.stream_above;
    race.add({[&row, kernels, size](uint8_t* dst, uint8_t* src) {
                row.run(kernels, {dst, src, size.width, size.height});
              },
              kLevelNames[static_cast<unsigned>(level)], Kind::level});
  }
  if (options.loops) {
    for (const Loop& loop : roofline_loops(traffic)) {
      race.add({[run = loop.run, &traffic](uint8_t* dst, uint8_t* src) { run(dst, src, traffic); },
                loop.name, Kind::loop});
    }
  }
  for (const Peer* const peer : peers) {
    race.add({peer->prepare(size.width, size.height), peer->name(), Kind::peer});
  }
  race.run(options.min_seconds);

  RowResult result = {row.name, size, traffic.read + traffic.written, {}, {1e9, 1e9}, {}, {}};
  for (const Contender& c : race.contenders()) {
    const Times times = times_of(c);
    if (c.kind == Kind::level) {
      result.levels.push_back(times);
    } else if (c.kind == Kind::peer) {
      result.peers.push_back({peers[result.peers.size()], times});
    } else {
      if (times.minimum < result.roofline.minimum) result.loop = c.name;
      // Each the best of all loops, whichever that is.
      result.roofline.minimum = std::min(result.roofline.minimum, times.minimum);
      result.roofline.median = std::min(result.roofline.median, times.median);
    }
  }
  return result;
}

}  // namespace lum::bench
