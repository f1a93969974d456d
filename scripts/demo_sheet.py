#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes camera frames of photographs, converts them in every way, draws the contact sheet.

demo_sheet.py LUM PHOTO-FOLDER OUTPUT-FOLDER; called by scripts/demo.
"""

import json
import pathlib
import re
import shutil
import subprocess
import sys
import time

from PIL import Image, ImageDraw, ImageFilter, ImageFont

SIZE = (640, 480)
THUMB = (156, 117)
LABEL_WIDTH, CELL_WIDTH, CELL_HEIGHT, MARGIN = 190, THUMB[0] + 8, THUMB[1] + 24, 16
CROP, ENLARGED = (56, 42), 5
REPEATS = 20
# Rows sum to about 1: grey stays nearly grey and colours gain saturation.
MATRIX = "1.6,-0.4,-0.2,-0.3,1.5,-0.2,0,-0.5,1.5"
# The first is shown in the table, the others have fine detail for the demosaic modes.
FAVOURITES = ("LadyBird", "TwoWings", "Dune")
INK, FAINT, PAPER = (20, 20, 20), (110, 110, 110), (255, 255, 255)


def font(size, bold=False):
    name = "DejaVuSans-Bold.ttf" if bold else "DejaVuSans.ttf"
    try:
        return ImageFont.truetype(f"/usr/share/fonts/truetype/dejavu/{name}", size)
    except OSError:
        return ImageFont.load_default()


SMALL, NORMAL, BOLD, TITLE = font(11), font(13), font(13, True), font(26, True)


def find_photos(folder):
    """Three photographs, the favourites first, whatever else there is after them."""
    found = sorted(folder.rglob("*.jpg"))
    chosen = [p for name in FAVOURITES for p in found if p.stem == name]
    chosen += [p for p in found if p not in chosen]
    if len(chosen) < len(FAVOURITES):
        sys.exit(f"{folder}: {len(chosen)} photographs, {len(FAVOURITES)} needed")
    return chosen[:len(FAVOURITES)]


def reduced(photo):
    """The middle of the photograph at the demo's size."""
    image = Image.open(photo).convert("RGB")
    scale = max(SIZE[0] / image.width, SIZE[1] / image.height)
    image = image.resize((round(image.width * scale), round(image.height * scale)), Image.LANCZOS)
    left, top = (image.width - SIZE[0]) // 2, (image.height - SIZE[1]) // 2
    return image.crop((left, top, left + SIZE[0], top + SIZE[1]))


class Demo:
    def __init__(self, lum, photos, output):
        self.lum, self.output = lum, output
        self.frames, self.pictures = output / "frames", output / "pictures"
        for folder in (self.frames, self.pictures):
            shutil.rmtree(folder, ignore_errors=True)
            folder.mkdir(parents=True)
        self.formats = json.loads(self.run("formats", "--json").stdout)
        self.photos = []
        for photo in find_photos(photos):
            path = output / f"{photo.stem}.png"
            reduced(photo).save(path)
            self.photos.append(path)
        self.count = 0
        self.failed = []

    def run(self, *words):
        done = subprocess.run([self.lum, *map(str, words)], capture_output=True, text=True)
        if done.returncode != 0:
            raise RuntimeError(f"lum {' '.join(map(str, words))}: {done.stderr.strip()}")
        return done

    def simulate(self, source, photo):
        frame = self.frames / f"{photo.stem}_{source}.raw"
        self.run("simulate", "--format", source, photo, frame)
        return frame

    def convert(self, source, target, frame, way="", options=()):
        """The picture and its time in ms; nothing when the conversion fails, which is told."""
        picture = self.pictures / f"{frame.stem}_to_{target}{'_' + way if way else ''}.png"
        try:
            done = self.run("convert", "--from", source, "--size", "%dx%d" % SIZE, "--to", target,
                            *options, "--time", REPEATS, frame, picture)
        except RuntimeError as failure:
            self.failed.append(str(failure))
            return None
        self.count += 1
        return picture, float(re.search(r"([0-9.]+) ms a frame", done.stderr).group(1))

    def row(self, source, list_name, frame, way="", options=()):
        targets = source["debayer"][way] if list_name == "debayer" else source[list_name]
        return {t: self.convert(source["name"], t, frame, way, options) for t in targets}


def opened(picture):
    """8 bits a channel, without alpha; also whether a 16-bit picture had only low values."""
    image = Image.open(picture)
    if not image.mode.startswith("I"):
        return image.convert("RGB"), False
    low = image.getextrema()[1] < 256
    return image.point(lambda v: v if low else v / 256).convert("L").convert("RGB"), low


def most_detailed(image):
    """Where the crop with the strongest edges lies."""
    edges = image.convert("L").filter(ImageFilter.FIND_EDGES)
    edges = edges.crop((4, 4, SIZE[0] - 4, SIZE[1] - 4)).point(lambda v: min(v, 160))
    small = edges.resize((SIZE[0] // CROP[0] * 2, SIZE[1] // CROP[1] * 2), Image.BOX)
    cells = small.load()
    best = max(((x, y) for x in range(small.width - 1) for y in range(small.height - 1)),
               key=lambda p: sum(cells[p[0] + i, p[1] + j] for i in (0, 1) for j in (0, 1)))
    return best[0] * CROP[0] // 2, best[1] * CROP[1] // 2


class Sheet:
    def __init__(self, columns):
        self.columns = columns
        self.width = 2 * MARGIN + LABEL_WIDTH + len(columns) * CELL_WIDTH
        self.strips = []

    def strip(self, height):
        image = Image.new("RGB", (self.width, height), PAPER)
        self.strips.append(image)
        return image, ImageDraw.Draw(image)

    def heading(self, text, note=""):
        _, draw = self.strip(48)
        draw.text((MARGIN, 18), text, INK, BOLD)
        draw.text((MARGIN + draw.textlength(text, BOLD) + 16, 18), note, FAINT, NORMAL)

    def title(self, text, note):
        _, draw = self.strip(76)
        draw.text((MARGIN, 14), text, INK, TITLE)
        draw.text((MARGIN, 52), note, FAINT, NORMAL)

    def row(self, name, details, cells):
        image, draw = self.strip(CELL_HEIGHT)
        draw.text((MARGIN, 32), name, INK, BOLD)
        draw.text((MARGIN, 52), details, FAINT, SMALL)
        for i, column in enumerate(self.columns):
            x, cell = MARGIN + LABEL_WIDTH + i * CELL_WIDTH, cells.get(column)
            if cell is None:
                draw.rectangle((x, 0, x + THUMB[0] - 1, THUMB[1] - 1), (246, 246, 246))
                draw.text((x + THUMB[0] // 2, THUMB[1] // 2), "failed" if column in cells else "-",
                          FAINT, SMALL, anchor="mm")
                continue
            thumb, low = opened(cell[0])
            image.paste(thumb.resize(THUMB, Image.BOX), (x, 0))
            if low:
                draw.rectangle((x, 0, x + 74, 15), PAPER)
                draw.text((x + 2, 1), "shown x256", INK, SMALL)
            draw.text((x, THUMB[1] + 3), f"{column} {cell[1]:.3f} ms", INK, SMALL)

    def crops(self, cells):
        """Enlarged crops side by side; cells are (caption, image)."""
        width, height = CROP[0] * ENLARGED, CROP[1] * ENLARGED
        image, draw = self.strip(height + 30)
        for i, (caption, crop) in enumerate(cells):
            x = MARGIN + i * (width + 8)
            image.paste(crop.resize((width, height), Image.NEAREST), (x, 0))
            draw.text((x, height + 4), caption, INK, NORMAL)

    def save(self, path):
        whole = Image.new("RGB", (self.width, sum(s.height for s in self.strips) + MARGIN), PAPER)
        y = 0
        for strip in self.strips:
            whole.paste(strip, (0, y))
            y += strip.height
        whole.save(path)


def processor():
    names = re.findall(r"model name\s*:\s*(.*)", pathlib.Path("/proc/cpuinfo").read_text())
    return names[0] if names else "unknown processor"


def draw_crops(demo, sheet, modes):
    sheet.heading("8-bit Bayer, the demosaic modes",
                  f"enlarged {ENLARGED} times; BayerRG8 to RGB24")
    for photo in demo.photos[1:]:
        original = Image.open(photo).convert("RGB")
        x, y = most_detailed(original)
        box = (x, y, x + CROP[0], y + CROP[1])
        frame = demo.simulate("BayerRG8", photo)
        cells = [(f"{photo.stem}, the photograph", original.crop(box))]
        for mode in modes:
            made = demo.convert("BayerRG8", "RGB24", frame, mode, ("--debayer", mode))
            if made:
                cells.append((f"--debayer {mode}, {made[1]:.3f} ms", opened(made[0])[0].crop(box)))
        sheet.crops(cells)


def draw_tables(demo, sheet):
    sources = [s for s in demo.formats["sources"] if s["descriptors"] and not s["unpacked_first"]]
    frames = {s["name"]: demo.simulate(s["name"], demo.photos[0]) for s in sources}
    sheet.heading("Every source to every destination",
                  "2x2 where the source is a Bayer mosaic; UYVY is shown decoded")
    for source in sources:
        print(f"  {source['name']}", flush=True)
        code = source["code"] or "direct function"
        sheet.row(source["name"], f"{code}, {source['bits_used']} bits",
                  demo.row(source, "descriptors", frames[source["name"]]))
    # All patterns are converted; one of each kind is shown.
    shown = [s for s in sources if s["bayer_pattern"] == "RGGB"]
    rows = []
    for source in sources:
        for mode in list(source["debayer"])[1:]:
            cells = demo.row(source, "debayer", frames[source["name"]], mode, ("--debayer", mode))
            rows += [(source["name"], f"--debayer {mode}", cells)] if source in shown else []
    if rows:
        sheet.heading("The other demosaic modes", "8-bit Bayer")
        for row in rows:
            sheet.row(*row)
    rows = []
    for source in sources:
        cells = demo.row(source, "matrix", frames[source["name"]], "matrix", ("--matrix", MATRIX))
        rows += [(source["name"], "with --matrix", cells)] if source in shown and cells else []
    if rows:
        sheet.heading("With a colour matrix", MATRIX.replace(",", "  "))
        for row in rows:
            sheet.row(*row)


def main():
    lum, photos, output = map(pathlib.Path, sys.argv[1:4])
    start = time.monotonic()
    demo = Demo(lum, photos, output)
    reached = {t for s in demo.formats["sources"] for t in s["descriptors"] + s["matrix"]}
    sheet = Sheet([d["name"] for d in demo.formats["destinations"] if d["name"] in reached])
    sheet.title("Lum: camera frames and what they become",
                f"{processor()}, one thread; {SIZE[0]}x{SIZE[1]} pixels; best of {REPEATS} "
                "conversions, in ms; photographs turned into frames by `lum simulate`")
    print("Converting:")
    modes = next(s["debayer"] for s in demo.formats["sources"] if s["name"] == "BayerRG8")
    draw_crops(demo, sheet, [m for m, targets in modes.items() if "RGB24" in targets])
    draw_tables(demo, sheet)
    path = output / "contact-sheet.png"
    sheet.save(path)
    print(f"{demo.count} conversions in {time.monotonic() - start:.0f} s, "
          f"pictures in {demo.pictures}")
    for failure in demo.failed:
        print(f"FAILED {failure}")
    print(path.resolve())
    return 1 if demo.failed else 0


if __name__ == "__main__":
    sys.exit(main())
