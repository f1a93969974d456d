// SPDX-License-Identifier: MIT
// The two dispatchers: each route against the direct call it stands for, the order of refusals, and
// the entries of the parameter array.
#include <gtest/gtest.h>
#include <math.h>
#include <string.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "bayer/colour_correction.h"
#include "convert/mono.h"
#include "lum/lum.h"
#include "test_support.h"

namespace lum::test {
namespace {

constexpr uint32_t kWidth = 16, kHeight = 8, kCount = kWidth * kHeight;
constexpr uint32_t kPattern = LumBayerPatternGRBG;
constexpr size_t kLargestPixel = 6;
constexpr uint32_t kFormats = 11;

using Direct = std::function<uint32_t(uint8_t* dst, const uint8_t* src, uint32_t format)>;
using Flat = uint32_t (*)(uint8_t*, const uint8_t*, uint32_t, uint32_t);
using Mosaic = uint32_t (*)(uint8_t*, const uint8_t*, uint32_t, uint32_t, uint32_t, uint32_t);

Direct flat(Flat call) {
  return [=](uint8_t* dst, const uint8_t* src, uint32_t f) { return call(dst, src, kCount, f); };
}
Direct mosaic(Mosaic call, uint32_t pattern = kPattern) {
  return [=](uint8_t* dst, const uint8_t* src, uint32_t f) {
    return call(dst, src, kWidth, kHeight, f, pattern);
  };
}
Direct mono_ex(LumBitDepthInfo depth) {
  return [=](uint8_t* dst, const uint8_t* src, uint32_t f) {
    return LumY16ImageTransformEx(dst, src, kCount, f, &depth);
  };
}
Direct mosaic_ex(LumBitDepthInfo depth) {
  return [=](uint8_t* dst, const uint8_t* src, uint32_t f) {
    return LumRaw16ImageTransformEx(dst, src, kWidth, kHeight, f, &depth);
  };
}
Direct refused() {
  return [](uint8_t*, const uint8_t*, uint32_t) { return static_cast<uint32_t>(-7); };
}

Bytes blank_destination() { return Bytes(kCount * kLargestPixel, 0xA5); }

// A source of any layout and a destination of any format over buffers that hold the largest of
// both.
struct Frames {
  Bytes src = random_bytes(kCount * kLargestPixel, 7);
  Bytes dst = blank_destination();
  LumImage source{}, destination{};

  explicit Frames(const LumPixelInfo& info, uint32_t format) {
    source = {sizeof source, src.data(), {kWidth, kHeight, 0, info, 0}};
    destination.size = sizeof destination;
    destination.data = dst.data();
    EXPECT_EQ(LumSetImageInfoOutput(format, kWidth, kHeight, &destination), 0);
  }
  int32_t run(const std::vector<LumTransformInfo>& entries = {}) {
    return LumImageTransform(&source, &destination, entries.data(),
                             static_cast<uint32_t>(entries.size()));
  }
};

LumTransformInfo debayer(uint32_t mode) {
  LumTransformInfo info;
  EXPECT_EQ(LumSetDebayerMode(mode, &info), 0);
  return info;
}
LumTransformInfo gamma_entry() {
  LumTransformInfo info;
  EXPECT_EQ(LumSetGammaCorrection(&info, 2.2f), 0);
  return info;
}
LumTransformInfo matrix_entry(const float* matrix) {
  LumTransformInfo info;
  EXPECT_EQ(LumSetColorCorrectionMatrix3x3(matrix, &info), 0);
  return info;
}

void expect_route(const std::string& what, const LumPixelInfo& info, const Direct& direct,
                  const std::vector<LumTransformInfo>& entries = {}) {
  for (uint32_t format = 0; format < kFormats; ++format) {
    Frames frames(info, format);
    Bytes expected = blank_destination();
    const uint32_t code = direct(expected.data(), frames.src.data(), format);
    EXPECT_EQ(static_cast<uint32_t>(frames.run(entries)), code) << what << " to " << format;
    EXPECT_EQ(frames.dst, expected) << what << " to " << format;
  }
}

TEST(ImageTransform, TakesTheRouteOfLayoutAndBits) {
  // Mono sources pass no pattern on, mosaics their own.
  const LumBitDepthInfo mono12 = {0, 1, 12, 0, 0}, mono14_big = {0, 0, 14, 1, 0};
  const LumBitDepthInfo raw12 = {0, 1, 12, 0, kPattern}, raw16 = {0, 0, 16, 0, kPattern};
  const LumBitDepthInfo raw10_big = {0, 1, 10, 1, kPattern};
  struct Row {
    uint32_t layout, bits, used, alignment, endianness;
    Direct direct;
  };
  std::vector<Row> rows = {
      {0, 8, 8, 1, 0, flat(LumY8ImageTransform)},
      {0, 16, 12, 1, 0, mono_ex(mono12)},
      {0, 16, 14, 0, 1, mono_ex(mono14_big)},
      {0, 16, 16, 1, 0, flat(y16_little_endian_image_transform)},
      {0, 16, 16, 1, 1, flat(LumY16ImageTransform)},
      {0, 16, 16, 1, 2, flat(LumY16ImageTransform)},
      {1, 12, 12, 1, 0, flat(LumY12ImageTransform)},
      {4, 24, 24, 1, 0, flat(LumRGB8ImageTransform)},
      {5, 24, 24, 1, 0, flat(LumBGR8ImageTransform)},
      {5, 32, 32, 1, 0, flat(LumRGBA8ImageTransform)},
      {6, 32, 32, 1, 0, flat(LumRGBA8ImageTransform)},
      {7, 32, 32, 1, 0, flat(LumBGRA8ImageTransform)},
      {8, 0, 0, 1, 0, flat(LumYUV411ImageTransform)},
      {9, 0, 0, 1, 0, flat(LumYUV422ImageTransform)},
      {10, 0, 0, 1, 0, flat(LumYUV444ImageTransform)},
      {2, 12, 12, 1, 0, refused()},
      {5, 48, 48, 1, 0, refused()},
      {6, 24, 24, 1, 0, refused()},
      {7, 24, 24, 1, 0, refused()},
      {11, 8, 8, 1, 0, refused()},
      {0xFFFFFFFF, 8, 8, 1, 0, refused()},
  };
  // The layouts that end as mosaics: Raw, RawPacked, and the colour layouts with foreign widths.
  for (const uint32_t layout : {2u, 3u, 5u, 6u, 7u}) {
    rows.push_back({layout, 8, 8, 1, 0, mosaic(LumRaw8ImageTransform)});
    if (layout != 2) rows.push_back({layout, 12, 12, 1, 0, mosaic(LumRaw12ImageTransform)});
    rows.push_back({layout, 16, 16, 1, 1, mosaic(LumRaw16ImageTransform)});
    rows.push_back({layout, 16, 16, 0, 0, mosaic_ex(raw16)});
    rows.push_back({layout, 16, 12, 1, 0, mosaic_ex(raw12)});
    rows.push_back({layout, 16, 10, 1, 1, mosaic_ex(raw10_big)});
    rows.push_back({layout, 10, 10, 1, 0, refused()});
  }
  for (const uint32_t bits : {0u, 10u, 12u, 24u}) rows.push_back({0, bits, 8, 1, 0, refused()});
  for (const uint32_t bits : {8u, 16u}) rows.push_back({1, bits, 8, 1, 0, refused()});
  for (const uint32_t bits : {8u, 12u, 16u, 32u, 48u}) {
    rows.push_back({4, bits, bits, 1, 0, refused()});
  }
  for (const Row& row : rows) {
    expect_route(
        "layout " + std::to_string(row.layout) + " bits " + std::to_string(row.bits) + " used " +
            std::to_string(row.used) + " endianness " + std::to_string(row.endianness),
        {row.bits, row.used, row.alignment, row.endianness, row.layout, kPattern}, row.direct);
  }
}

constexpr LumPixelInfo kRaw8 = {8, 8, 1, 0, LumPixelLayoutRaw, kPattern};
constexpr LumPixelInfo kRaw16 = {16, 12, 1, 0, LumPixelLayoutRaw, kPattern};

TEST(ImageTransform, ChoosesTheDemosaicOf8BitMosaicsByTheFirstDebayerEntry) {
  const Mosaic modes[] = {LumRaw8ImageTransform, LumRaw8ImageTransform_3x3,
                          LumRaw8ImageTransform_IntLCAA, LumRaw8ImageTransform_IntLCAAV,
                          LumRaw8ImageTransform_IntYUV422};
  for (uint32_t mode = 0; mode < 5; ++mode) {
    const std::string what = "mode " + std::to_string(mode);
    expect_route(what, kRaw8, mosaic(modes[mode]), {debayer(mode)});
    expect_route(what + " after others", kRaw8, mosaic(modes[mode]),
                 {gamma_entry(), debayer(mode), debayer(9)});
  }
  expect_route("gamma alone", kRaw8, mosaic(modes[0]), {gamma_entry()});
  for (const uint32_t mode : {5u, 7u, 0xFFFFFFFFu}) {
    expect_route("unknown mode", kRaw8, refused(), {debayer(mode)});
    expect_route("unknown mode, 16 bits", kRaw16, mosaic_ex({0, 1, 12, 0, kPattern}),
                 {debayer(mode)});
  }
}

TEST(ImageTransform, TakesPointerOrCountOfZeroAsNoParameters) {
  const LumTransformInfo bad_mode = debayer(9);
  Frames frames(kRaw8, LUM_FORMAT_BGR24);
  EXPECT_EQ(LumImageTransform(&frames.source, &frames.destination, nullptr, 3), 0);
  EXPECT_EQ(LumImageTransform(&frames.source, &frames.destination, &bad_mode, 0), 0);
  EXPECT_EQ(LumImageTransform(&frames.source, &frames.destination, &bad_mode, 1), -7);
}

TEST(ImageTransform, PassesAnUnknownPatternOnToBeRefusedByTheTransform) {
  LumPixelInfo info = kRaw8;
  info.bayerPattern = LumBayerPatternNone;
  expect_route("no pattern", info, mosaic(LumRaw8ImageTransform, 255));
  EXPECT_EQ(Frames(info, LUM_FORMAT_BGR24).run(), static_cast<int32_t>(LUM_LEGACY_PARAMETER_5));
}

struct Call {
  LumImage source, destination;
  bool source_given = true, destination_given = true;
  LumTransformInfo entry;
};

int32_t run(const Call& call) {
  Call copy = call;
  return LumImageTransform(copy.source_given ? &copy.source : nullptr,
                           copy.destination_given ? &copy.destination : nullptr, &copy.entry, 1);
}

TEST(ImageTransform, RefusesInOrderAndWritesNothing) {
  Frames frames(kRaw8, LUM_FORMAT_BGR24);
  const Call good = {frames.source, frames.destination, true, true, debayer(0)};
  const auto bad_parameter = static_cast<uint32_t>(LumErrorBadParameter);
  const auto struct_size = static_cast<uint32_t>(LumErrorStructSize);
  const std::vector<Refusal<Call>> refusals = {
      {"no destination", [](Call& c) { c.destination_given = false; }, bad_parameter},
      {"no source", [](Call& c) { c.source_given = false; }, bad_parameter},
      {"no destination data", [](Call& c) { c.destination.data = nullptr; }, bad_parameter},
      {"no source data", [](Call& c) { c.source.data = nullptr; }, bad_parameter},
      {"heights differ", [](Call& c) { c.source.imageInfo.height++; }, bad_parameter},
      {"widths differ", [](Call& c) { c.destination.imageInfo.width++; }, bad_parameter},
      {"source size", [](Call& c) { c.source.size = 57; }, struct_size},
      {"destination size", [](Call& c) { c.destination.size = 57; }, struct_size},
      {"destination", [](Call& c) { c.destination.imageInfo.pixelInfo.bitsPerPixel = 32; },
       bad_parameter},
      {"source layout", [](Call& c) { c.source.imageInfo.pixelInfo.pixelLayout = 11; },
       bad_parameter},
      {"debayer mode", [](Call& c) { c.entry.parameter.debayerMode = 5; }, bad_parameter},
      {"transform's own", [](Call& c) { c.source.imageInfo.pixelInfo.bayerPattern = 4; },
       LUM_LEGACY_PARAMETER_5},
  };
  expect_refusals(good, refusals, frames.dst,
                  [](const Call& call) { return static_cast<uint32_t>(run(call)); });
}

constexpr float kMatrix[9] = {1.6f, -0.4f, -0.2f, -0.3f, 1.5f, -0.2f, 0.0f, -0.5f, 1.5f};
constexpr ColourMatrix fixed_matrix(uint32_t kind) {
  return {kind, {1638, -409, -204, -307, 1536, -204, 0, -512, 1536}};
}

using Kernel = void (*)(uint8_t*, const uint8_t*, uint32_t, uint32_t, uint32_t,
                        const ColourMatrix&);
using ShiftedKernel = void (*)(uint8_t*, const uint8_t*, uint32_t, uint32_t, uint32_t, uint32_t,
                               const ColourMatrix&);

Direct corrected(Kernel kernel, uint32_t kind) {
  return [=](uint8_t* dst, const uint8_t* src, uint32_t) {
    kernel(dst, src, kWidth, kHeight, kPattern, fixed_matrix(kind));
    return 0u;
  };
}
Direct corrected(ShiftedKernel kernel) {
  return [=](uint8_t* dst, const uint8_t* src, uint32_t) {
    kernel(dst, src, kWidth, kHeight, kPattern, 16 - kRaw16.bitsUsed, fixed_matrix(3));
    return 0u;
  };
}

TEST(ColourCorrection, TakesTheKernelOfSourceAndDestination) {
  using ByFormat = std::map<uint32_t, Direct>;  // formats that are absent are refused
  const Direct bgr24 = corrected(cc_raw12_to_bgr24, 3), bgr48 = corrected(cc_raw12_to_bgr48, 3);
  const Direct mono8 = corrected(cc_raw8_to_mono8, 2), mono16 = corrected(cc_raw16_to_mono16);
  const ByFormat packed = {{LUM_FORMAT_BGR24, bgr24}, {LUM_FORMAT_BGR48, bgr48}};
  const ByFormat raw8 = {{LUM_FORMAT_BGR24, corrected(cc_raw8_to_bgr24, 2)},
                         {LUM_FORMAT_MONO8_REC601, mono8},
                         {LUM_FORMAT_MONO8_REC709, mono8},
                         {LUM_FORMAT_BGR48, bgr48}};  // 8 bits end at the packed kernel
  const ByFormat raw16 = {{LUM_FORMAT_MONO16_REC601, mono16},
                          {LUM_FORMAT_MONO16_REC709, mono16},
                          {LUM_FORMAT_BGR48, corrected(cc_raw16_to_bgr48)},
                          {LUM_FORMAT_BGR24, bgr24}};  // 16 bits likewise
  const struct {
    LumPixelInfo info;
    ByFormat calls;
  } rows[] = {{kRaw8, raw8},
              {kRaw16, raw16},
              {{12, 12, 1, 0, LumPixelLayoutRaw, kPattern}, packed},
              {{12, 12, 1, 0, LumPixelLayoutRawPacked, kPattern}, packed},
              {{8, 8, 1, 0, LumPixelLayoutRawPacked, kPattern}, packed},
              {{16, 16, 1, 1, LumPixelLayoutRawPacked, kPattern}, packed},
              {{8, 8, 1, 0, LumPixelLayoutMono, kPattern}, {}},
              {{24, 24, 1, 0, LumPixelLayoutRGB, kPattern}, {}},
              {{8, 8, 1, 0, LumPixelLayoutBGRA, kPattern}, {}},
              {{16, 16, 1, 0, LumPixelLayoutYUV422, kPattern}, {}},
              {{8, 8, 1, 0, 11, kPattern}, {}}};
  for (const auto& row : rows) {
    const Direct direct = [&](uint8_t* dst, const uint8_t* src, uint32_t format) {
      const auto call = row.calls.find(format);
      return call == row.calls.end() ? static_cast<uint32_t>(-7) : call->second(dst, src, format);
    };
    const std::string what = "layout " + std::to_string(row.info.pixelLayout) + " bits " +
                             std::to_string(row.info.bitsPerPixel);
    expect_route(what, row.info, direct, {matrix_entry(kMatrix)});
    // The first matrix counts, wherever it is, and a debayer entry beside it does not.
    expect_route(what + " among others", row.info, direct,
                 {gamma_entry(), debayer(9), matrix_entry(kMatrix),
                  matrix_entry(std::vector<float>(9, 0.5f).data())});
  }
}

TEST(ColourCorrection, TruncatesSaturatesAndTakesNotANumberAsZero) {
  const struct {
    float coefficient;
    int32_t fixed;
  } rows[] = {{1.9f / 1024, 1},      {-1.9f / 1024, -1},      {3e9f, INT32_MAX},
              {-3e9f, INT32_MIN},    {2097152.0f, INT32_MAX}, {-2097152.0f, INT32_MIN},
              {INFINITY, INT32_MAX}, {-INFINITY, INT32_MIN},  {NAN, 0}};
  for (const auto& row : rows) {
    float matrix[9] = {row.coefficient, 0.25f, 0, 0, 1, 0, 0, 0, 1};
    ColourMatrix fixed = {2, {row.fixed, 256, 0, 0, 1024, 0, 0, 0, 1024}};
    Frames frames(kRaw8, LUM_FORMAT_BGR24);
    Bytes expected = blank_destination();
    cc_raw8_to_bgr24(expected.data(), frames.src.data(), kWidth, kHeight, kPattern, fixed);
    EXPECT_EQ(frames.run({matrix_entry(matrix)}), 0);
    EXPECT_EQ(frames.dst, expected) << row.coefficient;
  }
}

TEST(Setters, WriteTheWholeEntry) {
  const auto bytes = [](const LumTransformInfo& info) {
    Bytes out(sizeof info);
    memcpy(out.data(), &info, sizeof info);
    return out;
  };
  LumTransformInfo info;
  Bytes expected(40, 0);

  memset(&info, 0xEE, sizeof info);
  EXPECT_EQ(LumSetDebayerMode(0x01020304, &info), 0);  // stored without a range test
  expected[4] = 4, expected[5] = 3, expected[6] = 2, expected[7] = 1;
  EXPECT_EQ(bytes(info), expected);

  memset(&info, 0xEE, sizeof info);
  EXPECT_EQ(LumSetGammaCorrection(&info, 1.0f), 0);
  expected.assign(40, 0);
  expected[0] = 2, expected[6] = 0x80, expected[7] = 0x3F;
  EXPECT_EQ(bytes(info), expected);

  EXPECT_EQ(LumSetColorCorrectionMatrix3x3(kMatrix, &info), 0);
  expected[0] = 1;
  memcpy(&expected[4], kMatrix, 36);
  EXPECT_EQ(bytes(info), expected);

  EXPECT_EQ(LumSetDebayerMode(0, nullptr), -7);
  EXPECT_EQ(LumSetGammaCorrection(nullptr, 1.0f), -7);
  EXPECT_EQ(LumSetColorCorrectionMatrix3x3(kMatrix, nullptr), -7);
  EXPECT_EQ(LumSetColorCorrectionMatrix3x3(nullptr, &info), -7);
  EXPECT_EQ(bytes(info), expected);
}

// The older dispatcher.

TEST(TransformOld, TakesTheRouteOfThePixelFormat) {
  struct Row {
    uint32_t code;
    Direct direct;
  };
  std::vector<Row> rows = {
      {0x01080001, flat(LumY8ImageTransform)},
      {0x01100003, mono_ex({0, 1, 10, 0, 0})},
      {0x01100005, mono_ex({0, 1, 12, 0, 0})},
      {0x01100025, mono_ex({0, 1, 14, 0, 0})},
      {0x010C0006, flat(LumY12ImageTransform)},
      {0x01100007, flat(LumY16ImageTransform)},
      {0x02180014, flat(LumRGB8ImageTransform)},
      {0x02180015, flat(LumBGR8ImageTransform)},
      {0x02200016, flat(LumRGBA8ImageTransform)},
      {0x02200017, flat(LumBGRA8ImageTransform)},
      {0x020C001E, flat(LumYUV411ImageTransform)},
      {0x0210001F, flat(LumYUV422ImageTransform)},
      {0x02180020, flat(LumYUV444ImageTransform)},
      {0x0230001A, refused()},
      {0x02300033, refused()},
      {0x01080002, refused()},
      {0, refused()},
  };
  const uint32_t patterns[] = {2, 0, 1, 3};
  for (uint32_t i = 0; i < 4; ++i) {
    const uint32_t pattern = patterns[i];
    rows.push_back({0x01080008 + i, mosaic(LumRaw8ImageTransform, pattern)});
    rows.push_back({0x0110000C + i, mosaic_ex({0, 1, 10, 0, pattern})});
    rows.push_back({0x01100010 + i, mosaic_ex({0, 1, 12, 0, pattern})});
    rows.push_back({0x010C002A + i, mosaic(LumRaw12ImageTransform, pattern)});
    rows.push_back({0x0110002E + i, mosaic(LumRaw16ImageTransform, pattern)});
  }
  Bytes src = random_bytes(kCount * kLargestPixel, 11);
  for (const Row& row : rows) {
    for (uint32_t format = 0; format <= kFormats; ++format) {  // 11: for the transform to refuse
      Bytes dst = blank_destination(), expected = blank_destination();
      const uint32_t code = row.direct(expected.data(), src.data(), format);
      const int32_t result =
          LumTransformOLD(dst.data(), format, src.data(), kWidth, kHeight, -1, row.code);
      EXPECT_EQ(static_cast<uint32_t>(result), code) << std::hex << row.code << " to " << format;
      EXPECT_EQ(dst, expected) << std::hex << row.code << " to " << format;
    }
  }
  EXPECT_EQ(LumTransformOLD(nullptr, 1, src.data(), kWidth, kHeight, 0, 0x01080001), -7);
  EXPECT_EQ(LumTransformOLD(src.data(), 1, nullptr, kWidth, kHeight, 0, 0x01080001), -7);
}

}  // namespace
}  // namespace lum::test
