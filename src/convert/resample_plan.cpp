// SPDX-License-Identifier: MIT
#include "convert/resample_plan.h"

#include <string.h>

namespace lum {
namespace {

// Fills in where pixels lie. next_position() counts from the first one on.
template <class Position>
void place(Plan& plan, PixelShape pixel, Position next_position) {
  const uint32_t n = plan.n, channels = pixel.channels, shift = pixel.sample_bytes - 1;
  uint32_t* const at = plan.at;
  uint16_t* const f = plan.f;
  for (uint32_t x = 0; x < n; ++x) {
    const auto p = next_position();
    at[x] = static_cast<uint32_t>(p >> 16) * channels << shift;
    f[x] = fraction(p);
  }
  plan.stride = 1;
}
// From a value for each pixel to one for each sample, from the back.
template <class Value>
void spread(Value* values, uint32_t pixels, uint32_t channels, uint32_t increment) {
  if (channels == 1) return;
  Value* to = values + size_t{pixels} * channels;
  for (uint32_t x = pixels; x-- > 0;) {
    const Value v = values[x];
    for (uint32_t c = channels; c-- > 0;) *--to = static_cast<Value>(v + c * increment);
  }
}

// Index and bases of a mixing kernel, if the samples of each span of it lie close to each other:
// with `pairs` up to steps of some two pixels.
template <class Index>
bool add_spans(Plan& plan, const DirectKernels& k, PixelShape pixel, bool pairs) {
  constexpr uint32_t kSample = sizeof(Index) / 2;
  const uint32_t in_span = static_cast<uint32_t>(k.pick_span / sizeof(Index));
  const uint32_t next = pairs ? static_cast<uint32_t>(pixel.bytes()) : 0;
  const uint32_t samples = plan.n * pixel.channels;
  if (next + kSample > k.pick_span) return false;
  const uint32_t most = static_cast<uint32_t>(k.pick_span) - next - kSample;
  const PickIndex as = mixing_index(kSample, next, pairs);
  const uint32_t* at = plan.at;
  uint32_t x = 0, base = 0;
  uint8_t* index = plan.index;
  uint32_t* bases = plan.base;
  const auto add = [&](uint32_t n) {
    // Of interleaved samples the first one may lie behind another one, and the last one before.
    const uint32_t some = std::min(n, pixel.channels);
    base = *std::min_element(at + x, at + x + some);
    *bases++ = base;
    constexpr uint32_t kUsual = 16 / sizeof(Index);  // of spans of 16 bytes
    Index v[kMostSpan / sizeof(Index)];
    const auto fill = [&](uint32_t count) {
      for (uint32_t i = 0; i < count; ++i) {
        v[i] = static_cast<Index>((at[x + i] - base) * as.factor + as.added);
      }
      memcpy(index, v, count * sizeof(Index));
    };
    n == kUsual ? fill(kUsual) : fill(n);
    const uint32_t far = *std::max_element(at + x + n - some, at + x + n) - base;
    x += n;
    index += n * sizeof(Index);
    return far <= most;
  };
  while (x + in_span <= samples) {
    if (!add(in_span)) return false;
  }
  if (x < samples && !add(samples - x)) return false;
  plan.reach = base + k.pick_span + pixel.bytes();
  for (uint32_t i = 0; i < kBlockSamples / in_span; ++i) *bases++ = 0;
  memset(index, 0, kBlockSamples * sizeof(Index));
  return plan.reach <= kMostReach;
}
template <class Index>
bool add_mixing(Plan& plan, const DirectKernels& k, PixelShape pixel) {
  const size_t kind = pixel.sample_bytes - 1;
  if (add_spans<Index>(plan, k, pixel, true)) {
    plan.mix = k.mix_pairs[kind];
  } else if (add_spans<Index>(plan, k, pixel, false)) {
    plan.mix = k.mix_apart[kind];
  }
  return plan.mix != nullptr;
}
}  // namespace

void make_plan(Plan& plan, uint64_t first, uint32_t n, uint32_t src_count, PixelShape pixel,
               int64_t position, uint32_t step, Resampling mode) {
  const uint64_t rounding = mode == Resampling::nearest ? kHalf : 0;
  const auto exact = [&](uint64_t x) {
    return position_of(position, step, first + x, src_count) + rounding;
  };
  const uint64_t origin = exact(0) >> 16 << 16;
  plan.n = n;
  plan.picks = false;
  plan.mix = nullptr;
  plan.first = (origin >> 16) * pixel.bytes();
  plan.last = (size_t{src_count} - 1) * pixel.bytes() - plan.first;
  // From there on 32 bits are mostly enough, even without the limits. Positions do not decrease.
  constexpr int64_t kMost = INT32_MAX / 2;
  constexpr uint64_t kFar = uint64_t{1} << 62;
  const int64_t start = position + static_cast<int64_t>(first * step + rounding - origin);
  if (first * step < kFar && start >= -kMost && start <= kMost && uint64_t{n} * step <= kMost) {
    const uint64_t end = (uint64_t{src_count - 1} << 16) + rounding - origin;
    const int32_t by = static_cast<int32_t>(step);
    const int32_t low = static_cast<int32_t>(exact(0) - origin);
    const int32_t high = static_cast<int32_t>(std::min<uint64_t>(end, INT32_MAX));
    place(plan, pixel, [=, p = static_cast<int32_t>(start)]() mutable {
      const int32_t here = p;
      p += by;
      return static_cast<uint32_t>(std::min(std::max(here, low), high));
    });
  } else {
    place(plan, pixel, [&, x = uint64_t{0}]() mutable { return exact(x++) - origin; });
  }
  if (mode == Resampling::linear) spread(plan.f, n, pixel.channels, 0);
}

void add_mixing(Plan& plan, const DirectKernels& k, PixelShape pixel) {
  if (k.mix_pairs[0] == nullptr) return;
  spread(plan.at, plan.n, pixel.channels, pixel.sample_bytes);
  plan.stride = pixel.channels;
  if (pixel.sample_bytes == 1) {
    add_mixing<uint16_t>(plan, k, pixel);
  } else if (add_mixing<uint32_t>(plan, k, pixel)) {
    for (size_t i = plan.n * pixel.channels; i-- > 0;) {
      const uint16_t f = plan.f[i];
      plan.f[2 * i] = f ^ 0x8000;
      plan.f[2 * i + 1] = static_cast<uint16_t>(-f);
    }
  }
}

// A span of the result comes from a window of two, so steps up to some two pixels do.
void add_picks(Plan& plan, const DirectKernels& k, PixelShape pixel, size_t row_bytes) {
  const size_t span = k.pick_span, window = 2 * span, pixel_bytes = pixel.bytes();
  const size_t bytes = plan.n * pixel_bytes, whole = (bytes + kBlockSamples - 1) / kBlockSamples;
  if (k.pick == nullptr || row_bytes < window) return;
  plan.from = std::min(plan.first, row_bytes - window);
  memset(plan.index, 0, whole * kBlockSamples);
  // The pixel that byte i of the result is of, and which of its bytes that is.
  size_t x = 0, part = 0;
  const auto pixel_begin = [&] { return plan.first + plan.at[x * plan.stride]; };
  for (size_t i = 0; i < whole * kBlockSamples; i += span) {
    uint32_t& base = plan.base[i / span];
    base = 0;
    if (i >= bytes) continue;
    const size_t begin = std::min(pixel_begin(), row_bytes - window);
    base = static_cast<uint32_t>(begin - plan.from);
    size_t last = 0;
    for (size_t j = i; j < std::min(i + span, bytes); ++j) {
      last = pixel_begin();
      plan.index[j] = static_cast<uint8_t>(last + part - begin);
      if (++part == pixel_bytes) {
        part = 0;
        ++x;
      }
    }
    if (last + pixel_bytes > begin + window) return;
  }
  plan.picks = true;
}

}  // namespace lum
