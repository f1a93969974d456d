# SPDX-License-Identifier: MIT
"""Measures the debayer modes on photographs: writes quality.md and quality.png.

Every photograph is reduced by averaging areas, which makes it sharper than anything that was
demosaiced itself, and so a fair original: a mosaic is taken of it, converted, and compared with it.
"""
import argparse
import ctypes
import pathlib
import statistics
import sys
import time

import cv2
import numpy as np

BORDER = 8  # left out of all measures: what methods do at the frame's border is not compared
FORMAT_BGR24 = 1  # the order that OpenCV reads and writes
PATTERNS = ("RGGB", "GBRG", "GRBG", "BGGR")
RED = ((0, 0), (1, 0), (0, 1), (1, 1))  # row, column of red in each
SHORT_SIDE = 300  # pictures are reduced by 2 to 4, as far as this many pixels remain
ENLARGED, CROP = 4, 40

# The photographs among what the packages ship, one of each scene; the rest are drawings.
PHOTOGRAPHS = {
    "lomiri-wallpapers-16.04": ("usr/share/backgrounds/", (
        "Dragonfly_by_Bolly.jpg Bridge_by_Sander_Klootwijk.jpg Picture_0B_by_freespace.jpg "
        "Picture_1A_by_freespace.jpg Wine_by_Jakkub_Mede.jpg aitzgorri_by_Aitzol_Berasategi.jpg "
        "free_by_Peter_Nerlich.jpg friends_by_Aitzol_Berasategi.jpg greentock_by_Peter_Nerlich.jpg "
        "life_by_Aitzol_Berasategi.jpg picosdeeuropa_by_Aitzol_Berasategi.jpg "
        "seeding_by_Clements_Engelhardt.jpg sunset_by_Aitzol_Berasategi.jpg")),
    "lomiri-wallpapers-20.04": ("usr/share/backgrounds/", "Kleiber_by_Lukas_Baubkus.jpg"),
    "mate-backgrounds": ("usr/share/backgrounds/mate/nature/", (
        "Aqua.jpg Blinds.jpg Dune.jpg FreshFlower.jpg Garden.jpg GreenMeadow.jpg LadyBird.jpg "
        "RainDrops.jpg Storm.jpg TwoWings.jpg Wood.jpg YellowFlower.jpg")),
    "plasma-workspace-wallpapers": ("usr/share/wallpapers/", " ".join(
        name + "/contents/images/2560x1600.jpg" for name in
        "BytheWater ColorfulCups EveningGlow FallenLeaf Kite OneStandsOut Path".split())),
    "opencv-doc": ("usr/share/doc/opencv-doc/examples/", (
        "data/aero1.jpg data/aero3.jpg data/aloeL.jpg data/baboon.jpg data/board.jpg "
        "data/building.jpg data/chicky_512.png data/fruits.jpg data/graf1.png data/leuvenA.jpg "
        "data/rubberwhale1.png data/squirrel_cls.jpg text/scenetext01.jpg text/scenetext03.jpg "
        "text/scenetext04.jpg text/scenetext05.jpg text/scenetext06.jpg "
        "text/scenetext_segmented_word01.jpg text/scenetext_segmented_word02.jpg")),
}
# CPSNR of the two sets of other photographs that the modes were designed with, for comparison.
DESIGN = {"2x2": "27.4, 28.9", "3x3": "31.7, 33.4", "YUV422": "36.2, 37.0", "LCAA": "38.1, 38.8",
          "LCAAV": "38.4, 39.0", "OpenCV VNG": "35.9"}
RIVALS = {"3x3": "OpenCV bilinear", "YUV422": "OpenCV EA", "LCAA": "OpenCV VNG"}  # for speed
SHOWN = ("building", "scenetext_segmented_word02", "rubberwhale1", "Dragonfly_by_Bolly",
         "baboon")  # in the picture of crops


class Lum:
    """A debayer mode. prepare() leaves nothing to a conversion but the call of the function."""
    shift = 0

    def __init__(self, library, suffix):
        self.function = getattr(library, "LumRaw8ImageTransform" + suffix)
        self.function.restype = ctypes.c_uint32

    def prepare(self, mosaic, pattern, out):
        height, width = mosaic.shape
        arguments = ([ctypes.c_void_p(array.ctypes.data) for array in (out, mosaic)] +
                     [ctypes.c_uint32(v) for v in (width, height, FORMAT_BGR24, pattern)])

        def convert():
            if self.function(*arguments) != 0:
                raise RuntimeError("conversion refused")
        return convert


class OpenCv:
    def __init__(self, suffix):
        # OpenCV's names tell the second and third samples of the second row.
        self.codes = [getattr(cv2, f"COLOR_Bayer{name}2BGR{suffix}")
                      for name in ("BG", "GR", "GB", "RG")]
        # VNG of some versions puts all rows two too high. An edge at row 32 tells.
        edge = np.zeros((64, 64), np.uint8)
        edge[32:] = 255
        seen = np.mean(cv2.cvtColor(edge, self.codes[0])[:, 16:48], axis=(1, 2))
        self.shift = 32 - int(np.argmax(seen > 192))

    def prepare(self, mosaic, pattern, out):
        code = self.codes[pattern]
        return lambda: cv2.cvtColor(mosaic, code, dst=out)


def methods(library):
    return {"2x2": Lum(library, ""), "3x3": Lum(library, "_3x3"),
            "YUV422": Lum(library, "_IntYUV422"), "LCAA": Lum(library, "_IntLCAA"),
            "LCAAV": Lum(library, "_IntLCAAV"), "OpenCV bilinear": OpenCv(""),
            "OpenCV EA": OpenCv("_EA"), "OpenCV VNG": OpenCv("_VNG")}


def reduced(path):
    picture = cv2.imread(str(path), cv2.IMREAD_COLOR)
    if picture is None:
        raise RuntimeError(f"cannot read {path}")
    factor = min(4, max(2, min(picture.shape[:2]) // SHORT_SIDE))
    height, width = (size // (2 * factor) * 2 for size in picture.shape[:2])
    return cv2.resize(picture[:height * factor, :width * factor], (width, height),
                      interpolation=cv2.INTER_AREA)


def mosaic_of(picture, pattern):
    row, column = RED[pattern]
    mosaic = picture[:, :, 1].copy()
    mosaic[row::2, column::2] = picture[row::2, column::2, 2]
    mosaic[1 - row::2, 1 - column::2] = picture[1 - row::2, 1 - column::2, 0]
    return mosaic


def psnr(error):
    return 10 * np.log10(255 ** 2 / max(float(np.mean(error ** 2)), 1e-4))


def inner(array):
    return array[BORDER:-BORDER, BORDER:-BORDER]


def ssim(a, b):
    """Of luminance; Gaussian window of 11 pixels, sigma 1.5."""
    def mean(x):
        return cv2.GaussianBlur(x, (11, 11), 1.5)
    a, b = (x.astype(np.float32) @ np.float32((0.114, 0.587, 0.299)) for x in (a, b))
    ma, mb, c1, c2 = mean(a), mean(b), (0.01 * 255) ** 2, (0.03 * 255) ** 2
    va, vb, cov = mean(a * a) - ma * ma, mean(b * b) - mb * mb, mean(a * b) - ma * mb
    index = (2 * ma * mb + c1) * (2 * cov + c2) / ((ma * ma + mb * mb + c1) * (va + vb + c2))
    return float(np.mean(inner(index)))


def measures(picture, out):
    """CPSNR, R, G, B, false colour, SSIM. False colour: what is wrong with the steps from pixel to
    pixel, along rows and along columns, of R-G and B-G; a wrong tint of an area is not in it."""
    error = inner(out.astype(np.float32) - picture)
    differences = error[:, :, (2, 0)] - error[:, :, 1:2]
    steps = [np.mean(np.diff(differences, axis=axis) ** 2) for axis in (0, 1)]
    return (psnr(error), *(psnr(error[:, :, channel]) for channel in (2, 1, 0)),
            float(np.sqrt(np.mean(steps))), ssim(picture, out))


def progress(text):
    if sys.stderr.isatty():
        sys.stderr.write(f"\r\x1b[K{text}")
        sys.stderr.flush()


def convert_all(ready, picture, pattern):
    mosaic, outputs = mosaic_of(picture, pattern), {}
    for name, method in ready.items():
        out = np.empty_like(picture)
        method.prepare(mosaic, pattern, out)()
        outputs[name] = np.roll(out, method.shift, axis=0)
    return outputs


def crops(name, picture, outputs):
    """A row of the picture of crops, at the place where 3x3 is most wrong."""
    wrong = inner(np.sum((outputs["3x3"].astype(np.float32) - picture) ** 2, axis=2))
    half = CROP // 2
    wrong = cv2.boxFilter(wrong, -1, (CROP, CROP))[half:-half, half:-half]
    y, x = (BORDER + int(i) for i in np.unravel_index(np.argmax(wrong), wrong.shape))
    row = []
    for label, image in {name.split("_")[0]: picture, **outputs}.items():
        cell = cv2.resize(image[y:y + CROP, x:x + CROP], None, fx=ENLARGED, fy=ENLARGED,
                          interpolation=cv2.INTER_NEAREST)
        cell = cv2.copyMakeBorder(cell, 18, 2, 2, 2, cv2.BORDER_CONSTANT, value=(255, 255, 255))
        cv2.putText(cell, label, (3, 13), cv2.FONT_HERSHEY_SIMPLEX, 0.4, (0, 0, 0), 1, cv2.LINE_AA)
        row.append(cell)
    return np.hstack(row)


def times(ready, picture, size, repeats):
    """Seconds of processor time a frame, one value a turn; a turn measures all methods in a row.

    Time that other programs take from this one does not count, so a busy machine disturbs less."""
    picture = cv2.resize(picture, size, interpolation=cv2.INTER_AREA)
    mosaic, out = mosaic_of(picture, 0), np.empty_like(picture)
    calls, seconds = {}, {name: [] for pair in RIVALS.items() for name in pair}
    convert = {name: ready[name].prepare(mosaic, 0, out) for name in seconds}
    for turn in range(-1, repeats):  # the first turn warms up and sets the number of calls
        progress(f"timing {size[0]} x {size[1]}: {turn + 1} of {repeats}")
        for name in seconds:
            count = calls.get(name, 3)
            start = time.thread_time()
            for _ in range(count):
                convert[name]()
            each = (time.thread_time() - start) / count
            if turn < 0:
                calls[name] = max(1, round(0.004 / each))
            else:
                seconds[name].append(each)
    return seconds


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + " --- |" + " ---: |" * (len(head) - 1)]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows])


def quality_rows(results, others):
    rows = []
    for name, values in results.items():
        mean = np.mean(values, axis=0)
        rows.append([name, f"{mean[0]:.2f}", f"{np.median(values, axis=0)[0]:.2f}",
                     *(f"{value:.2f}" for value in mean[1:5]), f"{mean[5]:.4f}",
                     f"{np.mean(others[name]):.2f}", DESIGN.get(name, "")])
    return rows


def speed_rows(seconds):
    rows = []
    for mode, rival in RIVALS.items():
        cells = []
        for summary in (min, statistics.median):
            ours, theirs = (1e3 * summary(seconds[name]) for name in (mode, rival))
            cells += [f"{ours:.3f}", f"{theirs:.3f}", f"{theirs / ours:.1f}"]
        rows.append([f"{mode}, {rival}", *cells])
    return rows


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("library")
    parser.add_argument("packages", type=pathlib.Path, help="folder of unpacked packages")
    parser.add_argument("docs", type=pathlib.Path, help="folder of quality.md and quality.png")
    parser.add_argument("--repeats", type=int, default=40, help="turns of the timing")
    options = parser.parse_args()
    cv2.setNumThreads(1)
    ready = methods(ctypes.CDLL(options.library))

    folders = {folder.name.partition("_")[0]: folder for folder in options.packages.iterdir()}
    paths = [(package, folders[package] / base / name)
             for package, (base, names) in PHOTOGRAPHS.items() if package in folders
             for name in names.split()]
    paths = [(package, path) for package, path in paths if path.is_file()]
    if len(paths) < 10:
        sys.exit(f"quality_report: only {len(paths)} photographs found")

    results, others = ({name: [] for name in ready} for _ in range(2))
    same, pixels, strips = 0, 0, {}
    for number, (package, path) in enumerate(paths, 1):
        progress(f"{number} of {len(paths)}: {path.stem}")
        picture = reduced(path)
        pixels += picture.size // 3
        outputs = convert_all(ready, picture, 0)
        for name, out in outputs.items():
            results[name].append(measures(picture, out))
        same += np.array_equal(inner(outputs["3x3"]), inner(outputs["OpenCV bilinear"]))
        if path.stem in SHOWN or not strips:
            strips[path.stem] = crops(path.stem, picture, outputs)
        for pattern in (1, 2, 3):
            for name, out in convert_all(ready, picture, pattern).items():
                others[name].append(psnr(inner(out.astype(np.float32) - picture)))
    cv2.imwrite(str(options.docs / "quality.png"), np.vstack(list(strips.values())),
                [cv2.IMWRITE_PNG_COMPRESSION, 9])

    by_package = []
    for package in PHOTOGRAPHS:
        chosen = [i for i, (name, _) in enumerate(paths) if name == package]
        if chosen:
            version = folders[package].name.partition("_")[2]
            by_package.append([f"{package} {version}", str(len(chosen)), *(
                f"{np.mean([results[name][i][0] for i in chosen]):.2f}" for name in results)])
    deviation = np.std(np.array(results["3x3"])[:, 0], ddof=1) / len(paths) ** 0.5
    gain = np.array(results["LCAA"])[:, 0] - np.array(results["3x3"])[:, 0]
    shifted = ", ".join(f"{name} by {method.shift}" for name, method in ready.items()
                        if method.shift)
    picture = cv2.imread(str(paths[0][1]))
    speed = []
    for size in ((640, 480), (2048, 1536)):
        speed += ["", f"{size[0]} x {size[1]}:", "", table(
            ("Lum, OpenCV", "Lum min, ms", "OpenCV min, ms", "ratio", "Lum median, ms",
             "OpenCV median, ms", "ratio"),
            speed_rows(times(ready, picture, size, options.repeats)))]
    progress("")
    with open("/proc/cpuinfo", encoding="utf-8") as info:
        cpu = next((line.partition(":")[2].strip() for line in info
                    if line.startswith("model name")), "unknown")
    baseline = next((line.partition(":")[2].split() for line in
                     cv2.getBuildInformation().splitlines() if "Baseline:" in line), ["unknown"])
    text = TEXT.format(
        pictures=len(paths), pixels=pixels / 1e6, border=BORDER, version=cv2.__version__,
        quality=table(("Method", "CPSNR", "median", "R", "G", "B", "false colour", "SSIM",
                       "CPSNR, other patterns", "design"), quality_rows(results, others)),
        by_package=table(("Package", "pictures", *results), by_package),
        deviation=deviation, gain_low=np.min(gain), gain_high=np.max(gain), same=same,
        shifted=f"{shifted} rows" if shifted else "none here", crop=CROP,
        enlarged=ENLARGED, speed="\n".join(speed), cpu=cpu, baseline=" ".join(baseline),
        repeats=options.repeats)
    (options.docs / "quality.md").write_text(text, encoding="ascii")
    print(options.docs / "quality.md")


TEXT = """\
# Quality of the debayer modes

Written by `./scripts/quality`, pictures and tables included; do not edit.

{pictures} photographs from Debian packages, reduced by 2 to 4 by averaging areas so that they are
sharper than anything that was demosaiced itself ({pixels:.1f} million pixels remain), cropped to
even sizes, made into RGGB mosaics and converted to 24-bit colour. OpenCV is {version}.

## Against the originals

{quality}

Means over the pictures; dB unless said otherwise.

- CPSNR: peak signal-to-noise ratio over the three components together; R, G, B: of each.
- False colour: RMS error of the differences between neighbours (along rows and along columns) of
  R-G and B-G, in grey levels. Less is better.
- SSIM: structural similarity of luminance, Gaussian window of 11 pixels.
- Other patterns: the mean CPSNR of GBRG, GRBG and BGGR mosaics.
- Design: the means on the two sets of other photographs that the modes were designed with (OpenCV's
  VNG: one set), for comparison. They tell how far means depend on the choice of pictures.

The {border} pixels at the frame's border are left out of everything. The half-pixel shift of 2x2 is
left in: it is what its users get. Methods that return the picture some rows too high are measured
after it was moved back ({shifted}); callers have to do the same.

3x3 and OpenCV's bilinear are the same bytes inside the border in {same} of {pictures} pictures.

## Choice of pictures

CPSNR by package:

{by_package}

How much detail the pictures hold decides the absolute figures; the standard error of the mean of
3x3 is {deviation:.1f} dB. On single pictures LCAA gains {gain_low:.1f} to {gain_high:.1f} dB
over 3x3: least on soft and strongly coloured ones (close-ups of flowers and leaves, where bilinear
has little to get wrong), most on fine grey structure. Many of the former in a set bring the means
of 3x3 and of the others closer together.

## Crops

![Crops of originals and of all methods](quality.png)

{crop} x {crop} pixels of a picture, enlarged {enlarged} times, from where 3x3 is most wrong.

## Speed against OpenCV

One thread, RGGB to BGR24 into the same buffer, called from Python (a microsecond or so a call, in
all figures). Processor time a frame, the methods taking turns, {repeats} turns. Ratio: OpenCV's
time to Lum's; above 1 Lum is faster. The host: {cpu}; OpenCV
as Debian builds it, for {baseline}.
{speed}
"""

if __name__ == "__main__":
    main()
