#!/usr/bin/env python3
"""Fails on an #include that goes against the arrows between the rooms.

With --self-test it instead proves that the rules refuse what they must."""
import re
import sys

import tree

# Room: the rooms that it may include. The longest name that fits a path is its room. The system's
# own headers and those of packages are not looked at.
ROOMS = {
    "shared": {"shared"},
    "services": {"services", "shared"},
    "EventStrategy": {"EventStrategy", "services", "shared"},
    "EventStrategy/ov.strategy.runner":
        {"EventStrategy/ov.strategy.runner", "EventStrategy", "services", "shared"},
    "platform": {"platform", "services", "shared"},
    "sdk": {"sdk", "contract", "platform/fields", "shared"},
    "host": {"host", "EventStrategy", "EventStrategy/ov.strategy.runner", "contract", "platform",
             "platform/fields", "sdk", "services", "shared"},
    "examples": {"sdk"},
    "bench": None,
    "tests": None,
}
# Parts of rooms with rules of their own: carried fields, which strategy writers use too, and what
# a strategy module and its host agree on: the interfaces, and the base that a strategy writer may
# derive a source of events from.
FIELDS = "platform/fields/"
CONTRACT = {"EventStrategy/AbstractEventStrategy.h",
            "EventStrategy/IEvent.h",
            "EventStrategy/IQuoteSrc.h",
            "EventStrategy/ov.strategy.runner/IContext.h",
            "EventStrategy/ov.strategy.runner/IStrategy.h",
            "EventStrategy/ov.strategy.runner/StrategyLog.h"}
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]')


def room_of(path):
    fitting = [room for room in ROOMS if path.startswith(room + "/")]
    return max(fitting, key=len) if fitting else None


def target_rooms(path):
    """The names under which a file may be allowed."""
    rooms = {room_of(path)}
    if path.startswith(FIELDS):
        rooms.add("platform/fields")
    if path in CONTRACT:
        rooms.add("contract")
    return rooms


def resolve(includer, name):
    """The tree's file that an include names, or None for one of a package or of the system."""
    if name.startswith("orvane/"):
        name = name[len("orvane/"):]
    if room_of(name):
        return name
    beside = includer.rsplit("/", 1)[0] + "/" + name
    if (tree.ROOT / beside).is_file():
        return re.sub(r"[^/]+/\.\./", "", beside)
    return None


def offence(includer, name):
    """Why `includer` must not include `name`; empty if it may."""
    room = room_of(includer)
    if room is None or ROOMS[room] is None:
        return ""
    target = resolve(includer, name)
    if target is None:
        return ""
    if room == "examples":
        own = target.startswith("examples/")
        return "" if own or name.startswith("orvane/sdk/") else "only <orvane/sdk/...> and its own"
    if target_rooms(target) & ROOMS[room]:
        return ""
    return f"{room}/ may not include {room_of(target)}/"


def self_test():
    cases = [
        ("platform/core/Clock.cpp", "EventStrategy/IEvent.h", True),
        ("EventStrategy/QuoteSrc.cpp", "platform/EmbeddedPlatform.h", True),
        ("EventStrategy/QuoteSrc.cpp", "platform/fields/QuoteView.h", True),
        ("EventStrategy/QuoteSrc.cpp", "EventStrategy/ov.strategy.runner/IRunner.h", True),
        ("EventStrategy/QuoteSrc.cpp", "orvane/platform/EmbeddedPlatform.h", True),
        ("services/IPlatform.h", "platform/EmbeddedPlatform.h", True),
        ("shared/Types.h", "services/IPlatform.h", True),
        ("sdk/Strategy.h", "platform/EmbeddedPlatform.h", True),
        ("sdk/Strategy.h", "EventStrategy/ov.strategy.runner/IRunner.h", True),
        ("examples/sma_cross/SmaCross.cpp", "orvane/shared/Types.h", True),
        ("examples/sma_cross/SmaCross.cpp", "orvane/sdk/Strategy.h", False),
        ("sdk/BarFetcher.h", "EventStrategy/QuoteSrc.h", True),
        ("sdk/Strategy.h", "EventStrategy/ov.strategy.runner/IContext.h", False),
        ("sdk/BarFetcher.h", "EventStrategy/AbstractEventStrategy.h", False),
        ("sdk/Strategy.h", "platform/fields/QuoteView.h", False),
        ("EventStrategy/ov.strategy.runner/Runner.cpp", "EventStrategy/IEvent.h", False),
        ("platform/core/Clock.cpp", "services/IPlatform.h", False),
        ("platform/core/Clock.cpp", "vector", False),
        ("host/Main.cpp", "platform/EmbeddedPlatform.h", False),
        ("tests/host/RunTest.cpp", "EventStrategy/IEvent.h", False),
    ]
    wrong = [f"{includer} -> {name}: should be {'refused' if refused else 'allowed'}"
             for includer, name, refused in cases if bool(offence(includer, name)) != refused]
    tree.finish(wrong, len(cases))


if "--self-test" in sys.argv[1:]:
    self_test()
findings = []
sources = tree.files(".h", ".cpp", ".inc")
for path in sources:
    for number, line in enumerate(tree.read(path).splitlines(), 1):
        match = INCLUDE.match(line)
        why = offence(str(path), match.group(1)) if match else ""
        if why:
            findings.append(f"{path}:{number}: {match.group(1)}: {why}")
tree.finish(findings, len(sources))
