#!/usr/bin/env python3
"""Fails if the lives of a quote and an order name a file, an operation or an option that is not
there."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGES = ("docs/life-of-a-quote.md", "docs/life-of-an-order.md")
ROOMS = ("EventStrategy", "platform", "services", "shared")

sources = {path: path.read_text(encoding="utf-8") for room in ROOMS
           for path in (ROOT / room).rglob("*") if path.suffix in (".h", ".cpp")}
names = {path.name for path in sources}
options = (ROOT / "docs/command.md").read_text(encoding="utf-8")
words = {path: set(re.findall(r"\w+", text)) for path, text in sources.items()}
every_word = set().union(*words.values())
findings, count = [], 0
for page in PAGES:
    text = (ROOT / page).read_text(encoding="utf-8")
    for name in re.findall(r"`([^`\n]+)`", text):
        count += 1
        if re.search(r"\.(h|cpp)$", name):
            found = (ROOT / name).is_file() if "/" in name else name in names
        elif name.startswith("--"):
            found = f"`{name}`" in options
        elif "::" in name:
            # Defined apart, or inside the class of a header.
            owner, member = name.rsplit("::", 1)
            head = re.compile(rf"\b(class|struct)\b[^;{{]*\b{owner}\b[^;]*{{")
            found = any(re.search(rf"\b{re.escape(name)}\b", each) or head.search(each)
                        for path, each in sources.items() if {owner, member} <= words[path])
        else:
            found = set(re.findall(r"\w+", name)) <= every_word
        if not found:
            findings.append(f"{page}: there is no {name}")
for finding in findings:
    print(finding)
print(len(findings), "findings in", count, "names")
sys.exit(1 if findings or count < 50 else 0)
