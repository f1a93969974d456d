// SPDX-License-Identifier: MIT
// What levels share whose masks are vectors: included in place of vec_types-inl.h.
#include "simd/vec_types-inl.h"

namespace lum {
namespace LUM_LEVEL {
namespace {

// Lanes chosen by the parity of their number.
struct Mask {
  U8 bytes;
  U16 words;
};
LUM_INLINE Mask even_lanes(unsigned parity) {
  const U16 odd = splat16(0) - splat16(parity & 1);  // all ones when the odd lanes are meant
  return {U8(splat16(0x00FF) ^ odd), U16(reinterpret_cast<U32>(odd) ^ 0x0000FFFFu)};
}
// x = a in the chosen lanes and b in the others; y the other way round.
LUM_INLINE void cross(const Mask& mask, U8 a, U8 b, U8& x, U8& y) {
  const U8 t = (a ^ b) & mask.bytes;
  x = b ^ t;
  y = a ^ t;
}
LUM_INLINE void cross16(const Mask& mask, U16 a, U16 b, U16& x, U16& y) {
  const U16 t = (a ^ b) & mask.words;
  x = b ^ t;
  y = a ^ t;
}

// sum + step, or sum - step, in the lanes where a > b. A comparison gives -1 there, so that 1 is
// the only step that takes no other operation.
constexpr bool kAnyStep = false;
template <int step>
LUM_INLINE I16 add_where_greater(I16 sum, I16 a, I16 b) {
  static_assert(step == 1, "others need a shift");
  return sum - I16(a > b);
}
template <int step>
LUM_INLINE I16 subtract_where_greater(I16 sum, I16 a, I16 b) {
  static_assert(step == 1, "others need a shift");
  return sum + I16(a > b);
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
