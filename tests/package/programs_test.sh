#!/usr/bin/env bash
# programs_test.sh PROGRAMS BUILD_FOLDER CMAKE CXX: installs the library, builds the small programs
# against the installed package alone, and runs them (programs_say.sh).
set -euo pipefail
programs=$1 build=$2 cmake=$3 cxx=$4
work=$build/tests/package/programs # always the same, for a compiler cache
rm -rf "$work"
mkdir -p "$work/run"
trap 'rm -rf "$work"' EXIT
export TMPDIR=$work/run
fail() { echo "FAILED: $1" >&2; exit 1; }

"$cmake" --install "$build" --prefix "$work/prefix" >/dev/null
cp -r "$programs" "$work/source"
"$cmake" -S "$work/source" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_COMPILER_LAUNCHER="${CMAKE_CXX_COMPILER_LAUNCHER:-}" >/dev/null
"$cmake" --build "$work/build" -j2 >"$work/log" 2>&1 || { cat "$work/log" >&2; fail "the programs do not build"; }
grep -q 'warning:' "$work/log" && { cat "$work/log" >&2; fail "warnings"; }
here=$(cd "$(dirname "$0")" && pwd)
cd "$work/run"
"$here/programs_say.sh" "$work/build"
