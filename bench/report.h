// SPDX-License-Identifier: MIT
// Results as text on the terminal, CSV, JSON and Markdown.
#ifndef LUM_BENCH_REPORT_H
#define LUM_BENCH_REPORT_H

#include <string>
#include <vector>

#include "measure.h"

namespace lum::bench {

struct Report {
  std::vector<Level> levels;
  std::vector<RowResult> rows;
};

// Lines on standard output as the measurement proceeds.
void print_heading(const std::vector<Level>& levels, FrameSize size);
void print_row(const RowResult& row);

// Each throws std::runtime_error when the file cannot be written.
void write_csv(const Report& report, const std::string& path);
void write_json(const Report& report, const std::string& path);
void write_markdown(const Report& report, const std::string& path);

}  // namespace lum::bench

#endif
