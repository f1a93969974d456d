// SPDX-License-Identifier: MIT
#include "picture_file.h"

#include <png.h>
#include <tiffio.h>

#include <algorithm>
#include <cctype>
#include <csetjmp>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <sstream>
#include <tiffio.hxx>

// After <cstdio>: the header uses FILE without including what declares it.
#include <jpeglib.h>
// After it, whose types it uses.
#include <jerror.h>

#include "failure.h"

namespace lum_tool {
namespace {

constexpr uint32_t kWiden = 257;  // 255 * 257 = 65535
constexpr uint32_t kMostPixelsPerSide = 65500;

void set_size(Picture& picture, uint64_t width, uint64_t height, uint32_t channels, uint32_t bits) {
  if (width == 0 || height == 0 || width > kMostPixelsPerSide || height > kMostPixelsPerSide)
    throw Failure("a picture of " + std::to_string(width) + "x" + std::to_string(height) +
                  " pixels is not supported (1 to " + std::to_string(kMostPixelsPerSide) +
                  " a side)");
  picture.width = static_cast<uint32_t>(width);
  picture.height = static_cast<uint32_t>(height);
  picture.channels = channels;
  picture.bits = bits;
  picture.samples.resize(width * height * channels);
}

// Rows as bytes or host-order words, as the picture's depth says.
Bytes packed_row(const Picture& picture, uint32_t y) {
  const size_t count = size_t{picture.width} * picture.channels;
  const uint16_t* from = picture.samples.data() + count * y;
  Bytes row(count * picture.bits / 8);
  if (picture.bits == 16)
    std::memcpy(row.data(), from, row.size());
  else
    std::transform(from, from + count, row.begin(), [](uint16_t v) { return uint8_t(v >> 8); });
  return row;
}

void unpack_row(Picture& picture, uint32_t y, const uint8_t* row) {
  const size_t count = size_t{picture.width} * picture.channels;
  uint16_t* to = picture.samples.data() + count * y;
  if (picture.bits == 16)
    std::memcpy(to, row, count * 2);
  else
    std::transform(row, row + count, to, [](uint8_t v) { return uint16_t(v * kWiden); });
}

// ---- PNG. libpng leaves by longjmp: the functions that call it own nothing with a destructor.

struct PngMemory {
  const Bytes* in = nullptr;
  size_t position = 0;
  Bytes* out = nullptr;
  std::string error;
};

void png_failed(png_structp png, png_const_charp text) {
  static_cast<PngMemory*>(png_get_error_ptr(png))->error = text;
  png_longjmp(png, 1);
}

void png_warned(png_structp, png_const_charp) {}

void png_take(png_structp png, png_bytep to, size_t count) {
  auto* memory = static_cast<PngMemory*>(png_get_io_ptr(png));
  if (memory->in->size() - memory->position < count) png_error(png, "the file ends early");
  std::memcpy(to, memory->in->data() + memory->position, count);
  memory->position += count;
}

void png_give(png_structp png, png_bytep from, size_t count) {
  auto* memory = static_cast<PngMemory*>(png_get_io_ptr(png));
  memory->out->insert(memory->out->end(), from, from + count);
}

void png_flushed(png_structp) {}

bool png_read_header(png_structp png, png_infop info) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_read_info(png, info);
  png_set_expand(png);
  if (png_get_bit_depth(png, info) == 16) png_set_swap(png);
  if (png_get_color_type(png, info) == PNG_COLOR_TYPE_GRAY_ALPHA) png_set_strip_alpha(png);
  png_set_interlace_handling(png);
  png_read_update_info(png, info);
  return true;
}

bool png_read_rows(png_structp png, png_bytepp rows) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_read_image(png, rows);
  return true;
}

bool png_write_all(png_structp png, png_infop info, const Picture& picture, png_bytepp rows) {
  if (setjmp(png_jmpbuf(png))) return false;
  const int colour = picture.channels == 1   ? PNG_COLOR_TYPE_GRAY
                     : picture.channels == 3 ? PNG_COLOR_TYPE_RGB
                                             : PNG_COLOR_TYPE_RGB_ALPHA;
  png_set_IHDR(png, info, picture.width, picture.height, static_cast<int>(picture.bits), colour,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  // A camera frame is noise to the compressor: higher levels cost time and gain a few percent.
  png_set_compression_level(png, 2);
  png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
  png_write_info(png, info);
  if (picture.bits == 16) png_set_swap(png);  // PNG words are big-endian
  png_write_image(png, rows);
  png_write_end(png, nullptr);
  return true;
}

std::vector<png_bytep> row_pointers(Bytes& pixels, uint32_t height) {
  std::vector<png_bytep> rows(height);
  for (uint32_t y = 0; y < height; ++y) rows[y] = pixels.data() + pixels.size() / height * y;
  return rows;
}

Picture decode_png(const Bytes& file) {
  PngMemory memory;
  memory.in = &file;
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &memory, png_failed, png_warned);
  png_infop info = png_create_info_struct(png);
  struct Closer {
    png_structp png;
    png_infop info;
    ~Closer() { png_destroy_read_struct(&png, &info, nullptr); }
  } closer{png, info};
  png_set_read_fn(png, &memory, png_take);
  if (!png_read_header(png, info)) throw Failure("PNG: " + memory.error);
  Picture picture;
  // Palettes with transparency and grey with a transparent value come out with alpha; grey keeps 1.
  uint32_t channels = png_get_channels(png, info);
  const uint32_t file_channels = channels;
  if (channels == 2) channels = 1;
  set_size(picture, png_get_image_width(png, info), png_get_image_height(png, info), channels,
           png_get_bit_depth(png, info));
  Bytes pixels(png_get_rowbytes(png, info) * picture.height);
  std::vector<png_bytep> rows = row_pointers(pixels, picture.height);
  if (!png_read_rows(png, rows.data())) throw Failure("PNG: " + memory.error);
  const size_t sample = picture.bits / 8;
  for (uint32_t y = 0; y < picture.height; ++y) {
    if (file_channels == 2)
      for (size_t x = 0; x < picture.width; ++x)
        std::memmove(rows[y] + x * sample, rows[y] + 2 * x * sample, sample);
    unpack_row(picture, y, rows[y]);
  }
  return picture;
}

Bytes encode_png(const Picture& picture) {
  Bytes pixels;
  pixels.reserve(picture.samples.size() * picture.bits / 8);
  for (uint32_t y = 0; y < picture.height; ++y) {
    const Bytes row = packed_row(picture, y);
    pixels.insert(pixels.end(), row.begin(), row.end());
  }
  std::vector<png_bytep> rows = row_pointers(pixels, picture.height);
  Bytes file;
  PngMemory memory;
  memory.out = &file;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &memory, png_failed, png_warned);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(png, &memory, png_give, png_flushed);
  const bool done = png_write_all(png, info, picture, rows.data());
  png_destroy_write_struct(&png, &info);
  if (!done) throw Failure("PNG: " + memory.error);
  return file;
}

// ---- TIFF

thread_local std::string tiff_error;

void tiff_failed(const char*, const char* format, va_list arguments) {
  char text[256];
  std::vsnprintf(text, sizeof text, format, arguments);
  tiff_error = text;
}

using Tiff = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

void listen_to_tiff() {
  tiff_error.clear();
  TIFFSetErrorHandler(tiff_failed);
  TIFFSetWarningHandler(nullptr);
}

Picture decode_tiff(const Bytes& file) {
  listen_to_tiff();
  std::istringstream stream(std::string(file.begin(), file.end()));
  Tiff tiff(TIFFStreamOpen("input", &stream), TIFFClose);
  if (!tiff) throw Failure("TIFF: " + tiff_error);
  uint32_t width = 0, height = 0;
  uint16_t bits = 0, channels = 0, planar = 0, photometric = 0;
  TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width);
  TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height);
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_BITSPERSAMPLE, &bits);
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, &channels);
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_PLANARCONFIG, &planar);
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_PHOTOMETRIC, &photometric);
  Picture picture;
  const bool plain = (bits == 8 || bits == 16) && planar == PLANARCONFIG_CONTIG &&
                     !TIFFIsTiled(tiff.get()) &&
                     ((photometric == PHOTOMETRIC_MINISBLACK && channels == 1) ||
                      (photometric == PHOTOMETRIC_RGB && (channels == 3 || channels == 4)));
  if (plain) {
    set_size(picture, width, height, channels, bits);
    Bytes row(static_cast<size_t>(TIFFScanlineSize(tiff.get())));
    for (uint32_t y = 0; y < height; ++y) {
      if (TIFFReadScanline(tiff.get(), row.data(), y, 0) != 1) throw Failure("TIFF: " + tiff_error);
      unpack_row(picture, y, row.data());
    }
    return picture;
  }
  // Everything else that libtiff can show: tiles, palettes, planes, YCbCr. 8 bits, with alpha.
  set_size(picture, width, height, 4, 8);
  std::vector<uint32_t> raster(size_t{width} * height);
  if (!TIFFReadRGBAImageOriented(tiff.get(), width, height, raster.data(), ORIENTATION_TOPLEFT, 0))
    throw Failure("TIFF: " + tiff_error);
  for (size_t i = 0; i < raster.size(); ++i) {
    picture.samples[4 * i] = uint16_t(TIFFGetR(raster[i]) * kWiden);
    picture.samples[4 * i + 1] = uint16_t(TIFFGetG(raster[i]) * kWiden);
    picture.samples[4 * i + 2] = uint16_t(TIFFGetB(raster[i]) * kWiden);
    picture.samples[4 * i + 3] = uint16_t(TIFFGetA(raster[i]) * kWiden);
  }
  return picture;
}

Bytes encode_tiff(const Picture& picture) {
  listen_to_tiff();
  std::ostringstream stream;
  Tiff tiff(TIFFStreamOpen("output", &stream), TIFFClose);
  if (!tiff) throw Failure("TIFF: " + tiff_error);
  TIFFSetField(tiff.get(), TIFFTAG_IMAGEWIDTH, picture.width);
  TIFFSetField(tiff.get(), TIFFTAG_IMAGELENGTH, picture.height);
  TIFFSetField(tiff.get(), TIFFTAG_BITSPERSAMPLE, static_cast<int>(picture.bits));
  TIFFSetField(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, static_cast<int>(picture.channels));
  TIFFSetField(tiff.get(), TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff.get(), TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC,
               picture.channels == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
  if (picture.channels == 4) {
    const uint16_t unassociated = EXTRASAMPLE_UNASSALPHA;
    TIFFSetField(tiff.get(), TIFFTAG_EXTRASAMPLES, 1, &unassociated);
  }
  TIFFSetField(tiff.get(), TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff.get(), 0));
  for (uint32_t y = 0; y < picture.height; ++y) {
    Bytes row = packed_row(picture, y);
    if (TIFFWriteScanline(tiff.get(), row.data(), y, 0) != 1) throw Failure("TIFF: " + tiff_error);
  }
  tiff.reset();  // the directory is written now
  const std::string file = stream.str();
  return Bytes(file.begin(), file.end());
}

// ---- JPEG, read only: what photographs come in

struct JpegErrors {
  jpeg_error_mgr base;
  jmp_buf back;
  char text[JMSG_LENGTH_MAX];
};

void jpeg_failed(j_common_ptr info) {
  auto* errors = reinterpret_cast<JpegErrors*>(info->err);
  info->err->format_message(info, errors->text);
  std::longjmp(errors->back, 1);
}

// What is missing would be grey; of other faults the picture is mostly there.
void jpeg_warned(j_common_ptr info, int level) {
  const int code = info->err->msg_code;
  if (level < 0 && (code == JWRN_HIT_MARKER || code == JWRN_JPEG_EOF)) jpeg_failed(info);
}

bool jpeg_start(jpeg_decompress_struct& jpeg, JpegErrors& errors, const Bytes& file) {
  if (setjmp(errors.back)) return false;
  jpeg_create_decompress(&jpeg);
  jpeg_mem_src(&jpeg, file.data(), file.size());
  jpeg_read_header(&jpeg, TRUE);
  jpeg.out_color_space = jpeg.num_components == 1 ? JCS_GRAYSCALE : JCS_RGB;
  jpeg_start_decompress(&jpeg);
  return true;
}

bool jpeg_row(jpeg_decompress_struct& jpeg, JpegErrors& errors, uint8_t* row) {
  if (setjmp(errors.back)) return false;
  return jpeg_read_scanlines(&jpeg, &row, 1) == 1;
}

Picture decode_jpeg(Bytes file) {
  // Some files lack their end marker alone; behind one that has it another does not matter.
  file.insert(file.end(), {0xFF, JPEG_EOI});
  JpegErrors errors = {};
  jpeg_decompress_struct jpeg = {};
  jpeg.err = jpeg_std_error(&errors.base);
  errors.base.error_exit = jpeg_failed;
  errors.base.emit_message = jpeg_warned;
  struct Closer {
    jpeg_decompress_struct& jpeg;
    ~Closer() { jpeg_destroy_decompress(&jpeg); }
  } closer{jpeg};
  if (!jpeg_start(jpeg, errors, file)) throw Failure(std::string("JPEG: ") + errors.text);
  Picture picture;
  set_size(picture, jpeg.output_width, jpeg.output_height,
           static_cast<uint32_t>(jpeg.output_components), 8);
  Bytes row(size_t{picture.width} * picture.channels);
  for (uint32_t y = 0; y < picture.height; ++y) {
    if (!jpeg_row(jpeg, errors, row.data())) throw Failure(std::string("JPEG: ") + errors.text);
    unpack_row(picture, y, row.data());
  }
  return picture;
}

// ---- PNM: P5 and P6, maximum up to 65535 (words are big-endian), scaled to the full range

Picture decode_pnm(const Bytes& file) {
  size_t at = 2;
  const auto number = [&]() -> uint32_t {
    for (;; ++at) {
      if (at < file.size() && file[at] == '#')
        while (at < file.size() && file[at] != '\n') ++at;
      if (at >= file.size() || !std::isspace(file[at])) break;
    }
    if (at >= file.size() || !std::isdigit(file[at])) throw Failure("PNM: the header is damaged");
    uint32_t value = 0;
    for (; at < file.size() && std::isdigit(file[at]); ++at)
      value = std::min<uint32_t>(value * 10 + (file[at] - '0'), 1u << 24);
    return value;
  };
  const uint32_t width = number(), height = number(), maximum = number();
  ++at;  // exactly one blank before the samples
  if (maximum == 0 || maximum > 65535)
    throw Failure("PNM: the maximum " + std::to_string(maximum) + " is not in 1..65535");
  Picture picture;
  set_size(picture, width, height, file[1] == '5' ? 1 : 3, maximum > 255 ? 16 : 8);
  const size_t sample = picture.bits / 8, need = picture.samples.size() * sample;
  if (at > file.size() || file.size() - at < need)
    throw Failure("PNM: " + bytes_text(need) + " of samples needed, " +
                  bytes_text(file.size() - std::min(at, file.size())) + " there");
  for (size_t i = 0; i < picture.samples.size(); ++i) {
    const uint8_t* from = file.data() + at + i * sample;
    const uint32_t value = sample == 2 ? uint32_t(from[0] << 8 | from[1]) : from[0];
    picture.samples[i] = uint16_t(std::min(value, maximum) * 65535ull / maximum);
  }
  return picture;
}

Bytes encode_pnm(const Picture& picture) {
  const uint32_t channels = picture.channels == 1 ? 1 : 3;
  const std::string header = std::string(channels == 1 ? "P5\n" : "P6\n") +
                             std::to_string(picture.width) + " " + std::to_string(picture.height) +
                             "\n" + (picture.bits == 16 ? std::to_string(picture.white) : "255") +
                             "\n";
  Bytes file(header.begin(), header.end());
  file.reserve(file.size() + size_t{picture.width} * picture.height * channels * picture.bits / 8);
  for (size_t i = 0; i < picture.samples.size(); ++i) {
    if (picture.channels == 4 && i % 4 == 3) continue;
    file.push_back(uint8_t(picture.samples[i] >> 8));
    if (picture.bits == 16) file.push_back(uint8_t(picture.samples[i]));
  }
  return file;
}

// Without the dot, in small letters.
std::string extension_of(const std::string& name) {
  const size_t dot = name.find_last_of("./");
  if (dot == std::string::npos || name[dot] == '/') return {};
  std::string extension = name.substr(dot + 1);
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension;
}

}  // namespace

bool has_extension(const std::string& name, const char* extension) {
  return extension_of(name) == extension;
}

FileKind kind_of_name(const std::string& name) {
  const std::string extension = extension_of(name);
  if (extension == "png") return FileKind::png;
  if (extension == "tif" || extension == "tiff") return FileKind::tiff;
  if (extension == "ppm" || extension == "pgm" || extension == "pnm") return FileKind::pnm;
  for (const char* other : {"jpg", "jpeg", "bmp", "gif", "webp", "jp2", "exr", "dng", "pbm", "pam"})
    if (extension == other)
      throw Failure(name + ": pictures are written as .png, .tif, .ppm or .pgm, not as ." +
                    extension + "; for plain bytes under this name add --type raw");
  return FileKind::raw;
}

Picture decode_picture(const Bytes& file, const std::string& name) {
  const auto starts = [&](std::initializer_list<int> with) {
    return file.size() >= with.size() &&
           std::equal(with.begin(), with.end(), file.begin(), [](int a, int b) { return a == b; });
  };
  try {
    if (starts({0x89, 'P', 'N', 'G'})) return decode_png(file);
    if (starts({0xFF, 0xD8})) return decode_jpeg(file);
    if (starts({'I', 'I', 42, 0}) || starts({'M', 'M', 0, 42}) || starts({'I', 'I', 43, 0}) ||
        starts({'M', 'M', 0, 43}))
      return decode_tiff(file);
    if (starts({'P', '5'}) || starts({'P', '6'})) return decode_pnm(file);
  } catch (const Failure& failure) {
    throw Failure(name + ": " + failure.what());
  }
  throw Failure(name + ": neither PNG, JPEG, TIFF nor binary PGM/PPM (" + bytes_text(file.size()) +
                ")");
}

Bytes encode_picture(const Picture& picture, FileKind kind) {
  switch (kind) {
    case FileKind::png:
      return encode_png(picture);
    case FileKind::tiff:
      return encode_tiff(picture);
    case FileKind::pnm:
      return encode_pnm(picture);
    case FileKind::raw:
      break;
  }
  throw Failure("raw is no picture format");
}

}  // namespace lum_tool
