# SPDX-License-Identifier: MIT
"""Writes the tables of docs/benchmarks.md, between its markers, from what lum_bench measured."""
import argparse
import pathlib
import re
import sys

from bench_operations import counts
from bench_results import GOALS, Results, geometric_mean

BEGIN = "<!-- tables: begin (written by scripts/bench) -->"
END = "<!-- tables: end -->"
PLOTS = (("rows-{size}", "Every conversion at {size}"), ("levels", "Instruction-set levels"),
         ("sizes", "Frame sizes"), ("threads", "Threads"))


def table(head, lines, right=()):
    """Markdown. `right`: the columns of numbers. Columns with nothing in them are left out."""
    rule = ["---:" if i in right else "---" for i in range(len(head))]
    kept = [i for i in range(len(head)) if head[i] or any(cells[i] for cells in lines)]
    return "\n".join("| " + " | ".join(cells[i] for i in kept) + " |"
                     for cells in [head, rule, *lines])


def folded(summary, text):
    return f"<details><summary>{summary}</summary>\n\n{text}\n\n</details>"


def number(value, decimals=2):
    return "" if value is None else f"{value:.{decimals}f}"


def peer_name(peer):
    return f"{peer['library']} {peer['function']}"


def machine(results):
    m = results.machine
    libraries = ", ".join(f"{name} {version}" for name, version in m.get("libraries", {}).items())
    return "\n".join((
        f"- Processor, as `/proc/cpuinfo` names it: {m['processor']}; {m['caches']}",
        f"- Levels measured: {', '.join(results.levels)}; \"ours\" is the last of them",
        f"- Compared with: {libraries or 'no other library'}",
        f"- Compiler: {m['compiler']}; date: {m['date']}"))


def verdict(results, met):
    """Goals are of AVX-512 hardware: elsewhere nothing is judged."""
    if not results.judges or met is None:
        return ""
    return "met" if met else "**missed**"


def count(flags):
    flags = [flag for flag in flags if flag is not None]
    return f"{sum(flags)} of {len(flags)}"


def summary(results):
    def per_size(text, goal, cell):
        return [text, *(cell(results.at(size)) for size in results.sizes), goal]

    means = dict(zip(GOALS["sizes"], GOALS["peers"]["geometric_mean"]))
    lines = [
        per_size("Our time / best peer's, geometric mean",
                 ", ".join(number(means[s]) for s in results.sizes if s in means),
                 lambda rows: number(geometric_mean([r.to_peer for r in rows if r.peer]))),
        per_size("Rows faster than the best peer", "all",
                 lambda rows: count([r.beats_peers() for r in rows])),
        per_size("Our time / roofline, geometric mean", "",
                 lambda rows: number(geometric_mean([r.ratio for r in rows])))]
    if results.judges:
        lines.append(per_size("Goals to the roofline met", "all", lambda rows: count(
            [r.ratio <= r.goal() for r in rows if r.goal() is not None])))
    text = table(["", *results.sizes, "goal"], lines, range(1, len(results.sizes) + 1))
    peers = GOALS["peers"]
    text += (f"\n\nFaster than a peer is a ratio below {peers['each']:g}, or of at most "
             f"{peers['both_at_roofline']:g} where both are within {peers['roofline']:g} of the "
             "roofline.")
    if not results.judges:
        text += (f"\n\nThe goals are of hardware with {GOALS['level']}. This machine has none, so "
                 "they are shown, and nothing is called met or missed.")
    return text


def lost_to_peers(results):
    lines = [[row.name, row.size, number(row.ours, 4), peer_name(row.peer),
              "yes" if row.peer["exact"] else row.peer["difference"],
              number(row.peer_time, 4), number(row.to_peer), number(row.ratio)]
             for row in sorted((r for r in results.rows if r.beats_peers() is False),
                               key=lambda r: -r.to_peer)]
    if not lines:
        return "None."
    return table(["Row", "size", "ours", "best peer", "same bytes", "its time", "ours / its",
                  "ours / roofline"], lines, (2, 5, 6, 7))


def row_goals(results):
    """A line for each goal, with the worst of its rows."""
    lines = []
    for goal in GOALS["rows"]:
        cells = [goal["what"]]
        for size, most in zip(GOALS["sizes"], goal["goals"]):
            rows = [r for r in results.at(size) if r.goal() is not None and
                    re.fullmatch(goal["rows"], r.name)]
            worst = max(rows, key=lambda r: r.ratio, default=None)
            cells += [number(most), number(worst and worst.ratio), worst.name if worst else "",
                      verdict(results, worst and worst.ratio <= most)]
        lines.append(cells)
    head = ["Rows"]
    for size in GOALS["sizes"]:
        head += [f"goal {size}", "worst", "which", ""]
    return table(head, lines, (1, 2, 5, 6))


def other_goals(results):
    cold = GOALS["cold"]
    measured = [("cold frames to the roofline, of rows with no higher goal", [
        (r, r.ratio) for r in results.cold if re.fullmatch(cold["rows"], r.name) and
        r.goal() is not None and r.goal() <= cold["goal"]], cold["goal"])]
    for goal in GOALS["levels"]:
        rows = ", memory-bound rows" if "memory_bound" in goal else ""
        measured.append((f"{goal['narrow']} / {goal['wide']} at {goal['size']}{rows}",
                         results.level_ratios(goal), goal["most"]))
    lines = []
    for name, ratios, most in measured:
        worst = max(ratios, key=lambda pair: pair[1], default=(None, None))
        lines.append([name, number(most), count([ratio <= most for _, ratio in ratios]),
                      number(worst[1]), worst[0].name if worst[0] else "not measured",
                      verdict(results, worst[1] and worst[1] <= most)])
    return table(["", "goal", "rows within", "worst", "which", ""], lines, (1, 2, 3))


def all_rows(results, size):
    lines = [[r.name, *(number(t, 4) for t in r.levels.values()), number(r.roofline, 4),
              number(r.ratio), number(r.goal()),
              verdict(results, r.goal() and r.ratio <= r.goal()), number(r.to_peer),
              number(r.gb_per_s, 1)] for r in results.at(size)]
    head = ["Row", *results.levels, "roofline", "ratio", "goal", "", "to best peer", "GB/s"]
    n = len(results.levels)
    return table(head, lines, [i for i in range(1, n + 7) if i != n + 4])


def all_peers(results):
    """Every peer of every row: its time at each size and ours as a part of it."""
    lines = {}
    for row in results.rows:
        for peer in row.peers:
            key = (row.name, peer_name(peer),
                   "same bytes" if peer["exact"] else peer["difference"])
            lines.setdefault(key, {})[row.size] = (peer["min_ns_per_pixel"],
                                                   row.ours / peer["min_ns_per_pixel"])
    cells, before = [], None
    for (name, peer, difference), times in lines.items():
        figures = [number(*value) for size in results.sizes for value in
                   zip(times.get(size, (None, None)), (4, 2))]
        cells.append(["" if name == before else name, peer, difference, *figures])
        before = name
    head = ["Row", "peer", "result"]
    for size in results.sizes:
        head += [size, "ours / it"]
    return table(head, cells, range(3, len(head)))


def cold_rows(results):
    lines = [[r.name, number(r.ours, 4), number(r.roofline, 4), number(r.ratio)]
             for r in results.cold]
    return table(["Row", results.best, "roofline", "ratio"], lines, (1, 2, 3))


def operations(units, level):
    two_ports = level == GOALS["level"]
    lines = [[f"`{name}`", f"{c.port_0:g}", f"{c.port_5:g}", f"{c.either:g}",
              f"{c.least_cycles():g}" if two_ports else "", f"{c.loads:g}", f"{c.stores:g}",
              f"{c.scalar:g}"] for name, c in counts(units, level)]
    head = ["Kernel", "shifts, minima, means", "shuffles, comparisons", "other",
            "cycles on two ports" if two_ports else "", "loads", "stores", "not vectors"]
    return lines and table(head, lines, range(1, len(head)))


def all_operations(units):
    """What limits the rows that have no reason to wait for memory."""
    tables = [(level, operations(units, level)) for level in (GOALS["level"], "avx2")]
    parts = [folded(f"Operations for 64 pixels, {level}", text) for level, text in tables if text]
    if not parts:
        return []
    return ["### What the loops do",
            "Counted in the compiled kernels, for 64 pixels, or columns of a step of the "
            "interpolating demosaics. Of 512-bit operations a core with two ports for them begins "
            "two in a cycle: shifts, minima, absolute values and means on the one only, shuffles "
            "and comparisons on the other only, multiplications, sums, logic and blends on "
            "either, so the fifth column is what they take at least. A permute of bytes or words "
            "of two vectors is two shuffles and one more. A load that is not aligned to 64 bytes "
            "counts twice for the two that a core does in a cycle. Both arms of a branch are "
            "counted.", *parts]


def page(results, plots, units):
    parts = [machine(results), "## Summary", summary(results), "### Rows that a peer does faster",
             folded("row by row, ns/pixel", lost_to_peers(results)),
             "### Goals", "Times as multiples of the roofline's; the worst of the rows counts.",
             row_goals(results), other_goals(results), "## Pictures"]
    parts += [f"![{title}]({path})" if not path.startswith("benchmarks-rows") else
              folded(title, f"![{title}]({path})") for path, title in plots]
    parts += ["## Tables", "Least ns/pixel; ratios of least times."]
    parts += [folded(f"All rows, {size}", all_rows(results, size)) for size in results.sizes]
    parts.append(folded("All peers", all_peers(results)))
    if results.cold:
        parts.append(folded(f"Cold frames, {results.cold[0].size}", cold_rows(results)))
    parts += all_operations(units)
    return "\n\n".join(parts)


def plots_in(folder, results):
    for name, title in PLOTS:
        for size in results.sizes if "{size}" in name else [""]:
            path = f"benchmarks-{name.format(size=size)}.svg"
            if (folder / path).exists():
                yield path, title.format(size=size)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("results", type=pathlib.Path, help="folder with main.json and the others")
    parser.add_argument("page", type=pathlib.Path, help="the page to write into")
    parser.add_argument("--units", type=pathlib.Path, default=pathlib.Path(),
                        help="folder with the compiled kernels, to count their operations")
    options = parser.parse_args()
    results = Results(options.results)
    old = options.page.read_text()
    if BEGIN not in old or END not in old:
        sys.exit(f"{options.page} lacks the lines\n{BEGIN}\n{END}")
    text = page(results, list(plots_in(options.page.parent, results)), options.units)
    options.page.write_text(old[:old.index(BEGIN)] + BEGIN + "\n\n" + text + "\n\n" +
                            old[old.index(END):])
    print(options.page)


if __name__ == "__main__":
    main()
