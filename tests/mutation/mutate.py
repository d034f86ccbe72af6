#!/usr/bin/env python3
"""Changes the library, or the kit, in one place at a time and demands that the tests fail.

usage: mutate.py [--kit] [--minutes N] [--sample N] [--skip N] [--seed WORD] [--file NAME]
                 [--matching PATTERN] [--list] BUILD [SANITIZED]

BUILD is a configured and built folder with tests and kit, SANITIZED one with AddressSanitizer, or with
ThreadSanitizer for the kit's locks: what survives in the one is tried in the other. Every change that
operators.py knows of is made once, in an order of chance: a run that is stopped early (--minutes,
--sample) has seen a fair sample, the same seed gives the same order, and --skip goes on where a run was
stopped. A changed file is compiled without optimisation, linked with the tests, and these are run. A
change that does not compile does not count, nor one that leaves the optimised machine code as it was,
byte for byte.

Survivors are held against survivors.txt, which gives the reason why each is harmless. The run fails
when less than 99 % of the others are caught in the library, 85 % in the kit (a sample may fall short by
what chance explains); a run to the end also when a survivor of the library is not in the list.
"""

import argparse
import concurrent.futures
import contextlib
import json
import math
import os
import pathlib
import random
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import time

import operators

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
# Tests that include headers of the library's inside.
USERS = ROOT / "tests/library"
WANTED = {"src": 0.99, "kit": 0.85}
# A change that makes the tests take so many times longer is caught: it loops.
PATIENCE = 5
# What an endless loop would fill is limited; a sanitizer needs the addresses.
MEMORY = "ulimit -v 4000000; "

# The slow tests last: most changes are caught before.
SLOW = "*LongTexts*:*AnyNumberOf*:*AnyLength*:*ANullInterface*:*InOnePass"
LIBRARY_STEPS = [
    ("library-tests", f"--gtest_fail_fast --gtest_filter=-{SLOW}"),
    ("RandomComparison", "5000"),
    ("library-tests", f"--gtest_fail_fast --gtest_filter={SLOW}"),
    ("proof-allocations", "--gtest_fail_fast"),
    ("proof-threads", "--gtest_fail_fast"),
]
KIT_STEPS = [
    *((f"kit-{name}-tests", "--gtest_fail_fast") for name in ("foundation", "phone", "service", "replay")),
    ("kit-soak", "2 1000"),
    ("ctest", "-R 'up-to-date|pages.manuals'"),  # what is written out of the kit, and the pages about it
]


def run(command, cwd, seconds=300, environment=None):
    """The exit status; everything that was started is ended with it."""
    with subprocess.Popen(["bash", "-c", command], cwd=cwd, stdin=subprocess.DEVNULL,
                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env=environment,
                          start_new_session=True) as process:
        try:
            return process.wait(seconds)
        except subprocess.TimeoutExpired:
            return 124
        finally:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, 9)


class Build:
    """Compiles and links by the commands of a build that is there."""

    def __init__(self, folder, house, steps, limit):
        self.folder, self.house, self.steps, self.limit = folder.resolve(), house, steps, limit
        self.seconds = {}  # how long each step may take
        entries = json.loads((self.folder / "compile_commands.json").read_text("utf-8"))
        self.compile = {}
        for entry in entries:
            source = pathlib.Path(entry["file"])
            is_user = house == "src" and source.parent == USERS and "/library-tests.dir/" in entry["command"]
            if source.is_relative_to(ROOT / house) or is_user:
                command = entry["command"].removeprefix("ccache ") + " -O0 -g0 -w"
                self.compile[os.path.relpath(source, ROOT / house)] = command
        self.objects = {name: re.search(r" -o (\S+)", command).group(1)
                        for name, command in self.compile.items()}

    def link(self, target):
        """The command that links a target, without what is done with it afterwards."""
        lines = subprocess.run(["ninja", "-C", str(self.folder), "-t", "commands", target],
                               stdout=subprocess.PIPE, text=True, check=True).stdout.splitlines()
        line = [line for line in lines if re.search(rf"(-o|qc) \S*/(lib)?{target}(\.\S+)? ", line)][-1]
        return line.split(" && cd ")[0].removesuffix(" && :")

    def program(self, target):
        if target == "ctest":
            return target
        return re.search(r" -o (\S+)", self.link(target)).group(1)

    def measure(self):
        for test, options in self.steps:
            begun = time.monotonic()
            if run(f"{self.limit}exec {self.program(test)} {options}", self.folder) != 0:
                sys.exit(f"mutate: {test} fails without any change")
            self.seconds[test, options] = 10 + PATIENCE * (time.monotonic() - begun)

    def sources_of(self, file):
        """The sources that have to be compiled anew when a file has changed."""
        if file.endswith(".cpp"):
            return [file]
        direct = {name: (ROOT / self.house / name).read_text("utf-8")
                  for name in [*self.compile, *(p.name for p in (ROOT / self.house).glob("*.h"))]}
        direct |= {str(p.relative_to(ROOT)): p.read_text("utf-8") for p in ROOT.glob("tests/support/*.h")}
        changed = {file}
        while True:
            more = {name for name, text in direct.items()
                    if name not in changed and any(f'#include "{c}"' in text for c in changed)}
            if not more:
                return sorted(name for name in changed if name.endswith(".cpp"))
            changed |= more

    def compiled(self, source, folder, target, flags=""):
        """Compiles a source of the changed copy; whether it does."""
        command = self.compile[source].replace(str(ROOT / self.house), str(folder / self.house))
        command = re.sub(r" -o \S+", f" -o {shlex.quote(str(target))}", command)
        return run(f"{command} {flags}", self.folder) == 0


class Library(Build):
    """Each change in a folder of its own, so that several can be tried at once."""

    def verdict(self, mutant, text):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            shutil.copytree(ROOT / "src", folder / "src")
            (folder / "src" / mutant.file).write_text(mutant.applied(text), encoding="utf-8")
            replaced = {}
            for source in self.sources_of(mutant.file):
                replaced[self.objects[source]] = f"{folder}/{source.replace('/', '-')}.o"
                if not self.compiled(source, folder, replaced[self.objects[source]]):
                    return "invalid"
            linked = set()
            for test, options in self.steps:
                if test not in linked:
                    linked.add(test)
                    command = self.link(test)
                    for old, new in replaced.items():
                        command = command.replace(old, new)
                    if run(re.sub(r" -o \S+", f" -o {folder}/{test}", command), self.folder) != 0:
                        return "invalid"
                if run(f"{self.limit}exec {folder}/{test} {options}", self.folder,
                       self.seconds[test, options]) != 0:
                    return "caught"
        return "survived"


class Kit(Build):
    """One change at a time, in the place of what it changes: the tests start the kit's programs."""

    def targets(self, file):
        if file == "phone/main.cpp":
            return ["communications-phone"]
        if file == "service/main.cpp":
            return ["communications-service-sim"]
        if file.startswith("phone/"):
            return ["CommunicationsPhone", "communications-phone", "kit-phone-tests"]
        if file.startswith("testing/Mock"):
            return ["CommunicationsServiceMocks", "kit-foundation-tests"]
        return ["CommunicationsServiceKit"]

    def verdict(self, mutant, text):
        target = self.folder / self.objects[mutant.file]
        links = [self.link(name) for name in self.targets(mutant.file)]
        folder = mutant.file.split("/", maxsplit=1)[0]
        steps = sorted(self.steps, key=lambda step: folder not in step[0])
        with tempfile.TemporaryDirectory() as name:
            shutil.copytree(ROOT / "kit", pathlib.Path(name) / "kit")
            (pathlib.Path(name) / "kit" / mutant.file).write_text(mutant.applied(text), "utf-8")
            changed = f"{name}/changed.o"
            if not self.compiled(mutant.file, pathlib.Path(name), changed):
                return "invalid"
            shutil.copy2(target, f"{name}/kept.o")
            try:
                shutil.copy2(changed, target)
                if any(run(link, self.folder) != 0 for link in links):
                    return "invalid"
                for test, options in steps:
                    if run(f"exec {self.program(test)} {options}", self.folder,
                           self.seconds[test, options]) != 0:
                        return "caught"
                return "survived"
            finally:
                shutil.copy2(f"{name}/kept.o", target)
                for link in links:
                    run(link, self.folder)


def is_same_code(build, mutant, text):
    """Whether the optimised objects are the same with and without the change."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        shutil.copytree(ROOT / build.house, folder / build.house)
        sources = [source for source in build.sources_of(mutant.file) if not source.startswith("..")]
        objects = []
        for content in (text, mutant.applied(text)):
            (folder / build.house / mutant.file).write_text(content, encoding="utf-8")
            for source in sources:
                target = folder / f"{len(objects)}.o"
                build.compiled(source, folder, target, "-O2 -DNDEBUG")
                objects.append(target.read_bytes())
    half = len(objects) // 2
    return objects[:half] == objects[half:]


def verdict(builds, mutant, text):
    """ "invalid", "caught", "survived" or "same"."""
    for build in builds:
        found = build.verdict(mutant, text)
        if found != "survived":
            return found
    return "same" if is_same_code(builds[0], mutant, text) else "survived"


def listed_survivors():
    """Tells whether a change is in the list: a line is a change, or behind "~ " a pattern of changes."""
    lines = [line for line in (HERE / "survivors.txt").read_text("utf-8").splitlines()
             if line and not line.startswith((" ", "#"))]
    patterns = [re.compile(line[2:]) for line in lines if line.startswith("~ ")]
    exact = set(lines)
    return lambda text: text in exact or any(pattern.fullmatch(text) for pattern in patterns)


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("\n\n")[1].removeprefix("usage: "))
    parser.add_argument("--kit", action="store_true", help="change the kit, not the library")
    parser.add_argument("--minutes", type=float, help="begin no further change after that")
    parser.add_argument("--sample", type=int, help="only so many, chosen at random")
    parser.add_argument("--skip", type=int, help="without the first ones, which a run before has seen")
    parser.add_argument("--seed", default="1")
    parser.add_argument("--file", default="", help="only files with this in their names")
    parser.add_argument("--matching", default="", help="only changes with this pattern, as --list prints them")
    parser.add_argument("--list", action="store_true", help="print the changes and stop")
    parser.add_argument("builds", type=pathlib.Path, nargs="+")
    options = parser.parse_args()

    house = "kit" if options.kit else "src"
    # The kit's headers are in too many sources to be tried one by one; what a new application begins
    # with is compiled elsewhere.
    texts = {str(path.relative_to(ROOT / house)): path.read_text("utf-8")
             for path in sorted((ROOT / house).rglob("*"))
             if (path.suffix == ".cpp" or (path.suffix == ".h" and not options.kit))
             and path.name != "WireReference.cpp" and "new-application" not in path.parts
             and options.file in path.name}
    mutants = [mutant for name, text in texts.items() for mutant in operators.mutants_of(name, text)
               if re.search(options.matching, str(mutant))]
    random.Random(options.seed).shuffle(mutants)
    mutants = mutants[:options.sample][options.skip:]
    if options.list:
        print("\n".join(map(str, mutants)))
        return 0
    if options.kit:
        builds = [Kit(folder, house, KIT_STEPS, "") for folder in options.builds]
    else:
        builds = [Library(folder, house, LIBRARY_STEPS, MEMORY if i == 0 else "")
                  for i, folder in enumerate(options.builds)]
    start = time.monotonic()
    for build in builds:
        build.measure()

    is_known = listed_survivors()
    counts = {"invalid": 0, "caught": 0, "survived": 0, "same": 0, "listed": 0, "late": 0}
    unknown = []

    def judged(mutant):
        if options.minutes and time.monotonic() - start > 60 * options.minutes:
            return mutant, "late"
        found = verdict(builds, mutant, texts[mutant.file])
        return mutant, "listed" if found == "survived" and is_known(str(mutant)) else found

    with concurrent.futures.ThreadPoolExecutor(1 if options.kit else os.cpu_count()) as pool:
        for done, (mutant, found) in enumerate(pool.map(judged, mutants), 1):
            counts[found] += 1
            if found == "survived":
                unknown.append(mutant)
                print(f"survived: {mutant.file}:{mutant.line}: {mutant.context}", flush=True)
            if done % 100 == 0 and found != "late":
                print(f"{done} of {len(mutants)}: {counts}, {time.monotonic() - start:.0f} s", flush=True)

    judged_ones = counts["caught"] + counts["survived"]
    share = counts["caught"] / judged_ones if judged_ones else 0
    print(f"{judged_ones} changes of {house}, {counts['caught']} caught ({100 * share:.1f} %); "
          f"{counts['listed']} more listed as harmless, {counts['invalid']} did not compile, "
          f"{counts['same']} made no difference to the machine code, {counts['late']} not tried; "
          f"{time.monotonic() - start:.0f} s")
    whole = counts["late"] == 0 and options.sample is None and not options.matching and not options.kit
    # A sample may fall short by chance, but not by more than three standard errors.
    wanted = WANTED[house]
    if not whole and judged_ones:
        wanted -= 3 * math.sqrt(wanted * (1 - wanted) / judged_ones)
    return 0 if share >= wanted and not (whole and unknown) else 1


if __name__ == "__main__":
    sys.exit(main())
