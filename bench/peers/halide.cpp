// SPDX-License-Identifier: MIT
// What a compiler makes of the formulas in docs/arithmetic.md: pipelines for the processor at hand,
// vectorised, on one thread.
#include <Halide.h>

#include "peers/peers.h"

namespace lum::bench {
namespace {

using Halide::cast;
using Halide::clamp;
using Halide::Expr;
using Halide::Func;
using Halide::likely;
using Halide::min;
using Halide::select;
using Halide::Var;

Expr u16(const Expr& e) { return cast<uint16_t>(e); }
Expr i16(const Expr& e) { return cast<int16_t>(e); }
Expr i32(const Expr& e) { return cast<int32_t>(e); }
Expr u8(const Expr& e) { return cast<uint8_t>(e); }
Expr to_byte(const Expr& e) { return u8(clamp(e, 0, 255)); }

// The source's bytes, and the pixel to compute.
struct At {
  Halide::ImageParam in;
  Var x, y;
  Expr width, height;  // pixels
};

using Channels = std::vector<Expr>;

struct Rgb {
  Expr r, g, b;
};

Channels bgr(const Rgb& c) { return {c.b, c.g, c.r}; }
Channels rgb(const Rgb& c) { return {c.r, c.g, c.b}; }
Channels rec601(const Rgb& c) {
  return {u8((u16(c.r) * 77 + u16(c.g) * 150 + u16(c.b) * 29) >> 8)};
}

// Columns and rows that are even, and a block's place: the last column and row repeat the block
// before them.
struct Block {
  explicit Block(const At& a)
      : x(min(likely(a.x), a.width - 2)), y(min(likely(a.y), a.height - 2)) {}
  Expr x, y;
};

Rgb blocks(const At& a, Expr (*sample)(const At&, const Expr& x, const Expr& y)) {
  const Block at(a);
  const Expr even_x = at.x % 2 == 0, even_y = at.y % 2 == 0;
  const Expr z00 = sample(a, at.x, at.y), z10 = sample(a, at.x + 1, at.y);
  const Expr z01 = sample(a, at.x, at.y + 1), z11 = sample(a, at.x + 1, at.y + 1);
  // Of either row the sample of its even column, and that of its odd column.
  const Expr even0 = select(even_x, z00, z10), odd0 = select(even_x, z10, z00);
  const Expr even1 = select(even_x, z01, z11), odd1 = select(even_x, z11, z01);
  const Expr green = u16(select(even_y, odd0, even0)) + u16(select(even_y, even1, odd1));
  return {select(even_y, even0, even1), u8(green >> 1), select(even_y, odd1, odd0)};
}
Rgb bayer8(const At& a) {
  return blocks(a, [](const At& at, const Expr& x, const Expr& y) -> Expr { return at.in(x, y); });
}
Rgb bayer12p(const At& a) {  // the middle byte of three has the low bits
  return blocks(a, [](const At& at, const Expr& x, const Expr& y) -> Expr {
    return at.in(x / 2 * 3 + x % 2 * 2, y);
  });
}

Rgb yuv422(const At& a) {
  const Expr pair = a.x / 2 * 4;
  const Expr y = i16(a.in(a.x * 2 + 1, a.y));
  const Expr u = i16(a.in(pair, a.y)) - 128, v = i16(a.in(pair + 2, a.y)) - 128;
  // 359 = 256 + 103, 183 = 256 - 73, 454 = 512 - 58: sums of 16 bits
  return {to_byte(y + v + ((v * 103 + 128) >> 8)), to_byte(y - v - ((u * 88 - v * 73 + 128) >> 8)),
          to_byte(y + u * 2 + ((128 - u * 58) >> 8))};
}

Rgb rgb24(const At& a) {
  return {a.in(a.x * 3, a.y), a.in(a.x * 3 + 1, a.y), a.in(a.x * 3 + 2, a.y)};
}
Rgb bgr24(const At& a) {
  const Rgb c = rgb24(a);
  return {c.b, c.g, c.r};
}

Rgb corrected(const Rgb& c) {
  const auto row = [&](int i) {
    const int32_t* const m = kMatrixTimes1024 + 3 * i;
    return to_byte((i32(c.r) * m[0] + i32(c.g) * m[1] + i32(c.b) * m[2]) >> 10);
  };
  return {row(0), row(1), row(2)};
}

// Fields: lines 4 i + 1 (G, Mg), 4 i + 3 (Mg, G) first, then the even lines (Cy, Ye).
Rgb cygm(const At& a) {
  const Block at(a);
  const Expr even = at.y + at.y % 2, odd = at.y + 1 - at.y % 2;
  const auto second = [&](int dx) { return a.in(at.x + dx, a.height / 2 + even / 2); };
  const auto first = [&](int dx) { return a.in(at.x + dx, odd / 2); };
  const Expr even_x = at.x % 2 == 0, green_even = (odd % 4 == 1) == even_x;
  const Expr cyan = i16(select(even_x, second(0), second(1)));
  const Expr yellow = i16(select(even_x, second(1), second(0)));
  const Expr green = i16(select(green_even, first(0), first(1)));
  const Expr magenta = i16(select(green_even, first(1), first(0)));
  const auto quarter = [](const Expr& e) { return i32((e + select(e < 0, i16(3), i16(0))) >> 2); };
  const Expr y = i32((cyan + yellow + green + magenta) >> 2) * 1024;
  const Expr cr = quarter(yellow + magenta - cyan - green);
  const Expr cb = quarter(cyan + magenta - yellow - green);
  return {to_byte((y + cr * 2165 + cb * 344) >> 10), to_byte((y - cr * 917 - cb * 1078) >> 10),
          to_byte((y - cr * 959 + cb * 4645) >> 10)};
}

struct Pipeline {
  const char* row;
  Rgb (*source)(const At& at);
  Channels (*sink)(const Rgb& colour);
  int vector;  // pixels
};
constexpr Pipeline kPipelines[] = {
    {"bayer8-to-bgr24", bayer8, bgr, 32},
    {"bayer8-to-rgb24", bayer8, rgb, 32},
    {"bayer8-to-mono8_rec601", bayer8, rec601, 32},
    {"bayer12p-to-bgr24", bayer12p, bgr, 32},
    {"yuv422-to-bgr24", yuv422, bgr, 32},
    {"rgb24-to-bgr24", rgb24, bgr, 16},
    {"rgb24-to-mono8_rec601", rgb24, rec601, 32},
    {"bgr24-matrix-to-bgr24", [](const At& a) { return corrected(bgr24(a)); }, bgr, 16},
    {"bayer8-matrix-to-bgr24", [](const At& a) { return corrected(bayer8(a)); }, bgr, 16},
    {"cygm-to-bgr24", cygm, bgr, 16},
    {"cygm-to-mono8_rec601", cygm, rec601, 16},
};

const Row& row_named(const std::string& name) {
  static const std::vector<Row> rows = all_rows();
  for (const Row& row : rows) {
    if (row.name == name) return row;
  }
  throw std::runtime_error("no row " + name);
}

Conversion prepare(const Pipeline& p, int width, int height) {
  using Halide::Target;
  const Row& row = row_named(p.row);
  const int src_row =
      width / static_cast<int>(row.group_pixels) * static_cast<int>(row.group_bytes);
  At at = {{Halide::UInt(8), 2}, Var("x"), Var("y"), width, height};
  at.in.dim(0).set_bounds(0, src_row);
  at.in.dim(1).set_bounds(0, height).set_stride(src_row);

  const Channels channels = p.sink(p.source(at));
  const int count = static_cast<int>(channels.size());
  Var c("c");
  Func out("out");
  out(c, at.x, at.y) = Halide::mux(c, channels);
  out.reorder(c, at.x, at.y).bound(c, 0, count).unroll(c).vectorize(at.x, p.vector);
  auto buffer = out.output_buffer();
  buffer.dim(0).set_bounds(0, count);
  buffer.dim(1).set_bounds(0, width).set_stride(count);
  buffer.dim(2).set_bounds(0, height).set_stride(width * count);
  const Target target =
      Halide::get_host_target().with_feature(Target::NoAsserts).with_feature(Target::NoBoundsQuery);
  out.compile_jit(target);
  const halide_dimension_t from[] = {{0, src_row, 1}, {0, height, src_row}};
  const halide_dimension_t to[] = {{0, count, 1}, {0, width, count}, {0, height, width * count}};
  return [=, in = at.in](uint8_t* dst, uint8_t* src) mutable {
    in.set(Halide::Buffer<uint8_t>(src, 2, from));
    Halide::Buffer<uint8_t> made(dst, 3, to);
    out.realize(made, target);
  };
}

}  // namespace

PeerLibrary halide() {
  PeerLibrary library = {"Halide", "14", {}};
  for (const Pipeline& p : kPipelines) {
    library.peers.push_back({p.row, "pipeline", "", [p](uint32_t width, uint32_t height) {
                               return prepare(p, static_cast<int>(width), static_cast<int>(height));
                             }});
  }
  return library;
}

}  // namespace lum::bench
