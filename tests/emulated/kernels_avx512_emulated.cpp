// SPDX-License-Identifier: MIT
// The kernels of level avx512 for the tests on processors without it: the code of the level as it
// is, with SIMDe in place of the processor's instructions.
#define LUM_LEVEL avx512_emulated
#define LUM_INLINE inline  // inlined throughout, the emulated instructions would take minutes
#define SIMDE_NO_INLINE
#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/x86/avx512.h>

#include "simd/kernel_table.h"

// No register holds a vector of this level: vec_types-inl.h must not ask for one.
#undef __x86_64__
// A macro in clang's headers; an alias for the masked one in SIMDe 0.7.4.
#undef _mm512_cmpgt_epi16_mask
#undef _mm512_madd_epi16
#undef _mm512_multishift_epi64_epi8
#undef _mm512_mask_multishift_epi64_epi8

namespace lum {
namespace LUM_LEVEL {
namespace {

// What SIMDe 0.7.4 lacks, after Intel's description of each. These hide the functions of the same
// names in the compiler's header; one that is missing here does not compile.
typedef uint8_t EmulatedBytes __attribute__((vector_size(64)));
typedef int16_t EmulatedWords __attribute__((vector_size(64)));
typedef int32_t EmulatedDwords __attribute__((vector_size(64)));
typedef uint64_t EmulatedQwords __attribute__((vector_size(64)));

// Masked accesses touch the bytes that the mask chooses and no other.
inline __m512i _mm512_maskz_loadu_epi8(__mmask64 mask, const void* p) {
  EmulatedBytes r = {};
  for (int i = 0; i < 64; ++i) {
    if (mask >> i & 1) r[i] = static_cast<const uint8_t*>(p)[i];
  }
  return reinterpret_cast<__m512i>(r);
}
inline void _mm512_mask_storeu_epi8(void* p, __mmask64 mask, __m512i a) {
  const EmulatedBytes v = reinterpret_cast<EmulatedBytes>(a);
  for (int i = 0; i < 64; ++i) {
    if (mask >> i & 1) static_cast<uint8_t*>(p)[i] = v[i];
  }
}

inline void _mm512_stream_si512(void* p, __m512i a) { simde_mm512_store_si512(p, a); }

inline __mmask32 _mm512_cmpgt_epi16_mask(__m512i a, __m512i b) {
  const EmulatedWords x = reinterpret_cast<EmulatedWords>(a),
                      y = reinterpret_cast<EmulatedWords>(b);
  __mmask32 mask = 0;
  for (int i = 0; i < 32; ++i) mask |= __mmask32{x[i] > y[i]} << i;
  return mask;
}
inline __m512i _mm512_mask_sub_epi16(__m512i otherwise, __mmask32 mask, __m512i a, __m512i b) {
  return _mm512_mask_mov_epi16(otherwise, mask, _mm512_sub_epi16(a, b));
}
// Of counts below 32.
inline __m512i _mm512_srav_epi32(__m512i a, __m512i counts) {
  return reinterpret_cast<__m512i>(reinterpret_cast<EmulatedDwords>(a) >>
                                   reinterpret_cast<EmulatedDwords>(counts));
}
inline __m512i _mm512_madd_epi16(__m512i a, __m512i b) { return simde_mm512_madd_epi16(a, b); }
inline __m512i _mm512_mulhi_epu16(__m512i a, __m512i b) {
  const EmulatedWords x = reinterpret_cast<EmulatedWords>(a),
                      y = reinterpret_cast<EmulatedWords>(b);
  EmulatedWords r;
  for (int i = 0; i < 32; ++i) {
    r[i] = static_cast<int16_t>(
        uint32_t{static_cast<uint16_t>(x[i])} * static_cast<uint16_t>(y[i]) >> 16);
  }
  return reinterpret_cast<__m512i>(r);
}
// SIMDe's shifts by 64 where the first bit is the lowest.
inline __m512i _mm512_multishift_epi64_epi8(__m512i bits, __m512i a) {
  const EmulatedBytes first = reinterpret_cast<EmulatedBytes>(bits);
  const EmulatedQwords v = reinterpret_cast<EmulatedQwords>(a);
  EmulatedBytes r;
  for (int i = 0; i < 64; ++i) {
    const unsigned n = first[i] % 64u;
    r[i] = static_cast<uint8_t>(n == 0 ? v[i / 8] : v[i / 8] >> n | v[i / 8] << (64 - n));
  }
  return reinterpret_cast<__m512i>(r);
}
inline __m512i _mm512_mask_multishift_epi64_epi8(__m512i otherwise, __mmask64 mask, __m512i bits,
                                                 __m512i a) {
  return _mm512_mask_mov_epi8(otherwise, mask, _mm512_multishift_epi64_epi8(bits, a));
}
inline __m512i _mm512_cvtepu8_epi16(__m256i a) {
  typedef uint8_t Half __attribute__((vector_size(32)));
  const Half v = reinterpret_cast<Half>(a);
  EmulatedWords r;
  for (int i = 0; i < 32; ++i) r[i] = v[i];
  return reinterpret_cast<__m512i>(r);
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum

#include "simd/vec_avx512.h"
//
#include "simd/kernel_list-inl.h"
