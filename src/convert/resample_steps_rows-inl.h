// SPDX-License-Identifier: MIT
// Resampling of a single row, for which a plan would cost more than it saves. Pixel k of a period
// lies k steps after its first one: whole pixels and a fraction that are the same for all periods,
// and are made once for a row. Each period adds the fraction that its own first pixel has:
//   fraction = (fraction + first) mod 2^16, index = index + (a pixel where that carries)
// As in a plan, the elements of a window come from a short stretch of the source.
namespace lum {
namespace LUM_LEVEL {
namespace {

// k steps: whole ones, and the fraction in units of 2^-16.
template <class V>
struct Way {
  V whole, fraction;
};
LUM_INLINE Way<U16> way(U16 k, uint32_t step) {
  const U16 fraction = splat16(step & 0xFFFF);
  return {mul_hi(k, fraction) + k * splat16(step >> 16), k * fraction};
}
LUM_INLINE Way<U32> way(U32 k, uint32_t step) {
  const U32 distance = k * (U32{} + step);
  return {distance >> 16, distance & 0xFFFF};
}

// Indices in lanes of V for elements of `size` bytes, `parts` of which are a pixel. As many as
// `in_window` of them come from `window` bytes of the source.
template <class V, int parts, int size, int in_window, int window>
struct Steps {
  using Vector = V;
  using Lane = decltype(lane_of(V{}));
  static constexpr int kInVector = kLanes / static_cast<int>(sizeof(Lane));
  static constexpr int kVectors = parts % 3 == 0 ? 6 : 2;  // of a period
  static constexpr int kElements = kVectors * kInVector, kPeriodWindows = kElements / in_window;
  static constexpr int kPixelBytes = parts * size, kPixels = kElements / parts;
  static constexpr uint32_t kMostPixels = 4;  // a step, for the sake of kMostReach
  static constexpr int kMostReach = kMostPixels * kPixels * kPixelBytes + window;
  static_assert(kElements % parts == 0 && kElements % in_window == 0, "whole pixels and windows");

  struct Numbers {
    Lane pixel[kElements], byte[kElements];  // of each element
    Lane first[kElements], skip[kElements];  // of the one that its window begins with
  };
  static constexpr Numbers kNumbers = [] {
    Numbers n{};
    for (int i = 0; i < kElements; ++i) {
      const int first = i / in_window * in_window;
      n.pixel[i] = static_cast<Lane>(i / parts);
      n.byte[i] = static_cast<Lane>(i % parts * size);
      n.first[i] = n.pixel[first];
      n.skip[i] = n.byte[first];
    }
    return n;
  }();

  V fraction[kVectors], index[kVectors], pixel;
  uint32_t base[kPeriodWindows];  // of each window, in bytes from the period's first pixel on
  size_t reach;                   // from there on

  // What an index leads to ends `behind` bytes behind the element. False where windows are too
  // short for such steps.
  bool set(uint32_t step, PickIndex as, uint32_t behind) {
    if (step > kMostPixels << 16) return false;
    // Where steps are a pixel or more, nothing lies before the window's first element.
    const uint32_t skips = step >= 1u << 16 ? 1 : 0;
    const auto way_to = [&](int i) { return step * static_cast<uint32_t>(i / parts); };
    const auto byte_at = [&](int i) { return static_cast<uint32_t>(i % parts * size); };
    const auto end_of = [&](int i) {
      const uint32_t carried = (way_to(i) & 0xFFFF) != 0 ? kPixelBytes : 0;
      return (way_to(i) >> 16) * kPixelBytes + carried + byte_at(i) + size + behind;
    };
    for (int w = 0; w < kPeriodWindows; ++w) {
      const int first = w * in_window, last = first + in_window - 1;
      // The pixel before the last one ends further on only where both may be the same.
      const int before = skips != 0 ? -1 : last / parts * parts - 1;
      base[w] = (way_to(first) >> 16) * kPixelBytes + byte_at(first) * skips;
      if (end_of(last) > base[w] + window) return false;
      if (before >= first && end_of(before) > base[w] + window) return false;
    }
    reach = size_t{base[kPeriodWindows - 1]} + window + kPixelBytes;
    for (int v = 0; v < kVectors; ++v) {
      const int i = v * kInVector;
      const Way<V> here = way(load<V>(kNumbers.pixel + i), step);
      const Way<V> first = way(load<V>(kNumbers.first + i), step);
      const V from = load<V>(kNumbers.skip + i) * static_cast<Lane>(skips);
      const V bytes = (here.whole - first.whole) * static_cast<Lane>(kPixelBytes) +
                      load<V>(kNumbers.byte + i) - from;
      fraction[v] = here.fraction;
      index[v] = bytes * static_cast<Lane>(as.factor) + static_cast<Lane>(as.added);
    }
    pixel = V{} + static_cast<Lane>(kPixelBytes * as.factor);
    return true;
  }

  // The indices of a vector as `whole`.
  LUM_INLINE Way<V> take(int v, V first) const {
    const V sum = fraction[v] + first;
    if constexpr (sizeof(Lane) == 2) return {index[v] + (V(sum < first) & pixel), sum};
    return {index[v] + (V(I32(sum) > 0xFFFF) & pixel), sum & 0xFFFF};
  }
};

// period(dst, src, first) for each one of n pixels. Those that would read beyond the row are made
// from a copy of its end; of the last one as much is copied as is wanted.
template <class S, class Period>
void in_periods(const S& steps, uint8_t* dst, size_t n, const uint8_t* src, size_t src_bytes,
                uint64_t position, uint32_t step, Period period) {
  constexpr size_t kPixels = S::kPixels, kBytes = kPixels * S::kPixelBytes;
  const auto at = [&] { return static_cast<size_t>(position >> 16) * S::kPixelBytes; };
  const auto next = [&](uint8_t* to, const uint8_t* from) {
    period(to, from, typename S::Vector{} + static_cast<typename S::Lane>(position & 0xFFFF));
    position += uint64_t{step} * kPixels;
  };
  size_t from = at();
  for (; n >= kPixels && from + steps.reach <= src_bytes; n -= kPixels, dst += kBytes) {
    next(dst, src + from);
    from = at();
  }
  if (n == 0) return;
  uint8_t end[2 * (S::kMostReach + S::kPixelBytes)], block[kBytes];
  const uint8_t* rest = src + from;
  if (from + steps.reach > src_bytes) {  // less is left than a period reads
    memcpy(end, rest, src_bytes - from);
    rest = end;
  }
  for (; n >= kPixels; n -= kPixels, dst += kBytes) next(dst, rest + (at() - from));
  if (n == 0) return;
  next(block, rest + (at() - from));
  memcpy(dst, block, n * S::kPixelBytes);
}

template <int pixel_bytes>
bool pick_in_steps(uint8_t* dst, size_t n, const uint8_t* src, size_t src_bytes, uint64_t position,
                   uint32_t step) {
  using S = Steps<U16, pixel_bytes, 1, kSpanBytes, 2 * kSpanBytes>;
  S steps;
  if (!steps.set(step, {1, 0}, 0)) return false;
  const auto period = [&](uint8_t* to, const uint8_t* from, U16 first) {
    for (int v = 0; v < S::kVectors; v += 2, to += kLanes) {
      const Window window = load_window(from, steps.base + v / 2 * (kLanes / kSpanBytes));
      store(to, picked(window, narrow(I16(steps.take(v, first).whole),
                                      I16(steps.take(v + 1, first).whole))));
    }
  };
  in_periods(steps, dst, n, src, src_bytes, position, step, period);
  return true;
}

// As they are mixed: words, or pairs of them.
LUM_INLINE I16 weights_of(U16 fraction) { return I16(fraction >> 1); }
LUM_INLINE U16 weights_of(U32 fraction) {
  const U32 f = fraction >> 1;
  return U16((f ^ 0x8000) - (f << 16));
}

template <class V, int channels, class Picked>
bool mix_in_steps(uint8_t* dst, size_t n, const uint8_t* src, size_t src_bytes, uint64_t position,
                  uint32_t step) {
  constexpr int kLane = kElementBytes<V>, kSample = kLane / 2;
  using S = Steps<V, channels, kSample, kSpanBytes / kLane, kSpanBytes>;
  constexpr uint32_t kPixel = S::kPixelBytes;
  S steps;
  const PickIndex as = mixing_index(kSample, kPixel, Picked::kPairs);
  if (!steps.set(step, as, Picked::kPairs ? kPixel : 0)) return false;
  const auto period = [&](uint8_t* to, const uint8_t* from, V first) {
    for (int v = 0; v < S::kVectors; v += 2, to += kLanes) {
      const auto half = [&](int i) {
        const Way<V> taken = steps.take(i, first);
        const uint32_t* const base = steps.base + i * (kLanes / kSpanBytes);
        return mix_picked(Picked::of(from, base, U8(taken.whole), kPixel),
                          weights_of(taken.fraction));
      };
      store(to, narrow(half(v), half(v + 1)));
    }
  };
  in_periods(steps, dst, n, src, src_bytes, position, step, period);
  return true;
}
// By an index of both pixels that are mixed where they are close enough, or of the first alone.
template <class V, int channels>
bool mix_in_steps(uint8_t* dst, size_t n, const uint8_t* src, size_t src_bytes, uint64_t position,
                  uint32_t step) {
  const auto pairs = mix_in_steps<V, channels, PickedPairs>;
  const auto apart = mix_in_steps<V, channels, PickedApart>;
  return pairs(dst, n, src, src_bytes, position, step) ||
         apart(dst, n, src, src_bytes, position, step);
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
