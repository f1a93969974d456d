// SPDX-License-Identifier: MIT
// Entry points with the kernels of any level. The linker puts this in the place of lum::kernels(),
// so that the library needs no switch.
#ifndef LUM_TESTS_CHOSEN_KERNELS_H
#define LUM_TESTS_CHOSEN_KERNELS_H

#include <stdint.h>

#include <string>
#include <vector>

#include "simd/kernel_table.h"

namespace lum::test {

// Null for those that the library chooses. Not to be changed while a conversion runs.
extern const Kernels* chosen_kernels;

struct NamedKernels {
  std::string name;
  Kernels kernels;
};
// Every level that can be tested here, as it is for small frames and with all that can be streamed
// being streamed.
std::vector<NamedKernels> all_kernels();

}  // namespace lum::test

#endif
