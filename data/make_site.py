#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes the sample site: `data/make_site.py` makes data/site.json, `data/make_site.py --check` checks it.

The site is an invented transport hub: a station, a bus terminal, a ferry pier and a car park, whose staff write
in several scripts. Every kind of window the library knows occurs in at least one view. The same script always
writes the same file, so that a change to the site is a readable difference of both.
"""

import base64
import json
import pathlib
import sys
import uuid

SITE_FILE = pathlib.Path(__file__).with_name("site.json")

PUBLIC, TOP, NONE = -1, -1, -1
ADMIN, MARIA, KENJI, ZOE, ELENI, SAMIR = range(1, 7)
STATION, BUSES, PIER, PARKING = 1, 2, 3, 4  # the four sites

CAMERA, DOOR, ELEVATOR, RADAR, EMAP = 1001, 1002, 1005, 1006, 7001
INTERCOM, HELP_POINT, WEB_PAGE, TICKER, VIDEO_WALL, EMPTY = 1027, 2004, 25001, 1012, 5001, 100
EMAP_AS_OLD_CLIENTS_WRITE_IT = 7000

MAIN_STREAM, SUB_STREAM, THIRD_STREAM, AUTO_STREAM = 0, 1, 2, 100

# Sample passwords of a sample site: they protect nothing.
USERS = [
    {"ID": ADMIN, "Name": "admin", "Password": "sample-admin", "PTZControlPermission": 1},
    {"ID": MARIA, "Name": "maria", "Password": "sample-maria", "PTZControlPermission": 1},
    {"ID": KENJI, "Name": "kenji", "Password": "sample-kenji", "PTZControlPermission": 1},
    {"ID": ZOE, "Name": "zoë", "Password": "sample-zoë", "PTZControlPermission": 0},
    {"ID": ELENI, "Name": "Ελένη", "Password": "sample-Ελένη", "PTZControlPermission": 0},
    {"ID": SAMIR, "Name": "سمير", "Password": "sample-سمير", "PTZControlPermission": 0},
]

# (area id, name, site, first camera, places with a camera)
AREAS = [
    (3001, "Forecourt", STATION, 2001,
     ["taxi rank", "taxi rank exit", "drop-off", "tram stop east", "tram stop west", "fountain", "steps",
      "ramp", "clock", "bollards"]),
    (3002, "Κεντρική αίθουσα", STATION, 2011,
     ["είσοδος Α", "είσοδος Β", "είσοδος Γ", "πίνακας αναχωρήσεων", "εκδοτήρια", "πληροφορίες", "καφέ",
      "περίπτερο", "κυλιόμενες σκάλες άνω", "κυλιόμενες σκάλες κάτω", "ανελκυστήρες", "φύλαξη αποσκευών",
      "πύλες 1–4", "πύλες 5–8", "οροφή (πανοραμική)", "έξοδος Α", "έξοδος Β", "διάδρομος"]),
    (3003, "Platform 1", STATION, 2029,
     ["north end", "stairs north", "edge 1", "edge 2", "edge 3", "shelter", "lift", "edge 4", "edge 5",
      "edge 6", "stairs south", "south end"]),
    (3004, "Platform 2", STATION, 2041,
     ["north end", "stairs north", "edge 1", "edge 2", "edge 3", "shelter", "lift", "edge 4", "edge 5",
      "edge 6", "stairs south", "south end"]),
    (3005, "Платформа 3", STATION, 2053,
     ["северный конец", "лестница север", "край 1", "край 2", "край 3", "навес", "лифт", "край 4", "край 5",
      "край 6", "лестница юг", "южный конец"]),
    (3006, "Платформа 4", STATION, 2065,
     ["северный конец", "лестница север", "край 1", "край 2", "край 3", "навес", "лифт", "край 4", "край 5",
      "край 6", "лестница юг", "южный конец"]),
    (3007, "Überführung", STATION, 2077,
     ["Nordtor", "Südtor", "Mitte", "Café Größenwahn", "Rolltreppe 1", "Rolltreppe 2", "Rolltreppe 3",
      "Rolltreppe 4", "Schließfächer", "Notausgang"]),
    (3008, "きっぷうりば", STATION, 2087,
     ["窓口1", "窓口2", "窓口3", "券売機1", "券売機2", "券売機3", "改札 入口", "改札 出口", "待合室", "売店"]),
    (3009, "Bus terminal", BUSES, 2097,
     [f"bay {n}" for n in range(1, 17)] + ["hall", "depot gate", "charging yard", "drivers' room door",
                                           "roof east", "roof west"]),
    (3010, "رصيف العبّارات", PIER, 2119,
     ["البوابة ١", "البوابة ٢", "البوابة ٣", "صالة الانتظار", "شباك التذاكر", "الجسر المتحرك", "المرسى شمال",
      "المرسى جنوب", "موقف السيارات", "ممر المشاة", "مستودع", "برج المراقبة", "البحر شرق", "البحر غرب"]),
    (3011, "Car park", PARKING, 2133,
     ["entry 1", "entry 2", "exit 1", "exit 2", "level 0 north", "level 0 south", "level 1 north",
      "level 1 south", "level 2 north", "level 2 south", "pay machines", "stairwell A", "stairwell B", "roof"]),
    (3012, "🚲 Bike park", PARKING, 2147, ["gate", "rack A", "rack B", "repair stand"]),
]

# (type, first id, [(name, site), ...])
OTHERS = [
    (DOOR, 2201, [("Control room", STATION), ("Staff entrance", STATION), ("Cash office", STATION),
                  ("Служебный вход", STATION), ("Serverraum", STATION), ("Notausgang Überführung", STATION),
                  ("Plant room", BUSES), ("Drivers' room", BUSES), ("باب المستودع", PIER), ("Stairwell A", PARKING),
                  ("Stairwell B", PARKING), ("🚲 Bike park gate", PARKING)]),
    (ELEVATOR, 2301, [("Platform 1 lift", STATION), ("Platform 2 lift", STATION), ("Лифт платформы 3", STATION),
                      ("Лифт платформы 4", STATION), ("Ανελκυστήρας αίθουσας", STATION), ("Car park lift", PARKING)]),
    (RADAR, 2401, [("Track radar north", STATION), ("Track radar south", STATION), ("رادار الميناء", PIER)]),
    (EMAP, 2501, [("Hub overview", STATION), ("Platforms", STATION), ("Bus bays", BUSES), ("خريطة الرصيف", PIER),
                  ("Car park level 0", PARKING)]),
    (HELP_POINT, 2601, [("Help point platform 1", STATION), ("Help point platform 2", STATION),
                        ("Help point bus hall", BUSES), ("Fire panel", STATION)]),
    (INTERCOM, 2701, [("Intercom barrier 1", PARKING), ("Intercom barrier 2", PARKING), ("Intercom pier", PIER)]),
]

# (id, name, parent, owner, is the owner's folder for what is shared)
GROUPS = [
    (1, "Station", TOP, PUBLIC, False),
    (2, "Platforms", 1, PUBLIC, False),
    (3, "Platforms 1–2", 2, PUBLIC, False),
    (4, "Платформы 3–4", 2, PUBLIC, False),
    (5, "Κεντρική αίθουσα", 1, PUBLIC, False),
    (6, "Bus terminal", TOP, PUBLIC, False),
    (7, "رصيف العبّارات", TOP, PUBLIC, False),
    (8, "Car and bike park 🚲", TOP, PUBLIC, False),
    (9, "My rounds", TOP, MARIA, False),
    (10, "Night shift", 9, MARIA, False),
    (11, "夜勤", TOP, KENJI, False),
    (12, "Handed over", TOP, MARIA, True),
]


def window(kind, resource=NONE, site=STATION, **extras):
    """One window. Numbers that do not apply are -1, as the library writes them; make_page numbers the windows."""
    made = {
        "SequenceIndex": "", "ResourceType": kind, "SiteID": site if resource != NONE else NONE,
        "ResourceID": resource, "RelateResourceID": NONE, "RelateResourceName": "", "RelateResourceType": NONE,
        "ExtendResource": "", "WindowNo": 0,
        "Xtop": "-1.000000", "Ytop": "-1.000000", "Xbottom": "-1.000000", "Ybottom": "-1.000000",
        "PresetPointIndex": NONE, "CruiseIndex": NONE, "TrackIndex": NONE, "StreamType": SUB_STREAM,
    }
    made.update(extras)
    made.setdefault("ZoomWindowList", {"ZoomMode": 0})
    made.setdefault("RelatedZoomWindow", {"ViewItemWindowNo": "", "ZoomWindowNo": NONE})
    return made


SITE_OF_CAMERA = {first + n: site for _, _, site, first, places in AREAS for n in range(len(places))}


def cam(resource, **extras):
    return window(CAMERA, resource, SITE_OF_CAMERA[resource], **extras)


def cams(first, count, **extras):
    return [cam(first + n, **extras) for n in range(count)]


def web(path):
    return window(WEB_PAGE, ExtendResource=f"https://boards.example.invalid/{path}" if path else "")


def nothing():
    return window(EMPTY)


def decimal(value):
    return f"{value:.6f}"


def digital_zoom(x_top, y_top, x_bottom, y_bottom):
    return {"Xtop": decimal(x_top), "Ytop": decimal(y_top), "Xbottom": decimal(x_bottom), "Ybottom": decimal(y_bottom)}


def expansions(count):
    return [{"No": n, "PosX": decimal(0.125 + 0.25 * n), "PosY": decimal(0.4), "Zoom": decimal(1 + 0.5 * n)}
            for n in range(count)]


def fisheye(mount, expand, parent, count):
    return {"MountType": mount, "ExpandMode": expand, "FishParentNo": parent, "FishEyeInfo": expansions(count)}


def cycle(kind, seconds, name, pairs):
    return {"Type": kind, "CycleTime": seconds, "CycleName": name,
            "ID": [{"SiteID": site, "ResourceID": resource} for site, resource in pairs]}


def camera_cycle(seconds, name, resources):
    return cycle(0, seconds, name, [(SITE_OF_CAMERA[resource], resource) for resource in resources])


def area_cycle(seconds, name, areas):
    site_of = {area: site for area, _, site, _, _ in AREAS}
    return cycle(1, seconds, name, [(site_of[area], area) for area in areas])


def emap(resource, site, x, y, scale, mode=1, kind=EMAP):
    return window(kind, resource, site, Emap={"LoadMode": mode, "PosX": x, "PosY": y, "ScaleSize": scale,
                                              "ExtendInfo": '{"layers":["cameras","doors"]}'})


def centre_mark(top_x, top_y, bottom_x, bottom_y):
    return {"TopX": top_x, "TopY": top_y, "BottomX": bottom_x, "BottomY": bottom_y, "StreamType": MAIN_STREAM}


def zoom_windows(mode, *boxes):
    return {"ZoomMode": mode, "ZoomWindow": [
        {"No": n, "TopX": box[0], "TopY": box[1], "BottomX": box[2], "BottomY": box[3]} for n, box in enumerate(boxes)]}


def zoom_of(window_no, box):
    return {"ViewItemWindowNo": str(window_no), "ZoomWindowNo": box}


def related(kind, resource, name):
    return {"RelateResourceType": kind, "RelateResourceID": resource, "RelateResourceName": name}


def extend_info(value):
    return json.dumps(value, ensure_ascii=False, separators=(",", ":"))


OLD_DIGITAL_ZOOM = extend_info({"playParams": {"DigitZoom": {
    "Xtop": "0.250000", "Ytop": "0.250000", "Xbottom": "0.750000", "Ybottom": "0.750000"}}})
# "FiehEyeInfo" is how the clients that wrote this text spelled it.
OLD_FISHEYE = extend_info({"playParams": {"FishEye": {
    "MountType": 1, "ExpandMode": 3, "FishParentNo": 0, "FiehEyeInfo": expansions(3)}}})
OLD_MAP = extend_info({"Zoom": 14, "coordinate": [18.5, -3.25]})


def page(split, windows, custom="", at=None):
    """A page of `split` windows; `at` gives the windows' numbers where they do not just count from 0."""
    for number, made in zip(at or range(len(windows)), windows):
        made["SequenceIndex"], made["WindowNo"] = str(number), number
    return {"SpliteType": split, "CustomSplite": base64.b64encode(custom.encode()).decode(), "PlanViewItem": windows}


def view(view_id, name, group, owner, *pages, shared_with=(), cycle_seconds=None):
    return {"ID": view_id, "GUID": str(uuid.uuid5(uuid.NAMESPACE_DNS, f"view-{view_id}.example.invalid")),
            "Name": name, "ViewGroupID": group, "UserID": owner, "AutoCycle": 0 if cycle_seconds is None else 1,
            "CycleTime": cycle_seconds or 30, "SharedWith": list(shared_with), "PlanPages": list(pages)}


def make_views():
    platform_zoom = cam(2031, StreamType=MAIN_STREAM, ZoomWindowList=zoom_windows(
        1, (100, 150, 350, 400), (600, 150, 850, 400)))
    return [
        # Station
        view(101, "Station overview", 1, PUBLIC,
             page(9, [emap(2501, STATION, "52.10250", "11.64000", 16), *cams(2001, 3), cam(2014), cam(2025),
                      cam(2029), cam(2041), web("departures")])),
        view(102, "Forecourt", 1, PUBLIC, page(4, cams(2001, 4)), page(6, cams(2005, 6)), cycle_seconds=20),
        view(103, "Überführung", 1, PUBLIC, page(9, cams(2077, 9, StreamType=AUTO_STREAM)),
             page(1, [cam(2086, **related(DOOR, 2206, "Notausgang Überführung"))])),
        view(104, "きっぷうりば", 1, PUBLIC, page(4, cams(2087, 4)), page(4, cams(2091, 4)), page(4, cams(2095, 2)),
             cycle_seconds=15),
        view(105, "Doors and lifts", 1, PUBLIC,
             page(16, [*(window(DOOR, 2201 + n) for n in range(6)), *(window(ELEVATOR, 2301 + n) for n in range(5)),
                       window(HELP_POINT, 2604)])),
        view(106, "Fire drill 🔥", 1, PUBLIC,
             page(8, [emap(2501, STATION, "52.10250", "11.64000", 15), window(HELP_POINT, 2604),
                      *cams(2011, 3, StreamType=THIRD_STREAM), window(DOOR, 2202), window(DOOR, 2206),
                      window(TICKER, ExtendResource="Please leave the building · Παρακαλούμε εκκενώστε")])),
        # Platforms
        view(107, "All platforms", 2, PUBLIC,
             page(4, [cam(2029, Cycle=camera_cycle(10, "Platform 1, end to end", range(2029, 2041))),
                      cam(2041, Cycle=camera_cycle(10, "Platform 2, end to end", range(2041, 2053))),
                      cam(2053, Cycle=camera_cycle(10, "Платформа 3", range(2053, 2065))),
                      cam(2065, Cycle=camera_cycle(10, "Платформа 4", range(2065, 2077)))])),
        view(108, "Track radar", 2, PUBLIC,
             page(2, [window(RADAR, 2401), cam(2029, **related(HELP_POINT, 2601, "Help point platform 1"))], "1x2"),
             page(2, [window(RADAR, 2402), cam(2040)], "1x2")),
        view(109, "Platform 1", 3, PUBLIC, page(13, cams(2029, 12))),
        view(110, "Platform 1 edge, magnified", 3, PUBLIC,
             page(3, [platform_zoom, cam(2031, RelatedZoomWindow=zoom_of(0, 0)),
                      cam(2031, RelatedZoomWindow=zoom_of(0, 1))], "1+2")),
        view(111, "Platform 2", 3, PUBLIC, page(9, cams(2041, 9)), page(9, []), page(4, cams(2050, 3)),
             cycle_seconds=25),
        view(112, "Platform 2 patrol", 3, PUBLIC,
             page(4, [cam(2041, PresetPointIndex=3, ExtendResource="Stairs"), cam(2044, CruiseIndex=1),
                      cam(2047, TrackIndex=2), cam(2052, PresetPointIndex=1, ExtendResource="Head of train")])),
        view(113, "Платформа 3", 4, PUBLIC, page(16, cams(2053, 12))),
        view(114, "Платформа 4", 4, PUBLIC, page(16, cams(2065, 12, StreamType=THIRD_STREAM))),
        view(115, "Метки центра", 4, PUBLIC,
             page(4, [cam(2053, CenterMark=centre_mark(250, 250, 750, 750)),
                      cam(2064, CenterMark=centre_mark(400, 450, 600, 550), StreamType=MAIN_STREAM), nothing(),
                      nothing()])),
        # Concourse
        view(116, "Αίθουσα, όλες οι κάμερες", 5, PUBLIC, page(9, cams(2011, 9)), page(9, cams(2020, 9)),
             cycle_seconds=30),
        view(117, "Πανοραμική", 5, PUBLIC,
             page(6, [cam(2025, FishEye=fisheye(0, 2, 0, 4), StreamType=MAIN_STREAM), *cams(2011, 3)],
                  at=[0, 2, 3, 5])),
        view(118, "Πύλες", 5, PUBLIC,
             page(4, [cam(2023, **digital_zoom(0.1, 0.2, 0.6, 0.7)), cam(2024, **digital_zoom(0.4, 0.2, 0.9, 0.7)),
                      window(ELEVATOR, 2305), web("")])),
        # Bus terminal
        view(119, "Bays 1–16", 6, PUBLIC, page(16, cams(2097, 16))),
        view(120, "Bus hall", 6, PUBLIC,
             page(6, [cam(2113), window(HELP_POINT, 2603, BUSES), emap(2503, BUSES, "120", "80", 3, mode=0),
                      web("bus/departures"), cam(2116, **related(DOOR, 2208, "Drivers' room")),
                      window(VIDEO_WALL, ExtendResource="Bus hall wall")])),
        view(121, "Depot at night", 6, PUBLIC, page(4, cams(2114, 4, StreamType=MAIN_STREAM))),
        # Ferry pier
        view(122, "رصيف العبّارات", 7, PUBLIC, page(9, cams(2119, 9)), page(6, cams(2128, 5))),
        view(123, "البحر", 7, PUBLIC,
             page(4, [window(RADAR, 2403, PIER), cam(2131, ExtendInfo=OLD_DIGITAL_ZOOM), cam(2132),
                      emap(2504, PIER, "36.80000", "10.18000", 12, kind=EMAP_AS_OLD_CLIENTS_WRITE_IT)])),
        view(124, "Old client's layouts", 7, PUBLIC,
             page(4, [cam(2130, ExtendInfo=OLD_FISHEYE), cam(2122, ExtendInfo=OLD_MAP),
                      cam(2123, ExtendInfo='{"playParams":{}}'), cam(2124, ExtendInfo="not what it used to be")])),
        # Car and bike park
        view(125, "Car park, by level", 8, PUBLIC, page(2, cams(2137, 2)), page(2, cams(2139, 2)),
             page(2, cams(2141, 2)), page(1, [cam(2146)]), cycle_seconds=12),
        view(126, "Barriers", 8, PUBLIC,
             page(8, [*cams(2133, 4), window(INTERCOM, 2701, PARKING), window(INTERCOM, 2702, PARKING),
                      cam(2133, **related(INTERCOM, 2701, "Intercom barrier 1")),
                      emap(2505, PARKING, "40", "25", 2, mode=0)])),
        view(127, "🚲 Bike park", 8, PUBLIC, page(4, [*cams(2147, 4)])),
        # Public, in no folder
        view(128, "Whole hub, area by area", TOP, PUBLIC,
             page(4, [cam(2001, Cycle=area_cycle(20, "Station", range(3001, 3009))),
                      cam(2097, Cycle=area_cycle(20, "Bus terminal", [3009])),
                      cam(2119, Cycle=area_cycle(20, "رصيف العبّارات", [3010])),
                      cam(2133, Cycle=area_cycle(20, "Parking", [3011, 3012]))])),
        view(129, "Weather and news", TOP, PUBLIC, page(2, [web("weather"), web("news")], "2x1")),
        view(130, "To be filled", TOP, PUBLIC),
        # maria
        view(131, "Morning round", 9, MARIA, page(9, [*cams(2011, 3), *cams(2087, 3), *cams(2097, 3)]),
             shared_with=[KENJI]),
        view(132, "Cash office", 9, MARIA,
             page(4, [window(DOOR, 2203), *cams(2087, 3, StreamType=MAIN_STREAM)])),
        view(133, "Night shift, doors", 10, MARIA, page(6, [*(window(DOOR, 2201 + n) for n in range(5))])),
        view(134, "Night shift, car park", 10, MARIA, page(16, cams(2133, 14)), shared_with=[KENJI, ELENI]),
        view(135, "Lost child, platform 2", 12, MARIA,
             page(6, [*cams(2041, 3), cam(2077), cam(2025, FishEye=fisheye(1, 1, 0, 2)), nothing()]),
             shared_with=[KENJI, ZOE, SAMIR]),
        view(136, "Maria's favourites", TOP, MARIA, page(4, cams(2004, 3), at=[0, 1, 3])),
        # kenji
        view(137, "夜間巡回", 11, KENJI, page(9, [*cams(2091, 4), *cams(2119, 4)]), page(4, cams(2147, 4)),
             shared_with=[MARIA], cycle_seconds=40),
        view(138, "フェリー乗り場", 11, KENJI,
             page(4, [cam(2119), cam(2124), window(INTERCOM, 2703, PIER), web("ferry/times")])),
        view(139, "券売機", TOP, KENJI, page(4, cams(2090, 3)), shared_with=[MARIA, ZOE]),
        # admin
        view(140, "Site acceptance", TOP, ADMIN, page(25, cams(2001, 25)), page(25, cams(2026, 25)),
             page(36, cams(2051, 36)), page(64, cams(2087, 64)), shared_with=[MARIA]),
    ]


def in_order(entries, folder_key):
    """Gives the entries of each folder their places 1..n, public ones and each user's for themselves."""
    places = {}
    for entry in entries:
        folder = (entry[folder_key], entry["UserID"])
        places[folder] = entry["SequenceIndex"] = places.get(folder, 0) + 1
    return entries


def make_site():
    elements = [{"ID": first + n, "Type": CAMERA, "Name": f"{area}, {place}", "SiteID": site}
                for _, area, site, first, places in AREAS for n, place in enumerate(places)]
    elements += [{"ID": first + n, "Type": kind, "Name": name, "SiteID": site}
                 for kind, first, named in OTHERS for n, (name, site) in enumerate(named)]
    groups = [{"ID": group, "Name": name, "ParentViewGroupID": parent, "UserID": owner,
               "IsSharedView": 1 if shared else -1} for group, name, parent, owner, shared in GROUPS]
    return {"Users": USERS,
            "Areas": [{"ID": area, "Name": name} for area, name, *_ in AREAS],
            "Elements": elements,
            "ViewGroups": in_order(groups, "ParentViewGroupID"),
            "Views": in_order(make_views(), "ViewGroupID")}


def as_text(site):
    """JSON with one line for each entry, and for each window of a view."""
    def line(value):
        return json.dumps(value, ensure_ascii=False, separators=(",", ":"))

    def view_text(entry):
        pages = [line({**made, "PlanViewItem": []})[:-2] +
                 ",".join(f"\n      {line(item)}" for item in made["PlanViewItem"]) + "]}"
                 for made in entry["PlanPages"]]
        own = {key: value for key, value in entry.items() if key != "PlanPages"}
        return line({**own, "PlanPages": []})[:-2] + ",".join(f"\n    {text}" for text in pages) + "]}"

    def list_text(name):
        entry_text = view_text if name == "Views" else line
        return f' "{name}":[\n' + ",\n".join("  " + entry_text(entry) for entry in site[name]) + "\n ]"

    return "{\n" + ",\n".join(list_text(name) for name in site) + "\n}\n"


def faults(site):
    """What is wrong with a site, as lines; nothing when all is well."""
    found = []
    by_id = {name: {entry["ID"]: entry for entry in site[name]} for name in site}
    users, groups, elements, areas = (by_id[name] for name in ("Users", "ViewGroups", "Elements", "Areas"))
    for name, entries in by_id.items():
        if len(entries) != len(site[name]):
            found.append(f"{name}: an ID occurs twice")
    for kind, folder_key in (("ViewGroups", "ParentViewGroupID"), ("Views", "ViewGroupID")):
        for entry in site[kind]:
            what = f'{kind} {entry["ID"]}'
            if entry["UserID"] not in (PUBLIC, *users):
                found.append(f"{what}: no such owner")
            if entry[folder_key] != TOP and entry[folder_key] not in groups:
                found.append(f"{what}: no such folder")
            elif entry[folder_key] != TOP and groups[entry[folder_key]]["UserID"] != entry["UserID"]:
                found.append(f"{what}: its folder has another owner")
    for group in groups:
        way = set()
        while group in groups and group not in way:
            way.add(group)
            group = groups[group]["ParentViewGroupID"]
        if group in way:
            found.append(f"ViewGroups {group}: lies in itself")
    for entry in site["Views"]:
        what = f'Views {entry["ID"]}'
        for user in entry["SharedWith"]:
            if user not in users or user == entry["UserID"] or entry["UserID"] == PUBLIC:
                found.append(f"{what}: cannot be shared with user {user}")
        for number, made in enumerate(entry["PlanPages"], 1):
            at = [item["WindowNo"] for item in made["PlanViewItem"]]
            if len(set(at)) != len(at) or any(place >= made["SpliteType"] for place in at):
                found.append(f"{what} page {number}: two windows in one place, or one outside the page")
            for item in made["PlanViewItem"]:
                found += [f"{what} page {number}: {text}" for text in window_faults(item, elements, areas)]
    return found


def window_faults(item, elements, areas):
    kind, resource = item["ResourceType"], item["ResourceID"]
    if resource != NONE:
        element = elements.get(resource)
        if not element or element["Type"] != (EMAP if kind == EMAP_AS_OLD_CLIENTS_WRITE_IT else kind):
            yield f"no element {resource} of type {kind}"
        elif element["SiteID"] != item["SiteID"]:
            yield f"element {resource} is of another site"
    related_to = elements.get(item["RelateResourceID"])
    if item["RelateResourceID"] != NONE and (not related_to or related_to["Type"] != item["RelateResourceType"]):
        yield f'no related element {item["RelateResourceID"]}'
    for pair in item.get("Cycle", {"ID": []})["ID"]:
        if pair["ResourceID"] not in (areas if item["Cycle"]["Type"] == 1 else elements):
            yield f'nothing to cycle through has the id {pair["ResourceID"]}'


def main(arguments):
    if arguments not in ([], ["--check"]):
        sys.exit("usage: make_site.py [--check]")
    site = make_site()
    if arguments:
        if SITE_FILE.read_text(encoding="utf-8") != as_text(site):
            sys.exit("site.json is not what this script writes")
        site = json.loads(SITE_FILE.read_text(encoding="utf-8"))
    for fault in (found := faults(site)):
        print(fault)
    if found:
        sys.exit(1)
    if not arguments:
        SITE_FILE.write_text(as_text(site), encoding="utf-8")


if __name__ == "__main__":
    main(sys.argv[1:])
