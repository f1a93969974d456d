// SPDX-License-Identifier: MIT
// What the fuzzers share: a call of the library whose arguments were made of the fuzzer's bytes,
// made by the kernels of some level, in buffers that end where lum.h says, and compared with the
// per-pixel reference.
#ifndef LUM_FUZZ_HARNESS_H
#define LUM_FUZZ_HARNESS_H

#include <fuzzer/FuzzedDataProvider.h>
#include <stddef.h>
#include <stdint.h>

#include <functional>
#include <string>

namespace lum::fuzz {

using Input = FuzzedDataProvider;

// True nine times out of ten, and when the input is at its end.
inline bool mostly(Input& in) { return in.ConsumeIntegralInRange<uint8_t>(0, 9) != 9; }

struct Call {
  std::string what;  // function and arguments, for the report
  // What the call may read and write when it succeeds, from src and dst on.
  size_t src_bytes = 0, dst_bytes = 0;
  bool in_place = false;  // dst is src
  std::function<uint32_t(uint8_t* dst, const uint8_t* src)> run;
  // What run() has to return, after writing what it has to. It may call the library, and gets level
  // base then.
  std::function<uint32_t(uint8_t* dst, const uint8_t* src)> expected;
};

// Aborts, so that the fuzzer keeps the input, when the call returns or writes anything else. Reads
// elsewhere end at an inaccessible page. Level, place and contents of the buffers go by all bytes
// of the input, and change with each of them: as arguments they would all be short of being tried,
// since a fuzzer keeps the shortest inputs.
void check(const Call& call, const uint8_t* data, size_t size);

// Aborts with a message.
[[noreturn]] void fail(const std::string& what);

// "name(1, 2)", of numbers.
template <class... Numbers>
std::string describe(const char* name, Numbers... numbers) {
  std::string out = name;
  const char* before = "(";
  ((out += before + std::to_string(numbers), before = ", "), ...);
  return out + ")";
}

}  // namespace lum::fuzz

#endif
