#!/usr/bin/env bash
# bare_test.sh VERSION: the part of scripts/test-packages that runs within the bare system, as root, with
# the packages in /trial/old and /trial/new and README's example in /trial/example.cpp.
set -euo pipefail
version=$1
cd /trial
export TMPDIR=/trial VNBYTSTR_PROFILE=/trial/profile.ini
step() { printf '\n== %s (%s)\n' "$1" "$(date +%T)"; }
fail() { echo "FAILED: $1" >&2; exit 1; }
quietly() { "$@" >/trial/log 2>&1 || { tail -n 30 /trial/log >&2; fail "$*"; }; }
# All files, but for what the package manager and the linker keep for themselves.
files() {
    find / -xdev \( -path /trial -o -path /proc -o -path /dev -o -path /sys -o -path /var/lib/dpkg -o -path /var/lib/apt \
        -o -path /var/cache -o -path /var/log -o -path /etc/ld.so.cache \) -prune -o -print | sort
}
installed() { dpkg-query -W -f='${Package} ${Version} ${db:Status-Status}\n' '*vnbytstr*' 'vnquery*' 2>/dev/null || true; }

step "compiler, CMake, pkg-config and what the packages depend on"
quietly apt-get update
quietly apt-get install -y g++ cmake make pkg-config
depends=$(for file in new/*.deb; do dpkg-deb -f "$file" Depends; done | tr ',\n' '\n\n' |
    grep -vE 'vnbytstr|vnquery|^ *$' | sort -u | paste -sd,)
quietly apt-get satisfy -y "$depends"
files >before

step "installing the earlier version, then upgrading"
packages() { ls "$1"/*.deb | grep -v dbgsym | sed 's|^|./|'; }
quietly apt-get install -y $(packages old)
installed | grep -q "vnquery $version~before-1 installed" || fail "the earlier version is not installed"
quietly apt-get install -y $(packages new)
for package in libvnbytstr0.2 libvnbytstr-controls0.2 libvnbytstr-dev vnquery; do
    installed | grep -qx "$package $version-1 installed" || fail "$package is not upgraded: $(installed)"
done
quietly apt-get install --reinstall -y $(packages new)
quietly apt-get check
# The debug symbols belong to these very files.
quietly apt-get install -y ./new/vnquery-dbgsym_*.deb ./new/libvnbytstr0.2-dbgsym_*.deb
for file in /usr/lib/*/vnquery/vnquery "$(realpath /usr/lib/*/libvnbytstr.so)"; do
    id=$(readelf -n "$file" | sed -n 's/.*Build ID: //p')
    [ -e "/usr/lib/debug/.build-id/${id:0:2}/${id:2}.debug" ] || fail "no debug symbols for $file"
done

step "README's example, with CMake and with pkg-config"
cat >programs/CMakeLists.txt <<'CMAKE'
cmake_minimum_required(VERSION 3.25)
project(trial LANGUAGES CXX)
find_package(vnbytstr 0.2 REQUIRED COMPONENTS)
add_executable(program ../example.cpp)
target_link_libraries(program PRIVATE vnbytstr::vnbytstr)
CMAKE
run() { # PROGRAM
    (mkdir -p run && cd run && "$1") >out 2>&1 || { cat out >&2; fail "$1 fails"; }
    [[ $(cat out) == *" bytes, found at "* ]] || fail "$1 says $(cat out)"
    [ "$(stat -c %s run/value.bin)" = 100000000 ] || fail "$1 saved $(stat -c %s run/value.bin) bytes"
}
quietly cmake -S programs -B by_cmake
quietly cmake --build by_cmake
run /trial/by_cmake/program
quietly c++ -std=c++20 example.cpp -o by_pkg_config $(pkg-config --cflags --libs vnbytstr)
run /trial/by_pkg_config
echo "It says: $(cat out)"

step "the example programs that come with the package"
cp -r /usr/share/doc/libvnbytstr-dev/examples/programs tools/
quietly cmake -S tools/programs -B tools/build
quietly cmake --build tools/build -j2
(cd run && ../tools/build/variables) | grep -q "shown in English" || fail "the variables' example does not find the texts"

step "vnquery"
printf 'create table film(id integer primary key, title text);\n' >schema
expect() { # LANGUAGE TEXT
    local printed
    printed=$(LC_ALL=$1 vnquery --db /trial/empty.sqlite --sql "select 1 as n" 2>&1) || true
    [[ $printed == *"$2"* ]] || fail "in $1 vnquery says $printed"
}
: >empty.sqlite
expect C.UTF-8 "(1 row)"
expect de_DE.UTF-8 "(1 Zeile)"
expect ja_JP.UTF-8 "(1"
vnquery --version | grep -q "$version" || fail "vnquery says it is $(vnquery --version)"
# It finds its help pages beside itself, and has them opened.
mkdir tools/bin
printf '#!/bin/sh\necho "$1" >/trial/opened\n' >tools/bin/xdg-open
chmod +x tools/bin/xdg-open
PATH=/trial/tools/bin:$PATH vnquery --help-topic 1
for _ in $(seq 100); do [ -s opened ] || sleep 0.1; done
grep -q "/vnquery/Help/l.ENU/query.htm" opened || fail "vnquery opens $(cat opened) for help"
# The window comes up and stays until it is told to end.
QT_QPA_PLATFORM=offscreen timeout 10 vnquery --window --db empty.sqlite --sql "select 1 as n" >out 2>&1 && code=0 || code=$?
[ $code = 124 ] || { cat out >&2; fail "the window ends with $code"; }
rm -rf run programs tools by_* out

step "removing and purging"
names=$(installed | sed -n 's/ .* installed$//p')
quietly apt-get remove -y $names
quietly dpkg --purge $names # nothing is left for it to do
files >after
diff before after >left || { cat left >&2; fail "something is left, or gone"; }
[ -z "$(installed | grep -v not-installed)" ] || fail "still known: $(installed)"
