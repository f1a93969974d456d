// SPDX-License-Identifier: MIT
// A level's table of the kernels of planes, depth and geometry.
namespace lum {
namespace LUM_LEVEL {
namespace {

template <int most>
constexpr void add_flips(DirectKernels& k) {
  k.reverse[most] = reverse<decltype(reversal<most>())>;
  if constexpr (kStreams && kFillsVectors<most>) k.streamed_reverse[most] = streamed_reverse<most>;
  k.transpose[most] = transposition<most>();
  if constexpr (most > 1) add_flips<most - 1>(k);
}

template <int sample_bytes, int channels, int most>
constexpr void add_means(DirectKernels& k) {
  k.bin[sample_bytes - 1][channels - 1][most] = bin_row<sample_bytes, most, channels>;
  if constexpr (most > 1) add_means<sample_bytes, channels, most - 1>(k);
}

template <class V, int channels>
constexpr void add_join(DirectKernels& k) {
  constexpr size_t kSample = kElementBytes<V> - 1;
  k.join[kSample][channels - 2] = join<V, channels>;
  if constexpr (kStreams) k.streamed_join[kSample][channels - 2] = streamed_join<V, channels>;
}

template <class From>
constexpr void add_unpacking(DirectKernels& k, int packing) {
  using Packed = Unpacked<From>;
  k.unpack[packing] = row<Packed, Mono16<Rec601>>;
  if constexpr (kStreams) k.streamed_unpack[packing] = streamed_row<Packed, Mono16<Rec601>>;
}

template <class V, int channels>
constexpr void add_split(DirectKernels& k) {
  constexpr size_t kSample = kElementBytes<V> - 1;
  k.split[kSample][channels - 2] = split<V, channels>;
  if constexpr (kStreams) k.streamed_split[kSample][channels - 2] = streamed_split<V, channels>;
}

template <class Layout>
using StudioSource = Either<kAddsProducts, StudioProductsSource<Layout>, StudioYuvSource<Layout>>;
template <class From>
constexpr void add_studio(DirectKernels& k, int layout) {
  k.studio_to_bgr24[layout] = row<From, Packed24<true>>;
  if constexpr (kStreams) k.streamed_studio_to_bgr24[layout] = streamed_row<From, Packed24<true>>;
}

template <class V, int most>
constexpr void add_steps(DirectKernels& k) {
  constexpr int kSample = kElementBytes<V> / 2;
  k.pick_in_steps[kSample * most] = pick_in_steps<kSample * most>;
  k.mix_in_steps[kSample - 1][most - 1] = mix_in_steps<V, most>;
  if constexpr (most > 1) add_steps<V, most - 1>(k);
}

constexpr void add_resampling(DirectKernels& k) {
  k.pick = pick;
  static_assert(kSpanBytes >= kLeastSpan && kSpanBytes <= kMostSpan, "room in a plan");
  k.pick_span = kSpanBytes;
  k.mix_pairs[0] = mix8_picked<PickedPairs>;
  k.mix_pairs[1] = mix16_picked<PickedPairs>;
  k.mix_apart[0] = mix8_picked<PickedApart>;
  k.mix_apart[1] = mix16_picked<PickedApart>;
  add_steps<U16, kMaxChannels>(k);
  add_steps<U32, kMaxChannels>(k);
}

// Past the cache by levels whose arithmetic is fast enough for memory to be the limit.
template <class From>
constexpr bool kStreamsI420 = kLanes == 64;
template <class Layout>
constexpr bool kStreamsI420<YuvTo420<Layout>> = true;
template <>
constexpr bool kStreamsI420<Yuv444To420> = true;
template <class From>
constexpr void add_i420(DirectKernels& k, size_t layout) {
  k.i420[layout] = i420<From>;
  if constexpr (kStreams && kStreamsI420<From>) k.streamed_i420[layout] = streamed_i420<From>;
}

constexpr DirectKernels make_direct_kernels() {
  DirectKernels k{};
  add_studio<StudioSource<Yuv411Layout>>(k, 0);
  add_studio<StudioSource<Yuv422Layout>>(k, 1);
  add_studio<Either<kAddsProducts, StudioProducts444<Yuv444Layout>, StudioYuv444>>(k, 2);

  k.gray_to_studio = row<StudioGray, Mono8<Rec601>>;
  if constexpr (kStreams) k.streamed_gray_to_studio = streamed_row<StudioGray, Mono8<Rec601>>;
  add_i420<Rgb24To420<false>>(k, 4);
  add_i420<Rgb24To420<true>>(k, 5);
  add_i420<Rgba32To420<false>>(k, 6);
  add_i420<Rgba32To420<true>>(k, 7);
  add_i420<YuvTo420<Yuv411Layout>>(k, 8);
  add_i420<YuvTo420<Yuv422Layout>>(k, 9);
  add_i420<Yuv444To420>(k, 10);

  add_split<U8, 2>(k);
  add_split<U8, 3>(k);
  add_split<U8, 4>(k);
  add_split<U16, 2>(k);
  add_split<U16, 3>(k);
  add_split<U16, 4>(k);
  add_join<U8, 2>(k);
  add_join<U8, 3>(k);
  add_join<U8, 4>(k);
  add_join<U16, 2>(k);
  add_join<U16, 3>(k);
  add_join<U16, 4>(k);

  add_unpacking<GigE12>(k, 0);
  add_unpacking<GigE10>(k, 1);
  add_unpacking<Pfnc12>(k, 2);
  add_unpacking<Pfnc10>(k, 3);
  add_unpacking<Mipi12>(k, 4);
  add_unpacking<Mipi10>(k, 5);
  k.words_to_bytes = row<SaturatedWords, Mono8<Rec601>, true>;
  if constexpr (kStreams) k.streamed_words_to_bytes = streamed_row<SaturatedWords, Mono8<Rec601>>;

  add_flips<kMaxPixelBytes>(k);
  k.stream_rows = stream_rows;

  add_means<1, 1, 4>(k);
  add_means<2, 1, 4>(k);
  k.bin[0][0][0] = bin_row<1, 0, 1>;
  k.bin[0][1][1] = bin_row<1, 1, 2>;
  k.bin[0][2][1] = bin_row<1, 1, 3>;
  k.bin[0][3][1] = bin_row<1, 1, 4>;
  k.bin[1][1][1] = bin_row<2, 1, 2>;
  k.add8 = add<Samples8>;
  k.add16 = add<Samples16>;
  k.add8_pairs = add<Pairs8>;
  k.add16_pairs = add<Pairs16>;
  k.add_sums16 = add_sums<U16, uint16_t>;
  k.add_sums32 = add_sums<U32, uint32_t>;
  k.halve16 = halve16;
  k.halve32 = halve32;
  k.divide8 = divide8;
  k.divide16 = divide16;
  if constexpr (kShufflesBytes) add_resampling(k);
  k.mix8 = mix8;
  k.mix16 = mix16;
  k.mix8_evenly = mix8_evenly;
  k.mix16_evenly = mix16_evenly;
  return k;
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
