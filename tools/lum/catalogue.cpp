// SPDX-License-Identifier: MIT
#include "catalogue.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "failure.h"
#include "frame/destination.h"
#include "frame/pixel_formats.h"

namespace lum_tool {
namespace {

constexpr char kLibraryPrefix[] = "PixelFormat";
constexpr size_t kLibraryPrefixLength = sizeof kLibraryPrefix - 1;
constexpr char kV4l2Prefix[] = "V4L2_PIX_FMT_";
constexpr char kCygmName[] = "IRaw8CYGM";

// Where the naming convention's spelling is not the library's without its prefix.
struct Spelling {
  uint32_t code;
  const char* name;
};
constexpr Spelling kSpellings[] = {
    {LumPixelFormatRgb8, "RGB8"},
    {LumPixelFormatBgr8, "BGR8"},
    {LumPixelFormatRgba8, "RGBa8"},
    {LumPixelFormatBgra8, "BGRa8"},
    {LumPixelFormatRgb12, "RGB12"},
    {LumPixelFormatRgb16, "RGB16"},
    {LumPixelFormatYuv411, "YUV411_8_UYYVYY"},
    {LumPixelFormatYuv422, "YUV422_8_UYVY"},
    {LumPixelFormatYuv444, "YUV8_UYV"},
};

bool same_name(const std::string& a, const std::string& b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

uint64_t bytes_of(uint32_t width, uint32_t height, uint32_t bits) {
  return (uint64_t{width} * height * bits + 7) / 8;
}

LumPixelInfo packed_pixel(const PackedFormat& format) {
  const PackedGroup& group = kPackedGroups[format.packing];
  LumPixelInfo pixel = {};
  LumGetBayerPattern(&pixel.bayerPattern, format.words);
  pixel.bitsPerPixel = group.bytes * 8 / group.samples;
  pixel.bitsUsed = group.bits;
  pixel.pixelLayout = pixel.bayerPattern == LumBayerPatternNone ? LumPixelLayoutMonoPacked
                                                                : LumPixelLayoutRawPacked;
  return pixel;
}

void add_packed(std::vector<Source>& list) {
  for (const PackedFormat& format : kPackedFormats) {
    auto source = std::find_if(list.begin(), list.end(),
                               [&](const Source& s) { return s.name == format.name; });
    if (source == list.end()) {
      source = list.insert(list.end(), Source());
      source->kind = Source::Kind::packed;
      source->name = format.name;
      source->code = format.code;
      source->pixel = packed_pixel(format);
      if (*format.other_name != '\0') source->other_names = {format.other_name};
      if (format.code == 0) source->other_names.push_back(std::string(kV4l2Prefix) + format.name);
    }
    source->packing = format.packing;
    source->words_code = format.words;
  }
}

std::vector<Source> list_sources() {
  std::vector<Source> list;
  for (const lum::PixelFormat& format : lum::kPixelFormats) {
    const std::string bare = format.name + kLibraryPrefixLength;
    const auto known = std::find_if(list.begin(), list.end(),
                                    [&](const Source& s) { return s.code == format.code; });
    if (known != list.end()) {
      known->other_names.insert(known->other_names.end(), {bare, format.name});
      continue;
    }
    Source source;
    source.name = bare;
    for (const Spelling& spelling : kSpellings)
      if (spelling.code == format.code) source.name = spelling.name;
    source.other_names = {bare, format.name};
    source.code = format.code;
    LumImage image = {};
    image.size = sizeof image;
    LumSetImageInfoFromPixelFormat(format.code, 1, 1, &image);
    source.pixel = image.imageInfo.pixelInfo;
    source.colour_space = image.imageInfo.colorSpace;
    list.push_back(source);
  }
  add_packed(list);
  Source cygm;
  cygm.kind = Source::Kind::cygm;
  cygm.name = kCygmName;
  cygm.pixel = {8, 8, 1, 0, LumPixelLayoutRaw, LumBayerPatternNone};
  list.push_back(cygm);
  return list;
}

std::vector<Destination> list_destinations() {
  std::vector<Destination> list;
  LumImage image = {};
  image.size = sizeof image;
  for (uint32_t index = 0; index < lum::kDestinations.size(); ++index) {
    LumSetImageInfoOutput(index, 1, 1, &image);
    list.push_back({lum::kDestinations[index].name, index, image.imageInfo.pixelInfo});
  }
  return list;
}

template <typename List>
std::string names_of(const List& list) {
  std::string text;
  for (const auto& entry : list) text += (text.empty() ? "" : " ") + entry.name;
  return text;
}

}  // namespace

bool Source::is_mosaic() const {
  return pixel.pixelLayout == LumPixelLayoutRaw || pixel.pixelLayout == LumPixelLayoutRawPacked;
}

bool Source::is_yuv() const {
  return pixel.pixelLayout >= LumPixelLayoutYUV411 && pixel.pixelLayout <= LumPixelLayoutYUV444;
}

bool Source::is_bayer8() const { return is_mosaic() && !is_cygm() && pixel.bitsPerPixel == 8; }

const Source& Source::converted() const {
  if (kind != Kind::packed) return *this;
  return *std::find_if(sources().begin(), sources().end(),
                       [this](const Source& s) { return s.code == words_code; });
}

uint32_t Source::step_x() const {
  if (packing) return kPackedGroups[*packing].samples;
  switch (pixel.pixelLayout) {
    case LumPixelLayoutYUV411:
      return 4;
    case LumPixelLayoutYUV422:
    case LumPixelLayoutRaw:
      return 2;
    default:
      return 1;
  }
}

uint32_t Source::step_y() const { return is_cygm() ? 4 : is_mosaic() ? 2 : 1; }

bool Source::fits(uint32_t width, uint32_t height) const {
  return width % step_x() == 0 && height % step_y() == 0;
}

uint64_t Source::frame_bytes(uint32_t width, uint32_t height) const {
  return bytes_of(width, height, pixel.bitsPerPixel);
}

uint64_t Destination::frame_bytes(uint32_t width, uint32_t height) const {
  const uint64_t bytes = bytes_of(width, height, pixel.bitsPerPixel);
  // UYVY comes in pairs of pixels: an odd one has its group of four bytes.
  return pixel.pixelLayout == LumPixelLayoutYUV422 ? (bytes + 3) / 4 * 4 : bytes;
}

const std::vector<Source>& sources() {
  static const std::vector<Source> list = list_sources();
  return list;
}

const std::vector<Destination>& destinations() {
  static const std::vector<Destination> list = list_destinations();
  return list;
}

const Source* find_source(const std::string& text) {
  char* end = nullptr;
  const unsigned long code = std::strtoul(text.c_str(), &end, 0);
  const bool number = !text.empty() && *end == '\0';
  for (const Source& source : sources()) {
    if (number ? source.code == code && code != 0 : same_name(source.name, text)) return &source;
    if (!number)
      for (const std::string& other : source.other_names)
        if (same_name(other, text)) return &source;
  }
  return nullptr;
}

const Destination* find_destination(const std::string& text) {
  const auto index = lum::find_destination(text.c_str());
  return index ? &destinations()[*index] : nullptr;
}

const Source& need_source(const std::string& text) {
  if (const Source* source = find_source(text)) return *source;
  throw Failure(text + " is no camera format of this library. It knows:\n" + names_of(sources()));
}

const Destination& need_destination(const std::string& text) {
  if (const Destination* destination = find_destination(text)) return *destination;
  throw Failure(text + " is no destination format. There are:\n" + names_of(destinations()));
}

const char* layout_name(uint32_t layout) {
  constexpr const char* kNames[] = {"Mono", "MonoPacked", "Raw",    "RawPacked", "RGB",   "BGR",
                                    "RGBA", "BGRA",       "YUV411", "YUV422",    "YUV444"};
  return layout < sizeof kNames / sizeof *kNames ? kNames[layout] : "unknown";
}

const char* pattern_name(uint32_t pattern) {
  constexpr const char* kNames[] = {"RGGB", "GBRG", "GRBG", "BGGR"};
  return pattern <= LumBayerPatternBGGR ? kNames[pattern] : "none";
}

std::string hex_code(uint32_t code) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", code);
  return text;
}

}  // namespace lum_tool
