#!/usr/bin/env python3
"""Holds what each case costs the library against bench/costs.txt: instructions and allocations of one
call. Both are the same on every run, so that this finds what no clock would: it fails when a count has
grown by more than two per cent, or an allocation has come, and the file was not renewed.

costs.py            compares
costs.py --renew    writes the file anew

Counts depend on compiler and C library, which the file names: elsewhere nothing is compared.
"""

import argparse
import pathlib
import platform
import re
import sys

import measure

FILE = pathlib.Path(__file__).resolve().parent / "costs.txt"


def toolchain(build):
    """What the counts depend on, but for the sources."""
    cache = (build / "CMakeCache.txt").read_text(encoding="utf-8")
    compiler = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", cache, re.M)[1]
    version = measure.command(compiler, "--version", capture_output=True).stdout.splitlines()[0]
    valgrind = measure.command("valgrind", "--version", capture_output=True).stdout.strip()
    return f"{version}, {' '.join(platform.libc_ver())}, {valgrind}, {platform.machine()}"


def read():
    first, *lines = FILE.read_text(encoding="utf-8").splitlines()
    return first, {case: (int(instructions), int(allocations))
                   for case, instructions, allocations in map(str.split, lines)}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--renew", action="store_true", help="write the file anew")
    arguments = parser.parse_args()

    build = measure.build_benchmark()
    here = toolchain(build)
    if not arguments.renew:
        there, known = read()
        if there != here:
            print(f"bench: {FILE.name} holds for {there}, and not for {here}: nothing is compared")
            return
    counted = measure.costs(build / "bench/bench", ["--only=library"])
    now = {case: row["library"] for case, row in sorted(counted.items())}
    if arguments.renew:
        FILE.write_text("\n".join([here, *(f"{case} {instructions} {allocations}" for case,
                                          (instructions, allocations) in now.items())]) + "\n",
                        encoding="utf-8")
        return

    grown = 0
    for case in sorted(known.keys() | now.keys()):
        if case not in known or case not in now:
            print(f"{case} is {'not in ' + FILE.name if case in now else 'measured no more'}")
            grown += 1
            continue
        (before, allocated), (after, allocates) = known[case], now[case]
        too_much = after > 1.02 * before or allocates > allocated
        grown += too_much
        print(f"{case:34}{before:8} {after:8} instructions {100 * after / before - 100:+5.1f} %"
              f"{allocated:5} {allocates:4} allocations{'  GROWN' if too_much else ''}")
    if grown:
        sys.exit("bench: if that has to be, renew the file: bench/costs.py --renew")


if __name__ == "__main__":
    main()
