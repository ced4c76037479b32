#!/usr/bin/env python3
"""Fails if the page on reliability names a test that is not there, or has a row without one."""
import re

import tree

PAGE = "docs/reliability.md"
TEST = re.compile(r"^\s*(?:TYPED_)?TEST(?:_[FP])?\(\s*(\w+)\s*,\s*(\w+)\s*\)", re.M)
PROPERTY = re.compile(r"RC_GTEST_(?:FIXTURE_)?PROP\(\s*(\w+)\s*,\s*(\w+)")
NAMED = re.compile(r"`(\w+)\.(should\w+)`")

known = set()
for path in tree.files(".cpp", ".h", under="tests/"):
    text = tree.read(path)
    known.update(TEST.findall(text) + PROPERTY.findall(text))

findings = []
rows = 0
page = tree.read(PAGE)
for number, line in enumerate(page.split("\n## Figures reached")[0].splitlines(), 1):
    named = NAMED.findall(line)
    for suite, case in named:
        if (suite, case) not in known:
            findings.append(f"{PAGE}:{number}: there is no test {suite}.{case}")
    if line.startswith("| ") and not line.startswith("| guarantee"):
        rows += 1
        if not named:
            findings.append(f"{PAGE}:{number}: a guarantee without a test")
if rows < 10:
    findings.append(f"{PAGE}: {rows} guarantees: the check is broken")
tree.finish(findings, rows)
