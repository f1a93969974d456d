// SPDX-License-Identifier: MIT
// Results as text on the terminal, CSV and JSON.
#ifndef LUM_BENCH_REPORT_H
#define LUM_BENCH_REPORT_H

#include <string>
#include <vector>

#include "measure.h"
#include "threads.h"

namespace lum::bench {

struct Report {
  std::vector<Level> levels;
  std::vector<PeerLibrary> libraries;
  std::vector<RowResult> rows;
  std::vector<ThreadsResult> threads;
};

// Lines on standard output as the measurement proceeds.
void print_heading(const std::vector<Level>& levels, FrameSize size);
void print_row(const RowResult& row);
void print_threads(const std::vector<ThreadsResult>& results);

// Each throws std::runtime_error when the file cannot be written.
void write_csv(const Report& report, const std::string& path);
void write_json(const Report& report, const std::string& path);

}  // namespace lum::bench

#endif
