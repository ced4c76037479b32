#!/usr/bin/env python3
"""Fails on a link in a document that leads nowhere: a file that is not there, or a heading."""
import pathlib
import re

import tree

LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")
FENCE = re.compile(r"^(```|~~~).*?^\1", re.M | re.S)


def anchors(text):
    """The names that headings are linked by."""
    names = set()
    for heading in re.findall(r"^#+\s+(.*)$", FENCE.sub("", text), re.M):
        plain = re.sub(r"[`*]", "", heading).strip().lower()
        names.add(re.sub(r"[^\w\- ]", "", plain).replace(" ", "-"))
    return names


findings = []
documents = tree.files(".md")
for path in documents:
    for link in LINK.findall(FENCE.sub("", tree.read(path))):
        if re.match(r"[a-z]+:", link):
            continue
        name, _, anchor = link.partition("#")
        target = (tree.ROOT / path).parent / name if name else tree.ROOT / path
        if not target.exists():
            findings.append(f"{path}: there is no {name}")
        elif anchor and anchor not in anchors(target.read_text(encoding="utf-8")):
            findings.append(f"{path}: {pathlib.PurePosixPath(name or path.name)} has no #{anchor}")
tree.finish(findings, len(documents))
