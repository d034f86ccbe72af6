"""What run.py, compare.py and costs.py share: running the benchmark program and reading what it says."""

import collections
import json
import os
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile


def fail(message):
    sys.exit(f"bench: {message}")


def command(*words, **options):
    try:
        return subprocess.run(words, check=True, text=True, **options)
    except FileNotFoundError:
        fail(f"{words[0]} is not installed")
    except subprocess.CalledProcessError as error:
        fail(f"{' '.join(map(str, words))} ended with {error.returncode}")


def build_benchmark():
    """Builds the benchmark of the working tree, and returns the folder."""
    root = pathlib.Path(__file__).resolve().parent.parent
    command("cmake", "--preset", "bench", cwd=root, stdout=subprocess.DEVNULL)
    command("cmake", "--build", "--preset", "bench", cwd=root, stdout=subprocess.DEVNULL)
    return root / "build/bench"


def times(program, repetitions, what, arguments=()):
    """{case: {who: (least ns, median ns, allocations)}}, all in one interleaved run."""
    with tempfile.NamedTemporaryFile(suffix=".json") as result:
        command(program, *arguments,
                f"--benchmark_filter={what}",
                f"--benchmark_repetitions={repetitions}",
                "--benchmark_enable_random_interleaving=true",
                "--benchmark_min_time=0.01",
                f"--benchmark_out={result.name}",
                "--benchmark_out_format=json",
                stdout=subprocess.DEVNULL)
        benchmarks = json.load(result)["benchmarks"]
    runs = collections.defaultdict(list)
    allocations = {}
    for run in benchmarks:
        if run["run_type"] == "iteration":
            unit = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[run["time_unit"]]
            runs[run["run_name"]].append(run["cpu_time"] * unit)
            allocations[run["run_name"]] = round(run["allocations"])
    table = collections.defaultdict(dict)
    for name, list_ in runs.items():
        case, who = name.split("/")[:2]
        table[case][who] = (min(list_), statistics.median(list_), allocations[name])
    return table


def costs(program, arguments=()):
    """{case: {who: (instructions, allocations)}} of one call, counted by callgrind."""
    calls = 20  # as in the program
    table = collections.defaultdict(dict)
    with tempfile.TemporaryDirectory() as folder:
        said = command("valgrind", "--tool=callgrind", f"--callgrind-out-file={folder}/profile",
                       program, *arguments, "--instructions",
                       stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
        allocations = dict(line.split() for line in said.splitlines())
        for name in os.listdir(folder):
            with open(os.path.join(folder, name), encoding="utf-8") as profile:
                text = profile.read()
            trigger = re.search(r"^desc: Trigger: Client Request: (.*)/(.*)$", text, re.M)
            total = re.search(r"^(?:summary|totals): (\d+)", text, re.M)
            if trigger and total:
                case, who = trigger[1], trigger[2]
                table[case][who] = (round(int(total[1]) / calls), int(allocations[f"{case}/{who}"]))
    return table
