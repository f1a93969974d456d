// SPDX-License-Identifier: MIT
#include "converter.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <limits>
#include <new>

#include "failure.h"

namespace lum_tool {
namespace {

constexpr uint8_t kOpaque = 255;  // the library leaves alpha bytes as it finds them

[[noreturn]] void refused_by_library(const Conversion& way, const Outcome& outcome) {
  std::string text = std::string(outcome.function) + ": " + result_text(outcome.code) + " (" +
                     way.source->name + " to " + way.destination->name + ")";
  const std::vector<const Destination*> others = reachable(way);
  const bool known = std::find(others.begin(), others.end(), way.destination) != others.end();
  if (!known) {
    text += ".\nThis library does not convert " + way.source->name + " to " +
            way.destination->name + " in this way. What it converts to:";
    for (const Destination* other : others) text += " " + other->name;
    if (others.empty()) text += " nothing";
    const LumPixelInfo& to = way.destination->pixel;
    const bool deep =
        to.bitsPerPixel == 48 || (to.bitsPerPixel == 16 && to.pixelLayout == LumPixelLayoutMono);
    if (deep && way.source->packing) text += "; --unpack lsb in place of --to gives 16-bit words";
    Conversion corrected = way;
    corrected.matrix = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    const std::vector<const Destination*> more = reachable(corrected);
    if (std::find(more.begin(), more.end(), way.destination) != more.end())
      text += "; with --wb 1,1,1 also " + way.destination->name;
  }
  throw Failure(text);
}

// Of every 16-bit word.
void exchange_bytes(Bytes& words) {
  for (size_t i = 0; i + 1 < words.size(); i += 2) std::swap(words[i], words[i + 1]);
}

Picture picture_of_words(const Bytes& words, const FrameSize& size, uint32_t white) {
  Picture picture;
  picture.white = white;
  picture.width = size.width;
  picture.height = size.height;
  picture.channels = 1;
  picture.bits = 16;
  picture.samples.resize(words.size() / 2);
  for (size_t i = 0; i < picture.samples.size(); ++i)
    picture.samples[i] = uint16_t(words[2 * i] | words[2 * i + 1] << 8);
  return picture;
}

}  // namespace

Converter::Converter(const Job& job) : job_(job), route_(Route::converted) {
  const Conversion& way = job_.way;
  way.check(job_.size.width, job_.size.height);
  const bool plain =
      way.entry == Conversion::Entry::descriptors && !way.matrix && !way.yuv_encoding;
  if (job_.words_at_top)
    route_ = Route::words;
  else if (job_.finish.i420 && plain && goes_to_i420(way.source->pixel))
    route_ = Route::planes;

  if (route_ == Route::words && !way.source->packing)
    throw Failure("--unpack is for 10-bit and 12-bit packed frames, which " + way.source->name +
                  " is not");
  if (route_ == Route::planes) job_.finish.check(way.source->name, way.source->pixel, job_.size);
  if (route_ == Route::converted && job_.finish.i420 &&
      way.destination->pixel.pixelLayout == LumPixelLayoutYUV422)
    throw Failure("--i420 of " + way.source->name + " goes by way of whole pixels, which " +
                  way.destination->name + " does not have; leave --to out or say BGR24");
  if (route_ == Route::converted)
    job_.finish.check(way.destination->name, way.destination->pixel, converted_size());
}

void Converter::make_room() {
  const Conversion& way = job_.way;
  const uint64_t bytes = way.source->frame_bytes(job_.size.width, job_.size.height);
  const FrameSize size = converted_size();
  try {
    source_.resize(bytes + kSourceSlack);
    if (route_ == Route::converted)
      result_.resize(way.destination->frame_bytes(size.width, size.height), kOpaque);
  } catch (const std::bad_alloc&) {
    throw Failure("not enough memory for a frame of " + bytes_text(bytes) + " and its conversion");
  }
}

FrameSize Converter::converted_size() const {
  const uint32_t divisor = job_.way.divisor();
  return {job_.size.width / divisor, job_.size.height / divisor};
}

const char* Converter::result_name() const {
  return route_ == Route::words    ? "16-bit words"
         : route_ == Route::planes ? "I420"
                                   : job_.way.destination->name.c_str();
}

bool Converter::makes_grey() const {
  const uint32_t to = job_.way.destination->pixel.pixelLayout;
  return route_ == Route::words || to == LumPixelLayoutMono ||
         (to == LumPixelLayoutYUV422 &&
          job_.way.source->converted().pixel.pixelLayout == LumPixelLayoutMono);
}

void Converter::run() {
  make_room();
  Conversion& way = job_.way;
  const auto [width, height] = job_.size;
  if (route_ == Route::words) {
    unpack(*way.source->packing, *job_.words_at_top, source_.data(), uint64_t{width} * height,
           result_);
  } else if (route_ == Route::planes) {
    result_ = job_.finish.applied(way.source->pixel, job_.size, source_);
  } else {
    const Outcome outcome = way.run(result_.data(), source_.data(), width, height);
    if (outcome.code != 0) refused_by_library(way, outcome);
  }
}

void Converter::time(uint32_t repeats) {
  make_room();
  using Clock = std::chrono::steady_clock;
  double best = std::numeric_limits<double>::infinity();
  for (uint32_t i = 0; i < repeats; ++i) {
    const Clock::time_point start = Clock::now();
    run();
    best = std::min(best, std::chrono::duration<double, std::milli>(Clock::now() - start).count());
  }
  std::fprintf(stderr, "%s to %s, %ux%u: %.4f ms a frame, best of %u\n",
               job_.way.source->name.c_str(), result_name(), job_.size.width, job_.size.height,
               best, repeats);
}

// The largest value of an unpacked sample.
uint32_t Converter::largest_word() const {
  const uint32_t bits = job_.way.source->pixel.bitsUsed;
  return ((1u << bits) - 1) << (*job_.words_at_top ? 16 - bits : 0);
}

Bytes Converter::encoded(FileKind kind) const {
  const Conversion& way = job_.way;
  if (route_ == Route::words && kind != FileKind::raw)
    return encode_picture(picture_of_words(result_, job_.size, largest_word()), kind);
  if (route_ != Route::converted) return result_;
  // Means and interpolations need numbers.
  const bool foreign = way.keeps_foreign_words() && job_.finish.geometry.any();
  Bytes words;
  if (foreign) {
    words = result_;
    exchange_bytes(words);
  }
  Bytes pixels =
      job_.finish.applied(way.destination->pixel, converted_size(), foreign ? words : result_);
  if (foreign) exchange_bytes(pixels);
  if (kind == FileKind::raw) return pixels;
  const FrameSize size = job_.finish.geometry.finished(converted_size());
  return encode_picture(way.picture(pixels, size.width, size.height), kind);
}

void Converter::print_notes(FileKind kind, bool destination_given) const {
  const Conversion& way = job_.way;
  const char* const from_name = way.source->name.c_str();
  const char* const to_name = way.destination->name.c_str();
  const Source& source = way.source->converted();
  const LumPixelInfo& from = source.pixel;
  const LumPixelInfo& to = way.destination->pixel;
  if (route_ == Route::planes)
    std::fprintf(stderr, "note: I420 planes of %s range, made of %s itself%s\n",
                 source.is_yuv() ? "the source's" : "studio", from_name,
                 destination_given ? "; --to is not used" : "");
  if (route_ == Route::words && kind != FileKind::raw && kind != FileKind::pnm &&
      !*job_.words_at_top)
    std::fprintf(
        stderr,
        "note: the samples go from 0 to %u of 65535, which looks dark; --unpack msb spreads them\n",
        largest_word());
  if (route_ != Route::converted) return;
  if (job_.finish.i420)
    std::fprintf(stderr, "note: I420 planes of studio range, made of %s by way of %s\n", from_name,
                 to_name);
  if (way.entry == Conversion::Entry::older && from.bitsPerPixel == 16 && from.bitsUsed == 16)
    std::fprintf(stderr, "note: the older dispatcher reads %s as big-endian words\n", from_name);
  const bool grey16 = to.pixelLayout == LumPixelLayoutMono && to.bitsPerPixel == 16;
  if (from.pixelLayout == LumPixelLayoutRawPacked && grey16 && !way.matrix)
    std::fprintf(stderr,
                 "note: %s from a 12-bit packed mosaic holds values from 0 to 255; all 12 bits "
                 "remain by --unpack lsb\n",
                 to_name);
  // Kept by LumImageTransform for its callers; the direct functions do as the names say.
  if (way.correction() == Conversion::Correction::dispatcher &&
      to.pixelLayout == LumPixelLayoutMono) {
    if (way.destination->index == LUM_FORMAT_MONO8_REC709 ||
        way.destination->index == LUM_FORMAT_MONO16_REC709)
      std::fprintf(stderr, "note: with a matrix %s holds BT.601 luminance; --cc makes BT.709\n",
                   to_name);
    if (from.bitsPerPixel == 8 && (from.bayerPattern == 1 || from.bayerPattern == 2))
      std::fprintf(stderr,
                   "note: with a matrix red and blue of %s change places in %s; not by --cc\n",
                   from_name, to_name);
  }
  if (kind != FileKind::raw && to.pixelLayout == LumPixelLayoutYUV422)
    std::fprintf(stderr, "note: the picture shows the UYVY bytes %s\n",
                 from.pixelLayout == LumPixelLayoutMono ? "by their luminance alone"
                 : source.is_mosaic()                   ? "decoded as BT.601, studio range"
                                                        : "decoded as BT.601, full range");
}

}  // namespace lum_tool
