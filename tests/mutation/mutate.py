#!/usr/bin/env python3
"""Changes the library in one place at a time and demands that its tests fail.

usage: mutate.py [--jobs N] [--sample N] [--file NAME] [--list] BUILD

BUILD is a folder for this script alone; it is configured at need. Every string, character, number,
comparison, logical and arithmetic operator, truth value, and pair of neighbouring arguments in src/
is changed once, in an order of chance: a run that is stopped early has seen a fair sample. A changed
file is compiled without optimisation, linked with the library's own tests and these are run, then the
comparison with the reference implementation; what they let pass has the allocation and thread tests run too, and
then all of it once more under AddressSanitizer. A change that does not compile does not count, nor one
that leaves the optimised machine code as it was, byte for byte.

Survivors are held against survivors.txt, which gives the reason why each is harmless. The run fails
when a survivor is not in that list, or when less than 95 % of all are caught.
"""

import argparse
import concurrent.futures
import json
import pathlib
import random
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
WANTED = 0.95
# A change that makes the tests take so many times longer is caught: it loops.
PATIENCE = 5
# What an endless loop would fill is limited; a sanitizer needs the addresses.
MEMORY = "ulimit -v 4000000; "
SANITIZER = "-fsanitize=address"

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      |(?P<directive>^[ \t]*\#[^\n]*)
      |(?P<checked>\b(?:static_assert|assert)\s*\([^;]*;)
      |(?P<string>"(?:\\.|[^"\\])*")
      |(?P<char>'(?:\\.|[^'\\])')
      |(?P<number>\b\d+[uUlL]*\b)
      |(?P<word>[A-Za-z_]\w*)
      |(?P<operator><<|>>|->|\+\+|--|<=|>=|==|!=|&&|\|\||\+=|-=|[-+*/<>!=(){}\[\],;?:&|.])""",
    re.VERBOSE | re.DOTALL | re.MULTILINE)

REPLACED = {
    "==": ["!="], "!=": ["=="], "<=": ["<", ">"], ">=": [">", "<"], "&&": ["||"], "||": ["&&"],
    "++": ["--"], "--": ["++"], "+=": ["-="], "-=": ["+="],
    "true": ["false"], "false": ["true"], "prefix": ["exact"], "exact": ["prefix"],
}


class Mutant:
    def __init__(self, file, start, end, new, text):
        self.file, self.start, self.end, self.new = file, start, end, new
        self.old = text[start:end]
        self.line = text.count("\n", 0, start) + 1
        first = text.rfind("\n", 0, start) + 1
        last = text.find("\n", end)
        self.context = " ".join((text[first:start] + "{{" + self.old + " -> " + new + "}}"
                                 + text[end:last]).split())

    def __str__(self):
        return f"{self.file}: {self.context}"


def changed_string(text):
    inside = text[1:-1]
    if not inside:
        return '"x"'
    middle = next((i for i, c in enumerate(inside) if c.isalpha()), None)
    if middle is None or "\\" in inside:
        return '"' + inside + 'x"'
    return '"' + inside[:middle] + inside[middle].swapcase() + inside[middle + 1:] + '"'


def is_spaced(text, match):
    """A binary operator, as this project writes them: a space on both sides."""
    return text[match.start() - 1].isspace() and text[match.end()].isspace()


def arguments(text, start):
    """Spans of the arguments of the call whose "(" is at `start`; none when it is not closed."""
    spans, depth, begin, in_string = [], 0, start + 1, False
    for i in range(start, len(text)):
        c = text[i]
        if c == '"' and text[i - 1] != "\\":
            in_string = not in_string
        if in_string:
            continue
        if c in "({[":
            depth += 1
        elif c in ")}]":
            depth -= 1
        if c == "," and depth == 1:
            spans.append((begin, i))
            begin = i + 1
        if depth == 0:
            return spans + [(begin, i)]
        if c == ";":
            return []
    return []


def is_declaration(argument):
    return re.search(r"^(const )?[\w:]+[*&]? [*&]?\w+( = \w+)?$|^[\w:]+[*&]?$(?<=[*&])|^const ",
                     " ".join(argument.split())) is not None


# The order of their arguments does not matter.
SYMMETRIC = re.compile(r"\b(memcmp|same|min|max)$")


def mutants_of(file, text):
    previous = ""
    for match in TOKEN.finditer(text):
        kind, token = match.lastgroup, match.group(0)
        span = (match.start(), match.end())
        if kind == "string":
            yield Mutant(file, *span, changed_string(token), text)
        elif kind == "char":
            yield Mutant(file, *span, "'x'" if token != "'x'" else "'y'", text)
        elif kind == "number":
            digits = re.match(r"\d+", token).group(0)
            suffix = token[len(digits):]
            yield Mutant(file, *span, str(int(digits) + 1) + suffix, text)
            if int(digits) > 0:
                yield Mutant(file, *span, str(int(digits) - 1) + suffix, text)
        elif token in REPLACED and not (token in ("prefix", "exact") and previous != "::"):
            for new in REPLACED[token]:
                yield Mutant(file, *span, new, text)
        elif token in "<>" and kind == "operator" and is_spaced(text, match):
            yield Mutant(file, *span, token + "=", text)
            yield Mutant(file, *span, ">" if token == "<" else "<", text)
        elif token in ("+", "-", "*", "/") and is_spaced(text, match):
            yield Mutant(file, *span, {"+": "-", "-": "+", "*": "+", "/": "*"}[token], text)
        elif token == "!":
            yield Mutant(file, *span, "", text)
        elif token == "(" and re.match(r"\w|>", text[match.start() - 1]):
            spans = arguments(text, match.start())
            parts = [text[a:b] for a, b in spans]
            if SYMMETRIC.search(text[:match.start()]):
                spans = spans[2:]
            if len(spans) > 1 and not any(is_declaration(part) for part in parts):
                for (a, b), (c, d) in zip(spans, spans[1:]):
                    one, other = text[a:b].strip(), text[c:d].strip()
                    if one != other:
                        yield Mutant(file, a, d, other + ", " + one, text)
        if kind not in ("comment", "directive"):
            previous = "::" if text[match.start():match.start() + 2] == "::" or (
                token == ":" and previous in (":", "::")) else token


class Builder:
    """Compiles and links by the commands of a configured build."""

    def __init__(self, build, flags=""):
        self.build = build
        self.seconds = {}  # how long each step may take
        configure = ["cmake", "-S", str(ROOT), "-B", str(build), "-G", "Ninja",
                     "-DCMAKE_BUILD_TYPE=Debug", f"-DCMAKE_CXX_FLAGS=-O0 -g0 -w {flags}",
                     "-DCMAKE_CXX_FLAGS_DEBUG=", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON",
                     "-DCOMMUNICATIONS_SERVICE_KIT=OFF", "-DCOMMUNICATIONS_SERVICE_EXAMPLES=OFF",
                     "-DCMAKE_CXX_COMPILER_LAUNCHER="]
        targets = ["library-tests", "RandomComparison", "proof-allocations", "proof-threads"]
        for command in (configure, ["cmake", "--build", str(build), "--target", *targets]):
            if subprocess.run(command, stdout=subprocess.DEVNULL, check=False).returncode != 0:
                sys.exit("mutate: the unchanged library does not build")
        with open(build / "compile_commands.json", encoding="utf-8") as file:
            entries = json.load(file)
        self.compile = {}
        for entry in entries:
            source = pathlib.Path(entry["file"])
            if source.parent == ROOT / "src":
                self.compile[source.name] = entry["command"]
        self.objects = {name: re.search(r" -o (\S+)", command).group(1)
                        for name, command in self.compile.items()}
        lines = subprocess.run(["ninja", "-C", str(build), "-t", "commands", *targets],
                               stdout=subprocess.PIPE, text=True, check=True).stdout.splitlines()
        self.links = {}
        for target in targets:
            self.links[target] = next(line for line in lines if re.search(rf" -o \S*/{target} ", line))

    def sources_of(self, file):
        """The sources that have to be compiled anew when a file has changed."""
        if file.endswith(".cpp"):
            return [file]
        direct = {name: (ROOT / "src" / name).read_text(encoding="utf-8")
                  for name in [*self.compile, *(p.name for p in (ROOT / "src").glob("*.h"))]}
        changed = {file}
        while True:
            more = {name for name, text in direct.items()
                    if name not in changed and any(f'#include "{c}"' in text for c in changed)}
            if not more:
                return sorted(name for name in changed if name.endswith(".cpp"))
            changed |= more


def run(command, cwd, seconds=300):
    try:
        return subprocess.run(["bash", "-c", command], cwd=cwd, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, timeout=seconds, check=False).returncode
    except subprocess.TimeoutExpired:
        return 124


# The slow tests last: most changes are caught before.
SLOW = "*LongTexts*:*AnyNumberOf*:*AnyLength*:*ANullInterface*:*InOnePass"
STEPS = [
    ("library-tests", f"--gtest_fail_fast --gtest_filter=-{SLOW}"),
    ("RandomComparison", "5000"),
    ("library-tests", f"--gtest_fail_fast --gtest_filter={SLOW}"),
    ("proof-allocations", "--gtest_fail_fast"),
    ("proof-threads", "--gtest_fail_fast"),
]


def verdict(builders, mutant, text):
    """ "invalid", "caught", "survived" or "same"."""
    found = "survived"
    for builder, limit in zip(builders, (MEMORY, "")):
        found = verdict_of(builder, limit, mutant, text)
        if found != "survived":
            return found
    return "same" if is_same_code(builders[0], mutant, text) else "survived"


def is_same_code(builder, mutant, text):
    """Whether the optimised objects are the same with and without the change."""
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder) / "src"
        shutil.copytree(ROOT / "src", copy)
        objects = []
        for content in (text, text[:mutant.start] + mutant.new + text[mutant.end:]):
            (copy / mutant.file).write_text(content, encoding="utf-8")
            for source in builder.sources_of(mutant.file):
                command = builder.compile[source].replace(str(ROOT / "src"), str(copy))
                target = f"{folder}/{len(objects)}.o"
                command = re.sub(r" -o \S+", f" -O2 -DNDEBUG -o {shlex.quote(target)}", command)
                run(command, builder.build)
                objects.append(pathlib.Path(target).read_bytes())
    half = len(objects) // 2
    return objects[:half] == objects[half:]


def verdict_of(builder, limit, mutant, text):
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder) / "src"
        shutil.copytree(ROOT / "src", copy)
        changed = text[:mutant.start] + mutant.new + text[mutant.end:]
        (copy / mutant.file).write_text(changed, encoding="utf-8")
        replaced = {}
        for source in builder.sources_of(mutant.file):
            target = f"{folder}/{source}.o"
            command = builder.compile[source].replace(str(ROOT / "src"), str(copy))
            command = re.sub(r" -o \S+", f" -o {shlex.quote(target)}", command)
            if run(command, builder.build) != 0:
                return "invalid"
            replaced[builder.objects[source]] = target
        linked = {}
        for test, options in STEPS:
            if test not in linked:
                linked[test] = f"{folder}/{test}"
                command = builder.links[test]
                for old, new in replaced.items():
                    command = command.replace(old, new)
                command = re.sub(r" -o \S+", f" -o {linked[test]}", command)
                # Only the link itself: what stands behind it discovers the tests.
                command = command.split(" && cd ")[0].removesuffix(" && :")
                if run(command, builder.build) != 0:
                    return "invalid"
            command = f"{limit}exec {linked[test]} {options}"
            if run(command, builder.build, builder.seconds[test, options]) != 0:
                return "caught"
    return "survived"


def listed_survivors():
    """Each survivor with its reason: a line of the list, and below it, indented, the reason."""
    known = {}
    path = HERE / "survivors.txt"
    if path.exists():
        for line in path.read_text(encoding="utf-8").splitlines():
            if line.startswith("    ") and known:
                known[next(reversed(known))] += line.strip() + " "
            elif line and not line.startswith("#"):
                known[line] = ""
    return known


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("\n\n")[1].removeprefix("usage: "))
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--sample", type=int, help="only so many, chosen at random")
    parser.add_argument("--file", help="only this file of src/")
    parser.add_argument("--list", action="store_true", help="print the changes and stop")
    parser.add_argument("build", type=pathlib.Path)
    options = parser.parse_args()

    texts = {path.name: path.read_text(encoding="utf-8")
             for path in sorted((ROOT / "src").iterdir()) if path.suffix in (".cpp", ".h")}
    all_mutants = [mutant for name, text in texts.items() for mutant in mutants_of(name, text)
                   if options.file in (None, name)]
    random.Random(1).shuffle(all_mutants)
    all_mutants = all_mutants[:options.sample]
    if options.list:
        print("\n".join(map(str, all_mutants)))
        return 0
    builders = [Builder(options.build.resolve()),
                Builder(options.build.resolve() / "sanitized", SANITIZER)]
    for builder, limit in zip(builders, (MEMORY, "")):
        for test, filters in STEPS:
            path = re.search(r" -o (\S+)", builder.links[test]).group(1)
            begun = time.monotonic()
            if run(f"{limit}exec {path} {filters}", builder.build) != 0:
                sys.exit(f"mutate: {test} fails without any change")
            builder.seconds[test, filters] = 10 + PATIENCE * (time.monotonic() - begun)

    start = time.monotonic()
    counts = {"invalid": 0, "caught": 0, "survived": 0, "same": 0}
    survivors = []
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        results = pool.map(lambda m: (m, verdict(builders, m, texts[m.file])), all_mutants)
        for done, (mutant, found) in enumerate(results, 1):
            counts[found] += 1
            if found == "survived":
                survivors.append(mutant)
                print(f"survived: {mutant.file}:{mutant.line}: {mutant.context}", flush=True)
            if done % 50 == 0:
                print(f"{done} of {len(all_mutants)}: {counts['caught']} caught, "
                      f"{counts['survived']} survived, {time.monotonic() - start:.0f} s", flush=True)

    known = listed_survivors()
    unknown = [mutant for mutant in survivors if str(mutant) not in known]
    valid = counts["caught"] + counts["survived"]
    rate = counts["caught"] / valid if valid else 0
    print(f"{valid} changes, {counts['caught']} caught ({100 * rate:.1f} %), "
          f"{counts['survived']} survived, {len(unknown)} of them not listed as harmless; "
          f"{counts['invalid']} more did not compile, {counts['same']} more made no difference to "
          f"the machine code; {time.monotonic() - start:.0f} s")
    for mutant in unknown:
        print(f"not listed: {mutant}")
    return 0 if rate >= WANTED and not unknown else 1


if __name__ == "__main__":
    sys.exit(main())
