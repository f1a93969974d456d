// SPDX-License-Identifier: MIT
#include "conversion.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "failure.h"

namespace lum_tool {
namespace {

constexpr uint32_t kProbeSide = 8;  // a multiple of every format's step
constexpr uint32_t kLegacyFirst = 0x88000000, kLegacyLast = 0x8AFFFFFF;

// The dispatcher would read other pairs as 12-bit packed samples, whatever they are.
bool dispatcher_corrects(const Conversion& way, const Source& from) {
  if (way.entry != Conversion::Entry::descriptors || from.is_cygm() || !from.is_mosaic() ||
      way.big_endian || way.msb_aligned || way.debayer.value_or(0) != LumDebayerMode2x2)
    return false;
  switch (way.destination->index) {
    case LUM_FORMAT_MONO8_REC601:
    case LUM_FORMAT_MONO8_REC709:
      return from.pixel.bitsPerPixel == 8;
    case LUM_FORMAT_BGR24:
      return from.pixel.bitsPerPixel != 16;
    case LUM_FORMAT_MONO16_REC601:
    case LUM_FORMAT_MONO16_REC709:
      return from.pixel.bitsPerPixel == 16;
    case LUM_FORMAT_BGR48:
      return from.pixel.bitsPerPixel != 8;
    default:
      return false;
  }
}

LumBitDepthInfo depth_of(const Conversion& way, const LumPixelInfo& pixel) {
  return {0, way.msb_aligned ? 0u : 1u, pixel.bitsUsed, way.big_endian ? 1u : 0u,
          pixel.bayerPattern};
}

struct MatrixDeleter {
  void operator()(LumColorCorrection* matrix) const { LumDestroyColorCorrection(matrix); }
};

std::unique_ptr<LumColorCorrection, MatrixDeleter> made_matrix(const std::array<float, 9>& floats) {
  LumColorCorrection* matrix = nullptr;
  need("LumCreateColorCorrectionMatrix_Int8",
       LumCreateColorCorrectionMatrix_Int8(&matrix, floats.data()));
  return std::unique_ptr<LumColorCorrection, MatrixDeleter>(matrix);
}

Outcome correct_mosaic(const Conversion& way, uint8_t* to, const uint8_t* from, uint32_t width,
                       uint32_t height) {
  const LumPixelInfo& pixel = way.source->converted().pixel;
  const uint32_t index = way.destination->index, pattern = pixel.bayerPattern;
  const auto matrix = made_matrix(*way.matrix);
  const LumColorCorrection* const m = matrix.get();
  const auto outcome = [](const char* function, uint32_t code) {
    return Outcome{function, static_cast<int32_t>(code)};
  };
  if (pixel.bitsPerPixel == 8)
    return outcome("LumRaw8ImageTransform_CC",
                   LumRaw8ImageTransform_CC(to, from, width, height, index, pattern, m));
  if (pixel.bitsPerPixel == 12)
    return outcome("LumRaw12ImageTransform_CC",
                   LumRaw12ImageTransform_CC(to, from, width, height, index, pattern, m));
  const LumBitDepthInfo depth = depth_of(way, pixel);
  return outcome("LumRaw16ImageTransform_CC",
                 LumRaw16ImageTransform_CC(to, from, width, height, index, &depth, m));
}

Outcome correct_finished(const Conversion& way, uint8_t* pixels, uint32_t width, uint32_t height) {
  std::array<float, 9> coefficients = *way.matrix;
  const LumPixelInfo& pixel = way.destination->pixel;
  if (pixel.pixelLayout == LumPixelLayoutRGB)
    std::reverse(coefficients.begin(), coefficients.end());
  const uint32_t code = LumBGRToBGR_CC(pixels, pixels, width * height, pixel.bitsPerPixel / 24,
                                       made_matrix(coefficients).get());
  return {"LumBGRToBGR_CC", static_cast<int32_t>(code)};
}

}  // namespace

Conversion::Correction Conversion::correction() const {
  if (!matrix) return Correction::none;
  const Source& from = source->converted();
  if (!direct_correction && dispatcher_corrects(*this, from)) return Correction::dispatcher;
  return from.is_mosaic() && !from.is_cygm() && entry == Entry::descriptors &&
                 debayer.value_or(LumDebayerMode2x2) == LumDebayerMode2x2
             ? Correction::mosaic
             : Correction::finished;
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
    throw Failure("--debayer is for 8-bit Bayer frames, which " + from + " is not" +
                  (source->is_cygm() ? "; --cygm chooses for it" : ""));
  if ((big_endian || msb_aligned) && !words)
    throw Failure("--big-endian and --msb-aligned are for 16-bit mono and Bayer words; " + from +
                  " has " + std::to_string(source->pixel.bitsPerPixel) + " bits a pixel");
  if (entry == Entry::older && (debayer || matrix || big_endian || msb_aligned))
    throw Failure("--via-old knows neither debayer mode, matrix, byte order nor alignment");
  if (source->is_cygm() && entry == Entry::older)
    throw Failure("IRaw8CYGM is converted by direct functions, LumTransformOLD does not know it");
  if (yuv_encoding &&
      (!source->is_yuv() || entry != Entry::descriptors || destination->index != LUM_FORMAT_BGR24))
    throw Failure("--yuv is for YUV frames to BGR24 through LumYUVToBGR, not for " + from + " to " +
                  destination->name + (entry == Entry::older ? " through LumTransformOLD" : ""));
  if (entry == Entry::cygm_luma && destination->index != LUM_FORMAT_MONO8_REC601)
    throw Failure("--cygm luma converts to MONO8_REC601 only");
  if (entry == Entry::direct_bgr && (!source->is_cygm() || destination->name != "BGR24"))
    throw Failure("--direct-bgr converts IRaw8CYGM to BGR24 only");
  const bool finished = correction() == Correction::finished;
  if (finished && destination->pixel.pixelLayout != LumPixelLayoutBGR &&
      destination->pixel.pixelLayout != LumPixelLayoutRGB)
    throw Failure("--matrix and --wb: " + from +
                  " is corrected after its conversion here, which is done in BGR24, RGB24 and "
                  "BGR48, not in " +
                  destination->name);
  const bool counted = !source->is_mosaic() || finished;
  if (counted && uint64_t{width} * height > UINT32_MAX)
    throw Failure(std::to_string(width) + "x" + std::to_string(height) + " are " +
                  grouped(uint64_t{width} * height) +
                  " pixels; the library takes 4,294,967,295 at most");
}

Outcome Conversion::run(uint8_t* destination_data, uint8_t* source_data, uint32_t width,
                        uint32_t height) {
  uint8_t* from = source_data;
  if (source->kind == Source::Kind::packed) {
    unpack(*source->packing, false, source_data, uint64_t{width} * height, words_);
    from = words_.data();
  }
  if (correction() == Correction::mosaic)
    return correct_mosaic(*this, destination_data, from, width, height);
  const Outcome converted = convert(destination_data, from, width, height);
  if (converted.code != 0 || correction() != Correction::finished) return converted;
  return correct_finished(*this, destination_data, width / divisor(), height / divisor());
}

Outcome Conversion::convert(uint8_t* to, uint8_t* from, uint32_t width, uint32_t height) const {
  const uint32_t index = destination->index, pattern = source->pixel.bayerPattern;
  const auto direct = [&](const char* name, auto function, auto... rest) {
    return Outcome{name, static_cast<int32_t>(function(to, from, width, height, rest...))};
  };
  if (yuv_encoding)
    return {"LumYUVToBGR",
            static_cast<int32_t>(
                LumYUVToBGR(to, from, width * height, source->pixel.pixelLayout, *yuv_encoding))};
  switch (entry) {
    case Entry::direct_bgr:
      return direct("LumIRaw8CYGMToBGR", LumIRaw8CYGMToBGR);
    case Entry::cygm_luma:
      return direct("LumIRaw8CYGMToY8", LumIRaw8CYGMToY8);
    case Entry::cygm_3x3:
      return direct("LumIRaw8CYGMImageTransform_3x3", LumIRaw8CYGMImageTransform_3x3, index, 0u);
    case Entry::cygm_binned:
      return direct("LumIRaw8CYGMImageTransform_Bin", LumIRaw8CYGMImageTransform_Bin, index, 0u);
    case Entry::bayer_binned:
      return direct("LumRaw8ImageTransform_Bin", LumRaw8ImageTransform_Bin, index, pattern);
    case Entry::older:
      return {"LumTransformOLD",
              LumTransformOLD(to, index, from, width, height, 0, source->converted().code)};
    case Entry::descriptors:
      break;
  }
  return source->is_cygm()
             ? direct("LumIRaw8CYGMImageTransform", LumIRaw8CYGMImageTransform, index, 0u)
             : by_dispatcher(to, from, width, height);
}

Outcome Conversion::by_dispatcher(uint8_t* to, uint8_t* from, uint32_t width,
                                  uint32_t height) const {
  LumImage input = {}, output = {};
  input.size = output.size = sizeof(LumImage);
  input.data = from;
  output.data = to;
  LumSetImageInfoFromPixelFormat(source->converted().code, width, height, &input);
  if (big_endian) input.imageInfo.pixelInfo.endianness = 1;
  if (msb_aligned) input.imageInfo.pixelInfo.alignment = 0;
  LumSetImageInfoOutput(destination->index, width, height, &output);
  LumTransformInfo parameters[2] = {};
  uint32_t count = 0;
  if (debayer) LumSetDebayerMode(*debayer, &parameters[count++]);
  if (correction() == Correction::dispatcher)
    LumSetColorCorrectionMatrix3x3(matrix->data(), &parameters[count++]);
  return {"LumImageTransform", LumImageTransform(&input, &output, parameters, count)};
}

bool Conversion::keeps_foreign_words() const {
  const LumPixelInfo& from = source->converted().pixel;
  const LumPixelInfo& to = destination->pixel;
  const bool copied = from.pixelLayout == LumPixelLayoutMono && from.bitsUsed == 16 &&
                      to.pixelLayout == LumPixelLayoutMono && to.bitsPerPixel == 16;
  return copied && (big_endian || entry == Entry::older);
}

Picture Conversion::picture(const Bytes& buffer, uint32_t width, uint32_t height) const {
  Picture picture;
  picture.width = width;
  picture.height = height;
  const size_t pixels = size_t{width} * height;
  const uint32_t layout = destination->pixel.pixelLayout;
  const Source& taken = source->converted();
  Bytes decoded;
  const Bytes* from = &buffer;
  bool swap_red_blue = layout == LumPixelLayoutBGR || layout == LumPixelLayoutBGRA;
  if (layout == LumPixelLayoutYUV422) {
    if (taken.pixel.pixelLayout == LumPixelLayoutMono) {
      // Its chroma bytes are 0, not neutral: the luminance alone is the picture.
      decoded.resize(pixels);
      for (size_t i = 0; i < pixels; ++i) decoded[i] = buffer[2 * i + 1];
      picture.channels = 1;
    } else {
      // Mosaics become UYVY of studio range, YUV sources keep the range that they have.
      decoded.resize(pixels * 3);
      const uint32_t encoding = taken.is_mosaic() ? 1 : 0;
      need("LumYUVToBGR", LumYUVToBGR(decoded.data(), buffer.data(), uint32_t(pixels),
                                      LumPixelLayoutYUV422, encoding));
      picture.channels = 3;
      swap_red_blue = true;
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
    if (keeps_foreign_words())
      for (uint16_t& v : picture.samples) v = uint16_t(v << 8 | v >> 8);
  } else {
    std::transform(from->begin(), from->begin() + std::ptrdiff_t(count), picture.samples.begin(),
                   [](uint8_t v) { return uint16_t(v * 257); });
  }
  if (swap_red_blue)
    for (size_t i = 0; i < count; i += picture.channels)
      std::swap(picture.samples[i], picture.samples[i + 2]);
  return picture;
}

void need(const char* function, uint32_t code) {
  if (code != 0)
    throw Failure(std::string(function) + ": " + result_text(static_cast<int32_t>(code)));
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
    if (way.run(to.data(), from.data(), kProbeSide, kProbeSide).code == 0)
      found.push_back(&destination);
  }
  return found;
}

}  // namespace lum_tool
