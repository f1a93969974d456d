// SPDX-License-Identifier: MIT
// Planes: interleaved components apart and together.
namespace lum {
namespace LUM_LEVEL {
namespace {

// Calls block(x) for blocks of `step` samples that cover 0 .. n - 1, n >= step; the last one
// overlaps the one before it where step does not divide n.
template <class Block>
LUM_INLINE void over_row(size_t n, size_t step, Block block) {
  size_t x = 0;
  for (; x + step <= n; x += step) block(x);
  if (x < n) block(n - step);
}

// Where bytes are shuffled, but no permute takes two vectors, two and four channels are brought
// together within pieces, as 64 or 32 bits of each. A block of several vectors is loaded so that
// the pieces of the k-th hold every k-th of it: interleaved, they are in memory order.
template <int size, int channels>
constexpr LaneTable kByChannel = lane_table([](int i) {
  constexpr int kRun = 16 / channels;
  const int channel = i % 16 / kRun, within = i % kRun;
  return (within / size * channels + channel) * size + within % size;
});
template <int size, int channels>
LUM_INLINE U8 load_by_channel(const uint8_t* p, int k) {
  const U8 pieces = load_pieces(p + 16 * k, 16 * channels);
  return pick_bytes(pieces, load<U8>(kByChannel<size, channels>.v));
}

// Of two vectors of interleaved pixels: channel `first`, 128 / channels bytes of it, and behind it
// the next ones until a vector is full.
template <int size, int channels, int first>
constexpr LaneTable kTwoApart = lane_table([](int i) {
  constexpr int kRun = 128 / channels;
  const int channel = first + i / kRun, within = i % kRun;
  return (within / size * channels + channel) * size + within % size;
});
// V, which is U8, so that only a level that has the permute looks for it.
template <int size, int channels, int first, class V>
LUM_INLINE U8 two_apart(V v0, V v1) {
  return permute_two(v0, v1, load<V>(kTwoApart<size, channels, first>.v));
}

template <class V>
LUM_INLINE void apart(const uint8_t* p, V (&c)[2]) {
  constexpr int kSize = kElementBytes<V>;
  if constexpr (kPermutesTwo) {
    const U8 v0 = load<U8>(p), v1 = load<U8>(p + kLanes);
    c[0] = V(two_apart<kSize, 2, 0>(v0, v1));
    c[1] = V(two_apart<kSize, 2, 1>(v0, v1));
  } else if constexpr (kShufflesBytes) {
    const auto v =
        interleave(U64(load_by_channel<kSize, 2>(p, 0)), U64(load_by_channel<kSize, 2>(p, 1)));
    c[0] = V(v.lo);
    c[1] = V(v.hi);
  } else {
    const V v0 = load<V>(p), v1 = load<V>(p + kLanes);
    c[0] = evens(v0, v1);
    c[1] = odds(v0, v1);
  }
}
LUM_INLINE void apart(const uint8_t* p, U8 (&c)[3]) {
  const Bytes3 v = load3(p);
  c[0] = v.c0;
  c[1] = v.c1;
  c[2] = v.c2;
}
LUM_INLINE void apart(const uint8_t* p, U16 (&c)[3]) {
  const Words3 v = load3_words(p);
  c[0] = v.c0;
  c[1] = v.c1;
  c[2] = v.c2;
}
template <class V>
LUM_INLINE void apart(const uint8_t* p, V (&c)[4]) {
  constexpr int kSize = kElementBytes<V>;
  if constexpr (kPermutesTwo) {
    U8 v[4];
    for (int k = 0; k < 4; ++k) v[k] = load<U8>(p + k * kLanes);
    const Bytes2 first =
        halves_together(two_apart<kSize, 4, 0>(v[0], v[1]), two_apart<kSize, 4, 0>(v[2], v[3]));
    const Bytes2 second =
        halves_together(two_apart<kSize, 4, 2>(v[0], v[1]), two_apart<kSize, 4, 2>(v[2], v[3]));
    c[0] = V(first.lo);
    c[1] = V(first.hi);
    c[2] = V(second.lo);
    c[3] = V(second.hi);
  } else if constexpr (kShufflesBytes) {
    U32 v[4];
    for (int k = 0; k < 4; ++k) v[k] = U32(load_by_channel<kSize, 4>(p, k));
    const auto a = interleave(v[0], v[1]), b = interleave(v[2], v[3]);
    const auto first = interleave(U64(a.lo), U64(b.lo)), second = interleave(U64(a.hi), U64(b.hi));
    c[0] = V(first.lo);
    c[1] = V(first.hi);
    c[2] = V(second.lo);
    c[3] = V(second.hi);
  } else {
    V even[2], odd[2];  // channels 0 and 2, 1 and 3
    for (int i = 0; i < 2; ++i, p += 2 * kLanes) {
      const V v0 = load<V>(p), v1 = load<V>(p + kLanes);
      even[i] = evens(v0, v1);
      odd[i] = odds(v0, v1);
    }
    c[0] = evens(even[0], even[1]);
    c[1] = evens(odd[0], odd[1]);
    c[2] = odds(even[0], even[1]);
    c[3] = odds(odd[0], odd[1]);
  }
}

template <class To, class V>
LUM_INLINE void together(To p, const V (&c)[2]) {
  store(p, zip(c[0], c[1]));
}
template <class To, class V>
LUM_INLINE void together(To p, const V (&c)[3]) {
  store3(p, c[0], c[1], c[2]);
}
template <class To, class V>
LUM_INLINE void together(To p, const V (&c)[4]) {
  const auto even = zip(c[0], c[2]), odd = zip(c[1], c[3]);
  store(p, zip(even.lo, odd.lo));
  store(p + 2 * kLanes, zip(even.hi, odd.hi));
}

template <class V, int channels, bool all>
LUM_INLINE void split_blocks(uint8_t* const* to, const uint8_t* src, size_t n) {
  constexpr size_t kSample = kElementBytes<V>, kPixel = kSample * channels;
  uint8_t* planes[channels];  // stores of bytes might change those that are not this function's own
  for (int i = 0; i < channels; ++i) planes[i] = to[i];
  over_row(n, kLanes / kSample, [&](size_t x) {
    for (size_t line = 0; line < kLanes * channels; line += 64) {
      prefetch_read(src + x * kPixel + line);
    }
    V c[channels];
    apart(src + x * kPixel, c);
    for (int i = 0; i < channels; ++i) {
      if (all || planes[i] != nullptr) store_moved(planes[i] + x * kSample, c[i]);
    }
  });
}
template <int channels>
LUM_INLINE bool all_present(const uint8_t* const* planes) {
  bool all = true;
  for (int i = 0; i < channels; ++i) all = all && planes[i] != nullptr;
  return all;
}
template <class V, int channels>
void split(uint8_t* const* planes, const uint8_t* src, size_t n) {
  constexpr size_t kSample = kElementBytes<V>, kPixel = kSample * channels;
  constexpr size_t kStep = kLanes / kSample;
  if (n < kStep) {
    V c[channels];
    uint8_t in[kStep * kPixel] = {};
    memcpy(in, src, n * kPixel);
    apart(in, c);
    for (int i = 0; i < channels; ++i) {
      if (planes[i] != nullptr) memcpy(planes[i], &c[i], n * kSample);
    }
    return;
  }
  if (all_present<channels>(planes)) {
    split_blocks<V, channels, true>(planes, src, n);
  } else {
    split_blocks<V, channels, false>(planes, src, n);
  }
}

// Past the cache, a line of each plane at a time: see PastCache.
template <class V, int channels>
size_t streamed_split(uint8_t* const* to, const uint8_t* src, size_t n) {
  constexpr size_t kSample = kElementBytes<V>, kPixel = kSample * channels;
  constexpr size_t kVectors = kCacheLine / kLanes, kLinePixels = kCacheLine / kSample;
  uint8_t* planes[channels];
  for (int i = 0; i < channels; ++i) planes[i] = to[i];
  const size_t count = n / kStreamedGroup * kStreamedGroup;
  for (size_t x = 0; x < count; x += kLinePixels) {
    const uint8_t* const from = src + x * kPixel;
    for (size_t line = 0; line < kCacheLine * channels; line += kCacheLine) {
      prefetch_read(from + line);
    }
    V c[kVectors][channels];
    for (size_t k = 0; k < kVectors; ++k) apart(from + k * kLanes * channels, c[k]);
    for (int i = 0; i < channels; ++i) {
      for (size_t k = 0; k < kVectors; ++k) {
        store(PastCache{planes[i] + x * kSample + k * kLanes}, c[k][i]);
      }
    }
  }
  return count;
}

// Components without a plane are stored as they were read from dst.
template <class V, int channels, bool all, class To>
LUM_INLINE void join_block(To to, const uint8_t* const* planes, size_t at) {
  V c[channels];
  if constexpr (!all) apart(to, c);
  for (int i = 0; i < channels; ++i) {
    if (all || planes[i] != nullptr) c[i] = load<V>(planes[i] + at);
  }
  together(to, c);
}
template <class V, int channels, bool all>
LUM_INLINE void join_blocks(uint8_t* dst, const uint8_t* const* planes, size_t n) {
  constexpr size_t kSample = kElementBytes<V>, kPixel = kSample * channels;
  over_row(n, kLanes / kSample, [&](size_t x) {
    uint8_t* const p = dst + x * kPixel;
    for (size_t line = 0; line < kLanes * channels; line += 64) prefetch_write(p + line);
    join_block<V, channels, all>(p, planes, x * kSample);
  });
}
template <class V, int channels>
void join(uint8_t* dst, const uint8_t* const* planes, size_t n) {
  constexpr size_t kSample = kElementBytes<V>, kPixel = kSample * channels;
  constexpr size_t kStep = kLanes / kSample;
  if (n < kStep) {
    V c[channels];
    uint8_t out[kStep * kPixel] = {};
    memcpy(out, dst, n * kPixel);
    apart(out, c);
    for (int i = 0; i < channels; ++i) {
      if (planes[i] != nullptr) memcpy(&c[i], planes[i], n * kSample);
    }
    together(&out[0], c);
    memcpy(dst, out, n * kPixel);
    return;
  }
  if (all_present<channels>(planes)) {
    join_blocks<V, channels, true>(dst, planes, n);
  } else {
    join_blocks<V, channels, false>(dst, planes, n);
  }
}
template <class V, int channels>
size_t streamed_join(uint8_t* dst, const uint8_t* const* planes, size_t n) {
  constexpr size_t kSample = kElementBytes<V>, kPixel = kSample * channels;
  const size_t count = streamed_pixels(n);
  for (size_t x = 0; x < count; x += kLanes / kSample) {
    join_block<V, channels, true>(PastCache{dst + x * kPixel}, planes, x * kSample);
  }
  return count;
}

// Sums of neighbouring bytes.
LUM_INLINE U16 sum_of_pairs(U8 v) { return U16(madd(v, I8(splat8(1)))); }

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
