#!/usr/bin/env python3
"""windows_test.py VNQUERY.EXE VNQUERY: runs the program for Windows, on the Win32 runtime (scripts/windows-run),
and the one for this machine with the same arguments; both must give the same exit codes, output and files, byte
for byte. Skipped (77) where one of the programs is missing."""
import os
import pathlib
import sqlite3
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve()
FORMATS = ["table", "vertical", "text", "records", "csv", "tsv", "json", "jsonl", "markdown", "insert", "html", "xml"]
TEXTS = sorted(pathlib.Path("/usr/share/common-licenses").iterdir())
ODD = [None, "", 0, -1, 2**63 - 1, 1.5, 1e300, b"", bytes(range(256)) * 500, "é😀日本 שלום", "<b>&amp;,\"q'\\N", "a\tb\nc\r\nd\0e", "x" * 65537]
KEY = ["--des-key", "0123456789ABCDEF"]


def make_database(name):
    """Texts and large files of this machine, and odd values. The large values, in their order."""
    large = [file.read_bytes() for file in sorted(pathlib.Path("/usr/lib").rglob("*.so*"))
             if file.is_file() and 4 << 20 < file.stat().st_size < 16 << 20][:3]
    database = sqlite3.connect(name)
    database.execute("create table licence(id integer primary key, name text, body clob)")
    database.executemany("insert into licence(name, body) values (?, ?)",
                         [(file.name, file.read_text("utf-8")) for file in TEXTS])
    database.execute("create table library(id integer primary key, content blob)")
    database.executemany("insert into library(content) values (?)", [(each,) for each in large])
    database.execute("create table odd(id integer primary key, v, w)")
    database.executemany("insert into odd(v, w) values (?, ?)", zip(ODD, reversed(ODD)))
    database.commit()
    database.close()
    return large


def jobs(large_count):
    """The arguments of each run. Names of files are in the current folder."""
    query = ["--db", "../test.sqlite", "--sql"]
    for form in FORMATS:
        yield query + ["select * from odd", "--format", form]
        yield query + ["select * from odd", "--quiet", "--format", form, "--export", "odd." + form, "--headings"]
    yield query + ["select id, name, body, null as note from licence order by id"]
    save = [word for i in range(large_count) for word in ("--save", f"{i + 1}:2", f"saved {i} é")]
    yield query + ["select * from library order by id"] + save
    for ccsid in ("37", "500", "819", "930", "1140", "1200", "1208", "1252", "5026"):
        yield query + ["select v from odd where typeof(v) = 'text'", "--quiet", "--export", "odd." + ccsid, "--ccsid",
                       ccsid]
    yield query + ["select body from licence order by id", "--quiet", "--export", "licences.37", "--ccsid", "37",
                   "--record-length", "80", "--line-break", "crlf", "--line-ends", "records"]
    yield ["--translate", "37:1208", "licences.37", "licences.txt"]
    yield query + ["select name from licence", "--quiet", "--export", "names"]
    yield ["--des", "encrypt", "names", "secret", "--des-mode", "cbc", "--des-pad", *KEY]
    yield ["--des", "decrypt", "secret", "plain", "--des-mode", "cbc", "--des-pad", *KEY]
    yield query + ["select v from odd where id = 13", "--strict", "--quiet", "--export", "none.37", "--ccsid", "37"]
    yield query + ["select no"]
    yield query + ["delete from odd"]
    yield ["--no-such-option"]


def contents(folder):
    return {file.name: file.read_bytes() for file in folder.iterdir() if file.is_file()}


def compare(windows, here, folder):
    large = make_database(folder / "test.sqlite")
    failures = 0
    environment = dict(os.environ, LC_ALL="C.UTF-8", VNBYTSTR_PROFILE="profile.ini", TMPDIR=".", TMP=".", TEMP=".")
    for count, arguments in enumerate(jobs(len(large)), 1):
        results = []
        for name, command in (("windows", windows), ("here", here)):
            (folder / name).mkdir(exist_ok=True)
            run = subprocess.run([*command, *arguments], cwd=folder / name, env=environment,
                                 stdin=subprocess.DEVNULL, capture_output=True, timeout=300)
            results.append((run.returncode, run.stdout))
            errors = run.stderr.decode("utf-8", "replace")
        if results[0] != results[1]:
            failures += 1
            print(f"{arguments}: {[(code, len(out)) for code, out in results]}\n{errors}")
    left, right = contents(folder / "windows"), contents(folder / "here")
    for name in sorted(left.keys() | right.keys()):
        if left.get(name) != right.get(name):
            failures += 1
            print(f"{name}: {len(left.get(name, b''))} bytes instead of {len(right.get(name, b''))}")
    expected = {f"saved {i} é": each for i, each in enumerate(large)} | {"plain": left.get("names")}
    for name, content in expected.items():
        if left.get(name) != content:
            failures += 1
            print(f"{name} is not what it should be")
    print(f"{count} runs, {len(left)} files, {sum(map(len, left.values()))} bytes: {failures} differ")
    return failures


def main():
    windows, here = (os.path.abspath(name) for name in sys.argv[1:])
    if not os.path.exists(windows) or not os.path.exists(here):
        print("one of the programs was not built")
        return 77
    with tempfile.TemporaryDirectory() as folder:
        failures = compare([HERE.parents[2] / "scripts/windows-run", windows], [here], pathlib.Path(folder))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
