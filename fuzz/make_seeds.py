#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes the first inputs and the dictionary of the fuzz targets: make_seeds.py FOLDER.

FOLDER/<target>/ gets inputs taken from the sample site and the documented examples, FOLDER/keys.dict the names of all
fields that the sources read. What a target's input means stands at the head of its source file.
"""

import json
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
SITE = json.loads((ROOT / "data/site.json").read_text(encoding="utf-8"))
CUT = b"\xff"


def compact(value):
    return json.dumps(value, ensure_ascii=False, separators=(",", ":")).encode()


def envelope(data, error=0):
    return compact({"ResponseStatus": {"ErrorModule": 0, "ErrorCode": error, "CascadingErrorInfo": "", "Data": data}})


def listing(list_name, element_name, elements):
    return envelope({list_name: {element_name: elements}})


VIEWS, GROUPS = ("ViewList", "View"), ("ViewGroupList", "ViewGroup")
# The sample views, cut down to their first page and two windows on it.
SMALL_VIEWS = []
for view in SITE["Views"]:
    pages = [dict(page, PlanViewItem=page.get("PlanViewItem", [])[:2]) for page in view.get("PlanPages", [])[:1]]
    SMALL_VIEWS.append(dict(view, PlanPages=pages))


def examples():
    """(function, request) of the documented examples."""
    text = (ROOT / "docs/exchanges.md").read_text(encoding="utf-8")
    for match in re.finditer(r"Request to `(\w+)`\n\n```json\n(.*?)```", text, re.S):
        yield match.group(1), compact(json.loads(match.group(2)))


def exchanges():
    source = (ROOT / "fuzz/ExchangesFuzz.cpp").read_text()
    order = re.findall(r"\w+", re.search(r"exchanges\[\] = \{(.*?)\}", source, re.S).group(1))
    replies = [b"", envelope({"View": {"ID": 9}, "ViewGroup": {"ID": 9}}), envelope({}, 3), b"{"]
    for function, request in examples():
        if function in order:
            for reply in replies:
                yield bytes([order.index(function)]) + request + CUT + reply
    failed = {"ErrorList": {"Error": [{"UserID": 3, "UserName": "x", "ErrorModule": 100, "ErrorCode": 5}]}}
    yield bytes([order.index("ViewShareUsers")]) + compact({"view_id": "5", "share_users": "3"}) + CUT + envelope(failed)


def documents():
    for view in SMALL_VIEWS:
        views = listing(*VIEWS, [view])
        group = dict(SITE["ViewGroups"][0], ID=view["ViewGroupID"])
        changes = [b"\1" + listing(*VIEWS, [dict(view, Method=m)]) for m in (0, 1, 2)]
        changes += [b"\0" + listing(*GROUPS, [dict(group, Method=m)]) for m in (1, 2, 0)]
        yield CUT.join([listing(*GROUPS, [group]), views] + changes)
    yield CUT.join([envelope({}, 3), b"", b"\0{", b"\1null"])


def extend_info():
    yield compact({"playParams": {"DigitZoom": {"Xtop": "0.1", "Ytop": "0.2", "Xbottom": "0.3", "Ybottom": "1e9"}}})
    fisheye = {"MountType": 1, "ExpandMode": 2, "FishParentNo": 3,
               "FiehEyeInfo": [{"No": 1, "PosX": "0.5", "PosY": "-0.5", "Zoom": "1.0"}]}
    yield compact({"playParams": {"FishEye": fisheye}})
    yield compact({"Zoom": 14, "coordinate": [116.397456, 39.90923]})
    yield b'{"Zoom":1e400}'


def path_document():
    text = compact(SMALL_VIEWS[0])
    for operations in ([b"\2/PlanPages[1]/PlanViewItem[2]/WindowNo", b"\0/ID", b"\2/ID"],
                       [b"\1/a/b[1]/c", b"\1/a/b[2]/c", b"\2/a/b[2]/c", b"\0/a/b[1]", b"\2/a/b[1]/c"]):
        yield CUT.join([text] + operations)
        yield CUT.join([b"{}"] + operations)
    yield CUT.join([b'{"v":0.' + b"0" * 350 + b'1e-30,"w":1e308,"x":"12"}', b"\2/v", b"\2/w", b"\2/x"])


def change_stream():
    data = listing(*VIEWS, [{"ID": 5, "Name": "five", "Method": 1}])
    for end in (b"\n", b"\r", b"\r\n"):
        lines = [b": hello", b"id: 7", b"event: Views", b"data: " + data, b"", b"id:8", b"data:a", b"data:b", b"", b""]
        yield b"\5\xff" + end.join(lines)
        yield b"\0\7" + b"\xef\xbb\xbf" + end.join(lines)


ANN_POST, ANN_PUT, ANN_DELETE, ANN_GET, BOB_GET, BOB_PUT = 1, 2, 3, 0, 4, 6


def server_store():
    def request(kind, path, body=b""):
        return bytes([kind]) + path.encode() + CUT + body + CUT

    group = request(ANN_POST, "V0/ViewGroups", compact({"ViewGroup": {"Name": "g", "UserID": 1}}))
    for view in SMALL_VIEWS[:12]:
        body = {"Name": view["Name"], "ViewGroupID": -1, "UserID": 1, "PlanPages": view["PlanPages"]}
        yield group + request(ANN_POST, "V0/Views", compact({"View": body})) + request(ANN_GET, "V0/Views")
    move = {"ViewMoveRequest": {"Type": 1, "ViewGroupID": 1, "UserID": 1, "IDs": "2,1"}}
    view = compact({"View": {"Name": "v", "UserID": 1}})
    yield group + request(ANN_POST, "V0/Views", view) + request(ANN_PUT, "V0/Views/Move", compact(move))
    yield request(ANN_POST, "V0/Views", view) + request(ANN_PUT, "V0/Views/1", view) + request(ANN_DELETE, "V0/Views/1")
    yield request(ANN_POST, "V1/View/1/Share", compact({"ShareUsers": "2,77"})) + request(BOB_GET, "V0/Views")
    yield request(BOB_PUT, "V1/View/Default/Config", compact({"ViewRequest": {"Type": 1, "ID": 2}}))
    yield request(ANN_GET, "V0/Elements?Type=1001&IDs=1,2") + request(ANN_GET, "V0/Changes?After=0")
    yield request(ANN_GET, "V0/Users") + request(ANN_GET, "V0/Areas") + request(ANN_DELETE, "V0/Sessions/Current")


def server_damage():
    source = (ROOT / "fuzz/ServerDamageFuzz.cpp").read_text()
    columns = re.findall(r'\{"(\w+)",\s*"(\w+)"\}', source)
    text, number = 0, 1

    def row(table, column, index, kind, value):
        return bytes([1, columns.index((table, column)), index, kind]) + value + CUT

    yield row("groups", "parent_id", 0, number, b"4")
    yield row("groups", "parent_id", 2, number, b"77") + row("groups", "user_id", 1, number, b"9")
    yield row("views", "name", 0, text, b"") + row("views", "id", 1, number, b"4294967297")
    yield row("documents", "text", 0, text, b',"PlanPages":[') + row("documents", "text", 1, text, b',"ID":7')
    yield row("changes", "head", 1, text, b'{"ID":') + row("changes", "number", 3, number, b"900719925474099")
    yield row("sqlite_sequence", "seq", 1, number, b"2147483647") + row("users", "id", 1, number, b"-5")
    for place in (0, 0x1000, 0x2000, 0x5000, 0x9000):
        yield bytes([0]) + place.to_bytes(3, "big") + b"damage" + CUT


def server_http():
    root = "/NXAPI/Vantorel/Platform/"

    def request(line, body="", extra=""):
        length = f"Content-Length: {len(body)}\r\n" if body else ""
        return (f"{line} HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer TOKEN\r\n{extra}{length}\r\n{body}").encode()

    view = '{"View":{"Name":"v","UserID":-1}}'
    yield request(f"GET {root}V0/Views")
    yield request(f"POST {root}V0/Views", view) + request(f"GET {root}V0/ViewGroups")
    yield request(f"PUT {root}V0/Views/1", view, "Expect: 100-continue\r\n")
    yield request(f"GET {root}V0/Changes?After=0")
    yield (f"POST {root}V0/Views HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer TOKEN\r\nTransfer-Encoding: chunked\r\n\r\n"
           f"{len(view):x}\r\n{view}\r\n0\r\n\r\n").encode()
    yield b"GET / HTTP/1.0\r\n\r\n"
    yield b"POST / HTTP/1.1\r\nContent-Length: 99999999999999\r\n\r\n"
    yield b"GET /" + b"a" * 3000


def keys():
    """Field names of the records' lists and of the documents' readers."""
    names = set()
    for path in (ROOT / "src/QorviViewPlugin/protocol").glob("*.h"):
        names.update(re.findall(r"FIELD\([^,()]*, (\w+)\)", path.read_text()))
    for folder in ("QorviViewPlugin/ViewDataManager", "server", "platform/ResourceStore"):
        for path in (ROOT / "src" / folder).rglob("*.cpp"):
            names.update(re.findall(r'"([A-Z][A-Za-z]{2,})"', path.read_text()))
    return sorted(names)


def main():
    folder = pathlib.Path(sys.argv[1])
    makers = {"exchanges": exchanges, "documents": documents, "extend-info": extend_info,
              "path-document": path_document, "change-stream": change_stream, "server-store": server_store,
              "server-damage": server_damage, "server-http": server_http}
    for target, make in makers.items():
        (folder / target).mkdir(parents=True, exist_ok=True)
        for number, seed in enumerate(make()):
            (folder / target / f"seed-{number:02}").write_bytes(seed)
    (folder / "keys.dict").write_text("".join(f'"{name}"\n' for name in keys()))


if __name__ == "__main__":
    main()
