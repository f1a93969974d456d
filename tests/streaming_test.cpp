// SPDX-License-Identifier: MIT
// Frames that are streamed past the cache have the bytes of those that are not, at any alignment,
// and nothing around them is touched.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>

#include "bayer/mosaic.h"
#include "convert/flat.h"
#include "convert/rows.h"
#include "direct_support.h"

namespace lum::test {
namespace {

struct Conversion {
  std::string name;
  size_t src_bytes, dst_bytes;  // of a pixel, at most
  std::function<void(const Kernels&, uint8_t* dst, const uint8_t* src, uint32_t width,
                     uint32_t height)>
      run;
};

std::vector<Conversion> flat_conversions() {
  std::vector<Conversion> list;
  const Kernels& base = *kernels_of(Level::base);
  for (size_t s = 0; s < kSourceCount; ++s) {
    const Source source = static_cast<Source>(s);
    if (!kSources[s].memory_bound || kSources[s].rows != 1) continue;
    for (size_t d = 0; d < kSinkCount; ++d) {
      const Sink sink = static_cast<Sink>(d);
      if (base.at(source, sink) == nullptr) continue;
      list.push_back(
          {std::string(kSources[s].name) + " to " + kSinks[d].name, 4, 6,
           [=](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width,
               uint32_t height) { convert_flat(k, source, sink, dst, src, width * height); }});
    }
  }
  list.push_back(
      {"joined planes", 8, 8,
       [](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height) {
         const uint32_t n = width * height;
         const uint8_t* const planes[] = {src, src + 2 * n, src + 4 * n, src + 6 * n};
         for (const uint32_t channels : {2, 3, 4}) {
           planar_to_packed(k, dst, planes, n, channels, 1);
           planar_to_packed(k, dst, planes, n, channels, 2);
         }
       }});
  for (uint32_t packing = 0; packing < kPackingCount; ++packing) {
    list.push_back(
        {"packing " + std::to_string(packing), 2, 2,
         [=](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height) {
           unpack_to_16(k, dst, src, width * height, packing, 4, 1);
         }});
  }
  return list;
}

std::vector<Conversion> frame_conversions() {
  std::vector<Conversion> list;
  for (const Sink sink : {Sink::bgr24, Sink::mono8_rec601, Sink::uyvy, Sink::bgra32}) {
    list.push_back(
        {std::string("mosaic to ") + kSinks[static_cast<size_t>(sink)].name, 2, 4,
         [=](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height) {
           convert_mosaic8(k, {dst, src, width, height, red_phase(1), sink});
         }});
  }
  list.push_back({"upside down", 3, 3,
                  [](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width,
                     uint32_t height) { flip(k, dst, src, width, height, 3, kUpsideDown); }});
  list.push_back(
      {"interlaced to progressive", 3, 3,
       [](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height) {
         interlaced_to_progressive(k, dst, src, 3 * width, height);
       }});
  return list;
}

void compare(const Kernels& kernels, const std::string& level, const Conversion& conversion,
             uint32_t width, uint32_t height) {
  Kernels cached = kernels, streamed = kernels;
  cached.stream_above = SIZE_MAX;
  streamed.stream_above = 1;
  const size_t pixels = size_t{width} * height;
  const Bytes src = random_bytes(pixels * conversion.src_bytes, pixels);
  constexpr size_t kAround = 64;
  for (const size_t offset : {0, 1, 37}) {
    Bytes expected = random_bytes(pixels * conversion.dst_bytes + 3 * kAround, 7),
          actual = expected;
    uint8_t* const to = expected.data() + kAround + offset;
    const ptrdiff_t moved = actual.data() - expected.data();
    conversion.run(cached, to, src.data(), width, height);
    conversion.run(streamed, to + moved, src.data(), width, height);
    ASSERT_TRUE(expected == actual) << conversion.name << ", " << width << " x " << height
                                    << ", offset " << offset << ", level " << level;
  }
}

// The pieces in which rows are streamed have 384 to 6144 pixels.
TEST(Streaming, FlatRunsHaveTheSameBytes) {
  at_every_level([](const Kernels& kernels, const std::string& level) {
    if (kernels.stream == nullptr) return;
    for (const Conversion& conversion : flat_conversions()) {
      for (const uint32_t width : {4, 24, 2048, 2052, 6148}) {
        compare(kernels, level, conversion, width, 1);
        if (HasFatalFailure()) return;
      }
    }
  });
}

TEST(Streaming, FramesHaveTheSameBytes) {
  at_every_level([](const Kernels& kernels, const std::string& level) {
    if (kernels.stream == nullptr) return;
    for (const Conversion& conversion : frame_conversions()) {
      for (const uint32_t width : {4, 68, 2048, 2052, 6148}) {
        compare(kernels, level, conversion, width, 8);
        if (HasFatalFailure()) return;
      }
    }
  });
}

}  // namespace
}  // namespace lum::test
