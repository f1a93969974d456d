// SPDX-License-Identifier: MIT
// Conversions from many threads at once, the first use of the library included: each test is a
// process of its own under ctest, so that what is chosen and built on first use is so here.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "lum/lum.h"
#include "reference.h"
#include "test_support.h"

namespace lum::test {
namespace {

constexpr uint32_t kWidth = 200, kHeight = 34;  // wider than the widest vector, several rows

LumImage describe(const char* name, uint8_t* data) {
  LumImage image = {};
  image.size = sizeof image;
  image.data = data;
  const uint32_t length = static_cast<uint32_t>(strlen(name));
  EXPECT_EQ(LumSetImageInfoFromString(name, length, kWidth, kHeight, &image), 0) << name;
  return image;
}

TEST(Threads, ConvertFromTheFirstCallOn) {
  constexpr int kThreads = 8, kRounds = 20;
  Bytes frame = random_bytes(kWidth * kHeight, 1);  // all threads read one frame
  Bytes expected(kWidth * kHeight * 3);
  reference::store_mosaic(LUM_FORMAT_BGR24,
                          reference::bayer(kWidth, kHeight, LumBayerPatternRGGB,
                                           reference::bytes_of(frame.data(), kWidth)),
                          kWidth, kHeight, expected.data());

  std::atomic<int> ready{0}, wrong{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      Bytes pixels(expected.size());
      ready++;
      while (ready < kThreads) std::this_thread::yield();
      for (int round = 0; round < kRounds; ++round) {
        std::fill(pixels.begin(), pixels.end(), uint8_t{0});
        const LumImage from = describe("PixelFormatBayerRG8", frame.data());
        LumImage to = describe("BGR24", pixels.data());
        if (LumImageTransform(&from, &to, nullptr, 0) != 0 || pixels != expected) wrong++;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace lum::test
