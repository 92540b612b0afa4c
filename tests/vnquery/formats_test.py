#!/usr/bin/env python3
"""formats_test.py VNQUERY: exports hostile values in every format and compares what other programs
read from it (Python's csv, json, XML and HTML parsers, the sqlite3 shell, xmllint) with the values
that Python's sqlite3 reads from the database."""
import csv
import html.parser
import io
import json
import os
import re
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

VNQUERY = sys.argv[1]
csv.field_size_limit(1 << 30)
FOLDER = tempfile.mkdtemp()
DATABASE = os.path.join(FOLDER, "test.sqlite")
os.environ["VNBYTSTR_PROFILE"] = "/dev/null"
os.environ["TMPDIR"] = FOLDER
QUERY = 'select * from "odd ""table"" é"'
COLUMNS = ["id", 'say "hi", <b>&|\\', "line\nbreak", "v"]
REPLACEMENT = "\ufffd"

VALUES = [
    None, "", 0, -1, 9223372036854775807, -9223372036854775808, 1.5, 1e300, -0.25, b"", b"\0\xff'",
    "plain", " blanks ", "a,b;c\td", 'q"u"o\'te', "''", "\\N", "NULL", "-", "\\", "a\\nb", "|a|*b*_c_",
    "lf\nlf", "cr\rcr", "crlf\r\n", "\n", "<b>&amp;</b>", "]]>", "=1+2", "\u202eabc", "é😀日本", "\ufeffbom",
    "nul\0nul", "\x01\x08\x1b\x1f\x7f\x85", "\ufffe\uffff", "9" * 400, "NaN", "[1]", "x" * 65536, "x" * 65537,
    ("é,\"'<\r\n\0😀" * 80000), bytes(range(256)) * 400,
]
INVALID = b"a\xffb\xe2\x82\xed\xa0\x80\xf4\x90\x80\x80\xc0\x80 end\xf0\x9f"


def fail(text):
    print("FAILED:", text)
    sys.exit(1)


def check(what, found, expected):
    if found != expected:
        for number, (one, other) in enumerate(zip(found, expected)):
            if one != other:
                fail(f"{what}, row {number}: {str(one)[:300]!r}\n instead of {str(other)[:300]!r}")
        fail(f"{what}: {str(found)[:300]!r} instead of {str(expected)[:300]!r}")


def make_database():
    database = sqlite3.connect(DATABASE)
    names = ", ".join('"' + name.replace('"', '""') + '"' for name in COLUMNS)
    database.execute(f'create table "odd ""table"" é"({names})')
    rows = [(i, value, value, "end") for i, value in enumerate(VALUES)]
    database.executemany('insert into "odd ""table"" é" values (?, ?, ?, ?)', rows)
    database.execute("create table bad(v)")
    database.execute("insert into bad values (cast(? as text)), (cast(? as text))",
                     (INVALID, INVALID * 30000))
    database.commit()
    database.close()
    return rows


def run(form, *more, query=QUERY, code=0):
    done = subprocess.run([VNQUERY, "--db", DATABASE, "--sql", query, "--format", form, *more],
                          stdin=subprocess.DEVNULL, capture_output=True)
    if done.returncode != code:
        fail(f"{form} {more}: exit code {done.returncode}, {done.stderr.decode()}")
    return done.stdout


def shown(value, bytes_as_hex=True):
    """A value as a text, where the format does not tell the types apart."""
    if isinstance(value, bytes):
        return value.hex().upper() if bytes_as_hex else f"<BLOB {size(len(value))}>"
    if isinstance(value, float):
        return {1e300: "1e+300"}.get(value, str(value))
    return value if value is None else str(value)


def size(count):
    return f"{count} B" if count < 1024 else f"{count / 1024:.0f} KB"


def split_quoted(text):
    """RFC 4180 by its grammar, since Python's reader does not tell an empty text from nothing."""
    rows, row = [], []
    field = re.compile(r'("(?:[^"]|"")*"|[^",\r\n]*)(,|\r\n|\n)')
    at = 0
    while at < len(text):
        found = field.match(text, at) or fail(f"csv: {text[at:at + 60]!r} is no field")
        at = found.end()
        value = found[1]
        row.append(value[1:-1].replace('""', '"') if value.startswith('"') else value or None)
        if found[2] != ",":
            rows.append(row)
            row = []
    return rows


def unescape(text):
    table = {"n": "\n", "r": "\r", "t": "\t", "0": "\0"}
    return None if text == "\\N" else re.sub(r"\\(.)", lambda m: table.get(m[1], m[1]), text)


def marked_up(value):
    """What XML and HTML cannot hold is U+FFFD."""
    if not isinstance(value, str):
        return value
    return re.sub("[\0-\x08\x0b\x0c\x0e-\x1f\ufffe\uffff]", REPLACEMENT, value)


class Cells(html.parser.HTMLParser):
    def __init__(self):
        super().__init__()
        self.rows, self.cell = [], None

    def handle_starttag(self, tag, attributes):
        if tag == "tr":
            self.rows.append([])
        elif tag in ("td", "th"):
            self.cell = 0 if ("class", "null") in attributes else ""

    def handle_data(self, data):
        if isinstance(self.cell, str):
            self.cell += data

    def handle_endtag(self, tag):
        if tag in ("td", "th"):
            self.rows[-1].append(None if self.cell == 0 else self.cell)
            self.cell = None


def check_lines(rows):
    texts = [COLUMNS] + [[shown(value) for value in row] for row in rows]
    for line_break in ("lf", "crlf"):
        data = run("csv", "--line-break", line_break).decode()
        check("csv, by the grammar", split_quoted(data), texts)
        read = list(csv.reader(io.StringIO(data, newline="")))
        check("csv, by Python", read, [[text or "" for text in row] for row in texts])
    check("csv, semicolons and EBCDIC",
          list(csv.reader(io.StringIO(
              run("csv", "--separator", ";", "--ccsid", "37", "--no-headings", query="select 'a;b', 'c,d'")
              .decode("cp037").replace("\x85", "\n")), delimiter=";")), [["a;b", "c,d"]])
    data = run("tsv").decode()
    check("tsv", [[unescape(text) for text in line.split("\t")] for line in data[:-1].split("\n")], texts)


def check_json(rows):
    expected = [dict(zip(COLUMNS, (v.hex().upper() if isinstance(v, bytes) else v for v in row)))
                for row in rows]
    check("json", json.loads(run("json")), expected)
    check("jsonl", [json.loads(line) for line in run("jsonl").decode()[:-1].split("\n")], expected)
    check("json without rows", json.loads(run("json", query="select 1 where 0")), [])
    check("json, names that are the same", json.loads(run("json", query="select 1 a, 2 a, 3 a_2, 4 a")),
          [{"a": 1, "a_3": 2, "a_2": 3, "a_4": 4}])
    check("json, no numbers", json.loads(run("json", query="select 1e999 a, -1e999 b")),
          [{"a": "inf", "b": "-inf"}])


def check_markup(rows):
    document = run("xml")
    subprocess.run(["xmllint", "--huge", "--noout", "-"], input=document, check=True)
    read = []
    for row in xml.etree.ElementTree.fromstring(document):
        read.append([])
        for value in row:
            text = value.text or ""
            if value.get("null"):
                text = None
            read[-1].append((value.get("column"), bytes.fromhex(text) if value.get("encoding") else text))
    check("xml", read, [[(name, value if isinstance(value, bytes) else marked_up(shown(value)))
                         for name, value in zip(COLUMNS, row)] for row in rows])
    for blobs in ("hex", "placeholder"):
        page = run("html", "--blobs", blobs)
        subprocess.run(["xmllint", "--html", "--huge", "--noout", "-"], input=page, check=True)
        cells = Cells()
        cells.feed(page.decode())
        # The parser drops a line feed that follows nothing; Python's does not.
        check("html", cells.rows, [COLUMNS] + [[marked_up(shown(value, blobs == "hex")) for value in row]
                                               for row in rows])


def check_inserts(rows):
    copy = os.path.join(FOLDER, "copy.sqlite")
    script = os.path.join(FOLDER, "insert.sql")
    with open(script, "wb") as file:
        file.write(run("insert"))
    names = ", ".join('"' + name.replace('"', '""') + '"' for name in COLUMNS)
    subprocess.run(["sqlite3", "-bail", copy], check=True,
                   input=f'create table "odd ""table"" é"({names});\n.read {script}\n'.encode())
    check("insert", sqlite3.connect(copy).execute(QUERY).fetchall(), rows)
    check("insert into a table that is named",
          run("insert", "--table", "a\"b", query="select 1e999 as x, 'it''s' as y").decode(),
          'INSERT INTO "a""b"("x","y") VALUES(9e999,\'it\'\'s\');\n')


def check_people():
    check("markdown", run("markdown", query="select 1 as 'a|b', 'x|y' || char(13, 10) || '<i>' as c").decode(),
          "| a\\|b | c |\n| --- | --- |\n| 1 | x\\|y<br>&lt;i> |\n")
    check("vertical", run("vertical", query="select 1 as a, '-' as long, null as é union all "
                          "select '\"-\"', char(27) || '[1m', x'00'").decode(),
          '   a = 1\nlong = "-"\n   é = -\n\n   a = ""-""\nlong = \\x1B[1m\n   é = <BLOB 1 B>\n')


def check_invalid():
    """Bytes that are no UTF-8: as Python reads them, but for how many U+FFFD they are."""
    def same(text):
        return re.sub(REPLACEMENT + "+", REPLACEMENT, text)
    expected = [same(INVALID.decode(errors="replace")), same((INVALID * 30000).decode(errors="replace"))]
    query = "select v from bad"
    check("json, invalid", [same(row["v"]) for row in json.loads(run("json", query=query))], expected)
    root = xml.etree.ElementTree.fromstring(run("xml", query=query))
    check("xml, invalid", [same(value.text) for value in root.iter("value")], expected)
    run("json", "--strict", query=query, code=3)
    run("xml", "--strict", query="select char(1)", code=3)
    run("json", "--strict", query="select char(1)")


def check_outputs():
    """A file, standard output by its names, a pipe; what is not a file is never replaced."""
    expected = run("csv")
    name = os.path.join(FOLDER, "out")
    for target in (name, "-", "/dev/stdout"):
        with open(name + ".log", "wb") as log:
            log.write(b"before\n")
            log.flush()
            subprocess.run([VNQUERY, "--db", DATABASE, "--sql", QUERY, "--quiet", "--format", "csv", "--export",
                            target], stdout=log, stderr=subprocess.DEVNULL, check=True)
        with open(name if target == name else name + ".log", "rb") as file:
            check(target, file.read(), expected if target == name else b"before\n" + expected)
    pipe = os.path.join(FOLDER, "pipe")
    os.mkfifo(pipe)
    process = subprocess.Popen([VNQUERY, "--db", DATABASE, "--sql", QUERY, "--quiet", "--format", "csv",
                                "--export", pipe], stderr=subprocess.DEVNULL)
    with open(pipe, "rb") as file:
        check("pipe", file.read(), expected)
    check("exit code", process.wait(), 0)


try:
    ROWS = make_database()
    check_lines(ROWS)
    check_json(ROWS)
    check_markup(ROWS)
    check_inserts(ROWS)
    check_people()
    check_invalid()
    check_outputs()
finally:
    shutil.rmtree(FOLDER)
