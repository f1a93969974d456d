// SPDX-License-Identifier: MIT
#ifndef LUM_CONVERT_MONO_H
#define LUM_CONVERT_MONO_H

#include <stdint.h>

namespace lum {

// 16-bit mono, little-endian, all bits used: arguments, checks and results as LumY16ImageTransform.
// Reached through the dispatcher only.
uint32_t y16_little_endian_image_transform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                           uint32_t format);

}  // namespace lum

#endif
