// SPDX-License-Identifier: MIT
// What levels share that cannot pick bits across bytes.
namespace lum {
namespace LUM_LEVEL {
namespace {

// Words V of either byte order to bytes: V >> first, where first is at most 8. What is above eight
// bits is dropped, or makes 255.
class ByteOfWords {
 public:
  ByteOfWords(unsigned first, bool big_endian) : first_(first), order_(byte_order(big_endian)) {}
  LUM_INLINE U8 dropping(U16 lo, U16 hi) const {
    return narrow(I16(shifted(lo) & 255), I16(shifted(hi) & 255));
  }
  LUM_INLINE U8 saturated(U16 lo, U16 hi) const {
    const U16 most = splat16(255);
    return narrow(I16(lesser(shifted(lo), most)), I16(lesser(shifted(hi), most)));
  }

 private:
  LUM_INLINE U16 shifted(U16 v) const { return shift_right(ordered(v, order_), first_); }

  unsigned first_;
  ByteOrder order_;
};

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
