// SPDX-License-Identifier: MIT
// Transposition of blocks, and rows that are written past the caches.
namespace lum {
namespace LUM_LEVEL {
namespace {

// Pixels lie in slots of 1, 2, 4, 8 or 16 bytes. kCount rows of as
// many columns, each piece of a vector for itself, come of interleaving row i with row
// i + kCount / 2 until every row number has become a column number. As many vectors as small pixels
// need do not fit 16 registers: half of their rounds are done on the way to a stage.
template <int size>
constexpr int kSlotBytes = size <= 2   ? size
                           : size <= 4 ? 4
                           : size <= 8 ? 8
                                       : 16;
template <int slot>
LUM_INLINE auto slot_vector() {
  if constexpr (slot == 2) {
    return I16{};
  } else if constexpr (slot == 4) {
    return U32{};
  } else if constexpr (slot == 8) {
    return U64{};
  } else {
    return U8{};
  }
}

template <int size>
struct Slots {
  static constexpr int kSlot = kSlotBytes<size>;
  static constexpr int kCount = kPieceBytes / kSlot;  // in a piece
  static constexpr int kTotal = kLanes / kSlot;       // in a vector
  // Vectors that are interleaved on the way to the stage, and from there.
  static constexpr int kFirst = kManyRegisters || size > 2 ? 1 : size == 1 ? 4 : 2;
  static constexpr int kSecond = kCount / kFirst;
  using V = decltype(slot_vector<kSlot>());

  static constexpr LaneTable kApart =
      lane_table([](int i) { return i % kPieceBytes / kSlot * size + i % kSlot % size; });
  static constexpr int kInSpan = kSpanBytes / kSlot, kUsed = kInSpan * size;
  static constexpr LaneTable kTogether = lane_table([](int i) {
    const int byte = i % kSpanBytes;
    return byte < kUsed ? byte / size * kSlot + byte % size : 0;
  });
  static LUM_INLINE V load_pixels(const uint8_t* p, ptrdiff_t stride) {
    const U8 v = load_pieces(p, stride);
    return V(size == kSlot || kCount == 1 ? v : pick_bytes(v, load<U8>(kApart.v)));
  }
  static LUM_INLINE void store_pixels(uint8_t* p, V v) {
    if constexpr (size == kSlot) {
      store(p, v);
    } else {
      store_spans(p, kUsed, kInSpan == 1 ? U8(v) : shuffle_spans(U8(v), kTogether));
    }
  }
};

template <class V, int count>
LUM_INLINE void interleave_all(V (&v)[count]) {
  if constexpr (count > 1) {
    V t[count];
    for (int round = 1; round < count; round *= 2) {
      for (int i = 0; i < count / 2; ++i) {
        const auto pair = interleave(v[i], v[i + count / 2]);
        t[2 * i] = pair.lo;
        t[2 * i + 1] = pair.hi;
      }
      for (int i = 0; i < count; ++i) v[i] = t[i];
    }
  }
}

template <int size>
void to_stage(uint8_t* stage, size_t pitch, const uint8_t* src, ptrdiff_t stride, size_t rows,
              size_t bytes) {
  using S = Slots<size>;
  constexpr int kApartRows = S::kCount / S::kFirst;
  for (size_t group = 0; group < rows; group += S::kCount) {
    for (int i = 0; i < kApartRows; ++i) {
      const uint8_t* const from = src + static_cast<ptrdiff_t>(group + i) * stride;
      uint8_t* const to = stage + (group + i * S::kFirst) * pitch;
      for (size_t x = 0; x < bytes; x += kLanes) {
        typename S::V v[S::kFirst];
        for (int j = 0; j < S::kFirst; ++j) {
          v[j] = load<typename S::V>(from + j * kApartRows * stride + x);
        }
        interleave_all(v);
        for (int j = 0; j < S::kFirst; ++j) store(to + j * pitch + x, v[j]);
      }
    }
  }
}

inline void copy_to_stage(uint8_t* stage, size_t pitch, const uint8_t* src, ptrdiff_t stride,
                          size_t rows, size_t bytes) {
  for (size_t row = 0; row < rows; ++row, stage += pitch, src += stride) {
    if (bytes < kLanes) {
      memcpy(stage, src, bytes);
      continue;
    }
    over_row(bytes, kLanes, [&](size_t x) { store(stage + x, load<U8>(src + x)); });
  }
}

template <int size>
void transpose(uint8_t* dst, ptrdiff_t dst_stride, const uint8_t* src, ptrdiff_t src_stride,
               size_t rows, size_t columns) {
  using S = Slots<size>;
  constexpr int kApartRows = S::kCount / S::kSecond;
  // The next line of each row, one of a vector's rows at a time; other sizes gain nothing by it.
  constexpr bool kFetchesSource = kManyRegisters && (size == 1 || size == 3);
  constexpr size_t kPieces = kLanes / kPieceBytes;
  for (size_t column = 0; column < columns; column += S::kCount) {
    for (int i = 0; i < kApartRows; ++i) {
      const uint8_t* from = src + i * src_stride + column * size;
      uint8_t* to = dst + static_cast<ptrdiff_t>(column + i * S::kSecond) * dst_stride;
      for (size_t row = 0; row < rows; row += S::kTotal) {
        typename S::V v[S::kSecond];
        for (int j = 0; j < S::kSecond; ++j) {
          const uint8_t* const p = from + j * kApartRows * src_stride;
          if constexpr (kFetchesSource) {
            const ptrdiff_t piece = static_cast<ptrdiff_t>(column / S::kCount % kPieces);
            __builtin_prefetch(p + piece * S::kCount * src_stride + kCacheLine);
          }
          v[j] = S::load_pixels(p, S::kCount * src_stride);
        }
        interleave_all(v);
        for (int j = 0; j < S::kSecond; ++j) {
          // Stores that overlap wait for a line longer than others.
          if constexpr (size != S::kSlot) __builtin_prefetch(to + j * dst_stride + kCacheLine, 1);
          S::store_pixels(to + j * dst_stride, v[j]);
        }
        from += S::kTotal * src_stride;
        to += S::kTotal * size;
      }
    }
  }
}

struct Prefetcher {
  ByteRows rows;
  size_t x = 0;
  LUM_INLINE void line() {
    if (rows.count == 0) return;
    // Lines that would push one another out of the first-level cache go to the second.
    if (rows.stride % kConflict == 0) {
      __builtin_prefetch(rows.first + x, 0, 2);
    } else {
      __builtin_prefetch(rows.first + x);
    }
    x += kCacheLine;
    if (x < rows.bytes) return;
    x = 0;
    rows.first += rows.stride;
    --rows.count;
  }
};

// Reads as much of what comes next as it writes, so that memory has both to do at a time.
inline void stream_rows(uint8_t* dst, ptrdiff_t dst_stride, const ByteRows& src,
                        const ByteRows& next) {
  Prefetcher prefetcher{next};
  const uint8_t* from = src.first;
  for (size_t row = 0; row < src.count; ++row, dst += dst_stride, from += src.stride) {
    size_t x = -reinterpret_cast<uintptr_t>(dst) % kCacheLine;
    if (x > src.bytes) x = src.bytes;
    memcpy(dst, from, x);
    for (; x + kCacheLine <= src.bytes; x += kCacheLine) {
      prefetcher.line();
      for (size_t i = x; i < x + kCacheLine; i += kLanes)
        stream_vector(dst + i, load<U8>(from + i));
    }
    memcpy(dst + x, from + x, src.bytes - x);
  }
  while (prefetcher.rows.count > 0) prefetcher.line();
  end_stream();
}

// Without shuffles, pixels whose size is no power of two are moved one by one.
template <int size>
void transpose_pixels(uint8_t* dst, ptrdiff_t dst_stride, const uint8_t* src, ptrdiff_t src_stride,
                      size_t rows, size_t columns) {
  for (size_t column = 0; column < columns; ++column, dst += dst_stride, src += size) {
    const uint8_t* from = src;
    for (size_t row = 0; row < rows; ++row, from += src_stride) {
      memcpy(dst + row * size, from, size);
    }
  }
}

template <int size>
constexpr Transposition transposition() {
  using S = Slots<size>;
  if constexpr (size != S::kSlot && !kShufflesBytes) {
    return {copy_to_stage, transpose_pixels<size>, 1, false, true};
  } else {
    constexpr bool kStaged = S::kFirst > 1;
    return {kStaged ? to_stage<size> : copy_to_stage, transpose<size>, S::kTotal, kStaged,
            size == S::kSlot};
  }
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
