#!/usr/bin/env bash
# bare_test.sh VERSION: the part of scripts/test-packages that runs within the bare system, as root, with
# the packages in /trial/old and /trial/new, what README tells to type and to save in /trial/readme, and the
# example programs' test in /trial/programs_say.sh.
set -euo pipefail
version=$1
cd /trial
export TMPDIR=/trial VNBYTSTR_PROFILE=/trial/profile.ini
step() { printf '\n== %s (%s)\n' "$1" "$(date +%T)"; }
fail() { echo "FAILED: $1" >&2; exit 1; }
quietly() { "$@" >/trial/log 2>&1 || { tail -n 30 /trial/log >&2; fail "$*"; }; }
# All files, but for what the package manager and the linker keep for themselves.
files() {
    find / -xdev \( -path /trial -o -path /proc -o -path /dev -o -path /sys -o -path /tmp -o -path /var/lib/dpkg \
        -o -path /var/lib/apt -o -path /var/cache -o -path /var/log -o -path /etc/ld.so.cache \) -prune -o -print | sort
}
installed() { dpkg-query -W -f='${Package} ${Version} ${db:Status-Status}\n' '*vnbytstr*' 'vnquery*' 2>/dev/null || true; }
gone() {
    [ -z "$(installed | grep -v not-installed)" ] || fail "still known: $(installed)"
    [ -z "$(files | grep -iE 'vnbytstr|vnquery')" ] || fail "still there: $(files | grep -iE 'vnbytstr|vnquery')"
}

step "README, word for word: from the packages to a program of one's own"
started=$SECONDS
cp new/*.deb readme/
(cd readme && bash -euo pipefail commands.sh) >said 2>log || { tail -n 20 said log >&2; fail "what README says does not work"; }
printf 'It took %d seconds, downloads included, and says:\n' $((SECONDS - started))
grep -E 'bytes, found at|^ *[0-9]+ +[A-Z]|row' said
[ "$(grep -cx '100000000 bytes, found at 253' said)" = 2 ] || fail "README's example says something else"
[ "$(stat -c %s readme/value.bin)" = 100000000 ] || fail "value.bin has $(stat -c %s readme/value.bin) bytes"
grep -q 'Metropolis' said || fail "vnquery does not show the films"
missing=$(ldd /usr/lib/*/qt6/plugins/platforms/libqxcb.so | grep 'not found' || true)
[ -z "$missing" ] || fail "the window lacks libraries: $missing"

step "its window, on an X server"
quietly apt-get install -y xvfb x11-utils
Xvfb :7 -screen 0 1024x768x24 -nolisten tcp >/dev/null 2>&1 &
server=$!
(cd readme && DISPLAY=:7 QT_QPA_PLATFORM=xcb exec vnquery --window --db films.sqlite) >window.log 2>&1 &
window=$!
shown=
for _ in $(seq 150); do
    shown=$(DISPLAY=:7 xwininfo -root -tree 2>/dev/null | grep -m1 '"films.sqlite - vnquery"' || true)
    [ -z "$shown" ] || break
    sleep 0.2
done
[ -n "$shown" ] || { cat window.log >&2; fail "no window comes up"; }
echo "$shown"
kill "$window" && wait "$window" || true
kill "$server" && wait "$server" || true
quietly apt-get purge -y 'libvnbytstr*' 'vnquery*' # as README says
gone

step "installing an earlier version, then upgrading"
quietly apt-get install -y qt6-base-dev # for the list's examples
files >before
packages() { ls "$1"/*.deb | grep -v dbgsym | sed 's|^|./|'; }
quietly apt-get install -y $(packages old)
installed | grep -q "vnquery $version~before-1 installed" || fail "the earlier version is not installed"
[ "$(find /usr -name 'only-in-the-earlier-version' | wc -l)" = 4 ] || fail "the earlier version is the same"
quietly apt-get install -y $(packages new)
for package in libvnbytstr0.2 libvnbytstr-controls0.2 libvnbytstr-dev vnquery; do
    installed | grep -qx "$package $version-1 installed" || fail "$package is not upgraded: $(installed)"
done
[ -z "$(find /usr -name 'only-in-the-earlier-version')" ] || fail "the upgrade leaves files of the earlier version"
# The next minor version can be installed beside this one: all files of a library carry its version.
for package in libvnbytstr0.2 libvnbytstr-controls0.2; do
    for file in $(dpkg -L "$package"); do
        [ -d "$file" ] || [[ $file == *0.2* ]] || fail "$package has $file, as its next version would"
    done
done
quietly apt-get install --reinstall -y $(packages new)
quietly apt-get check
# The debug symbols belong to these very files.
quietly apt-get install -y ./new/vnquery-dbgsym_*.deb ./new/libvnbytstr0.2-dbgsym_*.deb
for file in /usr/lib/*/vnquery/vnquery "$(realpath /usr/lib/*/libvnbytstr.so)"; do
    id=$(readelf -n "$file" | sed -n 's/.*Build ID: //p')
    [ -e "/usr/lib/debug/.build-id/${id:0:2}/${id:2}.debug" ] || fail "no debug symbols for $file"
done

step "the example programs that come with the package"
mkdir -p tools/bin run
cp -r /usr/share/doc/libvnbytstr-dev/examples/programs tools/
quietly cmake -S tools/programs -B tools/build
quietly cmake --build tools/build -j2
[ -x tools/build/list_in_qt ] || fail "the list's examples are not built"
(cd run && bash /trial/programs_say.sh /trial/tools/build)
echo "All $(find tools/build -maxdepth 1 -type f -executable | wc -l) say what they should."

step "vnquery"
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
printf '#!/bin/sh\necho "$1" >/trial/opened\n' >tools/bin/xdg-open
chmod +x tools/bin/xdg-open
PATH=/trial/tools/bin:$PATH vnquery --help-topic 1
for _ in $(seq 100); do [ -s opened ] || sleep 0.1; done
grep -q "/vnquery/Help/l.ENU/query.htm" opened || fail "vnquery opens $(cat opened) for help"
echo "It speaks the user's language and opens its help pages."

step "removing and purging"
names=$(installed | sed -n 's/ .* installed$//p')
quietly apt-get remove -y $names
quietly dpkg --purge $names # nothing is left for it to do
files >after
diff before after >left || { cat left >&2; fail "something is left, or gone"; }
gone
