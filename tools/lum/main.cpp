// SPDX-License-Identifier: MIT
// The command line of `lum`. Exit status: 0 done, 1 failed, 2 called wrongly.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <new>

#include "catalogue.h"
#include "commands.h"
#include "conversion.h"
#include "finish.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongCall = 2;

void add_convert(CLI::App& app, lum_tool::ConvertOptions& o) {
  CLI::App* c = app.add_subcommand("convert", "Turn camera frames into pictures or plain pixels");
  c->add_option("--from", o.from,
                "format of the frames: a name as in `lum formats`, or its code (0x01080009)")
      ->required();
  c->add_option("--size", o.size, "WIDTHxHEIGHT of a frame")->required();
  c->add_option("--line-pitch", o.line_pitch,
                "bytes from one line of a frame to the next, where lines are padded (bytesperline, "
                "stride)");
  CLI::Option* to = c->add_option("--to", o.to, "format to convert to")
                        ->default_str(lum_tool::kDefaultDestination);
  c->add_option("input", o.input, "file of one or more frames, frame%04d.raw, or - for stdin")
      ->required();
  c->add_option("output", o.output,
                ".png, .tif, .ppm, .pgm, anything else for raw bytes; frame%04d.png for one file "
                "a frame; - for stdout (raw unless --type)")
      ->required();
  std::vector<std::string> modes;
  for (const lum_tool::DebayerName& mode : lum_tool::kDebayerNames) modes.push_back(mode.name);
  modes.push_back(lum_tool::kBinnedName);
  CLI::Option* debayer =
      c->add_option("--debayer", o.debayer,
                    "8-bit Bayer: how the colours are interpolated; bin halves width and height")
          ->check(CLI::IsMember(modes));
  CLI::Option* matrix =
      c->add_option("--matrix", o.matrix,
                    "nine numbers, rows R G B of (R,G,B), separated by commas or blanks")
          ->delimiter(',')
          ->expected(9);
  CLI::Option* gains =
      c->add_option("--wb", o.white_balance, "gains R,G,B, as the diagonal of a matrix")
          ->delimiter(',')
          ->expected(3)
          ->excludes(matrix);
  c->add_flag("--cc", o.direct_correction,
              "correct colours by a _CC function also where LumImageTransform would: BT.709 is "
              "BT.709 then, and gains beyond 127 saturate");
  CLI::Option* older =
      c->add_flag("--via-old", o.via_old, "through LumTransformOLD")->excludes(debayer);
  CLI::Option* direct =
      c->add_flag("--direct-bgr", o.direct_bgr, "IRaw8CYGM: through LumIRaw8CYGMToBGR")
          ->excludes(older);
  std::vector<std::string> windows;
  for (const lum_tool::CygmName& window : lum_tool::kCygmNames) windows.push_back(window.name);
  CLI::Option* cygm =
      c->add_option("--cygm", o.cygm,
                    "IRaw8CYGM: what a pixel is made of; bin halves width and height, luma gives "
                    "MONO8_REC601")
          ->check(CLI::IsMember(windows))
          ->excludes(older)
          ->excludes(direct);
  std::vector<std::string> encodings;
  for (const lum_tool::YuvName& encoding : lum_tool::kYuvNames) encodings.push_back(encoding.name);
  CLI::Option* yuv =
      c->add_option("--yuv", o.yuv,
                    "YUV to BGR24 through LumYUVToBGR: the frames are full range BT.601, as is "
                    "taken without this option, studio range BT.601, or studio range BT.709")
          ->check(CLI::IsMember(encodings))
          ->excludes(older);
  c->add_flag("--big-endian", o.big_endian, "16-bit words have their high byte first");
  c->add_flag("--msb-aligned", o.msb_aligned, "16-bit words have their used bits at the top");
  std::vector<std::string> flips, words;
  for (const lum_tool::FlipName& flip : lum_tool::kFlipNames) flips.push_back(flip.name);
  for (const lum_tool::WordName& word : lum_tool::kWordNames) words.push_back(word.name);
  CLI::Option* bin = c->add_option(
      "--bin", o.bin, "make one pixel of NxN, the mean; N or two numbers, 4x2, from 1 to 16");
  CLI::Option* resize =
      c->add_option("--resize", o.resize, "WIDTHxHEIGHT of the picture, after --bin");
  c->add_flag("--nearest", o.nearest, "--resize repeats and drops pixels, and mixes none")
      ->needs(resize);
  CLI::Option* flip =
      c->add_option("--flip", o.flip,
                    "mirror or turn the picture, after --resize; degrees are clockwise")
          ->check(CLI::IsMember(flips));
  CLI::Option* i420 =
      c->add_flag("--i420", o.i420,
                  "write planes of Y, U and V 4:2:0, raw. YUV, RGB and Mono8 frames become planes "
                  "directly, and YUV keeps its range; other frames, and all with a matrix, are "
                  "converted --to an 8-bit format first");
  CLI::Option* unpack =
      c->add_option("--unpack", o.unpack,
                    "10-bit and 12-bit packed frames: write their samples as 16-bit words and "
                    "convert nothing; values in the lower bits (lsb) or in the upper ones (msb)")
          ->check(CLI::IsMember(words));
  for (CLI::Option* other :
       {to, debayer, matrix, gains, older, direct, cygm, yuv, bin, resize, flip, i420})
    unpack->excludes(other);
  c->add_option("--frames", o.frames,
                "all, one number from 0, or a range 2-9 (default: all into a numbered or raw "
                "output, else the first)");
  c->add_option("--type", o.type, "type of the output, whatever its name")
      ->check(CLI::IsMember({"png", "tiff", "pnm", "raw"}));
  c->add_option("--time", o.time, "convert the first frame N times more and print the best time");
}

void add_simulate(CLI::App& app, lum_tool::SimulateOptions& o) {
  CLI::App* c = app.add_subcommand(
      "simulate", "Make the frame that a camera would have delivered for a picture");
  c->add_option("--format", o.format, "format of the frame, as for convert --from")->required();
  c->add_option("picture", o.input, "PNG, JPEG, TIFF, PPM or PGM; - for stdin")->required();
  c->add_option("frame", o.output, "file for the frame; - for stdout")->required();
  c->add_flag("--big-endian", o.big_endian, "16-bit words with their high byte first");
  c->add_flag("--msb-aligned", o.msb_aligned, "16-bit words with their used bits at the top");
}

std::string version_text() {
  uint32_t version = 0;
  LumGetVersion(&version);
  std::string text = "lum";
  for (int shift = 24; shift >= 0; shift -= 8)
    text += (shift == 24 ? ' ' : '.') + std::to_string(version >> shift & 255);
  return text;
}

// A value that is empty, as that of a shell variable without one: to the parser the next word would
// be the value, or the option as if it were not there.
void refuse_cut_off_values(int argc, char** argv) {
  for (int i = 1; i < argc && std::strcmp(argv[i], "--") != 0; ++i) {
    const std::string word = argv[i];
    if (word.rfind("--", 0) == 0 && word.back() == '=')
      throw CLI::ValidationError(word.substr(0, word.size() - 1), "nothing follows the =");
  }
}
void refuse_empty_values(const CLI::App& app) {
  for (const CLI::App* command : app.get_subcommands())
    for (const CLI::Option* option : command->get_options())
      for (const std::string& value : option->results())
        if (value.empty() && !option->get_positional())
          throw CLI::ValidationError(option->get_name(), "has no value");
}

// Of what went to standard output, which help does by std::cout.
bool all_written() {
  std::cout.flush();
  if (std::fflush(stdout) == 0 && !std::ferror(stdout) && std::cout) return true;
  std::fprintf(stderr, "lum: standard output: not all of it could be written\n");
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Converts the frames of industrial cameras.", "lum");
  app.require_subcommand(1);
  app.set_version_flag("--version", version_text());
  app.failure_message([](const CLI::App* failed, const CLI::Error& error) {
    std::string text = std::string("lum: ") + error.what() + "\n";
    if (failed->get_subcommands().empty()) {
      text += "Commands:";
      for (const CLI::App* command : failed->get_subcommands({})) text += " " + command->get_name();
      return text + "; lum --help tells more\n";
    }
    return text + "lum " + failed->get_subcommands().front()->get_name() + " --help tells more\n";
  });
  lum_tool::ConvertOptions convert;
  lum_tool::SimulateOptions simulate;
  bool json = false;
  std::string info_format, info_size, code;
  add_convert(app, convert);
  add_simulate(app, simulate);
  app.add_subcommand("formats", "List the formats and what converts into what")
      ->add_flag("--json", json, "as JSON");
  CLI::App* info = app.add_subcommand("info", "Describe one format");
  info->add_option("format", info_format, "name or code")->required();
  info->add_option("--size", info_size, "WIDTHxHEIGHT, to tell the bytes of a frame");
  app.add_subcommand("errors", "Print the text of a result code")
      ->add_option("code", code, "-7, 0x88000004, ...")
      ->required();
  const auto run = [&] {
    if (app.got_subcommand("convert")) return lum_tool::convert_command(convert);
    if (app.got_subcommand("simulate")) return lum_tool::simulate_command(simulate);
    if (app.got_subcommand("formats")) return lum_tool::formats_command(json);
    if (app.got_subcommand("info")) return lum_tool::info_command(info_format, info_size);
    return lum_tool::errors_command(code);
  };
  try {
    refuse_cut_off_values(argc, argv);
    app.parse(argc, argv);
    refuse_empty_values(app);
  } catch (const CLI::ParseError& error) {
    if (app.exit(error) != 0) return kWrongCall;
    return all_written() ? 0 : kFailed;
  }
  try {
    const int status = run();
    return all_written() ? status : kFailed;
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "lum: not enough memory for frames of this size\n");
    return kFailed;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "lum: %s\n", failure.what());
    return kFailed;
  }
}
