// SPDX-License-Identifier: MIT
// The generic transform: checks both descriptors and routes the pixels to one per-source transform.
#include "bayer/colour_correction.h"
#include "convert/mono.h"
#include "frame/destination.h"
#include "lum/lum.h"

namespace {

// A call after its checks.
struct Job {
  uint8_t* dst;
  const uint8_t* src;
  uint32_t width;
  uint32_t height;
  LumSimpleImageFormat format;
  const LumPixelInfo& source;

  // 32 bits, as the flat transforms take it: larger frames are not to be had in one call.
  uint32_t count() const { return width * height; }

  using FlatTransform = uint32_t (*)(uint8_t*, const uint8_t*, uint32_t, uint32_t);
  using MosaicTransform = uint32_t (*)(uint8_t*, const uint8_t*, uint32_t, uint32_t, uint32_t,
                                       uint32_t);

  // The codes of the transforms are unsigned, those of the dispatcher signed: same 32 bits.
  LumErrorType run(FlatTransform transform) const {
    return static_cast<LumErrorType>(transform(dst, src, count(), format));
  }
  LumErrorType run(MosaicTransform transform) const {
    return static_cast<LumErrorType>(
        transform(dst, src, width, height, format, source.bayerPattern));
  }
};

struct Parameters {
  const LumTransformInfo* entries;
  uint32_t count;

  const LumTransformParameter* first(LumTransformType type) const {
    for (uint32_t i = 0; entries != nullptr && i < count; ++i) {
      if (entries[i].transformType == type) return &entries[i].parameter;
    }
    return nullptr;
  }
};

constexpr uint32_t kBigEndian = 1;

LumErrorType transform_mono(const Job& job) {
  const LumPixelInfo& source = job.source;
  if (source.bitsPerPixel == 8) return job.run(LumY8ImageTransform);
  if (source.bitsPerPixel != 16) return LumErrorBadParameter;
  if (source.bitsUsed != 16) {
    const LumBitDepthInfo depth = {0, source.alignment, source.bitsUsed, source.endianness, 0};
    return static_cast<LumErrorType>(
        LumY16ImageTransformEx(job.dst, job.src, job.count(), job.format, &depth));
  }
  return source.endianness != 0 ? job.run(LumY16ImageTransform)
                                : job.run(lum::y16_little_endian_image_transform);
}

LumErrorType transform_raw8(const Job& job, const Parameters& parameters) {
  LumDebayerMode mode = LumDebayerMode2x2;
  if (const auto* debayer = parameters.first(LumTransformTypeDebayerMode)) {
    mode = debayer->debayerMode;
  }
  switch (mode) {
    case LumDebayerMode2x2:
      return job.run(LumRaw8ImageTransform);
    case LumDebayerMode3x3:
      return job.run(LumRaw8ImageTransform_3x3);
    case LumDebayerModeLCAA:
      return job.run(LumRaw8ImageTransform_IntLCAA);
    case LumDebayerModeLCAAV:
      return job.run(LumRaw8ImageTransform_IntLCAAV);
    case LumDebayerModeYUV422:
      return job.run(LumRaw8ImageTransform_IntYUV422);
    default:
      return LumErrorBadParameter;
  }
}

LumErrorType transform_mosaic(const Job& job, const Parameters& parameters) {
  const LumPixelInfo& source = job.source;
  switch (source.bitsPerPixel) {
    case 8:
      return transform_raw8(job, parameters);
    case 12:
      if (source.pixelLayout == LumPixelLayoutRaw) return LumErrorBadParameter;
      return job.run(LumRaw12ImageTransform);
    case 16: {
      if (source.bitsUsed == 16 && source.endianness == kBigEndian) {
        return job.run(LumRaw16ImageTransform);
      }
      const LumBitDepthInfo depth = {0, source.alignment, source.bitsUsed, source.endianness,
                                     source.bayerPattern};
      return static_cast<LumErrorType>(
          LumRaw16ImageTransformEx(job.dst, job.src, job.width, job.height, job.format, &depth));
    }
    default:
      return LumErrorBadParameter;
  }
}

LumErrorType transform_by_layout(const Job& job, const Parameters& parameters) {
  const uint32_t bits = job.source.bitsPerPixel;
  switch (job.source.pixelLayout) {
    case LumPixelLayoutMono:
      return transform_mono(job);
    case LumPixelLayoutMonoPacked:
      return bits == 12 ? job.run(LumY12ImageTransform) : LumErrorBadParameter;
    case LumPixelLayoutRGB:
      return bits == 24 ? job.run(LumRGB8ImageTransform) : LumErrorBadParameter;
    // Kept: BGR, RGBA and BGRA with a width that is not their own end as mosaics, and BGR with 32
    // bits is read as R, G, B, A. Callers describe raw frames that way and depend on both.
    case LumPixelLayoutBGR:
      if (bits == 24) return job.run(LumBGR8ImageTransform);
      if (bits == 32) return job.run(LumRGBA8ImageTransform);
      return transform_mosaic(job, parameters);
    case LumPixelLayoutRGBA:
      return bits == 32 ? job.run(LumRGBA8ImageTransform) : transform_mosaic(job, parameters);
    case LumPixelLayoutBGRA:
      return bits == 32 ? job.run(LumBGRA8ImageTransform) : transform_mosaic(job, parameters);
    case LumPixelLayoutRaw:
    case LumPixelLayoutRawPacked:
      return transform_mosaic(job, parameters);
    case LumPixelLayoutYUV411:
      return job.run(LumYUV411ImageTransform);
    case LumPixelLayoutYUV422:
      return job.run(LumYUV422ImageTransform);
    case LumPixelLayoutYUV444:
      return job.run(LumYUV444ImageTransform);
    default:
      return LumErrorBadParameter;
  }
}

// Kept: whatever the kernels meet, the result is success; only an unsupported pair is refused.
LumErrorType transform_colour_corrected(const Job& job, const float* coefficients) {
  const LumPixelInfo& source = job.source;
  const bool raw = source.pixelLayout == LumPixelLayoutRaw;
  if (!raw && source.pixelLayout != LumPixelLayoutRawPacked) return LumErrorBadParameter;

  if (raw && source.bitsPerPixel == 8) {
    const auto matrix = lum::make_colour_matrix(lum::kMatrixKind8Bit, coefficients);
    switch (job.format) {
      case LUM_FORMAT_BGR24:
        lum::cc_raw8_to_bgr24(job.dst, job.src, job.width, job.height, source.bayerPattern, matrix);
        return LumErrorSuccess;
      case LUM_FORMAT_MONO8_REC601:
      case LUM_FORMAT_MONO8_REC709:
        lum::cc_raw8_to_mono8(job.dst, job.src, job.width, job.height, source.bayerPattern, matrix);
        return LumErrorSuccess;
      default:
        break;
    }
  }

  const auto matrix = lum::make_colour_matrix(lum::kMatrixKindDeep, coefficients);
  if (raw && source.bitsPerPixel == 16) {
    const uint32_t shift = 16 - source.bitsUsed;
    switch (job.format) {
      case LUM_FORMAT_MONO16_REC601:
      case LUM_FORMAT_MONO16_REC709:
        lum::cc_raw16_to_mono16(job.dst, job.src, job.width, job.height, source.bayerPattern, shift,
                                matrix);
        return LumErrorSuccess;
      case LUM_FORMAT_BGR48:
        lum::cc_raw16_to_bgr48(job.dst, job.src, job.width, job.height, source.bayerPattern, shift,
                               matrix);
        return LumErrorSuccess;
      default:
        break;
    }
  }

  // Kept: every other raw source is read as 12-bit packed, also 16 bits to BGR24 and 8 bits to
  // BGR48. Callers carry packed frames under those widths.
  switch (job.format) {
    case LUM_FORMAT_BGR24:
      lum::cc_raw12_to_bgr24(job.dst, job.src, job.width, job.height, source.bayerPattern, matrix);
      return LumErrorSuccess;
    case LUM_FORMAT_BGR48:
      lum::cc_raw12_to_bgr48(job.dst, job.src, job.width, job.height, source.bayerPattern, matrix);
      return LumErrorSuccess;
    default:
      return LumErrorBadParameter;
  }
}

}  // namespace

int32_t LumImageTransform(const LumImage* source, LumImage* destination,
                          const LumTransformInfo* parameters, uint32_t parameterCount) {
  if (destination == nullptr || source == nullptr || destination->data == nullptr ||
      source->data == nullptr) {
    return LumErrorBadParameter;
  }
  const LumImageInfo& from = source->imageInfo;
  const LumImageInfo& to = destination->imageInfo;
  // Kept: the sizes of the records come after the geometry; callers tell the two failures apart.
  if (from.height != to.height || from.width != to.width) return LumErrorBadParameter;
  if (source->size != sizeof(LumImage) || destination->size != sizeof(LumImage)) {
    return LumErrorStructSize;
  }
  const auto format = lum::select_destination(to);
  if (!format) return LumErrorBadParameter;

  const Job job = {destination->data, source->data, from.width,
                   from.height,       *format,      from.pixelInfo};
  const Parameters given = {parameters, parameterCount};
  if (const auto* matrix = given.first(LumTransformTypeColorCorrectionMatrix)) {
    return transform_colour_corrected(job, matrix->matrix);
  }
  return transform_by_layout(job, given);
}
