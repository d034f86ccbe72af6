#!/usr/bin/env python3
"""Compares two revisions of the library in one run: bench/compare.py BEFORE [AFTER]

AFTER is the working tree when it is left out. Both libraries are opened by the same program and
measured in turn, in random order; the ratio of the minima is what to look at, and the instructions,
which do not depend on what else the machine does.
"""

import argparse
import pathlib
import subprocess
import tempfile

import measure

ROOT = pathlib.Path(__file__).resolve().parent.parent


def revision(name, folder):
    source = folder / "source"
    source.mkdir(parents=True)
    measure.command("git", "-C", ROOT, "archive", "--format=tar",
                    f"--output={folder}/source.tar", name)
    measure.command("tar", "-xf", folder / "source.tar", "-C", source)
    built = folder / "build"
    measure.command("cmake", "-S", source, "-B", built, "-DCMAKE_BUILD_TYPE=Release",
                    "-DBUILD_TESTING=OFF", stdout=subprocess.DEVNULL)
    measure.command("cmake", "--build", built, "--parallel", "2", stdout=subprocess.DEVNULL)
    return built / "src/libCommunicationsServiceClient.so"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("before", help="revision to compare with")
    parser.add_argument("after", nargs="?", help="other revision; the working tree by default")
    parser.add_argument("--repetitions", type=int, default=25)
    parser.add_argument("--cases", default="[a-fh-zA-Z]|get",
                        help="what the names of the cases begin with (regular expression); "
                        "by default all but growth")
    arguments = parser.parse_args()

    with tempfile.TemporaryDirectory() as folder:
        folder = pathlib.Path(folder)
        tree = measure.build_benchmark()
        before = revision(arguments.before, folder / "before")
        after = (revision(arguments.after, folder / "after") if arguments.after
                 else tree / "src/libCommunicationsServiceClient.so")
        libraries = [f"--library=before:{before}", f"--library=after:{after}"]
        program = tree / "bench/bench"
        what = f"^({arguments.cases}).*/(before|after)$"
        table = measure.times(program, arguments.repetitions, what, libraries)
        counts = measure.costs(program, libraries)

    print(f"{'':34}{'before':>10}{'after':>10}{'ratio':>8}{'instructions':>16}{'allocations':>14}")
    for case, row in sorted(table.items()):
        (b, _, b_allocations), (a, _, a_allocations) = row["before"], row["after"]
        before, after = (counts[case][who][0] if case in counts else ""
                         for who in ("before", "after"))
        print(f"{case:34}{b:8.0f}ns{a:8.0f}ns{a / b:8.2f}{before:>8} {after:>7}"
              f"{b_allocations:>9} {a_allocations:>4}")


if __name__ == "__main__":
    main()
