#!/usr/bin/env bash
# windows_test.sh CMAKE CXX TOOLCHAIN: makes the zip, unpacks it in another place, and builds programs with what is
# in it alone: by CMake, and by the compiler, with <windows.h> before and after the library's headers, with and
# without UNICODE. All are run on the Win32 runtime.
set -euo pipefail
cmake=$1 cxx=$2 toolchain=$3
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAILED: $1" >&2; exit 1; }

zip=$("$here/../../scripts/windows-zip")
sum=$(sha256sum <"$zip")
[ "$("$here/../../scripts/windows-zip")" = "$zip" ] && [ "$(sha256sum <"$zip")" = "$sum" ] || fail "the zip is another one"
mkdir "$work/un packed"
cd "$work/un packed"
"$cmake" -E tar xf "$zip"
prefix=$(echo "$PWD"/*)
export VNBYTSTR_PROFILE=profile.ini WINEPATH="Z:$prefix/bin"
expect() { # PROGRAM: the texts come from the folder, in every language
    cd "$(dirname "$1")"
    local locale says
    for locale in C de_AT.UTF-8; do
        says=$(LC_ALL=$locale "$here/../../scripts/windows-run" "$1" | tr -d '\r')
        case $locale:$says in
        "C:300000 bytes, 0x01020304, Null marker" | "de_AT.UTF-8:300000 bytes, 0x01020304, Zeichen für Nullwert") ;;
        *) fail "$1 says $says with $locale" ;;
        esac
    done
}

"$cmake" -S "$here/consumer" -B "$work/consumer" --toolchain "$toolchain" \
    -Dvnbytstr_DIR="$prefix/lib/cmake/vnbytstr" >/dev/null
"$cmake" --build "$work/consumer" >/dev/null
expect "$work/consumer/consumer.exe"
[ -e "$work/consumer/deployed/vnurcJPN.dll" ] || fail "vnbytstr_deploy_resources copies nothing"

for unicode in -DUNICODE -UUNICODE; do
    for order in before after; do
        options=(-include windows.h)
        if [ $order = after ]; then
            options=(-include vnbytstr/vnbytstr.h -include windows.h)
        fi
        "$cxx" -std=c++20 -Wall -Wextra -Werror -Wno-format $unicode "-I$prefix/include" "${options[@]}" "$here/consumer/main.cpp" \
            -o "$work/program.exe" "-L$prefix/lib" -lvnbytstr
        expect "$work/program.exe"
    done
done
[[ "$("$here/../../scripts/windows-run" "$prefix/bin/vnquery.exe" --version)" == vnquery\ * ]] || fail "vnquery does not run"
