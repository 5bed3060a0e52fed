#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Holds the includes of src/ to the rooms and arrows of src/rooms.txt.

usage: tools/check_includes.py [FOLDER]

FOLDER is src/ unless said. Complaints name both files, and the exit status is 1, when a file includes one of a room that
its own room may not include, when files include each other in a circle (a header and the file that implements it counted
as one), when the rooms themselves make a circle, and when rooms.txt has what is not there: a file outside all rooms, a room
without files, an arrow without includes. So it is when a file outside base/ includes a header that one kind of system has
alone.
"""

import graphlib
import os
import pathlib
import re
import sys

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*"([^"]+)"', re.M)
SYSTEMS_OWN = re.compile(
    r'^[ \t]*#[ \t]*include[ \t]*<((?:arpa|net|netinet|sys)/[^>]+|(?:dirent|dlfcn|fcntl|grp|io|netdb|poll|pthread|pwd|sched|'
    r'semaphore|signal|spawn|termios|unistd|windows|winsock2|ws2tcpip)\.h|csignal)>', re.M)
# What an include's path may be relative to, beside the file's own folder.
ROOTS = [pathlib.Path(), pathlib.Path("platform")]


def read_rooms(file):
    """{room: the rooms it may include}, and complaints. A line is `room: room room ...`."""
    rooms, complaints = {}, []
    for number, line in enumerate(file.read_text().splitlines(), 1):
        name, colon, others = line.partition("#")[0].partition(":")
        if not line.partition("#")[0].strip():
            continue
        if not colon or name.strip() in rooms:
            complaints.append(f"{file}:{number}: expected `room: rooms that it includes`, each room once")
        rooms[name.strip()] = others.split()
    for name, others in rooms.items():
        complaints += [f"{file}: {name} includes {other}, which is no room" for other in others if other not in rooms]
    return rooms, complaints


def room_of(path, rooms):
    """The innermost room that the file is in."""
    return next((str(place) for place in [path, *path.parents] if str(place) in rooms), None)


def circle_in(graph):
    """A circle as [first, ..., first], or None."""
    try:
        graphlib.TopologicalSorter(graph).prepare()
    except graphlib.CycleError as error:
        return error.args[1][::-1]
    return None


def complaints_about(src):
    rooms, complaints = read_rooms(src / "rooms.txt")
    if circle := circle_in(rooms):
        complaints.append(f"{src}/rooms.txt: the rooms make a circle: {' -> '.join(circle)}")
    empty, units = set(rooms), {}
    unused = {(room, other) for room, others in rooms.items() for other in others}
    for file in sorted(file for file in src.rglob("*") if file.suffix in (".h", ".cpp")):
        path = file.relative_to(src)
        room = room_of(path, rooms)
        empty.discard(room)
        if not room:
            complaints.append(f"{file} is in no room of {src}/rooms.txt")
            continue
        text = file.read_text()
        if room != "base":
            complaints += [f"{file} includes {name}, which is for {src}/base alone" for name in SYSTEMS_OWN.findall(text)]
        for match in INCLUDE.finditer(text):
            included = next((folder / match[1] for folder in [path.parent, *ROOTS] if (src / folder / match[1]).is_file()), None)
            if not included:
                complaints.append(f"{file} includes {match[1]}, which is not there")
                continue
            other = room_of(included, rooms)
            unused.discard((room, other))
            if other not in (room, None) and other not in rooms[room]:
                complaints.append(f"{file} includes {src / included}: {room} may not include {other}")
            if path.with_suffix("") != included.with_suffix(""):
                units.setdefault(str(path.with_suffix("")), set()).add(str(included.with_suffix("")))
    if circle := circle_in(units):
        complaints.append(f"{src}: these include each other: {' -> '.join(circle)}")
    complaints += [f"{src}/rooms.txt: no file is in {room}" for room in sorted(empty)]
    return complaints + [f"{src}/rooms.txt: nothing in {room} includes anything of {other}" for room, other in sorted(unused)]


def main(arguments):
    src = pathlib.Path(arguments[0]) if arguments else pathlib.Path(__file__).resolve().parent.parent / "src"
    found = complaints_about(pathlib.Path(os.path.relpath(src)))
    for complaint in found:
        print(complaint)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
