// SPDX-License-Identifier: MIT
// Times every conversion at every level against the fastest loop that moves as many bytes and
// against other libraries.
//
// A ratio is worth only as much as the two times it is made of were taken under the same
// conditions: clock frequency, neighbours on the machine, state of the caches. So the contenders of
// a row (the levels, all loops, the peers) take turns of a fraction of a millisecond until their
// minima stand still. Google Benchmark runs one contender after the other, or interleaves whole
// repetitions of all rows; its barriers and its description of the machine are used, its loop and
// its reporters are not.
#include <stdio.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <regex>

#include "guard.h"
#include "measure.h"
#include "report.h"
#include "rows.h"
#include "threads.h"

using namespace lum;
using namespace lum::bench;

namespace {

struct Options {
  std::vector<std::string> sizes = {"640x480", "4096x3072"};
  std::vector<std::string> levels = {"sse41", "avx2", "avx512"};
  std::vector<unsigned> threads;
  std::string filter = ".";
  MeasureOptions measure;
  std::string csv, json;
  bool peers = true, representative = false, guard = false, list = false, list_peers = false;
};

// A handful that stands for the rest where many sizes or numbers of threads are measured.
constexpr const char* kRepresentative[] = {
    "bayer8-to-bgr24",  "bayer8-to-mono8_rec601", "bayer12p-to-bgr24", "bayer8-lcaa-to-bgr24",
    "mono12p-to-bgr24", "yuv422-to-bgr24",        "rgb24-to-bgr24",    "bgr24-matrix-to-bgr24"};

bool is_representative(const Row& row) {
  return std::find(std::begin(kRepresentative), std::end(kRepresentative), row.name) !=
         std::end(kRepresentative);
}

// Throws CLI::ValidationError when it is no size.
FrameSize size_of(const std::string& text) {
  static const std::regex form("([1-9][0-9]{0,5})x([1-9][0-9]{0,5})");
  std::smatch parts;
  if (!std::regex_match(text, parts, form)) throw CLI::ValidationError("--size", text);
  return {static_cast<uint32_t>(std::stoul(parts[1])), static_cast<uint32_t>(std::stoul(parts[2]))};
}

std::vector<Level> levels_of(const std::vector<std::string>& names) {
  std::vector<Level> levels;
  const auto add = [&](Level level) {
    if (kernels_of(level) != nullptr) levels.push_back(level);
    return kernels_of(level) != nullptr;
  };
  for (const std::string& name : names) {
    if (name == "best") {
      for (unsigned i = kLevelCount; i-- > 0 && !add(static_cast<Level>(i));) {
      }
      continue;
    }
    const auto* const found = std::find(std::begin(kLevelNames), std::end(kLevelNames), name);
    if (found == std::end(kLevelNames)) throw CLI::ValidationError("--levels", name);
    if (!add(static_cast<Level>(found - std::begin(kLevelNames)))) {
      std::cerr << "This processor or this build has no " << name << ".\n";
    }
  }
  if (levels.empty()) throw CLI::ValidationError("--levels", "none of them is here");
  return levels;
}

void show_progress(size_t done, size_t all, const std::string& name) {
  if (isatty(STDERR_FILENO) == 0) return;
  fprintf(stderr, "\r\033[K[%zu/%zu] %s\r", done + 1, all, name.c_str());
}

// The peers of these rows, checked against them.
std::vector<PeerLibrary> peers_of(const std::vector<Row>& rows) {
  std::vector<PeerLibrary> libraries = peer_libraries();
  const std::vector<Row> known = all_rows();
  const auto named = [](const std::vector<Row>& in, const std::string& name) {
    return std::find_if(in.begin(), in.end(), [&](const Row& row) { return row.name == name; });
  };
  for (PeerLibrary& library : libraries) {
    std::vector<Peer> kept;
    for (Peer& peer : library.peers) {
      peer.library = library.name;
      const auto row = named(rows, peer.row);
      if (row != rows.end()) {
        if (verify(peer, *row)) {
          kept.push_back(peer);
        } else {
          std::cerr << peer.name() << " is left out: it does something else than " << peer.row
                    << ".\n";
        }
      } else if (named(known, peer.row) == known.end()) {
        std::cerr << peer.name() << " is left out: there is no row " << peer.row << ".\n";
      }
    }
    library.peers = std::move(kept);
  }
  return libraries;
}

std::vector<const Peer*> peers_of(const std::vector<PeerLibrary>& libraries, const Row& row) {
  std::vector<const Peer*> peers;
  for (const PeerLibrary& library : libraries) {
    for (const Peer& peer : library.peers) {
      if (peer.row == row.name) peers.push_back(&peer);
    }
  }
  return peers;
}

void list(const std::vector<Row>& rows, const std::vector<PeerLibrary>& libraries) {
  for (const Row& row : rows) {
    std::cout << row.name << "\n";
    for (const Peer* const peer : peers_of(libraries, row)) {
      std::cout << "  " << peer->name() << ": "
                << (peer->exact ? "exact" : "nearest, " + peer->difference) << "\n";
    }
  }
}

int guard(const std::vector<Row>& rows, FrameSize size, const std::vector<Level>& levels,
          const MeasureOptions& options) {
  const Buffers buffers(size, options.rotate);
  int slower = 0;
  size_t done = 0;
  for (const Row& row : rows) {
    show_progress(done++, rows.size(), row.name);
    if (!row.takes(size.width, size.height)) continue;
    for (const Slower& s : find_slower(row, size, levels, buffers, options)) {
      printf("%-34s %ux%u %s takes %.2f of %s\n", row.name.c_str(), size.width, size.height,
             kLevelNames[static_cast<unsigned>(s.wide)], s.ratio,
             kLevelNames[static_cast<unsigned>(s.narrow)]);
      fflush(stdout);
      ++slower;
    }
  }
  return slower;
}

int run(const Options& options) {
  const std::regex filter(options.filter);
  std::vector<Row> rows = all_rows();
  const auto unwanted = [&](const Row& row) {
    return !std::regex_search(row.name, filter) ||
           (options.representative && !is_representative(row));
  };
  rows.erase(std::remove_if(rows.begin(), rows.end(), unwanted), rows.end());
  if (rows.empty()) {
    std::cerr << "No row matches " << options.filter << ".\n";
    return 1;
  }
  if (options.list || options.list_peers) {
    list(rows, options.list_peers ? peers_of(rows) : std::vector<PeerLibrary>());
    return 0;
  }
  Report report;
  report.levels = levels_of(options.levels);
  std::vector<FrameSize> sizes;
  for (const std::string& text : options.sizes) sizes.push_back(size_of(text));
  if (options.guard) {
    int slower = 0;
    for (const FrameSize size : sizes) slower += guard(rows, size, report.levels, options.measure);
    printf("%d times a wider level is slower\n", slower);
    return slower == 0 ? 0 : 1;
  }
  const bool threads = !options.threads.empty();
  if (options.peers && !threads) report.libraries = peers_of(rows);
  const size_t all = rows.size() * sizes.size();
  size_t done = 0;
  for (const FrameSize size : sizes) {
    const Buffers buffers(size, threads ? 0 : options.measure.rotate);
    if (!threads) print_heading(report.levels, size);
    for (const Row& row : rows) {
      show_progress(done++, all, row.name);
      if (!row.takes(size.width, size.height)) {
        std::cerr << row.name << " does not take this size.\n";
      } else if (threads) {
        const auto results = measure_threads(row, size, report.levels.back(), options.threads);
        print_threads(results);
        report.threads.insert(report.threads.end(), results.begin(), results.end());
      } else {
        report.rows.push_back(measure(row, size, report.levels, peers_of(report.libraries, row),
                                      buffers, options.measure));
        print_row(report.rows.back());
      }
    }
  }
  if (!options.csv.empty()) write_csv(report, options.csv);
  if (!options.json.empty()) write_json(report, options.json);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app(
      "Times the conversions of Lum against loops that only move as many bytes, and "
      "against other libraries.");
  app.add_option("--size", options.sizes, "frame sizes, WIDTHxHEIGHT")
      ->capture_default_str()
      ->delimiter(',');
  app.add_option("--levels", options.levels,
                 "base, sse41, avx2, avx512; best: the widest that is here")
      ->capture_default_str()
      ->delimiter(',');
  app.add_option("--filter", options.filter, "regular expression: rows whose name has a match");
  app.add_flag("--representative", options.representative, "a handful of rows only");
  app.add_flag("--peers,!--no-peers", options.peers,
               "compare with the other libraries that this program was built with (default)");
  app.add_option("--threads", options.threads,
                 "instead: frames that so many threads convert at once, at the last level; 1,2,4")
      ->delimiter(',')
      ->check(CLI::Range(1, 64));
  app.add_flag("--guard", options.guard,
               "instead: fail when a level is more than 3 % slower than a narrower one");
  app.add_option("--min-time", options.measure.min_seconds,
                 "seconds that each level and loop is timed for at least")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  app.add_option("--stream-above", options.measure.stream_above,
                 "bytes read and written above which outputs are streamed past the cache, where "
                 "conversions do that; 0: what the library makes of the processor's caches");
  app.add_option("--rotate", options.measure.rotate,
                 "pairs of buffers, used in turn; many of them make the frames cold")
      ->capture_default_str()
      ->check(CLI::Range(1, 4096));
  app.add_option("--csv", options.csv, "file for the figures of the rows");
  app.add_option("--json", options.json, "file for all figures, with the machine");
  app.add_flag("--list", options.list, "print the rows' names and stop");
  app.add_flag("--list-peers", options.list_peers,
               "print the rows with what they are compared with, and stop");
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
