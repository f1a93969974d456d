// SPDX-License-Identifier: MIT
// Result codes of the direct functions and the argument checks that several of them share.
#ifndef LUM_ARGUMENTS_H
#define LUM_ARGUMENTS_H

#include <stdint.h>

#include "lum/lum.h"

namespace lum {

// Argument `position` (1-based) is the offending one.
constexpr uint32_t bad_parameter(unsigned position) { return 0x88000001u + position; }

inline constexpr uint32_t kSuccess = 0;
inline constexpr uint32_t kNotImplemented = 0x88000012u;
inline constexpr uint32_t kOutOfMemory = 0x8800001Au;

// A pattern word of all ones is BGGR: its bits 1 and 0 are the phase that the demosaics use.
inline constexpr uint32_t kPatternAllOnes = 0xFFFFFFFFu;

// The arguments of (dst, src, width, height, format, pattern) up to the pattern, in this order.
// The format comes last and is the caller's to check, for every source serves its own formats.
inline uint32_t check_mosaic(const void* dst, const void* src, uint32_t width, uint32_t height,
                             uint32_t pattern) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (width == 0) return bad_parameter(3);
  if (height == 0) return bad_parameter(4);
  if (width % 2 != 0) return bad_parameter(3);
  if (height % 2 != 0) return bad_parameter(4);
  // Kept: the pattern is the sixth argument, yet callers know its refusal by the fifth one's code.
  if (pattern > 3 && pattern != kPatternAllOnes) return bad_parameter(5);
  return kSuccess;
}

// The left shift that brings a record's significant bits to the top of a word: 0 for alignment 0,
// 16 - bitsUsed (wrapping) for alignment 1; false for any other alignment.
inline bool shift_of(const LumBitDepthInfo& depth, uint32_t* shift) {
  if (depth.alignment > 1) return false;
  *shift = depth.alignment == 0 ? 0 : 16 - depth.bitsUsed;
  return true;
}

// Kept: 16, 15, 14, 13, 12 and 10 bits have kernels; 11 bits and fewer than 10 are refused.
inline bool is_supported_shift(uint32_t shift) { return shift <= 4 || shift == 6; }

}  // namespace lum

#endif
