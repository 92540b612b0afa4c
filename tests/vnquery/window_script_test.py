#!/usr/bin/python3
"""The window as a user without a mouse has it: a long script of keys under an X server, and what a
screen reader gets of it over the accessibility bus.

  window_script_test.py VNQUERY

Starts itself again on a bus and a display of its own. 77: the tools for that are missing.
"""
import os
import shutil
import signal
import sqlite3
import subprocess
import sys
import tempfile
import time

MISSING = 77
failures = []


def start_again(program):
    if any(shutil.which(tool) is None for tool in ("dbus-run-session", "xvfb-run", "xauth", "xdotool")):
        print("dbus-run-session, xvfb-run or xdotool is missing")
        sys.exit(MISSING)
    with tempfile.TemporaryDirectory() as folder:
        environment = dict(os.environ, QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
                           LC_ALL="C.UTF-8", XDG_RUNTIME_DIR=folder, HOME=folder,
                           VNBYTSTR_PROFILE=folder + "/profile.ini")
        environment.pop("AT_SPI_BUS_ADDRESS", None)
        command = ["dbus-run-session", "--", "xvfb-run", "-a", "-s", "-screen 0 1400x1000x24",
                   sys.executable, __file__, "--here", program, folder]
        sys.exit(subprocess.run(command, env=environment, timeout=200).returncode)


def wait_for(what, seconds=20):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        try:
            found = what()
        except Exception:  # the tree changes while it is read
            found = None
        if found:
            return found
        time.sleep(0.1)
    return None


def nodes(root):
    yield root
    for i in range(min(root.childCount, 100)):
        child = root[i]
        if child is not None:
            yield from nodes(child)


def keys(*names):
    for name in names:
        subprocess.run(["xdotool", "key", "--clearmodifiers", name], check=True)
        time.sleep(0.15)


def write(text):
    subprocess.run(["xdotool", "type", "--delay", "15", text], check=True)
    time.sleep(0.2)


class Stop(Exception):
    pass


def focus(title):
    """There is no window manager that would give the window the keys."""
    subprocess.run(["xdotool", "search", "--onlyvisible", "--name", title, "windowfocus", "--sync"], timeout=20)
    time.sleep(0.3)


def expect(what, check):
    """The next steps would make no sense without it."""
    if not wait_for(check):
        raise Stop(what)


class Script:
    def __init__(self, pyatspi, program, folder):
        self.pyatspi = pyatspi
        self.program = program
        self.database = os.path.join(folder, "shop.sqlite")
        with sqlite3.connect(self.database) as shop:
            shop.executescript("create table item(id integer primary key, name text, price real);"
                               "insert into item values (1, 'apple', 0.5), (2, 'pear', 0.75), (3, 'plum', null)")

    def ask(self, sql):
        with sqlite3.connect(self.database) as shop:
            return shop.execute(sql).fetchone()[0]

    def application(self):
        return next((each for each in self.pyatspi.Registry.getDesktop(0)
                     if each is not None and each.name == "vnquery"), None)

    def table(self):
        """The result's list: the table whose first column is that of the numbers."""
        for each in nodes(self.application()):
            if each.getRole() == self.pyatspi.ROLE_TABLE and each.queryTable().nColumns > 1 \
                    and each.queryTable().getColumnDescription(0) == "#":
                return each.queryTable()
        return None

    def cell(self, row, column):
        return self.table().getAccessibleAt(row, column).name

    def window(self, title):
        return wait_for(lambda: next((each for each in nodes(self.application())
                                      if each.getRole() in (self.pyatspi.ROLE_DIALOG, self.pyatspi.ROLE_ALERT)
                                      and title in each.name), None))

    def answer(self):
        """Yes to the question whether to write."""
        self.window("vnquery")
        focus("^vnquery$")
        keys("Return")
        focus("shop.sqlite")

    def check_names(self, root, where):
        """Whatever can have the focus has a name and a role."""
        for each in list(nodes(root)):
            states = each.getState()
            if not states.contains(self.pyatspi.STATE_FOCUSABLE) or not states.contains(self.pyatspi.STATE_SHOWING):
                continue
            if each.getRole() in (self.pyatspi.ROLE_TABLE_CELL, self.pyatspi.ROLE_TREE_ITEM):
                continue  # an empty value is empty
            if not each.name or each.getRole() == self.pyatspi.ROLE_FILLER:
                parent = each.parent
                failures.append(f"{where}: a {each.getRoleName()} named {each.name!r} in a "
                                f"{parent.getRoleName()} named {parent.name!r}")

    def run(self):
        frame = wait_for(lambda: next((each for each in nodes(self.application())
                                       if each.getRole() == self.pyatspi.ROLE_FRAME), None))
        if frame is None:
            return failures.append("the window is not on the bus")
        expect("the title", lambda: "shop.sqlite" in frame.name)
        focus("shop.sqlite")
        keys("ctrl+t")
        write("select * from item order by id")
        keys("Escape", "F5")
        expect("three rows", lambda: self.table().nRows == 3)
        self.check_names(frame, "window")

        keys("F6", "Down", "Right", "F2")
        write("pear tree")
        keys("Return")
        expect("the edited cell", lambda: self.cell(1, 2) == "pear tree")
        keys("ctrl+s")
        self.answer()
        expect("the value is written", lambda: self.ask("select name from item where id = 2") == "pear tree")

        keys("ctrl+Insert", "F2")
        write("quince")
        keys("Return", "ctrl+s")
        self.answer()
        expect("the row is inserted", lambda: self.ask("select count(*) from item where name = 'quince'") == 1)
        keys("ctrl+Delete", "ctrl+z", "ctrl+s")
        expect("nothing is deleted", lambda: self.ask("select count(*) from item") == 4)

        keys("ctrl+f")
        write("plum")
        keys("Return")
        expect("the row found", lambda: list(self.table().getSelectedRows())
               == [[self.cell(row, 2) for row in range(4)].index("plum")])
        keys("Escape", "ctrl+shift+l")
        expect("filter fields", lambda: any(each.name == "Filter: name" for each in nodes(frame)))
        self.check_names(frame, "window with filter")
        keys("shift+F2")
        expect("the value pane", lambda: any(
            each.getState().contains(self.pyatspi.STATE_FOCUSED) and each.queryText().getText(0, -1) == "plum"
            for each in nodes(frame) if each.getRole() == self.pyatspi.ROLE_TEXT))

        for key, title in (("ctrl+e", "Export"), ("ctrl+shift+o", "Connect"), ("ctrl+g", "Variables")):
            keys(key)
            dialog = self.window(title) or self.window("")
            if dialog is None:
                failures.append(f"no dialog after {key}")
            else:
                focus(dialog.name)
                self.check_names(dialog, title)
            keys("Escape")
            focus("shop.sqlite")
        keys("alt+f")
        expect("a menu by key", lambda: any(each.getRole() == self.pyatspi.ROLE_MENU_ITEM
                                            and each.getState().contains(self.pyatspi.STATE_SHOWING)
                                            for each in nodes(self.application())))
        keys("Escape", "Escape")


def main():
    if sys.argv[1] != "--here":
        start_again(sys.argv[1])
    try:
        import pyatspi
    except ImportError:
        print("python3-pyatspi is missing")
        sys.exit(MISSING)
    script = Script(pyatspi, sys.argv[2], sys.argv[3])
    program = subprocess.Popen([sys.argv[2], "--window", "--db", script.database])
    try:
        script.run()
    except Stop as stop:
        failures.append(f"{stop}: not within 20 seconds")
    finally:
        if os.environ.get("VNQUERY_PICTURE"):
            subprocess.run(["import", "-window", "root", os.environ["VNQUERY_PICTURE"]])
        program.terminate()
        try:
            code = program.wait(20)
        except subprocess.TimeoutExpired:
            program.kill()
            code = "no end"
    if code != 128 + signal.SIGTERM:
        failures.append(f"exit code {code}")
    print("\n".join(failures) if failures else "all as expected")
    sys.exit(1 if failures else 0)


main()
