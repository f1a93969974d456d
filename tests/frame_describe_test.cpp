// SPDX-License-Identifier: MIT
// Descriptors: what camera formats, destination formats and names fill in, what the queries answer
// and which destination format a descriptor selects.
#include <gtest/gtest.h>
#include <string.h>

#include <atomic>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "frame/destination.h"
#include "frame/pixel_formats.h"
#include "lum/lum.h"

namespace lum::test {
namespace {

struct Expected {
  std::string name;
  uint32_t code, bits, used, layout, pattern, space;
  int colour, mosaic;  // -7: refused
};

std::vector<Expected> expected_formats() {
  std::vector<Expected> all = {
      {"PixelFormatMono8", 0x01080001, 8, 8, 0, 255, 0, 0, 0},
      {"PixelFormatMono10", 0x01100003, 16, 10, 0, 255, 0, 0, 0},
      {"PixelFormatMono12", 0x01100005, 16, 12, 0, 255, 0, 0, 0},
      {"PixelFormatMono12Packed", 0x010C0006, 12, 12, 1, 255, 0, 0, 0},
      {"PixelFormatMono14", 0x01100025, 16, 14, 0, 255, 0, 0, 0},
      {"PixelFormatMono16", 0x01100007, 16, 16, 0, 255, 0, 0, 0},
      {"PixelFormatRgb8", 0x02180014, 24, 24, 4, 255, 0, 1, 0},
      {"PixelFormatBgr8", 0x02180015, 24, 24, 5, 255, 0, 1, 0},
      {"PixelFormatArgb8", 0x02200016, 32, 32, 6, 255, 0, 1, 0},
      {"PixelFormatRgba8", 0x02200016, 32, 32, 6, 255, 0, 1, 0},
      {"PixelFormatBgra8", 0x02200017, 32, 32, 7, 255, 0, 1, 0},
      {"PixelFormatRgb12", 0x0230001A, 48, 36, 4, 255, 0, -7, -7},
      {"PixelFormatRgb16", 0x02300033, 48, 48, 4, 255, 0, 1, 0},
      {"PixelFormatYuv411", 0x020C001E, 12, 12, 8, 255, 2, 1, 0},
      {"PixelFormatYuv422", 0x0210001F, 16, 16, 9, 255, 2, 1, 0},
      {"PixelFormatYuv444", 0x02180020, 24, 24, 10, 255, 2, 1, 0},
  };
  const struct {
    const char* suffix;
    uint32_t first_code, bits, used, layout;
  } groups[] = {{"8", 0x01080008, 8, 8, 2},
                {"10", 0x0110000C, 16, 10, 2},
                {"12", 0x01100010, 16, 12, 2},
                {"12Packed", 0x010C002A, 12, 12, 3},
                {"16", 0x0110002E, 16, 16, 2}};
  const struct {
    const char* phase;
    uint32_t pattern;
  } phases[] = {{"GR", 2}, {"RG", 0}, {"GB", 1}, {"BG", 3}};
  for (const auto& group : groups) {
    for (uint32_t i = 0; i < 4; ++i) {
      all.push_back({std::string("PixelFormatBayer") + phases[i].phase + group.suffix,
                     group.first_code + i, group.bits, group.used, group.layout, phases[i].pattern,
                     0, 0, 1});
    }
  }
  return all;
}

LumImage blank_image() {
  LumImage image;
  memset(&image, 0xEE, sizeof image);
  image.size = sizeof image;
  return image;
}

bool equal(const LumImage& a, const LumImage& b) { return memcmp(&a, &b, sizeof a) == 0; }

// Compares all a set-up defines; stride is the width in pixels.
void expect_info(const LumImage& image, uint32_t bits, uint32_t used, uint32_t layout,
                 uint32_t pattern, uint32_t space, const std::string& what) {
  LumImage expected = blank_image();
  expected.imageInfo = {640, 480, 640, {bits, used, 1, 0, layout, pattern}, space};
  EXPECT_TRUE(equal(image, expected)) << what;
}

template <typename Value>
int ask(int32_t (*query)(Value*, uint32_t), uint32_t code) {
  Value value = 0x77;
  const int32_t result = query(&value, code);
  EXPECT_EQ(query(nullptr, code), LumErrorBadParameter);
  if (result != 0) {
    EXPECT_EQ(value, 0x77u) << "written in spite of " << result;
    return result;
  }
  return static_cast<int>(value);
}

TEST(PixelFormats, QueriesAndSetUpGiveTheColumnsOfEveryFormat) {
  const auto all = expected_formats();
  EXPECT_EQ(kPixelFormats.size(), all.size());
  for (const Expected& row : all) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(ask(LumBitsPerPixel, row.code), static_cast<int>(row.bits));
    EXPECT_EQ(ask(LumBitsPerPixelUsed, row.code), static_cast<int>(row.used));
    EXPECT_EQ(ask(LumGetPixelLayout, row.code), static_cast<int>(row.layout));
    EXPECT_EQ(ask(LumGetBayerPattern, row.code), static_cast<int>(row.pattern));
    EXPECT_EQ(ask(LumGetColorSpace, row.code), static_cast<int>(row.space));
    EXPECT_EQ(ask(LumIsColor, row.code), row.colour);
    EXPECT_EQ(ask(LumHasBayerPattern, row.code), row.mosaic);

    LumImage by_code = blank_image(), by_name = blank_image(), by_prefixed = blank_image();
    EXPECT_EQ(LumSetImageInfoFromPixelFormat(row.code, 640, 480, &by_code), 0);
    expect_info(by_code, row.bits, row.used, row.layout, row.pattern, row.space, "by code");
    EXPECT_EQ(LumSetImageInfoFromString(row.name.c_str(), 0, 640, 480, &by_name), 0);
    EXPECT_TRUE(equal(by_name, by_code));
    const std::string prefixed = "Lum" + row.name;
    const auto length = static_cast<uint32_t>(prefixed.size());
    EXPECT_EQ(LumSetImageInfoFromString(prefixed.c_str(), length, 640, 480, &by_prefixed), 0);
    EXPECT_TRUE(equal(by_prefixed, by_code));
  }
}

TEST(PixelFormats, UnknownCodesAreRefusedButHaveAColourSpace) {
  for (const uint32_t code : {0u, 0x01080002u, 0x01100032u, 0x02180016u, 0xFFFFFFFFu}) {
    EXPECT_EQ(ask(LumBitsPerPixel, code), -7);
    EXPECT_EQ(ask(LumBitsPerPixelUsed, code), -7);
    EXPECT_EQ(ask(LumGetPixelLayout, code), -7);
    EXPECT_EQ(ask(LumGetBayerPattern, code), -7);
    EXPECT_EQ(ask(LumIsColor, code), -7);
    EXPECT_EQ(ask(LumHasBayerPattern, code), -7);
    EXPECT_EQ(ask(LumGetColorSpace, code), 0);
  }
}

const struct {
  const char* name;
  uint32_t bits, layout, space;
} kOutputs[] = {{"MONO8_REC601", 8, 0, 2}, {"BGR24", 24, 5, 0},         {"BGRA32", 32, 7, 0},
                {"RGB24", 24, 4, 0},       {"RGBA32", 32, 6, 0},        {"MONO8_REC709", 8, 0, 1},
                {"UYVY", 16, 9, 2},        {"MONO16_REC601", 16, 0, 2}, {"MONO16_REC709", 16, 0, 1},
                {"BGR48", 48, 5, 0},       {"RGB48", 48, 4, 0}};

TEST(Outputs, AreFilledByIndexAndByNameAndSelectThemselves) {
  for (uint32_t format = 0; format < 11; ++format) {
    const auto& row = kOutputs[format];
    LumImage image = blank_image(), named = blank_image();
    EXPECT_EQ(LumSetImageInfoOutput(format, 640, 480, &image), 0);
    expect_info(image, row.bits, row.bits, row.layout, 255, row.space, row.name);
    EXPECT_EQ(LumSetImageInfoFromString(row.name, 0, 640, 480, &named), 0);
    EXPECT_TRUE(equal(named, image)) << row.name;
    EXPECT_EQ(select_destination(image.imageInfo), format) << row.name;
  }
}

TEST(Names, AreFoundWithoutRegardToCaseAndPrefix) {
  const struct {
    const char* name;
    uint32_t length;
    int32_t result;
    uint32_t layout;
  } rows[] = {
      {"bgr24", 5, 0, 5},
      {"LumBGR24", 8, 0, 5},
      {"lUMbgr24", 8, 0, 5},
      {"LumBGR24", 4, 0, 5},   // the length permits the prefix, the terminator ends the name
      {"LumBGR24", 3, -7, 0},  // the prefix is looked up with the rest
      {"LumLumBGR24", 11, -7, 0},
      {"BGR24", 0xFFFFFFFF, 0, 5},
      {"yuv422", 6, 0, 9},
      {"PIXELFORMATbayerrg8", 19, 0, 2},
      {"lumpixelformatbayerrg12PACKED", 29, 0, 3},
      {"BGR2", 4, -7, 0},
      {"BGR24 ", 6, -7, 0},
      {"BayerRG8", 8, -7, 0},
      {"Lu", 2, -7, 0},
      {"Lum", 100, -7, 0},
      {"", 0, -7, 0},
  };
  for (const auto& row : rows) {
    LumImage image = blank_image();
    EXPECT_EQ(LumSetImageInfoFromString(row.name, row.length, 640, 480, &image), row.result)
        << row.name << " " << row.length;
    if (row.result == 0) {
      EXPECT_EQ(image.imageInfo.pixelInfo.pixelLayout, row.layout) << row.name;
    } else {
      EXPECT_TRUE(equal(image, blank_image())) << row.name;
    }
  }
  LumImage uyvy = blank_image(), yuv422 = blank_image();
  EXPECT_EQ(LumSetImageInfoFromString("UYVY", 4, 640, 480, &uyvy), 0);
  EXPECT_EQ(LumSetImageInfoFromString("YUV422", 6, 640, 480, &yuv422), 0);
  EXPECT_TRUE(equal(uyvy, yuv422));
}

TEST(SetUp, RefusesRecordsOfAnotherSizeAndWritesNothing) {
  for (const uint32_t size : {0u, 55u, 57u}) {
    LumImage image = blank_image();
    image.size = size;
    const LumImage before = image;
    EXPECT_EQ(LumSetImageInfoFromPixelFormat(0, 640, 480, &image), -8);
    EXPECT_EQ(LumSetImageInfoOutput(11, 640, 480, &image), -8);
    EXPECT_EQ(LumSetImageInfoFromString("nothing", 7, 640, 480, &image), -8);
    EXPECT_EQ(LumSetImageInfoFromString(nullptr, 7, 640, 480, &image), -7);
    EXPECT_TRUE(equal(image, before));
  }
  EXPECT_EQ(LumSetImageInfoFromPixelFormat(LumPixelFormatMono8, 640, 480, nullptr), -7);
  EXPECT_EQ(LumSetImageInfoOutput(1, 640, 480, nullptr), -7);
  EXPECT_EQ(LumSetImageInfoFromString("BGR24", 5, 640, 480, nullptr), -7);
}

TEST(SetUp, LeavesTheGeometryWhenTheFormatIsRefused) {
  LumImage expected = blank_image();
  expected.imageInfo.width = expected.imageInfo.stride = 640;
  expected.imageInfo.height = 480;
  LumImage output = blank_image(), camera = blank_image();
  EXPECT_EQ(LumSetImageInfoOutput(11, 640, 480, &output), -7);
  EXPECT_TRUE(equal(output, expected));
  EXPECT_EQ(LumSetImageInfoFromPixelFormat(0x01080002, 640, 480, &camera), -7);
  EXPECT_TRUE(equal(camera, expected));
}

// The whole of the selection: every layout, colour space and width against the rules in words.
std::optional<uint32_t> expected_selection(uint32_t layout, uint32_t space, uint32_t bits) {
  if (layout == 0 && space <= 2) {
    if (bits == 8) return space == 1 ? 5 : 0;
    if (bits == 16) return space == 1 ? 8 : 7;
    return std::nullopt;
  }
  if (layout == 0) layout = 4;
  if (layout == 4 && bits == 24) return 3;
  if (layout == 4 && bits == 48) return 10;
  if (layout == 5 && bits == 24) return 1;
  if (layout == 5 && bits == 48) return 9;
  if (layout == 6 && bits == 32) return 4;
  if (layout == 7 && bits == 32) return 2;
  if (layout == 9) return 6;
  return std::nullopt;
}

TEST(Selection, FollowsLayoutWidthAndColourSpace) {
  for (const uint32_t layout : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u, 11u, 0xFFFFFFFFu}) {
    for (const uint32_t space : {0u, 1u, 2u, 3u, 0xFFFFFFFFu}) {
      for (const uint32_t bits : {0u, 8u, 10u, 12u, 16u, 24u, 32u, 36u, 48u}) {
        LumImageInfo info = {};
        info.pixelInfo.pixelLayout = layout;
        info.pixelInfo.bitsPerPixel = bits;
        info.colorSpace = space;
        EXPECT_EQ(select_destination(info), expected_selection(layout, space, bits))
            << "layout " << layout << " space " << space << " bits " << bits;
      }
    }
  }
}

TEST(Names, MayBeLookedUpByManyThreadsFromTheFirstCallOn) {
  std::atomic<int> ready{0}, wrong{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&, i] {
      ready++;
      while (ready < 8) std::this_thread::yield();
      for (int round = 0; round < 100; ++round) {
        LumImage image = blank_image();
        const char* name = (i + round) % 2 == 0 ? "lumbgr48" : "PixelFormatYuv411";
        if (LumSetImageInfoFromString(name, 8, 64, 48, &image) != 0) wrong++;
        const uint32_t bits = (i + round) % 2 == 0 ? 48 : 12;
        if (image.imageInfo.pixelInfo.bitsPerPixel != bits) wrong++;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace lum::test
