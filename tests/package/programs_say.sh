#!/usr/bin/env bash
# programs_say.sh FOLDER: runs the small programs of examples/programs, built in that folder, where it is
# called, and compares what they say.
set -euo pipefail
build=$1
export VNBYTSTR_PROFILE=$PWD/profile.ini LC_ALL=C.UTF-8 QT_QPA_PLATFORM=offscreen
fail() { echo "FAILED: $1" >&2; exit 1; }

says() { # PROGRAM [ARGUMENT...] with what it says on standard input
    local said
    said=$("$build/$1" "${@:2}" 2>err) || { cat err >&2; fail "$1 fails: $said"; }
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
if [ -x "$build/list_in_qt" ]; then
    says list_in_qt "$PWD/list.png" <<'TEXT'
1000000 rows, the last one 999998000001
TEXT
    [ -s "$PWD/list.png" ] || fail "no picture of the list"
    says list_in_framework test <<'TEXT'
sorted by orders, the first is Berger
TEXT
    [ -z "${VNBYTSTR_KEEP_PICTURE:-}" ] || cp "$PWD/list.png" "$VNBYTSTR_KEEP_PICTURE"
fi
