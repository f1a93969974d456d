// SPDX-License-Identifier: MIT
// Destinations: how a block of kLanes pixels goes to memory. One struct for each, with one store
// for each kind of block it takes. kPixelBytes is the memory of a pixel; kKeeps tells that some of
// its bytes are left as they were.
namespace lum {
namespace LUM_LEVEL {
namespace {

// Y
template <class Luma>
struct Mono8 {
  static constexpr int kPixelBytes = 1;
  static constexpr bool kKeeps = false;
  template <class To>
  static LUM_INLINE void store_block(To p, const Gray8& v) {
    store(p, v.y);
  }
  template <class To, class Colours>
  static LUM_INLINE void store_block(To p, const Colours& v) {
    store(p, luma<Luma>(v));
  }
};

// R G B, or with bgr B G R
template <bool bgr>
struct Packed24 {
  static constexpr int kPixelBytes = 3;
  static constexpr bool kKeeps = false;
  template <class To>
  static LUM_INLINE void store_block(To p, const Gray8& v) {
    store3_same(p, v.y);
  }
  template <class To>
  static LUM_INLINE void store_block(To p, const Rgb8& v) {
    store3(p, bgr ? v.b : v.r, v.g, bgr ? v.r : v.b);
  }
  template <class To, class Order>
  static LUM_INLINE void store_block(To p, const Disordered<Order>& v) {
    store3(p, bgr ? v.b : v.r, v.g, bgr ? v.r : v.b, Order());
  }
  template <class To, bool source_bgr, bool alpha>
  static LUM_INLINE void store_block(To p, const Pixels4<source_bgr, alpha>& v) {
    compress3_all<bgr != source_bgr>(p, v.quarter);
  }
  template <class To>
  static LUM_INLINE void store_block(To p, const Pixels3<bgr>& v) {
    for (int i = 0; i < 3; ++i) store(p + static_cast<size_t>(i * kLanes), v.third[i]);
  }
};

// R G B A, or with bgr B G R A; A is written only from a source that has one
template <bool bgr>
struct Packed32 {
  static constexpr int kPixelBytes = 4;
  static constexpr bool kKeeps = true;
  static LUM_INLINE void store_block(uint8_t* p, const Gray8& v) { store4_keep(p, v.y, v.y, v.y); }
  static LUM_INLINE void store_block(uint8_t* p, const Rgb8& v) {
    store4_keep(p, bgr ? v.b : v.r, v.g, bgr ? v.r : v.b);
  }
  template <class Order>
  static LUM_INLINE void store_block(uint8_t* p, const Disordered<Order>& v) {
    store_block(p, in_order(v));
  }
  template <class To, bool source_bgr, bool alpha>
  static LUM_INLINE void store_block(To p, const Pixels4<source_bgr, alpha>& v) {
    for (int i = 0; i < 4; ++i) {
      const U8 pixels = bgr != source_bgr ? swap02(v.quarter[i]) : v.quarter[i];
      if constexpr (alpha) {
        store_moved(p + static_cast<size_t>(i * kLanes), pixels);
      } else {
        store_keep(p + i * kLanes, pixels);
      }
    }
  }
};

// U Y0 V Y1
struct Uyvy {
  static constexpr int kPixelBytes = 2;
  static constexpr bool kKeeps = false;
  template <class To>
  static LUM_INLINE void store_block(To p, const Rgb8& v) {
    store_block(p, to_yuv422(v));
  }
  template <class To, class Order>
  static LUM_INLINE void store_block(To p, const Disordered<Order>& v) {
    store_block(p, in_order(v));
  }
  template <class To>
  static LUM_INLINE void store_block(To p, const BlockPairs& v) {
    store_block(p, to_yuv422(v));
  }
  template <class To>
  static LUM_INLINE void store_block(To p, const Yuv422& v) {
    store2(p, v.uv, v.y);
  }
  template <class To>
  static LUM_INLINE void store_block(To p, const Wide& v) {
    store(p, v);
  }
  // Kept: chroma of a grey source is 0, not the neutral 128; receivers of these frames rely on it.
  template <class To>
  static LUM_INLINE void store_block(To p, const Gray8& v) {
    store_in_words<true>(p, v.y);
  }
};

// Y as a word in host order
template <class Luma>
struct Mono16 {
  static constexpr int kPixelBytes = 2;
  static constexpr bool kKeeps = false;
  template <class To>
  static LUM_INLINE void store_block(To p, const Gray16& v) {
    store(p, v.y);
  }
  template <class To>
  static LUM_INLINE void store_block(To p, const Rgb16& v) {
    store_block(p, Gray16{luma<Luma>(v)});
  }
  template <class To>
  static LUM_INLINE void store_block(To p, const BlockTriples<false>& v) {
    store_block(p, Gray16{luma<Luma>(v)});
  }
  // Kept: 8-bit luminance is stored as 0..255, not scaled up to 16 bits.
  template <class To>
  static LUM_INLINE void store_block(To p, const BlockPairs& v) {
    store_in_words<false>(p, luma<Luma>(v));
  }
};

// R G B as words in host order, or with bgr B G R
template <bool bgr>
struct Packed48 {
  static constexpr int kPixelBytes = 6;
  static constexpr bool kKeeps = false;
  template <class To>
  static LUM_INLINE void store_block(To p, const Gray16& v) {
    store3_same(p, v.y.lo);
    store3_same(p + 3 * kLanes, v.y.hi);
  }
  template <class To>
  static LUM_INLINE void store_block(To p, const Rgb16& v) {
    const Wide& first = bgr ? v.b : v.r;
    const Wide& third = bgr ? v.r : v.b;
    store3(p, first.lo, v.g.lo, third.lo);
    store3(p + 3 * kLanes, first.hi, v.g.hi, third.hi);
  }
};

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
