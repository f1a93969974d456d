// SPDX-License-Identifier: MIT
#include "roofline.h"

#include <string.h>

#include "simd/isa.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace lum::bench {
namespace {

constexpr size_t kNear = 2048, kFar = 8192;  // to what is prefetched, in bytes

enum class Stores { plain, streamed, three_of_four };

struct Pointers {
  uint8_t* dst;
  const uint8_t* src;
};

// What is left when the traffic is no whole number of steps.
void finish(Pointers p, const Traffic& t, size_t read, size_t written) {
  uint8_t folded = 0;
  for (; read < t.read; ++read) folded ^= p.src[read];
  for (; written < t.written; ++written) {
    if (!t.keeps_fourth || written % 4 != 3) p.dst[written] = folded;
  }
}

}  // namespace

// Vectors of words, so that the mask of the fourth bytes is a number.
#define LUM_ROOF_VECTOR typedef uint32_t V __attribute__((vector_size(LUM_ROOF_BYTES), may_alias))
constexpr uint32_t kFourthByte = 0xFF000000u;

// ---- 16 bytes: any processor.
#define LUM_ROOF_LEVEL vectors16
#define LUM_ROOF_TARGET
#define LUM_ROOF_BYTES 16
namespace LUM_ROOF_LEVEL {
namespace {
LUM_ROOF_VECTOR;
inline __attribute__((always_inline)) void store_three(uint8_t* to, const V& v) {
  V kept;
  memcpy(&kept, to, sizeof(V));
  const V mixed = (kept & kFourthByte) | (v & ~kFourthByte);
  memcpy(to, &mixed, sizeof(V));
}
#if defined(__x86_64__)
constexpr bool kStreams = true;
inline __attribute__((always_inline)) void stream(uint8_t* to, const V& v) {
  _mm_stream_si128(reinterpret_cast<__m128i*>(to), (__m128i)v);
}
#else
constexpr bool kStreams = false;
inline void stream(uint8_t* to, const V& v) { memcpy(to, &v, sizeof(V)); }
#endif
}  // namespace
}  // namespace LUM_ROOF_LEVEL
}  // namespace lum::bench
#include "roofline_loops-inl.h"
#undef LUM_ROOF_LEVEL
#undef LUM_ROOF_TARGET
#undef LUM_ROOF_BYTES

#if defined(__x86_64__)

// ---- 32 bytes.
#define LUM_ROOF_LEVEL vectors32
#define LUM_ROOF_TARGET __attribute__((target("avx2")))
#define LUM_ROOF_BYTES 32
namespace lum::bench {
namespace LUM_ROOF_LEVEL {
namespace {
LUM_ROOF_VECTOR;
constexpr bool kStreams = true;
LUM_ROOF_TARGET inline __attribute__((always_inline)) void store_three(uint8_t* to, const V& v) {
  V kept;
  memcpy(&kept, to, sizeof(V));
  const V mixed = (kept & kFourthByte) | (v & ~kFourthByte);
  memcpy(to, &mixed, sizeof(V));
}
LUM_ROOF_TARGET inline __attribute__((always_inline)) void stream(uint8_t* to, const V& v) {
  _mm256_stream_si256(reinterpret_cast<__m256i*>(to), (__m256i)v);
}
}  // namespace
}  // namespace LUM_ROOF_LEVEL
}  // namespace lum::bench
#include "roofline_loops-inl.h"
#undef LUM_ROOF_LEVEL
#undef LUM_ROOF_TARGET
#undef LUM_ROOF_BYTES

// ---- 64 bytes.
#define LUM_ROOF_LEVEL vectors64
#define LUM_ROOF_TARGET __attribute__((target("avx512f,avx512bw")))
#define LUM_ROOF_BYTES 64
namespace lum::bench {
namespace LUM_ROOF_LEVEL {
namespace {
LUM_ROOF_VECTOR;
constexpr bool kStreams = true;
LUM_ROOF_TARGET inline __attribute__((always_inline)) void store_three(uint8_t* to, const V& v) {
  constexpr __mmask64 kThreeOfFour = 0x7777777777777777u;
  _mm512_mask_storeu_epi8(to, kThreeOfFour, (__m512i)v);
}
LUM_ROOF_TARGET inline __attribute__((always_inline)) void stream(uint8_t* to, const V& v) {
  _mm512_stream_si512(reinterpret_cast<__m512i*>(to), (__m512i)v);
}
}  // namespace
}  // namespace LUM_ROOF_LEVEL
}  // namespace lum::bench
#include "roofline_loops-inl.h"
#undef LUM_ROOF_LEVEL
#undef LUM_ROOF_TARGET
#undef LUM_ROOF_BYTES

#endif

namespace lum::bench {
namespace {

void call_memcpy(uint8_t* dst, const uint8_t* src, const Traffic& t) {
  memcpy(dst, src, t.written);
}

#if defined(__x86_64__)
void rep_movsb(uint8_t* dst, const uint8_t* src, const Traffic& t) {
  size_t count = t.written;
  asm volatile("rep movsb" : "+D"(dst), "+S"(src), "+c"(count) : : "memory");
}
#endif

}  // namespace

std::vector<Loop> roofline_loops(const Traffic& t) {
  std::vector<Loop> loops;
  vectors16::add_loops(loops, t);
  if (t.read == t.written && !t.in_place && !t.keeps_fourth) {
    loops.push_back({"memcpy", call_memcpy});
#if defined(__x86_64__)
    loops.push_back({"rep movsb", rep_movsb});
#endif
  }
#if defined(__x86_64__)
  if (kernels_of(Level::avx2) != nullptr) vectors32::add_loops(loops, t);
  if (kernels_of(Level::avx512) != nullptr) vectors64::add_loops(loops, t);
#endif
  return loops;
}

}  // namespace lum::bench
