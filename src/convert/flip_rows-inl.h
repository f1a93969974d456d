// SPDX-License-Identifier: MIT
// Flips: reversed rows.
namespace lum {
namespace LUM_LEVEL {
namespace {

// A block is read from one end of what is left of the row and written to the other.
// Elements of a power of two: a vector of them.
template <int size>
struct ReversedElements {
  static constexpr size_t kSize = size, kPixels = kLanes / size, kTouched = kLanes;
  using Block = U8;
  static LUM_INLINE Block load_left(const uint8_t* p) { return load<U8>(p); }
  static LUM_INLINE Block load_right(const uint8_t* end) { return load<U8>(end - kLanes); }
  static LUM_INLINE void store_left(uint8_t* p, Block v) { store(p, reversed<size>(v)); }
  static LUM_INLINE void store_right(uint8_t* end, Block v) {
    store(end - kLanes, reversed<size>(v));
  }
};
// Any size: the whole pixels of each span. On the left they lie at a span's beginning and on the
// right at its end, so that the bytes beside them are on the side of the row's middle: what is
// written there the next block, which is in registers by then, replaces.
//   left    A0 A1 A2 B0 B1 B2 C0 C1 C2 .. ..      spans at p, p + kUsed ...
//   right   .. .. C0 C1 C2 B0 B1 B2 A0 A1 A2      spans that end at end, end - kUsed ...
template <int size>
struct ReversedPixels {
  static constexpr int kUsed = kSpanBytes / size * size, kUnused = kSpanBytes - kUsed;
  static constexpr size_t kSize = size, kPixels = kLanes / kSpanBytes * (kSpanBytes / size);
  static constexpr size_t kTouched = kPixels * kSize + kUnused;
  using Block = U8;
  static constexpr int mirrored(int i) { return (kUsed - 1 - i) / size * size + i % size; }
  static constexpr LaneTable kToRight = lane_table([](int i) {
    const int byte = i % kSpanBytes - kUnused;
    return byte < 0 ? 0 : mirrored(byte);
  });
  static constexpr LaneTable kToLeft = lane_table([](int i) {
    const int byte = i % kSpanBytes;
    return byte < kUsed ? kUnused + mirrored(byte) : 0;
  });
  static LUM_INLINE Block load_left(const uint8_t* p) { return load_spans(p, kUsed); }
  static LUM_INLINE Block load_right(const uint8_t* end) {
    return load_spans(end - kSpanBytes, -kUsed);
  }
  static LUM_INLINE void store_left(uint8_t* p, Block v) {
    store_spans(p, kUsed, shuffle_spans(v, kToLeft));
  }
  static LUM_INLINE void store_right(uint8_t* end, Block v) {
    store_spans(end - kSpanBytes, -kUsed, shuffle_spans(v, kToRight));
  }
};
// A word, two of which cover a pixel.
template <int size>
constexpr auto half_of_pixel() {
  static_assert(size >= 2 && size <= 16, "two words");
  if constexpr (size > 8) {
    return uint64_t{};
  } else if constexpr (size > 4) {
    return uint32_t{};
  } else {
    return uint16_t{};
  }
}
// One pixel as it is, where no shuffle moves several: as two words that may overlap, since g++
// keeps a record of bytes in memory.
template <int size>
struct ReversedPixel {
  static constexpr size_t kSize = size, kPixels = 1, kTouched = size;
  using Word = decltype(half_of_pixel<size>());
  static constexpr size_t kLast = size - sizeof(Word);
  struct Block {
    Word first, last;
  };
  static LUM_INLINE Block load_left(const uint8_t* p) {
    return {load<Word>(p), load<Word>(p + kLast)};
  }
  static LUM_INLINE Block load_right(const uint8_t* end) { return load_left(end - size); }
  static LUM_INLINE void store_left(uint8_t* p, const Block& v) {
    memcpy(p, &v.first, sizeof v.first);
    memcpy(p + kLast, &v.last, sizeof v.last);
  }
  static LUM_INLINE void store_right(uint8_t* end, const Block& v) { store_left(end - size, v); }
};

// Rows shorter than a vector, by way of the stack.
template <class Pixels>
__attribute__((noinline)) void reverse_few(uint8_t* dst, const uint8_t* src, size_t n) {
  constexpr size_t kSize = Pixels::kSize;
  uint8_t in[2 * kLanes] = {}, out[2 * kLanes];
  memcpy(in, src, n * kSize);
  uint8_t* const end = out + sizeof out;
  for (size_t x = 0; x < n; x += Pixels::kPixels) {
    Pixels::store_right(end - x * kSize, Pixels::load_left(in + x * kSize));
  }
  memcpy(dst, end - n * kSize, n * kSize);
}

template <class Pixels>
constexpr size_t kBlockBytes = Pixels::kPixels* Pixels::kSize;

// Blocks where the bytes beside them are not to be touched.
template <class Pixels>
LUM_INLINE void store_left_exactly(uint8_t* p, const typename Pixels::Block& v) {
  uint8_t out[Pixels::kTouched];
  Pixels::store_left(out, v);
  memcpy(p, out, kBlockBytes<Pixels>);
}
template <class Pixels>
LUM_INLINE void store_right_exactly(uint8_t* end, const typename Pixels::Block& v) {
  uint8_t out[Pixels::kTouched];
  Pixels::store_right(out + sizeof out, v);
  memcpy(end - kBlockBytes<Pixels>, out + sizeof out - kBlockBytes<Pixels>, kBlockBytes<Pixels>);
}

// From both ends to the middle, two blocks at a time, each stored where the other came from, after
// the next two were loaded. What is left at last is less than three blocks: two, which may overlap,
// and two about the middle, which are loaded before anything is stored.
template <class Pixels>
__attribute__((noinline)) void reverse_in_place(uint8_t* p, size_t n) {
  constexpr ptrdiff_t kBlock = kBlockBytes<Pixels>;
  uint8_t *left = p, *right = p + n * Pixels::kSize;
  uint8_t* const middle_left = left + (n - Pixels::kPixels) / 2 * Pixels::kSize;
  uint8_t* const middle_right = right - (middle_left - left);
  const auto middle_a = Pixels::load_left(middle_left), middle_b = Pixels::load_right(middle_right);
  auto a = Pixels::load_left(left), b = Pixels::load_right(right);
  for (; right - left >= 3 * kBlock; left += kBlock, right -= kBlock) {
    prefetch_read(left);
    prefetch_read(right - 2 * kPrefetchDistance);
    const auto next_a = Pixels::load_left(left + kBlock),
               next_b = Pixels::load_right(right - kBlock);
    Pixels::store_right(right, a);
    Pixels::store_left(left, b);
    a = next_a;
    b = next_b;
  }
  store_right_exactly<Pixels>(right, a);
  store_left_exactly<Pixels>(left, b);
  if (right - left <= 2 * kBlock) return;
  store_right_exactly<Pixels>(middle_right, middle_a);
  store_left_exactly<Pixels>(middle_left, middle_b);
}

// As few whole pixels as fill whole vectors.
template <int size>
struct WholeVectors {
  static constexpr int kPower = size & -size;  // the greatest power of two that divides the size
  static constexpr int kVectors = size / kPower, kBytes = kVectors * kLanes;
  // Byte i of the reversed block is this one of the block.
  static constexpr int mirrored(int i) { return (kBytes / size - 1 - i / size) * size + i % size; }
};
// The bytes of a reversed vector lie in little more than a vector: in two that overlap.
template <int size, int vector>
struct ReversedVector {
  using Block = WholeVectors<size>;
  static constexpr int from(int i) { return Block::mirrored(vector * kLanes + i); }
  static constexpr int first() {
    int least = Block::kBytes;
    for (int i = 0; i < kLanes; ++i) least = from(i) < least ? from(i) : least;
    return least;
  }
  static constexpr int second() {
    int most = 0;
    for (int i = 0; i < kLanes; ++i) most = from(i) > most ? from(i) : most;
    return most - (kLanes - 1);
  }
  static constexpr LaneTable kIndex = lane_table([](int i) {
    const int byte = from(i % kLanes);
    return byte < first() + kLanes ? byte - first() : kLanes + byte - second();
  });
};
template <int size, int vector = 0, class To>
LUM_INLINE void store_reversed_vectors(To to, const uint8_t* block) {
  using V = ReversedVector<size, vector>;
  store(to + static_cast<size_t>(vector * kLanes),
        permute_two(load<U8>(block + V::first()), load<U8>(block + V::second()),
                    load<U8>(V::kIndex.v)));
  if constexpr (vector + 1 < WholeVectors<size>::kVectors) {
    store_reversed_vectors<size, vector + 1>(to, block);
  }
}

// Blocks of whole pixels that fill whole vectors: elements, or three channels of them, or any where
// bytes of two vectors can be permuted.
template <int size, class To>
LUM_INLINE void store_reversed(To to, const uint8_t* end) {
  if constexpr (size == 3) {
    const Bytes3 v = load3(end - 3 * kLanes);
    store3(to, reversed<1>(v.c0), reversed<1>(v.c1), reversed<1>(v.c2));
  } else if constexpr (size == 6) {
    const Words3 v = load3_words(end - 3 * kLanes);
    store3(to, U16(reversed<2>(U8(v.c0))), U16(reversed<2>(U8(v.c1))), U16(reversed<2>(U8(v.c2))));
  } else if constexpr ((size & (size - 1)) == 0) {
    store(to, reversed<size>(load<U8>(end - kLanes)));
  } else {
    store_reversed_vectors<size>(to, end - WholeVectors<size>::kBytes);
  }
}
template <int size>
constexpr bool kFillsVectors = kPermutesTwo || size == 3 || size == 6 || (size & (size - 1)) == 0;

// From left to right, which lets the processor gather overlapping stores. `inner`: there are rows
// before and after this one, so that bytes about it may be read and, on the right, written.
template <class Pixels>
LUM_INLINE void reverse_row(uint8_t* dst, const uint8_t* src, size_t n, bool inner) {
  constexpr size_t kBlock = kBlockBytes<Pixels>, kTouched = Pixels::kTouched;
  const size_t bytes = n * Pixels::kSize;
  const uint8_t* const end = src + bytes;
  const auto block = [&](size_t x) { Pixels::store_left(dst + x, Pixels::load_right(end - x)); };
  const size_t beyond = inner && bytes >= 2 * kTouched ? kBlock + kTouched - 1 : 0;
  size_t x = 0;
  if constexpr (kPermutesTwo && kTouched != kBlock) {
    constexpr size_t kWhole = WholeVectors<Pixels::kSize>::kBytes;
    for (; x + kWhole <= bytes; x += kWhole) {
      const size_t ahead = x + kPrefetchDistance / 2;
      for (size_t line = 0; line < kWhole; line += kCacheLine)
        __builtin_prefetch(end - ahead - line + (ahead < bytes ? 0 : 2 * bytes));
      store_reversed_vectors<Pixels::kSize>(dst + x, end - x - kWhole);
    }
  }
  for (; x + kBlock + kTouched <= bytes + beyond; x += 2 * kBlock) {
    // What is read next lies to the left, then at the end of the next row.
    const size_t ahead = x + kPrefetchDistance / 2;
    __builtin_prefetch(end - ahead + (ahead < bytes ? 0 : 2 * bytes));
    block(x);
    block(x + kBlock);
  }
  for (; x < bytes; x += kBlock) {
    const size_t at = x + kBlock < bytes ? x : bytes - kBlock;
    if (at + kTouched <= bytes) {
      block(at);
    } else {
      store_right_exactly<Pixels>(dst + at + kBlock, Pixels::load_left(end - at - kBlock));
    }
  }
}

// Rows one after the other.
template <class Pixels>
void reverse(uint8_t* dst, const uint8_t* src, size_t n, size_t rows) {
  const size_t bytes = n * Pixels::kSize;
  for (size_t y = 0; y < rows; ++y, dst += bytes, src += bytes) {
    if (bytes < Pixels::kTouched) {
      reverse_few<Pixels>(dst, src, n);
    } else if (dst == src) {
      reverse_in_place<Pixels>(dst, n);
    } else {
      reverse_row<Pixels>(dst, src, n, y > 0 && y + 1 < rows);
    }
  }
}

template <int size>
size_t streamed_reverse(uint8_t* dst, const uint8_t* src_end, size_t n) {
  constexpr size_t kBlock = WholeVectors<size>::kBytes;
  const size_t count = streamed_pixels(n), bytes = n * size;
  const size_t reach = bytes < 2 * kPrefetchDistance ? bytes : 2 * kPrefetchDistance;
  for (size_t x = 0; x < count * size; x += kBlock) {
    // What is read next lies to the left, then at the end of the next row.
    const size_t ahead = x + reach;
    for (size_t line = 0; line < kBlock; line += kCacheLine) {
      __builtin_prefetch(src_end - ahead - line + (ahead < bytes ? 0 : 2 * bytes));
    }
    store_reversed<size>(PastCache{dst + x}, src_end - x);
  }
  return count;
}

template <int size>
constexpr auto reversal() {
  if constexpr ((size & (size - 1)) == 0 && size <= kLanes) {
    return ReversedElements<size>{};
  } else if constexpr (kShufflesBytes) {
    return ReversedPixels<size>{};
  } else {
    return ReversedPixel<size>{};
  }
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
