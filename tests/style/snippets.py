#!/usr/bin/env python3
"""Fails if a document's copy of a file is not that file.

A fenced block that follows the line `<!-- file: PATH -->` must be the file, line for line. What a
document shows is thereby what a test compiles."""
import re

import tree

SNIPPET = re.compile(r"<!-- file: (\S+) -->\n+```\w*\n(.*?)^```", re.M | re.S)

findings = []
count = 0
documents = tree.files(".md")
for path in documents:
    for name, shown in SNIPPET.findall(tree.read(path)):
        count += 1
        if tree.read(name) != shown:
            findings.append(f"{path}: the block is not what {name} holds")
if count == 0:
    findings.append("no document shows a file: the check is broken")
tree.finish(findings, len(documents))
