// SPDX-License-Identifier: MIT
// The row kernel: a source's blocks into a sink, with the tail of the row. A source has
//   kGroupPixels, kGroupBytes  bytes of a row, as in kSources
//   kRows                      1 or 2 rows read
//   kPadded                    true when a row may be read on beyond its end
//   kEdge                      true when pixel x also needs sample x + 1
//   block(a, b)                the kLanes pixels whose first bytes are at a and b
//   last_block(a, b)           with kEdge: the same at the end of a row, nothing read beyond it
namespace lum {
namespace LUM_LEVEL {
namespace {

template <class Source>
constexpr size_t source_bytes(size_t pixels) {
  return pixels / Source::kGroupPixels * Source::kGroupBytes;
}

template <class Source, class Sink>
LUM_INLINE void convert_last(const Source& source, uint8_t* dst, const uint8_t* a,
                             const uint8_t* b) {
  if constexpr (Source::kEdge) {
    Sink::store_block(dst, source.last_block(a, b));
  } else {
    Sink::store_block(dst, source.block(a, b));
  }
}

// Fewer pixels than a block: through a block of their own on the stack.
template <class Source, class Sink>
__attribute__((noinline)) void convert_few(const Source& source, uint8_t* dst, const uint8_t* a,
                                           const uint8_t* b, size_t n) {
  constexpr size_t kBlockBytes = source_bytes<Source>(kLanes);
  constexpr size_t kSampleBytes = Source::kGroupBytes / Source::kGroupPixels;
  alignas(64) uint8_t out[kLanes * Sink::kPixelBytes];
  if (Sink::kKeeps) memcpy(out, dst, n * Sink::kPixelBytes);
  if constexpr (Source::kPadded) {
    Sink::store_block(out, source.block(a, b));
    memcpy(dst, out, n * Sink::kPixelBytes);
    return;
  }
  alignas(64) uint8_t in[2][kBlockBytes + 2] = {};
  const uint8_t* const rows[2] = {a, b};
  const size_t bytes = source_bytes<Source>(n);
  for (int i = 0; i < Source::kRows; ++i) {
    memcpy(in[i], rows[i], bytes);
    // The sample beyond the row repeats the last but one.
    if (Source::kEdge) memcpy(in[i] + bytes, in[i] + bytes - 2 * kSampleBytes, kSampleBytes);
  }
  convert_last<Source, Sink>(source, out, in[0], in[1]);
  memcpy(dst, out, n * Sink::kPixelBytes);
}

// in_place: dst may be a, so that no pixel may be converted twice.
template <class Source, class Sink, bool in_place = false>
void row(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n, const RowArgs& args) {
  const Source source(args);
  constexpr size_t kIn = source_bytes<Source>(kLanes);
  constexpr size_t kOut = size_t{kLanes} * Sink::kPixelBytes;
  constexpr size_t kAhead = Source::kEdge ? 1 : 0;
  size_t x = 0;
  for (; x + kLanes + kAhead <= n; x += kLanes) {
    for (size_t line = 0; line < kIn && !Source::kPadded; line += 64) {  // padded rows are cached
      prefetch_read(a + line);
      if (Source::kRows == 2) prefetch_read(b + line);
    }
    for (size_t line = 0; line < kOut; line += 64) prefetch_write(dst + line, args.write_ahead);
    Sink::store_block(dst, source.block(a, b));
    a += kIn;
    if (Source::kRows == 2) b += kIn;
    dst += kOut;
  }
  const size_t rest = n - x;
  if (rest == 0) return;
  // An odd row of a mosaic cannot go back to where its last kLanes pixels begin: that is a column
  // of the other colour. Two pixels back are enough for the edge rule.
  const bool odd = Source::kEdge && n % 2 != 0;
  if (n < kLanes || in_place || odd) {
    const size_t back = odd && rest == 1 && n > 1 ? 2 : 0;
    a -= source_bytes<Source>(back);
    b -= Source::kRows == 2 ? source_bytes<Source>(back) : 0;
    convert_few<Source, Sink>(source, dst - back * Sink::kPixelBytes, a, b, rest + back);
    return;
  }
  // The last kLanes pixels, some of them for the second time.
  const size_t back = kLanes - rest;
  a -= source_bytes<Source>(back);
  if (Source::kRows == 2) b -= source_bytes<Source>(back);
  convert_last<Source, Sink>(source, dst - back * Sink::kPixelBytes, a, b);
}

inline void stream(uint8_t* dst, const uint8_t* src, size_t bytes) {
  constexpr size_t kLine = 64;
  const size_t misaligned = reinterpret_cast<uintptr_t>(dst) % kLine;
  const size_t head = misaligned == 0 ? 0 : kLine - misaligned;
  if (head >= bytes) {
    memcpy(dst, src, bytes);
    return;
  }
  memcpy(dst, src, head);
  size_t i = head;
  for (; i + kLine <= bytes; i += kLine) {
    for (size_t j = 0; j < kLine; j += kLanes) stream_vector(dst + i + j, load<U8>(src + i + j));
  }
  memcpy(dst + i, src + i, bytes - i);
}

inline void exchange(uint8_t* a, uint8_t* b, size_t bytes) {
  size_t i = 0;
  for (; i + kLanes <= bytes; i += kLanes) {
    const U8 from_a = load<U8>(a + i), from_b = load<U8>(b + i);
    prefetch_write(a + i);
    prefetch_write(b + i);
    store(a + i, from_b);
    store(b + i, from_a);
  }
  uint8_t rest[kLanes];
  memcpy(rest, a + i, bytes - i);
  memcpy(a + i, b + i, bytes - i);
  memcpy(b + i, rest, bytes - i);
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
