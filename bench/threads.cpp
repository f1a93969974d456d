// SPDX-License-Identifier: MIT
#include "threads.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

namespace lum::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRounds = 9;
constexpr double kTurnSeconds = 0.03;

double seconds_since(Clock::time_point begin) {
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

// Frames a second of all threads. Each ends with a whole frame after the same time, so that all of
// them run during nearly all of it.
double frames_per_second(const Conversion& convert, const std::vector<Buffers>& buffers,
                         bool in_place, unsigned count) {
  std::atomic<unsigned> waiting{count};
  std::vector<double> rates(count);
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      uint8_t* const src = buffers[i].src(0);
      uint8_t* const dst = in_place ? src : buffers[i].dst(0);
      convert(dst, src);  // into this processor's caches
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      const Clock::time_point begin = Clock::now();
      int frames = 0;
      double seconds;
      do {
        convert(dst, src);
        ++frames;
        seconds = seconds_since(begin);
      } while (seconds < kTurnSeconds);
      rates[i] = frames / seconds;
    });
  }
  double sum = 0;
  for (unsigned i = 0; i < count; ++i) {
    threads[i].join();
    sum += rates[i];
  }
  return sum;
}

}  // namespace

std::vector<ThreadsResult> measure_threads(const Row& row, FrameSize size, Level level,
                                           const std::vector<unsigned>& threads) {
  std::vector<Buffers> buffers;
  for (unsigned i = 0; i < *std::max_element(threads.begin(), threads.end()); ++i) {
    buffers.emplace_back(size, 1);
  }
  const Traffic traffic = row.traffic(size.width, size.height);
  const std::string fastest = measure(row, size, {level}, {}, buffers[0], {}).loop;

  struct Contender {
    std::string name;
    bool is_loop;
    Conversion convert;
  };
  std::vector<Contender> contenders = {
      {kLevelNames[static_cast<unsigned>(level)], false, [&, level](uint8_t* dst, uint8_t* src) {
         row.run(*kernels_of(level), {dst, src, size.width, size.height});
       }}};
  for (const Loop& loop : roofline_loops(traffic)) {
    if (loop.name != fastest) continue;
    contenders.push_back({fastest, true, [&traffic, run = loop.run](uint8_t* dst, uint8_t* src) {
                            run(dst, src, traffic);
                          }});
  }

  std::vector<std::vector<double>> rates(contenders.size() * threads.size());
  for (int round = 0; round < kRounds; ++round) {
    size_t at = 0;
    for (const Contender& c : contenders) {
      for (const unsigned count : threads) {
        rates[at++].push_back(frames_per_second(c.convert, buffers, row.in_place, count));
      }
    }
  }
  std::vector<ThreadsResult> results;
  size_t at = 0;
  for (const Contender& c : contenders) {
    for (const unsigned count : threads) {
      std::vector<double>& r = rates[at++];
      std::sort(r.begin(), r.end());
      const double pixels = static_cast<double>(size.pixels());
      results.push_back(
          {row.name, size, c.name, c.is_loop, count, r.back() * pixels, r[r.size() / 2] * pixels});
    }
  }
  return results;
}

}  // namespace lum::bench
