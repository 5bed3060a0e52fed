#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Asks whether the tests notice faults: puts one after another into the source and runs the tests on each.

usage: tools/mutate.py [--list | --again] SEED [COUNT] [AREA...]

COUNT faults (20 unless said) go into each AREA (all unless said), at places that SEED and the committed tree decide. They
are put into a copy of the tree in build/mutate, never into the tree itself. What became of each is a line of
build/mutate/SEED.txt, with a table at the end; asked again on the same commit, only what has no line yet is run. --again,
after tests have been added, keeps what was noticed by an earlier commit with the same src/ and runs only what survived.
--list shows the places and builds nothing. The exit status is 0 if in each area the tests noticed nine faults of ten.

A fault that does not compile, after which the area's object files are what they were, or that tools/harmless_faults.txt
lists because nobody can tell the program with it from the right one, counts for nothing: the next place is drawn in its
stead.
"""

import concurrent.futures
import fcntl
import hashlib
import io
import json
import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import tarfile
import tempfile
import time

def say(text):
    print(f"mutate: {text}", file=sys.stderr, flush=True)


ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build/mutate"
TREE, BUILD, TEMPORARY = WORK / "tree", WORK / "build", WORK / "tmp"
HARMLESS = "tools/harmless_faults.txt"

# Each area's folders in src/, and in tests/ those of the tests that are asked first.
AREAS = {
    "plugin": (["QorviViewPlugin", "json", "base"], ["protocol", "plugin"]),
    "platform": (["platform"], ["platform"]),
    "server": (["server"], ["server"]),
    "host": (["host"], ["host", "endtoend"]),
}
SHARE = 0.9
PARALLEL = 2
# What one test program may have. A fault can make it ask for more than the machine has.
LIMITS = ["prlimit", f"--as={8 << 30}", f"--fsize={1 << 30}", "--core=0"]

# --- places -------------------------------------------------------------------------------------------------------

NO_CODE = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      | (?P<preprocessor>^[ \t]*\#(?:\\\n|[^\n])*)
      | (?P<raw>R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)")
      | (?P<string>"(?:\\.|[^"\\\n])*")
      | (?P<char>(?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])+')
      | (?P<checked>\bstatic_assert\s*\([^;]*;)
      | (?P<reserved>\breserve\([^;]*;)
      | (?P<annotation>\b(?:CAPABILITY|GUARDED_BY|ACQUIRE|ACQUIRE_SHARED|RELEASE|RELEASE_GENERIC|REQUIRES|REQUIRES_SHARED
          |EXCLUDES)\([^)]*\))""",
    re.X | re.M | re.S)

SWAPS = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "&&": "||", "||": "&&", "+": "-", "-": "+"}
OPERATOR = re.compile(r"(?<= )(==|!=|<=|>=|<|>|&&|\|\||\+|-)(?=[ \n])")
WORDS = {"true": "false", "false": "true", "std::min": "std::max", "std::max": "std::min", "++": "--", "--": "++",
         "+=": "-=", "-=": "+="}
WORD = re.compile(r"\b(?:true|false|std::min|std::max)\b|\+\+|--|\+=|-=")
KEYWORDS = re.compile(r"(return|throw|co_return|delete|goto|using|new|else)\b")


def mask(text):
    """The text with blanks for all that is no code; a string keeps its quotes around letters that are no code either."""
    def masked(match):
        if match["string"] or match["raw"]:
            return '"' + re.sub(r"[^\n]", "_", match[0][1:-1]) + '"'
        return re.sub(r"[^\n]", " ", match[0])
    return NO_CODE.sub(masked, text)


def closing(code, opening, step=1):
    """Where the bracket at that place is closed; backwards with step -1."""
    pairs = {"(": ")", "{": "}", "[": "]"} if step > 0 else {")": "(", "}": "{", "]": "["}
    depth = 0
    for at in range(opening, len(code) if step > 0 else -1, step):
        if code[at] in pairs:
            depth += 1
        elif code[at] in pairs.values():
            depth -= 1
            if depth == 0:
                return at
    raise ValueError("unbalanced brackets")


def call_start(code, end):
    """Where the statement that is a call and ends in a bracket at `end` starts; None where that is no such statement."""
    at = end
    while at > 0:
        if code[at] in ")]":
            at = closing(code, at, -1) - 1
        elif code[at].isalnum() or code[at] in "_.:>-":
            at -= 1
        else:
            break
    start = at + 1
    before = code[:start].rstrip()
    is_statement = before[-1:] in tuple(";{})") or re.search(r"\belse$", before)
    return start if is_statement and code[start].isalpha() and not KEYWORDS.match(code, start) else None


def statement_end(code, start):
    """The end of the statement there, be it a block, an `if` without its own `else`, or a plain one."""
    start += len(code[start:]) - len(code[start:].lstrip())
    if condition := re.compile(r"(if|for|while)\s*(constexpr\s*)?(?=\()").match(code, start):
        return statement_end(code, closing(code, condition.end()) + 1)
    if code[start] == "{":
        return closing(code, start) + 1
    at = start
    while code[at] != ";":
        at = closing(code, at) + 1 if code[at] in "({[" else at + 1
    return at + 1


def faults_in(text):
    """All (start, end, replacement, kind)."""
    code = mask(text)
    for m in re.finditer(r"\b(if|while)\s*(?:constexpr\s*)?(?=\()", code):
        end = closing(code, m.end())
        start = max(code.rfind(";", m.end(), end), m.end()) + 1
        yield start, end, f"!({text[start:end].strip()})", "condition negated"
    for m in OPERATOR.finditer(code):
        yield *m.span(), SWAPS[m[0]], f"{m[0]} becomes {SWAPS[m[0]]}"
    for m in WORD.finditer(code):
        yield *m.span(), WORDS[m[0]], "word or sign exchanged"
    for m in re.finditer(r"(?<![\w.'])(?:0|[1-9]\d*)(?=[uUlL]*(?![\w.']))", code):
        yield *m.span(), str(int(m[0]) + 1), "number one more"
    for m in re.finditer(r" [+-] 1\b(?![.'])", code):
        yield *m.span(), "", "one no longer added or taken"
    for m in re.finditer(r"\)(?=;)", code):
        if (start := call_start(code, m.start())) is not None:
            yield start, m.end() + 1, "{}", "call deleted"
    for m in re.finditer(r"\breturn\s+(?!(?:true|false|nullptr|\d+|[{\"])\s*;?)([^;{}]+);", code):
        yield *m.span(1), f"!({text[slice(*m.span(1))]})", "result negated"
    for m in re.finditer(r"\b(break|continue);", code):
        yield *m.span(), "{}", f"{m[1]} deleted"
    for m in re.finditer(r"(?<=[;{})])\s*([\w.:>\-\[\]*()]+\s[+\-|&]?=\s[^;{}]+;)", code):
        yield *m.span(1), "{}", "assignment deleted"
    for m in re.finditer(r"\belse\b", code):
        yield m.start(), statement_end(code, m.end()), "", "else dropped"
    for m in re.finditer(r'"_+"', code):
        letters = [at for at in range(m.start() + 1, m.end() - 1) if text[at].isalpha() and text[at - 1] not in "\\%"]
        if letters:
            at = letters[len(letters) // 2]
            yield at, at + 1, "a" if text[at] in "zZ" else chr(ord(text[at]) + 1), "letter of a text"


def drawn_places(seed, area):
    """The area's faults in the order in which SEED draws them: first a kind, then a place, so that none crowds others out."""
    kinds = {}
    for folder in AREAS[area][0]:
        for file in sorted((TREE / "src" / folder).rglob("*")):
            if file.suffix in (".h", ".cpp"):
                name, text = str(file.relative_to(TREE)), file.read_text()
                for start, end, new, kind in faults_in(text):
                    kinds.setdefault(kind, []).append((name, start, end, new, kind))
    dice = random.Random(f"{seed} {area}")
    for kind in sorted(kinds):
        dice.shuffle(kinds[kind])
    while kinds:
        kind = dice.choice(sorted(kinds))
        yield kinds[kind].pop()
        if not kinds[kind]:
            del kinds[kind]


def faulty(text, place):
    """The text with the fault in it; lines keep their numbers."""
    _, start, end, new, _ = place
    return text[:start] + new + "\n" * (text.count("\n", start, end) - new.count("\n")) + text[end:]


def described(place):
    """(FILE:LINE:COLUMN, kind, the line before, the line after)."""
    name, start, end, _, kind = place
    text = (TREE / name).read_text()
    line, line_start = text.count("\n", 0, start), text.rfind("\n", 0, start) + 1
    after = faulty(text, place).split("\n")[line].strip()
    return f"{name}:{line + 1}:{start - line_start + 1}", kind, text.split("\n")[line].strip(), after


def harmless_faults():
    """The (file, line before, line after) of HARMLESS. Each line there has these and a reason, with tabs in between."""
    faults = set()
    for n, line in enumerate((TREE / HARMLESS).read_text().splitlines(), 1):
        if line and not line.startswith("#"):
            fields = line.split("\t")
            if len(fields) != 4 or not all(fields):
                sys.exit(f"mutate: {HARMLESS}:{n}: not file, line before, line after and reason")
            name, before, _, _ = fields
            file = TREE / name
            if not file.is_file() or before not in (line.strip() for line in file.read_text().splitlines()):
                sys.exit(f"mutate: {HARMLESS}:{n}: {name} has no such line any more")
            faults.add(tuple(fields[:3]))
    return faults


def sources_of(commit):
    """What the commit's src/ is; None of a commit that is not here."""
    asked = subprocess.run(["git", "rev-parse", "--verify", "--quiet", f"{commit}:src"], cwd=ROOT, text=True,
                           stdout=subprocess.PIPE)
    return asked.stdout.strip() or None


# --- building and testing -----------------------------------------------------------------------------------------

def write_tree():
    """The committed tree in TREE. Files that are right already keep their times, so that little is compiled again."""
    archive = subprocess.run(["git", "archive", "HEAD"], cwd=ROOT, check=True, stdout=subprocess.PIPE).stdout
    with tarfile.open(fileobj=io.BytesIO(archive)) as tar:
        files = {member.name: (tar.extractfile(member).read(), member.mode) for member in tar if member.isfile()}
        for name, (content, mode) in files.items():
            file = TREE / name
            if not file.is_file() or file.read_bytes() != content:
                file.parent.mkdir(parents=True, exist_ok=True)
                file.write_bytes(content)
            file.chmod(mode)  # tests run scripts of the tree
    for file in [file for file in TREE.rglob("*") if file.is_file()]:
        if str(file.relative_to(TREE)) not in files:
            file.unlink()


def build(*targets):
    environment = dict(os.environ, CCACHE_BASEDIR=str(TREE), CCACHE_NOHASHDIR="1")
    with open(WORK / "build.log", "w") as log:
        return subprocess.run(["ninja", "-C", BUILD, f"-j{PARALLEL}", *targets], env=environment, stdout=log,
                              stderr=log).returncode == 0


def configure():
    # Little optimisation compiles fast, and still shows most faults that are none as what they are: the same object file.
    # Bounds of containers are checked, as they are in the sanitized builds.
    subprocess.run(["cmake", "-S", TREE, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
                    "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG -D_GLIBCXX_ASSERTIONS", "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON"],
                   check=True, stdout=subprocess.DEVNULL)
    say("building the tree as it is")
    if not build():
        sys.exit("mutate: the tree does not build: see build/mutate/build.log")


def objects(area):
    """What the area's object files are."""
    digest = hashlib.sha256()
    for folder in AREAS[area][0]:
        for file in sorted((BUILD / "src" / folder).rglob("*.o")):
            digest.update(file.read_bytes())
    return digest.digest()


def all_tests():
    """{name: (command, its folder in tests/)}"""
    listed = subprocess.run(["ctest", "--show-only=json-v1"], cwd=BUILD, check=True, stdout=subprocess.PIPE).stdout
    tests = {}
    for test in json.loads(listed)["tests"]:
        folder = next(p["value"] for p in test["properties"] if p["name"] == "WORKING_DIRECTORY")
        tests[test["name"]] = test["command"], pathlib.Path(folder).relative_to(BUILD).parts[1]
    return tests


def complaint(command, seconds, only="*"):
    """None if the program ends well; otherwise the first test that fails, or what else it says of it."""
    TEMPORARY.mkdir(exist_ok=True)
    environment = dict(os.environ, TMPDIR=str(TEMPORARY), GTEST_FAIL_FAST="1", GTEST_FILTER=only)
    with tempfile.TemporaryFile("w+", errors="replace") as output:
        process = subprocess.Popen(LIMITS + command, cwd=TEMPORARY, stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                                   env=environment, start_new_session=True)
        try:
            status = process.wait(seconds)
        except subprocess.TimeoutExpired:
            return "hangs"
        finally:
            try:  # what it started, too
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            process.wait()
        if status == 0:
            return None
        output.seek(0)
        failed = re.search(r"^\[  FAILED  \] ([\w./]+)", output.read(1 << 22), re.M)
        return failed[1] if failed else f"ends with {status}"


def lasting_complaint(command, seconds):
    """The same of a program that complains twice: on a busy machine a test may fail without a fault."""
    said = complaint(command, seconds)
    if said in (None, "hangs"):
        return said
    return complaint(command, seconds, said if "." in said else "*") or complaint(command, seconds)


def first_complaint(tests, costs, names):
    """Runs the quick ones first, and no further one after a complaint."""
    waiting, found = sorted(names, key=costs.get), []

    def work():
        while waiting and not found:
            name = waiting.pop(0)
            if said := lasting_complaint(tests[name][0], 20 + 5 * costs[name]):
                found.append(f"{name}: {said}")
    with concurrent.futures.ThreadPoolExecutor(PARALLEL) as pool:
        for done in [pool.submit(work) for _ in range(PARALLEL)]:
            done.result()
    shutil.rmtree(TEMPORARY, ignore_errors=True)
    return found[0] if found else None


def measured(tests, commit):
    """How long each test takes without a fault. None may fail then. Measured once for a commit."""
    file = WORK / "costs.json"
    costs = json.loads(file.read_text()) if file.exists() else {}
    if costs.pop("commit", "") == commit and costs.keys() == tests.keys():
        return costs
    say("running the tests on the tree as it is")

    def cost(name):
        start = time.monotonic()
        if said := lasting_complaint(tests[name][0], 600):
            sys.exit(f"mutate: without any fault {name}: {said}")
        return time.monotonic() - start
    with concurrent.futures.ThreadPoolExecutor(PARALLEL) as pool:
        costs = dict(zip(tests, pool.map(cost, tests)))
    file.write_text(json.dumps({"commit": commit, **costs}))
    return costs


def own_tests(area, tests):
    return [name for name, (_, folder) in tests.items() if folder in AREAS[area][1]]


def targets_of(area, tests):
    """What is built for the area's own tests; some are scripts, or another's program once more."""
    programs = [pathlib.Path(tests[name][0][0]) for name in own_tests(area, tests)]
    started = {"host": {"viewctl"}, "server": {"viewserver"}}.get(area, set())
    return sorted({program.name for program in programs if BUILD in program.parents} | started)


def outcome(place, area, unchanged, tests, costs):
    """(caught, survived, same or no-build; by what)"""
    file = TREE / place[0]
    text = file.read_text()
    own = own_tests(area, tests)
    try:
        file.write_text(faulty(text, place))
        if not build(*targets_of(area, tests)):
            return "no-build", "-"
        if objects(area) == unchanged:
            return "same", "-"
        by = first_complaint(tests, costs, own)
        if not by:
            if not build():
                return "no-build", "-"
            by = first_complaint(tests, costs, tests.keys() - set(own))
        return ("caught", by) if by else ("survived", "-")
    finally:
        file.write_text(text)


# --- the record ---------------------------------------------------------------------------------------------------

def table(records):
    lines = [f"{'area':10}{'put in':>8}{'caught':>8}{'share':>8}"]
    good = True
    for area in dict.fromkeys(record[1] for record in records):
        results = [record[0] for record in records if record[1] == area and record[0] in ("caught", "survived")]
        caught = results.count("caught")
        good = good and caught >= SHARE * len(results)
        lines.append(f"{area:10}{len(results):8}{caught:8}{caught / max(1, len(results)):8.0%}")
    for _, area, where, kind, before, after, _ in (record for record in records if record[0] == "survived"):
        lines += ["", f"{where}  ({area}) {kind}", f"  - {before}", f"  + {after}"]
    return lines, good


def main(arguments):
    only_list, again = ("--list" in arguments), ("--again" in arguments)
    arguments = [argument for argument in arguments if argument not in ("--list", "--again")]
    count = int(arguments.pop(1)) if len(arguments) > 1 and arguments[1].isdigit() else 20
    seed, areas = (arguments or [""])[0], arguments[1:] or list(AREAS)
    if not re.fullmatch(r"[\w-]+", seed) or not set(areas) <= AREAS.keys():
        sys.exit(__doc__)

    WORK.mkdir(parents=True, exist_ok=True)
    lock = open(WORK / "lock", "w")
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        sys.exit("mutate: another one is at work in build/mutate")
    write_tree()
    harmless = harmless_faults()
    if only_list:
        for area in areas:
            for place, _ in zip(drawn_places(seed, area), range(count)):
                print(area, *described(place), sep="\t")
        return 0

    commit = subprocess.run(["git", "rev-parse", "HEAD"], cwd=ROOT, check=True, text=True, stdout=subprocess.PIPE).stdout.strip()
    results = WORK / f"{seed}.txt"
    lines = results.read_text().splitlines() if results.exists() else []
    known = [line.split("\t") for line in lines if line.count("\t") == 6]
    if again and lines and sources_of(lines[0]) == sources_of(commit):
        known = [record for record in known if record[0] != "survived"]
    elif lines[:1] != [commit]:
        known = []
    known = {tuple(record[1:4]): record for record in known}

    configure()
    tests = all_tests()
    costs = measured(tests, commit)
    unchanged = {area: objects(area) for area in areas}
    for area in areas:
        if not build(*targets_of(area, tests)):
            sys.exit(f"mutate: the tests of {area} do not build by themselves: see build/mutate/build.log")
    records = []
    with open(results, "w") as out:
        print(commit, file=out)
        for record in known.values():
            print(*record, sep="\t", file=out, flush=True)
        for area in areas:
            counted = 0
            for place in drawn_places(seed, area):
                if counted == count:
                    break
                where, kind, before, after = described(place)
                if (place[0], before, after) in harmless:
                    continue
                record = known.get((area, where, kind))
                if not record:
                    start = time.monotonic()
                    result, by = outcome(place, area, unchanged[area], tests, costs)
                    record = [result, area, where, kind, before, after, by]
                    print(*record, sep="\t", file=out, flush=True)
                    say(f"{result} {where} {kind} {by} ({time.monotonic() - start:.0f} s)")
                records.append(record)
                counted += record[0] in ("caught", "survived")
        lines, good = table(records)
        print(*lines, sep="\n", file=out)
    print(*lines, sep="\n")
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
