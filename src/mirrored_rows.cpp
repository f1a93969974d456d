// SPDX-License-Identifier: MIT
#include "mirrored_rows.h"

namespace lum {

// What memcpy() does with a few thousand bytes may be a string instruction, and that waits until
// all that is being streamed has reached memory: so many go by moves of one length.
void copy_bytes(uint8_t* to, const uint8_t* from, size_t bytes) {
  constexpr size_t kMove = 64, kFew = 2000;
  if (bytes > kFew) {
    const size_t last = bytes - kMove;
    for (size_t i = 0; i < last; i += kMove) memcpy(to + i, from + i, kMove);
    memcpy(to + last, from + last, kMove);
    return;
  }
  memcpy(to, from, bytes);
}

}  // namespace lum
