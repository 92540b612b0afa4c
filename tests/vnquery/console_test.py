#!/usr/bin/env python3
"""console_test.py VNQUERY: where SQL comes from, pipes that are closed, and the interactive mode on a
pseudo-terminal."""
import os
import pty
import select
import shutil
import signal
import sqlite3
import subprocess
import sys
import tempfile
import termios
import time

VNQUERY = sys.argv[1]
FOLDER = tempfile.mkdtemp()
DATABASE = os.path.join(FOLDER, "test.sqlite")
PROFILE = os.path.join(FOLDER, "profile.ini")
os.environ.update(VNBYTSTR_PROFILE=PROFILE, TMPDIR=FOLDER, TERM="xterm", HOME=FOLDER)
ENDLESS = "with recursive n(i) as (select 1 union all select i + 1 from n) select "


def check(what, condition, *shown):
    if not condition:
        print("FAILED:", what, *shown)
        sys.exit(1)


def run(*arguments, text=b""):
    done = subprocess.run([VNQUERY, "--db", DATABASE, *arguments], input=text, capture_output=True)
    return done.returncode, done.stdout, done.stderr


def check_input():
    for text in (b"select 1 as a; select ';' as b -- ;", b"select 1 as a;\nselect ';' as b;\n"):
        result = (0, b"a\n1\nb\n;\n", b"")
        check("standard input", run("--format", "csv", text=text) == result)
        check("- as a file", run("--format", "csv", "--file", "-", text=text) == result)
        with open(os.path.join(FOLDER, "script.sql"), "wb") as file:
            file.write(text)
        check("a file", run("--format", "csv", "--file", file.name) == result)
        check("--sql", run("--format", "csv", "--sql", text.decode()) == result)
    code, out, error = run("--format", "csv", text=b"select 1 as a; delete from t; select 2 as b")
    check("a change in between", (code, out) == (1, b"a\n1\n") and b"statement 2" in error, code, out, error)
    code, out, error = run(text=b" \n")
    check("nothing", code == 2 and b"--sql" in error, code, error)
    check("one text with semicolons only", run(text=b";;")[0] == 1)


def check_closed_pipes():
    for form in ("table", "csv", "json", "vertical", "html"):
        process = subprocess.Popen([VNQUERY, "--db", DATABASE, "--format", form, "--sql", ENDLESS + "i from n"],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        check("first bytes", len(process.stdout.read(100)) == 100)
        process.stdout.close()
        check(f"a closed pipe is silent, {form}", process.stderr.read() == b"")
        check("exit code", process.wait() == 128 + signal.SIGPIPE, process.returncode)
    pipe = os.path.join(FOLDER, "pipe")
    os.mkfifo(pipe)
    process = subprocess.Popen([VNQUERY, "--db", DATABASE, "--quiet", "--export", pipe, "--sql",
                                ENDLESS + "i from n"], stderr=subprocess.PIPE)
    with open(pipe, "rb") as file:
        file.read(100)
    check("a pipe with a name", process.stderr.read() == b"" and process.wait() == 128 + signal.SIGPIPE)
    # What is written elsewhere is complete.
    name = os.path.join(FOLDER, "export")
    process = subprocess.Popen([VNQUERY, "--db", DATABASE, "--export", name, "--sql",
                                ENDLESS + "i from n limit 300000"], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    process.stdout.read(100)
    process.stdout.close()
    check("the export goes on", b"300,000 rows" in process.stderr.read() and process.wait() == 0)
    with open(name, "rb") as file:
        check("the export is whole", file.read().endswith(b"\n300000\n"))


class Terminal:
    def __init__(self):
        self.seen = b""
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.execv(VNQUERY, [VNQUERY, "--db", DATABASE])
        self.expect(b"vnquery> ")

    def expect(self, text):
        """What has come up to and including the text."""
        end = time.monotonic() + 60
        while text not in self.seen:
            check("the terminal waits for", select.select([self.terminal], [], [], end - time.monotonic())[0],
                  text, "after", self.seen)
            try:
                piece = os.read(self.terminal, 4096)
            except OSError:
                piece = b""
            check("the terminal is open, for", piece, text, "after", self.seen)
            self.seen += piece
        before, _, self.seen = self.seen.partition(text)
        return before + text

    def type(self, keys, answer=None, while_it_works=False):
        """Types once the program reads a line, as a user who has waited for it."""
        end = time.monotonic() + 60
        while not while_it_works and termios.tcgetattr(self.terminal)[3] & termios.ICANON:
            check("a line is read", time.monotonic() < end, self.seen)
            time.sleep(0.01)
        os.write(self.terminal, keys)
        return self.expect(answer) if answer else b""

    def end(self):
        while True:
            try:
                if not os.read(self.terminal, 4096):
                    break
            except OSError:
                break
        os.close(self.terminal)
        return os.waitstatus_to_exitcode(os.waitpid(self.process, 0)[1])


def check_terminal():
    terminal = Terminal()
    terminal.type("select 'é' as ä,\n".encode(), b"...> ")
    terminal.type(b"17 * 3; select 4 * 100;\n", b"400\r\n(1 row)")
    check(".tables", b"view" in terminal.type(b".tables\n", b"(2 rows)"))
    terminal.type(b".format nothing\n", b"jsonl")
    terminal.type(b".format csv\n", b"csv")
    check("csv", b"rows" not in terminal.type(b"select 6 * 7 as x, 1;\n", b"42,1\r\n"))
    terminal.type(b".nonsense\n", b"no command .nonsense")
    terminal.type(b"drop table t;\n", b"changes nothing")
    terminal.type(b"select *\n", b"...> ")
    terminal.type(b"from nowh\x03", b"vnquery> ")  # Ctrl-C drops the statement
    terminal.type(b"select 3 * 37;\n", b"111\r\n")
    terminal.type((ENDLESS + "max(i) from n;\n").encode(), b"from n;")
    time.sleep(0.2)
    terminal.type(b"\x03", b"stopped", while_it_works=True)  # and the query
    terminal.type(b"\x1b[A\x1b[A\n", b"111\r\n")  # the line before the last one
    terminal.type(b"\x04")
    check("the exit code", terminal.end() == 0)
    check("the history is the user's own", os.stat(PROFILE).st_mode & 0o777 == 0o600)

    terminal = Terminal()  # which knows the last line of the session before
    terminal.type(b"\x1b[A\n", b"111\r\n")
    terminal.type(b".quit\n", b".quit")
    check("the exit code", terminal.end() == 0)
    for number in (signal.SIGTERM, signal.SIGHUP):
        terminal = Terminal()
        os.kill(terminal.process, number)
        check("a signal ends it", terminal.end() == 128 + number)
    terminal = Terminal()  # Ctrl-D while a query works is for after it
    terminal.type(b"with recursive n(i) as (select 1 union all select i + 1 from n limit 3000000) "
                  b"select max(i) from n;\n", b"max(i) from n;")
    time.sleep(0.1)
    terminal.type(b"\x04", while_it_works=True)
    check("the exit code", terminal.end() == 0)


try:
    CONNECTION = sqlite3.connect(DATABASE)
    CONNECTION.executescript("create table t(a); create view v as select 1; insert into t values (1)")
    CONNECTION.close()
    check_input()
    check_closed_pipes()
    check_terminal()
finally:
    shutil.rmtree(FOLDER)
