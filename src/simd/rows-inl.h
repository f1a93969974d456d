// SPDX-License-Identifier: MIT
// The row kernel: a source's blocks into a sink, with the tail of the row. A source has
//   kGroupPixels, kGroupBytes  bytes of a row, as in kSources
//   kRows                      1 or 2 rows read
//   kPadded                    true when a row may be read on beyond its end
//   kEdge                      true when pixel x also needs sample x + 1
//   block(a, b)                the kLanes pixels whose first bytes are at a and b
//   last_block(a, b)           with kEdge: the same at the end of a row, nothing read beyond it
//   load_block(a, b), pixels() what block(a, b) is in two steps, if kCut is behind_load
namespace lum {
namespace LUM_LEVEL {
namespace {

template <class Source>
constexpr size_t source_bytes(size_t pixels) {
  return pixels / Source::kGroupPixels * Source::kGroupBytes;
}

// How far beyond byte `at` of a row to prefetch, where `rows` rows are read side by side: what is
// read after a row's end is behind the last one's.
LUM_INLINE ptrdiff_t ahead_in_rows(size_t at, size_t row_bytes, size_t rows, ptrdiff_t stride) {
  const ptrdiff_t skipped = static_cast<ptrdiff_t>(rows - 1) * stride;
  return at + kPrefetchDistance < row_bytes ? kPrefetchDistance : kPrefetchDistance + skipped;
}

template <class Source, class Sink, class To>
LUM_INLINE void convert_last(const Source& source, To dst, const uint8_t* a, const uint8_t* b) {
  if constexpr (Source::kEdge) {
    Sink::store_block(dst, source.last_block(a, b));
  } else {
    Sink::store_block(dst, source.block(a, b));
  }
}

// ---- A few bytes, inline: a call takes longer than the copy of as few as small frames have.
// By moves of a Word that may overlap, n from one to two of them.
template <class Word>
LUM_INLINE void copy_two(uint8_t* dst, const uint8_t* src, size_t n) {
  const Word first = load<Word>(src), last = load<Word>(src + n - sizeof(Word));
  memcpy(dst, &first, sizeof first);
  memcpy(dst + n - sizeof last, &last, sizeof last);
}
// n is below `most`, which spares the compiler what cannot be.
template <size_t most>
LUM_INLINE void copy_few(uint8_t* dst, const uint8_t* src, size_t n) {
  if constexpr (most > 16) {
    if (n > 16) {
      memcpy(dst, src, n);
      return;
    }
  }
  if constexpr (most > 8) {
    if (n >= 8) return copy_two<uint64_t>(dst, src, n);
  }
  if (n >= 4) return copy_two<uint32_t>(dst, src, n);
  if (n >= 2) return copy_two<uint16_t>(dst, src, n);
  if (n == 1) *dst = *src;
}
// Up to 8 bytes as a number, the first one lowest.
LUM_INLINE uint64_t load_few(const uint8_t* p, size_t n) {
  if (n == 8) return load<uint64_t>(p);
  if (n >= 4) {
    const uint64_t last = load<uint32_t>(p + n - 4);
    return load<uint32_t>(p) | last << (8 * (n - 4));
  }
  if (n >= 2) {
    const uint64_t last = load<uint16_t>(p + n - 2);
    return load<uint16_t>(p) | last << (8 * (n - 2));
  }
  return n == 1 ? *p : 0;
}

// A row of n bytes with zeros behind, up to `room`, which is whole vectors. With `edge`, the sample
// beyond the row repeats the last but one. What fits a number is stored as one vector: loads that
// follow would have to wait for smaller stores.
template <bool edge, size_t sample_bytes, size_t room>
LUM_INLINE void load_row(uint8_t (&in)[room], const uint8_t* row, size_t n) {
  const U8 zero = in_register(U8{});  // g++ would fill by a string instruction, slow to start
  for (size_t i = 0; i < room; i += kLanes) store(in + i, zero);
  if (n + (edge ? sample_bytes : 0) <= 8) {
    uint64_t v = load_few(row, n);
    if constexpr (edge) {
      const uint64_t sample = v >> (8 * (n - 2 * sample_bytes)) & ((1u << (8 * sample_bytes)) - 1);
      v |= sample << (8 * n);
    }
    U64 first = {};
    first[0] = v;
    store(in, first);
    return;
  }
  copy_few<room>(in, row, n);
  if (edge) memcpy(in + n, in + n - 2 * sample_bytes, sample_bytes);
}

// Whether pixels are also made of the samples beside them, in their row and in those above and
// below it; beyond the sides of a frame samples are mirrored. Such a source has
//   side_block(a, begins, ends)  a block that begins or ends with the frame's rows
template <class Source>
constexpr bool kMirrors = false;

// Few samples of the rows that a source of mirrored ones needs, with those beside them. Vectors
// read two columns beyond, of which only the next one reaches a pixel.
class FewMirrored {
 public:
  FewMirrored(const RowArgs& args, const uint8_t* a, size_t n) {
    for (size_t i = 0; i < sizeof bytes_; i += kLanes) store(bytes_ + i, U8{});
    copy(0, a + args.above, n, args);
    copy(1, a, n, args);
    copy(2, a + args.below, n, args);
  }
  const uint8_t* row() const { return bytes_ + kPitch + kBefore; }
  static RowArgs args_of_row(RowArgs args) {
    args.above = -static_cast<ptrdiff_t>(kPitch);
    args.below = kPitch;
    return args;
  }

 private:
  static constexpr size_t kBefore = kLanes, kPitch = 3 * kLanes;

  void copy(size_t index, const uint8_t* from, size_t n, const RowArgs& args) {
    uint8_t* const to = bytes_ + index * kPitch + kBefore;
    const size_t before = args.begins != 0 ? 0 : 1, behind = args.ends != 0 ? 0 : 1;
    copy_few<kLanes + 2>(to - before, from - before, before + n + behind);
    if (before == 0) to[-1] = to[1];
    if (behind == 0) to[n] = to[n - 2];
  }

  alignas(64) uint8_t bytes_[3 * kPitch];
};

// Whether a source does more beside its pixels, which has to be done on its own for few of them:
//   beside_few(args, a, n)  does
//   Pixels                  the source of the pixels alone
template <class Source>
constexpr bool kHasBeside = false;

// Fewer pixels than a block: through a block of their own on the stack. It has a source of its own:
// were it given the row's, each store of the row's loop might change that one.
template <class Source, class Sink>
__attribute__((noinline)) void few_pixels(const RowArgs& args, uint8_t* dst, const uint8_t* a,
                                          const uint8_t* b, size_t n) {
  const Source source(args);
  constexpr size_t kBlockBytes = source_bytes<Source>(kLanes);
  constexpr size_t kSampleBytes = Source::kGroupBytes / Source::kGroupPixels;
  alignas(64) uint8_t out[kLanes * Sink::kPixelBytes];
  if (Sink::kKeeps) copy_few<sizeof out>(out, dst, n * Sink::kPixelBytes);
  if constexpr (kMirrors<Source>) {
    const FewMirrored few(args, a, n);
    Sink::store_block(out, Source(few.args_of_row(args)).block(few.row(), nullptr));
  } else if constexpr (Source::kPadded) {
    Sink::store_block(out, source.block(a, b));
  } else {
    constexpr size_t kRoom = (kBlockBytes + 2 + kLanes - 1) / kLanes * kLanes;
    alignas(64) uint8_t in[2][kRoom];
    const size_t bytes = source_bytes<Source>(n);
    load_row<Source::kEdge, kSampleBytes>(in[0], a, bytes);
    if (Source::kRows == 2) load_row<Source::kEdge, kSampleBytes>(in[1], b, bytes);
    convert_last<Source, Sink>(source, out, in[0], in[Source::kRows - 1]);
  }
  copy_few<sizeof out>(dst, out, n * Sink::kPixelBytes);
}
template <class Source, class Sink>
LUM_INLINE void convert_few(const RowArgs& args, uint8_t* dst, const uint8_t* a, const uint8_t* b,
                            size_t n) {
  if constexpr (kHasBeside<Source>) {
    Source::beside_few(args, a, n);
    few_pixels<typename Source::Pixels, Sink>(args, dst, a, b, n);
  } else {
    few_pixels<Source, Sink>(args, dst, a, b, n);
  }
}

// Whether a destination that keeps bytes is prefetched beside the source. Where kLoadsRunAhead says
// so, only one of them is: of frames that caches hold the source, else the destination, of which
// every line is moved twice.
template <class Source>
constexpr bool kPrefetchesKept = true;

LUM_INLINE void prefetch_write(PastCache, ptrdiff_t) {}

// Copies of how far ahead is prefetched, which a store cannot change.
LUM_INLINE RowArgs how_far_ahead(const RowArgs& args) {
  RowArgs ahead;
  ahead.ahead_of_a = args.ahead_of_a;
  ahead.ahead_of_b = args.ahead_of_b;
  ahead.write_ahead = args.write_ahead;
  ahead.beyond_cache = args.beyond_cache;
  return ahead;
}
template <class Source, class Sink>
constexpr bool kPrefetchesBoth = !Sink::kKeeps || kPrefetchesKept<Source>;

// Of `count` blocks.
template <class Source, class Sink, size_t count = 1>
LUM_INLINE void prefetch_source(const uint8_t* a, const uint8_t* b, const RowArgs& ahead) {
  if (!kPrefetchesBoth<Source, Sink> && ahead.beyond_cache != 0) return;
  for (size_t line = 0; line < count * source_bytes<Source>(kLanes); line += 64) {
    prefetch_read(a + line, ahead.ahead_of_a);
    if (Source::kRows == 2) prefetch_read(b + line, ahead.ahead_of_b);
  }
}
template <class Source, class Sink, size_t count = 1, class To>
LUM_INLINE void prefetch_destination(To dst, const RowArgs& ahead) {
  if (!kPrefetchesBoth<Source, Sink> && ahead.beyond_cache == 0) return;
  for (size_t line = 0; line < count * kLanes * Sink::kPixelBytes; line += 64) {
    prefetch_write(dst + line, ahead.write_ahead);
  }
}

// Where blocks are cut in two. The operations of a block wait for one another, and with a source
// that takes many a processor does not see far enough ahead to find others meanwhile: so the first
// part of the next block is done beside the second part of this one.
enum class Cut { none, behind_load, behind_block };
template <class Source>
constexpr Cut kCut = Cut::none;

template <class Source>
LUM_INLINE auto begin_block(const Source& source, const uint8_t* a, const uint8_t* b) {
  if constexpr (kCut<Source> == Cut::behind_load) {
    return source.load_block(a, b);
  } else {
    return source.block(a, b);
  }
}
template <class Source, class Sink, class To, class Begun>
LUM_INLINE void finish_block(const Source& source, To dst, const Begun& begun) {
  if constexpr (kCut<Source> == Cut::behind_load) {
    Sink::store_block(dst, source.pixels(begun));
  } else {
    Sink::store_block(dst, begun);
  }
}

// Blocks from `from` up to `end`: finish(to, begin(from, to)) of each. What is prefetched goes
// first, in begin(): between loads and stores it would be too late for destinations that keep
// bytes.
template <class Source, class Sink, class To, class Begin, class Finish>
LUM_INLINE void each_block(To to, const uint8_t* from, const uint8_t* end, const Begin& begin,
                           const Finish& finish) {
  constexpr size_t kIn = source_bytes<Source>(kLanes);
  constexpr size_t kOut = size_t{kLanes} * Sink::kPixelBytes;
  if constexpr (kCut<Source> == Cut::none) {
    for (; from != end; from += kIn, to = to + kOut) finish(to, begin(from, to));
  } else if (from != end) {
    auto begun = begin(from, to);
    for (const uint8_t* const last = end - kIn; from != last; to = to + kOut) {
      from += kIn;
      const auto next = begin(from, to + kOut);
      finish(to, begun);
      begun = next;
    }
    finish(to, begun);
  }
}

// The same of the blocks of one row; b is `beside` bytes from a.
template <class Source, class Sink, class To>
LUM_INLINE void blocks_of_row(const Source& source, To to, const uint8_t* a, const uint8_t* end,
                              ptrdiff_t beside, const RowArgs& ahead) {
  each_block<Source, Sink>(
      to, a, end,
      [&](const uint8_t* from, To at) {
        const uint8_t* const second = Source::kRows == 2 ? from + beside : nullptr;
        prefetch_source<Source, Sink>(from, second, ahead);
        prefetch_destination<Source, Sink>(at, ahead);
        return begin_block(source, from, second);
      },
      [&](To at, const auto& begun) { finish_block<Source, Sink>(source, at, begun); });
}

// What is left of a row of n pixels, kLanes or more, when the blocks of the first x are done.
// in_place: dst may be a, so that no pixel may be converted twice.
template <class Source, class Sink, bool in_place>
LUM_INLINE void rest_of_row(const Source& source, uint8_t* dst, const uint8_t* a, const uint8_t* b,
                            size_t x, size_t n, const RowArgs& args) {
  const size_t rest = n - x;
  if (rest == 0) return;
  // An odd row of a mosaic cannot go back to where its last kLanes pixels begin: that is a column
  // of the other colour. Two pixels back are enough for the edge rule.
  const bool odd = Source::kEdge && n % 2 != 0;
  const bool few = in_place || odd;
  const size_t begin = few ? x - (odd && rest == 1 ? 2 : 0) : n - kLanes;
  dst += begin * Sink::kPixelBytes;
  a += source_bytes<Source>(begin);
  if (Source::kRows == 2) b += source_bytes<Source>(begin);
  if (few) {
    convert_few<Source, Sink>(args, dst, a, b, n - begin);
  } else {
    convert_last<Source, Sink>(source, dst, a, b);  // some of the pixels for the second time
  }
}

// The pixels that are whole blocks of a row with something behind them, if the source needs that.
template <class Source>
constexpr size_t whole_blocks(size_t n) {
  return (n - (Source::kEdge ? 1 : 0)) / kLanes * kLanes;
}

// Past the cache: rows of whole blocks, of which the last one may need its own rule.
template <class Source, class Sink, bool in_place>
LUM_INLINE void rest_of_row(const Source& source, PastCache dst, const uint8_t* a, const uint8_t* b,
                            size_t x, size_t n, const RowArgs&) {
  if (x == n) return;
  const uint8_t* const second = Source::kRows == 2 ? b + source_bytes<Source>(x) : nullptr;
  convert_last<Source, Sink>(source, dst + x * Sink::kPixelBytes, a + source_bytes<Source>(x),
                             second);
}

// A row, kLanes pixels or more, of a source of mirrored samples.
template <class Source, class Sink, class To>
LUM_INLINE void row_with_sides(const Source& source, To dst, const uint8_t* a, size_t n,
                               const RowArgs& args) {
  static_assert(source_bytes<Source>(kLanes) == kLanes, "a byte a pixel");
  const bool ends = args.ends != 0;
  const size_t last = n - kLanes;
  size_t x = 0;
  if (args.begins != 0) {
    Sink::store_block(dst, source.side_block(a, true, ends && last == 0));
    x = kLanes;
  }
  if (const size_t end = ends ? last : last + 1; x < end) {
    const size_t behind = x + (end - x + kLanes - 1) / kLanes * kLanes;
    blocks_of_row<Source, Sink>(source, dst + x * Sink::kPixelBytes, a + x, a + behind, 0,
                                how_far_ahead(args));
    x = behind;
  }
  if (x < n) {  // some of the pixels for the second time
    Sink::store_block(dst + last * Sink::kPixelBytes, source.side_block(a + last, false, ends));
  }
}

// Whether a source takes so few instructions that the loop counts, which has those of prefetching.
// They are for whole lines: short vectors make several blocks between them. Without shuffles of
// bytes a block takes too many instructions for that.
template <class Source>
constexpr bool kFewInstructions = false;
template <class Source>
constexpr size_t kBlocksAtOnce = (kFewInstructions<Source> && kShufflesBytes && kLanes < 32)
                                     ? 64 / kLanes
                                     : 1;

template <class Source, class Sink, bool in_place, class To>
LUM_INLINE void one_row(const Source& source, To dst, const uint8_t* a, const uint8_t* b, size_t n,
                        const RowArgs& args) {
  constexpr size_t kIn = source_bytes<Source>(kLanes);
  constexpr size_t kOut = size_t{kLanes} * Sink::kPixelBytes;
  constexpr size_t kBlocks = kBlocksAtOnce<Source>;
  const RowArgs ahead = how_far_ahead(args);
  // One pointer walks for both rows: few instructions are what counts in a short loop.
  const ptrdiff_t beside = Source::kRows == 2 ? distance(a, b) : 0;
  const size_t x = whole_blocks<Source>(n);
  const uint8_t* const end = a + source_bytes<Source>(x);
  const uint8_t* from = a;
  To to = dst;
  if constexpr (kBlocks > 1) {
    const uint8_t* const most = end - x / kLanes % kBlocks * kIn;
    for (; from != most; from += kBlocks * kIn, to = to + kBlocks * kOut) {
      prefetch_source<Source, Sink, kBlocks>(from, from + beside, ahead);
      prefetch_destination<Source, Sink, kBlocks>(to, ahead);
      for (size_t i = 0; i < kBlocks; ++i) {
        const uint8_t* const at = from + i * kIn;
        Sink::store_block(to + i * kOut,
                          source.block(at, Source::kRows == 2 ? at + beside : nullptr));
      }
    }
  }
  blocks_of_row<Source, Sink>(source, to, from, end, beside, ahead);
  rest_of_row<Source, Sink, in_place>(source, dst, a, b, x, n, args);
}

// Whether two rows of a frame are taken together, as what a source row that both are made of is
// loaded and sorted for serves both: any number of rows, whose a and b are the shared one by turns,
// or two rows that share b.
enum class Pairs { none, by_turns, of_one_b };
template <class Source>
constexpr Pairs kPairs = Pairs::none;

// Two rows of a frame from the source row `shared`, which is b of both or a of both, and one more
// each. All are prefetched as far ahead as a.
template <class Source, class Sink, bool shares_b, class To>
LUM_INLINE void two_rows(const Source& source, To dst, const uint8_t* shared, ptrdiff_t to_first,
                         ptrdiff_t to_second, size_t n, const RowArgs& args) {
  constexpr size_t kIn = source_bytes<Source>(kLanes);
  constexpr size_t kOut = size_t{kLanes} * Sink::kPixelBytes;
  const size_t out_row = n * Sink::kPixelBytes;
  const ptrdiff_t ahead_of_a = args.ahead_of_a, write_ahead = args.write_ahead;
  const size_t x = whole_blocks<Source>(n);
  struct Begun {
    decltype(source.block(shared, shared)) first, second;
  };
  each_block<Source, Sink>(
      dst, shared, shared + source_bytes<Source>(x),
      [&](const uint8_t* from, To to) -> Begun {
        const uint8_t *const first = from + to_first, *const second = from + to_second;
        for (size_t line = 0; line < kIn; line += 64) {
          prefetch_read(from + line, ahead_of_a);
          prefetch_read(second + line, ahead_of_a);
        }
        if (write_ahead != 0) {
          for (size_t line = 0; line < kOut; line += 64) {
            prefetch_write(to + line, write_ahead);
            prefetch_write(to + out_row + line, write_ahead);
          }
        }
        return {shares_b ? source.block(first, from) : source.block(from, first),
                shares_b ? source.block(second, from) : source.block(from, second)};
      },
      [&](To to, const Begun& begun) {
        Sink::store_block(to, begun.first);
        Sink::store_block(to + out_row, begun.second);
      });
  const auto rest = [&](To to, const uint8_t* other) {
    rest_of_row<Source, Sink, false>(source, to, shares_b ? other : shared,
                                     shares_b ? shared : other, x, n, args);
  };
  rest(dst, shared + to_first);
  rest(dst + out_row, shared + to_second);
}

// The source rows of the next row of a frame: of a mosaic the upper one goes to below the lower
// one.
template <class Source>
LUM_INLINE void to_next_row(const uint8_t*& a, const uint8_t*& b, size_t n) {
  if constexpr (kPairs<Source> == Pairs::of_one_b) {
    a += source_bytes<Source>(n);
  } else if (Source::kRows == 2) {
    (a < b ? a : b) += 2 * source_bytes<Source>(n);
  }
}

// Rows of a frame, each kLanes pixels or more. in_place: dst may be a.
template <class Source, class Sink, bool in_place, class To>
LUM_INLINE void rows_of_frame(To dst, const uint8_t* a, const uint8_t* b, size_t n,
                              const RowArgs& args) {
  const Source source(args);
  const size_t in_row = source_bytes<Source>(n), out_row = n * Sink::kPixelBytes;
  size_t rows = Source::kRows == 2 ? args.rows : 1;
  if constexpr (kPairs<Source> == Pairs::of_one_b) {
    if (rows == 2) {
      const ptrdiff_t to_a = distance(b, a);
      two_rows<Source, Sink, true>(source, dst, b, to_a, to_a + static_cast<ptrdiff_t>(in_row), n,
                                   args);
      return;
    }
  } else if constexpr (kPairs<Source> == Pairs::by_turns) {
    const ptrdiff_t row = static_cast<ptrdiff_t>(in_row);
    for (; rows >= 2; rows -= 2, dst = dst + 2 * out_row, a += 2 * in_row, b += 2 * in_row) {
      if (a < b) {
        two_rows<Source, Sink, true>(source, dst, b, -row, row, n, args);
      } else {
        two_rows<Source, Sink, false>(source, dst, a, -row, row, n, args);
      }
    }
  }
  for (; rows > 0; --rows, dst = dst + out_row) {
    if constexpr (kMirrors<Source>) {
      row_with_sides<Source, Sink>(source, dst, a, n, args);
    } else {
      one_row<Source, Sink, in_place>(source, dst, a, b, n, args);
    }
    to_next_row<Source>(a, b, n);
  }
}

template <class Source, class Sink, bool in_place = false>
void row(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n, const RowArgs& args) {
  if (n >= kLanes) {
    rows_of_frame<Source, Sink, in_place>(dst, a, b, n, args);
    return;
  }
  size_t rows = Source::kRows == 2 ? args.rows : 1;
  for (; n > 0 && rows > 0; --rows, dst += n * Sink::kPixelBytes) {
    convert_few<Source, Sink>(args, dst, a, b, n);
    to_next_row<Source>(a, b, n);
  }
}

// How many of n pixels are streamed: whole lines, and either all pixels or so few that the others
// are a block. A line that is streamed in part would be fetched after all.
constexpr size_t streamed_pixels(size_t n) {
  static_assert(kStreamedGroup % kLanes == 0, "whole blocks");
  if (n % kStreamedGroup == 0) return n;
  return n < kLanes ? 0 : (n - kLanes) / kStreamedGroup * kStreamedGroup;
}

// A row past the cache, as many pixels of it as it returns. noinline: what the loop needs stays in
// registers as long as there is one loop only.
template <class Source, class Sink>
__attribute__((noinline)) size_t one_streamed_row(uint8_t* dst, const uint8_t* a, const uint8_t* b,
                                                  size_t n, const RowArgs& args) {
  const Source source(args);
  const size_t count = streamed_pixels(n);
  if constexpr (kMirrors<Source>) {
    if (count == 0) return 0;
    RowArgs args_of_row = args;
    if (count < n) args_of_row.ends = 0;
    row_with_sides<Source, Sink>(source, PastCache{dst}, a, count, args_of_row);
    return count;
  }
  const size_t last = Source::kEdge && count == n && n > 0 ? n - kLanes : count;
  const size_t bytes = source_bytes<Source>(last);
  const ptrdiff_t beside = Source::kRows == 2 ? distance(a, b) : 0;
  blocks_of_row<Source, Sink>(source, PastCache{dst}, a, a + bytes, beside, how_far_ahead(args));
  if (last < count) {
    convert_last<Source, Sink>(source, PastCache{dst} + last * Sink::kPixelBytes, a + bytes,
                               Source::kRows == 2 ? b + bytes : nullptr);
  }
  return count;
}

template <class Source, class Sink>
size_t streamed_row(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n,
                    const RowArgs& args) {
  // By turns only where a vector is a line: see PastCache.
  if constexpr (kPairs<Source> == Pairs::by_turns && kLanes == kCacheLine) {
    if (args.rows > 1) {
      rows_of_frame<Source, Sink, false>(PastCache{dst}, a, b, n, args);
      return n;
    }
  }
  for (size_t rows = Source::kRows == 2 ? args.rows : 1; rows > 1; --rows) {
    one_streamed_row<Source, Sink>(dst, a, b, n, args);
    dst += n * Sink::kPixelBytes;
    to_next_row<Source>(a, b, n);
  }
  return one_streamed_row<Source, Sink>(dst, a, b, n, args);
}

inline void stream(uint8_t* dst, const uint8_t* src, size_t bytes) {
  const size_t misaligned = reinterpret_cast<uintptr_t>(dst) % kCacheLine;
  const size_t head = misaligned == 0 ? 0 : kCacheLine - misaligned;
  if (head >= bytes) {
    memcpy(dst, src, bytes);
    return;
  }
  memcpy(dst, src, head);
  size_t i = head;
  for (; i + kCacheLine <= bytes; i += kCacheLine) {
    for (size_t j = 0; j < kCacheLine; j += kLanes)
      stream_vector(dst + i + j, load<U8>(src + i + j));
  }
  memcpy(dst + i, src + i, bytes - i);
}

inline void exchange(uint8_t* a, uint8_t* b, size_t bytes, ptrdiff_t ahead) {
  size_t i = 0;
  const auto block = [&] {
    const U8 from_a = load<U8>(a + i), from_b = load<U8>(b + i);
    store(a + i, from_b);
    store(b + i, from_a);
  };
  if (ahead == 0) {
    for (; i + kLanes <= bytes; i += kLanes) block();
  } else {
    // What is so far ahead of b is some rows on, that is before it: `passed` or one more.
    const ptrdiff_t size = static_cast<ptrdiff_t>(bytes == 0 ? 1 : bytes);
    const ptrdiff_t passed = ahead / size, end = (passed + 1) * size;
    for (; i + kLanes <= bytes; i += kLanes) {
      const ptrdiff_t next = static_cast<ptrdiff_t>(i) + ahead;
      prefetch_write(a + i, ahead);
      prefetch_write(b, next - 2 * size * (next < end ? passed : passed + 1));
      block();
    }
  }
  if (i == bytes) return;
  uint8_t rest[kLanes];
  memcpy(rest, a + i, bytes - i);
  memcpy(a + i, b + i, bytes - i);
  memcpy(b + i, rest, bytes - i);
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
