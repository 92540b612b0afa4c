#!/usr/bin/env python3
"""The files for the desktop: the man page has every option of --help, the desktop file every language
and an icon, and the AppStream data is valid where there is a program that can tell."""
import os
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

program, folder = sys.argv[1:3]
failures = []


def read(name):
    with open(os.path.join(folder, name), encoding="utf-8") as file:
        return file.read()


def expect(condition, message):
    if not condition:
        failures.append(message)


environment = dict(os.environ, VNBYTSTR_PROFILE="/dev/null")
help_text = subprocess.run([program, "--help"], env=environment, capture_output=True, text=True, check=True).stdout
options = set(re.findall(r"(?:^  |,)(--?[a-z][a-z-]*)", help_text, re.MULTILINE))
expect(len(options) > 25, f"--help lists only {sorted(options)}")
page = read("vnquery.1").replace("\\-", "-")
described = set(re.findall(r"^\.B[RI]? (--?[a-z][a-z-]*)", page, re.MULTILINE))
described |= set(re.findall(r'" (--?[a-z][a-z-]*)', page))
for option in sorted(options):
    expect(option in described, f"{option} is not in the man page")
for option in sorted(described):
    expect(option in options, f"{option} of the man page is not in --help")

desktop = dict(line.split("=", 1) for line in read("vnquery.desktop").splitlines() if "=" in line)
for key in ("GenericName", "Comment"):
    for language in ("", "[ar]", "[de]", "[es]", "[fr]", "[he]", "[it]", "[ja]", "[ko]", "[pt_BR]", "[zh_TW]"):
        expect(desktop.get(key + language), f"no {key}{language}")
expect(os.path.exists(os.path.join(folder, desktop["Icon"] + ".svg")), "no icon")
expect(ElementTree.parse(os.path.join(folder, "vnquery.svg")).getroot().tag.endswith("svg"), "no SVG")
metainfo = os.path.join(folder, "org.vnbytstr.vnquery.metainfo.xml")
expect(ElementTree.parse(metainfo).findtext("launchable") == "vnquery.desktop", "another desktop file")
for tool, arguments in (("appstreamcli", ["validate", "--no-net", metainfo]),
                        ("desktop-file-validate", [os.path.join(folder, "vnquery.desktop")])):
    if shutil.which(tool):
        run = subprocess.run([tool, *arguments], capture_output=True, text=True, check=False)
        expect(run.returncode == 0, run.stdout + run.stderr)

print("\n".join(failures))
sys.exit(1 if failures else 0)
