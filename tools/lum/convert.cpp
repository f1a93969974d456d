// SPDX-License-Identifier: MIT
// `lum convert`: frames in, pictures or frames out.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>

#include "byte_file.h"
#include "commands.h"
#include "conversion.h"
#include "failure.h"
#include "finish.h"
#include "frame_stream.h"
#include "progress.h"

namespace lum_tool {
namespace {

constexpr uint8_t kOpaque = 255;  // the library leaves alpha bytes as it finds them

struct FrameRange {
  uint64_t first = 0;
  uint64_t last = 0;
};

FileKind output_kind(const ConvertOptions& options) {
  if (options.i420 || !options.unpack.empty()) {
    if (!options.type.empty() && options.type != "raw")
      throw Failure("--i420 and --unpack write raw bytes, not --type " + options.type);
    return FileKind::raw;
  }
  if (options.type == "png") return FileKind::png;
  if (options.type == "tiff") return FileKind::tiff;
  if (options.type == "pnm") return FileKind::pnm;
  if (options.type == "raw" || is_standard_stream(options.output)) return FileKind::raw;
  return kind_of_name(options.output);
}

FrameRange wanted_frames(const ConvertOptions& options, bool many) {
  constexpr uint64_t kAll = std::numeric_limits<uint64_t>::max();
  if (options.frames.empty()) return {0, many ? kAll : 0};
  if (options.frames == "all") return {0, kAll};
  unsigned long long first = 0, last = 0;
  int end = 0;
  const int length = static_cast<int>(options.frames.size());
  if (std::sscanf(options.frames.c_str(), "%llu%n", &first, &end) == 1 && end == length)
    return {first, first};
  if (std::sscanf(options.frames.c_str(), "%llu-%llu%n", &first, &last, &end) == 2 &&
      end == length && first <= last)
    return {first, last};
  throw Failure("--frames " + options.frames + ": expected \"all\", a number from 0 or two, 2-9");
}

Conversion conversion_of(const ConvertOptions& options) {
  Conversion way;
  way.source = &need_source(options.from);
  way.destination = &need_destination(options.to);
  if (options.via_old) way.entry = Conversion::Entry::older;
  if (options.direct_bgr) way.entry = Conversion::Entry::direct_bgr;
  way.big_endian = options.big_endian;
  way.msb_aligned = options.msb_aligned;
  for (const DebayerName& known : kDebayerNames)
    if (options.debayer == known.name) way.debayer = known.mode;
  if (options.debayer == kBinnedName) way.entry = Conversion::Entry::bayer_binned;
  for (const CygmName& known : kCygmNames)
    if (options.cygm == known.name) way.entry = known.entry;
  if (!options.cygm.empty() && !way.source->is_cygm())
    throw Failure("--cygm is for IRaw8CYGM frames");
  std::array<float, 9> matrix = {};
  if (options.matrix.size() == matrix.size()) {
    std::copy(options.matrix.begin(), options.matrix.end(), matrix.begin());
    way.matrix = matrix;
  } else if (options.white_balance.size() == 3) {
    for (size_t i = 0; i < 3; ++i) matrix[i * 4] = options.white_balance[i];
    way.matrix = matrix;
  }
  if (way.matrix &&
      !std::all_of(matrix.begin(), matrix.end(), [](float v) { return std::isfinite(v); }))
    throw Failure("a matrix or gain must be a finite number");
  return way;
}

Finish finish_of(const ConvertOptions& options) {
  Finish finish;
  FrameSize size;
  if (!options.resize.empty()) {
    if (!parse_size(options.resize, size))
      throw Failure("--resize " + options.resize + ": expected WIDTHxHEIGHT, for example 640x480");
    finish.size = size;
  }
  finish.nearest = options.nearest;
  for (const FlipName& known : kFlipNames)
    if (options.flip == known.name) finish.flip = known.mode;
  finish.i420 = options.i420;
  return finish;
}

// Nothing when frames are to be converted and not unpacked.
std::optional<uint32_t> packing_of(const ConvertOptions& options, const Source& source) {
  if (options.unpack.empty()) return {};
  const uint32_t layout = source.pixel.pixelLayout;
  if (layout != LumPixelLayoutMonoPacked && layout != LumPixelLayoutRawPacked)
    throw Failure("--unpack is for 12-bit packed frames, which " + source.name + " is not");
  for (const PackingName& known : kPackingNames)
    if (options.unpack == known.name) return known.packing;
  return {};
}

[[noreturn]] void refused_by_library(const Conversion& way, int32_t code) {
  std::string text = std::string(way.function()) + ": " + result_text(code) + " (" +
                     way.source->name + " to " + way.destination->name + ")";
  Conversion probe = way;
  const std::vector<const Destination*> others = reachable(probe);
  const bool known = std::find(others.begin(), others.end(), way.destination) != others.end();
  if (!known) {
    text += ".\nThis library does not convert " + way.source->name + " to " +
            way.destination->name + " in this way. What it converts to:";
    for (const Destination* other : others) text += " " + other->name;
    if (others.empty()) text += " nothing";
  }
  throw Failure(text);
}

struct Converter {
  Conversion way;
  Finish finish;
  std::optional<uint32_t> packing;
  uint32_t width, height;
  Bytes source, destination;

  Converter(const Conversion& conversion, const Finish& finishing,
            std::optional<uint32_t> packed_as, const FrameSize& size)
      : way(conversion),
        finish(finishing),
        packing(packed_as),
        width(size.width),
        height(size.height),
        source(way.source->frame_bytes(width, height) + kSourceSlack),
        destination(way.destination->frame_bytes(width / way.divisor(), height / way.divisor()),
                    kOpaque) {
    if (!packing) finish.check(*way.destination, picture());
  }

  FrameSize picture() const { return {width / way.divisor(), height / way.divisor()}; }

  void run() {
    if (packing) return unpack_frame(*packing, source, uint64_t{width} * height, destination);
    const int32_t code = way.run(destination.data(), source.data(), width, height);
    if (code != 0) refused_by_library(way, code);
  }

  void time(uint32_t repeats) {
    using Clock = std::chrono::steady_clock;
    double best = std::numeric_limits<double>::infinity();
    for (uint32_t i = 0; i < repeats; ++i) {
      const Clock::time_point start = Clock::now();
      run();
      best =
          std::min(best, std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    std::fprintf(stderr, "%s to %s, %ux%u: %.4f ms a frame, best of %u\n", way.source->name.c_str(),
                 way.destination->name.c_str(), width, height, best, repeats);
  }

  Bytes encoded(FileKind kind) const {
    Bytes pixels = destination;
    if (!packing) finish.apply(*way.destination, picture(), pixels);
    if (kind == FileKind::raw) return pixels;
    const FrameSize size = finish.finished(picture());
    return encode_picture(way.picture(pixels, size.width, size.height), kind);
  }
};

// What the bytes of the output are, where the formats' names do not tell.
void print_notes(const Conversion& way, FileKind kind) {
  const LumPixelInfo& from = way.source->pixel;
  const LumPixelInfo& to = way.destination->pixel;
  if (way.entry == Conversion::Entry::older && from.bitsPerPixel == 16 && from.bitsUsed == 16)
    std::fprintf(stderr, "note: the older dispatcher reads %s as big-endian words\n",
                 way.source->name.c_str());
  if (from.pixelLayout == LumPixelLayoutRawPacked && to.pixelLayout == LumPixelLayoutMono &&
      to.bitsPerPixel == 16 && !way.matrix)
    std::fprintf(stderr, "note: %s from a 12-bit packed mosaic holds values from 0 to 255\n",
                 way.destination->name.c_str());
  if (kind != FileKind::raw && to.pixelLayout == LumPixelLayoutYUV422)
    std::fprintf(stderr, "note: the picture shows the UYVY bytes %s\n",
                 from.pixelLayout == LumPixelLayoutMono ? "by their luminance alone"
                 : way.source->is_mosaic()              ? "decoded as BT.601, studio range"
                                                        : "decoded as BT.601, full range");
}

}  // namespace

bool parse_size(const std::string& text, FrameSize& size) {
  constexpr unsigned long long kMostPerSide = 1 << 20;  // keeps every product in 64 bits
  unsigned long long width = 0, height = 0;
  int end = 0;
  if (text.find_first_not_of("0123456789xX") != std::string::npos || text.size() > 16) return false;
  if (std::sscanf(text.c_str(), "%llu%*[xX]%llu%n", &width, &height, &end) != 2) return false;
  size = {static_cast<uint32_t>(width), static_cast<uint32_t>(height)};
  return end == static_cast<int>(text.size()) && width > 0 && height > 0 && width <= kMostPerSide &&
         height <= kMostPerSide;
}

int convert_command(const ConvertOptions& options) {
  FrameSize size;
  if (!parse_size(options.size, size))
    throw Failure("--size " + options.size + ": expected WIDTHxHEIGHT, for example 2448x2048");
  const Conversion way = conversion_of(options);
  way.check(size.width, size.height);
  const FileKind kind = output_kind(options);
  const bool sequence = !is_standard_stream(options.output) && is_sequence(options.output);
  const bool many = sequence || kind == FileKind::raw;
  const FrameRange range = wanted_frames(options, many);
  if (!many && range.first != range.last)
    throw Failure("several frames need a numbered output, for example frame%04d.png");

  FrameStream stream(options.input, *way.source, size.width, size.height);
  std::optional<uint64_t> chosen;
  if (stream.total()) {
    if (range.first >= *stream.total())
      throw Failure("frame " + std::to_string(range.first) + " of " +
                    std::to_string(*stream.total()) + " (they count from 0)");
    chosen = std::min(range.last, *stream.total() - 1) - range.first + 1;
    if (!many && options.frames.empty() && *stream.total() > 1)
      std::fprintf(stderr, "note: frame 0 of %llu; all of them go into a name with %%04d\n",
                   static_cast<unsigned long long>(*stream.total()));
  }
  for (const std::string& name : stream.names())
    if (!sequence) refuse_same_file(name, options.output);

  const std::optional<uint32_t> packing = packing_of(options, *way.source);
  if (!packing) print_notes(way, kind);
  Converter converter(way, finish_of(options), packing, size);
  std::unique_ptr<OutputFile> whole;
  if (!sequence) whole = std::make_unique<OutputFile>(options.output);
  {
    Progress progress(chosen);
    for (uint64_t number = 0; number <= range.last; ++number) {
      if (number < range.first) {
        if (stream.skip()) continue;
        throw Failure("the input ends before frame " + std::to_string(range.first));
      }
      if (!stream.next(converter.source)) {
        if (number > range.first) break;
        throw Failure("the input ends before frame " + std::to_string(number));
      }
      if (options.frames.empty() && !many) stream.check_rest();
      if (options.time > 0 && number == range.first) converter.time(options.time);
      converter.run();
      const Bytes bytes = converter.encoded(kind);
      if (sequence) {
        const std::string name = sequence_name(options.output, number);
        for (const std::string& input : stream.names()) refuse_same_file(input, name);
        write_whole(name, bytes);
      } else {
        whole->write(bytes);
      }
      progress.done(number - range.first + 1);
    }
  }
  if (whole) whole->commit();
  return 0;
}

}  // namespace lum_tool
