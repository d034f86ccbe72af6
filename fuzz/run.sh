#!/bin/sh
# A long run of one fuzzer, from the seeds and from what earlier runs have found.
# usage: fuzz/run.sh BUILD TARGET EXECUTIONS      as in: fuzz/run.sh build/fuzz events 20000000
set -eu
if [ $# -ne 3 ]; then
    sed -n '2,3s/^# //p' "$0"
    exit 2
fi
here=$(dirname "$0")
found=$1/fuzz/found-$2
mkdir -p "$found"
# Without the stack of each allocation, and with little memory kept back, it is nearly twice as fast.
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=0:malloc_context_size=0:quarantine_size_mb=8}"
exec "$1/fuzz/fuzz-$2" -runs="$3" -max_len=1024 -dict="$here/tags.dict" -print_final_stats=1 \
    -artifact_prefix="$1/fuzz/" "$found" "$here/seeds/$2"
