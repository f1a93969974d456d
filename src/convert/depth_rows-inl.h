// SPDX-License-Identifier: MIT
// Packed samples of 10 and 12 bits to words, and words to bytes.
//
// A shuffle brings the bytes of a sample into its word; what is left are shifts that differ from
// word to word. a, b, c, d are the samples of a group:
//
//   GigE Vision   12: a[11:4], b[3:0] a[3:0], b[11:4]   10: a[9:2], 00 b[1:0] 00 a[1:0], b[9:2]
//   PFNC "p"      one little-endian number, the samples from the bottom
//   MIPI CSI-2    12: a[11:4], b[11:4], b[3:0] a[3:0]
//                 10: a[9:2], b[9:2], c[9:2], d[9:2], d[1:0] c[1:0] b[1:0] a[1:0]
namespace lum {
namespace LUM_LEVEL {
namespace {

// Two samples in three bytes. In word i: the upper bits of sample i above the byte it shares.
template <int shared_byte, int second_byte>
struct UpperAboveShared {
  static constexpr int low(int i) { return i / 2 * 3 + shared_byte; }
  static constexpr int high(int i) { return i / 2 * 3 + i % 2 * second_byte; }
};
template <int bits, int shared_byte, int second_byte>
struct SharedByte {
  static constexpr size_t kPixels = 2, kBytes = 3;
  template <int half>
  static LUM_INLINE U16 words(const uint8_t* p) {
    constexpr unsigned kLow = (1u << (bits - 8)) - 1, kHigh = 255u << (bits - 8);
    const U16 v = load_words_of_3<half>(p, UpperAboveShared<shared_byte, second_byte>{});
    return ((v >> (16 - bits)) & static_cast<uint16_t>(kHigh)) | (v & splat_words(kLow, 0)) |
           ((v >> 4) & splat_words(0, kLow));
  }
};
using GigE12 = SharedByte<12, 1, 2>;
using GigE10 = SharedByte<10, 1, 2>;
using Mipi12 = SharedByte<12, 2, 1>;

struct Pfnc12 {
  static constexpr size_t kPixels = 2, kBytes = 3;
  template <int half>
  static LUM_INLINE U16 words(const uint8_t* p) {
    const U16 v = load_words_of_3<half>(p, TwoBytes{});
    return (v & splat_words(0xFFF, 0)) | ((v >> 4) & splat_words(0, 0xFFF));
  }

 private:
  struct TwoBytes {
    static constexpr int low(int i) { return i / 2 * 3 + i % 2; }
    static constexpr int high(int i) { return low(i) + 1; }
  };
};

// 64, 16, 4, 1: a product with these moves sample i of a group, which starts at bit 2 i of its
// word, up to bit 6.
constexpr LaneTable kUpToBit6 =
    lane_table([](int i) { return i % 2 == 0 ? 64 >> (i / 2 % 4 * 2) : 0; });

struct Pfnc10 {
  static constexpr size_t kPixels = 4, kBytes = 5;
  template <int half>
  static LUM_INLINE U16 words(const uint8_t* p) {
    return (load_words_of_5<half>(p, TwoBytes{}) * load<U16>(kUpToBit6.v)) >> 6;
  }

 private:
  struct TwoBytes {
    static constexpr int low(int i) { return i / 4 * 5 + i % 4; }
    static constexpr int high(int i) { return low(i) + 1; }
  };
};

struct Mipi10 {
  static constexpr size_t kPixels = 4, kBytes = 5;
  template <int half>
  static LUM_INLINE U16 words(const uint8_t* p) {
    const U16 v = load_words_of_5<half>(p, UpperAboveFifth{});
    return ((v >> 6) & 0x3FC) | (((v * load<U16>(kUpToBit6.v)) >> 6) & 3);
  }

 private:
  struct UpperAboveFifth {
    static constexpr int low(int i) { return i / 4 * 5 + 4; }
    static constexpr int high(int i) { return i / 4 * 5 + i % 4; }
  };
};

template <class Packing>
struct Unpacked {
  static constexpr size_t kGroupPixels = Packing::kPixels, kGroupBytes = Packing::kBytes;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Unpacked(const RowArgs& args)
      : shift(args.shift), order(byte_order(args.big_endian != 0)) {}
  LUM_INLINE Gray16 block(const uint8_t* a, const uint8_t*) const {
    return {{finish(Packing::template words<0>(a)), finish(Packing::template words<1>(a))}};
  }

 private:
  LUM_INLINE U16 finish(U16 v) const { return ordered(shift_left(v, shift), order); }

  unsigned shift;
  ByteOrder order;
};

// min(255, V >> shift): bits above the eight saturate.
struct SaturatedWords {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 2;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit SaturatedWords(const RowArgs& args) : byte(args.shift, args.big_endian != 0) {}
  LUM_INLINE Gray8 block(const uint8_t* a, const uint8_t*) const {
    return {byte.saturated(load<U16>(a), load<U16>(a + kLanes))};
  }

 private:
  ByteOfWords byte;
};

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
