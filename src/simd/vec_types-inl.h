// SPDX-License-Identifier: MIT
// What all levels share: vector types of kLanes bytes, loads, stores, averages. A level's header
// sets kLanes, includes this, and then adds the primitives that need instructions of its own.
#include "simd/kernel_table.h"

#ifndef LUM_INLINE
#define LUM_INLINE inline __attribute__((always_inline))
#endif

namespace lum {
namespace LUM_LEVEL {
namespace {

// `+ - & | ^ ~ << >>` and comparisons work on these lane by lane, wrapping.
typedef uint8_t U8 __attribute__((vector_size(kLanes)));
typedef int8_t I8 __attribute__((vector_size(kLanes)));
typedef uint16_t U16 __attribute__((vector_size(kLanes)));
typedef int16_t I16 __attribute__((vector_size(kLanes)));
typedef uint32_t U32 __attribute__((vector_size(kLanes)));
typedef int32_t I32 __attribute__((vector_size(kLanes)));
typedef uint64_t U64 __attribute__((vector_size(kLanes)));

// Two vectors of 16-bit lanes for kLanes pixels. `Wide` is in memory order; what interleave() makes
// is in an order of the level's own, which only the pack functions undo.
struct Wide {
  U16 lo, hi;
};
struct Bytes2 {
  U8 lo, hi;
};
struct Words2 {
  I16 lo, hi;
};
struct Bytes3 {
  U8 c0, c1, c2;
};
struct Words3 {
  U16 c0, c1, c2;
};
struct Dwords2 {
  U32 lo, hi;
};
struct Qwords2 {
  U64 lo, hi;
};

template <class V>
constexpr size_t kElementBytes = sizeof(V{}[0]);
template <class V>
auto lane_of(V v) {
  return v[0];
}

template <class V>
LUM_INLINE V load(const void* p) {
  V v;
  __builtin_memcpy(&v, p, sizeof v);
  return v;
}

template <class V>
LUM_INLINE void store(void* p, V v) {
  static_assert(sizeof v == kLanes, "one vector");
  __builtin_memcpy(p, &v, sizeof v);
}
// g++ copies a record of two vectors through general registers.
LUM_INLINE void store(void* p, const Bytes2& v) {
  store(p, v.lo);
  store(static_cast<uint8_t*>(p) + kLanes, v.hi);
}
LUM_INLINE void store(void* p, const Wide& v) {
  store(p, v.lo);
  store(static_cast<uint8_t*>(p) + kLanes, v.hi);
}

// An address to store to past the cache, aligned to a vector; stands where a pointer may. Vectors
// shorter than a line are put together in a few buffers of a line each: where several outputs take
// turns, each gets a line at a time, or buffers leave half full, at 1.3 to 17 times the time.
struct PastCache {
  uint8_t* p;
};
LUM_INLINE PastCache operator+(PastCache to, size_t bytes) { return {to.p + bytes}; }
LUM_INLINE void stream_vector(uint8_t* p, U8 v);
template <class V>
LUM_INLINE void store(PastCache to, V v) {
  stream_vector(to.p, U8(v));
}
LUM_INLINE void store(PastCache to, const Bytes2& v) {
  store(to, v.lo);
  store(to + kLanes, v.hi);
}
LUM_INLINE void store(PastCache to, const Wide& v) {
  store(to, v.lo);
  store(to + kLanes, v.hi);
}
// The stores of kernels that do little but move bytes, for levels that have a better way.
template <class To, class V>
LUM_INLINE void store_moved(To to, V v) {
  store(to, v);
}
LUM_INLINE U8 splat8(unsigned v) { return U8{} + static_cast<uint8_t>(v); }
LUM_INLINE U16 splat16(unsigned v) { return U16{} + static_cast<uint16_t>(v); }

// Bytes v0, v1, v0, v1 ...: the weights of a madd() over interleaved bytes.
LUM_INLINE U8 splat_pair(int v0, int v1) {
  return U8(
      splat16(static_cast<uint8_t>(v0) | static_cast<unsigned>(static_cast<uint8_t>(v1)) << 8));
}

// Words v0, v1, v0, v1 ...
LUM_INLINE U16 splat_words(int v0, int v1) {
  return U16(U32{} + (static_cast<uint16_t>(v0) | uint32_t{static_cast<uint16_t>(v1)} << 16));
}

// A vector's first and its last word, in all lanes.
LUM_INLINE I16 splat_first(I16 v) { return I16{} + v[0]; }
LUM_INLINE I16 splat_last(I16 v) { return I16{} + v[kLanes / 2 - 1]; }

// Whether a dozen weights and as many samples stay in registers together.
constexpr bool kManyRegisters = kLanes == 64;
// Whether any logic of three vectors is one operation, and add_madd().
constexpr bool kLogicOfThree = kLanes == 64, kAddsProducts = kLanes == 64;

// One of two types.
template <bool first, class A, class B>
struct EitherOf {
  using Type = A;
};
template <class A, class B>
struct EitherOf<false, A, B> {
  using Type = B;
};
template <bool first, class A, class B>
using Either = typename EitherOf<first, A, B>::Type;

// A value that the compiler knows nothing about but that it is in a register.
template <class V>
LUM_INLINE V in_register(V v) {
#if defined(__x86_64__)
  __asm__("" : "+v"(v));
#endif
  return v;
}

// A multiplier that the compiler cannot see through: g++ would turn a vector times a known constant
// into a chain of shifts and adds, which is slower than the one multiplication.
LUM_INLINE U16 multiplier(int v) { return in_register(splat16(static_cast<unsigned>(v))); }
LUM_INLINE I16 times(I16 v, int factor) { return I16(U16(v) * multiplier(factor)); }

LUM_INLINE void prefetch_read(const uint8_t* p, ptrdiff_t ahead = kPrefetchDistance) {
  __builtin_prefetch(p + ahead, 0, 3);
}
LUM_INLINE void prefetch_write(const uint8_t* p, ptrdiff_t ahead = kPrefetchDistance) {
  __builtin_prefetch(p + ahead, 1, 3);
}

// A table of one byte for each lane, from a formula.
struct LaneTable {
  alignas(64) uint8_t v[64];
};
template <class Formula>
constexpr LaneTable lane_table(Formula formula) {
  LaneTable t{};
  for (int i = 0; i < 64; ++i) t.v[i] = static_cast<uint8_t>(formula(i));
  return t;
}

// Which byte of a pixel of three goes to byte i of pixels of four: the last is a copy of the
// second.
constexpr int byte_of_three(int i, bool swap) { return i % 4 == 3 ? 1 : swap ? 2 - i % 4 : i % 4; }

// Three vectors of three-byte elements whose first and third byte change places, by shuffles within
// spans of so many bytes. Elements that lie across the border of two spans come from a second load:
// a span takes what it can from one that begins at first_from(), and the rest, where the first
// table says kNone, from one at second_from().
constexpr int kNone = 0x80;  // gives zero as an index of shuffles within 16 bytes
constexpr int swapped_byte(int i) { return i / 3 * 3 + 2 - i % 3; }
template <int span>
constexpr int first_from(int k) {
  return k == 0 ? 0 : span * k - 2;
}
template <int span>
constexpr int second_from(int k) {
  return (k + 1) * span == 3 * kLanes ? span * k : span * k + 2;
}
template <int span>
constexpr int within_span(int i) {
  return i >= 0 && i < span ? i : kNone;
}
template <int span, int vector>
constexpr LaneTable kSwapFirst = lane_table([](int i) {
  const int byte = kLanes * vector + i % kLanes;
  return within_span<span>(swapped_byte(byte) - first_from<span>(byte / span));
});
template <int span, int vector>
constexpr LaneTable kSwapSecond = lane_table([](int i) {
  const int byte = kLanes * vector + i % kLanes;
  return kSwapFirst<span, vector>.v[i] != kNone
             ? kNone
             : within_span<span>(swapped_byte(byte) - second_from<span>(byte / span));
});

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
