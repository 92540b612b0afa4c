#!/usr/bin/env bash
# sample_test.sh SAMPLE BUILD_FOLDER CMAKE CXX: installs the library, copies the sample program out of
# the tree, builds it against the installed package alone, and runs it in two languages. Precompiled headers
# halve the time; the build within the tree, which has none, finds a missing #include.
set -euo pipefail
sample=$1 build=$2 cmake=$3 cxx=$4
work=$build/tests/package/sample # always the same, for a compiler cache
rm -rf "$work"
mkdir -p "$work/tmp"
trap 'rm -rf "$work"' EXIT
export TMPDIR=$work/tmp VNBYTSTR_PROFILE=$work/profile.ini
fail() { echo "FAILED: $1" >&2; exit 1; }

"$cmake" --install "$build" --prefix "$work/prefix" >/dev/null
rm -r "$work"/prefix/bin "$work"/prefix/lib*/vnquery # the sample that is built within the tree
cp -r "$sample" "$work/vnquery"
"$cmake" -S "$work/vnquery" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/prefix" \
    -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS=-O0 -DVNBYTSTR_PCH=ON \
    -DCMAKE_PROJECT_TOP_LEVEL_INCLUDES="$(realpath "$(dirname "$0")/../../cmake/PrecompiledHeaders.cmake")" >/dev/null
"$cmake" --build "$work/build" -j 2 >"$work/log" 2>&1 || { tail -n 30 "$work/log" >&2; fail "the build"; }

expect() { # PROGRAM LOCALE TEXT
    local printed
    printed=$(LC_ALL=$2 "$1" --db "$work/empty.sqlite" --sql "select 1 as n")
    [[ $printed == *"$3" ]] || fail "in $2 the program prints $printed"
}
: >"$work/empty.sqlite"
expect "$work/build/vnquery" C "(1 row)"
expect "$work/build/vnquery" de_DE.UTF-8 "(1 Zeile)"
if [ -n "$(find "$work/prefix" -name vnbytstr-controls.pc)" ]; then
    env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM LC_ALL=C "$work/build/vnquery" --window \
        2>"$work/error" && fail "a window without a display"
    grep -q "no display" "$work/error" || fail "the sample was built without its window"
fi

# Installed elsewhere, it takes its texts and help pages along.
"$cmake" --install "$work/build" --prefix "$work/elsewhere" >/dev/null
expect "$work/elsewhere/bin/vnquery" fr_FR.UTF-8 "(1 ligne)"
[ -e "$work"/elsewhere/lib*/vnquery/Help/l.DEU/vnquery.ind ] || fail "the help pages are not installed"
