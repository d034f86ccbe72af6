#!/bin/sh
# usage: symbols.sh NM LIBRARY EXPORTS IMPORTS
# What the shared object exports must be exactly the list EXPORTS; names with a "?" may be missing.
# What it leaves open must be of the C and C++ run-time libraries, which version their symbols, or
# stand in the list IMPORTS.
set -eu
export LC_ALL=C
nm=$1 library=$2 exports=$3 imports=$4
status=0

is() # wanted found message: both are texts of sorted lines
{
    [ "$1" = "$2" ] && return
    echo "$3"
    printf '%s\n' "$1" >"$work/wanted"
    printf '%s\n' "$2" >"$work/found"
    diff "$work/wanted" "$work/found" | sed -n 's/^</  missing:/p; s/^>/  not in the list:/p'
    status=1
}

work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
listed() { sed 's/#.*//; s/ *$//; /^$/d; /?$/d' "$1" | sort; }
optional() { sed -n 's/?$//p' "$1"; }

optional "$exports" >"$work/optional"
found=$("$nm" -D --defined-only "$library" | sed 's/.* //; s/@.*//' | sort |
    grep -vxF -f "$work/optional")
is "$(listed "$exports")" "$found" "exports of $library differ from $exports:"

# The weak names are the start-up code's and the sanitizers' hooks.
found=$("$nm" -D --undefined-only "$library" | sed 's/^ *//' | sort -u |
    grep -v '@\(GLIBC\|GLIBCXX\|CXXABI\|CXXABI_ARM\|GCC\)_[0-9.]*$' |
    grep -v '^w \(__cxa_finalize\|__gmon_start__\|_ITM_[a-zA-Z]*\)$' | sed 's/^[A-Za-z] //' | sort)
is "$(listed "$imports")" "$found" "what $library expects of others differs from $imports:"
exit $status
