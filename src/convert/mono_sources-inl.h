// SPDX-License-Identifier: MIT
// Mono sources.
namespace lum {
namespace LUM_LEVEL {
namespace {

// Bytes Y0 Y1 Y2 ...
struct Mono8Source {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 1;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Mono8Source(const RowArgs&) {}
  LUM_INLINE Gray8 block(const uint8_t* a, const uint8_t*) const { return {load<U8>(a)}; }
};

// 12 bits packed: Y0[11:4], Y1[3:0] Y0[3:0], Y1[11:4]. Only the upper eight bits of a pixel count.
struct Mono12Packed {
  static constexpr size_t kGroupPixels = 2, kGroupBytes = 3;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Mono12Packed(const RowArgs&) {}
  LUM_INLINE Gray8 block(const uint8_t* a, const uint8_t*) const {
    return {load_bytes_of_3(a, Upper{})};
  }

 private:
  struct Upper {
    static constexpr int byte(int i) { return i / 2 * 3 + i % 2 * 2; }
  };
};

// The same with all 12 bits, shifted up by `shift`, as words in host order. A shuffle puts a
// pixel's upper eight bits above the byte with its low nibble: in the lower nibble of the first
// pixel of a pair, in the upper one of the second.
struct Mono12PackedTo16 {
  static constexpr size_t kGroupPixels = 2, kGroupBytes = 3;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Mono12PackedTo16(const RowArgs& args) : shift(args.shift) {}
  LUM_INLINE Gray16 block(const uint8_t* a, const uint8_t*) const {
    return {{words<0>(a), words<1>(a)}};
  }

 private:
  struct Pair {
    static constexpr int low(int i) { return i / 2 * 3 + 1; }
    static constexpr int high(int i) { return i / 2 * 3 + i % 2 * 2; }
  };
  template <int half>
  LUM_INLINE U16 words(const uint8_t* p) const {
    const U16 v = load_words_of_3<half>(p, Pair{});
    const U16 upper = U16(U32{} + 0x0FFF0FF0u), lower = U16(U32{} + 0x0000000Fu);
    return shift_left(((v >> 4) & upper) | (v & lower), shift);
  }

  unsigned shift;
};

// Big-endian words, all 16 bits used: H L. Grey is H; of the bits below it the upper one (0x80 of
// L) adds 1 to red and the lower one (0x40) adds 1 to blue, not beyond 255: a tint that lets a
// viewer tell quarter steps apart.
struct Mono16Tinted {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 2;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Mono16Tinted(const RowArgs&) {}
  LUM_INLINE RgbOfHalves block(const uint8_t* a, const uint8_t*) const {
    const U16 lo = load<U16>(a), hi = load<U16>(a + kLanes);  // as little-endian words: L is on top
    const U16 grey_lo = lo & 255, grey_hi = hi & 255;
    return {of_halves(I16(grey_lo + (lo >> 15)), I16(grey_hi + (hi >> 15))),
            of_halves(I16(grey_lo), I16(grey_hi)),
            of_halves(I16(grey_lo + ((lo >> 14) & 1)), I16(grey_hi + ((hi >> 14) & 1)))};
  }
};

// Either luminance of a tinted pixel is H again: the tint adds at most 77 + 29 of 256 to the
// truncated one and 54 + 18 + 128 to the rounded one. In little-endian words H is the second byte.
template <bool second>
struct Mono16High {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 2;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Mono16High(const RowArgs&) {}
  LUM_INLINE Gray8 block(const uint8_t* a, const uint8_t*) const {
    return {narrow(byte_of(a), byte_of(a + kLanes))};
  }

 private:
  static LUM_INLINE I16 byte_of(const uint8_t* p) {
    const U16 v = load<U16>(p);
    return I16(second ? v >> 8 : v & 255);
  }
};

// Words of either byte order whose significant bits are `shift` below the top.
struct Mono16Words {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 2;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Mono16Words(const RowArgs& args)
      : shift(args.shift), order(byte_order(args.big_endian != 0)) {}
  LUM_INLINE Wide words(const uint8_t* a) const {
    return {ordered(load<U16>(a), order), ordered(load<U16>(a + kLanes), order)};
  }
  unsigned shift;
  ByteOrder order;
};

// The top eight significant bits: (V >> (8 - shift)) & 255. Bits above them are dropped, not
// clamped.
struct Mono16To8 {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 2;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Mono16To8(const RowArgs& args) : byte(8 - args.shift, args.big_endian != 0) {}
  LUM_INLINE Gray8 block(const uint8_t* a, const uint8_t*) const {
    return {byte.dropping(load<U16>(a), load<U16>(a + kLanes))};
  }

 private:
  ByteOfWords byte;
};

// (V << shift) & 0xFFFF in host order.
struct Mono16To16 : Mono16Words {
  using Mono16Words::Mono16Words;
  LUM_INLINE Gray16 block(const uint8_t* a, const uint8_t*) const {
    const Wide v = words(a);
    return {{shift_left(v.lo, shift), shift_left(v.hi, shift)}};
  }
};

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
