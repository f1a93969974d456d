// SPDX-License-Identifier: MIT
// Other libraries doing the same work as a row, or the nearest that they have.
//
// A file of this folder for each library; the build leaves out those that are not installed. All of
// them run on one thread.
#ifndef LUM_BENCH_PEERS_PEERS_H
#define LUM_BENCH_PEERS_PEERS_H

#include <stdint.h>

#include <functional>
#include <string>
#include <vector>

#include "rows.h"

namespace lum::bench {

// Converts a frame of the size that it was prepared for. Contexts, tables and frames in between
// exist before, so that a call is the work alone.
using Conversion = std::function<void(uint8_t* dst, uint8_t* src)>;

struct Peer {
  std::string row;         // the row's name
  std::string function;    // what is called
  std::string difference;  // how the result differs, in words; empty: not at all
  std::function<Conversion(uint32_t width, uint32_t height)> prepare;
  unsigned shift = 0;  // bits by which its 16-bit samples lie lower in their words

  std::string library = {};
  bool exact = false;  // the row's bytes: found by comparing, see verify()

  std::string name() const { return library + " " + function; }
};

struct PeerLibrary {
  std::string name, version;
  std::vector<Peer> peers;
};

// Those that this program was built with.
std::vector<PeerLibrary> peer_libraries();

// Runs row and peer on a frame of random samples and settles what the peer is: `exact`, and if not,
// `difference`. False when it is another conversion, which flat frames tell: on them all ways of
// interpolating and of rounding agree.
bool verify(Peer& peer, const Row& row);

}  // namespace lum::bench

#endif
