#!/usr/bin/env python3
"""resources_test.py DUMP -- FILE...: compares the strings that DUMP (resource_dump) reads from PE files
with those that pefile reads. Also takes files that have been found on the machine. Skipped (77)
without pefile."""
import glob
import subprocess
import sys

try:
    import pefile
except ImportError:
    print("pefile is not installed")
    sys.exit(77)

FOUND = ["/usr/lib/python3*/**/*.exe", "/usr/share/python-wheels/**/*.exe", "/usr/lib/win32/*",
         "/usr/lib/x86_64-linux-gnu/wine/**/*.dll", "/usr/*-w64-mingw32/**/*.dll"]
STRING_TABLE = 6


def read_with_pefile(name):
    """The strings by id, of each table's first language; None when pefile refuses the file."""
    try:
        pe = pefile.PE(name)
    except pefile.PEFormatError:
        return None
    strings = {}
    for kind in getattr(getattr(pe, "DIRECTORY_ENTRY_RESOURCE", None), "entries", []):
        if kind.id != STRING_TABLE:
            continue
        for table in kind.directory.entries:
            data = table.directory.entries[0].data.struct
            block = pe.get_data(data.OffsetToData, data.Size)
            offset = 0
            for i in range(16):
                length = 2 * int.from_bytes(block[offset:offset + 2], "little")
                text = block[offset + 2:offset + 2 + length].decode("utf-16le")
                if text:
                    strings[(table.id - 1) * 16 + i] = text
                offset += 2 + length
    return strings


def read_with_ours(dump, name):
    run = subprocess.run([*dump, name], capture_output=True)
    if run.returncode != 0:
        return None
    lines = (line.split(b"=", 1) for line in run.stdout.split(b"\0") if line)
    return {int(identifier): text.decode("utf-8") for identifier, text in lines}


def main():
    split = sys.argv.index("--")  # before it: the program, and what runs it where it is for another system
    dump, names = sys.argv[1:split], sys.argv[split + 1:]
    for pattern in FOUND if len(dump) == 1 else ():  # what runs it takes its time for each file
        names += sorted(glob.glob(pattern, recursive=True))[:200]
    count = failures = 0
    for name in names:
        expected = read_with_pefile(name)
        if expected is None:
            continue
        got = read_with_ours(dump, name)
        count += 1
        if got != expected:
            failures += 1
            print(f"{name}: {len(expected)} strings with pefile, "
                  f"{'refused' if got is None else len(got)} with ours")
    print(f"{count} files compared, {failures} differ")
    return 1 if failures or count == 0 else 0


sys.exit(main())
