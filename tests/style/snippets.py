#!/usr/bin/env python3
"""Fails if a document's copy of a file is not that file.

A fenced block that follows the line `<!-- file: PATH -->` must be the file, line for line; one that
follows `<!-- part of: PATH -->` must stand in it, however far indented. What a document shows is
thereby what a test compiles. In the README and the guides every block of code is such a one; what
is to be typed into a shell is tried by tests/docs/commands.py."""
import re
import textwrap

import tree

BLOCK = re.compile(r"^(?:<!-- (file|part of): (\S+) -->\n+)?```(\w*)\n(.*?)^```", re.M | re.S)
NO_BARE_CODE = {"README.md", "docs/guide.md", "docs/host.md"}
# These are no code to compile. The examples of configurations are tried by commands.py too.
NO_CODE = {"sh", "json"}


def plain(text):
    """The lines without what they are all indented by, and without blanks at the end."""
    return [line.rstrip() for line in textwrap.dedent(text).splitlines()]


def holds(text, part):
    wanted = plain(part)
    lines = text.splitlines()
    return any(plain("\n".join(lines[at:at + len(wanted)])) == wanted
               for at in range(len(lines) - len(wanted) + 1))


findings = []
count = 0
documents = tree.files(".md")
for path in documents:
    for how, name, language, shown in BLOCK.findall(tree.read(path)):
        if not name:
            if str(path) in NO_BARE_CODE and language not in NO_CODE:
                findings.append(f"{path}: this block comes from no file: {shown.splitlines()[0]}")
            continue
        count += 1
        if how == "file" and tree.read(name) != shown:
            findings.append(f"{path}: the block is not what {name} holds")
        if how == "part of" and not holds(tree.read(name), shown):
            findings.append(f"{path}: {name} does not hold {shown.splitlines()[0]}")
if count == 0:
    findings.append("no document shows a file: the check is broken")
tree.finish(findings, len(documents))
