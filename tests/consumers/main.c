/* SPDX-License-Identifier: MIT */
/* Converts one frame, so that a library which links but does not work is noticed. */
#include <lum/lum.h>
#include <stdio.h>
#include <string.h>

enum { kWidth = 40, kHeight = 2 };

int main(void) {
  static uint8_t mosaic[kWidth * kHeight], bgr[kWidth * kHeight * 3];
  LumImage source = {0}, destination = {0};
  uint32_t version = 0;
  size_t i;

  source.size = destination.size = sizeof(LumImage);
  source.data = mosaic;
  destination.data = bgr;
  memset(mosaic, 77, sizeof mosaic);
  if (LumSetImageInfoFromPixelFormat(LumPixelFormatBayerRG8, kWidth, kHeight, &source) != 0 ||
      LumSetImageInfoFromString("BGR24", 5, kWidth, kHeight, &destination) != 0 ||
      LumImageTransform(&source, &destination, NULL, 0) != LumErrorSuccess ||
      LumGetVersion(&version) != LumErrorSuccess) {
    return 1;
  }
  for (i = 0; i < sizeof bgr; ++i) {
    if (bgr[i] != 77) return 2;
  }
  printf("Lum %08x\n", (unsigned)version);
  return 0;
}
