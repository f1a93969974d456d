// SPDX-License-Identifier: MIT
#include "mirrored_rows.h"

namespace lum {

void copy_bytes(uint8_t* to, const uint8_t* from, size_t bytes) { memcpy(to, from, bytes); }

}  // namespace lum
