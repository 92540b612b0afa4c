#!/usr/bin/env bash
# package_test.sh BUILD_FOLDER CMAKE CXX: installs into a fresh prefix, moves that, then builds and runs the
# consumer once through find_package and once through pkg-config, and looks at what the library exports.
set -euo pipefail
build=$1 cmake=$2 cxx=$3
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TMPDIR=$work VNBYTSTR_PROFILE=$work/profile.ini LC_ALL=C
fail() { echo "FAILED: $1" >&2; exit 1; }

"$cmake" --install "$build" --prefix "$work/first" >/dev/null
mkdir "$work/moved here"
prefix="$work/moved here/prefix"
mv "$work/first" "$prefix"
library=$(find "$prefix" -name 'libvnbytstr.so')
lib=$(dirname "$library")
export PKG_CONFIG_PATH=$lib/pkgconfig

# Value and text: the texts come from the installation, in every language.
english="300000 bytes, 0x01020304, Null marker"
german="300000 bytes, 0x01020304, Zeichen für Nullwert"
expect() { # PROGRAM NAME
    [ "$("$1")" = "$english" ] || fail "$2 says $("$1")"
    [ "$(LC_ALL=de_AT.UTF-8 "$1")" = "$german" ] || fail "$2 in German says $(LC_ALL=de_AT.UTF-8 "$1")"
}
grep -q "$work/first" -r "$lib/pkgconfig" "$lib/cmake" && fail "the first prefix is in the package"

"$cmake" -S "$here/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_COMPILER="$cxx" >/dev/null
"$cmake" --build "$work/consumer" >/dev/null
expect "$work/consumer/consumer" "the program built with CMake"
[ -e "$work/consumer/vnurcENU.dll" ] && fail "resource libraries came unasked"
[ -e "$work/consumer/deployed/vnurcJPN.dll" ] || fail "vnbytstr_deploy_resources copies nothing"

# pkg-config escapes the blank, the shell must not split there.
eval "flags=($(pkg-config --cflags --libs vnbytstr))"
"$cxx" -std=c++20 "$here/consumer/main.cpp" -o "$work/by_pkg_config" "${flags[@]}"
LD_LIBRARY_PATH="$lib" expect "$work/by_pkg_config" "the program built with pkg-config"
eval "folder=$(pkg-config --variable=resourcedir vnbytstr)"
[ -e "$folder/vnurcENU.dll" ] || fail "resourcedir is not where the texts are"
"$cxx" -std=c++17 -fsyntax-only "$here/consumer/main.cpp" "${flags[@]}" 2>"$work/c++17" || true
[[ "$(grep -m1 error: "$work/c++17")" == *"needs C++20"* ]] || fail "C++17 is not told so"

# The list box's example, as its page has it.
if [ -e "$lib/pkgconfig/vnbytstr-controls.pc" ]; then
    sed -n '/^```cpp$/,/^```$/p' "$here/../../docs/list-box.md" | sed '1d;/^```$/,$d' >"$work/list.cpp"
    echo 'int main() { CMainWnd window; }' >>"$work/list.cpp"
    eval "flags=($(pkg-config --cflags --libs vnbytstr-controls))"
    "$cxx" -std=c++20 "$work/list.cpp" -o "$work/list" "${flags[@]}"
    LD_LIBRARY_PATH="$lib" QT_QPA_PLATFORM=offscreen "$work/list" || fail "the list box's example does not run"
fi

# A versioned name, and nothing exported but the interface.
readelf -d "$library" | grep -q 'SONAME.*libvnbytstr\.so\.[0-9]'
if readelf -d "$library" | grep NEEDED | grep -qi qt; then
    echo "the core library needs Qt" >&2
    exit 1
fi
stray=$(nm -DC --defined-only "$library" | cut -d' ' -f3- |
    grep -E 'unnamed|anonymous|^vnbytstr::detail::' | grep -vE 'ArrayBase|emptyString' || true)
if [ -n "$stray" ]; then
    printf 'exported, but not part of the interface:\n%s\n' "$stray" >&2
    exit 1
fi
