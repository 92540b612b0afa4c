#!/usr/bin/env bash
# Statements that change something on a MariaDB server, through ODBC. The server is started for the test,
# in a temporary folder and on a socket there only. Exit code 77 (skipped) where MariaDB or its ODBC
# driver is not installed.
set -euo pipefail
tests=$1

skip() { echo "skipped: $1"; exit 77; }
server=$(command -v mariadbd || ls /usr/sbin/mariadbd 2>/dev/null || true)
[ -n "$server" ] && install=$(command -v mariadb-install-db) || skip "no MariaDB server here"
driver=$(find /usr/lib -name libmaodbc.so 2>/dev/null | head -n 1)
[ -n "$driver" ] || skip "no ODBC driver for MariaDB here"

folder=$(mktemp -d)
user=$(id -un)
if [ "$(id -u)" -eq 0 ]; then
    id mysql >/dev/null 2>&1 || skip "no user to run the server as"
    user=mysql
    chown mysql "$folder"
fi
chmod 755 "$folder"
process=
finish() {
    [ -z "$process" ] || { kill -9 "$process" && wait "$process"; } 2>/dev/null || true
    rm -rf "$folder"
}
trap finish EXIT
# What the driver does not free is no matter of this program.
printf 'leak:libmaodbc.so\nleak:libmariadb.so\n' >"$folder/leaks"
export LSAN_OPTIONS="${LSAN_OPTIONS:+$LSAN_OPTIONS:}suppressions=$folder/leaks:print_suppressions=0"
fail() { echo "FAILED: $1" >&2; cat "$folder/err" "$folder/log" >&2; exit 1; }

"$install" --no-defaults --user="$user" --datadir="$folder/data" --auth-root-authentication-method=normal \
    --skip-test-db >"$folder/log" 2>&1 || { touch "$folder/err"; fail "the database cannot be made"; }
"$server" --no-defaults --user="$user" --datadir="$folder/data" --socket="$folder/socket" --skip-networking \
    --innodb-flush-log-at-trx-commit=0 --innodb-buffer-pool-size=16M >>"$folder/log" 2>&1 &
process=$!
sql() { mariadb --no-defaults -S "$folder/socket" -u root -e "$1" 2>"$folder/err"; }
for _ in $(seq 200); do sql "select 1" >"$folder/out" && break; sleep 0.1; done
sql "create database films; use films; create table kept(a int primary key, b text) engine=innodb" ||
    fail "the server does not start"

VNQUERY_MARIADB="Driver=$driver;SOCKET=$folder/socket;Database=films;UID=root" \
    "$tests" --gtest_filter='MariaDbSession*' >"$folder/err" 2>&1 || fail "sessions"
grep -q PASSED "$folder/err" || fail "nothing ran"
echo "passed"
