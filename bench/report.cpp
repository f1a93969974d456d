// SPDX-License-Identifier: MIT
#include "report.h"

#include <benchmark/benchmark.h>
#include <time.h>

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

std::string number(double value, int decimals) {
  char text[32];
  snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

// What the operating system calls the processor; empty where it does not say.
std::string processor() {
  std::ifstream info("/proc/cpuinfo");
  std::string name, numbers;
  for (std::string line; std::getline(info, line) && !line.empty();) {
    const size_t colon = line.find(": ");
    if (colon == std::string::npos) continue;
    const std::string key = line.substr(0, line.find_last_not_of("\t ", colon - 1) + 1);
    const std::string value = line.substr(colon + 2);
    if (key == "model name") name = value;
    if (key == "cpu family" || key == "model" || key == "stepping") {
      numbers += (numbers.empty() ? "" : ", ") + key + " " + value;
    }
  }
  return numbers.empty() ? name : name + " (" + numbers + ")";
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

void add_markdown_table(std::ostringstream& out, const Report& report, FrameSize size) {
  out << "\n### " << text_of(size) << "\n\n| Row |";
  for (const Level level : report.levels) out << " " << name_of(level) << " |";
  out << " loop |";
  for (const Level level : report.levels) out << " " << name_of(level) << " / loop |";
  out << " GB/s | fastest loop |\n|---|";
  for (size_t i = 0; i < 2 * report.levels.size() + 2; ++i) out << "---:|";
  out << "---|\n";
  for (const RowResult& row : report.rows) {
    if (row.size.width != size.width || row.size.height != size.height) continue;
    out << "| " << row.name << " |";
    for (const Times& t : row.levels) {
      out << " " << number(row.nanoseconds_per_pixel(t.minimum), 4) << " |";
    }
    out << " " << number(row.nanoseconds_per_pixel(row.roofline.minimum), 4) << " |";
    for (const Times& t : row.levels) {
      out << " " << number(t.minimum / row.roofline.minimum, 2) << " ("
          << number(t.median / row.roofline.median, 2) << ") |";
    }
    const double last = row.levels.empty() ? row.roofline.minimum : row.levels.back().minimum;
    out << " " << number(row.gigabytes_per_second(last), 1) << " | " << row.loop << " |\n";
  }
}

}  // namespace

void print_heading(const std::vector<Level>& levels, FrameSize size) {
  printf("%s: least ns/pixel, in brackets the ratio of minima and of medians to the loop\n",
         text_of(size).c_str());
  printf("%-34s", "");
  for (const Level level : levels) printf(" %-21s", name_of(level));
  printf(" loop\n");
}

void print_row(const RowResult& row) {
  printf("%-34s", row.name.c_str());
  for (const Times& t : row.levels) {
    printf(" %7.4f (%5.2f %5.2f)", row.nanoseconds_per_pixel(t.minimum),
           t.minimum / row.roofline.minimum, t.median / row.roofline.median);
  }
  printf(" %7.4f %s\n", row.nanoseconds_per_pixel(row.roofline.minimum), row.loop.c_str());
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
  }
  write_file(path, out.str());
}

void write_json(const Report& report, const std::string& path) {
  Json json;
  json["processor"] = processor();
  json["caches"] = caches();
  json["compiler"] = compiler();
  json["date"] = date();
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
    json["rows"].push_back(item);
  }
  write_file(path, json.dump(1) + "\n");
}

void write_markdown(const Report& report, const std::string& path) {
  std::ostringstream out;
  out << "- Processor: " << processor() << "; " << caches() << "\n- Compiler: " << compiler()
      << "\n- Date: " << date()
      << "\n\nLeast ns/pixel of each level and of the fastest loop; the levels' ratios to the "
         "loop, of\n"
         "minima and in brackets of medians; GB/s of the last level.\n";
  const RowResult* before = nullptr;
  for (const RowResult& row : report.rows) {
    const bool same = before != nullptr && before->size.width == row.size.width &&
                      before->size.height == row.size.height;
    if (!same) add_markdown_table(out, report, row.size);
    before = &row;
  }
  write_file(path, out.str());
}

}  // namespace lum::bench
