// SPDX-License-Identifier: MIT
// The loops for one vector size. Included once for each, with
//   LUM_ROOF_LEVEL   the name of the namespace, in which stream() and store_three() are declared
//   LUM_ROOF_TARGET  the function attribute that permits its instructions
//   LUM_ROOF_BYTES   bytes in a vector
//
// A step reads R vectors and writes W: for 8-bit mosaics to 24 bits, for instance, 1 and 3. What is
// written is made of everything that was read, so that no load can be left out.
namespace lum::bench {
namespace LUM_ROOF_LEVEL {
namespace {

template <Stores kStores>
LUM_ROOF_TARGET inline __attribute__((always_inline)) void put(uint8_t* to, const V& v) {
  if constexpr (kStores == Stores::streamed) {
    stream(to, v);
  } else if constexpr (kStores == Stores::three_of_four) {
    store_three(to, v);
  } else {
    __builtin_memcpy(to, &v, sizeof(V));
  }
}

template <unsigned R, unsigned W, Stores kStores, size_t kAhead>
LUM_ROOF_TARGET void steps(uint8_t* dst, const uint8_t* src, size_t count) {
  _Pragma("GCC unroll 4") for (size_t step = 0; step < count; ++step) {
    V in[R];
    _Pragma("GCC unroll 8") for (unsigned r = 0; r < R; ++r) {
      if constexpr (kAhead > 0) __builtin_prefetch(src + r * sizeof(V) + kAhead);
      __builtin_memcpy(&in[r], src + r * sizeof(V), sizeof(V));
      asm("" : "+x"(in[r]));  // so that the loop does not become a call of memcpy
    }
    _Pragma("GCC unroll 8") for (unsigned w = 0; w < W; ++w) {
      // Streamed stores go past the caches; to fetch what they overwrite would double the traffic.
      if constexpr (kAhead > 0 && kStores != Stores::streamed) {
        __builtin_prefetch(dst + w * sizeof(V) + kAhead, 1);
      }
      V out = in[w % R];
      _Pragma("GCC unroll 8") for (unsigned r = w + W; r < R; r += W) out ^= in[r];
      put<kStores>(dst + w * sizeof(V), out);
    }
    src += R * sizeof(V);
    dst += W * sizeof(V);
  }
}

template <unsigned R, unsigned W, Stores kStores, size_t kAhead>
void loop(uint8_t* dst, const uint8_t* src, const Traffic& traffic) {
  const size_t count = traffic.read / (R * sizeof(V));
  steps<R, W, kStores, kAhead>(dst, src, count);
  finish({dst, src}, traffic, count * R * sizeof(V), count * W * sizeof(V));
}

template <unsigned R, unsigned W>
void add_ratio(std::vector<Loop>& loops, const Traffic& t, const std::string& name) {
  if (t.read * W != t.written * R) return;
  if constexpr (W % 2 == 0) {  // the ratios of 32-bit destinations
    if (t.keeps_fourth) {
      loops.push_back({name, loop<R, W, Stores::three_of_four, 0>});
      loops.push_back({name + " prefetched", loop<R, W, Stores::three_of_four, kNear>});
      return;
    }
  }
  loops.push_back({name, loop<R, W, Stores::plain, 0>});
  loops.push_back({name + " prefetched", loop<R, W, Stores::plain, kNear>});
  if (kStreams && !t.in_place) {
    loops.push_back({name + " streamed", loop<R, W, Stores::streamed, kNear>});
    loops.push_back({name + " streamed far", loop<R, W, Stores::streamed, kFar>});
  }
}

void add_loops(std::vector<Loop>& loops, const Traffic& t) {
  const std::string name = std::to_string(sizeof(V)) + "-byte";
  add_ratio<1, 1>(loops, t, name);
  add_ratio<1, 2>(loops, t, name);
  add_ratio<1, 3>(loops, t, name);
  add_ratio<1, 4>(loops, t, name);
  add_ratio<2, 1>(loops, t, name);
  add_ratio<2, 3>(loops, t, name);
  add_ratio<3, 1>(loops, t, name);
  add_ratio<3, 2>(loops, t, name);
  add_ratio<3, 4>(loops, t, name);
  add_ratio<3, 8>(loops, t, name);
  add_ratio<4, 1>(loops, t, name);
  add_ratio<4, 3>(loops, t, name);
  add_ratio<5, 8>(loops, t, name);
  add_ratio<8, 3>(loops, t, name);
}

}  // namespace
}  // namespace LUM_ROOF_LEVEL
}  // namespace lum::bench
