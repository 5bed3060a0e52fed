#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs clang-tidy over the sources of one build folder, those of one folder together: tools/tidy.py BUILD FILE...

Four fifths of clang-tidy's time go into the headers that a file includes, and it walks through them again for each
file. So files of one folder are looked at as one translation unit, with the flags of all of them. What clang itself
warns of counts as well, lock annotations above all.
"""
import collections
import concurrent.futures
import itertools
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys

LARGEST = 20  # files in a unit: beyond it one of two processors waits for the other
ALONE = re.compile(r"^(?:extern \"C\" )?int (?:main|LLVMFuzzerTestOneInput)\(", re.MULTILINE)
USING = re.compile(r"^\s*using (?:[\w:]+::)?(\w+);|^\s*namespace (\w+) = ", re.MULTILINE)
CHECKS = "clang-diagnostic-*,-bugprone-suspicious-include"


def flags_of(entry):
    """The command's flags: without compiler, output and source."""
    words = shlex.split(entry["command"])
    start = next(i for i, word in enumerate(words) if word.startswith("-"))
    output = words.index("-o")
    return words[start:output] + [w for w in words[output + 2:] if w not in ("-c", entry["file"])]


def groups(root, entries, files):
    """Lists of files that are looked at together."""
    found = collections.defaultdict(list)
    for file in files:
        standard = next((flag for flag in flags_of(entries[file]) if flag.startswith("-std=")), "")
        alone = ALONE.search(pathlib.Path(file).read_text(encoding="utf-8"))
        found[(pathlib.Path(file).relative_to(root).parts[:2], standard, file if alone else "")].append(file)
    for group in found.values():
        count = -(-len(group) // LARGEST)
        yield from (group[i::count] for i in range(count))


def pairs(flags):
    """Flags with what belongs to them in one text, so that those that stand twice can be told."""
    words = iter(flags)
    for word in words:
        yield shlex.join((word, next(words)) if word in ("-isystem", "-include") else (word,))


def unused_names(file):
    """Names that a file makes short and does not use. In a unit, clang-tidy takes any file's use for all of them."""
    text = pathlib.Path(file).read_text(encoding="utf-8")
    for found in USING.finditer(text):
        name = found[1] or found[2]
        if len(re.findall(rf"\b{name}\b", text)) == 1:
            yield f"{file}:{text.count(chr(10), 0, found.start()) + 1}: `{name}` is not used\n"


class Tidy:
    def __init__(self, root, build, entries):
        self.root, self.folder, self.entries = root, build / "tidy", entries
        self.numbers = itertools.count()
        shutil.rmtree(self.folder, ignore_errors=True)

    def unit(self, files):
        """A folder with a source of these files, its command, and what .clang-tidy says of where they are."""
        top = pathlib.Path(files[0]).relative_to(self.root).parts[0]
        folder = self.folder / f"{top}{next(self.numbers)}"
        folder.mkdir(parents=True)
        own = self.root / top / ".clang-tidy"
        if own.exists():
            shutil.copy(own, folder)
        source = folder / "unit.cpp"
        source.write_text("".join(f'#include "{file}"\n' for file in files), encoding="utf-8")
        flags = dict.fromkeys(flag for file in files for flag in pairs(flags_of(self.entries[file])))
        command = f"clang++ {' '.join(flags)} -c {shlex.quote(str(source))}"
        entry = {"directory": self.entries[files[0]]["directory"], "file": str(source), "command": command}
        (folder / "compile_commands.json").write_text(json.dumps([entry]), encoding="utf-8")
        return source

    def complaints(self, files):
        source = self.unit(files)
        done = subprocess.run(["clang-tidy", "--quiet", f"--checks={CHECKS}", "-p", source.parent, source],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)
        if done.returncode == 0:
            return ""
        # What two files both call their own cannot stand in one unit.
        if "[clang-diagnostic-error]" in done.stdout and len(files) > 1:
            middle = len(files) // 2
            return self.complaints(files[:middle]) + self.complaints(files[middle:])
        return done.stdout + done.stderr or f"clang-tidy ended with {done.returncode} and without a word: {files}\n"


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    root = pathlib.Path(__file__).resolve().parent.parent
    files = [str(pathlib.Path(file).resolve()) for file in sys.argv[2:]]
    database = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    entries = {entry["file"]: entry for entry in database}
    missing = [file for file in files if file not in entries]
    if missing:
        sys.exit("not built, so not looked at: " + " ".join(missing))

    tidy = Tidy(root, build, entries)
    failed = False
    for complaint in (complaint for file in files for complaint in unused_names(file)):
        failed = True
        print(complaint, end="")
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for complaints in pool.map(tidy.complaints, sorted(groups(root, entries, files), key=len, reverse=True)):
            failed = failed or bool(complaints)
            print(complaints, end="", flush=True)
    sys.exit(failed)


if __name__ == "__main__":
    main()
