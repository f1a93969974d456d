// SPDX-License-Identifier: MIT
// `lum formats`, `lum info` and `lum errors`.
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "conversion.h"
#include "failure.h"
#include "finish.h"

namespace lum_tool {
namespace {

using Json = nlohmann::ordered_json;

// The ways that `formats` asks about; the mark stands in the table's cells.
struct Way {
  const char* name;
  char mark;
  std::vector<const Destination*> reached;
};

std::vector<Way> ways_of(const Source& source) {
  Conversion plain;
  plain.source = &source;
  Conversion swapped = plain, older = plain, corrected = plain;
  swapped.big_endian = true;
  older.entry = Conversion::Entry::older;
  corrected.matrix = std::array<float, 9>{1, 0, 0, 0, 1, 0, 0, 0, 1};
  // A matrix goes to a _CC function where the dispatcher does not take it.
  std::vector<const Destination*> by_dispatcher;
  for (const Destination* destination : reachable(corrected)) {
    corrected.destination = destination;
    if (corrected.correction() == Conversion::Correction::dispatcher)
      by_dispatcher.push_back(destination);
  }
  corrected.direct_correction = true;
  return {{"descriptors", 'd', reachable(plain)},
          {"big_endian", 'b', reachable(swapped)},
          {"older", 'o', reachable(older)},
          {"matrix", 'm', by_dispatcher},
          {"cc", 'c', reachable(corrected)}};
}

// What CYGM, 8-bit Bayer and YUV frames have beside: direct functions only.
struct NamedWay {
  const char* name;
  Conversion way;
};
std::vector<NamedWay> windows_of(const Source& source) {
  std::vector<NamedWay> list;
  Conversion way;
  way.source = &source;
  if (source.is_bayer8()) {
    way.entry = Conversion::Entry::bayer_binned;
    list.push_back({kBinnedName, way});
  }
  if (source.is_yuv()) {
    for (const YuvName& named : kYuvNames) {
      way.yuv_encoding = named.encoding;
      list.push_back({named.name, way});
    }
  }
  if (source.is_cygm()) {
    for (const CygmName& named : kCygmNames) {
      way.entry = named.entry;
      list.push_back({named.name, way});
    }
  }
  return list;
}

bool has(const std::vector<const Destination*>& list, const Destination& one) {
  for (const Destination* entry : list)
    if (entry == &one) return true;
  return false;
}

Json names(const std::vector<const Destination*>& list) {
  Json array = Json::array();
  for (const Destination* destination : list) array.push_back(destination->name);
  return array;
}

Json described(const Source& source) {
  Json entry;
  entry["name"] = source.name;
  entry["code"] = source.code == 0 ? Json(nullptr) : Json(hex_code(source.code));
  entry["bits_per_pixel"] = source.pixel.bitsPerPixel;
  entry["bits_used"] = source.pixel.bitsUsed;
  entry["layout"] = source.is_cygm() ? "CYGM" : layout_name(source.pixel.pixelLayout);
  entry["bayer_pattern"] = source.is_mosaic() && !source.is_cygm()
                               ? Json(pattern_name(source.pixel.bayerPattern))
                               : Json(nullptr);
  entry["width_multiple"] = source.step_x();
  entry["height_multiple"] = source.step_y();
  entry["unpacks_to"] =
      source.packing ? Json(need_source(hex_code(source.words_code)).name) : nullptr;
  entry["unpacked_first"] = source.kind == Source::Kind::packed;
  entry["i420_directly"] = goes_to_i420(source.pixel);
  return entry;
}

void print_json() {
  Json root;
  for (const Destination& destination : destinations())
    root["destinations"].push_back({{"name", destination.name},
                                    {"index", destination.index},
                                    {"bits_per_pixel", destination.pixel.bitsPerPixel},
                                    {"layout", layout_name(destination.pixel.pixelLayout)}});
  for (const Source& source : sources()) {
    Json entry = described(source);
    for (const Way& way : ways_of(source)) entry[way.name] = names(way.reached);
    Json modes = Json::object();
    if (source.is_bayer8())
      for (const DebayerName& mode : kDebayerNames) {
        Conversion way;
        way.source = &source;
        way.debayer = mode.mode;
        modes[mode.name] = names(reachable(way));
      }
    entry["debayer"] = modes;
    Json windows = Json::object();
    for (const NamedWay& way : windows_of(source)) windows[way.name] = names(reachable(way.way));
    entry["windows"] = windows;
    root["sources"].push_back(entry);
  }
  for (const FlipName& flip : kFlipNames) root["flips"].push_back(flip.name);
  for (const WordName& word : kWordNames) root["unpack"].push_back(word.name);
  root["largest_bin"] = kLargestBin;
  std::printf("%s\n", root.dump(2).c_str());
}

void print_way(const char* name, const Conversion& way) {
  std::printf("  %-9s", name);
  for (const Destination* destination : reachable(way))
    std::printf(" %s", destination->name.c_str());
  std::printf("\n");
}

std::string code_text(const Source& source) {
  return source.code == 0 ? "" : hex_code(source.code);
}

void print_row(const Source& source) {
  std::printf("%-16s %-10s %4u %4u  ", source.name.c_str(), code_text(source).c_str(),
              source.pixel.bitsPerPixel, source.pixel.bitsUsed);
  const std::vector<Way> ways = ways_of(source);
  for (const Destination& destination : destinations()) {
    std::string cell;
    for (const Way& way : ways)
      if (has(way.reached, destination)) cell += way.mark;
    std::printf(" %-*s", int(destination.name.size()), cell.empty() ? "." : cell.c_str());
  }
  std::printf("\n");
}

void print_packed() {
  std::printf(
      "\nUnpacked by LumUnpackTo16, then converted like the words that it gives:\n"
      "%-16s %-10s %4s %4s   %s\n",
      "source", "code", "bits", "used", "words");
  for (const Source& source : sources()) {
    if (source.kind != Source::Kind::packed) continue;
    std::printf("%-16s %-10s %4u %4u   %s", source.name.c_str(), code_text(source).c_str(),
                source.pixel.bitsPerPixel, source.pixel.bitsUsed, source.converted().name.c_str());
    for (const std::string& other : source.other_names)
      if (source.code == 0)
        std::printf("%s%s", &other == &source.other_names[0] ? "   also " : ", ", other.c_str());
    std::printf("\n");
  }
}

void print_table() {
  std::printf("%-16s %-10s %4s %4s  ", "source", "code", "bits", "used");
  for (const Destination& destination : destinations())
    std::printf(" %s", destination.name.c_str());
  std::printf("\n");
  for (const Source& source : sources())
    if (source.kind != Source::Kind::packed) print_row(source);
  std::printf(
      "\nd LumImageTransform (IRaw8CYGM: its direct function)   b the same, big-endian words\n"
      "o LumTransformOLD   . not converted   with --matrix or --wb:\n"
      "m LumImageTransform   c a _CC function, taken with --cc and where there is no m\n");
  print_packed();
  std::printf("\n8-bit Bayer by --debayer mode:\n");
  for (const DebayerName& mode : kDebayerNames) {
    Conversion way;
    way.source = find_source("BayerRG8");
    way.debayer = mode.mode;
    print_way(mode.name, way);
  }
  for (const NamedWay& named : windows_of(*find_source("BayerRG8")))
    print_way(named.name, named.way);
  std::printf("\nIRaw8CYGM by --cygm:\n");
  for (const Source& source : sources())
    if (source.is_cygm())
      for (const NamedWay& named : windows_of(source)) print_way(named.name, named.way);
  std::printf("\nYUV by --yuv:\n");
  for (const NamedWay& named : windows_of(*find_source("YUV422_8_UYVY")))
    print_way(named.name, named.way);
  std::printf(
      "\nAfter the conversion, but for UYVY, in this order:\n"
      "  --bin N or NxN, up to %u\n  --resize WIDTHxHEIGHT [--nearest]\n  --flip",
      kLargestBin);
  for (const FlipName& flip : kFlipNames) std::printf(" %s", flip.name);
  std::printf("\n  --i420, of 8-bit destinations; made directly, without --to, of:\n   ");
  for (const Source& source : sources())
    if (goes_to_i420(source.pixel)) std::printf(" %s", source.name.c_str());
  std::printf("\nInstead of it, for packed sources:\n  --unpack");
  for (const WordName& word : kWordNames) std::printf(" %s", word.name);
  std::printf("\n");
}

void print_pattern(uint32_t pattern) {
  const char* name = pattern_name(pattern);
  std::printf("pattern         %s, rows 0 and 1:  %c %c / %c %c\n", name, name[0], name[1], name[2],
              name[3]);
}

// A mode value that strtoul takes whole.
bool parse_code(const std::string& text, int64_t& code) {
  if (text.empty()) return false;
  char* end = nullptr;
  code = std::strtoll(text.c_str(), &end, 0);
  return *end == '\0' && code >= INT32_MIN && code <= int64_t{UINT32_MAX};
}

}  // namespace

int formats_command(bool json) {
  json ? print_json() : print_table();
  return 0;
}

int info_command(const std::string& format, const std::string& size_text) {
  FrameSize size;
  if (!size_text.empty()) size = need_size("--size", size_text);
  const Source* source = find_source(format);
  const Destination* destination = source ? nullptr : find_destination(format);
  if (destination == nullptr) source = &need_source(format);
  const LumPixelInfo& pixel = source ? source->pixel : destination->pixel;
  uint64_t bytes = 0;
  if (source) {
    std::printf("name            %s\n", source->name.c_str());
    if (source->is_cygm())
      std::printf("code            none: a frame of the direct CYGM functions\n");
    else
      std::printf("code            %s\n",
                  source->code == 0 ? "none: a name of V4L2" : hex_code(source->code).c_str());
    bytes = source->frame_bytes(size.width, size.height);
  } else {
    std::printf("name            %s\nindex           %u\n", destination->name.c_str(),
                destination->index);
    bytes = destination->frame_bytes(size.width, size.height);
  }
  std::printf(
      "bits per pixel  %u\nbits used       %u\nlayout          %s\n", pixel.bitsPerPixel,
      pixel.bitsUsed,
      source && source->is_cygm() ? "CYGM mosaic, two fields" : layout_name(pixel.pixelLayout));
  if (pixel.bayerPattern <= LumBayerPatternBGGR) print_pattern(pixel.bayerPattern);
  if (source && source->packing)
    std::printf("unpacks to      %s\n", need_source(hex_code(source->words_code)).name.c_str());
  if (source)
    std::printf("width, height   multiples of %u and %u\n", source->step_x(), source->step_y());
  if (size.width > 0) {
    std::printf("bytes           %u x %u x %u / 8 = %s\n", size.width, size.height,
                pixel.bitsPerPixel, bytes_text(bytes).c_str());
    if (source && !source->fits(size.width, size.height))
      throw Failure(source->name + " has no frames of " + size_text);
  }
  return 0;
}

int errors_command(const std::string& text) {
  int64_t code = 0;
  if (!parse_code(text, code))
    throw Failure("errors " + text + ": expected a 32-bit code, for example -7 or 0x88000004");
  std::printf("%s\n", result_text(static_cast<int32_t>(static_cast<uint32_t>(code))).c_str());
  return 0;
}

}  // namespace lum_tool
