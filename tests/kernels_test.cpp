// SPDX-License-Identifier: MIT
// Every cell of every level's kernel table against the per-pixel reference.
#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <sstream>
#include <tuple>

#include "levels.h"
#include "reference.h"
#include "simd/isa.h"
#include "simd/kernel_table.h"
#include "test_support.h"

namespace lum {
namespace {

using test::Arena;
using test::Random;
using test::TestedLevel;

constexpr size_t kWidest = 2 * 64 + 40;  // twice the lanes of the widest level, and some
constexpr size_t kLarge = 4098;
constexpr ptrdiff_t kMargin = 64;  // bytes around a destination that must not change

bool is_corrected(Source source) {
  return source == Source::mosaic8_corrected || source == Source::mosaic8_wrapped ||
         source == Source::mosaic12_corrected || source == Source::mosaic16_corrected ||
         source == Source::bgr24_corrected || source == Source::bgr48_corrected;
}
bool is_cygm_window(Source source) {
  return source == Source::cygm_3x3 || source == Source::cygm_3x3_luma ||
         source == Source::cygm_binned;
}

// Weights as a frame's lines have them, and the largest there are with all signs.
const int32_t kWindowWeights[3][12] = {
    {6839, -7284, -3197, 0, -3829, -644, 4151, 0, 1768, 22416, -12976, 0},
    {-3642, -10036, -3642, 0, -322, 7980, -322, 0, 11208, -14744, 11208, 0},
    {-12976, 22416, 1768, 0, 1768, -22416, 12976, -11208, -1768, 22416, -27720, 11208}};

// What RowArgs::wide has to say of a matrix at least.
bool needs_wide(const test::Matrix& m, int64_t top_sample) {
  for (size_t row = 0; row < 9; row += 3) {
    int64_t sum = 0;
    for (size_t i = row; i < row + 3; ++i) {
      if (m[i] > INT16_MAX || m[i] < INT16_MIN) return true;
      sum += std::abs(int64_t{m[i]});
    }
    if (sum * top_sample > INT32_MAX) return true;
  }
  return false;
}

// The memory of row a: `bytes` from the lowest address on, the row itself at `row`. Sources of
// three rows lie apart by a pitch, and behind the last of them is what such kernels may read on.
struct RowMemory {
  size_t bytes, row;
};
RowMemory row_memory(Source source, size_t n, uint64_t seed, RowArgs& args) {
  const ptrdiff_t pitch = static_cast<ptrdiff_t>(n + kPaddedBytes + 2 + seed % 7);
  const size_t padded = 2 * static_cast<size_t>(pitch) + n + kPaddedBytes;
  if (source == Source::planes8) {
    args.pitch = pitch;
    return {padded, 0};
  }
  if (source == Source::bilinear) {
    // Three rows of a frame, or parts of them with two samples more. As in the border rows, above
    // and below may be the same.
    const size_t before = args.begins != 0 ? 0 : 2, behind = args.ends != 0 ? 0 : 2;
    const ptrdiff_t apart = static_cast<ptrdiff_t>(before + n + behind);
    args.above = seed % 3 == 0 ? apart : -apart;
    args.below = seed % 3 == 1 ? -apart : apart;
    return {3 * static_cast<size_t>(apart), static_cast<size_t>(apart) + before};
  }
  if (source == Source::paired_chroma) {  // the row, two samples before it, and eight of words
    args.above = seed % 3 == 0 ? -4 * pitch : 4 * pitch;
    args.below = seed % 3 == 1 ? 4 * pitch : -4 * pitch;
    args.above2 = -2 * pitch;
    args.below2 = 2 * pitch;
    args.pitch = pitch;
    return {7 * static_cast<size_t>(pitch) + 2 + padded, 4 * static_cast<size_t>(pitch) + 2};
  }
  if (source == Source::mosaic8_binned || is_cygm_window(source)) {
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(row_bytes(source, n));
    const ptrdiff_t apart = bytes + 2 * static_cast<ptrdiff_t>(kPaddedBytes) + 4;
    args.above = seed % 3 == 0 ? apart : -apart;
    args.below = seed % 3 == 1 ? -apart : apart;
    args.below2 = 2 * apart;
    return {static_cast<size_t>(4 * apart), static_cast<size_t>(apart) + 2};
  }
  return {row_bytes(source, n), 0};
}

// Every value of what a source reads of its arguments.
std::vector<RowArgs> arguments_of(Source source, Sink sink) {
  static const std::vector<test::Matrix> kMatrices = test::matrices();
  const bool deep = reference::is_deep(static_cast<uint32_t>(sink));
  std::vector<RowArgs> out;
  RowArgs args;
  if (source == Source::mono16) {
    for (args.shift = 0; args.shift <= (deep ? 16 : 8); ++args.shift) {
      for (args.big_endian = 0; args.big_endian < 2; ++args.big_endian) out.push_back(args);
    }
  } else if (source == Source::mosaic8_beside_words || source == Source::mosaic16_beside_words) {
    const bool words = source == Source::mosaic16_beside_words;
    for (args.shift = 0; args.shift <= (words ? 16 : 8); args.shift += words ? 2 : 1) {
      for (const uint32_t bits : {0, 1, 2, 3}) {
        args.column = bits & 1;
        args.big_endian = bits >> 1;
        out.push_back(args);
      }
    }
  } else if (source == Source::mono12_packed && deep) {
    for (args.shift = 0; args.shift <= 4; ++args.shift) out.push_back(args);
  } else if (is_corrected(source)) {
    const bool twelve = source == Source::mosaic12_corrected;
    const bool words = source == Source::mosaic16_corrected || source == Source::bgr48_corrected;
    const int64_t top = words ? 65535 : twelve ? 16383 : 255;
    const uint32_t least = twelve           ? kScale12To8
                           : words && !deep ? kScale16To8
                                            : 10,
                   most = deep ? 18 : least;
    for (const test::Matrix& m : kMatrices) {
      args.matrix = m.data();
      for (args.scale = least; args.scale <= most; args.scale += 4) {
        for (args.wide = needs_wide(m, top); args.wide < 2; ++args.wide) {
          for (args.column = 0; args.column < 2; ++args.column) out.push_back(args);
        }
      }
    }
  } else if (source == Source::mosaic8_binned) {
    for (args.column = 0; args.column < 2; ++args.column) out.push_back(args);
  } else if (is_cygm_window(source)) {
    for (const auto& weights : kWindowWeights) {
      args.matrix = weights;
      out.push_back(args);
    }
  } else if (source == Source::bilinear) {
    for (const uint32_t bits : {0, 1, 2, 3, 5, 6, 10, 13}) {
      args.column = bits & 1;
      args.own_is_blue = bits >> 1 & 1;
      args.begins = 1 - (bits >> 2 & 1);
      args.ends = 1 - (bits >> 3);
      out.push_back(args);
    }
  } else if (source == Source::paired_chroma) {
    for (args.own_is_blue = 0; args.own_is_blue < 2; ++args.own_is_blue) {
      for (args.column = 0; args.column < 2; ++args.column) out.push_back(args);
    }
  } else {
    const SourceTraits& traits = kSources[static_cast<size_t>(source)];
    for (args.column = 0; args.column < traits.rows; ++args.column) out.push_back(args);
  }
  return out;
}

class KernelTest : public testing::TestWithParam<std::tuple<TestedLevel, size_t>> {
 protected:
  void SetUp() override {
    table_ = std::get<0>(GetParam()).kernels;
    if (table_ == nullptr) GTEST_SKIP() << "this processor or build has no such level";
  }

  std::string cell_name(Sink sink) const {
    return std::string(kSources[static_cast<size_t>(source())].name) + " to " +
           kSinks[static_cast<size_t>(sink)].name + ", level " + level_name();
  }
  static const char* level_name() { return std::get<0>(GetParam()).name; }
  Source source() const { return static_cast<Source>(std::get<1>(GetParam())); }

  const Kernels* table_ = nullptr;
};

// One conversion: where its rows lie, what is in them, what comes out.
struct Trial {
  size_t n, src_offset, dst_offset;
  bool at_end;
  unsigned fill;
  RowArgs args;
  uint64_t seed;
};

// A kernel that touches an inaccessible page ends the test program: this says which one it was.
char running_trial[512];
void report_fault(int signal_number) {
  const ssize_t written = write(STDERR_FILENO, running_trial, strlen(running_trial));
  (void)written;
  signal(signal_number, SIG_DFL);  // and the access faults again
}

// Makes words of what they may be: 12 bits shifted up by two.
void keep_12_of_14(uint8_t* words, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    words[2 * i] &= 0xFC;
    words[2 * i + 1] &= 0x3F;
  }
}

// Bytes to be written, with some around them that must not change.
class Destination {
 public:
  explicit Destination(size_t size) : arena_(size), expected_(size) {}

  void place(size_t bytes, const Trial& t, Random& random) {
    dst_ = arena_.place(bytes, t.at_end, t.dst_offset);
    from_ = dst_ - std::min(dst_ - arena_.begin(), kMargin);
    to_ = dst_ + bytes + std::min(arena_.end() - (dst_ + bytes), kMargin);
    test::fill(from_, static_cast<size_t>(to_ - from_), 0, random);
    std::copy(from_, to_, expected_.begin());
  }
  uint8_t* bytes() { return dst_; }
  uint8_t* expected() { return &expected_[static_cast<size_t>(dst_ - from_)]; }
  // Empty when all are as expected.
  std::string fault(size_t pixel, size_t n) {
    const auto diff = std::mismatch(from_, to_, expected_.begin());
    if (diff.first == to_) return "";
    const ptrdiff_t bad = diff.first - dst_, p = static_cast<ptrdiff_t>(pixel);
    const ptrdiff_t shown = std::max<ptrdiff_t>(bad / p * p, from_ - dst_);
    const size_t count = static_cast<size_t>(std::min<ptrdiff_t>(4 * p, to_ - dst_ - shown));
    std::ostringstream out;
    out << "first bad byte " << bad << " (pixel " << bad / p << " of " << n << ")\nexpected "
        << test::hex(expected() + shown, count) << "\nactual   " << test::hex(dst_ + shown, count);
    return out.str();
  }

 private:
  Arena arena_;
  reference::Bytes expected_;
  uint8_t *dst_ = nullptr, *from_ = nullptr, *to_ = nullptr;
};

const MosaicBesideDeep* beside_deep(Source source) {
  for (const MosaicBesideDeep& m : kMosaicsBesideDeep) {
    if (m.both == source) return &m;
  }
  return nullptr;
}

class Bench {
 public:
  Bench() : a_(kLarge * 11), b_(kLarge * 6), deep_(kLarge * 2) {}

  // Empty when the kernel wrote what the reference says and nothing else; otherwise what differs.
  std::string run(RowKernel kernel, Source source, Sink sink, Trial t, const char* level) {
    Random random(t.seed);
    const SourceTraits& traits = kSources[static_cast<size_t>(source)];
    const size_t pixel = kSinks[static_cast<size_t>(sink)].pixel_bytes;
    const RowMemory memory = row_memory(source, t.n, t.seed, t.args);
    const size_t bytes = memory.bytes, dst_bytes = t.n * pixel;
    uint8_t* a = a_.place(bytes, t.at_end, t.src_offset);
    uint8_t* b = traits.rows == 2 ? b_.place(bytes, t.at_end, t.src_offset) : nullptr;
    test::fill(a, bytes, t.fill, random);
    if (b != nullptr) test::fill(b, bytes, t.fill, random);
    if (source == Source::mosaic12_corrected) {
      keep_12_of_14(a, t.n);
      keep_12_of_14(b, t.n);
    }
    a += memory.row;

    dst_.place(dst_bytes, t, random);
    const MosaicBesideDeep* const beside = beside_deep(source);
    if (beside != nullptr) place_deep(*beside, a, t, random);
    const Source pixels = beside != nullptr ? beside->mosaic : source;
    if (!reference::row(pixels, sink, dst_.expected(), a, b, t.n, t.args)) {
      return "no such conversion";
    }

    std::ostringstream what;
    what << "seed " << t.seed << " fill " << t.fill << " width " << t.n << " source offset "
         << t.src_offset << " destination offset " << t.dst_offset
         << (t.at_end ? " from the end" : " from the start") << " column " << t.args.column
         << " shift " << t.args.shift << " big_endian " << t.args.big_endian << " scale "
         << t.args.scale << " wide " << t.args.wide;
    snprintf(running_trial, sizeof running_trial,
             "\naccess outside the rows: %s to %s, level %s, %s\n", traits.name,
             kSinks[static_cast<size_t>(sink)].name, level, what.str().c_str());
    kernel(dst_.bytes(), a, b, t.n, t.args);
    std::string fault = dst_.fault(pixel, t.n);
    if (fault.empty() && beside != nullptr) {
      fault = reduced_.fault(1, t.n);
      if (!fault.empty()) fault = "samples that were reduced: " + fault;
    }
    if (fault.empty()) return "";
    if (t.args.matrix != nullptr) {
      what << " matrix";
      for (size_t i = 0; i < 9; ++i) what << ' ' << t.args.matrix[i];
    }
    return what.str() + "\n" + fault;
  }

 private:
  void place_deep(const MosaicBesideDeep& m, const uint8_t* a, Trial& t, Random& random) {
    const size_t bytes = row_bytes(m.deep, t.n);
    uint8_t* const deep = deep_.place(bytes, t.at_end, t.src_offset);
    test::fill(deep, bytes, t.fill, random);
    reduced_.place(row_bytes(m.mosaic, t.n), t, random);
    t.args.deep = deep;
    t.args.beside_deep = a;
    t.args.reduced = reduced_.bytes();
    const bool words = m.mosaic == Source::mosaic16;
    const Sink samples = words ? Sink::mono16_rec601 : Sink::mono8_rec601;
    EXPECT_TRUE(reference::row(m.deep, samples, reduced_.expected(), deep, nullptr, t.n, t.args));
  }

  Arena a_, b_, deep_;
  Destination dst_{kLarge * 6 + 4096}, reduced_{kLarge * 2 + 4096};
};

TEST_P(KernelTest, WritesWhatTheReferenceWrites) {
  signal(SIGSEGV, report_fault);
  Bench bench;
  const SourceTraits& traits = kSources[static_cast<size_t>(source())];
  uint64_t seed = 1;
  for (size_t s = 0; s < kSinkCount; ++s) {
    const Sink sink = static_cast<Sink>(s);
    const RowKernel kernel = table_->at(source(), sink);
    if (kernel == nullptr) continue;
    const size_t step = std::lcm(traits.group_pixels, kSinks[s].group_pixels);
    std::vector<size_t> widths;
    for (size_t n = std::max<size_t>(step, traits.min_pixels); n <= kWidest; n += step) {
      if (!test::quick() || n < 4 * step || n % 7 == 2) widths.push_back(n);
    }
    widths.push_back(kLarge / step * step);
    const std::vector<RowArgs> all_args = arguments_of(source(), sink);
    for (const size_t n : widths) {
      // All of a few arguments; of many (matrices) as many again from width to width.
      for (size_t k = 0; k < std::min<size_t>(all_args.size(), 6); ++k) {
        const RowArgs& args = all_args[all_args.size() <= 6 ? k : seed / 6 % all_args.size()];
        // Flush against either end with contents that change from width to width, then off it.
        for (unsigned variant = 0; variant < 6; ++variant, ++seed) {
          Trial trial{n, 0, 0, variant % 2 == 0, static_cast<unsigned>(seed * 5), args, seed};
          if (variant >= 2) {
            Random random(seed);
            trial.src_offset = random.next() % 70;
            trial.dst_offset = random.next() % 70;
          }
          const std::string fault = bench.run(kernel, source(), sink, trial, level_name());
          if (!fault.empty()) FAIL() << cell_name(sink) << ": " << fault;
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Levels, KernelTest,
                         testing::Combine(testing::ValuesIn(test::tested_levels()),
                                          testing::Range<size_t>(0, kSourceCount)),
                         [](const testing::TestParamInfo<KernelTest::ParamType>& cell) {
                           return std::string(std::get<0>(cell.param).name) + "_" +
                                  kSources[std::get<1>(cell.param)].name;
                         });

class LevelTest : public testing::TestWithParam<TestedLevel> {
 protected:
  void SetUp() override {
    table_ = GetParam().kernels;
    if (table_ == nullptr) GTEST_SKIP() << "this processor or build has no such level";
  }
  const Kernels* table_ = nullptr;
};

// A level that is there serves every cell that the baseline serves, and no other.
TEST_P(LevelTest, HasTheCellsOfTheBaseline) {
  const Kernels* base = kernels_of(Level::base);
  ASSERT_NE(base, nullptr);
  for (size_t i = 0; i < kSourceCount; ++i) {
    for (size_t j = 0; j < kSinkCount; ++j) {
      EXPECT_EQ(table_->row[i][j] == nullptr, base->row[i][j] == nullptr)
          << kSources[i].name << " to " << kSinks[j].name;
    }
  }
}

TEST_P(LevelTest, SwapsThreeByteOrdersInPlace) {
  const Arena arena(kLarge * 3);
  for (const auto& [source, sink] :
       {std::pair(Source::rgb24, Sink::bgr24), std::pair(Source::bgr24, Sink::rgb24)}) {
    for (size_t n = 1; n <= kWidest + 2; ++n) {
      const size_t count = n > kWidest ? kLarge - (n - kWidest) : n;
      uint8_t* row = arena.place(3 * count, n % 2 == 0);
      const reference::Bytes before = test::random_bytes(3 * count, n);
      std::copy(before.begin(), before.end(), row);
      reference::Bytes expected(3 * count);
      reference::row(source, sink, expected.data(), before.data(), nullptr, count, {});
      table_->at(source, sink)(row, row, nullptr, count, {});
      ASSERT_TRUE(std::equal(expected.begin(), expected.end(), row)) << "width " << count;
    }
  }
}

// Frames prove the sums of level base, and that theirs are right; this, that the others make them
// of the samples that are there.
TEST_P(LevelTest, PairSumsReadTwoSamplesBeside) {
  constexpr size_t kMost = 4 * 64, kSums = 4;
  const Arena samples(kMost + 4), sums(kSums * kMost);
  const auto base = kernels_of(Level::base)->demosaic.pair_sums;
  for (size_t n = 64; n <= kMost; n += 64) {
    for (const bool at_end : {false, true}) {
      for (const uint32_t native : {0, 1}) {
        uint8_t* const z = samples.place(n + 4, at_end) + 2;
        uint8_t* const to = sums.place(kSums * n, at_end);
        Random random(n + native);
        test::fill(z - 2, n + 4, 0, random);
        reference::Bytes expected(kSums * n);
        const ptrdiff_t pitch = static_cast<ptrdiff_t>(n);
        base(z, native, {&expected[0], &expected[2 * n], pitch}, n);
        table_->demosaic.pair_sums(z, native, {to, to + 2 * n, pitch}, n);
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), to)) << n << " samples";
      }
    }
  }
}

// Two rows at once are what each of them is alone.
TEST_P(LevelTest, CygmRowsShareALine) {
  const Arena a(2 * kWidest + 4), b(kWidest + 2), dst(8 * kWidest + 16);
  for (size_t n = 2; n <= kWidest + 2; ++n) {
    const bool at_end = n % 4 < 2;
    uint8_t *const cyan = a.place(2 * n, at_end), *const green = b.place(n, at_end);
    Random random(n);
    test::fill(cyan, 2 * n, 0, random);
    test::fill(green, n, 0, random);
    RowArgs args;
    args.column = n / 2 % 2;
    for (size_t s = 0; s < kSinkCount; ++s) {
      const Sink sink = static_cast<Sink>(s);
      const RowKernel kernel = table_->at(Source::cygm, sink);
      if (kernel == nullptr || n % kSinks[s].group_pixels != 0) continue;
      const size_t bytes = n * pixel_bytes(sink);
      uint8_t* const out = dst.place(2 * bytes, at_end);
      std::fill(out, out + 2 * bytes, uint8_t{0xEE});
      reference::Bytes expected(2 * bytes, 0xEE);
      for (size_t row = 0; row < 2; ++row) {
        ASSERT_TRUE(reference::row(Source::cygm, sink, &expected[row * bytes], cyan + row * n,
                                   green, n, args));
      }
      args.rows = 2;
      kernel(out, cyan, green, n, args);
      args.rows = 1;
      ASSERT_TRUE(std::equal(expected.begin(), expected.end(), out))
          << "width " << n << " to " << kSinks[s].name;
    }
  }
}

TEST_P(LevelTest, ExchangesRows) {
  const Arena first(kLarge), second(kLarge);
  for (size_t n = 0; n <= 330; ++n) {
    const size_t bytes = n == 330 ? kLarge : n;
    for (const size_t offset : {size_t{0}, n % 5}) {
      if (bytes + offset > kLarge) continue;
      const reference::Bytes a = test::random_bytes(first.size(), n);
      const reference::Bytes b = test::random_bytes(second.size(), n + 1000);
      std::copy(a.begin(), a.end(), first.begin());
      std::copy(b.begin(), b.end(), second.begin());
      uint8_t* p = first.place(bytes, true, offset);
      uint8_t* q = second.place(bytes, n % 2 == 0, 0);
      reference::Bytes expected_a = a, expected_b = b;
      std::swap_ranges(expected_a.begin() + (p - first.begin()),
                       expected_a.begin() + (p - first.begin()) + static_cast<ptrdiff_t>(bytes),
                       expected_b.begin() + (q - second.begin()));
      table_->exchange(p, q, bytes, n % 2 == 0 ? 0 : kPrefetchDistance);
      ASSERT_TRUE(std::equal(expected_a.begin(), expected_a.end(), first.begin())) << bytes;
      ASSERT_TRUE(std::equal(expected_b.begin(), expected_b.end(), second.begin())) << bytes;
    }
  }
}

// The proofs below run over whole input ranges where that takes a second or two; LUM_TEST_QUICK
// takes every 17th value of one of the channels.
int channel_step() { return test::quick() ? 17 : 1; }

// Every red, green and blue: the luminance formulas must not differ by one anywhere.
TEST_P(LevelTest, LuminanceOfEveryColour) {
  struct Order {
    Source source;
    size_t bytes, r, g, b;
  };
  const Order orders[] = {{Source::rgb24, 3, 0, 1, 2},
                          {Source::bgr24, 3, 2, 1, 0},
                          {Source::rgba32, 4, 0, 1, 2},
                          {Source::bgra32, 4, 2, 1, 0}};
  constexpr size_t kPixels = 65536;
  reference::Bytes src(4 * kPixels), out(kPixels);
  for (const Order& order : orders) {
    for (int r = 0; r < 256; r += channel_step()) {
      for (size_t i = 0; i < kPixels; ++i) {
        uint8_t* p = &src[i * order.bytes];
        p[order.bytes - 1] = static_cast<uint8_t>(i * 7);  // the alpha byte must not matter
        p[order.r] = static_cast<uint8_t>(r);
        p[order.g] = static_cast<uint8_t>(i >> 8);
        p[order.b] = static_cast<uint8_t>(i);
      }
      for (const Sink sink : {Sink::mono8_rec601, Sink::mono8_rec709}) {
        table_->at(order.source, sink)(out.data(), src.data(), nullptr, kPixels, {});
        for (size_t i = 0; i < kPixels; ++i) {
          reference::Pixel p;
          p.r = r, p.g = static_cast<int>(i >> 8), p.b = static_cast<int>(i & 255);
          const int y = sink == Sink::mono8_rec601 ? reference::luma601(p) : reference::luma709(p);
          ASSERT_EQ(out[i], y) << "R " << p.r << " G " << p.g << " B " << p.b;
        }
      }
    }
  }
}

// Every Y, U and V of studio range, by either standard: kernels compute in 16 bits, or add up
// products with offsets taken together.
TEST_P(LevelTest, StudioRangeOfEveryColour) {
  constexpr int32_t kFactors[][4] = {{409, -100, -208, 516}, {459, -55, -136, 541}};
  constexpr size_t kPixels = 65536;
  reference::Bytes src(3 * kPixels), out(3 * kPixels);
  const auto byte = [](int v) { return std::min(std::max(v >> 8, 0), 255); };
  for (const auto& f : kFactors) {
    RowArgs args;
    args.matrix = f;
    for (int y = 0; y < 256; y += channel_step()) {
      for (size_t i = 0; i < kPixels; ++i) {
        src[3 * i] = static_cast<uint8_t>(i >> 8);
        src[3 * i + 1] = static_cast<uint8_t>(y);
        src[3 * i + 2] = static_cast<uint8_t>(i);
      }
      table_->direct.studio_to_bgr24[2](out.data(), src.data(), nullptr, kPixels, args);
      for (size_t i = 0; i < kPixels; ++i) {
        const int u = static_cast<int>(i >> 8) - 128, v = static_cast<int>(i & 255) - 128;
        const int c = 298 * (y - 16) + 128;
        const int bgr[] = {byte(c + f[3] * u), byte(c + f[1] * u + f[2] * v), byte(c + f[0] * v)};
        ASSERT_TRUE(std::equal(bgr, bgr + 3, &out[3 * i])) << "Y " << y << " U " << u << " V " << v;
      }
    }
  }
}

// Every red, green and blue through a mosaic, to luminance and to UYVY. Rows R g R g / g B g B with
// a ramp in blue: two neighbouring pixels have the same red and green, and blues one apart.
TEST_P(LevelTest, MosaicOfEveryColour) {
  constexpr size_t kPixels = 512;
  reference::Bytes a(kPixels), b(kPixels), out(2 * kPixels), expected(2 * kPixels);
  for (int r = 0; r < 256; r += test::quick() ? 51 : 15) {
    for (int g = 0; g < 256; g += channel_step()) {
      for (size_t x = 0; x < kPixels; x += 2) {
        a[x] = static_cast<uint8_t>(r);
        a[x + 1] = b[x] = static_cast<uint8_t>(g);
        b[x + 1] = static_cast<uint8_t>(x / 2);
      }
      for (const Sink sink : {Sink::mono8_rec601, Sink::mono8_rec709, Sink::uyvy}) {
        const size_t bytes = kPixels * kSinks[static_cast<size_t>(sink)].pixel_bytes;
        reference::row(Source::mosaic8, sink, expected.data(), a.data(), b.data(), kPixels, {});
        table_->at(Source::mosaic8, sink)(out.data(), a.data(), b.data(), kPixels, {});
        ASSERT_TRUE(std::equal(&out[0], &out[0] + bytes, &expected[0]))
            << kSinks[static_cast<size_t>(sink)].name << " R " << r << " G " << g;
      }
    }
  }
}

// CYGM blocks on a grid that holds all extremes; LUM_TEST_FULL takes every one of the 2^32.
TEST_P(LevelTest, CygmBlocks) {
  std::vector<int> values;
  const int step = test::environment_flag("LUM_TEST_FULL") ? 1 : test::quick() ? 51 : 9;
  for (int v = 0; v < 256; v += step) values.push_back(v);
  values.insert(values.end(), {255, 254, 127, 128, 1});
  // Cyan, yellow and green are the same in a whole row and magenta runs from pair to pair, so that
  // both pixels of a pair come from the same four values.
  const size_t pixels = 2 * values.size();
  reference::Bytes a(pixels), b(pixels), out(3 * pixels), expected(3 * pixels);
  for (const int cy : values) {
    for (const int g : values) {
      for (const int ye : values) {
        for (size_t i = 0; i < values.size(); ++i) {
          a[2 * i] = static_cast<uint8_t>(cy);
          a[2 * i + 1] = static_cast<uint8_t>(ye);
          b[2 * i] = static_cast<uint8_t>(g);
          b[2 * i + 1] = static_cast<uint8_t>(values[i]);
          reference::Pixel p[2];
          p[0] = p[1] = reference::cygm_block(cy, ye, g, values[i]);
          reference::store(static_cast<uint32_t>(Sink::bgr24), p, 2, &expected[6 * i]);
        }
        table_->at(Source::cygm, Sink::bgr24)(out.data(), a.data(), b.data(), pixels, {});
        const auto diff = std::mismatch(out.begin(), out.end(), expected.begin());
        ASSERT_TRUE(diff.first == out.end())
            << "Cy " << cy << " Ye " << ye << " G " << g << " Mg "
            << values[static_cast<size_t>(diff.first - out.begin()) / 6];
      }
    }
  }
}

// 16-bit luminance where its carries are: all triples of values about the powers of two.
TEST_P(LevelTest, Mosaic16AtTheEdges) {
  std::vector<int> values = {0,      1,      2,      0xFF,   0x100,  0x101,
                             0x7FFE, 0x7FFF, 0x8000, 0x8001, 0xFEFF, 0xFF00,
                             0xFF01, 0xFFFE, 0xFFFF, 0x5555, 0xAAAA, 0x1234};
  Random random(16);
  while (values.size() < 40) values.push_back(static_cast<int>(random.next() & 0xFFFF));
  std::vector<uint16_t> a, b;
  for (const int r : values) {
    for (const int g : values) {
      for (const int blue : values) {
        a.push_back(static_cast<uint16_t>(r));
        a.push_back(static_cast<uint16_t>(g));
        b.push_back(static_cast<uint16_t>(g ^ 1));
        b.push_back(static_cast<uint16_t>(blue));
      }
    }
  }
  const uint8_t* rows[2] = {reinterpret_cast<const uint8_t*>(a.data()),
                            reinterpret_cast<const uint8_t*>(b.data())};
  reference::Bytes out(6 * a.size()), expected(6 * a.size());
  for (const Sink sink : {Sink::mono16_rec601, Sink::mono16_rec709, Sink::bgr48}) {
    std::fill(out.begin(), out.end(), uint8_t{0});
    std::fill(expected.begin(), expected.end(), uint8_t{0});
    reference::row(Source::mosaic16, sink, expected.data(), rows[0], rows[1], a.size(), {});
    table_->at(Source::mosaic16, sink)(out.data(), rows[0], rows[1], a.size(), {});
    const auto diff = std::mismatch(out.begin(), out.end(), expected.begin());
    ASSERT_TRUE(diff.first == out.end())
        << kSinks[static_cast<size_t>(sink)].name << " byte " << diff.first - out.begin();
  }
}

INSTANTIATE_TEST_SUITE_P(Levels, LevelTest, testing::ValuesIn(test::tested_levels()),
                         [](const testing::TestParamInfo<TestedLevel>& level) {
                           return level.param.name;
                         });

// Every grey word through every shift and byte order.
TEST(KernelProof, EveryMono16Word) {
  constexpr size_t kWords = 65536;
  reference::Bytes src(2 * kWords), out(2 * kWords), expected(2 * kWords);
  for (size_t i = 0; i < kWords; ++i) {
    src[2 * i] = static_cast<uint8_t>(i);
    src[2 * i + 1] = static_cast<uint8_t>(i >> 8);
  }
  for (const auto& [level, table] : test::tested_levels()) {
    if (table == nullptr) continue;
    for (const Source source : {Source::mono16, Source::mono16_tinted, Source::mono16_second}) {
      for (const Sink sink : {Sink::mono8_rec601, Sink::mono8_rec709, Sink::mono16_rec601}) {
        const RowKernel kernel = table->at(source, sink);
        if (kernel == nullptr) continue;
        for (const RowArgs& args : arguments_of(source, sink)) {
          reference::row(source, sink, expected.data(), src.data(), nullptr, kWords, args);
          kernel(out.data(), src.data(), nullptr, kWords, args);
          const size_t bytes = kWords * kSinks[static_cast<size_t>(sink)].pixel_bytes;
          ASSERT_TRUE(std::equal(&out[0], &out[0] + bytes, &expected[0]))
              << level << ' ' << kSources[static_cast<size_t>(source)].name << " to "
              << kSinks[static_cast<size_t>(sink)].name << " shift " << args.shift;
        }
      }
    }
  }
}

TEST(KernelTable, TheActiveTableIsTheBestOneThereIs) {
  const Kernels* best = nullptr;
  for (unsigned level = 0; level < kLevelCount; ++level) {
    const Kernels* table = kernels_of(static_cast<Level>(level));
    if (table != nullptr) best = table;
  }
  EXPECT_EQ(&kernels(), best);
}

}  // namespace
}  // namespace lum
