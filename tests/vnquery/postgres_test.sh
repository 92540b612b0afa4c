#!/usr/bin/env bash
# Runs vnquery against a PostgreSQL server through ODBC. The server is started for the test, in a
# temporary folder and on a socket there only. Exit code 77 (skipped) where PostgreSQL or its ODBC driver
# is not installed.
set -euo pipefail
vnquery=$1
tests=$2

skip() { echo "skipped: $1"; exit 77; }
bin=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1 || true)
[ -n "$bin" ] && [ -x "$bin/postgres" ] && [ -x "$bin/initdb" ] || skip "no PostgreSQL server here"
driver=$(find /usr/lib -name psqlodbcw.so 2>/dev/null | head -n 1)
[ -n "$driver" ] || skip "no ODBC driver for PostgreSQL here"

folder=$(mktemp -d)
mkdir "$folder/tmp" "$folder/socket"
# The server refuses to run as root.
as_user=()
if [ "$(id -u)" -eq 0 ]; then
    id postgres >/dev/null 2>&1 || skip "no user to run the server as"
    chown -R postgres "$folder"
    as_user=(runuser -u postgres --)
fi
server() { (cd "$folder" && "${as_user[@]}" "$bin/pg_ctl" -D "$folder/data" -w "$@" >>"$folder/log" 2>&1); }
finish() {
    server stop -m immediate || true
    rm -rf "$folder"
}
trap finish EXIT
# What the driver does not free is no matter of this program.
echo "leak:psqlodbcw.so" >"$folder/leaks"
chmod 644 "$folder/leaks"
export LSAN_OPTIONS="${LSAN_OPTIONS:+$LSAN_OPTIONS:}suppressions=$folder/leaks:print_suppressions=0"
fail() { echo "FAILED: $1" >&2; cat "$folder/err" >&2; exit 1; }

(cd "$folder" && "${as_user[@]}" "$bin/initdb" -D "$folder/data" -A trust -U postgres -E UTF8 \
    --locale=C.UTF-8 --no-sync >"$folder/log" 2>&1)
server start -o "-c listen_addresses='' -c unix_socket_directories='$folder/socket' -c fsync=off"
sql() { "$bin/psql" -h "$folder/socket" -U postgres -qAtX -v ON_ERROR_STOP=1 "$@" postgres; }

connection="Driver=$driver;Server=$folder/socket;Database=postgres;UID=postgres;ByteaAsLongVarBinary=1"
run() { TMPDIR="$folder/tmp" "$vnquery" --connect "$connection" "$@" 2>"$folder/err"; }

sql <<'SQL'
create table doc(id int primary key, name text, body text, data bytea, price numeric(10, 2));
insert into doc values
    (1, 'Grüße 日本 😀', repeat('Zeile mit Ümläuten und 😀' || chr(10), 100000), null, 12.50),
    (2, '', '', ''::bytea, -1),
    (3, null, null, decode(repeat('00ff10', 1000000), 'hex'), null);
SQL

run --sql "select id, name, body, data, price from doc order by id" >"$folder/out" || fail "query"
diff - "$folder/out" <<'TABLE' || fail "display"
id  name           body           data           price
--  -------------  -------------  -------------  -----
 1  Grüße 日本 😀  <CLOB 2.9 MB>  -              12.50
 2                                <BLOB 0 B>     -1.00
 3  -              -              <BLOB 2.9 MB>      -
(3 rows)
TABLE

run --quiet --sql "select body from doc where id = 1" --save 1:1 "$folder/body" || fail "text"
sql -c "select body from doc where id = 1" | head -c -1 >"$folder/body.expected"
cmp "$folder/body" "$folder/body.expected" || fail "text differs"
# Rows in blocks: from a cursor as vnquery asks for it, whole, and in portions that the user
# chooses, with texts that the driver converts.
for portions in "" ";UseDeclareFetch=0" ";UseDeclareFetch=1;Fetch=3;LFConversion=1"; do
    VNQUERY_ODBC="$connection$portions" "$tests" --gtest_filter='OdbcSource*' >"$folder/err" 2>&1 ||
        fail "rows in blocks $portions"
done
VNQUERY_ODBC=$connection "$tests" --gtest_filter='ExportTest.*Postgres' >"$folder/err" 2>&1 || fail "export"
connection="$connection;UseDeclareFetch=1;Fetch=1"
run --quiet --sql "select data from doc order by id" --save 3:1 "$folder/data.out" || fail "bytes"
sql -c "select encode(data, 'hex') from doc where id = 3" | tr -d '\n' >"$folder/hex.expected"
od -An -v -tx1 "$folder/data.out" | tr -d ' \n' | cmp - "$folder/hex.expected" || fail "bytes differ"

# Several statements, which end as the server ends them; numbers that JSON has not.
run --format jsonl --file - >"$folder/out" <<'SQL' || fail "a script"
select 12.50::numeric as n, 'NaN'::float8 as f, .5::real as r, '\x00ff'::bytea as d, $$a;'b$$ as t;
/* ; */ select null as x -- ;
SQL
diff - "$folder/out" <<'JSON' || fail "the results of a script"
{"n":12.50,"f":"NaN","r":0.5,"d":"00FF","t":"a;'b"}
{"x":null}
JSON

code=0; run --sql "select nothing from doc" || code=$?
[ $code -eq 1 ] && grep -q 'nothing' "$folder/err" || fail "a wrong query gives code $code"

# Nothing but a query runs, whatever stands in it, and nothing that a query calls changes anything.
sql <<'SQL'
create table victim(a int);
insert into victim values (1), (2), (3);
create sequence numbers;
create function harm() returns int language sql as 'delete from victim returning a';
create function sly() returns int language plpgsql as
    $$ begin perform set_config('transaction_read_only', 'off', false);
       delete from victim; return 1; end $$;
SQL
before=$(sql -c "select (select count(*) from victim), (select last_value from numbers), (select count(*) from pg_class)")
for portions in "" ";UseDeclareFetch=1" ";UseServerSidePrepare=0"; do
    while IFS='|' read -r statement reason; do
        code=0
        "$vnquery" --connect "$connection$portions" --sql "$statement" >"$folder/out" 2>"$folder/err" || code=$?
        [ $code -eq 1 ] && grep -q "$reason" "$folder/err" || fail "$statement gives code $code"
        after=$(sql -c "select (select count(*) from victim), (select last_value from numbers), (select count(*) from pg_class)")
        [ "$before" = "$after" ] || fail "$statement changed something"
    done <<'STATEMENTS'
delete from victim|not run
drop table victim|not run
update victim set a = 1|not run
insert into victim values (4)|not run
delete from victim returning a|not run
with gone as (delete from victim returning a) select * from gone|not run
select * into copied from victim|not run
create table copied(a int)|not run
select 1; delete from victim|statement 2: .*not run
select 1; commit; delete from victim|statement 2: .*not run
select harm()|read-only
select sly()|read
select nextval('numbers')|read-only
STATEMENTS
done

# Cells written back, in portions as above and not.
sql <<'SQL'
create table edited(id int primary key, name varchar(40), body text, data bytea, price numeric(10, 2) default 1.5);
insert into edited values (1, 'one', '', null, 1), (2, 'two', null, null, 2), (3, 'three', 'x', '\x00', 3);
create table numbered(id serial primary key, name text, n int default 7);
insert into numbered(name) values ('one'), ('two');
SQL
VNQUERY_ODBC=$connection TMPDIR="$folder/tmp" "$tests" --gtest_filter='OdbcWriter*' >"$folder/err" 2>&1 || fail "editing"

# The tables that the server has.
sql <<'SQL'
create schema "Odd";
create table "Odd"."It's ""odd""" (id int primary key default 7, n numeric(8, 2), t varchar(30) default 'a''b');
create index on "Odd"."It's ""odd""" (t);
create view "Odd".brief as select id from "Odd"."It's ""odd""";
SQL
VNQUERY_ODBC=$connection "$tests" --gtest_filter='OdbcCatalog*' >"$folder/err" 2>&1 || fail "catalog"

# Statements that change something, in portions as well.
for portions in "" ";UseDeclareFetch=0" ";UseServerSidePrepare=0"; do
    sql <<'SQL'
drop table if exists kept;
create table kept(a int primary key, b text);
insert into kept values (1, 'a'), (2, 'b'), (3, 'c');
create or replace function harm_kept() returns int language sql as
    'delete from kept where a = 1 returning a';
SQL
    VNQUERY_ODBC="${connection%;UseDeclareFetch=1;Fetch=1}$portions" "$tests" --gtest_filter='OdbcSession*' \
        >"$folder/err" 2>&1 || fail "sessions $portions"
done

# Ctrl-C while the server works.
TMPDIR="$folder/tmp" "$vnquery" --connect "$connection" --sql "select pg_sleep(100)" 2>"$folder/err" &
process=$!
sleepers() { sql -c "select count(*) from pg_stat_activity where wait_event = 'PgSleep'"; }
until [ "$(sleepers)" = 1 ]; do sleep 0.05; done
kill -INT $process
code=0; wait $process || code=$?
[ $code -eq 130 ] || fail "an interrupted query gives code $code"
[ "$(sleepers)" = 0 ] || fail "the server works on"

# Ctrl-C, and a server process that ends, while rows arrive.
connection=${connection%;UseDeclareFetch=1;Fetch=1}
rows="select i, repeat('x', 100) from generate_series(1, 100000000) i"
reader() { sql -c "select pid from pg_stat_activity where query ilike '%fetch%' and pid <> pg_backend_pid()"; }
for how in interrupt terminate; do
    TMPDIR="$folder/tmp" "$vnquery" --connect "$connection" --quiet --sql "$rows" 2>"$folder/err" &
    process=$!
    until [ -n "$(reader)" ]; do sleep 0.05; done
    if [ $how = interrupt ]; then kill -INT $process; else
        sql -c "select pg_terminate_backend($(reader))" >/dev/null; fi
    code=0; wait $process || code=$?
    [ $how-$code = interrupt-130 ] || [ $how-$code = terminate-1 ] || fail "$how gives code $code"
done
grep -q 'terminat\|connection\|communication' "$folder/err" || fail "message of a lost server"
[ -z "$(ls "$folder/tmp")" ] || fail "temporary files are left"
echo "passed"
