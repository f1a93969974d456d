// SPDX-License-Identifier: MIT
// Colour sources: R G B, B G R, R G B A, B G R A in memory. Most become four-byte pixels, which
// sinks reorder in one shuffle.
namespace lum {
namespace LUM_LEVEL {
namespace {

// With `swapped` in the other order, which costs nothing where a shuffle makes them.
template <bool bgr, bool swapped = false>
struct Packed24Source {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 3;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Packed24Source(const RowArgs&) {}
  LUM_INLINE Pixels4<bgr != swapped, false> block(const uint8_t* a, const uint8_t*) const {
    constexpr int kQuarter = kLanes / 4 * 3;
    return {{expand3<swapped>(a), expand3<swapped>(a + kQuarter),
             expand3<swapped>(a + 2 * kQuarter), expand3<swapped>(a + 3 * kQuarter)}};
  }
};

// To the other order of three bytes.
template <bool bgr>
struct Swapped24Source {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 3;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Swapped24Source(const RowArgs&) {}
  LUM_INLINE Pixels3<!bgr> block(const uint8_t* a, const uint8_t*) const {
    const Bytes3 v = load3_swapped(a);
    return {{v.c0, v.c1, v.c2}};
  }
};

template <bool bgr>
struct Packed32Source {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 4;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Packed32Source(const RowArgs&) {}
  LUM_INLINE Pixels4<bgr, true> block(const uint8_t* a, const uint8_t*) const {
    return load_pixels4<bgr>(a);
  }
};

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
