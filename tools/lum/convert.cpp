// SPDX-License-Identifier: MIT
// `lum convert`: frames in, pictures or frames out.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <regex>

#include "byte_file.h"
#include "commands.h"
#include "converter.h"
#include "failure.h"
#include "frame_stream.h"
#include "progress.h"

namespace lum_tool {
namespace {

constexpr uint64_t kAllFrames = std::numeric_limits<uint64_t>::max();

struct FrameRange {
  uint64_t first = 0;
  uint64_t last = 0;
};

FileKind output_kind(const ConvertOptions& options) {
  FileKind kind = FileKind::raw;
  if (options.type == "png") kind = FileKind::png;
  if (options.type == "tiff") kind = FileKind::tiff;
  if (options.type == "pnm") kind = FileKind::pnm;
  if (options.type.empty() && !is_standard_stream(options.output))
    kind = kind_of_name(options.output);
  if (options.i420 && kind != FileKind::raw)
    throw Failure(
        "--i420 makes planes, which are no picture file; for plain bytes name the output "
        "otherwise, for example frame.yuv, or add --type raw");
  return kind;
}

FrameRange wanted_frames(const ConvertOptions& options, bool many) {
  if (options.frames.empty()) return {0, many ? kAllFrames : 0};
  if (options.frames == "all") return {0, kAllFrames};
  static const std::regex form("([0-9]{1,19})(-([0-9]{1,19}))?");
  std::smatch numbers;
  if (std::regex_match(options.frames, numbers, form)) {
    const uint64_t first = std::stoull(numbers[1]);
    const uint64_t last = numbers[3].matched ? std::stoull(numbers[3]) : first;
    if (first <= last) return {first, last};
  }
  throw Failure("--frames " + options.frames + ": expected \"all\", a number from 0 or two, 2-9");
}

void note_first_of(uint64_t frames) {
  std::fprintf(stderr, "note: frame 0 of %llu; all of them go into a name with %%04d\n",
               static_cast<unsigned long long>(frames));
}

Conversion conversion_of(const ConvertOptions& options) {
  Conversion way;
  way.source = &need_source(options.from);
  const bool luma = options.cygm == kLumaName;
  way.destination = &need_destination(!options.to.empty() ? options.to
                                      : luma              ? kLumaDestination
                                                          : kDefaultDestination);
  way.direct_correction = options.direct_correction;
  if (options.via_old) way.entry = Conversion::Entry::older;
  if (options.direct_bgr) way.entry = Conversion::Entry::direct_bgr;
  way.big_endian = options.big_endian;
  way.msb_aligned = options.msb_aligned;
  for (const DebayerName& known : kDebayerNames)
    if (options.debayer == known.name) way.debayer = known.mode;
  if (options.debayer == kBinnedName) way.entry = Conversion::Entry::bayer_binned;
  for (const CygmName& known : kCygmNames)
    if (options.cygm == known.name) way.entry = known.entry;
  for (const YuvName& known : kYuvNames)
    if (options.yuv == known.name) way.yuv_encoding = known.encoding;
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
  if (way.direct_correction && !way.matrix) throw Failure("--cc goes with --matrix or --wb");
  if (way.matrix &&
      !std::all_of(matrix.begin(), matrix.end(), [](float v) { return std::isfinite(v); }))
    throw Failure("a matrix or gain must be a finite number");
  return way;
}

std::optional<uint32_t> line_pitch_of(const ConvertOptions& options) {
  const std::string& text = options.line_pitch;
  if (text.empty()) return {};
  if (text.size() > 9 || text.find_first_not_of("0123456789") != std::string::npos)
    throw Failure("--line-pitch " + text + ": expected a number of bytes below " +
                  grouped(1000000000));
  return static_cast<uint32_t>(std::stoul(text));
}

// "2" or "4x2".
FrameSize parse_bin(const std::string& text) {
  FrameSize bin;
  const bool one = text.find_first_of("xX") == std::string::npos;
  if (!parse_size(one ? text + "x" + text : text, bin) || bin.width > kLargestBin ||
      bin.height > kLargestBin)
    throw Failure("--bin " + text + ": expected a number from 1 to 16 or two of them, 4x2");
  return bin;
}

Finish finish_of(const ConvertOptions& options) {
  Finish finish;
  Geometry& geometry = finish.geometry;
  if (!options.bin.empty()) geometry.bin = parse_bin(options.bin);
  if (!options.resize.empty()) geometry.size = need_size("--resize", options.resize);
  geometry.nearest = options.nearest;
  for (const FlipName& known : kFlipNames)
    if (options.flip == known.name) geometry.flip = known.mode;
  finish.i420 = options.i420;
  return finish;
}

std::optional<bool> words_of(const ConvertOptions& options) {
  for (const WordName& known : kWordNames)
    if (options.unpack == known.name) return known.at_top;
  return {};
}

}  // namespace

bool parse_size(const std::string& text, FrameSize& size) {
  unsigned long long width = 0, height = 0;
  int end = 0;
  if (text.find_first_not_of("0123456789xX") != std::string::npos || text.size() > 16) return false;
  if (std::sscanf(text.c_str(), "%llu%*1[xX]%llu%n", &width, &height, &end) != 2) return false;
  size = {static_cast<uint32_t>(width), static_cast<uint32_t>(height)};
  return end == static_cast<int>(text.size()) && width > 0 && height > 0 && width <= kMostPerSide &&
         height <= kMostPerSide;
}

FrameSize need_size(const char* option, const std::string& text) {
  FrameSize size;
  if (parse_size(text, size)) return size;
  throw Failure(std::string(option) + " " + text + ": expected WIDTHxHEIGHT, each from 1 to " +
                grouped(kMostPerSide) + ", for example 640x480");
}

int convert_command(const ConvertOptions& options) {
  const FrameSize size = need_size("--size", options.size);
  const Conversion way = conversion_of(options);
  const Finish finish = finish_of(options);
  way.check(size.width, size.height);
  const FileKind kind = output_kind(options);
  const bool sequence = !is_standard_stream(options.output) && is_sequence(options.output);
  const bool many = sequence || kind == FileKind::raw;
  const FrameRange range = wanted_frames(options, many);
  if (!many && range.first != range.last)
    throw Failure("several frames need a numbered output, for example frame%04d.png");

  FrameStream stream(options.input, *way.source, size, line_pitch_of(options));
  std::optional<uint64_t> chosen;
  if (stream.total()) {
    if (range.first >= *stream.total())
      throw Failure("--frames " + options.frames + ": " + options.input + " has " +
                    grouped(*stream.total()) + (*stream.total() == 1 ? " frame" : " frames") +
                    ", counted from 0");
    chosen = std::min(range.last, *stream.total() - 1) - range.first + 1;
    if (!many && options.frames.empty() && *stream.total() > 1) note_first_of(*stream.total());
  }
  const InputFiles inputs(stream.names());
  if (!sequence) inputs.refuse(options.output);
  for (uint64_t i = 0; sequence && i < chosen.value_or(0); ++i)
    inputs.refuse(sequence_name(options.output, range.first + i));

  Converter converter({way, finish, words_of(options), size});
  if (has_extension(options.output, "pgm") && kind == FileKind::pnm && !converter.makes_grey())
    throw Failure(options.output + ": PGM holds grey, and " + way.destination->name +
                  " is colour; name it .ppm or convert --to MONO8_REC601");
  converter.print_notes(kind, !options.to.empty());
  std::unique_ptr<OutputFile> whole;
  if (!sequence) whole = std::make_unique<OutputFile>(options.output);
  std::optional<uint64_t> ended_after;
  {
    Progress progress(chosen);
    for (uint64_t number = 0; number <= range.last; ++number) {
      if (number < range.first) {
        if (stream.skip()) continue;
        throw Failure("the input ends before frame " + std::to_string(range.first));
      }
      if (!stream.next(converter.frame())) {
        if (number > range.first) {
          ended_after = number - 1;
          break;
        }
        throw Failure("the input ends before frame " + std::to_string(number));
      }
      if (options.frames.empty() && !many) {
        if (const uint64_t left = stream.check_rest()) note_first_of(1 + left);
      }
      if (options.time > 0 && number == range.first) converter.time(options.time);
      converter.run();
      const Bytes bytes = converter.encoded(kind);
      if (sequence) {
        const std::string name = sequence_name(options.output, number);
        inputs.refuse(name);
        write_whole(name, bytes);
      } else {
        whole->write(bytes);
      }
      progress.done(number - range.first + 1);
    }
  }
  if (ended_after && range.last != kAllFrames)
    std::fprintf(stderr, "note: the input ends after frame %llu\n",
                 static_cast<unsigned long long>(*ended_after));
  if (whole) whole->commit();
  return 0;
}

}  // namespace lum_tool
