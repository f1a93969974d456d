// SPDX-License-Identifier: MIT
// The kernels of planes, depth and geometry: what is neither a source to a sink nor a demosaic.
#ifndef LUM_SIMD_DIRECT_KERNELS_H
#define LUM_SIMD_DIRECT_KERNELS_H

#include <stddef.h>
#include <stdint.h>

namespace lum {

struct RowArgs;

// Two rows of n pixels, n even (4:1:1: a multiple of 4), to two rows of Y and one of U and V each.
struct I420Rows {
  const uint8_t* src[2];
  uint8_t* y[2];
  uint8_t *u, *v;
};

// Rows that the library made may be used on beyond their end by up to this many samples.
constexpr size_t kBlockSamples = 64;
constexpr size_t kCacheLine = 64;
constexpr size_t kStreamedGroup = 64;  // as many pixels of any size are whole lines
constexpr size_t kStreamedI420 = 128;  // as many pixels are whole lines of U and V
constexpr size_t kMaxChannels = 4;
constexpr size_t kMaxPixelBytes = 16;

// Transposition of blocks whose rows and columns are multiples of `granule`; strides are signed.
// transpose() makes row i of dst of column i of src. Where src is `staged`, to_stage() has to bring
// the block to a stage before; elsewhere it just copies rows of any number of bytes. Unless
// `exact`, transpose() reads and writes up to kSpareBytes beyond each row of the block as well.
constexpr size_t kSpareBytes = 32;
// At multiples of this distance rows fall on the same lines of a first-level cache.
constexpr ptrdiff_t kConflict = 4096;
struct ByteRows {
  const uint8_t* first;
  ptrdiff_t stride;
  size_t count, bytes;
};
struct Transposition {
  void (*to_stage)(uint8_t* stage, size_t pitch, const uint8_t* src, ptrdiff_t stride, size_t rows,
                   size_t bytes);
  void (*transpose)(uint8_t* dst, ptrdiff_t dst_stride, const uint8_t* src, ptrdiff_t src_stride,
                    size_t rows, size_t columns);
  size_t granule;
  bool staged, exact;
};

// What picks take together is of so many bytes.
constexpr size_t kLeastSpan = 16, kMostSpan = 64;
// An index of a mixing kernel that picks 0: bit 7 says so to shuffles, bit 6 to a permute of a span
// and zeros.
constexpr uint8_t kPickNothing = 0xC0;
// The index of a byte of the result is `factor` times how far from the base its sample lies, plus
// `added`.
struct PickIndex {
  uint32_t factor, added;
};
// The same of a sample of one or two bytes, for mixing kernels: see PickingMix.
constexpr PickIndex mixing_index(uint32_t sample_bytes, uint32_t pixel_bytes, bool pairs) {
  const uint32_t second = pairs ? pixel_bytes * 0x0101 + 0x0100 : kPickNothing * 0x0101u;
  if (sample_bytes == 1) return {pairs ? 0x0101u : 1, (second & 0xFF) << 8};
  return {pairs ? 0x01010101u : 0x0101, 0x0100 | second << 16};
}

struct DirectKernels {
  // As RowKernel and StreamedRowKernel.
  using Row = void (*)(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n,
                       const RowArgs& args);
  using StreamedRow = size_t (*)(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n,
                                 const RowArgs& args);

  // Studio-range YUV 4:1:1, 4:2:2, 4:4:4 to B, G, R. RowArgs::matrix holds four factors in units of
  // 1/256: red from V, green from U, green from V, blue from U; those of BT.601 or of BT.709.
  Row studio_to_bgr24[3];
  StreamedRow streamed_studio_to_bgr24[3];

  // By LumPixelLayout; null for those that cannot go there and for grey, of which a row makes Y.
  void (*i420[11])(const I420Rows& rows, size_t n);
  // The same past the cache, kStreamedI420 pixels or a multiple; every output begins with a line.
  void (*streamed_i420[11])(const I420Rows& rows, size_t n);
  Row gray_to_studio;
  StreamedRow streamed_gray_to_studio;

  // Components of n interleaved pixels to planes and back, for [bytes of a sample - 1][channels -
  // 2]. A null plane is skipped.
  void (*split[2][3])(uint8_t* const* planes, const uint8_t* src, size_t n);
  void (*join[2][3])(uint8_t* dst, const uint8_t* const* planes, size_t n);
  // The same as a StreamedRowKernel, of planes that are all there; what is written begins with
  // lines.
  size_t (*streamed_split[2][3])(uint8_t* const* planes, const uint8_t* src, size_t n);
  size_t (*streamed_join[2][3])(uint8_t* dst, const uint8_t* const* planes, size_t n);

  // 12- and 10-bit packings to words: shifted up by RowArgs::shift, then of its byte order.
  Row unpack[6];
  StreamedRow streamed_unpack[6];
  // Words V of RowArgs::big_endian to min(255, V >> shift), RowArgs::shift at most 8; dst may
  // equal a.
  Row words_to_bytes;
  StreamedRow streamed_words_to_bytes;

  // Each of `rows` rows of n pixels in reverse order, by the bytes of a pixel. dst equal to src, or
  // no overlap.
  void (*reverse[kMaxPixelBytes + 1])(uint8_t* dst, const uint8_t* src, size_t n, size_t rows);
  // As a StreamedRowKernel, of the n pixels that end at src_end, the last one first. Null where a
  // level has no kernel that fills vectors with whole pixels.
  size_t (*streamed_reverse[kMaxPixelBytes + 1])(uint8_t* dst, const uint8_t* src_end, size_t n);
  Transposition transpose[kMaxPixelBytes + 1];  // by the bytes of a pixel

  // Copies rows past the caches, as far as whole lines of a cache allow, and prefetches `next`.
  void (*stream_rows)(uint8_t* dst, ptrdiff_t dst_stride, const ByteRows& src,
                      const ByteRows& next);

  // n pixels of rounded means over `factor_y` rows that lie src_row apart and over neighbours, for
  // [bytes of a sample - 1][channels - 1][log2 of how many neighbours]; n is at least
  // kBlockSamples. Null where such means are made of sums in memory, by the functions below.
  void (*bin[2][kMaxChannels][5])(uint8_t* dst, const uint8_t* src, size_t src_row, size_t n,
                                  uint32_t factor_y);

  // sums[i] = or += row[i], for n samples of bytes or of words; `pairs`: row[2 i] + row[2 i + 1].
  // `sums` has room for kBlockSamples more, here and below.
  void (*add8)(uint16_t* sums, const uint8_t* row, size_t n, bool first);
  void (*add16)(uint32_t* sums, const uint8_t* row, size_t n, bool first);
  void (*add8_pairs)(uint16_t* sums, const uint8_t* row, size_t n, bool first);
  void (*add16_pairs)(uint32_t* sums, const uint8_t* row, size_t n, bool first);
  // sums[i] += more[i] for n sums; `more` may lie in `sums`, further on.
  void (*add_sums16)(uint16_t* sums, const uint16_t* more, size_t n);
  void (*add_sums32)(uint32_t* sums, const uint32_t* more, size_t n);
  // sums[i] = sums[2 i] + sums[2 i + 1] for n sums, those below 2^15 and 2^31.
  void (*halve16)(uint16_t* sums, size_t n);
  void (*halve32)(uint32_t* sums, size_t n);
  // dst[i] = (sums[i] + count / 2) / count, count a product of two numbers up to 16.
  void (*divide8)(uint8_t* dst, const uint16_t* sums, size_t n, uint32_t count);
  void (*divide16)(uint8_t* dst, const uint32_t* sums, size_t n, uint32_t count);

  // dst[i] = a[i] + (((b[i] - a[i]) f + 0x4000) >> 15), f below 2^15, for n samples; f differs from
  // sample to sample or not. a, b and f may be read on for kBlockSamples.
  void (*mix8)(uint8_t* dst, const uint8_t* a, const uint8_t* b, const uint16_t* f, size_t n);
  void (*mix16)(uint8_t* dst, const uint8_t* a, const uint8_t* b, const uint16_t* f, size_t n);
  void (*mix8_evenly)(uint8_t* dst, const uint8_t* a, const uint8_t* b, uint16_t f, size_t n);
  void (*mix16_evenly)(uint8_t* dst, const uint8_t* a, const uint8_t* b, uint16_t f, size_t n);

  // What follows is for levels that pick bytes by an index, and null for others, which gather
  // pixels one by one.
  //
  // dst[i] = src[base[i / pick_span] + index[i]], for n bytes, index[i] below 2 * pick_span. `base`
  // and `index` have values for whole kBlockSamples bytes, and src can be read from each base on
  // for 2 * pick_span bytes. `ahead` is from what is read to what is prefetched, 0 for nothing,
  // here and below.
  void (*pick)(uint8_t* dst, const uint8_t* src, const uint32_t* base, const uint8_t* index,
               size_t n, ptrdiff_t ahead);
  size_t pick_span;
  // Mixes what is picked from src, by two bytes of index for each byte of the result: where the
  // bytes of a sample of a are, then where those of b; `apart`: kPickNothing for b, which is picked
  // like a from a pixel further on. There is a base for every pick_span bytes of index, and
  // src can be read from there on for pick_span bytes and a pixel. Of words (the second of each
  // two) f is pairs of f - 2^15, -f. base, index and f have values for kBlockSamples more.
  using PickingMix = void(uint8_t* dst, const uint8_t* src, const uint32_t* base,
                          const uint8_t* index, const uint16_t* f, size_t pixel_bytes, size_t n,
                          ptrdiff_t ahead);
  PickingMix *mix_pairs[2], *mix_apart[2];
  // n pixels of a row of src_bytes, those at `position`, `position` + step ... in 16.16, all of
  // them in the row: the one that begins there, or that mixed with the next one. False, with
  // nothing written, where steps are too long.
  using ResampledSteps = bool(uint8_t* dst, size_t n, const uint8_t* src, size_t src_bytes,
                              uint64_t position, uint32_t step);
  ResampledSteps* pick_in_steps[2 * kMaxChannels + 1];  // by the bytes of a pixel
  ResampledSteps* mix_in_steps[2][kMaxChannels];        // [bytes of a sample - 1][channels - 1]
};

}  // namespace lum

#endif
