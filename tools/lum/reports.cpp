// SPDX-License-Identifier: MIT
// `lum formats`, `lum info`, `lum errors`, and `lum simulate`'s files.
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "byte_file.h"
#include "commands.h"
#include "conversion.h"
#include "failure.h"
#include "finish.h"
#include "simulate.h"

namespace lum_tool {
namespace {

using Json = nlohmann::ordered_json;

// The ways that `formats` asks about; the mark stands in the table's cells.
struct Way {
  const char* name;
  char mark;
  Conversion conversion;
};

std::vector<Way> ways_of(const Source& source) {
  Conversion plain;
  plain.source = &source;
  Conversion swapped = plain, older = plain, matrix = plain;
  swapped.big_endian = true;
  older.entry = Conversion::Entry::older;
  matrix.matrix = std::array<float, 9>{1, 0, 0, 0, 1, 0, 0, 0, 1};
  return {{"descriptors", 'd', plain},
          {"big_endian", 'b', swapped},
          {"older", 'o', older},
          {"matrix", 'm', matrix}};
}

// What CYGM and 8-bit Bayer frames have beside: direct functions only.
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
  entry["code"] = source.is_cygm() ? Json(nullptr) : Json(hex_code(source.code));
  entry["bits_per_pixel"] = source.pixel.bitsPerPixel;
  entry["bits_used"] = source.pixel.bitsUsed;
  entry["layout"] = source.is_cygm() ? "CYGM" : layout_name(source.pixel.pixelLayout);
  entry["bayer_pattern"] = source.is_mosaic() && !source.is_cygm()
                               ? Json(pattern_name(source.pixel.bayerPattern))
                               : Json(nullptr);
  entry["width_multiple"] = source.step_x();
  entry["height_multiple"] = source.step_y();
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
    for (const Way& way : ways_of(source)) entry[way.name] = names(reachable(way.conversion));
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
  for (const PackingName& packing : kPackingNames) root["packings"].push_back(packing.name);
  std::printf("%s\n", root.dump(2).c_str());
}

void print_way(const char* name, const Conversion& way) {
  std::printf("  %-7s", name);
  for (const Destination* destination : reachable(way))
    std::printf(" %s", destination->name.c_str());
  std::printf("\n");
}

void print_table() {
  std::printf("%-16s %-10s %4s %4s  ", "source", "code", "bits", "used");
  for (const Destination& destination : destinations())
    std::printf(" %s", destination.name.c_str());
  std::printf("\n");
  for (const Source& source : sources()) {
    std::printf("%-16s %-10s %4u %4u  ", source.name.c_str(),
                source.is_cygm() ? "" : hex_code(source.code).c_str(), source.pixel.bitsPerPixel,
                source.pixel.bitsUsed);
    std::vector<std::string> cells(destinations().size());
    for (const Way& way : ways_of(source)) {
      const auto found = reachable(way.conversion);
      for (size_t i = 0; i < cells.size(); ++i)
        if (has(found, destinations()[i])) cells[i] += way.mark;
    }
    for (size_t i = 0; i < cells.size(); ++i)
      std::printf(" %-*s", int(destinations()[i].name.size()),
                  cells[i].empty() ? "." : cells[i].c_str());
    std::printf("\n");
  }
  std::printf(
      "\nd LumImageTransform (IRaw8CYGM: its direct function)   b the same, big-endian words\n"
      "o LumTransformOLD   m LumImageTransform with a colour matrix   . not converted\n\n"
      "8-bit Bayer by --debayer mode:\n");
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
  std::printf(
      "\nAfter the conversion, but for UYVY:\n  --resize WIDTHxHEIGHT [--nearest]\n  --flip");
  for (const FlipName& flip : kFlipNames) std::printf(" %s", flip.name);
  std::printf(
      "\n  --i420, from 8-bit destinations\nInstead of it, for 12-bit packed sources:\n  --unpack");
  for (const PackingName& packing : kPackingNames) std::printf(" %s", packing.name);
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
  if (!size_text.empty() && !parse_size(size_text, size))
    throw Failure("--size " + size_text + ": expected WIDTHxHEIGHT, for example 2448x2048");
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
      std::printf("code            %s\n", hex_code(source->code).c_str());
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

int simulate_command(const SimulateOptions& options) {
  const Source& source = need_source(options.format);
  Conversion way;
  way.source = &source;
  way.big_endian = options.big_endian;
  way.msb_aligned = options.msb_aligned;
  way.check(source.step_x(), source.step_y());
  refuse_same_file(options.input, options.output);
  const Picture picture = decode_picture(read_whole(options.input), options.input);
  const SimulatedFrame frame =
      simulate_frame(picture, source, options.big_endian, options.msb_aligned);
  write_whole(options.output, frame.bytes);
  if (frame.width != picture.width || frame.height != picture.height)
    std::fprintf(stderr, "note: %ux%u cropped to %ux%u: %s needs multiples of %u and %u\n",
                 picture.width, picture.height, frame.width, frame.height, source.name.c_str(),
                 source.step_x(), source.step_y());
  std::fprintf(stderr, "%s frame: --from %s --size %ux%u, %s\n", source.name.c_str(),
               source.name.c_str(), frame.width, frame.height,
               bytes_text(frame.bytes.size()).c_str());
  return 0;
}

}  // namespace lum_tool
