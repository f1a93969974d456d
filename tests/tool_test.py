#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The lum command line, from outside: tool_test.py PATH-TO-LUM. Standard library only."""

import base64
import json
import os
import random
import re
import resource
import select
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import zlib

LUM = os.path.abspath(sys.argv.pop(1)) if len(sys.argv) > 1 else "lum"
PATTERNS = ("GR", "RG", "GB", "BG")
BAYER = [f"Bayer{p}{d}" for p in PATTERNS for d in ("8", "10", "12", "12Packed", "16")]
UNPACKED = ([f"Bayer{p}{d}" for p in PATTERNS for d in ("10Packed", "10p", "12p")] +
            [f"S{p}{d}P" for p in ("GRBG", "RGGB", "GBRG", "BGGR") for d in (10, 12)])

MODES = ("2x2", "3x3", "lcaa", "lcaav", "yuv422")
JPEG = base64.b64decode(  # 8x8 pixels of (200, 60, 40)
    "/9j/4AAQSkZJRgABAQAAAQABAAD/2wBDAA0JCgsKCA0LCgsODg0PEyAVExISEyccHhcgLikxMC4pLSwzOko+MzZGNywt"
    "QFdBRkxOUlNSMj5aYVpQYEpRUk//2wBDAQ4ODhMREyYVFSZPNS01T09PT09PT09PT09PT09PT09PT09PT09PT09PT09P"
    "T09PT09PT09PT09PT09PT09PT0//wAARCAAIAAgDAREAAhEBAxEB/8QAFAABAAAAAAAAAAAAAAAAAAAABf/EABQQAQAA"
    "AAAAAAAAAAAAAAAAAAD/xAAVAQEBAAAAAAAAAAAAAAAAAAAFBv/EABQRAQAAAAAAAAAAAAAAAAAAAAD/2gAMAwEAAhED"
    "EQA/ADhipf/Z")


def pnm(width, height, channels, samples, bits=8):
    body = bytes(samples) if bits == 8 else struct.pack(f">{len(samples)}H", *samples)
    kind = b"P5" if channels == 1 else b"P6"
    return b"%s\n%d %d\n%d\n" % (kind, width, height, (1 << bits) - 1) + body


def read_pnm(data):
    kind, width, height, top, body = re.match(
        rb"(P[56])\s(\d+)\s(\d+)\s(\d+)\s(.*)", data, re.S).groups()
    samples = list(body) if int(top) < 256 else list(struct.unpack(f">{len(body) // 2}H", body))
    return int(width), int(height), 1 if kind == b"P5" else 3, samples


def read_png(data):
    """(width, height, bits, colour type, bytes) of a PNG without interlace."""
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    at, packed = 8, b""
    while at < len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + size]
        if kind == b"IHDR":
            width, height, bits, colour = struct.unpack(">IIBB", body[:10])
        if kind == b"IDAT":
            packed += body
        at += 12 + size
    step = {0: 1, 2: 3, 6: 4}[colour] * bits // 8
    raw, pitch, above, rows = zlib.decompress(packed), width * step, bytearray(width * step), b""
    for y in range(height):
        kind, row = raw[y * (pitch + 1)], bytearray(raw[y * (pitch + 1) + 1:(y + 1) * (pitch + 1)])
        for i in range(pitch):
            left = row[i - step] if i >= step else 0
            corner = above[i - step] if i >= step else 0
            guess = left + above[i] - corner
            near = min((left, above[i], corner), key=lambda v: abs(guess - v))
            row[i] = (row[i] + (0, left, above[i], (left + above[i]) // 2, near)[kind]) & 255
        rows, above = rows + bytes(row), row
    return width, height, bits, colour, rows


class ToolTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def tearDown(self):
        self.assertEqual([n for n in os.listdir(self.folder) if n.endswith(".part")], [])

    def path(self, name):
        return os.path.join(self.folder, name)

    def put(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data)

    def get(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def lum(self, *words, status=0, stdin=b""):
        done = subprocess.run([LUM, *map(str, words)], input=stdin, capture_output=True,
                              cwd=self.folder, timeout=60)
        self.assertEqual(done.returncode, status, (words, done.stderr.decode()))
        done.text = done.stderr.decode()
        return done

    def through(self, picture, source, target, *options, words=(), suffix="ppm"):
        """picture -> simulated frame -> converted picture: (width, height, channels, samples)."""
        self.put("in.pnm", picture)
        made = self.lum("simulate", "--format", source, *words, "in.pnm", "frame.raw").text
        size = re.search(r"--size (\d+x\d+)", made).group(1)
        self.lum("convert", "--from", source, "--size", size, "--to", target, *words, *options,
                 "frame.raw", "out." + suffix)
        return read_pnm(self.get("out." + suffix)) if suffix == "ppm" else self.get("out." + suffix)

    def test_exact_round_trips(self):
        noise = random.Random(1)
        grey = [noise.randrange(256) for _ in range(24 * 10)]
        colour = [noise.randrange(256) for _ in range(24 * 10 * 3)]
        for source in ("RGB8", "bgr8", "0x02200016", "BGRa8"):
            for target in ("RGB24", "BGR24", "BGRA32", "RGBA32"):
                with self.subTest(source=source, target=target):
                    got = self.through(pnm(24, 10, 3, colour), source, target)
                    self.assertEqual(got, (24, 10, 3, colour))
        orders = ((), ("--big-endian",), ("--msb-aligned",), ("--big-endian", "--msb-aligned"))
        for source in ("Mono8", "Mono12Packed", "Mono10", "Mono12", "Mono14"):
            for words in orders if source in ("Mono10", "Mono12", "Mono14") else ((),):
                with self.subTest(source=source, words=words):
                    got = self.through(pnm(24, 10, 1, grey), source, "MONO8_REC709", words=words)
                    self.assertEqual(got, (24, 10, 1, grey))
        deep = [noise.randrange(65536) for _ in range(24 * 10)]
        packed = [(s, 0xFFC0) for s in ("Mono10Packed", "Mono10p", "Y10P", "r10_csi2p")]
        packed += [(s, 0xFFF0) for s in ("Mono12p", "V4L2_PIX_FMT_Y12P", "0x010C0047")]
        for source, kept in [("Mono10", 0xFFC0), ("Mono14", 0xFFFC), ("Mono16", 0xFFFF)] + packed:
            for words in orders if (source, kept) not in packed else ((),):
                with self.subTest(source=source, words=words):
                    got = self.through(pnm(24, 10, 1, deep, 16), source, "MONO16_REC601",
                                       words=words)
                    self.assertEqual(got[3], [v & kept for v in deep])

    def test_flat_colours(self):
        # Red and blue differ and no two channels are equal: any wrong phase or order shows.
        flat = [(201, 96, 38), (12, 90, 240)]
        exact = [(s, 0) for s in BAYER + UNPACKED]
        # Blue is 4.5 times a difference that bytes round: the CYGM frame knows it to some 4 levels.
        near = [("IRaw8CYGM", 4)] + [(s, 2) for s in ("YUV411_8_UYYVYY", "Yuv422", "YUV8_UYV")]
        for source, error in exact + near:
            for rgb in flat:
                with self.subTest(source=source, rgb=rgb):
                    width, height, _, got = self.through(pnm(13, 11, 3, rgb * 143), source, "RGB24")
                    self.assertEqual(len(got), width * height * 3)
                    worst = max(abs(a - b) for a, b in zip(got, rgb * (width * height)))
                    self.assertLessEqual(worst, error)
        for source, error in (("BayerGB8", 4), ("IRaw8CYGM", 4), ("YUV8_UYV", 2)):
            with self.subTest(source=source, target="UYVY"):
                got = self.through(pnm(8, 8, 3, flat[0] * 64), source, "UYVY")[3]
                self.assertLessEqual(max(abs(a - b) for a, b in zip(got, flat[0] * 64)), error)
        direct = self.through(pnm(8, 8, 3, flat[0] * 64), "IRaw8CYGM", "BGR24", "--direct-bgr")
        # Its last column reads past the row, so to seven of eight pixels.
        self.assertLessEqual(max(abs(a - b) for a, b in zip(direct[3][:21], flat[0] * 7)), 4)

    def test_crop_is_told(self):
        self.put("in.pnm", pnm(13, 11, 3, (9, 9, 9) * 143))
        for source, size in (("BayerGB16", "12x10"), ("IRaw8CYGM", "12x8"), ("Yuv411", "12x11"),
                             ("Mono12Packed", "12x11")):
            with self.subTest(source=source):
                text = self.lum("simulate", "--format", source, "in.pnm", "f.raw").text
                self.assertIn(f"13x11 cropped to {size}", text)

    def test_ways(self):
        flat = pnm(8, 8, 3, (100, 60, 20) * 64)
        for mode in MODES:
            with self.subTest(mode=mode):
                got = self.through(flat, "BayerGR8", "BGR24", "--debayer", mode)
                self.assertEqual(got[3], [100, 60, 20] * 64)
        for gain in (("--wb", "2,1,0.5"), ("--matrix", "2,0,0,0,1,0,0,0,0.5"),
                     ("--matrix", *"2 0 0 0 1 0 0 0 0.5".split())):
            with self.subTest(gain=gain):
                got = self.through(flat, "BayerGR8", "BGR24", *gain)
                self.assertEqual(got[3], [200, 60, 10] * 64)
        swap = self.through(flat, "BayerRG8", "BGR24", "--matrix", "0,0,1,0,1,0,-1,0,0")
        self.assertEqual(swap[3], [20, 60, 0] * 64)
        # Pairs that the dispatcher does not correct: a _CC transform, or LumBGRToBGR_CC afterwards.
        swap = ("--matrix", "0,0,2,0,1,0,1,0,0")
        for source, target, words, error in (
                ("BayerGB8", "RGBA32", (), 0), ("BayerGR8", "UYVY", (), 4),
                ("BayerBG8", "BGR24", ("--cc",), 0), ("BayerGR12", "BGR24", (), 0),
                ("BayerRG10", "RGB48", (), 1), ("BayerGB12Packed", "RGB48", (), 1),
                ("BayerGB12Packed", "RGB24", (), 0), ("SGBRG10P", "BGR48", (), 1),
                ("BayerGR8", "BGR24", ("--debayer", "lcaa"), 0),
                ("BayerGR8", "RGB24", ("--debayer", "3x3"), 0),
                ("BayerGR8", "RGB24", ("--debayer", "bin"), 0), ("RGBa8", "RGB24", (), 0),
                ("YUV8_UYV", "BGR24", (), 4), ("IRaw8CYGM", "BGR24", ("--cygm", "3x3"), 8)):
            with self.subTest(corrected=source, target=target, words=words):
                got = self.through(flat, source, target, *swap, *words)
                got = [v >> 8 for v in got[3]] if target.endswith("48") else got[3]
                self.assertLessEqual(max(abs(a - b) for a, b in zip(got, [40, 60, 100] * 64)),
                                     error)
        for order in ("--big-endian", "--msb-aligned"):
            got = self.through(flat, "BayerBG12", "BGR48", *swap, words=(order,))
            self.assertEqual([v >> 8 for v in got[3][:3]], [40, 60, 100])
        rec709 = (54 * 40 + 184 * 60 + 18 * 100 + 128) >> 8
        self.assertEqual(self.through(flat, "BayerGB8", "MONO8_REC709", *swap, "--cc")[3],
                         [rec709] * 64)
        self.put("f.raw", bytes(64))
        told = self.lum("convert", "--from", "BayerGB8", "--size", "8x8", "--to", "MONO8_REC709",
                        *swap, "f.raw", "o.raw").text
        self.assertRegex(told, r"BT\.601.*--cc.*\n.*change places.*--cc")
        for source in ("BayerRG8", "BayerGB12", "Mono10", "RGBa8", "Yuv422"):
            with self.subTest(via_old=source):
                self.assertEqual(self.through(flat, source, "RGB24", "--via-old"),
                                 self.through(flat, source, "RGB24"))

    def test_windows(self):
        colour = (100, 60, 20)
        flat = pnm(8, 12, 3, colour * 96)
        grey = (77 * 100 + 150 * 60 + 29 * 20) >> 8
        for words, source, target, size, error in (
                (("--debayer", "bin"), "BayerGB8", "BGR24", (4, 6), 0),
                (("--debayer", "bin"), "BayerGB8", "UYVY", (4, 6), 4),
                (("--cygm", "2x2"), "IRaw8CYGM", "BGR24", (8, 12), 4),
                (("--cygm", "3x3"), "IRaw8CYGM", "RGBA32", (8, 12), 4),
                (("--cygm", "bin"), "IRaw8CYGM", "BGR24", (4, 6), 4),
                (("--cygm", "luma"), "IRaw8CYGM", "MONO8_REC601", (8, 12), 2)):
            with self.subTest(words=words, target=target):
                got = self.through(flat, source, target, *words)
                self.assertEqual(got[:2], size)
                want = list(colour) if got[2] == 3 else [grey]
                want *= size[0] * size[1]
                self.assertLessEqual(max(abs(a - b) for a, b in zip(got[3], want)), error)
                self.assertEqual(len(got[3]), len(want))
        self.put("f.raw", bytes(6 * 4))
        self.lum("convert", "--size", "6x4", "--from", "IRaw8CYGM", "--cygm", "luma", "f.raw",
                 "o.raw")
        self.assertEqual(len(self.get("o.raw")), 24)  # without --to: the one that there is
        for words, text in (
                (("--from", "BayerRG8", "--cygm", "3x3"), r"--cygm is for IRaw8CYGM"),
                (("--from", "IRaw8CYGM", "--cygm", "luma", "--to", "BGR24"), r"MONO8_REC601 only"),
                (("--from", "IRaw8CYGM", "--debayer", "bin"), r"8-bit Bayer"),
                (("--from", "IRaw8CYGM", "--cygm", "bin", "--to", "UYVY"), r"_Bin: 0x88000004"),
                (("--from", "BayerRG8", "--debayer", "bin", "--wb", "1,1,1", "--to", "RGBA32"),
                 r"after its conversion.*not in RGBA32"),
                (("--from", "YUV422_8_UYVY", "--yuv", "full", "--to", "RGB24"), r"to BGR24")):
            with self.subTest(refused=words):
                self.assertRegex(self.lum("convert", "--size", "6x4", *words, "f.raw", "o.raw",
                                          status=1).text, text)

    def test_picture_files(self):
        noise = random.Random(2)
        samples = [noise.randrange(65536) for _ in range(9 * 7 * 3)]
        eight = [v >> 8 for v in samples]
        width, height, bits, colour, rows = read_png(
            self.through(pnm(9, 7, 3, eight), "RGB8", "BGR24", suffix="png"))
        self.assertEqual((width, height, bits, colour, list(rows)), (9, 7, 8, 2, eight))
        alpha = read_png(self.through(pnm(9, 7, 3, eight), "BGR8", "BGRA32", suffix="png"))
        self.assertEqual(alpha[2:4], (8, 6))
        self.assertEqual(list(alpha[4][3::4]), [255] * 63)
        self.assertEqual(list(alpha[4][:3]), eight[:3])
        flat = pnm(8, 8, 3, (0x1234, 0x5678, 0x9ABC) * 64, 16)
        deep = read_png(self.through(flat, "BayerBG12", "BGR48", suffix="png"))
        self.assertEqual((deep[2], deep[3], deep[4][:6].hex()), (16, 2, "123056709ab0"))
        grey = pnm(9, 7, 1, samples[:63], 16)
        mono = read_png(self.through(grey, "Mono16", "MONO16_REC601", "--via-old", words=(),
                                     suffix="png"))
        swapped = [v & 255 for v in samples[:63]]  # read as big-endian: the low byte comes first
        self.assertEqual(list(mono[4][0::2]), swapped)
        # What was written is read back, 8 and 16 bits, and TIFF agrees with PNG.
        for source, target, picture, code in (("RGB8", "RGB24", pnm(9, 7, 3, eight), "RGB8"),
                                              ("Mono16", "MONO16_REC709", grey, "Mono16"),
                                              ("RGBa8", "BGRA32", pnm(9, 7, 3, eight), "RGBa8")):
            for suffix in ("png", "tif", "ppm"):
                with self.subTest(target=target, suffix=suffix):
                    self.through(picture, source, target, suffix=suffix)
                    self.lum("simulate", "--format", code, "out." + suffix, "again.raw")
                    self.assertEqual(self.get("again.raw"), self.get("frame.raw"))
        self.put("in.jpg", JPEG)
        self.lum("simulate", "--format", "RGB8", "in.jpg", "f.raw")
        self.assertEqual(len(self.get("f.raw")), 192)
        self.assertLessEqual(max(abs(a - b) for a, b in zip(self.get("f.raw"), (200, 60, 40))), 3)
        tiff = self.through(flat, "BayerBG12", "BGR48", suffix="tiff")
        self.assertIn(struct.pack("<3H", 0x1230, 0x5670, 0x9AB0) * 2, tiff)

    def test_streams_and_sequences(self):
        frames = [bytes([10 * i + 1] * 32) for i in range(4)]
        self.put("all.raw", b"".join(frames))
        base = ("convert", "--from", "Mono8", "--size", "8x4", "--to", "MONO8_REC601")
        piped = self.lum(*base, "-", "-", stdin=b"".join(frames))
        self.assertEqual(piped.stdout, b"".join(frames))
        self.lum(*base, "--frames", "1-2", "all.raw", "two.raw")
        self.assertEqual(self.get("two.raw"), frames[1] + frames[2])
        self.lum(*base, "all.raw", "p%04d.pgm")
        self.assertEqual(sorted(n for n in os.listdir(self.folder) if n.startswith("p")),
                         [f"p000{i}.pgm" for i in range(4)])
        self.assertEqual(read_pnm(self.get("p0003.pgm"))[3], list(frames[3]))
        for i, frame in enumerate(frames[:3]):
            self.put(f"in{i + 1}.raw", frame)
        self.lum(*base, "in%d.raw", "joined.raw")
        self.assertEqual(self.get("joined.raw"), b"".join(frames[:3]))
        first = self.lum(*base, "all.raw", "one.pgm")
        self.assertIn("frame 0 of 4", first.text)
        self.assertEqual(read_pnm(self.get("one.pgm"))[3], list(frames[0]))
        png = self.lum(*base, "--type", "png", "--frames", "2", "-", "-", stdin=b"".join(frames))
        self.assertEqual(read_png(png.stdout)[4], frames[2])
        self.assertNotIn("frames/s", piped.text + first.text + png.text)  # no terminal, no bar
        ours, theirs = os.openpty()
        subprocess.run([LUM, *base, "all.raw", "q%d.pgm"], stderr=theirs, cwd=self.folder,
                       check=True, timeout=60)
        os.close(theirs)
        self.assertRegex(os.read(ours, 4096), rb"4/4 frames, \d+\.\d frames/s, 0 s left")
        os.close(ours)
        made = self.lum("simulate", "--format", "Mono8", "-", "-", stdin=pnm(8, 4, 1, frames[0]))
        self.assertEqual(made.stdout, frames[0])
        timed = self.lum(*base, "--time", "3", "all.raw", "t.pgm").text
        self.assertRegex(timed, r"Mono8 to MONO8_REC601, 8x4: \d+\.\d+ ms a frame, best of 3")

    def test_nothing_is_dropped_silently(self):
        frames = bytes(range(128))
        base = ("convert", "--from", "Mono8", "--size", "8x4", "--to", "MONO8_REC601")
        self.put("all.raw", frames)
        for i in (1, 2, 4):
            self.put(f"in{i}.raw", frames[:32])
        gap = self.lum(*base, "in%d.raw", "two.raw").text
        self.assertIn("in3.raw is missing; in4.raw and what follows is not read", gap)
        self.assertIn("frames are counted from 0, which is in1.raw here", gap)
        self.assertEqual(len(self.get("two.raw")), 64)
        self.assertIn("frame 0 of 4", self.lum(*base, "-", "one.pgm", stdin=frames).text)
        for source, stdin in (("all.raw", b""), ("-", frames)):
            late = self.lum(*base, "--frames", "2-9", source, "late.raw", stdin=stdin)
            self.assertIn("the input ends after frame 3", late.text)
        for command in (("formats", "--json"), ("errors", "-7"), ("convert", "--help")):
            with open("/dev/full", "wb") as full:
                done = subprocess.run([LUM, *command], stdout=full, stderr=subprocess.PIPE)
            self.assertEqual((done.returncode, b"could be written" in done.stderr), (1, True))
        self.put("cut.jpg", JPEG[:-4])
        cut = self.lum("simulate", "--format", "Mono8", "cut.jpg", "cut.raw", status=1)
        self.assertIn("premature end", cut.text)
        self.put("unended.jpg", JPEG[:-2])
        self.lum("simulate", "--format", "Mono8", "unended.jpg", "cut.raw")
        for i in (1, 2, 4):
            self.put(f"run1{i}+.raw", frames[:32])
        self.assertIn("run14+.raw", self.lum(*base, "run1%d+.raw", "two.raw").text)

    def test_outputs_that_are_no_plain_files(self):
        frame = bytes(range(32))
        base = ("convert", "--from", "Mono8", "--size", "8x4", "--to", "MONO8_REC601")
        self.put("f.raw", frame)
        self.assertEqual(self.lum(*base, "f.raw", "/dev/stdout").stdout, frame)
        self.assertIn("no name", self.lum(*base, "f.raw", "", status=1).text)
        os.symlink("there.raw", self.path("link.raw"))
        self.lum(*base, "f.raw", "link.raw")
        self.assertTrue(os.path.islink(self.path("link.raw")))
        self.assertEqual(self.get("there.raw"), frame)
        with open(self.path("log.raw"), "wb") as log:  # what is there already stays
            subprocess.run([LUM, *base, "f.raw", "/dev/stdout"], stdout=log, cwd=self.folder)
            subprocess.run([LUM, *base, "f.raw", "/dev/stdout"], stdout=log, cwd=self.folder)
        self.assertEqual(self.get("log.raw"), 2 * frame)
        os.chmod(self.path("there.raw"), 0o600)
        self.lum(*base, "f.raw", "link.raw")
        self.assertEqual(os.stat(self.path("there.raw")).st_mode & 0o777, 0o600)
        self.lum(*base, "f.raw", "x" * 255)
        self.assertEqual(self.get("x" * 255), frame)
        os.symlink("loop.raw", self.path("loop.raw"))
        self.assertIn("nowhere", self.lum(*base, "f.raw", "loop.raw", status=1).text)
        # A reader that waits for a frame before it sends the next one.
        with subprocess.Popen([LUM, *base, "-", "-"], stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE) as lum:
            for _ in range(2):
                lum.stdin.write(frame)
                lum.stdin.flush()
                self.assertTrue(select.select([lum.stdout], [], [], 20)[0])
                self.assertEqual(os.read(lum.stdout.fileno(), 64), frame)
        # What is ended by a signal leaves nothing behind: tearDown() looks.
        with subprocess.Popen([LUM, *base, "-", "stopped.raw"], stdin=subprocess.PIPE,
                              cwd=self.folder) as lum:
            lum.stdin.write(frame)
            lum.stdin.flush()
            deadline = time.monotonic() + 20
            while time.monotonic() < deadline and not any(
                    n.endswith(".part") for n in os.listdir(self.folder)):
                time.sleep(0.01)
            time.sleep(0.2)  # until it is known to the program
            lum.terminate()
            self.assertEqual(lum.wait(timeout=20), -signal.SIGTERM)

    def test_finish(self):
        # 4x2 pixels of RGB: red counts columns, green rows.
        pixels = [(40 * x, 90 * y, 7) for y in range(2) for x in range(4)]
        self.put("f.raw", bytes(v for p in pixels for v in p))
        base = ("convert", "--from", "RGB8", "--size", "4x2", "--to", "RGB24")

        def made(*words):
            self.lum(*base, *words, "f.raw", "out.ppm")
            width, height, _, samples = read_pnm(self.get("out.ppm"))
            rows = [samples[i:i + 3 * width] for i in range(0, len(samples), 3 * width)]
            return [[tuple(r[i:i + 2]) for i in range(0, len(r), 3)] for r in rows], width, height

        at = [[(40 * x, 90 * y) for x in range(4)] for y in range(2)]
        turned = [[at[1 - x][y] for x in range(2)] for y in range(4)]  # 90 degrees clockwise
        for words, picture in (
                (("--flip", "mirror"), [r[::-1] for r in at]),
                (("--flip", "upside-down"), at[::-1]),
                (("--flip", "180"), [r[::-1] for r in at[::-1]]),
                (("--flip", "90"), turned),
                (("--flip", "270"), [r[::-1] for r in turned[::-1]]),
                (("--flip", "transpose"), [list(c) for c in zip(*at)]),
                (("--resize", "8x2", "--nearest"), [[p for p in r for _ in "12"] for r in at]),
                (("--resize", "2x1"), [[(20, 45), (100, 45)]]),
                (("--resize", "2x1", "--flip", "90"), [[(20, 45)], [(100, 45)]])):
            with self.subTest(words=words):
                rows, width, height = made(*words)
                self.assertEqual(rows, picture)
                self.assertEqual((width, height), (len(picture[0]), len(picture)))

        for words, picture in (
                (("--bin", "2"), [[(20, 45), (100, 45)]]),
                (("--bin", "4x1", "--resize", "1x4", "--nearest"),
                 [[(60, g)] for g in (0, 0, 90, 90)])):
            with self.subTest(words=words):
                self.assertEqual(made(*words)[0], picture)

        # Words that stay in the byte order of the frame are numbers to the means all the same.
        words = [1000 + 64 * x for x in range(8)]
        self.put("be.raw", struct.pack(">8H", *words) * 4)
        deep = ("convert", "--from", "Mono16", "--size", "8x4", "--to", "MONO16_REC601")
        means = [words[2 * x] + 32 for x in range(4)]
        for order in ("--big-endian", "--via-old"):
            for change in (("--bin", "2"), ("--resize", "4x2")):
                with self.subTest(order=order, change=change):
                    self.lum(*deep, order, *change, "be.raw", "out.pgm")
                    self.assertEqual(read_pnm(self.get("out.pgm"))[3], means * 2)
                    self.lum(*deep, order, *change, "be.raw", "out.raw")
                    self.assertEqual(self.get("out.raw"), struct.pack(">4H", *means) * 2)

        self.lum(*base, "--i420", "f.raw", "out.yuv")
        planes = self.get("out.yuv")
        self.assertEqual(len(planes), 12)
        luma = [((66 * r + 129 * g + 25 * b + 128) >> 8) + 16 for r, g, b in pixels]
        self.assertEqual(list(planes[:8]), luma)
        sums = [[sum(pixels[y * 4 + 2 * x + i][c] for y in (0, 1) for i in (0, 1))
                 for c in range(3)] for x in range(2)]
        self.assertEqual(list(planes[8:10]),
                         [((-38 * r - 74 * g + 112 * b + 512) >> 10) + 128 for r, g, b in sums])

    def test_yuv(self):
        # Random bytes: a detour by BGR24 would clip and round. Two rows of eight pixels.
        noise = random.Random(3)
        for source, pixels, at in (("YUV411_8_UYYVYY", 4, "UYYVYY"), ("YUV422_8_UYVY", 2, "UYVY"),
                                   ("YUV8_UYV", 1, "UYV")):
            frame = bytes(noise.randrange(256) for _ in range(16 // pixels * len(at)))
            self.put("f.raw", frame)
            want = {c: [frame[i + k] for i in range(0, len(frame), len(at))
                        for k in range(len(at)) if at[k] == c] for c in "YUV"}
            for c in "UV":
                each = [v for v in want[c] for _ in range(pixels)]  # of each pixel
                want[c] = [(sum(each[y + x + i] for y in (0, 8) for i in (0, 1)) + 2) // 4
                           for x in range(0, 8, 2)]
            mirrored = {c: [v for i in range(0, len(p), len(p) // (2 if c == "Y" else 1))
                            for v in p[i:i + len(p) // (2 if c == "Y" else 1)][::-1]]
                        for c, p in want.items()}
            for words, planes in (((), want), (("--flip", "mirror"), mirrored),
                                  (("--to", "RGB24"), want)):
                with self.subTest(source=source, words=words):
                    told = self.lum("convert", "--from", source, "--size", "8x2", "--i420", *words,
                                    "f.raw", "out.yuv").text
                    self.assertEqual(list(self.get("out.yuv")), planes["Y"] + planes["U"] +
                                     planes["V"])
                    self.assertRegex(told, "the source's range.*not used" if "--to" in words
                                     else "the source's range")
            sizes = ((("--resize", "6x4"), 36), (("--bin", "2x1", "--flip", "90"), 12))
            for words, size in sizes:
                self.lum("convert", "--from", source, "--size", "8x2", "--i420", *words, "f.raw",
                         "out.yuv")
                self.assertEqual(len(self.get("out.yuv")), size)
        # Studio white and black, read as full range and as what they are.
        self.put("f.raw", bytes((128, 235, 128, 16)) * 8)
        for words, pixel in (((), (235, 16)), (("--yuv", "full"), (235, 16)),
                             (("--yuv", "studio"), (255, 0)), (("--yuv", "studio709"), (255, 0))):
            self.lum("convert", "--from", "YUV422_8_UYVY", "--size", "8x2", *words, "f.raw",
                     "out.ppm")
            self.assertEqual(read_pnm(self.get("out.ppm"))[3][::3], list(pixel) * 8)
        told = self.lum("convert", "--from", "YUV422_8_UYVY", "--size", "8x2", "--wb", "1,1,1",
                        "--i420", "f.raw", "out.yuv").text
        self.assertIn("by way of BGR24", told)
        self.assertEqual(self.get("out.yuv")[:2], bytes(16 + (220 * v + 128 >> 8)
                                                        for v in (235, 16)))

    def test_unpack(self):
        twelve, ten = bytes((0xAB, 0xCD, 0xEF)) * 4, bytes((0x12, 0x34, 0x56, 0x78, 0x9A)) * 2
        for source, frame, bits, samples in (
                ("BayerRG12Packed", twelve, 12, (0xABD, 0xEFC)),
                ("BayerBG12p", twelve, 12, (0xDAB, 0xEFC)),
                ("SGRBG12P", twelve, 12, (0xABF, 0xCDE)),
                ("Mono10Packed", twelve, 10, (0x2AD, 0x3BC)),
                ("0x010A0054", ten, 10, [0x9A78563412 >> 10 * i & 1023 for i in range(4)]),
                ("Y10P", ten, 10, (0x4A, 0xD2, 0x159, 0x1E2))):
            samples = list(samples) * (8 // len(samples))
            self.put("p.raw", frame)
            for place, shift in (("lsb", 0), ("msb", 16 - bits)):
                with self.subTest(source=source, place=place):
                    words = [v << shift for v in samples]
                    for name in ("w.raw", "w.png", "w.pgm"):
                        self.lum("convert", "--from", source, "--size", "4x2", "--unpack", place,
                                 "p.raw", name)
                    self.assertEqual(list(struct.unpack("<8H", self.get("w.raw"))), words)
                    self.assertEqual(read_png(self.get("w.png")),
                                     (4, 2, 16, 0, struct.pack(">8H", *words)))
                    white = (1 << bits) - 1 << shift
                    self.assertTrue(self.get("w.pgm").startswith(b"P5\n4 2\n%d\n" % white))
                    self.assertEqual(read_pnm(self.get("w.pgm"))[3], words)

    def test_padded_lines(self):
        noise = random.Random(3)
        for source, size, line in (("BayerRG8", "10x4", 10), ("Mono12Packed", "6x4", 9),
                                   ("BayerRG10p", "8x4", 10), ("BayerGR12", "6x4", 12),
                                   ("YUV422_8_UYVY", "6x4", 12), ("IRaw8CYGM", "6x4", 6)):
            with self.subTest(source=source):
                lines = [noise.randbytes(line) for _ in range(2 * 4)]  # of two frames
                padded = b"".join(one + noise.randbytes(7) for one in lines)
                convert = ("convert", "--from", source, "--size", size)
                plain = self.lum(*convert, "-", "-", stdin=b"".join(lines)).stdout
                self.put("padded.raw", padded)
                for name in ("padded.raw", "-"):
                    self.assertEqual(self.lum(*convert, "--line-pitch", line + 7, name, "-",
                                              stdin=padded).stdout, plain)
                second = self.lum(*convert, "--line-pitch", line + 7, "--frames", 1, "-", "-",
                                  stdin=padded).stdout
                self.assertEqual(second, plain[len(plain) // 2:])

    def test_refusals(self):
        frame = bytes(range(96))  # 12x8 at 8 bits
        self.put("f.raw", frame)
        self.put("kept.png", b"precious")
        rg8 = ("--from", "BayerRG8")
        table = [
            ((*rg8, "--size", "12x10"), "f.raw", 1,
             r"96 bytes.*12 x 10 x 8 bits = 120 bytes \(24 bytes short\)"),
            ((*rg8, "--size", "10x8"), "f.raw", 1, r"80 bytes \(1 of them and 16 bytes over\)"),
            ((*rg8, "--size", "10x8"), "f.raw", 1,
             r"With padded lines 1 of that size would fit: --line-pitch 12$"),
            ((*rg8, "--size", "10x4"), "f.raw", 1, r"padded lines 2 of.*--line-pitch 12$"),
            ((*rg8, "--size", "6x10"), "f.raw", 1, r"36 bytes over\).*\n.*at 6x10$"),
            ((*rg8, "--size", "10x8", "--line-pitch", "9"), "f.raw", 1,
             r"--line-pitch 9: a line of 10 BayerRG8 pixels has 10 bytes"),
            ((*rg8, "--size", "10x8", "--line-pitch", "13"), "f.raw", 1,
             r"needs 8 lines of 13 bytes = 104 bytes \(8 bytes short\)$"),
            ((*rg8, "--size", "10x8", "--line-pitch=-3"), "f.raw", 1, r"expected a number of byt"),
            (("--from", "Mono12Packed", "--size", "8x8"), "f.raw", 0, ""),
            (("--from", "BayerRG16", "--size", "12x8"), "f.raw", 1,
             r"= 192 bytes.*\n.*fit as: Mono8, BayerGR8, BayerRG8, BayerGB8, BayerBG8, IRaw8CYGM"),
            (("--from", "BayerRG16", "--size", "8x8"), "f.raw", 1,
             r"fit as: Mono12Packed, BayerGR12Packed.*YUV411_8_UYYVYY"),
            ((*rg8, "--size", "12x10"), "-", 1, r"standard input has 96 bytes"),
            ((*rg8, "--size", "12x6"), "-", 1, r"72 bytes \(1 of them and 24 bytes over\)"),
            ((*rg8, "--size", "12x8", "--to", "BGR48"), "f.raw", 1,
             r"0x88000012 Feature support is not implemented.*\n.*converts to: MONO8_REC601 BGR24"),
            (("--from", "RGB16", "--size", "4x4"), "f.raw", 1, r"-7 One of the.*\n.*nothing"),
            ((*rg8, "--size", "96x1"), "f.raw", 1, r"multiple of 2; 96x1 is not"),
            (("--from", "IRaw8CYGM", "--size", "16x6"), "f.raw", 1, r"multiple of 4; 16x6"),
            ((*rg8, "--size", "12x8", "--frames", "1"), "f.raw", 1, r"has 1 frame, counted from 0"),
            ((*rg8, "--size", "12x8", "--frames", "9-1"), "f.raw", 1, r"--frames 9-1"),
            ((*rg8, "--size", "12x8", "--frames=-1"), "f.raw", 1, r"--frames -1: expected"),
            ((*rg8, "--size", "12by8"), "f.raw", 1, r"--size 12by8"),
            ((*rg8, "--size", "4294967297x8"), "f.raw", 1, r"--size 4294967297x8"),
            (("--from", "BayerXY8", "--size", "12x8"), "f.raw", 1, r"BayerXY8.*BayerRG8"),
            ((*rg8, "--size", "12x8", "--to", "BGR25"), "f.raw", 1, r"BGR25.*BGR24"),
            ((*rg8, "--size", "12x8"), "none.raw", 1, r"none.raw: No such file"),
            ((*rg8, "--size", "12x8", "--big-endian"), "f.raw", 1, r"8 bits a pixel"),
            ((*rg8, "--size", "12x8", "--to", "BGR48", "--wb", "1,1,1"), "f.raw", 1,
             r"Raw8ImageTransform_CC: 0x88000012.*\n.*converts to: MONO8_REC601 BGR24"),
            (("--from", "Mono8", "--size", "12x8", "--debayer", "lcaa"), "f.raw", 1,
             r"8-bit Bayer"),
            (("--from", "Mono8", "--size", "12x8", "--wb", "1,1,1", "--to", "MONO8_REC601"),
             "f.raw", 1, r"Mono8 is corrected after.*not in MONO8_REC601"),
            ((*rg8, "--size", "12x8", "--cc"), "f.raw", 1, r"--matrix or --wb"),
            ((*rg8, "--size", "12xx8"), "f.raw", 1, r"--size 12xx8"),
            (("--from", "Mono10p", "--size", "6x8"), "f.raw", 1, r"multiple of 4.*6x8 is not"),
            (("--from", "Mono8", "--size", "1000000x1000000"), "-", 1, r"1,000,000,000,000 pixels"),
            ((*rg8, "--size", "12x8", "--bin", "17"), "f.raw", 1, r"--bin 17.*1 to 16"),
            ((*rg8, "--size", "12x8", "--bin", "2x9"), "f.raw", 1, r"--bin 2x9.*12x8"),
            ((*rg8, "--size", "12x8", "--debayer", "4x4"), "f.raw", 2, r"4x4"),
            ((*rg8, "--size", "12x8", "--matrix", "1,2,3"), "f.raw", 2, r"matrix"),
            (rg8, "f.raw", 2, r"--size"),
            ((*rg8, "--size", "12x8", "--to", "UYVY", "--flip", "90"), "f.raw", 1, r"whole pixels"),
            ((*rg8, "--size", "12x8", "--resize", "0x4"), "f.raw", 1, r"--resize 0x4"),
            ((*rg8, "--size", "12x8", "--resize", "70000x4"), "f.raw", 1, r"65535"),
            ((*rg8, "--size", "12x8", "--resize", "5x4", "--i420", "--type", "raw"), "f.raw", 1,
             r"even.*5x4"),
            (("--from", "YUV422_8_UYVY", "--size", "6x8", "--bin", "2", "--i420", "--type", "raw"),
             "f.raw", 1, r"even.*3x4"),
            ((*rg8, "--size", "12x8", "--i420", "--to", "UYVY", "--type", "raw"), "f.raw", 1,
             r"whole pixels"),
            ((*rg8, "--size", "12x8", "--i420"), "f.raw", 1, r"planes.*frame.yuv"),
            ((*rg8, "--size", "12x8", "--unpack", "lsb"), "f.raw", 1, r"10-bit and 12-bit packed"),
            (("--from", "Mono12Packed", "--size", "8x8", "--unpack", "lsb", "--flip", "90"),
             "f.raw", 2, r"flip"),
            ((*rg8, "--size", "12x8", "--nearest"), "f.raw", 2, r"resize"),
        ]
        for words, source, status, text in table:
            with self.subTest(words=words, source=source):
                self.put("kept.png", b"precious")
                got = self.lum("convert", *words, source, "kept.png", status=status,
                               stdin=frame if source == "-" else b"").text
                self.assertRegex(got, re.compile(text, re.S))
                self.assertEqual(self.get("kept.png") == b"precious", status != 0)
        self.lum("convert", *rg8, "--size", "12x8", "f.raw", "./f.raw", status=1)
        self.lum("simulate", "--format", "Mono8", "f.raw", "f.raw", status=1)
        with open(self.path("f.raw"), "rb") as same:
            done = subprocess.run([LUM, "convert", *rg8, "--size", "12x8", "-", "f.raw"],
                                  stdin=same, stderr=subprocess.PIPE, cwd=self.folder, timeout=60)
            self.assertEqual((done.returncode, b"the input itself" in done.stderr), (1, True))
        with open(self.path("f.raw"), "ab") as same:  # else it would read what it writes
            done = subprocess.run([LUM, "convert", *rg8, "--size", "12x8", "f.raw", "-"],
                                  stdout=same, stderr=subprocess.PIPE, cwd=self.folder, timeout=60)
            self.assertEqual((done.returncode, b"the input itself" in done.stderr), (1, True))
        for i in (1, 2):
            self.put(f"own{i}.raw", frame)
        self.lum("convert", *rg8, "--size", "12x8", "own%d.raw", "own%d.raw", status=1)
        self.assertFalse(os.path.exists(self.path("own0.raw")))
        for words in (("--bin", ""), ("--frames=",), ("--to", ""), ("--cc=",)):
            with self.subTest(words=words):
                self.assertRegex(self.lum("convert", *rg8, "--size", "12x8", *words, "f.raw",
                                          "o.raw", status=2).text,
                                 words[0].strip("=") + ": (has no value|nothing follows)")
        # A pipe is read before there is memory for all that was asked for.
        done = subprocess.run([LUM, "convert", *rg8, "--size", "60000x60000", "-", "o.raw"],
                              input=frame, stderr=subprocess.PIPE, cwd=self.folder, timeout=60,
                              preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS,
                                                                    (1 << 30, 1 << 30)))
        self.assertEqual((done.returncode, b"3,599,999,904 bytes short" in done.stderr), (1, True))
        for name, text in (("o.jpg", r"as \.png.*--type raw"), ("o.pgm", r"PGM holds grey.*\.ppm"),
                           ("none/o.raw", r"none/o.raw: No such"), (".", r"is a directory")):
            with self.subTest(output=name):
                self.assertRegex(self.lum("convert", *rg8, "--size", "12x8", "f.raw", name,
                                          status=1).text, text)
        self.lum("convert", *rg8, "--size", "12x8", "--type", "raw", "f.raw", "o.jpg")
        self.assertRegex(self.lum("frobnicate", status=2).text, "convert simulate formats")
        full = self.lum("convert", *rg8, "--size", "12x8", "--type", "png", "f.raw", "/dev/full",
                        status=1).text
        self.assertRegex(full, "/dev/full: .*No space")
        self.assertEqual(self.get("f.raw"), frame)
        for broken in (b"", b"\x89PNG\r\n\x1a\nxx", JPEG[:99], b"II*\0abc", b"P6\n4 4\n255\nab"):
            with self.subTest(broken=broken):
                self.put("broken", broken)
                self.lum("simulate", "--format", "Mono8", "broken", "kept.png", status=1)

    def test_reports(self):
        root = json.loads(self.lum("formats", "--json").stdout)
        sources = {s["name"]: s for s in root["sources"]}
        self.assertEqual([d["index"] for d in root["destinations"]], list(range(11)))
        self.assertLessEqual(set(BAYER) | {"Mono12Packed", "BGRa8", "YUV8_UYV", "IRaw8CYGM"},
                             set(sources))
        self.assertIn("BGR24", sources["BayerRG8"]["descriptors"])
        self.assertEqual(list(sources["BayerRG8"]["debayer"]), list(MODES))
        self.assertEqual(sources["IRaw8CYGM"]["windows"]["luma"], ["MONO8_REC601"])
        self.assertIn("UYVY", sources["BayerRG8"]["windows"]["bin"])
        self.assertEqual((sources["BayerGB10"]["code"], sources["BayerGB10"]["bayer_pattern"],
                          sources["BayerGB10"]["bits_used"]), ("0x0110000E", "GBRG", 10))
        self.assertEqual(sources["YUV411_8_UYYVYY"]["windows"]["studio709"], ["BGR24"])
        self.assertEqual({n for n, s in sources.items() if s["i420_directly"]},
                         {"Mono8", "RGB8", "BGR8", "RGBa8", "BGRa8", "YUV411_8_UYYVYY",
                          "YUV422_8_UYVY", "YUV8_UYV"})
        self.assertEqual({n for n, s in sources.items() if s["unpacked_first"]},
                         set(UNPACKED) | {"Mono10Packed", "Mono10p", "Mono12p", "Y10P", "Y12P"})
        for source, words in (("SGBRG12P", "BayerGB12"), ("BayerBG12Packed", "BayerBG12"),
                              ("Mono8", None)):
            self.assertEqual(sources[source]["unpacks_to"], words)
        self.assertEqual(sources["BayerRG12"]["matrix"],
                         ["MONO16_REC601", "MONO16_REC709", "BGR48"])
        self.assertEqual(len(sources["BayerRG12"]["cc"]), 11)
        self.assertEqual(sources["YUV8_UYV"]["cc"], ["BGR24", "RGB24"])
        self.assertEqual((root["unpack"], root["largest_bin"], len(root["flips"])),
                         (["lsb", "msb"], 16, 7))
        table = self.lum("formats").stdout.decode()
        for row in (r"BayerRG8 +0x01080009 +8 +8 .*domc", r"Mono10p +0x010A0046 +10 +10 +Mono10\n",
                    r"SRGGB12P .*BayerRG12 .*SRGGB12_CSI2P", "studio709 BGR24", "--bin",
                    "--flip .* 90", "--resize", "--i420", "--unpack lsb", "luma +MONO8_REC601"):
            self.assertRegex(table, row)
        self.assertRegex(self.lum("--version").stdout.decode(), r"lum \d+\.\d+")
        info = self.lum("info", "0x010C002B", "--size", "640x480").stdout.decode()
        for part in ("BayerRG12Packed", "RawPacked", "RGGB", "R G / G B", "460,800 bytes"):
            self.assertIn(part, info)
        self.assertEqual(self.lum("errors", "0x88000004").stdout,
                         b"0x88000004 Parameter 3 is invalid\n")
        self.assertIn(b"-8 The given struct size", self.lum("errors", "-8").stdout)
        self.lum("errors", "eight", status=1)
        self.lum("info", "Mono9", status=1)


if __name__ == "__main__":
    unittest.main()
