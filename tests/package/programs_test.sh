#!/usr/bin/env bash
# programs_test.sh PROGRAMS BUILD_FOLDER CMAKE CXX: installs the library, builds the small programs
# against the installed package alone, runs them, and compares what they say.
set -euo pipefail
programs=$1 build=$2 cmake=$3 cxx=$4
work=$build/tests/package/programs # always the same, for a compiler cache
rm -rf "$work"
mkdir -p "$work/run"
trap 'rm -rf "$work"' EXIT
export TMPDIR=$work/run VNBYTSTR_PROFILE=$work/profile.ini LC_ALL=C.UTF-8 QT_QPA_PLATFORM=offscreen
fail() { echo "FAILED: $1" >&2; exit 1; }

"$cmake" --install "$build" --prefix "$work/prefix" >/dev/null
cp -r "$programs" "$work/source"
"$cmake" -S "$work/source" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_COMPILER_LAUNCHER="${CMAKE_CXX_COMPILER_LAUNCHER:-}" >/dev/null
"$cmake" --build "$work/build" -j2 >"$work/log" 2>&1 || { cat "$work/log" >&2; fail "the programs do not build"; }
grep -q 'warning:' "$work/log" && { cat "$work/log" >&2; fail "warnings"; }
cd "$work/run"
says() { # PROGRAM [ARGUMENT...] with what it says on standard input
    local said
    said=$("$work/build/$1" "${@:2}" 2>"$work/err") || { cat "$work/err" >&2; fail "$1 fails: $said"; }
    diff - <(echo "$said") >&2 || fail "$1 says something else"
}

says store <<'TEXT'
store: 16777216 bytes, 0xCAFEBABE at 1000000, most of it in a swap file
stream: 48656C6C21, in memory
rows: 100000, the last name is customer 999
TEXT
[ "$(stat -c %s store.bin)" = 16777216 ] || fail "store.bin"
says translate <<'TEXT'
in CCSID 37: C799DC5985, 0 characters lost
not in CCSID 37: the character at byte 6
export: 80 bytes
TEXT
{ printf '%-40s%-40s' 'Smith &amp; Sons' '12 pieces' | iconv -f UTF-8 -t IBM037 | cmp - export.37; } || fail "export.37"
says document <<'TEXT'
width 120, scale 1.5, colour 0000FF, side right, note of 9 bytes, text "Price < 100"
TEXT
says variables <<'TEXT'
Null marker: (none)
12 of north, shown in English (United States)
TEXT
grep -qF "TLXCP_TENULL=(none)" "$VNBYTSTR_PROFILE" || fail "the profile lacks the marker"
says key_agreement <<'TEXT'
the two keys are the same, 96 bytes
deciphered, the text is the same
TEXT
says help_pages <<'TEXT'
browser shows orders.htm
browser shows contents.htm
browser shows contents.htm
TEXT
if [ -x "$work/build/list_in_qt" ]; then
    says list_in_qt "$work/run/list.png" <<'TEXT'
1000000 rows, the last one 999998000001
TEXT
    [ -s "$work/run/list.png" ] || fail "no picture of the list"
    says list_in_framework test <<'TEXT'
sorted by orders, the first is Berger
TEXT
    [ -z "${VNBYTSTR_KEEP_PICTURE:-}" ] || cp "$work/run/list.png" "$VNBYTSTR_KEEP_PICTURE"
fi
