// SPDX-License-Identifier: MIT
// Filling the entries of a transform-parameter array. Bytes of an entry that a setter does not
// define are zeroed, so that equal settings are equal bytes.
#include <string.h>

#include "lum/lum.h"

int32_t LumSetDebayerMode(uint32_t mode, LumTransformInfo* info) {
  if (info == nullptr) return LumErrorBadParameter;
  memset(info, 0, sizeof *info);
  info->transformType = LumTransformTypeDebayerMode;
  info->parameter.debayerMode = mode;
  return LumErrorSuccess;
}

int32_t LumSetColorCorrectionMatrix3x3(const float* matrix, LumTransformInfo* info) {
  if (matrix == nullptr || info == nullptr) return LumErrorBadParameter;
  // The matrix fills the parameter. It may lie in the entry, so it is moved before the type is set.
  memmove(info->parameter.matrix, matrix, sizeof info->parameter.matrix);
  info->transformType = LumTransformTypeColorCorrectionMatrix;
  return LumErrorSuccess;
}

// Kept: the entry comes first, unlike in the other two setters.
int32_t LumSetGammaCorrection(LumTransformInfo* info, float gamma) {
  if (info == nullptr) return LumErrorBadParameter;
  memset(info, 0, sizeof *info);
  info->transformType = LumTransformTypeGammaCorrection;
  info->parameter.gamma = gamma;
  return LumErrorSuccess;
}
