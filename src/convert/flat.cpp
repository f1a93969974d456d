// SPDX-License-Identifier: MIT
#include "convert/flat.h"

#include <string.h>

#include "row_writer.h"

namespace lum {

void copy_block(uint8_t* dst, const uint8_t* src, size_t bytes) {
  if (dst != src) memcpy(dst, src, bytes);
}

void convert_flat(const Kernels& kernels, Source source, Sink sink, uint8_t* dst,
                  const uint8_t* src, uint32_t count, const RowArgs& given) {
  if (count == 0) return;
  RowArgs args = given;
  const size_t read = row_bytes(source, count), moved = read + count * pixel_bytes(sink);
  args.beyond_cache = is_streamed(kernels, moved) ? 1 : 0;
  if (moved <= kPrefetchAbove) {
    // A line of which bytes stay is waited for, so what kPrefetchesKept says of it and of what it
    // is made of is fetched a few lines ahead all the same. Narrow sources have no alpha for pixels
    // of four bytes.
    const ptrdiff_t near = pixel_bytes(sink) == 4 ? kNearPrefetch : 0;
    const bool narrow = read <= size_t{count} * 2;  // three bytes and more come too slowly
    args.write_ahead = narrow ? near : 0;
    if (narrow) args.ahead_of_a = near;
  }
  const RowKernel kernel = kernels.at(source, sink);
  if (kernel != nullptr && dst == src) {
    kernel(dst, src, nullptr, count, args);
  } else if (kernel != nullptr) {
    RowWriter write(kernels, source, sink, read, count);
    if (write.streams()) args.ahead_of_a = kernels.streamed_ahead;
    write(dst, src, nullptr, count, args);
  } else {
    copy_block(dst, src, read);
  }
}

void mono8_to_uyvy(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t count) {
  const uint32_t paired = count & ~1u;
  convert_flat(kernels, Source::mono8, Sink::uyvy, dst, src, paired);
  if (count == paired) return;
  uint8_t* const group = dst + size_t{paired} * 2;
  group[0] = 0;
  group[1] = src[paired];
  group[2] = 0;
}

void mono16_little_endian_tinted(const Kernels& kernels, Sink sink, uint8_t* dst,
                                 const uint8_t* src, uint32_t count) {
  // No tint reaches grey bytes.
  if (sink == Sink::mono8_rec601 || sink == Sink::mono8_rec709) {
    convert_flat(kernels, Source::mono16_second, sink, dst, src, count);
    return;
  }
  // Kept: a pixel's high byte is tinted by the byte that follows it, the next pixel's low byte.
  // That is the big-endian conversion of the source from its second byte on; the last pixel has no
  // follower and is not tinted.
  const uint32_t followed = count - 1;
  convert_flat(kernels, Source::mono16_tinted, sink, dst, src + 1, followed);
  const uint8_t last[2] = {src[size_t{followed} * 2 + 1], 0};
  convert_flat(kernels, Source::mono16_tinted, sink, dst + followed * pixel_bytes(sink), last, 1);
}

}  // namespace lum
