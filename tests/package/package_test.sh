#!/usr/bin/env bash
# package_test.sh BUILD_FOLDER CMAKE CXX: installs into a fresh prefix, then builds and runs the consumer
# once through find_package and once through pkg-config, and looks at what the library exports.
set -euo pipefail
build=$1 cmake=$2 cxx=$3
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TMPDIR=$work VNBYTSTR_PROFILE=$work/profile.ini

"$cmake" --install "$build" --prefix "$work/prefix" >/dev/null
library=$(find "$work/prefix" -name 'libvnbytstr.so')
lib=$(dirname "$library")

"$cmake" -S "$here/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$work/prefix" \
    -DCMAKE_CXX_COMPILER="$cxx" >/dev/null
"$cmake" --build "$work/consumer" >/dev/null
[ "$("$work/consumer/consumer")" = "300000 bytes, 0x01020304" ]

# shellcheck disable=SC2046
"$cxx" -std=c++20 "$here/consumer/main.cpp" -o "$work/by_pkg_config" \
    $(PKG_CONFIG_PATH="$lib/pkgconfig" pkg-config --define-variable=prefix="$work/prefix" \
        --cflags --libs vnbytstr)
[ "$(LD_LIBRARY_PATH="$lib" "$work/by_pkg_config")" = "300000 bytes, 0x01020304" ]

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
