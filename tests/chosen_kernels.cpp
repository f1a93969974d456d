// SPDX-License-Identifier: MIT
#include "chosen_kernels.h"

#include "levels.h"

namespace lum::test {

const Kernels* chosen_kernels = nullptr;

std::vector<NamedKernels> all_kernels() {
  std::vector<NamedKernels> all;
  for (const TestedLevel& level : tested_levels()) {
    if (level.kernels == nullptr) continue;
    for (const bool streamed : {false, true}) {
      all.push_back({level.name + std::string(streamed ? ", streamed" : ""), *level.kernels});
      all.back().kernels.stream_above = streamed ? 1 : SIZE_MAX;
    }
  }
  return all;
}

// The names that the linker gives lum::kernels() and what is called for it.
const Kernels& own_kernels() asm("__real__ZN3lum7kernelsEv");
const Kernels& kernels_for_entries() asm("__wrap__ZN3lum7kernelsEv");
const Kernels& kernels_for_entries() {
  return chosen_kernels != nullptr ? *chosen_kernels : own_kernels();
}

}  // namespace lum::test
