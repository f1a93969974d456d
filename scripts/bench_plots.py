# SPDX-License-Identifier: MIT
"""Draws the pictures of docs/benchmarks.md from what lum_bench measured: SVG, or PNG to look at."""
import argparse
import pathlib
import re

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402

from bench_results import Results, size_of  # noqa: E402

# Told apart by everyone, and on light and dark pages: each picture has its own white ground.
OURS, PEER, ROOFLINE = "#0072b2", "#d55e00", "#555555"
LEVELS = {"base": "#999999", "sse41": "#56b4e9", "avx2": "#0072b2", "avx512": "#003a5c"}
ROW_INCHES = 0.17


def plain(axis, style="{x:g}"):
    """Numbers instead of powers on an axis with a logarithmic scale."""
    axis.set_major_formatter(matplotlib.ticker.StrMethodFormatter(style))
    axis.set_minor_formatter(matplotlib.ticker.NullFormatter())


def family(name):
    """What comes before a gap differs in this."""
    if re.search("planes|i420|place|^(?!bayer|cygm|mono|rgb|bgr|yuv)", name):
        return "pixels moved"
    return re.match("bayer8-[a-z0-9]+|bayer8|[a-z]+", name.replace("-to-", " "))[0]


def rows_picture(results, size):
    """A line for each row: our time, the best peer's, the roofline's."""
    rows = results.at(size)
    y, places, before = 0, [], None
    for row in rows:
        if before is not None and family(row.name) != before:
            y += 0.6
        before = family(row.name)
        places.append(y)
        y += 1
    figure, axes = plt.subplots(figsize=(9, ROW_INCHES * y + 1.2), layout="constrained")
    for row, at in zip(rows, places):
        ends = [t for t in (row.roofline, row.ours, row.peer_time) if t]
        axes.plot([min(ends), max(ends)], [at, at], color="#cccccc", linewidth=0.8, zorder=1)
    axes.scatter([r.roofline for r in rows], places, marker="|", s=45, color=ROOFLINE,
                 label="roofline", zorder=3)
    axes.scatter([r.ours for r in rows], places, s=16, color=OURS, label=f"ours, {results.best}",
                 zorder=4)
    for exact, label in ((True, "best peer, same bytes"), (False, "best peer, nearest work")):
        shown = [(r, at) for r, at in zip(rows, places) if r.peer and r.peer["exact"] == exact]
        axes.scatter([r.peer_time for r, _ in shown], [at for _, at in shown], marker="D", s=17,
                     facecolors=PEER if exact else "white", edgecolors=PEER, linewidths=1,
                     label=label, zorder=2)
    axes.set_yticks(places, [r.name for r in rows], fontsize=7)
    axes.set_ylim(y - 0.2, -1)
    axes.set_xscale("log")
    plain(axes.xaxis)
    ticks = [v * 10.0 ** e for e in range(-3, 4) for v in (1, 2, 5)]
    low, high = axes.get_xlim()
    axes.set_xticks([t for t in ticks if low <= t <= high])
    axes.grid(axis="x", color="#e5e5e5", linewidth=0.6)
    axes.set_axisbelow(True)
    axes.tick_params(axis="x", labelsize=8, top=True, labeltop=True)
    axes.set_xlabel(f"ns/pixel at {size}, less is better")
    axes.legend(loc="upper center", bbox_to_anchor=(0.4, 1 + 0.9 / (ROW_INCHES * y)), ncols=4,
                frameon=False, fontsize=8)
    return figure


def grid_of(names):
    """Two columns of axes, one for each name."""
    lines = (len(names) + 1) // 2
    figure, axes = plt.subplots(lines, 2, figsize=(9, 2.3 * lines + 0.5), layout="constrained",
                                squeeze=False)
    for spare in axes.flat[len(names):]:
        spare.set_visible(False)
    return figure, dict(zip(names, axes.flat))


def legend_of(figure, axes):
    handles = {}
    for one in axes.values():
        handles.update(zip(*reversed(one.get_legend_handles_labels())))
    above = 0.3 / figure.get_figheight()
    figure.get_layout_engine().set(rect=(0, 0, 1, 1 - above))
    figure.legend(handles.values(), handles.keys(), loc="upper center", ncols=5, frameon=False,
                  fontsize=8)


def levels_picture(results):
    rows = [r for r in results.scaling if r.size in results.sizes]
    names = list(dict.fromkeys(r.name for r in rows))
    sizes = [s for s in results.sizes if any(r.size == s for r in rows)]
    figure, axes = plt.subplots(1, len(sizes), figsize=(9, 0.62 * len(names) + 1),
                                layout="constrained", squeeze=False, sharey=True)
    levels = results.scaling_levels
    high = 0.8 / len(levels)
    for size, one in zip(sizes, axes.flat):
        at_size = [r for r in rows if r.size == size]
        for i, level in enumerate(levels):
            # Times as multiples of the roofline's, so that all rows fit one scale.
            one.barh([names.index(r.name) + (i - (len(levels) - 1) / 2) * high for r in at_size],
                     [r.levels[level] / r.roofline for r in at_size], high, color=LEVELS[level],
                     label=level)
        one.axvline(1, color=ROOFLINE, linewidth=1)
        one.set_xscale("log")
        plain(one.xaxis)
        one.set_title(size, fontsize=9)
        one.set_xlabel("time / roofline, less is better", fontsize=8)
        one.tick_params(labelsize=8)
        one.grid(axis="x", color="#e5e5e5", linewidth=0.6)
        one.set_axisbelow(True)
    axes[0, 0].set_yticks(range(len(names)), names)
    axes[0, 0].invert_yaxis()
    legend_of(figure, {0: axes[0, 0]})
    return figure


def sizes_picture(results):
    names = list(dict.fromkeys(r.name for r in results.scaling))
    figure, axes = grid_of(names)
    for name, one in axes.items():
        rows = sorted((r for r in results.scaling if r.name == name), key=lambda r: r.pixels)
        x = range(len(rows))
        one.plot(x, [r.ours for r in rows], "o-", color=OURS, markersize=4,
                 label=f"ours, {results.best}")
        with_peer = [i for i in x if rows[i].peer]
        one.plot(with_peer, [rows[i].peer_time for i in with_peer], "D--", color=PEER, markersize=4,
                 label="best peer")
        one.plot(x, [r.roofline for r in rows], "_-", color=ROOFLINE, markersize=8, linewidth=0.8,
                 label="roofline")
        one.set_yscale("log")
        plain(one.yaxis)
        low, high = one.get_ylim()
        ticks = [v * 10.0 ** e for e in range(-3, 4) for v in (1, 2, 5)]
        one.set_yticks([t for t in ticks if low <= t <= high])
        one.set_xticks(list(x), [r.size.replace("x", "\nx ") for r in rows], fontsize=7)
        one.tick_params(axis="y", labelsize=7)
        one.set_title(name, fontsize=9)
        one.set_ylabel("ns/pixel", fontsize=8)
        one.grid(axis="y", color="#e5e5e5", linewidth=0.6)
    legend_of(figure, axes)
    return figure


def threads_picture(results):
    """How much more several threads do than one; the bars tell how much that is."""
    done = {(t["row"], size_of(t), t["contender"] == "roofline", t["threads"]):
            t["pixels_per_second"] * 1e-9 for t in results.threads}
    names, sizes, _, counts = (list(dict.fromkeys(part)) for part in zip(*done))
    figure, axes = grid_of(names)
    kinds = [(roofline, n) for roofline in (False, True) for n in sorted(counts) if n > 1]
    wide = 0.8 / len(kinds)
    for name, one in axes.items():
        for i, (roofline, n) in enumerate(kinds):
            pairs = [(done[name, size, roofline, 1], done[name, size, roofline, n])
                     for size in sizes]
            bars = one.bar([x + (i - (len(kinds) - 1) / 2) * wide for x in range(len(sizes))],
                           [many / single for single, many in pairs], wide * 0.94,
                           color=ROOFLINE if roofline else OURS, alpha=0.4 + 0.6 * n / max(counts),
                           label=f"{'roofline' if roofline else 'ours'}, {n} threads")
            one.bar_label(bars, [f"1: {single:.3g}\n{n}: {many:.3g}" for single, many in pairs],
                          fontsize=6.5, padding=2)
        one.axhline(1, color="black", linewidth=0.8)
        one.set_ylim(0, max(counts) * 1.35)
        one.set_xticks(range(len(sizes)), sizes, fontsize=8)
        one.tick_params(axis="y", labelsize=7)
        one.set_title(f"{name}; labels: threads, Gpixel/s", fontsize=9)
        one.set_ylabel("times one thread's", fontsize=8)
        one.grid(axis="y", color="#e5e5e5", linewidth=0.6)
        one.set_axisbelow(True)
    legend_of(figure, axes)
    return figure


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("results", type=pathlib.Path, help="folder with main.json and the others")
    parser.add_argument("out", type=pathlib.Path, help="folder for the pictures")
    parser.add_argument("--png", action="store_true", help="PNG instead of SVG")
    options = parser.parse_args()
    results = Results(options.results)
    matplotlib.rcParams["svg.hashsalt"] = "lum"  # the same figures give the same file

    pictures = {f"rows-{size}": rows_picture(results, size) for size in results.sizes}
    if results.scaling:
        pictures["sizes"] = sizes_picture(results)
        if any(r.size in results.sizes for r in results.scaling):
            pictures["levels"] = levels_picture(results)
    if results.threads:
        pictures["threads"] = threads_picture(results)
    for name, figure in pictures.items():
        path = options.out / f"benchmarks-{name}.{'png' if options.png else 'svg'}"
        figure.savefig(path, dpi=110, metadata=None if options.png else {"Date": None})
        print(path)


if __name__ == "__main__":
    main()
