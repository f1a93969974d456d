# SPDX-License-Identifier: MIT
"""Counts what a block of pixels takes in each kernel, from the instructions of its loop."""
import pathlib
import re
import shutil
import subprocess

LANES = {"sse41": 16, "avx2": 32, "avx512": 64}
# Of 512-bit operations Intel's cores begin two in a cycle, on the ports that it numbers 0 and 5: the
# first of these kinds only on port 0, the second only on port 5, all others on either. So it was
# found by timing each alone, beside a shift and beside a shuffle, on an Emerald Rapids.
PORT_0 = (r"v?ps(ll|rl|ra)v?[wdq]|vpsh[lr]d|v?pabs|v?p(min|max)|v?pavg|"
          r"v?p(add|sub)u?s[bw]|k(and|or|xor|not|test)")
PORT_5 = (r"v?p(multishift|shuf|unpck|ack|align|erm|broadcast|insr|extr|movzx|sadbw)|"
          r"vp(unpck|erm|cmp|test)|v?pack|v(insert|extract|align|perm|broadcast)|"
          r"v?ps(ll|rl)dq|kunpck|kshift")


def ports(name, operands):
    """Operations on port 0, on port 5 and on either."""
    if name.startswith("kmov"):
        return (1, 0, 0) if operands.startswith("%k") else (0, 1, 0)
    if re.match(r"vperm[ti]2[bw]", name):
        return 0, 2, 1
    if name == "vpermw" or re.match(r"vps(ll|rl|ra)[wdq]$", name) and operands.startswith("%xmm"):
        return 1, 1, 0
    if re.match(r"v?ps(ll|rl)dq", name) or not re.match(PORT_0, name):
        return (0, 1, 0) if re.match(PORT_5, name) else (0, 0, 1)
    return 1, 0, 0


# The steps of the interpolating demosaics.
STEPS = {"along_row", "down_column", "direction", "lcaa", "lcaav", "pair_sums"}
# Sources whose loop makes a block of each of two rows: those of kPairs.
TWO_ROWS = {"Mosaic8", "Mosaic8Pairs", "Mosaic16", "Mosaic16Triples<false>", "Cygm"}


def functions(unit):
    """Names and instructions (address, text), as the disassembler shows them."""
    text = subprocess.run(["objdump", "-d", "--no-show-raw-insn", "-C", str(unit)], check=True,
                          capture_output=True, text=True).stdout
    name, body = None, []
    for line in text.splitlines():
        start = re.match(r"[0-9a-f]+ <(.*)>:$", line)
        if start:
            if name:
                yield name, body
            name, body = start.group(1), []
        instruction = re.match(r"\s*([0-9a-f]+):\s+(\S.*)", line)
        if name and instruction:
            body.append((int(instruction.group(1), 16), instruction.group(2)))
    if name:
        yield name, body


def is_vector(instruction):
    return re.search(r"%[xyz]mm\d", instruction) is not None


def loop(body):
    """The instructions of the loop of whole blocks."""
    index = {address: i for i, (address, _) in enumerate(body)}
    loops = []
    for i, (address, text) in enumerate(body):
        jump = re.match(r"j\w+\s+([0-9a-f]+)", text)
        first = jump and index.get(int(jump.group(1), 16))
        if first is None or not jump or int(jump.group(1), 16) >= address:
            continue
        inside = [t for _, t in body[first:i + 1]]
        if any(map(is_vector, inside)):
            loops.append((first, i, inside))
    found = [inside for first, last, inside in loops
             if not any(first <= f and l <= last and (f, l) != (first, last) for f, l, _ in loops)
             and not any(re.match(r"(ret|call|vzeroupper)", t) for t in inside)]
    if not found:
        return []

    def vectors(inside):
        return sum(map(is_vector, inside))

    # The longest; but where one differs in a few instructions, that is for the sides of a row.
    longest = max(found, key=vectors)
    stores = Count(longest, 1).stores
    alike = [f for f in found if 4 * vectors(f) >= 3 * vectors(longest)
             and Count(f, 1).stores == stores]
    return min(alike, key=vectors)


class Count:
    def __init__(self, instructions, factor):
        self.loads = self.stores = self.port_0 = self.port_5 = self.either = self.scalar = 0
        for text in instructions:
            self.add(text, factor)

    def add(self, text, factor):
        text = re.sub(r"\s*[#<].*", "", text)
        name, _, operands = text.partition(" ")
        masked, zeroes = "{%k" in operands, "{z}" in operands
        operands = re.sub(r"\{[^}]*\}", "", operands).strip()
        if not is_vector(text) and not name.startswith("k"):
            self.scalar += factor
            return
        to_memory = operands.endswith(")") and name not in ("cmp", "test")
        if to_memory:
            self.stores += factor
        elif "(" in operands:
            self.loads += factor
        if re.match(r"v?p?broadcast", name) and "(" in operands:
            return
        if re.match(r"v?mov(dq|ap|up|[qd]$|nt|hp|lp)", name):
            if masked and not to_memory and not (zeroes and "(" in operands):
                self.either += factor
            return
        port_0, port_5, either = ports(name, operands)
        self.port_0 += factor * port_0
        self.port_5 += factor * port_5
        self.either += factor * either

    def least_cycles(self):
        return max(self.port_0, self.port_5, (self.port_0 + self.port_5 + self.either) / 2)


def short(name, level):
    """`row<Mosaic8, Packed24<true>, false>(...)` as "Mosaic8 to Packed24<true>"."""
    name = name.replace(f"lum::{level}::(anonymous namespace)::", "")
    kernel = re.match(r"void row<(.*), (\w+(?:<\w+>)?), (?:true|false)>\(", name)
    if kernel:
        return f"{kernel.group(1)} to {kernel.group(2)}"
    step = re.match(r"(?:void )?((\w+)(?:<\w+>)?)\(", name)
    return step.group(1) if step and step.group(2) in STEPS else None


def counts(units, level):
    """Names and counts for 64 pixels."""
    unit = pathlib.Path(units) / f"kernels_{level}.cpp.o"
    if not unit.exists() or not shutil.which("objdump"):
        return []
    found = []
    for function, body in functions(unit):
        name, instructions = short(function, level), loop(body)
        if name and instructions:
            step = LANES[level] * (2 if name.split(" ")[0] in TWO_ROWS else 1)
            found.append((name, Count(instructions, 64 / step)))
    return sorted(found, key=lambda pair: pair[0])
