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
  info->transformType = LumTransformTypeColorCorrectionMatrix;
  // The matrix fills the parameter. A caller may hand in the matrix of the entry itself.
  memmove(info->parameter.matrix, matrix, sizeof info->parameter.matrix);
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
