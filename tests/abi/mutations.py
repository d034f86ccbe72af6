#!/usr/bin/env python3
"""Shows that the comparison of the binary interface can fail.

usage: mutations.py [COMPILER]

Builds a copy of the library for each change below, and demands that the unchanged copy compares
equal and that every changed one builds and is refused.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
REQUESTS = "include/CommunicationsServiceIfc.h"
EVENTS = "include/CommunicationsServiceEventIfc.h"
TYPES = "include/CommunicationsServiceTypes.h"
PROXY = "src/CommunicationsServiceProxy"


def declaration(text, name):
    """A virtual operation, from "virtual" to its semicolon."""
    return re.search(rf"virtual \w+ {name}\([^;]*;", text).group(0)


def swap(file, first, second):
    def change(read, write):
        text = read(file)
        one, other = declaration(text, first), declaration(text, second)
        text = text.replace(one, "\0").replace(other, one).replace("\0", other)
        write(file, text)
    return change


def insert_before(file, name):
    def change(read, write):
        text = read(file)
        following = declaration(text, name)
        write(file, text.replace(following, "virtual void inserted() {}\n    " + following))
    return change


def replace(*edits):
    def change(read, write):
        for file, old, new in edits:
            text = read(file)
            if old not in text:
                sys.exit(f"mutations: {file} has no {old!r} any more")
            write(file, text.replace(old, new))
    return change


CHANGES = {
    "two requests swapped": swap(REQUESTS, "answerCall", "retrieveCall"),
    "a request added in the middle": insert_before(REQUESTS, "getDevices"),
    "an argument of a request changed": replace(
        (REQUESTS, "deactivate(bool ", "deactivate(int "),
        (PROXY + ".h", "deactivate(bool ", "deactivate(int "),
        (PROXY + ".cpp", "deactivate(bool allowAutoActivate)", "deactivate(int allowAutoActivate)"),
        (PROXY + ".cpp", '"AllowAutoActivate", allowAutoActivate',
         '"AllowAutoActivate", allowAutoActivate != 0')),
    "a field of the record widened": replace(
        (EVENTS, "char calledNumber[65]", "char calledNumber[66]"),
        (EVENTS, "== 548", "== 552")),
    "two events swapped": swap(EVENTS, "onCallHeldEvent", "onDevicesChangedEvent"),
    "an event added in the middle": insert_before(EVENTS, "onAgentStateEvent"),
    "an argument of an event changed": replace(
        (EVENTS, "onCallHeldEvent(const std::string& lineId, int callId)",
         "onCallHeldEvent(const std::string& lineId, long callId)")),
    "an operation of the channel added": insert_before("include/framework/ProxyRequest.h",
                                                       "sendOneWay"),
    "a result renumbered": replace((TYPES, "sfiFailureCallBackToMany = 3", "sfiFailureCallBackToMany = 6")),
    "an export withdrawn": replace(("src/exports.map", "  _ZN5Proxy8shutdownEv;\n", "")),
}


def refused(name, change, copy, compiler):
    """Whether the comparison refuses the changed copy; None when that does not build."""
    for folder in ("include", "src", "cmake", "tests/abi"):
        shutil.copytree(ROOT / folder, copy / folder)
    shutil.copy(ROOT / "CMakeLists.txt", copy)
    (copy / "tests/CMakeLists.txt").write_text(
        "find_package(Python3 REQUIRED COMPONENTS Interpreter)\nadd_subdirectory(abi)\n", encoding="utf-8")
    (copy / "tests/support").mkdir()
    (copy / "tests/support/CMakeLists.txt").touch()
    change(lambda file: (copy / file).read_text(encoding="utf-8"),
           lambda file, text: (copy / file).write_text(text, encoding="utf-8"))

    def run(*command):
        with open(copy / "log", "a", encoding="utf-8") as log:
            return subprocess.run(command, cwd=copy, stdout=log, stderr=log, check=False).returncode

    configured = run("cmake", "-S", ".", "-B", "build", "-G", "Ninja",
                     f"-DCMAKE_CXX_COMPILER={compiler}", "-DCMAKE_BUILD_TYPE=Release",
                     "-DCOMMUNICATIONS_SERVICE_KIT=OFF", "-DCOMMUNICATIONS_SERVICE_EXAMPLES=OFF",
                     "-DCOMMUNICATIONS_SERVICE_RECORDER=OFF")
    if configured != 0 or run("cmake", "--build", "build") != 0:
        print(f"{name}: does not build\n{(copy / 'log').read_text(encoding='utf-8')}")
        return None
    result = run("ctest", "--test-dir", "build", "-R", "abi.compare", "--no-tests=error",
                 "--output-on-failure")
    # The place where the comparison says so, for the reader of the log.
    for line in (copy / "log").read_text(encoding="utf-8").splitlines():
        if result != 0 and re.match(r"[-+](?![-+])", line):
            print(f"    {line}")
            break
    return result != 0


def main(arguments):
    compiler = arguments[0] if arguments else os.environ.get("CXX", "c++")
    failed = 0
    for name, change in [("nothing", lambda read, write: None), *CHANGES.items()]:
        with tempfile.TemporaryDirectory() as folder:
            print(f"{name}:")
            found = refused(name, change, pathlib.Path(folder), compiler)
        wanted = name != "nothing"
        print(f"  {'refused' if found else 'accepted'}{'' if found == wanted else ', WRONG'}",
              flush=True)
        failed += found != wanted
    print(f"{len(CHANGES) + 1 - failed} of {len(CHANGES) + 1} as they should be")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
