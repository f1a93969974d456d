// SPDX-License-Identifier: MIT
#include "report.h"

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>

namespace lum::bench {
namespace {

using Json = nlohmann::ordered_json;

const char* name_of(Level level) { return kLevelNames[static_cast<unsigned>(level)]; }

std::string text_of(FrameSize size) {
  return std::to_string(size.width) + "x" + std::to_string(size.height);
}

// The line of /proc/cpuinfo that names the processor; empty where there is none.
std::string processor() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line) && !line.empty();) {
    const size_t colon = line.find(": ");
    if (line.compare(0, 10, "model name") == 0 && colon != std::string::npos) {
      return line.substr(colon + 2);
    }
  }
  return {};
}

std::string caches() {
  std::string text;
  for (const auto& cache : benchmark::CPUInfo::Get().caches) {
    if (!text.empty()) text += ", ";
    const bool level_1 = cache.level == 1;
    text += "L" + std::to_string(cache.level) + (level_1 ? " " + cache.type : "") + " " +
            std::to_string(cache.size / 1024) + " KiB";
  }
  return text;
}

std::string compiler() {
#if defined(__clang__)
  return __VERSION__;
#else
  return std::string("g++ ") + __VERSION__;
#endif
}

std::string date() {
  const time_t now = time(nullptr);
  char text[16];
  strftime(text, sizeof text, "%Y-%m-%d", gmtime(&now));
  return text;
}

Json json_of(const RowResult& row, const Times& times) {
  Json json;
  json["min_ns_per_pixel"] = row.nanoseconds_per_pixel(times.minimum);
  json["median_ns_per_pixel"] = row.nanoseconds_per_pixel(times.median);
  json["gb_per_s"] = row.gigabytes_per_second(times.minimum);
  json["ratio_of_minima"] = times.minimum / row.roofline.minimum;
  json["ratio_of_medians"] = times.median / row.roofline.median;
  return json;
}

void write_file(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

const PeerResult* best_peer(const RowResult& row) {
  const auto faster = [](const PeerResult& a, const PeerResult& b) {
    return a.times.minimum < b.times.minimum;
  };
  const auto best = std::min_element(row.peers.begin(), row.peers.end(), faster);
  return best == row.peers.end() ? nullptr : &*best;
}

}  // namespace

void print_heading(const std::vector<Level>& levels, FrameSize size) {
  printf("%s: least ns/pixel, in brackets the ratio of minima and of medians to the loop\n",
         text_of(size).c_str());
  printf("%-34s", "");
  for (const Level level : levels) printf(" %-21s", name_of(level));
  printf(" %-26s last level / best peer\n", "loop");
}

void print_row(const RowResult& row) {
  printf("%-34s", row.name.c_str());
  for (const Times& t : row.levels) {
    printf(" %7.4f (%5.2f %5.2f)", row.nanoseconds_per_pixel(t.minimum),
           t.minimum / row.roofline.minimum, t.median / row.roofline.median);
  }
  printf(" %7.4f %-18s", row.nanoseconds_per_pixel(row.roofline.minimum), row.loop.c_str());
  if (const PeerResult* const best = best_peer(row)) {
    const double ratio = row.levels.empty() ? 0 : row.levels.back().minimum / best->times.minimum;
    printf(" %5.2f %s%s", ratio, best->peer->name().c_str(), best->peer->exact ? "" : " (nearest)");
  }
  printf("\n");
  fflush(stdout);
}

void print_threads(const std::vector<ThreadsResult>& results) {
  for (const ThreadsResult& r : results) {
    printf("%-34s %-10s %u threads %8.1f Mpixel/s (median %8.1f) %s\n", r.row.c_str(),
           text_of(r.size).c_str(), r.threads, r.pixels_per_second * 1e-6, r.median * 1e-6,
           r.contender.c_str());
  }
  fflush(stdout);
}

void write_csv(const Report& report, const std::string& path) {
  std::ostringstream out;
  out << "row,width,height,contender,min_ns_per_pixel,median_ns_per_pixel,gb_per_s,"
         "ratio_of_minima,ratio_of_medians\n";
  for (const RowResult& row : report.rows) {
    const auto line = [&](const std::string& contender, const Times& t) {
      out << row.name << "," << row.size.width << "," << row.size.height << "," << contender << ","
          << row.nanoseconds_per_pixel(t.minimum) << "," << row.nanoseconds_per_pixel(t.median)
          << "," << row.gigabytes_per_second(t.minimum) << "," << t.minimum / row.roofline.minimum
          << "," << t.median / row.roofline.median << "\n";
    };
    for (size_t i = 0; i < row.levels.size(); ++i) line(name_of(report.levels[i]), row.levels[i]);
    line("loop: " + row.loop, row.roofline);
    for (const PeerResult& p : row.peers) {
      line("\"" + std::string(p.peer->exact ? "exact: " : "nearest: ") + p.peer->name() + "\"",
           p.times);
    }
  }
  write_file(path, out.str());
}

void write_json(const Report& report, const std::string& path) {
  Json json;
  json["processor"] = processor();
  json["caches"] = caches();
  json["compiler"] = compiler();
  json["date"] = date();
  for (const Level level : report.levels) json["levels"].push_back(name_of(level));
  for (const PeerLibrary& library : report.libraries) {
    json["libraries"][library.name] = library.version;
  }
  json["rows"] = Json::array();
  for (const RowResult& row : report.rows) {
    Json item;
    item["row"] = row.name;
    item["width"] = row.size.width;
    item["height"] = row.size.height;
    for (size_t i = 0; i < row.levels.size(); ++i) {
      item["levels"][name_of(report.levels[i])] = json_of(row, row.levels[i]);
    }
    item["roofline"] = json_of(row, row.roofline);
    item["roofline"]["loop"] = row.loop;
    for (const PeerResult& p : row.peers) {
      Json peer = {
          {"library", p.peer->library}, {"function", p.peer->function}, {"exact", p.peer->exact}};
      if (!p.peer->exact) peer["difference"] = p.peer->difference;
      peer.update(json_of(row, p.times));
      item["peers"].push_back(peer);
    }
    json["rows"].push_back(item);
  }
  for (const ThreadsResult& r : report.threads) {
    json["threads"].push_back({{"row", r.row},
                               {"width", r.size.width},
                               {"height", r.size.height},
                               {"contender", r.is_loop ? "roofline" : r.contender},
                               {"threads", r.threads},
                               {"pixels_per_second", r.pixels_per_second},
                               {"median_pixels_per_second", r.median}});
  }
  write_file(path, json.dump(1) + "\n");
}

}  // namespace lum::bench
