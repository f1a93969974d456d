// SPDX-License-Identifier: MIT
// Set-up of descriptors by code, by index and by name, the queries, and the texts: what they say
// agrees, records are written as lum.h says, and no text goes beyond its buffer.
#include <ctype.h>
#include <string.h>

#include <string>
#include <vector>

#include "frame/destination.h"
#include "frame/pixel_formats.h"
#include "harness.h"
#include "lum/lum.h"

namespace lum::fuzz {
namespace {

void require(bool holds, const char* what, const std::string& of) {
  if (!holds) fail(std::string(what) + ": " + of);
}

LumImage blank_image(Input& in) {
  LumImage image;
  memset(&image, 0xA5, sizeof image);
  image.size = mostly(in) ? uint32_t{sizeof image} : in.ConsumeIntegral<uint32_t>();
  return image;
}

bool same(const LumImage& a, const LumImage& b) { return memcmp(&a, &b, sizeof a) == 0; }

// The record with the geometry that is written even where the format is unknown.
LumImage with_size(LumImage image, uint32_t width, uint32_t height) {
  image.imageInfo.width = image.imageInfo.stride = width;
  image.imageInfo.height = height;
  return image;
}

void check_code(Input& in) {
  const size_t row = in.ConsumeIntegralInRange<size_t>(0, kPixelFormats.size() - 1);
  const uint32_t code = in.ConsumeBool() ? kPixelFormats[row].code : in.ConsumeIntegral<uint32_t>();
  const uint32_t width = in.ConsumeIntegral<uint32_t>(), height = in.ConsumeIntegral<uint32_t>();
  const std::string of = describe("code", code, width, height);
  const LumImage before = blank_image(in);
  LumImage image = before;
  const int32_t result = LumSetImageInfoFromPixelFormat(code, width, height, &image);
  uint32_t bits = 1, used = 1, pattern = 1, layout = 1, space = 1;
  uint8_t colour = 9, mosaic = 9;
  const bool known = LumBitsPerPixel(&bits, code) == 0;
  const int32_t unknown = known ? 0 : LumErrorBadParameter;
  require(LumBitsPerPixelUsed(&used, code) == unknown, "known to one query alone", of);
  require(LumGetBayerPattern(&pattern, code) == unknown, "known to one query alone", of);
  require(LumGetPixelLayout(&layout, code) == unknown, "known to one query alone", of);
  require(LumGetColorSpace(&space, code) == 0, "a colour space for every code", of);
  const bool answered = known && code != LumPixelFormatRgb12;
  require((LumIsColor(&colour, code) == 0) == answered, "LumIsColor", of);
  require((LumHasBayerPattern(&mosaic, code) == 0) == answered, "LumHasBayerPattern", of);
  if (answered) {
    require(colour + mosaic <= 1, "colour and mosaic", of);
    require((mosaic == 1) == (pattern <= 3), "a mosaic has a pattern", of);
  } else {
    require(colour == 9 && mosaic == 9, "written without an answer", of);
  }
  if (image.size != sizeof image) {
    require(result == LumErrorStructSize && same(image, before), "a record of another size", of);
    return;
  }
  require(result == unknown, "set-up and queries", of);
  if (!known) {
    require(same(image, with_size(before, width, height)), "an unknown code", of);
    require(bits == 1 && used == 1 && pattern == 1 && layout == 1, "written, unknown", of);
    return;
  }
  const LumPixelInfo& p = image.imageInfo.pixelInfo;
  require(p.bitsPerPixel == bits && p.bitsUsed == used && p.pixelLayout == layout &&
              p.bayerPattern == pattern && image.imageInfo.colorSpace == space,
          "set-up and queries differ", of);
  require(p.alignment == 1 && p.endianness == 0 && image.imageInfo.width == width &&
              image.imageInfo.stride == width && image.imageInfo.height == height &&
              image.data == before.data,
          "the other fields", of);
}

void check_output(Input& in) {
  const uint32_t format =
      mostly(in) ? in.ConsumeIntegralInRange<uint32_t>(0, 12) : in.ConsumeIntegral<uint32_t>();
  const uint32_t width = in.ConsumeIntegral<uint32_t>(), height = in.ConsumeIntegral<uint32_t>();
  const std::string of = describe("destination", format, width, height);
  const LumImage before = blank_image(in);
  LumImage image = before;
  const int32_t result = LumSetImageInfoOutput(format, width, height, &image);
  if (image.size != sizeof image) {
    require(result == LumErrorStructSize && same(image, before), "a record of another size", of);
  } else if (format > 10) {
    require(result == LumErrorBadParameter && same(image, with_size(before, width, height)),
            "an unknown format", of);
  } else {
    require(result == 0 && select_destination(image.imageInfo) == format, "selects itself", of);
  }
}

// A name as callers write it, and what becomes of it by the hands of others.
std::string any_name(Input& in) {
  if (!mostly(in)) return in.ConsumeRandomLengthString(64);
  const bool camera = in.ConsumeBool();
  std::string name =
      camera ? kPixelFormats[in.ConsumeIntegralInRange<size_t>(0, kPixelFormats.size() - 1)].name
             : kDestinations[in.ConsumeIntegralInRange<size_t>(0, kDestinations.size() - 1)].name;
  if (in.ConsumeBool()) name = "Lum" + name;
  if (in.ConsumeBool()) {
    for (char& c : name) {
      if (in.ConsumeBool()) c = static_cast<char>(isupper(c) ? tolower(c) : toupper(c));
    }
  }
  if (!mostly(in)) name.resize(in.ConsumeIntegralInRange<size_t>(0, name.size()));
  if (!mostly(in)) name += in.ConsumeIntegral<char>();
  return name;
}

void check_name(Input& in) {
  const std::string name = any_name(in);
  const uint32_t length =
      mostly(in) ? static_cast<uint32_t>(strlen(name.c_str()))
                 : in.ConsumeIntegralInRange<uint32_t>(0, in.ConsumeBool() ? 5 : UINT32_MAX);
  const std::string of = "name \"" + name + "\", " + std::to_string(length);
  // On the heap, with nothing behind it that could be read.
  const std::vector<char> exact(name.c_str(), name.c_str() + strlen(name.c_str()) + 1);
  const LumImage before = blank_image(in);
  LumImage image = before;
  const int32_t result = LumSetImageInfoFromString(exact.data(), length, 7, 5, &image);
  if (image.size != sizeof image) {
    require(result == LumErrorStructSize && same(image, before), "a record of another size", of);
    return;
  }
  // Its own search: all names, with and without the prefix, character by character.
  const auto is = [&](std::string key) {
    const auto equal = [](const char* a, const std::string& b) {
      if (strlen(a) != b.size()) return false;
      for (size_t i = 0; i < b.size(); ++i) {
        if (tolower(static_cast<unsigned char>(a[i])) != tolower(b[i])) return false;
      }
      return true;
    };
    return equal(exact.data(), key) || (length > 3 && equal(exact.data(), "Lum" + key));
  };
  LumImage wanted = before;
  int32_t expected = LumErrorBadParameter;
  for (uint32_t i = 0; i < kDestinations.size(); ++i) {
    if (is(kDestinations[i].name) || (i == LUM_FORMAT_UYVY && is(kUyvyOtherName))) {
      expected = LumSetImageInfoOutput(i, 7, 5, &wanted);
    }
  }
  for (const PixelFormat& format : kPixelFormats) {
    if (is(format.name)) expected = LumSetImageInfoFromPixelFormat(format.code, 7, 5, &wanted);
  }
  require(result == expected && same(image, wanted), "a name", of);
}

// A text in a buffer that it may not fill or leave: the first bytes of the whole one.
void check_text(Input& in) {
  constexpr size_t kWhole = 100;
  const uint32_t room = in.ConsumeIntegralInRange<uint32_t>(0, kWhole);
  const uint32_t kind = in.ConsumeIntegralInRange<uint32_t>(0, 2);
  const uint32_t selector = in.ConsumeIntegralInRange<uint32_t>(0, 4);
  int32_t code = in.ConsumeIntegral<int32_t>();
  if (in.ConsumeBool()) code = -in.ConsumeIntegralInRange<int32_t>(0, 20);
  if (!mostly(in)) code = static_cast<int32_t>(0x88000000u + in.ConsumeIntegral<uint8_t>());
  const auto call = [&](char* buffer, uint32_t size) {
    return kind == 0   ? LumGetErrorInfo(code, buffer, size)
           : kind == 1 ? LumGetLegacyErrorInfo(code, buffer, size)
                       : LumGetApiInfoString(selector, buffer, size);
  };
  const std::string of =
      describe("text", kind, kind == 2 ? static_cast<int32_t>(selector) : code, room);
  char whole[kWhole];
  memset(whole, '?', sizeof whole);
  require(call(whole, kWhole) == 0, "a whole text", of);
  const std::string text(whole, strnlen(whole, kWhole));
  require(text.size() < kWhole, "its end", of);

  std::vector<char> buffer(room, '?'), wanted = buffer;
  const uint32_t result = call(buffer.data() == nullptr ? whole : buffer.data(), room);
  const bool cut = text.size() + 1 > room;
  for (size_t i = 0; i < room && i <= text.size(); ++i) wanted[i] = text.c_str()[i];
  uint32_t expected = 0;
  if (kind == 2) {
    if (cut && room > 0) wanted.back() = '\0';
  } else if (room == 0) {
    expected = LUM_LEGACY_PARAMETER_3;
  } else if (kind == 0 && cut && text != "return code not found") {
    expected = LUM_LEGACY_MORE_DATA;
  }
  require(result == expected, "what a text returns", of);
  require(buffer == wanted, "a text that is cut", of);
}

}  // namespace
}  // namespace lum::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace lum::fuzz;
  Input in(data, size);
  const auto check = in.PickValueInArray({check_code, check_output, check_name, check_text});
  check(in);
  return 0;
}
