#!/bin/sh
# Puts what runs of a fuzzer have found into its archive: the least that reaches as much, beside the
# seeds. usage: fuzz/keep.sh BUILD NAME          as in: fuzz/keep.sh build/fuzz events
set -eu
if [ $# -ne 2 ]; then
    sed -n '2,3s/^# //p' "$0"
    exit 2
fi
seeds=$(cd "$(dirname "$0")" && pwd)/seeds
kept=$(mktemp -d)
trap 'rm -rf "$kept"' EXIT
cp "$seeds/$2"/* "$kept"
"$1/fuzz/fuzz-$2" -merge=1 "$kept" "$1/fuzz/found-$2"
for seed in "$seeds/$2"/*; do
    rm -f "$kept/$(basename "$seed")"
done
cd "$kept"
cmake -E tar cJf "$seeds/$2-found.tar.xz" --format=gnutar --mtime=2000-01-01 -- *
