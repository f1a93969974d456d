// SPDX-License-Identifier: MIT
#include "measure.h"

#include <benchmark/benchmark.h>
#include <stdlib.h>
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
// Loops that are this much slower than the fastest after a few rounds are out of the race.
constexpr int kTrialRounds = 5;
constexpr double kHopeless = 1.25;
constexpr int kLeastRounds = 12;
// The minima stand still when the last third of the rounds lowered none of them by more.
constexpr double kStill = 0.005;
// Rounds end when this many times the wanted time has passed, whether they stand still or not.
constexpr double kPatience = 4;

struct Contender {
  std::function<void(uint8_t* dst, uint8_t* src)> call;
  std::string name;
  bool is_loop;
  int calls_in_sample = 1;
  unsigned next_pair = 0;
  double seconds = 0;
  std::vector<double> samples = {};
  std::vector<double> minima = {};  // after each round

  double minimum() const { return minima.empty() ? 1e9 : minima.back(); }
};

class Race {
 public:
  Race(const Buffers& buffers, bool in_place) : buffers_(buffers), in_place_(in_place) {}

  void add(Contender contender) {
    // Twice: the first call may meet code and data that no cache has.
    sample(contender, 1);
    const double once = sample(contender, 1);
    contender.calls_in_sample =
        std::max(1, static_cast<int>(kShortestSample / std::max(once, 1e-8)));
    contenders_.push_back(std::move(contender));
  }

  void run(double min_seconds) {
    for (int round = 0;; ++round) {
      for (Contender& c : contenders_) turn(c);
      if (round == kTrialRounds) drop_hopeless();
      if (round + 1 < kLeastRounds) continue;
      double least = 1e9;
      for (const Contender& c : contenders_) least = std::min(least, c.seconds);
      if (least < min_seconds) continue;
      if (still() || least > kPatience * min_seconds) return;
    }
  }

  const std::vector<Contender>& contenders() const { return contenders_; }

 private:
  double sample(Contender& c, int calls) {
    const double begin = now();
    for (int i = 0; i < calls; ++i) {
      uint8_t* const src = buffers_.src(c.next_pair);
      uint8_t* const dst = in_place_ ? src : buffers_.dst(c.next_pair);
      c.next_pair = (c.next_pair + 1) % buffers_.pairs();
      c.call(dst, src);
      benchmark::DoNotOptimize(dst);
      benchmark::ClobberMemory();
    }
    return (now() - begin) / calls;
  }

  void turn(Contender& c) {
    // One call that does not count: the contender before may have written past the caches.
    if (buffers_.pairs() == 1) sample(c, 1);
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

  void drop_hopeless() {
    double best = 1e9;
    for (const Contender& c : contenders_) {
      if (c.is_loop) best = std::min(best, c.minimum());
    }
    const auto hopeless = [&](const Contender& c) {
      return c.is_loop && c.minimum() > kHopeless * best;
    };
    contenders_.erase(std::remove_if(contenders_.begin(), contenders_.end(), hopeless),
                      contenders_.end());
  }

  bool still() const {
    return std::all_of(contenders_.begin(), contenders_.end(), [](const Contender& c) {
      return c.minima.back() > (1 - kStill) * c.minima[c.minima.size() * 2 / 3];
    });
  }

  const Buffers& buffers_;
  bool in_place_;
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
  constexpr size_t kPage = 4096;
  auto* const p = static_cast<uint8_t*>(aligned_alloc(kPage, (bytes + kPage - 1) / kPage * kPage));
  if (p == nullptr) throw std::bad_alloc();
  // Bytes of the middle of the range, so that clamps seldom act; and the pages get faulted in.
  std::mt19937 random(1);
  std::uniform_int_distribution<unsigned> middle(48, 208);
  for (size_t i = 0; i < bytes; ++i) p[i] = static_cast<uint8_t>(middle(random));
  return Bytes(p);
}

Buffers::Buffers(FrameSize size, unsigned pairs) {
  for (unsigned i = 0; i < pairs; ++i) {
    pairs_.push_back({allocate(size.pixels() * kLargestSourcePixel),
                      allocate(size.pixels() * kLargestDestinationPixel)});
  }
}

RowResult measure(const Row& row, FrameSize size, const std::vector<Level>& levels,
                  const Buffers& buffers, const MeasureOptions& options) {
  const Traffic traffic = row.traffic(size.width, size.height);
  Race race(buffers, row.in_place);
  for (const Level level : levels) {
    const Kernels* const kernels = kernels_of(level);
    race.add({[&row, kernels, size](uint8_t* dst, uint8_t* src) {
                row.run(*kernels, {dst, src, size.width, size.height});
              },
              kLevelNames[static_cast<unsigned>(level)], false});
  }
  for (const Loop& loop : roofline_loops(traffic)) {
    race.add({[run = loop.run, &traffic](uint8_t* dst, uint8_t* src) { run(dst, src, traffic); },
              loop.name, true});
  }
  race.run(options.min_seconds);

  RowResult result = {row.name, size, traffic.read + traffic.written, {}, {1e9, 1e9}, {}};
  for (const Contender& c : race.contenders()) {
    const Times times = times_of(c);
    if (!c.is_loop) {
      result.levels.push_back(times);
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
