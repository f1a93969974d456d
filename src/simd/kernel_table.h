// SPDX-License-Identifier: MIT
// The table of row kernels: sources x destinations, one table for each instruction-set level.
#ifndef LUM_SIMD_KERNEL_TABLE_H
#define LUM_SIMD_KERNEL_TABLE_H

#include <stddef.h>
#include <stdint.h>

#include "simd/direct_kernels.h"

namespace lum {

// What a row kernel reads. Every row of the table below, kSources, describes one of them.
enum class Source : unsigned {
  mosaic8,            // two rows of a Bayer mosaic, bytes: a holds the red samples, b the blue ones
  mosaic16,           // the same, 16-bit words in host order
  mono8,              // grey bytes
  mono12_packed,      // two pixels in three bytes; 8-bit sinks do not use the middle one, the low
                      // nibbles
  mono16_tinted,      // big-endian words; the two bits below the high byte tint red and blue
  mono16_second,      // words whose second byte is grey
  mono16,             // words of either byte order, shifted up by RowArgs::shift
  rgb24,              // R, G, B in memory
  bgr24,              // B, G, R in memory
  rgba32,             // R, G, B, A in memory
  bgra32,             // B, G, R, A in memory
  cygm,               // two lines of a complementary mosaic: a holds cyan, yellow; b green, magenta
  mosaic8_corrected,  // mosaic8, then RowArgs::matrix
  mosaic8_wrapped,    // the same with sums of 32 bits, of which bits 10 to 25 count
  mosaic12_corrected,  // mosaic16 of 12 bits that come shifted up by two, then RowArgs::matrix
  mosaic16_corrected,  // mosaic16, then RowArgs::matrix
  yuv411,              // U Y0 Y1 V Y2 Y3
  yuv422,              // U Y0 V Y1
  yuv444,              // U Y V
  planes8,             // three rows of bytes, RowArgs::pitch apart: R from a, G, B
  bilinear,       // a row of a Bayer mosaic and its neighbours above and below: see RowArgs::above
  paired_chroma,  // a row of a Bayer mosaic with two samples before and behind, and pair_sums() of
                  // the rows beside it: see RowArgs::above
  bgr24_corrected,  // bgr24, then RowArgs::matrix
  bgr48_corrected,  // B, G, R as words in host order, then RowArgs::matrix
  // Two samples before and behind the row, and rows beside it: see RowArgs::above.
  mosaic8_binned,  // 2 x 2 cells of a Bayer mosaic, two samples a pixel
  cygm_3x3,        // a line of a complementary mosaic and the lines above and below
  cygm_3x3_luma,   // the same, its luminance
  cygm_binned,     // blocks of two lines and columns, two samples a pixel
  // Mosaics, while a row of deep samples is reduced to what they read: see RowArgs::deep.
  mosaic8_beside_packed12,
  mosaic8_beside_words,
  mosaic16_beside_words,
};
constexpr size_t kSourceCount = 31;

// What a row kernel writes; the values are those of LumSimpleImageFormat.
enum class Sink : unsigned {
  mono8_rec601,
  bgr24,
  bgra32,  // fourth byte not written unless the source has an alpha of its own
  rgb24,
  rgba32,  // likewise
  mono8_rec709,
  uyvy,
  mono16_rec601,
  mono16_rec709,
  bgr48,
  rgb48,
};
constexpr size_t kSinkCount = 11;

// What the conversion of a large frame waits for: the memory; the memory where much is written, in
// pixels of three bytes and more; the same where vectors have 64 lanes; its arithmetic.
enum class Bound : unsigned char { memory, writing, writing_64, arithmetic };

struct SourceTraits {
  const char* name;
  unsigned group_pixels;  // n is a multiple of this ...
  unsigned group_bytes;   // ... and each row of n pixels has n / group_pixels * group_bytes bytes
  unsigned rows;          // 1: only a is read; 2: a and b
  unsigned min_pixels;    // least n
  Bound bound;            // what a large frame waits for
};
constexpr SourceTraits kSources[kSourceCount] = {
    {"mosaic8", 1, 1, 2, 2, Bound::memory},
    {"mosaic16", 1, 2, 2, 2, Bound::memory},
    {"mono8", 1, 1, 1, 1, Bound::memory},
    {"mono12_packed", 2, 3, 1, 2, Bound::memory},
    {"mono16_tinted", 1, 2, 1, 1, Bound::memory},
    {"mono16_second", 1, 2, 1, 1, Bound::memory},
    {"mono16", 1, 2, 1, 1, Bound::memory},
    {"rgb24", 1, 3, 1, 1, Bound::memory},
    {"bgr24", 1, 3, 1, 1, Bound::memory},
    {"rgba32", 1, 4, 1, 1, Bound::memory},
    {"bgra32", 1, 4, 1, 1, Bound::memory},
    {"cygm", 1, 1, 2, 2, Bound::writing_64},
    {"mosaic8_corrected", 1, 1, 2, 2, Bound::writing},
    {"mosaic8_wrapped", 1, 1, 2, 2, Bound::arithmetic},
    {"mosaic12_corrected", 1, 2, 2, 2, Bound::writing_64},
    {"mosaic16_corrected", 1, 2, 2, 2, Bound::writing_64},
    {"yuv411", 4, 6, 1, 4, Bound::memory},
    {"yuv422", 2, 4, 1, 2, Bound::memory},
    {"yuv444", 1, 3, 1, 1, Bound::memory},
    {"planes8", 1, 1, 1, 1, Bound::writing},
    {"bilinear", 2, 2, 1, 2, Bound::writing},
    {"paired_chroma", 2, 2, 1, 2, Bound::writing_64},
    {"bgr24_corrected", 1, 3, 1, 1, Bound::writing},
    {"bgr48_corrected", 1, 6, 1, 1, Bound::writing},
    {"mosaic8_binned", 1, 2, 1, 1, Bound::memory},
    {"cygm_3x3", 2, 2, 1, 2, Bound::arithmetic},
    {"cygm_3x3_luma", 2, 2, 1, 2, Bound::arithmetic},
    {"cygm_binned", 1, 2, 1, 1, Bound::memory},
    {"mosaic8_beside_packed12", 2, 2, 2, 2, Bound::memory},
    {"mosaic8_beside_words", 1, 1, 2, 2, Bound::memory},
    {"mosaic16_beside_words", 1, 2, 2, 2, Bound::memory},
};

// A mosaic, the flat source by which deep samples become its own, and both at once.
struct MosaicBesideDeep {
  Source mosaic, deep, both;
};
constexpr MosaicBesideDeep kMosaicsBesideDeep[] = {
    {Source::mosaic8, Source::mono12_packed, Source::mosaic8_beside_packed12},
    {Source::mosaic8, Source::mono16, Source::mosaic8_beside_words},
    {Source::mosaic16, Source::mono16, Source::mosaic16_beside_words},
};

struct SinkTraits {
  const char* name;
  unsigned pixel_bytes;
  unsigned group_pixels;  // n is a multiple of this
};
constexpr SinkTraits kSinks[kSinkCount] = {
    {"mono8_rec601", 1, 1},  {"bgr24", 3, 1},        {"bgra32", 4, 1}, {"rgb24", 3, 1},
    {"rgba32", 4, 1},        {"mono8_rec709", 1, 1}, {"uyvy", 2, 2},   {"mono16_rec601", 2, 1},
    {"mono16_rec709", 2, 1}, {"bgr48", 6, 1},        {"rgb48", 6, 1},
};

constexpr size_t pixel_bytes(Sink sink) { return kSinks[static_cast<size_t>(sink)].pixel_bytes; }
// Of n pixels, n a multiple of group_pixels.
constexpr size_t row_bytes(Source source, size_t n) {
  const SourceTraits& traits = kSources[static_cast<size_t>(source)];
  return n / traits.group_pixels * traits.group_bytes;
}

// Whether a large frame waits for memory so long that it is written past the cache. A pixel whose
// fourth byte stays as it is leaves no line to be written as a whole. UYVY takes arithmetic unless
// it is made of a mosaic's samples or bytes are only moved.
constexpr bool is_memory_bound(Source source, Sink sink, int lanes = 64) {
  if (sink == Sink::uyvy) {
    return source == Source::mosaic8 || source == Source::mono8 || source == Source::yuv411 ||
           source == Source::yuv444;
  }
  const bool own_alpha = source == Source::rgba32 || source == Source::bgra32;
  if ((sink == Sink::bgra32 || sink == Sink::rgba32) && !own_alpha) return false;
  const Bound bound = kSources[static_cast<size_t>(source)].bound;
  if (bound == Bound::memory) return true;
  const bool writes_much = pixel_bytes(sink) > 2;
  return writes_much && (bound == Bound::writing || (bound == Bound::writing_64 && lanes == 64));
}

// In bytes. Far enough ahead to cover the latency of memory, near enough to stay in the first-level
// cache.
constexpr ptrdiff_t kPrefetchDistance = 2048;
// What reads and writes no more bytes is in the second-level cache or comes from the next by
// itself: there prefetching so far ahead only takes room from what is waited for.
constexpr size_t kPrefetchAbove = 2 << 20;
// A few lines, which bridge the latency of the second-level cache.
constexpr ptrdiff_t kNearPrefetch = 512;

// Bytes from one address to another, of whichever objects.
inline ptrdiff_t distance(const uint8_t* from, const uint8_t* to) {
  return static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(to) -
                                reinterpret_cast<uintptr_t>(from));
}

// mosaic12_corrected and mosaic16_corrected to 8-bit sinks: RowArgs::scale. Samples of the former
// come shifted up, so that bits 16 to 31 of a sum are the colour.
constexpr uint32_t kShift12To8 = 2, kScale12To8 = 14 + kShift12To8, kScale16To8 = 18;

// What a kernel needs to know beyond its rows; each source reads only what its comment names.
struct RowArgs {
  // mosaics: 0 when column 0 of row a is red, 1 when column 1 is.
  // cygm:    0 when column 0 of row b is green, 1 when it is magenta.
  uint32_t column = 0;
  // Packed samples to words, words to bytes: as DirectKernels says.
  // mono16: bits by which a word is shifted up to fill 16 bits; at most 8 to 8-bit sinks, at most
  // 16 to the others. mono12_packed to 16-bit sinks: bits by which the 12 bits are shifted up.
  uint32_t shift = 0;
  // mono16, and where DirectKernels names it: 1 when the first byte of a word is its high byte.
  uint32_t big_endian = 0;
  // The corrected sources: nine coefficients, rows R, G, B, columns R, G, B. Each colour becomes
  // its row's sum >> scale, limited to what the sink holds. The scale of bytes is 10, of
  // words to 8-bit sinks as below. Studio-range YUV: four factors, as DirectKernels says.
  const int32_t* matrix = nullptr;
  uint32_t scale = 0;
  // 1 when a coefficient does not fit 16 bits or a sum may not fit 32.
  uint32_t wide = 0;
  ptrdiff_t pitch = 0;  // planes8: from R to G and from G to B, in bytes; paired_chroma: below
  // bilinear: where the rows above and below lie, in bytes from a; `column` is then the parity of
  // the columns that hold the row's own colour, and own_is_blue tells which that is. paired_chroma:
  // likewise, but above and below are where the sums `beside` of these rows lie, above2 and below2
  // the sums `beyond` of those two away, and pitch is that of PairSums. mosaic8_binned: a is the
  // cells' row with red, whose column is `column`; `above` is where the red row across the cells
  // lies, `below` their row with blue, `below2` the blue row across them. cygm_3x3, cygm_binned:
  // where the lines above, below and two below lie; `matrix` then holds weights of the lines'
  // chroma, rows R, G, B, columns above, here, below, two below.
  ptrdiff_t above = 0, below = 0, above2 = 0, below2 = 0;
  uint32_t own_is_blue = 0;
  // bilinear: whether the row begins and ends with the frame's, beyond which samples are mirrored;
  // else two more of each row are read there.
  uint32_t begins = 1, ends = 1;
  // Two-row sources: as many rows of a frame, one below the other, whose upper and lower source row
  // a and b are by turns. cygm: one or two, from a and from what follows it, both with b.
  size_t rows = 1;
  // Mosaics beside deep samples, of one row at a time: a row of those, with shift and big_endian as
  // mono12_packed and mono16 have them; what row a is for its first pixel, as a may be further on
  // in that; and where the n samples go that the mosaic will read, which are written beside dst.
  const uint8_t *deep = nullptr, *beside_deep = nullptr;
  uint8_t* reduced = nullptr;
  // From what a kernel reads to what it prefetches to be read next; for rows that the library made,
  // part of what the next ones are made of.
  ptrdiff_t ahead_of_a = kPrefetchDistance, ahead_of_b = kPrefetchDistance;
  // From what a kernel writes to what it prefetches to be written next; in a tile, the next row.
  ptrdiff_t write_ahead = kPrefetchDistance;
  uint32_t beyond_cache = 0;  // 1 when is_streamed() says so of the frame: see kPrefetchesKept
};

// Converts n pixels. Reads exactly n pixels of row a (and of row b where the source has two, and of
// the rows that RowArgs tells, unless it says otherwise),
// writes exactly n pixels of dst, or so of each of RowArgs::rows; no pointer needs an alignment. In
// the two-row sources the last pixel has the value of the one before it. dst may equal a only for
// rgb24 -> bgr24, bgr24 -> rgb24 and the corrected B, G, R sources.
using RowKernel = void (*)(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n,
                           const RowArgs& args);

// The same past the cache to a dst that is aligned to kCacheLine, as many pixels as it returns: all
// of them, or a multiple of kStreamedGroup. RowArgs::rows is 1 unless n is such a multiple.
using StreamedRowKernel = size_t (*)(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n,
                                     const RowArgs& args);

// kPaddedBytes: sources of rows that the library made itself read on beyond the last pixel, up to
// this many bytes, twice as many where a pixel has two samples; every other source reads its n
// pixels only.
constexpr size_t kPaddedBytes = 64;

// The steps of the interpolating demosaics. They work on rows of a column tile: samples as bytes,
// everything else as words, those of the even columns and kOddColumns behind them those of the odd
// ones. Every pointer is at the first column that is computed, aligned to 64 bytes: the tile's,
// where that is the whole width of a frame, else kTileMargin columns before it. Words can be read
// and written for kTileSlack beyond either end of a half, bytes for twice as many.
constexpr int kTileMargin = 16;
constexpr int kTileSlack = 32;
constexpr int kMostTileWords = 352;  // of a half
constexpr ptrdiff_t kOddColumns = kTileSlack + kMostTileWords;

// Row y is the one that is written, z[1] and qh[3].
struct DemosaicTile {
  const uint8_t* const* z;   // samples, rows y - 1 .. y + 1
  const int16_t* const* qh;  // differences along the row, rows y - 3 .. y + 3; for lcaa, of which
                             // those of y - 1 .. y + 1 are there
  const int16_t* qv;         // differences down the column, row y
  const int16_t* e;          // direction, row y: 0..-4 << 12, the latter for smooth along the row
  const int16_t* act;        // activity, row y; for lcaav alone
  int16_t* work[5];          // rows for the kernel's own use, where registers are few
  uint32_t native;           // parity of the columns of row y that hold the row's own colour
  size_t words;              // of a half, to compute
  uint8_t* planes[3];        // the row's own colour N, green G, the other colour O
};

// What the samples of a row add to 32 times the colour differences of the rows above and below it
// and of the rows two away: words, one for a pair of pixels, at the bytes that the pair has in a
// row of samples. Here are green minus the colour that those rows have, and `pitch` bytes on green
// minus the colour that they lack.
struct PairSums {
  uint8_t *beside, *beyond;
  ptrdiff_t pitch;
};

struct DemosaicKernels {
  // Of a row's samples, those of the row's own colour in columns of parity `native`; two samples
  // before and behind are read. n is a multiple of 64.
  void (*pair_sums)(const uint8_t* z, uint32_t native, const PairSums& sums, size_t n);
  int step;  // words are computed so many at a time: `words` is a multiple
  // From a row's samples: qh and the sums over three columns of the activity along the row.
  void (*along_row)(const uint8_t* z, int16_t* qh, int16_t* ah3, size_t words);
  // From rows y - 2 .. y + 2: pv and the sums over three columns of the activity down the column.
  void (*down_column)(const uint8_t* const z[5], int16_t* pv, int16_t* av3, size_t words);
  // From rows y - 1 .. y + 1 of pv, ah3, av3: qv and direction of row y; direction_and_activity
  // also stores its activity, for lcaav.
  using Direction = void (*)(const int16_t* const pv[3], const int16_t* const ah3[3],
                             const int16_t* const av3[3], int16_t* qv, int16_t* e, int16_t* act,
                             size_t words);
  Direction direction, direction_and_activity;
  void (*lcaa)(const DemosaicTile& tile);
  void (*lcaav)(const DemosaicTile& tile);
};

struct Kernels {
  RowKernel row[kSourceCount][kSinkCount];  // null where the conversion does not exist or is a copy
  StreamedRowKernel streamed[kSourceCount][kSinkCount];  // null where that does not pay
  // Swaps two disjoint byte ranges, a row of a frame and one below it. Unless `ahead` is 0,
  // prefetches so far ahead: behind a; in b and, beyond its end, in the rows of as many bytes
  // before it.
  void (*exchange)(uint8_t* a, uint8_t* b, size_t bytes, ptrdiff_t ahead);
  // Copies past the cache, in whole lines but for the ends; what was streamed is visible to other
  // processors after end_stream(). Null where there is no such store.
  void (*stream)(uint8_t* dst, const uint8_t* src, size_t bytes);
  void (*end_stream)();
  // Mosaics beside deep samples, to pixels of three bytes and more: the least width from which they
  // are faster even where nothing waits for memory.
  size_t least_beside_deep;
  // From what streamed rows of a flat source or of a mosaic of bytes read to what they prefetch.
  ptrdiff_t streamed_ahead;
  // Conversions that read and write more bytes are streamed; 0: more than kept_in_cache().
  size_t stream_above;

  DemosaicKernels demosaic;
  DirectKernels direct;

  constexpr RowKernel at(Source source, Sink sink) const {
    return row[static_cast<size_t>(source)][static_cast<size_t>(sink)];
  }
};

}  // namespace lum

#endif
