// SPDX-License-Identifier: MIT
// Resampling: a plan says for each pixel of a column tile which two source pixels it lies between
// and how far; the pixels are gathered by it, and the kernels mix them. Rows of a frame are
// resampled one by one and mixed in pairs. Where the step is not too large, pieces of the result
// come from a short stretch of the source: kernels pick all of a piece's pixels from it in one go,
// and mix them at once. For a single row there are kernels that do so without a plan.
#include <string.h>

#include <algorithm>

#include "arguments.h"
#include "convert/direct.h"
#include "convert/resample_plan.h"
#include "lum/lum.h"
#include "row_writer.h"
#include "simd/isa.h"

namespace lum {
namespace {

// Pixels `skip` bytes on from where they are said to be, but for the last.
template <size_t bytes>
void gather(uint8_t* dst, const uint8_t* src, const Plan& plan, size_t skip) {
  const size_t stride = plan.stride;
  src += plan.first;
  if (plan.at[(plan.n - 1) * stride] + skip <= plan.last) {
    for (size_t x = 0; x < plan.n; ++x) {
      memcpy(dst + x * bytes, src + plan.at[x * stride] + skip, bytes);
    }
    return;
  }
  for (size_t x = 0; x < plan.n; ++x) {
    memcpy(dst + x * bytes, src + std::min(plan.at[x * stride] + skip, plan.last), bytes);
  }
}
void gather(uint8_t* dst, const uint8_t* src, const Plan& plan, size_t skip, size_t bytes) {
  switch (bytes) {
    case 1:
      return gather<1>(dst, src, plan, skip);
    case 2:
      return gather<2>(dst, src, plan, skip);
    case 3:
      return gather<3>(dst, src, plan, skip);
    case 4:
      return gather<4>(dst, src, plan, skip);
    case 6:
      return gather<6>(dst, src, plan, skip);
    default:
      return gather<8>(dst, src, plan, skip);
  }
}

// Room for the end of a row that is to be read beyond it, or for what is to be mixed.
union Scratch {
  uint8_t row[kMostReach];
  alignas(64) uint8_t mixed[2][kTileBytes];
};

// A tile of a row, of which `there` bytes can be read; so far `ahead`, unless that is 0, lies the
// row that will be resampled next.
void resample_tile(const DirectKernels& k, uint8_t* dst, const uint8_t* src, size_t there,
                   const Plan& plan, PixelShape pixel, Resampling mode, Scratch& scratch,
                   ptrdiff_t ahead) {
  const size_t bytes = plan.n * pixel.bytes(), samples = size_t{plan.n} * pixel.channels;
  if (mode == Resampling::nearest) {
    if (plan.picks) {
      k.pick(dst, src + plan.from, plan.base, plan.index, bytes, ahead);
    } else {
      gather(dst, src, plan, 0, pixel.bytes());
    }
    return;
  }
  if (plan.mix != nullptr) {
    src += plan.first;
    if (there - plan.first < plan.reach) {
      memcpy(scratch.row, src, there - plan.first);
      src = scratch.row;
      ahead = 0;
    }
    plan.mix(dst, src, plan.base, plan.index, plan.f, pixel.bytes(), samples, ahead);
    return;
  }
  uint8_t *const a = scratch.mixed[0], *const b = scratch.mixed[1];
  gather(a, src, plan, 0, pixel.bytes());
  gather(b, src, plan, pixel.bytes(), pixel.bytes());
  const auto mix = pixel.sample_bytes == 1 ? k.mix8 : k.mix16;
  mix(dst, a, b, plan.f, samples);
}

// The rows of a tile as they are resampled; neighbouring rows of the result share them.
class TileRows {
 public:
  TileRows(const DirectKernels& kernels, const uint8_t* src, size_t src_row, size_t src_bytes,
           const Plan& plan, PixelShape pixel, Scratch& scratch)
      : kernels_(kernels),
        src_(src),
        src_row_(src_row),
        src_bytes_(src_bytes),
        plan_(plan),
        pixel_(pixel),
        scratch_(scratch) {}
  // Stays valid until another two rows have been asked for. `ahead` as for resample_tile().
  const uint8_t* row(uint64_t y, ptrdiff_t ahead) {
    uint8_t* const row = rows_[y % 2];
    if (held_[y % 2] != y) {
      const size_t from = y * src_row_;
      resample_tile(kernels_, row, src_ + from, src_bytes_ - from, plan_, pixel_,
                    Resampling::linear, scratch_, ahead);
      held_[y % 2] = y;
    }
    return row;
  }

 private:
  const DirectKernels& kernels_;
  const uint8_t* src_;
  size_t src_row_, src_bytes_;
  const Plan& plan_;
  PixelShape pixel_;
  Scratch& scratch_;
  uint64_t held_[2] = {UINT64_MAX, UINT64_MAX};
  alignas(64) uint8_t rows_[2][kTileBytes];
};

int64_t first_position(uint32_t step) {
  return static_cast<int64_t>(step >> 1) - static_cast<int64_t>(kHalf);
}

// A row for which no kernel takes the steps.
void resample_by_plan(const DirectKernels& k, uint8_t* dst, const uint8_t* src, uint32_t dst_count,
                      uint32_t src_count, PixelShape pixel, int32_t position, uint32_t step,
                      Resampling mode) {
  Plan plan;
  Scratch scratch;
  const uint32_t tile = tile_pixels(pixel);
  for (uint64_t x = 0; x < dst_count; x += tile) {
    const uint32_t n = static_cast<uint32_t>(std::min<uint64_t>(tile, dst_count - x));
    make_plan(plan, x, n, src_count, pixel, position, step, mode);
    // For one row alone, a plan for spans of interleaved samples takes longer than gathering.
    if (mode == Resampling::linear && pixel.channels == 1) add_mixing(plan, k, pixel);
    resample_tile(k, dst + x * pixel.bytes(), src, src_count * pixel.bytes(), plan, pixel, mode,
                  scratch, 0);
  }
}

void repeat(uint8_t* dst, const uint8_t* pixel, size_t n, size_t pixel_bytes) {
  const size_t bytes = n * pixel_bytes;
  if (n != 0) memcpy(dst, pixel, pixel_bytes);
  for (size_t done = pixel_bytes; done < bytes; done *= 2) {
    memcpy(dst + done, dst, std::min(done, bytes - done));
  }
}

}  // namespace

void resample_row(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t dst_count,
                  uint32_t src_count, PixelShape pixel, int32_t position, uint32_t step,
                  Resampling mode) {
  const DirectKernels& k = kernels.direct;
  const size_t bytes = pixel.bytes(), src_bytes = src_count * bytes;
  // How many pixels come before the row's first one, and how many do up to its last one; those
  // before and behind repeat them.
  const auto steps_within = [&](uint64_t way) {
    return step == 0 ? dst_count : std::min<uint64_t>(way / step + 1, dst_count);
  };
  const int64_t end = int64_t{src_count - 1} << 16;
  const size_t before = position < 0 ? steps_within(-int64_t{position} - 1) : 0;
  const size_t upto = position <= end ? steps_within(end - position) : 0;
  if (upto > before) {
    const bool nearest = mode == Resampling::nearest;
    const auto kernel = nearest ? k.pick_in_steps[bytes]
                                : k.mix_in_steps[pixel.sample_bytes - 1][pixel.channels - 1];
    const uint64_t p = position + before * step + (nearest ? kHalf : 0);
    if (kernel == nullptr ||
        !kernel(dst + before * bytes, upto - before, src, src_bytes, p, step)) {
      resample_by_plan(k, dst, src, dst_count, src_count, pixel, position, step, mode);
      return;
    }
  }
  repeat(dst, src, before, bytes);
  repeat(dst + upto * bytes, src + src_bytes - bytes, dst_count - upto, bytes);
}

void resize(const Kernels& kernels, uint8_t* dst, const uint8_t* src, FrameSize dst_size,
            FrameSize src_size, PixelShape pixel, Resampling mode) {
  const size_t src_row = src_size.width * pixel.bytes(), dst_row = dst_size.width * pixel.bytes();
  if (dst_size.width == src_size.width && dst_size.height == src_size.height) {
    memcpy(dst, src, src_row * src_size.height);
    return;
  }
  const uint32_t step_x = (src_size.width << 16) / dst_size.width;
  const uint32_t step_y = (src_size.height << 16) / dst_size.height;
  const auto mix =
      pixel.sample_bytes == 1 ? kernels.direct.mix8_evenly : kernels.direct.mix16_evenly;
  Plan plan;
  Scratch scratch;
  const uint32_t tile = tile_pixels(pixel);
  // What caches do not hold is fetched one row ahead: tiles walk down, and no processor foresees
  // where the next row begins.
  const bool fetched = is_streamed(kernels, src_row * src_size.height + dst_row * dst_size.height);
  const auto ahead = [&](uint64_t from, uint64_t to) {
    return fetched ? static_cast<ptrdiff_t>((to - from) * src_row) : 0;
  };
  // It is written past them, but for grey bytes that are mixed, which takes longer than memory.
  // Picked rows are streamed at once; mixed ones a few lines at a time, as mixing goes on
  // meanwhile.
  const bool streamed = fetched && (mode == Resampling::nearest || pixel.bytes() > 1);
  static_assert(kTile <= 2 * StagedLines::kPiece, "room for a row of a tile");
  constexpr size_t kMixedPiece = 1024;
  StagedLines staged(kernels);
  for (uint32_t x = 0; x < dst_size.width; x += tile) {
    const uint32_t n = std::min(tile, dst_size.width - x);
    make_plan(plan, x, n, src_size.width, pixel, first_position(step_x), step_x, mode);
    if (mode == Resampling::linear) {
      add_mixing(plan, kernels.direct, pixel);
    } else {
      add_picks(plan, kernels.direct, pixel, src_row);
    }
    TileRows rows(kernels.direct, src, src_row, src_row * src_size.height, plan, pixel, scratch);
    uint8_t* out = dst + x * pixel.bytes();
    const size_t bytes = n * pixel.bytes();
    const auto position = [&](uint64_t y) {
      return position_of(first_position(step_y), step_y, y, src_size.height);
    };
    uint64_t q = position(0), after;
    for (uint32_t y = 0; y < dst_size.height; ++y, out += dst_row, q = after) {
      after = position(uint64_t{y} + 1);
      if (mode == Resampling::nearest) {
        const uint8_t* const from = src + nearest(q) * src_row;
        uint8_t* const to = streamed ? staged.at(out, bytes) : out;
        resample_tile(kernels.direct, to, from, src_row, plan, pixel, mode, scratch,
                      ahead(nearest(q), nearest(after)));
        continue;
      }
      // The next row of the result may begin with one that this one has already.
      const uint64_t here = q >> 16, below = next(here, src_size.height);
      if (fraction(q) == 0) {
        const uint64_t further = std::max(after >> 16, below);
        memcpy(streamed ? staged.at(out, bytes) : out, rows.row(here, ahead(here, further)), bytes);
      } else {
        const uint8_t* const upper = rows.row(here, ahead(here, below));
        const uint64_t further = std::max(after >> 16, next(below, src_size.height));
        const uint8_t* const lower = rows.row(below, ahead(below, further));
        if (!streamed) {
          mix(out, upper, lower, fraction(q), bytes / pixel.sample_bytes);
          continue;
        }
        for (size_t i = 0; i < bytes; i += kMixedPiece) {
          const size_t piece = std::min(kMixedPiece, bytes - i);
          mix(staged.at(out + i, piece), upper + i, lower + i, fraction(q),
              piece / pixel.sample_bytes);
          staged.flush_lines();
        }
      }
    }
  }
  if (streamed) staged.finish();
}

}  // namespace lum

using namespace lum;

uint32_t LumResampleRow(uint8_t* dst, const uint8_t* src, uint32_t dstCount, uint32_t srcCount,
                        uint32_t channels, uint32_t bytesPerSample, int32_t position, uint32_t step,
                        uint32_t mode) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (dstCount == 0) return bad_parameter(3);
  if (srcCount == 0) return bad_parameter(4);
  if (channels == 0 || channels > kMaxChannels) return bad_parameter(5);
  if (bytesPerSample != 1 && bytesPerSample != 2) return bad_parameter(6);
  if (mode >= kResamplingCount) return kNotImplemented;
  resample_row(kernels(), dst, src, dstCount, srcCount, {channels, bytesPerSample}, position, step,
               static_cast<Resampling>(mode));
  return kSuccess;
}

uint32_t LumResize(uint8_t* dst, const uint8_t* src, uint32_t dstWidth, uint32_t dstHeight,
                   uint32_t srcWidth, uint32_t srcHeight, uint32_t channels,
                   uint32_t bytesPerSample, uint32_t mode) {
  constexpr uint32_t kMaxSize = 65535;
  const uint32_t sizes[] = {dstWidth, dstHeight, srcWidth, srcHeight};
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  for (unsigned i = 0; i < 4; ++i) {
    if (sizes[i] == 0 || sizes[i] > kMaxSize) return bad_parameter(3 + i);
  }
  if (channels == 0 || channels > kMaxChannels) return bad_parameter(7);
  if (bytesPerSample != 1 && bytesPerSample != 2) return bad_parameter(8);
  if (mode >= kResamplingCount) return kNotImplemented;
  resize(kernels(), dst, src, {dstWidth, dstHeight}, {srcWidth, srcHeight},
         {channels, bytesPerSample}, static_cast<Resampling>(mode));
  return kSuccess;
}
