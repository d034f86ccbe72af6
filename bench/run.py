#!/usr/bin/env python3
"""Measures the library against the floor, the reference implementation and the peers, and puts the result
into docs/performance.md (between the marks), docs/performance.svg and docs/performance-size.svg.
"""

import argparse
import datetime
import math
import pathlib
import platform
import re
import subprocess
import tempfile

import measure

ROOT = pathlib.Path(__file__).resolve().parent.parent
WHO = {"library": "library", "reference": "reference implementation", "protobuf": "protobuf",
       "protobuf.reused": "protobuf, reused", "pugixml": "pugixml", "nlohmann": "nlohmann JSON"}
COLOURS = {"library": "#c0392b", "reference": "#7f8c8d", "protobuf": "#2471a3",
           "protobuf.reused": "#5dade2", "pugixml": "#229954", "nlohmann": "#d68910"}
# Where the figures are to come to: times the floor.
GOALS = {"answerCall": 2, "outgoingCallMake": 2, "setForwardingConfiguration": 2,
         "SendCSTARequest.2KiB": 2, "CallStateChangeEvent.18": 2.5, "IncomingCallEvent.17": 2.5,
         "CallStateChangeEvent.18.reverse": 6}
SMALL = ("DevicesChangedEvent", "CallHeldEvent")
ORDER = ["answerCall", "outgoingCallMake", "setForwardingConfiguration", "SendCSTARequest.2KiB",
         "getForwardingConfiguration", "getMessageWaitingIndicator", "getDevices.0",
         "getDevices.12", "getDevices.12.long", "getDevices.1000", "getDevices.1000.long",
         "DevicesChangedEvent", "CallHeldEvent", "CallStateChangeEvent.18",
         "CallStateChangeEvent.18.different", "CallStateChangeEvent.18.swapped",
         "CallStateChangeEvent.18.reverse", "CallStateChangeEvent.3of18", "IncomingCallEvent.17",
         "b2buaCSTAResponse.2KiB", "securityStatusChanged"]
# What cannot be avoided does not depend on the order of the fields.
SAME_FLOOR = {f"CallStateChangeEvent.18.{order}": "CallStateChangeEvent.18"
              for order in ("different", "swapped", "reverse")}


def rows(header, lines):
    yield "| " + " | ".join(header) + " |"
    yield "|---" + "|--:" * (len(header) - 1) + "|"
    for line in lines:
        yield "| " + " | ".join(line) + " |"


def ratios(table, cast):
    who = [name for name in WHO if any(name in row for row in table.values())]
    for case in ORDER:
        row = table[case]
        floor = row["floor"][0]
        least, median, _ = row["library"]
        goal = GOALS.get(case, 2 + cast / floor if case in SMALL else None)
        verdict = "" if goal is None else f"{goal:.1f} " + ("yes" if least / floor <= goal else "no")
        yield [case, f"{floor:.0f} ns", f"{least:.0f} ns", f"{median:.0f} ns",
               *(f"{row[name][0] / floor:.1f}" if name in row else "" for name in who), verdict]


def counts(table, instructions):
    for case in ORDER:
        row = table[case]
        yield [case] + [f"{instructions[case][name][0]} / {row[name][2]}" if name in row else ""
                        for name in ("floor", *WHO)]


def growth(table):
    series = {}
    for case, row in table.items():
        name, size = case.rsplit(".", 1)
        series.setdefault(name.split(".")[1], []).append((int(size), row["library"][0]))
    for name, points in sorted(series.items()):
        points.sort()
        xs = [math.log(size) for size, _ in points]
        ys = [math.log(time) for _, time in points]
        x, y = sum(xs) / len(xs), sum(ys) / len(ys)
        slope = (sum((a - x) * (b - y) for a, b in zip(xs, ys)) / sum((a - x) ** 2 for a in xs))
        yield [name, *(f"{time / size:.2f}" for size, time in points), f"{slope:.2f}"]


def picture(table):
    left, top, width, step = 250, 56, 620, 26
    height = top + step * len(ORDER) + 40
    most = max(value[0] / row["floor"][0] for row in table.values() for value in row.values())

    def x(ratio):
        return left + width * math.log10(ratio) / math.log10(most * 1.1)

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {left + width + 20} {height}" '
             'font-family="sans-serif" font-size="12"><rect width="100%" height="100%" fill="#fff"/>'
             '<text x="10" y="18" font-weight="bold">Time of one call, in multiples of the floor '
             '(least of all repetitions; logarithmic)</text>']
    at = left
    for name, label in WHO.items():
        if any(name in row for row in table.values()):
            parts.append(f'<circle cx="{at - 240}" cy="36" r="5" fill="{COLOURS[name]}"/>'
                         f'<text x="{at - 230}" y="40">{label}</text>')
            at += 40 + 7 * len(label)
    for tick in (1, 2, 5, 10, 20, 50, 100, 200):
        if tick <= most:
            parts.append(f'<line x1="{x(tick):.1f}" y1="{top - 4}" x2="{x(tick):.1f}" '
                         f'y2="{height - 32}" stroke="#ddd"/><text x="{x(tick):.1f}" '
                         f'y="{height - 14}" text-anchor="middle">{tick}</text>')
    for i, case in enumerate(ORDER):
        y = top + step * i + 14
        parts.append(f'<text x="{left - 10}" y="{y + 4}" text-anchor="end">{case}</text>'
                     f'<line x1="{left}" y1="{y}" x2="{left + width}" y2="{y}" stroke="#eee"/>')
        for name in reversed(WHO):
            if name in table[case]:
                ratio = table[case][name][0] / table[case]["floor"][0]
                radius = 6 if name == "library" else 4
                parts.append(f'<circle cx="{x(ratio):.1f}" cy="{y}" r="{radius}" '
                             f'fill="{COLOURS[name]}"><title>{case}, {WHO[name]}: {ratio:.1f}'
                             '</title></circle>')
    return "\n".join(parts) + "\n</svg>\n"


def size_picture(table):
    """Time of one event against the size of the unknown text in front of its fields."""
    points = {}
    for case, row in table.items():
        if case.startswith("growth.unknownInFront."):
            for who, (least, _, _) in row.items():
                points.setdefault(who, []).append((int(case.rsplit(".", 1)[1]), least))
    left, top, width, height = 90, 60, 560, 360
    sizes = sorted(size for size, _ in points["library"])
    times = [time for list_ in points.values() for _, time in list_]
    low, high = math.floor(math.log10(min(times))), math.ceil(math.log10(max(times)))

    def x(size):
        return left + width * math.log(size / sizes[0]) / math.log(sizes[-1] / sizes[0])

    def y(time):
        return top + height * (high - math.log10(time)) / (high - low)

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {left + width + 30} '
             f'{top + height + 40}" font-family="sans-serif" font-size="12"><rect width="100%" '
             'height="100%" fill="#fff"/><text x="10" y="18" font-weight="bold">Time of a call-state '
             'event behind so much text that nobody knows (both axes logarithmic)</text>']
    for i, (who, list_) in enumerate(points.items()):
        line = " ".join(f"{x(size):.1f},{y(time):.1f}" for size, time in sorted(list_))
        parts.append(f'<circle cx="{20 + i * 190}" cy="38" r="5" fill="{COLOURS[who]}"/>'
                     f'<text x="{30 + i * 190}" y="42">{WHO[who]}</text>'
                     f'<polyline points="{line}" fill="none" stroke="{COLOURS[who]}" '
                     'stroke-width="2"/>')
        parts += [f'<circle cx="{x(size):.1f}" cy="{y(time):.1f}" r="4" fill="{COLOURS[who]}">'
                  f'<title>{WHO[who]}, {size // 1024} KiB: {time / 1000:.1f} us</title></circle>'
                  for size, time in list_]
    for power in range(low, high + 1):
        unit, scale = next((unit, scale) for unit, scale in (("s", 9), ("ms", 6), ("us", 3), ("ns", 0))
                           if power >= scale)
        parts.append(f'<line x1="{left}" y1="{y(10 ** power):.1f}" x2="{left + width}" '
                     f'y2="{y(10 ** power):.1f}" stroke="#ddd"/><text x="{left - 8}" '
                     f'y="{y(10 ** power) + 4:.1f}" text-anchor="end">{10 ** (power - scale)} {unit}'
                     '</text>')
    for size in sizes:
        label = f"{size // 1024} KiB" if size < 1 << 20 else f"{size >> 20} MiB"
        parts.append(f'<text x="{x(size):.1f}" y="{top + height + 22}" text-anchor="middle">{label}'
                     '</text>')
    return "\n".join(parts) + "\n</svg>\n"


def library_facts(library):
    with tempfile.NamedTemporaryFile() as stripped:
        measure.command("strip", "-o", stripped.name, library)
        size = pathlib.Path(stripped.name).stat().st_size
    text = measure.command("readelf", "-rW", library, capture_output=True).stdout
    kinds = re.findall(r"\bR_[A-Z0-9_]+", text)
    relative = sum(kind.endswith("RELATIVE") for kind in kinds)
    lazy = sum("JUMP_SLO" in kind for kind in kinds)
    return (f"Stripped shared object: {size} bytes. Load-time relocations: {len(kinds) - lazy}, "
            f"of them {relative} relative ones, which need no symbol; and {lazy} calls that are "
            "bound when they are first made.")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--repetitions", type=int, default=25)
    parser.add_argument("--growth-repetitions", type=int, default=5)
    parser.add_argument("--note", default="", help="a sentence about the machine's state")
    arguments = parser.parse_args()

    build = measure.build_benchmark()
    program = build / "bench/bench"
    table = measure.times(program, arguments.repetitions, "-^growth")
    cast = table.pop("crossCast")["floor"][0]
    instructions = measure.costs(program)
    for case, like in SAME_FLOOR.items():
        table[case]["floor"] = table[like]["floor"]
        instructions[case]["floor"] = instructions[like]["floor"]
    growing = measure.times(program, arguments.growth_repetitions, "^growth")

    who = [name for name in WHO if any(name in row for row in table.values())]
    model = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
    lines = [f"Measured on {datetime.date.today()}, {model[1] if model else platform.machine()}, "
             f"{arguments.repetitions} repetitions, interleaved at random. {arguments.note}".rstrip(),
             "", "Least times, and multiples of the floor:", "",
             *rows(["", "floor", "library", "median", *(WHO[name] for name in who), "goal"],
                   ratios(table, cast)),
             "", f"One cross-cast from `Executable` to the event interface: {cast:.0f} ns.",
             "", "Instructions and allocations of one call:", "",
             *rows(["", "floor", *(WHO[name] for name in WHO)], counts(table, instructions)),
             "", "Nanoseconds for each byte of texts that are long or hostile, by size, and the "
             "exponent fitted to them:", "",
             *rows(["", *(f"{4 ** i} KiB" for i in range(8)), "exponent"], growth(growing)),
             "", library_facts(build / "src/libCommunicationsServiceClient.so")]
    (ROOT / "docs/performance.svg").write_text(picture(table), encoding="utf-8")
    (ROOT / "docs/performance-size.svg").write_text(size_picture(growing), encoding="utf-8")
    page = ROOT / "docs/performance.md"
    text = page.read_text(encoding="utf-8")
    begin, end = "<!-- figures -->\n", "<!-- end of figures -->"
    if begin not in text or end not in text:
        measure.fail(f"{page} has no marks for the figures")
    head, tail = text.split(begin)[0], text.split(end)[1]
    page.write_text(head + begin + "\n" + "\n".join(lines) + "\n\n" + end + tail, encoding="utf-8")
    print("\n".join(lines))


if __name__ == "__main__":
    main()
