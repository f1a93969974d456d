// SPDX-License-Identifier: MIT
// Times every conversion at every level against the fastest loop that moves as many bytes.
//
// A ratio is worth only as much as the two times it is made of were taken under the same
// conditions: clock frequency, neighbours on the machine, state of the caches. So the contenders of
// a row (the levels and all loops) take turns of a fraction of a millisecond until their minima
// stand still. Google Benchmark runs one contender after the other, or interleaves whole
// repetitions of all rows; its barriers and its description of the machine are used, its loop and
// its reporters are not.
#include <stdio.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <regex>

#include "measure.h"
#include "report.h"
#include "rows.h"

using namespace lum;
using namespace lum::bench;

namespace {

struct Options {
  std::vector<std::string> sizes = {"640x480", "4096x3072"};
  std::vector<std::string> levels = {"sse41", "avx2", "avx512"};
  std::string filter = ".";
  MeasureOptions measure;
  std::string csv, json, markdown;
  bool list = false;
};

// Throws CLI::ValidationError when it is no size.
FrameSize size_of(const std::string& text) {
  static const std::regex form("([1-9][0-9]{0,5})x([1-9][0-9]{0,5})");
  std::smatch parts;
  if (!std::regex_match(text, parts, form)) throw CLI::ValidationError("--size", text);
  return {static_cast<uint32_t>(std::stoul(parts[1])), static_cast<uint32_t>(std::stoul(parts[2]))};
}

std::vector<Level> levels_of(const std::vector<std::string>& names) {
  std::vector<Level> levels;
  for (const std::string& name : names) {
    const auto* const found = std::find(std::begin(kLevelNames), std::end(kLevelNames), name);
    if (found == std::end(kLevelNames)) throw CLI::ValidationError("--levels", name);
    const Level level = static_cast<Level>(found - std::begin(kLevelNames));
    if (kernels_of(level) != nullptr) {
      levels.push_back(level);
    } else {
      std::cerr << "This processor or this build has no " << name << ".\n";
    }
  }
  return levels;
}

void show_progress(size_t done, size_t all, const std::string& name) {
  if (isatty(STDERR_FILENO) == 0) return;
  fprintf(stderr, "\r\033[K[%zu/%zu] %s\r", done + 1, all, name.c_str());
}

int run(const Options& options) {
  const std::regex filter(options.filter);
  std::vector<Row> rows = all_rows();
  rows.erase(std::remove_if(rows.begin(), rows.end(),
                            [&](const Row& row) { return !std::regex_search(row.name, filter); }),
             rows.end());
  if (options.list) {
    for (const Row& row : rows) std::cout << row.name << "\n";
    return 0;
  }
  if (rows.empty()) {
    std::cerr << "No row matches " << options.filter << ".\n";
    return 1;
  }
  Report report;
  report.levels = levels_of(options.levels);
  std::vector<FrameSize> sizes;
  for (const std::string& text : options.sizes) sizes.push_back(size_of(text));
  const size_t all = rows.size() * sizes.size();
  size_t done = 0;
  for (const FrameSize size : sizes) {
    Buffers buffers(size, options.measure.rotate);
    print_heading(report.levels, size);
    for (const Row& row : rows) {
      show_progress(done++, all, row.name);
      if (!row.takes(size.width, size.height)) {
        std::cerr << row.name << " does not take this size.\n";
        continue;
      }
      report.rows.push_back(measure(row, size, report.levels, buffers, options.measure));
      print_row(report.rows.back());
    }
  }
  if (!options.csv.empty()) write_csv(report, options.csv);
  if (!options.json.empty()) write_json(report, options.json);
  if (!options.markdown.empty()) write_markdown(report, options.markdown);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app("Times the conversions of Lum against loops that only move as many bytes.");
  app.add_option("--size", options.sizes, "frame sizes, WIDTHxHEIGHT")
      ->capture_default_str()
      ->delimiter(',');
  app.add_option("--levels", options.levels, "base, sse41, avx2, avx512")
      ->capture_default_str()
      ->delimiter(',');
  app.add_option("--filter", options.filter, "regular expression: rows whose name has a match");
  app.add_option("--min-time", options.measure.min_seconds,
                 "seconds that each level and loop is timed for at least")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  app.add_option("--rotate", options.measure.rotate,
                 "pairs of buffers, used in turn; many of them make the frames cold")
      ->capture_default_str()
      ->check(CLI::Range(1, 4096));
  app.add_option("--csv", options.csv, "file for the table with all figures");
  app.add_option("--json", options.json, "the same as JSON, with the machine");
  app.add_option("--markdown", options.markdown, "file for the tables of docs/benchmarks.md");
  app.add_flag("--list", options.list, "print the rows' names and stop");
  try {
    app.parse(argc, argv);
    return run(options);
  } catch (const CLI::ParseError& error) {
    return app.exit(error);
  } catch (const std::exception& error) {
    std::cerr << "lum_bench: " << error.what() << "\n";
    return 1;
  }
}
