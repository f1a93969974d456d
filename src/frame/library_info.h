// SPDX-License-Identifier: MIT
#ifndef LUM_FRAME_LIBRARY_INFO_H
#define LUM_FRAME_LIBRARY_INFO_H

#include <stdint.h>

#include "lum/lum.h"

namespace lum {

// The modern result that stands for a legacy one, for functions of the modern interface that ask an
// older worker.
LumErrorType to_modern_result(uint32_t legacy);

}  // namespace lum

#endif
