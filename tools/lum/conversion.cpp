// SPDX-License-Identifier: MIT
#include "conversion.h"

#include <algorithm>
#include <cstring>

#include "failure.h"

namespace lum_tool {
namespace {

constexpr uint32_t kProbeSide = 8;  // a multiple of every format's step
constexpr uint32_t kLegacyFirst = 0x88000000, kLegacyLast = 0x8AFFFFFF;

LumImage described(const Source& source, const Conversion& way, uint8_t* data, uint32_t width,
                   uint32_t height) {
  LumImage image = {};
  image.size = sizeof image;
  image.data = data;
  LumSetImageInfoFromPixelFormat(source.code, width, height, &image);
  if (way.big_endian) image.imageInfo.pixelInfo.endianness = 1;
  if (way.msb_aligned) image.imageInfo.pixelInfo.alignment = 0;
  return image;
}

uint8_t clamped(int value) { return static_cast<uint8_t>(std::clamp(value, 0, 255)); }

// The UYVY that mosaics are turned into spans the studio range (16..235); this takes it back.
void studio_uyvy_to_rgb(const Bytes& uyvy, Bytes& rgb) {
  for (size_t pixel = 0; pixel < rgb.size() / 3; ++pixel) {
    const uint8_t* group = uyvy.data() + pixel / 2 * 4;
    const int c = 298 * (group[1 + pixel % 2 * 2] - 16) + 128;
    const int u = group[0] - 128, v = group[2] - 128;
    rgb[3 * pixel] = clamped((c + 409 * v) >> 8);
    rgb[3 * pixel + 1] = clamped((c - 100 * u - 208 * v) >> 8);
    rgb[3 * pixel + 2] = clamped((c + 516 * u) >> 8);
  }
}

}  // namespace

const char* Conversion::function() const {
  switch (entry) {
    case Entry::direct_bgr:
      return "LumIRaw8CYGMToBGR";
    case Entry::cygm_3x3:
      return "LumIRaw8CYGMImageTransform_3x3";
    case Entry::cygm_binned:
      return "LumIRaw8CYGMImageTransform_Bin";
    case Entry::cygm_luma:
      return "LumIRaw8CYGMToY8";
    case Entry::bayer_binned:
      return "LumRaw8ImageTransform_Bin";
    case Entry::older:
      return "LumTransformOLD";
    default:
      return source->is_cygm() ? "LumIRaw8CYGMImageTransform" : "LumImageTransform";
  }
}

void Conversion::check(uint32_t width, uint32_t height) const {
  const std::string& from = source->name;
  const bool words = source->pixel.bitsPerPixel == 16 &&
                     (source->is_mosaic() || source->pixel.pixelLayout == LumPixelLayoutMono);
  if (!source->fits(width, height))
    throw Failure(from + " needs a width that is a multiple of " +
                  std::to_string(source->step_x()) + " and a height that is a multiple of " +
                  std::to_string(source->step_y()) + "; " + std::to_string(width) + "x" +
                  std::to_string(height) + " is not");
  const bool bayer_binned = entry == Entry::bayer_binned;
  if ((debayer || bayer_binned) && !source->is_bayer8())
    throw Failure("--debayer is for 8-bit Bayer frames; the library converts " + from +
                  " in one way only");
  if ((big_endian || msb_aligned) && !words)
    throw Failure("--big-endian and --msb-aligned are for 16-bit mono and Bayer words; " + from +
                  " has " + std::to_string(source->pixel.bitsPerPixel) + " bits a pixel");
  if (entry == Entry::older && (debayer || matrix || big_endian || msb_aligned))
    throw Failure("--via-old knows neither debayer mode, matrix, byte order nor alignment");
  if (source->is_cygm() && (entry == Entry::older || matrix))
    throw Failure(
        "IRaw8CYGM is converted by a direct function, which takes no matrix and which "
        "the dispatchers do not know");
  if (entry == Entry::cygm_luma && destination->index != LUM_FORMAT_MONO8_REC601)
    throw Failure("--cygm luma converts to MONO8_REC601 only");
  if (entry == Entry::direct_bgr && (!source->is_cygm() || destination->name != "BGR24"))
    throw Failure("--direct-bgr converts IRaw8CYGM to BGR24 only");
  if (!matrix) return;
  if (bayer_binned || debayer.value_or(LumDebayerMode2x2) != LumDebayerMode2x2)
    throw Failure("a matrix goes with the 2x2 debayer mode only");
  if (big_endian || msb_aligned)
    throw Failure("with a matrix, 16-bit words are read as little-endian, bits at the bottom");
  // The dispatcher takes every other mosaic to be 12-bit packed on this way, whatever it is.
  const bool to24 = destination->name == "BGR24", to48 = destination->name == "BGR48";
  if (source->pixel.pixelLayout == LumPixelLayoutRaw &&
      ((source->pixel.bitsPerPixel == 8 && to48) || (source->pixel.bitsPerPixel == 16 && to24)))
    throw Failure("with a matrix the library reads " + from + " to " + destination->name +
                  " as 12-bit packed samples, which these are not; use " +
                  (to48 ? "BGR24" : "BGR48"));
}

int32_t Conversion::run(uint8_t* destination_data, uint8_t* source_data, uint32_t width,
                        uint32_t height) const {
  const auto direct = [&](auto function, auto... rest) {
    return static_cast<int32_t>(function(destination_data, source_data, width, height, rest...));
  };
  const uint32_t index = destination->index, pattern = source->pixel.bayerPattern;
  if (entry == Entry::direct_bgr) return direct(LumIRaw8CYGMToBGR);
  if (entry == Entry::cygm_luma) return direct(LumIRaw8CYGMToY8);
  if (entry == Entry::cygm_3x3) return direct(LumIRaw8CYGMImageTransform_3x3, index, 0u);
  if (entry == Entry::cygm_binned) return direct(LumIRaw8CYGMImageTransform_Bin, index, 0u);
  if (entry == Entry::bayer_binned) return direct(LumRaw8ImageTransform_Bin, index, pattern);
  if (source->is_cygm()) return direct(LumIRaw8CYGMImageTransform, index, 0u);
  if (entry == Entry::older)
    return LumTransformOLD(destination_data, destination->index, source_data, width, height, 0,
                           source->code);
  LumImage from = described(*source, *this, source_data, width, height);
  LumImage to = {};
  to.size = sizeof to;
  to.data = destination_data;
  LumSetImageInfoOutput(destination->index, width, height, &to);
  LumTransformInfo parameters[2] = {};
  uint32_t count = 0;
  if (debayer) LumSetDebayerMode(*debayer, &parameters[count++]);
  if (matrix) LumSetColorCorrectionMatrix3x3(matrix->data(), &parameters[count++]);
  return LumImageTransform(&from, &to, parameters, count);
}

Picture Conversion::picture(const Bytes& buffer, uint32_t width, uint32_t height) const {
  Picture picture;
  picture.width = width;
  picture.height = height;
  const size_t pixels = size_t{width} * height;
  const uint32_t layout = destination->pixel.pixelLayout;
  Bytes decoded;
  const Bytes* from = &buffer;
  if (layout == LumPixelLayoutYUV422) {
    if (source->pixel.pixelLayout == LumPixelLayoutMono) {
      // Its chroma bytes are 0, not neutral: the luminance alone is the picture.
      decoded.resize(pixels);
      for (size_t i = 0; i < pixels; ++i) decoded[i] = buffer[2 * i + 1];
      picture.channels = 1;
    } else {
      decoded.resize(pixels * 3);
      if (source->is_mosaic())
        studio_uyvy_to_rgb(buffer, decoded);
      else if (const uint32_t code = LumYUV422ImageTransform(decoded.data(), buffer.data(),
                                                             uint32_t(pixels), LUM_FORMAT_RGB24))
        throw Failure("LumYUV422ImageTransform: " + result_text(int32_t(code)));
      picture.channels = 3;
    }
    from = &decoded;
  } else {
    picture.channels = layout == LumPixelLayoutMono                                   ? 1
                       : layout == LumPixelLayoutRGBA || layout == LumPixelLayoutBGRA ? 4
                                                                                      : 3;
  }
  const size_t count = pixels * picture.channels;
  picture.samples.resize(count);
  picture.bits =
      destination->pixel.bitsPerPixel / picture.channels == 16 && layout != LumPixelLayoutYUV422
          ? 16
          : 8;
  if (picture.bits == 16) {
    std::memcpy(picture.samples.data(), from->data(), count * 2);
    // Kept: mono words of which all 16 bits are used are copied as they are, in their byte order.
    const bool copied =
        source->pixel.pixelLayout == LumPixelLayoutMono && source->pixel.bitsUsed == 16;
    if (copied && (big_endian || entry == Entry::older))
      for (uint16_t& v : picture.samples) v = uint16_t(v << 8 | v >> 8);
  } else {
    std::transform(from->begin(), from->begin() + std::ptrdiff_t(count), picture.samples.begin(),
                   [](uint8_t v) { return uint16_t(v * 257); });
  }
  if (layout == LumPixelLayoutBGR || layout == LumPixelLayoutBGRA)
    for (size_t i = 0; i < count; i += picture.channels)
      std::swap(picture.samples[i], picture.samples[i + 2]);
  return picture;
}

std::string result_text(int32_t code) {
  char text[160] = {};
  const uint32_t bits = static_cast<uint32_t>(code);
  const bool legacy = bits >= kLegacyFirst && bits <= kLegacyLast;
  if (legacy)
    LumGetLegacyErrorInfo(code, text, sizeof text - 1);
  else
    LumGetErrorInfo(code, text, sizeof text - 1);
  return (legacy ? hex_code(bits) : std::to_string(code)) + " " + text;
}

std::vector<const Destination*> reachable(Conversion way) {
  std::vector<const Destination*> found;
  for (const Destination& destination : destinations()) {
    way.destination = &destination;
    try {
      way.check(kProbeSide, kProbeSide);
    } catch (const Failure&) {
      continue;
    }
    Bytes from(way.source->frame_bytes(kProbeSide, kProbeSide) + kSourceSlack);
    Bytes to(destination.frame_bytes(kProbeSide, kProbeSide));
    if (way.run(to.data(), from.data(), kProbeSide, kProbeSide) == 0) found.push_back(&destination);
  }
  return found;
}

}  // namespace lum_tool
