// SPDX-License-Identifier: MIT
// Vector primitives, level base: plain loops over lanes, for any processor.
#ifndef LUM_SIMD_VEC_BASE_H
#define LUM_SIMD_VEC_BASE_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace lum {
namespace LUM_LEVEL {
namespace {
constexpr int kLanes = 8;  // the least that holds whole groups of every source in half a vector
}
}  // namespace LUM_LEVEL
}  // namespace lum

#include "simd/vec_types-inl.h"

namespace lum {
namespace LUM_LEVEL {
namespace {

constexpr int kWords = kLanes / 2;

template <class V, class F>
LUM_INLINE V lanes(F f) {
  V r;
  for (int i = 0; i < static_cast<int>(sizeof(V) / sizeof(r[0])); ++i) r[i] = f(i);
  return r;
}

// Lanes chosen by the parity of their number.
struct Mask {
  unsigned parity;
};
LUM_INLINE Mask even_lanes(unsigned parity) { return {parity & 1u}; }

// x = a in the chosen lanes and b in the others; y the other way round.
template <class V>
LUM_INLINE void cross(Mask m, V a, V b, V& x, V& y) {
  x = lanes<V>([&](int i) { return (i + m.parity) % 2 == 0 ? a[i] : b[i]; });
  y = lanes<V>([&](int i) { return (i + m.parity) % 2 == 0 ? b[i] : a[i]; });
}
LUM_INLINE void cross16(Mask m, U16 a, U16 b, U16& x, U16& y) { cross(m, a, b, x, y); }

// a in the chosen lanes, b in the others.
LUM_INLINE U8 choose(Mask m, U8 a, U8 b) {
  return lanes<U8>([&](int i) { return (i + m.parity) % 2 == 0 ? a[i] : b[i]; });
}

LUM_INLINE U8 avg_up(U8 a, U8 b) {
  return lanes<U8>([&](int i) { return (a[i] + b[i] + 1) >> 1; });
}
LUM_INLINE U16 avg_up(U16 a, U16 b) {
  return lanes<U16>([&](int i) { return (a[i] + b[i] + 1) >> 1; });
}
LUM_INLINE I16 absolute(I16 a) {
  return lanes<I16>([&](int i) { return a[i] < 0 ? -a[i] : a[i]; });
}
LUM_INLINE U16 lesser(U16 a, U16 b) {
  return lanes<U16>([&](int i) { return a[i] < b[i] ? a[i] : b[i]; });
}
LUM_INLINE I16 lesser(I16 a, I16 b) {
  return lanes<I16>([&](int i) { return a[i] < b[i] ? a[i] : b[i]; });
}
LUM_INLINE I16 greater(I16 a, I16 b) {
  return lanes<I16>([&](int i) { return a[i] > b[i] ? a[i] : b[i]; });
}
// sum + 1, or sum - 1, in the lanes where a > b.
LUM_INLINE I16 add_where_greater(I16 sum, I16 a, I16 b) { return sum - I16(a > b); }
LUM_INLINE I16 subtract_where_greater(I16 sum, I16 a, I16 b) { return sum + I16(a > b); }
LUM_INLINE U16 mul_hi(U16 a, U16 b) {
  return lanes<U16>([&](int i) { return (static_cast<uint32_t>(a[i]) * b[i]) >> 16; });
}
LUM_INLINE I16 mul_hi(I16 a, I16 b) {
  return lanes<I16>([&](int i) { return (static_cast<int32_t>(a[i]) * b[i]) >> 16; });
}
// n is at most 16.
LUM_INLINE U16 shift_left(U16 a, unsigned n) {
  return lanes<U16>([&](int i) { return a[i] << n; });
}
LUM_INLINE U16 shift_right(U16 a, unsigned n) {
  return lanes<U16>([&](int i) { return a[i] >> n; });
}
// Every count is the same.
LUM_INLINE I32 shift_right(I32 a, I32 counts) { return a >> counts; }

// a0 b0 a1 b1 ...; the first half of the pixels in lo.
LUM_INLINE Bytes2 interleave(U8 a, U8 b) {
  return {lanes<U8>([&](int i) { return i % 2 ? b[i / 2] : a[i / 2]; }),
          lanes<U8>([&](int i) { return i % 2 ? b[kWords + i / 2] : a[kWords + i / 2]; })};
}
LUM_INLINE Words2 interleave(I16 a, I16 b) {
  return {lanes<I16>([&](int i) { return i % 2 ? b[i / 2] : a[i / 2]; }),
          lanes<I16>([&](int i) { return i % 2 ? b[(kWords + i) / 2] : a[(kWords + i) / 2]; })};
}
// Products of unsigned and signed bytes, added in pairs.
LUM_INLINE I16 madd(U8 u, I8 s) {
  return lanes<I16>([&](int i) { return u[2 * i] * s[2 * i] + u[2 * i + 1] * s[2 * i + 1]; });
}
// Products of signed words, added in pairs.
LUM_INLINE I32 madd(I16 a, I16 b) {
  const auto product = [&](int i) { return static_cast<uint32_t>(a[i] * b[i]); };
  return lanes<I32>(
      [&](int i) { return static_cast<int32_t>(product(2 * i) + product(2 * i + 1)); });
}
LUM_INLINE U32 add_madd(U32 sum, I16 a, I16 b) { return sum + U32(madd(a, b)); }
// Products of unsigned and signed bytes, added in fours; sums of two fit a signed word.
LUM_INLINE U32 madd4(U8 u, I8 s) { return U32(madd(madd(u, s), I16(splat16(1)))); }

LUM_INLINE Dwords2 interleave(U32 a, U32 b) {
  return {lanes<U32>([&](int i) { return i % 2 ? b[i / 2] : a[i / 2]; }),
          lanes<U32>([&](int i) { return i % 2 ? b[kWords / 4 + i / 2] : a[kWords / 4 + i / 2]; })};
}
LUM_INLINE Qwords2 interleave(U64 a, U64 b) { return {a, b}; }  // one lane each
// Products of signed words in units of 2^-15, rounded: (a b + 0x4000) >> 15.
LUM_INLINE I16 mul_round(I16 a, I16 b) {
  return lanes<I16>([&](int i) { return (a[i] * b[i] + 0x4000) >> 15; });
}

LUM_INLINE int clamp_to(int v, int low, int high) { return v < low ? low : v > high ? high : v; }

// Back from interleaved order: high bytes; values limited to 0..255; values limited to -128..127.
LUM_INLINE U8 pack_high(U16 lo, U16 hi) {
  return lanes<U8>([&](int i) { return (i < kWords ? lo[i] : hi[i - kWords]) >> 8; });
}
LUM_INLINE U8 pack_sat(I16 lo, I16 hi) {
  return lanes<U8>([&](int i) { return clamp_to(i < kWords ? lo[i] : hi[i - kWords], 0, 255); });
}
LUM_INLINE I8 pack_sat_signed(I16 lo, I16 hi) {
  return lanes<I8>([&](int i) { return clamp_to(i < kWords ? lo[i] : hi[i - kWords], -128, 127); });
}
// The same from 32 to 16 bits, limited to signed or to unsigned words.
LUM_INLINE I16 pack_sat(I32 lo, I32 hi) {
  constexpr int n = kWords / 2;
  return lanes<I16>([&](int i) { return clamp_to(i < n ? lo[i] : hi[i - n], -32768, 32767); });
}
LUM_INLINE U16 pack_sat_unsigned(I32 lo, I32 hi) {
  constexpr int n = kWords / 2;
  return lanes<U16>([&](int i) { return clamp_to(i < n ? lo[i] : hi[i - n], 0, 65535); });
}
// The upper bytes of both, side by side: even's, odd's, even's ...
LUM_INLINE U8 upper_bytes(U16 even, U16 odd) { return U8((even >> 8) | (odd & 0xFF00)); }
// Bits 16 to 31 of the lanes of both, as words: even's, odd's, even's ...
LUM_INLINE I16 high_words(U32 even, U32 odd) {
  return lanes<I16>([&](int i) { return (i % 2 ? odd[i / 2] : even[i / 2]) >> 16; });
}
// Words of the columns before: the last of the vector before and all but the last of this one; and
// of the columns behind.
LUM_INLINE I16 words_before(I16 before, I16 here) {
  return lanes<I16>([&](int i) { return i == 0 ? before[kWords - 1] : here[i - 1]; });
}
LUM_INLINE I16 words_behind(I16 here, I16 behind) {
  return lanes<I16>([&](int i) { return i < kWords - 1 ? here[i + 1] : behind[0]; });
}
// Words of the even and of the odd bytes, limited to 0..255, to bytes.
LUM_INLINE U8 alternate_sat(I16 even, I16 odd) {
  return lanes<U8>([&](int i) { return clamp_to(i % 2 == 0 ? even[i / 2] : odd[i / 2], 0, 255); });
}
// Signed words in memory order to bytes, limited to 0..255.
LUM_INLINE U8 narrow(I16 lo, I16 hi) {
  return lanes<U8>([&](int i) { return clamp_to(i < kWords ? lo[i] : hi[i - kWords], 0, 255); });
}
// 32-bit lanes in memory order, each 0..65535, to words.
LUM_INLINE U16 narrow(U32 lo, U32 hi) {
  constexpr int n = kWords / 2;
  return lanes<U16>([&](int i) { return i < n ? lo[i] : hi[i - n]; });
}
// Sums of neighbouring lanes, those of `a` first.
LUM_INLINE I32 sums_of_pairs(I32 a, I32 b) {
  constexpr int n = kLanes / 4;
  const auto at = [&](int i) { return static_cast<uint32_t>(i < n ? a[i] : b[i - n]); };
  return lanes<I32>([&](int i) { return static_cast<int32_t>(at(2 * i) + at(2 * i + 1)); });
}
// Bytes 1 of four vectors of 32-bit lanes plus `added`, each 0..65535, in memory order.
LUM_INLINE U8 narrow4_high(const U32 (&q)[4], unsigned added) {
  constexpr int n = kLanes / 4;
  return lanes<U8>([&](int i) { return (q[i / n][i % n] + added) >> 8; });
}

// The order of the two bytes of a word, as data.
struct ByteOrder {
  unsigned swap;
};
LUM_INLINE ByteOrder byte_order(bool big_endian) { return {big_endian ? 1u : 0u}; }
LUM_INLINE U16 ordered(U16 v, ByteOrder order) {
  const U8 bytes = U8(v);
  return U16(lanes<U8>([&](int i) { return bytes[i ^ static_cast<int>(order.swap)]; }));
}

// The last lanes of a row, one sample to the right; the sample beyond the row repeats the last but
// one.
LUM_INLINE U8 load_edge8(const uint8_t* p) {
  return lanes<U8>([&](int i) { return i + 1 < kLanes ? p[i + 1] : p[kLanes - 2]; });
}
LUM_INLINE U16 load_edge16(const uint8_t* p) {
  const U16 v = load<U16>(p);
  return lanes<U16>([&](int i) { return i + 1 < kWords ? v[i + 1] : v[kWords - 2]; });
}

// Bytes to words, half a vector of them, in memory order.
LUM_INLINE U16 load_widened(const uint8_t* p) {
  return lanes<U16>([&](int i) { return p[i]; });
}

// Bytes 0 and 2 of every three: the high bytes of packed 12-bit pixels.
LUM_INLINE U8 load_packed12(const uint8_t* p) {
  return lanes<U8>([&](int i) { return p[i / 2 * 3 + i % 2 * 2]; });
}

// kWords words from 3/4 as many bytes: word i is made of bytes low(i) and high(i) of the memory, a
// negative number gives zero. The formulas repeat every 12 bytes.
template <class Formula>
LUM_INLINE U16 load_words_of_3(const uint8_t* p, Formula) {
  return lanes<U16>([&](int i) {
    const int low = Formula::low(i), high = Formula::high(i);
    return (low < 0 ? 0 : p[low]) | (high < 0 ? 0 : p[high]) << 8;
  });
}
// The same from 5/8 as many bytes; the formulas repeat every 10 bytes or fewer.
template <class Formula>
LUM_INLINE U16 load_words_of_5(const uint8_t* p, Formula f) {
  return load_words_of_3(p, f);
}
// Bytes c0 c1 c2 c0 c1 c2 ... apart.
LUM_INLINE Bytes3 load3(const uint8_t* p) {
  return {lanes<U8>([&](int i) { return p[3 * i]; }),
          lanes<U8>([&](int i) { return p[3 * i + 1]; }),
          lanes<U8>([&](int i) { return p[3 * i + 2]; })};
}
LUM_INLINE Words3 load3_words(const uint8_t* p) {
  const U16 v[3] = {load<U16>(p), load<U16>(p + kLanes), load<U16>(p + 2 * kLanes)};
  U16 c[3];
  for (int i = 0; i < 3 * kWords; ++i) c[i % 3][i / 3] = v[i / kWords][i % kWords];
  return {c[0], c[1], c[2]};
}

template <class V>
LUM_INLINE void store3(uint8_t* p, V c0, V c1, V c2) {
  V out[3];
  constexpr int n = static_cast<int>(sizeof(V) / sizeof(c0[0]));
  for (int i = 0; i < 3 * n; ++i)
    out[i / n][i % n] = (i % 3 == 0 ? c0 : i % 3 == 1 ? c1 : c2)[i / 3];
  memcpy(p, out, sizeof out);
}
// a0 b0 a1 b1 ... in memory order.
LUM_INLINE Bytes2 zip(U8 a, U8 b) { return interleave(a, b); }
LUM_INLINE Wide zip(U16 a, U16 b) {
  const Words2 v = interleave(I16(a), I16(b));
  return {U16(v.lo), U16(v.hi)};
}
LUM_INLINE void store2(uint8_t* p, U8 even, U8 odd) { store(p, zip(even, odd)); }
template <class V>
LUM_INLINE void store3_same(uint8_t* p, V c) {
  store3(p, c, c, c);
}

// Four-byte pixels whose last byte stays as it is in memory. Whether that loads so far ahead, where
// little else is done, that nothing need be prefetched:
constexpr bool kLoadsRunAhead = false;
LUM_INLINE void store4_keep(uint8_t* p, U8 c0, U8 c1, U8 c2) {
  for (int i = 0; i < kLanes; ++i) {
    p[4 * i] = c0[i];
    p[4 * i + 1] = c1[i];
    p[4 * i + 2] = c2[i];
  }
}
LUM_INLINE void store_keep(uint8_t* p, U8 pixels) {
  for (int i = 0; i < kLanes; ++i) {
    if (i % 4 != 3) p[i] = pixels[i];
  }
}

// kLanes / 4 pixels of four bytes, the last one a copy of the second, from three in memory, and
// back.
LUM_INLINE U8 expand3(const uint8_t* p) {
  return lanes<U8>([&](int i) { return p[i / 4 * 3 + byte_of_three(i)]; });
}
LUM_INLINE void compress3(uint8_t* p, U8 pixels) {
  for (int i = 0; i < kLanes; ++i) {
    if (i % 4 != 3) p[i / 4 * 3 + i % 4] = pixels[i];
  }
}
// The same for kLanes pixels; with `swap` the first and the third byte change places.
template <bool swap>
LUM_INLINE void compress3_all(uint8_t* p, const U8 (&pixels)[4]) {
  for (int i = 0; i < 4 * kLanes; ++i) {
    if (i % 4 != 3) p[i / 4 * 3 + (swap ? 2 - i % 4 : i % 4)] = pixels[i / kLanes][i % kLanes];
  }
}
// Three vectors of three-byte elements whose first and third byte change places.
LUM_INLINE Bytes3 load3_swapped(const uint8_t* p) {
  const auto swapped = [&](int k) {
    return lanes<U8>([&](int i) {
      const int byte = kLanes * k + i;
      return p[byte / 3 * 3 + 2 - byte % 3];
    });
  };
  return {swapped(0), swapped(1), swapped(2)};
}
// Elements of `size` bytes, a power of two, in reverse order.
template <int size>
LUM_INLINE U8 reversed(U8 v) {
  return lanes<U8>([&](int i) { return v[(kLanes - 1 - i) / size * size + i % size]; });
}
// A vector of pieces as long as those within which interleave() works, `stride` bytes apart.
constexpr int kPieceBytes = kLanes;
LUM_INLINE U8 load_pieces(const uint8_t* p, ptrdiff_t) { return load<U8>(p); }
// The pieces that begin at p + at[0], p + at[1] ...
LUM_INLINE U8 load_pieces_at(const uint8_t* p, const uint32_t* at) { return load<U8>(p + at[0]); }
// The bytes of a piece that the low bits of an index tell, or 0 where its highest bit is set.
LUM_INLINE U8 pick_bytes(U8 v, U8 index) {
  return lanes<U8>([&](int i) { return index[i] & 0x80 ? 0 : v[index[i] % kPieceBytes]; });
}
// Spans are what a byte can be moved about in by one shuffle: here there is one in a vector.
constexpr int kSpanBytes = kLanes;
constexpr bool kPermutesTwo = false;  // there is no permute of two vectors
LUM_INLINE U8 load_spans(const uint8_t* p, ptrdiff_t) { return load<U8>(p); }
LUM_INLINE void store_spans(uint8_t* p, ptrdiff_t, U8 v) { store(p, v); }
LUM_INLINE U8 shuffle_spans(U8 v, const LaneTable& t) {
  return lanes<U8>([&](int i) { return v[t.v[i]]; });
}
// Bytes 0 and 2 of every four change places.
LUM_INLINE U8 swap02(U8 v) {
  return lanes<U8>([&](int i) { return v[i % 2 ? i : i ^ 2]; });
}
// Byte 3 of every four becomes a copy of byte 1.
LUM_INLINE U8 copy1_to_3(U8 v) {
  return lanes<U8>([&](int i) { return v[i % 4 == 3 ? i - 2 : i]; });
}

// There is no store past the cache.
constexpr bool kStreams = false;
LUM_INLINE void stream_vector(uint8_t* p, U8 v) { store(p, v); }
inline void end_stream() {}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum

#endif
