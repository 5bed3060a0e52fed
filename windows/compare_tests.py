#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Says how many tests have run and passed on Windows, and whether they are Linux's less those that docs/windows.md names.

usage: windows/compare_tests.py LINUX_BUILD WINDOWS_BUILD

What has passed on Windows is read from the log of the last run of ctest there, what there is on Linux from the programs
themselves (--gtest_list_tests). The first column of the table below "## Tests" in docs/windows.md names what is left out: a
folder of tests/, a program, or a case ("Suite.Name"). Complaints, with exit status 1: a test that is neither run nor named,
one that is named and run, and a name that is no test's.
"""

import json
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def left_out():
    """What the table's first column names."""
    text = (ROOT / "docs" / "windows.md").read_text(encoding="utf-8")
    section = re.search(r"^## Tests$(.*?)(?=^## |\Z)", text, re.M | re.S)[1]
    cells = [line.split("|")[1] for line in section.splitlines() if line.startswith("| ")]
    return {name.removeprefix("tests/") for cell in cells for name in re.findall(r"`([^`]+)`", cell)}


def programs(build, folder):
    """{ctest's name: command} of one folder of tests/."""
    shown = subprocess.run(["ctest", "--show-only=json-v1"], cwd=build / "tests" / folder, check=True, text=True,
                           stdout=subprocess.PIPE)
    return {test["name"]: test["command"] for test in json.loads(shown.stdout)["tests"] if "command" in test}


def cases(build, program, command):
    """A program's tests as "Suite.Name"; of what is no program of the build's, its own name."""
    if len(command) > 1 or build not in pathlib.Path(command[0]).parents:
        yield program
        return
    listed = subprocess.run([*command, "--gtest_list_tests"], check=True, text=True, stdout=subprocess.PIPE)
    suite = ""
    for line in listed.stdout.splitlines():
        name = line.partition("#")[0].rstrip()
        if name.startswith("  "):
            yield suite + name.strip()
        elif name.endswith("."):
            suite = name


def passed(build):
    """Names of programs and of tests that passed in the last run of ctest."""
    log = (build / "Testing" / "Temporary" / "LastTest.log").read_text(encoding="utf-8", errors="replace")
    return (set(re.findall(r'^Test Passed\.\n"(\S+)" end time', log, re.M)),
            set(re.findall(r"^\[       OK \] (\S+?),? .*\(\d+ ms\)$", log, re.M)))


def main():
    linux, windows = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    named, known, expected = left_out(), set(), set()
    for folder in sorted(path.parent.name for path in (linux / "tests").glob("*/CTestTestfile.cmake")):
        known.add(folder)
        if folder in named:
            continue
        for program, command in programs(linux, folder).items():
            of_it = set(cases(linux, program, command))
            known |= of_it | {program}
            expected |= of_it if program not in named else set()
    run, done = passed(windows)
    complaints = [f"{name}: named in docs/windows.md, and there is no such test" for name in sorted(named - known)]
    complaints += [f"{name}: named in docs/windows.md, and runs all the same" for name in sorted(named & (done | run))]
    complaints += [f"{name}: neither passed on Windows nor named in docs/windows.md"
                   for name in sorted(expected - named - done - run)]
    complaints += [f"{name}: passed on Windows, and Linux has none of that name" for name in sorted(done - known)]
    print("\n".join([*complaints, f"{len(done)} tests have passed on Windows; Linux has {len(expected)} in these "
                      f"programs, of which docs/windows.md names {len(expected & named)}"]))
    sys.exit(bool(complaints))


if __name__ == "__main__":
    main()
