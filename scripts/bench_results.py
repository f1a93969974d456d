# SPDX-License-Identifier: MIT
"""What lum_bench measured, beside the goals in bench/goals.json."""
import json
import math
import pathlib
import re

GOALS = json.loads((pathlib.Path(__file__).parents[1] / "bench/goals.json").read_text())


def size_of(record):
    return f"{record['width']}x{record['height']}"


def geometric_mean(ratios):
    return math.exp(sum(map(math.log, ratios)) / len(ratios)) if ratios else None


class Row:
    """A conversion at a frame size."""

    def __init__(self, record, best):
        self.name, self.size = record["row"], size_of(record)
        self.pixels = record["width"] * record["height"]
        self.levels = {level: times["min_ns_per_pixel"]
                       for level, times in record.get("levels", {}).items()}
        self.ours = self.levels[best]
        self.gb_per_s = record["levels"][best]["gb_per_s"]
        self.roofline = record["roofline"]["min_ns_per_pixel"]
        self.loop = record["roofline"]["loop"]
        self.ratio = self.ours / self.roofline
        self.peers = record.get("peers", [])
        self.peer = min(self.peers, key=lambda peer: peer["min_ns_per_pixel"], default=None)
        self.peer_time = self.peer and self.peer["min_ns_per_pixel"]
        self.to_peer = self.peer and self.ours / self.peer_time

    def goal(self):
        for goal in GOALS["rows"]:
            if re.fullmatch(goal["rows"], self.name) and self.size in GOALS["sizes"]:
                return goal["goals"][GOALS["sizes"].index(self.size)]
        return None

    def beats_peers(self):
        """None where no peer serves the row."""
        if self.peer is None:
            return None
        goals = GOALS["peers"]
        roofline = goals["roofline"] * self.roofline
        both = self.ours <= roofline and self.peer_time <= roofline
        return self.to_peer <= goals["both_at_roofline"] if both else self.to_peer < goals["each"]


class Results:
    """The files of a run: main, cold, scaling, threads; of these only main must be there."""

    def __init__(self, folder):
        def read(name):
            path = folder / (name + ".json")
            return json.loads(path.read_text()) if path.exists() else {"rows": [], "levels": []}
        self.machine = read("main")
        self.levels = self.machine["levels"]
        self.best = self.levels[-1]
        self.rows = [Row(r, self.best) for r in self.machine["rows"]]
        self.sizes = list(dict.fromkeys(row.size for row in self.rows))
        self.cold = [Row(r, self.best) for r in read("cold")["rows"]]
        scaling = read("scaling")
        self.scaling_levels = scaling["levels"]
        self.scaling = [Row(r, self.best) for r in scaling["rows"]]
        self.threads = read("threads").get("threads", [])
        self.judges = self.best == GOALS["level"]  # the goals are of this level

    def at(self, size):
        return [row for row in self.rows if row.size == size]

    def level_ratios(self, goal):
        """(row, ratio) of the rows that a goal about two levels speaks of."""
        narrow, wide = goal["narrow"], goal["wide"]
        if narrow not in self.levels or wide not in self.levels:
            return []
        bound = goal.get("memory_bound")
        return [(row, row.levels[narrow] / row.levels[wide]) for row in self.at(goal["size"])
                if bound is None or row.levels[wide] <= bound * row.roofline]
