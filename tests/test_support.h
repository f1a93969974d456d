// SPDX-License-Identifier: MIT
// What the conversion tests share: buffers between inaccessible pages, inputs that find faults, and
// the two checks that every entry point goes through.
#ifndef LUM_TESTS_TEST_SUPPORT_H
#define LUM_TESTS_TEST_SUPPORT_H

#include <gtest/gtest.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <vector>

#include "buffers.h"
#include "reference.h"

namespace lum::test {

using reference::Bytes;
using reference::Size;

inline bool environment_flag(const char* name) {
  const char* value = getenv(name);
  return value != nullptr && *value != '\0' && strcmp(value, "0") != 0;
}
// Thins out widths and inputs; for emulated processors.
inline bool quick() { return environment_flag("LUM_TEST_QUICK"); }

inline Bytes random_bytes(size_t n, uint64_t seed, unsigned kind = 0) {
  Random random(seed);
  Bytes out(n);
  fill(out.data(), n, kind, random);
  return out;
}

// Runs a conversion twice, with its buffers against the lower and against the upper inaccessible
// pages and the source write-protected, over random bytes, and compares the whole neighbourhood of
// the destination with what the reference wrote over the same bytes.
inline void expect_conversion(const std::string& label, const Bytes& source, size_t dst_bytes,
                              const std::function<uint32_t(uint8_t*, const uint8_t*)>& convert,
                              const std::function<void(uint8_t*)>& write_reference) {
  for (const bool at_end : {false, true}) {
    const Arena src_arena(source.size()), dst_arena(dst_bytes);
    uint8_t* src = src_arena.place(source.size(), at_end);
    std::copy(source.begin(), source.end(), src);
    src_arena.protect(PROT_READ);
    const Bytes before = random_bytes(dst_arena.size(), dst_bytes);
    std::copy(before.begin(), before.end(), dst_arena.begin());
    uint8_t* dst = dst_arena.place(dst_bytes, at_end);
    const size_t at = static_cast<size_t>(dst - dst_arena.begin());
    Bytes expected = before;
    write_reference(&expected[at]);

    const uint32_t code = convert(dst, src);
    ASSERT_EQ(code, 0u) << label << std::hex << " returned " << code;
    const auto diff = std::mismatch(expected.begin(), expected.end(), dst_arena.begin());
    if (diff.first == expected.end()) continue;
    const size_t bad = static_cast<size_t>(diff.first - expected.begin());
    const size_t shown = std::min<size_t>(16, expected.size() - bad);
    FAIL() << label << (at_end ? " (buffers at their end)" : " (buffers at their start)")
           << ": first difference at destination byte "
           << static_cast<ptrdiff_t>(bad) - static_cast<ptrdiff_t>(at) << " of " << dst_bytes
           << "\nexpected " << hex(&expected[bad], shown) << "\nactual   "
           << hex(dst_arena.begin() + bad, shown);
  }
}

// One way to spoil good arguments, and the code that has to come back for it.
template <class Args>
struct Refusal {
  const char* what;
  void (*spoil)(Args&);
  uint32_t code;
};

// The refusals are listed in the order of the checks. Each is tried alone and together with all
// that follow it: the earlier one must decide. Nothing may be written.
template <class Args, class Call>
void expect_refusals(const Args& good, const std::vector<Refusal<Args>>& refusals, Bytes& dst,
                     const Call& call) {
  const Bytes before = dst;
  for (size_t i = 0; i < refusals.size(); ++i) {
    Args alone = good, with_later = good;
    refusals[i].spoil(alone);
    for (size_t j = refusals.size(); j-- > i;) refusals[j].spoil(with_later);
    EXPECT_EQ(call(alone), refusals[i].code) << refusals[i].what;
    EXPECT_EQ(call(with_later), refusals[i].code) << refusals[i].what << ", and later faults";
    EXPECT_EQ(dst, before) << refusals[i].what << ": the destination was written";
  }
  EXPECT_EQ(call(good), 0u) << "the arguments are good until spoiled";
}

// The legacy codes.
constexpr uint32_t bad_argument(uint32_t position) { return 0x88000001u + position; }
constexpr uint32_t kNotImplemented = 0x88000012u;

// The two shapes of entry points, and what most of their arguments are refused for.
using FlatFunction = uint32_t (*)(uint8_t*, const uint8_t*, uint32_t count, uint32_t format);
struct FlatArgs {
  uint8_t* dst;
  const uint8_t* src;
  uint32_t count, format;
};
const Refusal<FlatArgs> kFlatNoDst = {"no destination", [](FlatArgs& a) { a.dst = nullptr; },
                                      bad_argument(1)};
const Refusal<FlatArgs> kFlatNoSrc = {"no source", [](FlatArgs& a) { a.src = nullptr; },
                                      bad_argument(2)};
template <uint32_t kCount>
Refusal<FlatArgs> bad_count() {
  return {"pixel count", [](FlatArgs& a) { a.count = kCount; }, bad_argument(3)};
}
template <uint32_t kFormat, class Args = FlatArgs>
Refusal<Args> bad_format() {
  return {"format not served", [](Args& a) { a.format = kFormat; }, kNotImplemented};
}

using MosaicFunction = uint32_t (*)(uint8_t*, const uint8_t*, uint32_t width, uint32_t height,
                                    uint32_t format, uint32_t pattern);
struct MosaicArgs {
  uint8_t* dst;
  const uint8_t* src;
  uint32_t width, height, format, pattern;
};
inline std::vector<Refusal<MosaicArgs>> mosaic_refusals() {
  using A = MosaicArgs;
  return {{"no destination", [](A& a) { a.dst = nullptr; }, bad_argument(1)},
          {"no source", [](A& a) { a.src = nullptr; }, bad_argument(2)},
          {"no width", [](A& a) { a.width = 0; }, bad_argument(3)},
          {"no height", [](A& a) { a.height = 0; }, bad_argument(4)},
          {"odd width", [](A& a) { a.width = 3; }, bad_argument(3)},
          {"odd height", [](A& a) { a.height = 3; }, bad_argument(4)}};
}
inline void expect_mosaic_refusals(MosaicFunction function,
                                   const std::vector<Refusal<MosaicArgs>>& refusals) {
  const Bytes src(256, 1);
  Bytes dst(512, 0xEE);
  expect_refusals<MosaicArgs>(
      {dst.data(), src.data(), 4, 4, 1, 0}, refusals, dst, [&](const MosaicArgs& a) {
        return function(a.dst, a.src, a.width, a.height, a.format, a.pattern);
      });
}

inline std::string describe(const std::string& function, Size size, uint32_t format,
                            uint32_t pattern) {
  return function + " " + std::to_string(size.width) + "x" + std::to_string(size.height) +
         " format " + std::to_string(format) + " pattern " + std::to_string(pattern);
}
inline void expect_mosaic(const std::string& name, MosaicFunction function, Size size,
                          uint32_t format, uint32_t pattern, const Bytes& src,
                          const std::function<void(uint8_t*)>& write_reference) {
  expect_conversion(
      describe(name, size, format, pattern), src,
      size.width * size.height * reference::pixel_bytes(format),
      [&](uint8_t* dst, const uint8_t* s) {
        return function(dst, s, static_cast<uint32_t>(size.width),
                        static_cast<uint32_t>(size.height), format, pattern);
      },
      write_reference);
}

constexpr uint32_t kPatterns[] = {0, 1, 2, 3, 0xFFFFFFFF};

// Colour matrices on both sides of every limit that a kernel may use to choose its arithmetic.
using Matrix = std::array<int32_t, 9>;
inline std::vector<Matrix> matrices() {
  std::vector<Matrix> out = {
      {1638, -409, -204, -307, 1536, -204, 0, -512, 1536},
      {1024, 0, 0, 0, 1024, 0, 0, 0, 1024},
      {0, 0, 0, 0, 0, 0, 0, 0, 0},
      {32767, 32767, 32767, -32767, -32767, -32767, 32767, -32767, 1},
      {-32768, 0, 0, 0, -32768, 0, 16384, -16384, 0},
      {INT32_MIN, INT32_MAX, 0, INT32_MAX, INT32_MIN, 1, INT32_MAX, INT32_MAX, INT32_MIN}};
  for (const int32_t sum : {32767, 32768, 32769, 524416, 524417, 8421504, 8421505, INT32_MAX}) {
    const int32_t part = sum / 3, rest = sum - 2 * part;
    out.push_back({part, part, rest, -part, -rest, -part, rest, -part, part});
    out.push_back({sum, 0, 0, 0, -sum, 0, 1, 0, sum - 1});
  }
  Random random(8);
  for (int i = 0; i < 12; ++i) {
    const int bits = i % 3 == 0 ? 12 : i % 3 == 1 ? 18 : 32;
    Matrix m;
    for (int32_t& value : m) {
      value = static_cast<int32_t>(static_cast<int64_t>(random.next() >> (64 - bits)) -
                                   (int64_t{1} << (bits - 1)));
    }
    out.push_back(m);
  }
  return out;
}

// The known answers of the demosaic modes and of colour correction are taken of these two.
inline Bytes frame_a() {
  Bytes out;
  for (int y = 0; y < 12; ++y) {
    for (int x = 0; x < 16; ++x) {
      out.push_back(static_cast<uint8_t>(37 * y + 91 * x + 13 * x * y + (x * x * y >> 2)));
    }
  }
  return out;
}
inline Bytes frame_b() {
  Bytes out;
  for (int y = 0; y < 12; ++y) {
    for (int x = 0; x < 16; ++x) {
      const int z = 60 + 2 * abs(((5 * x + 3 * y) & 63) - 32) + 3 * abs(((x - 4 * y) & 31) - 16) +
                    5 * (x * y & 1);
      out.push_back(static_cast<uint8_t>(z));
    }
  }
  return out;
}

}  // namespace lum::test

#endif
