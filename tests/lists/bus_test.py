#!/usr/bin/python3
"""What a screen reader gets from a list over the accessibility bus.

  bus_test.py PROGRAM    PROGRAM shows the lists (BusProgram.cpp)

Starts itself again on a bus and a display of its own. 77: the tools for that are missing.
"""
import os
import shutil
import subprocess
import sys
import time

MISSING = 77


def start_again(program):
    if any(shutil.which(tool) is None for tool in ("dbus-run-session", "xvfb-run", "xauth")):
        print("dbus-run-session or xvfb-run is missing")
        sys.exit(MISSING)
    environment = dict(os.environ, QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", LC_ALL="C.UTF-8")
    environment.pop("AT_SPI_BUS_ADDRESS", None)
    command = ["dbus-run-session", "--", "xvfb-run", "-a", sys.executable, __file__, "--here", program]
    sys.exit(subprocess.run(command, env=environment, timeout=120).returncode)


def wait_for(what, seconds=30):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        found = what()
        if found:
            return found
        time.sleep(0.1)
    return None


def nodes(root):
    yield root
    for i in range(min(root.childCount, 200)):
        child = root[i]
        if child is not None:
            yield from nodes(child)


failures = []


def expect(what, got, wanted):
    if got != wanted:
        failures.append(f"{what}: {got!r}, not {wanted!r}")


def headers(table, row, column):
    """The names of a cell's headers, as screen readers ask for them where cells have no interface for that."""
    found = table.getRowHeader(row), table.getColumnHeader(column)
    return tuple(header and header.name for header in found)


def read(pyatspi, name):
    def application():
        desktop = pyatspi.Registry.getDesktop(0)
        return next((each for each in desktop if each is not None and each.name == name), None)

    program = wait_for(application)
    if program is None:
        return failures.append("the program is not on the bus")
    tables = wait_for(lambda: [each for each in nodes(program) if each.getRole() == pyatspi.ROLE_TABLE][:2])
    expect("tables", len(tables), 2)
    cities = next(each for each in tables if each.queryTable().nColumns == 3)
    table = cities.queryTable()
    expect("rows", table.nRows, 2)
    expect("column headers", [table.getColumnDescription(i) for i in range(3)], ["Name", "City", "Number"])
    expect("row headers", [table.getRowDescription(i) for i in range(2)], ["Bäcker", "Adler"])
    cell = table.getAccessibleAt(1, 1)
    expect("role", cell.getRole(), pyatspi.ROLE_TABLE_CELL)
    expect("cell", cell.name, "Graz")
    expect("headers of the cell", headers(table, 1, 1), ("Adler", "City"))
    expect("found", cell.description, "contains the text searched for")
    other = table.getAccessibleAt(0, 0)
    expect("the first cell", (other.name, other.description), ("Bäcker", ""))
    expect("selected rows", list(table.getSelectedRows()), [1])
    states = cell.getState()
    expect("selected", states.contains(pyatspi.STATE_SELECTED), True)
    header = cities[2]
    expect("header", (header.getRole(), header.name, header.description),
           (pyatspi.ROLE_TABLE_COLUMN_HEADER, "Number", "sorted ascending"))
    fields = [each.name for each in nodes(program)
              if each.getRole() in (pyatspi.ROLE_TEXT, pyatspi.ROLE_ENTRY) and each.name]
    expect("filter fields", fields, ["Filter: Name", "Filter: City", "Filter: Number"])
    # A million rows are not walked through.
    squares = next(each for each in tables if each.queryTable().nColumns == 2).queryTable()
    last = squares.getAccessibleAt(999999, 1)
    expect("rows of a source", squares.nRows, 1000000)
    expect("the last cell", (last.name, headers(squares, 999999, 1)),
           ("999998000001", ("999999", "Square")))


def main():
    if sys.argv[1] != "--here":
        start_again(sys.argv[1])
    try:
        import pyatspi
    except ImportError:
        print("python3-pyatspi is missing")
        sys.exit(MISSING)
    program = subprocess.Popen([sys.argv[2]])
    try:
        read(pyatspi, os.path.basename(sys.argv[2]))
    finally:
        program.terminate()
        program.wait()
    print("\n".join(failures) if failures else "all as expected")
    sys.exit(1 if failures else 0)


main()
