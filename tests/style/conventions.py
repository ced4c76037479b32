#!/usr/bin/env python3
"""Fails on a source that breaks a convention that a machine can see."""
import re

import tree

LINES_MOST = 600
COLUMNS_MOST = 100
# Put together from halves, so that this file does not find itself.
LEFTOVERS = re.compile(r"\b(TO" r"DO|FIX" r"ME|XX" r"X|HA" r"CK)\b")
SLEEPS = re.compile(r"\b(sleep_for|sleep_until|usleep|nanosleep|QThread::m?sleep)\b")
USING_IN_HEADER = re.compile(r"^using\s+namespace\b")  # Inside a function it harms nobody.
# A wall clock in a test is a decision by wall clock waiting to happen.
WALL_CLOCK = re.compile(r"\b(steady_clock|system_clock|high_resolution_clock)::now\b")

findings = []
sources = tree.files(".h", ".cpp", ".py", ".cmake", ".sh", "CMakeLists.txt")
scripts = [path for path in tree.files(under="scripts/")]
for path in sorted(set(sources) | set(scripts)):
    text = tree.read(path)
    lines = text.splitlines()

    def report(number, what):
        findings.append(f"{path}:{number}: {what}")

    if len(lines) > LINES_MOST:
        report(len(lines), f"longer than {LINES_MOST} lines")
    if text and not text.endswith("\n"):
        report(len(lines), "does not end with a line end")
    is_header = path.suffix == ".h"
    is_test = path.parts[0] == "tests"
    if is_header and "#pragma once" not in lines[:3]:
        report(1, "a header without #pragma once at its head")
    for number, line in enumerate(lines, 1):
        if len(line) > COLUMNS_MOST:
            report(number, f"longer than {COLUMNS_MOST} columns")
        if "\t" in line or line != line.rstrip():
            report(number, "a tab, or blanks at the end")
        if LEFTOVERS.search(line):
            report(number, "a mark of unfinished business")
        if is_header and USING_IN_HEADER.match(line):
            report(number, "using namespace in a header")
        if is_test and path.suffix in (".h", ".cpp"):
            if SLEEPS.search(line):
                report(number, "a sleep in a test: use a latch, a condition or a simulated clock")
            if WALL_CLOCK.search(line):
                report(number, "a clock read in a test: no test decides by the wall clock")
    # Its own header comes first, so that each header is proved to need nothing before it.
    if path.suffix == ".cpp" and (tree.ROOT / path).with_suffix(".h").exists():
        first = next((line for line in lines if line.startswith("#include")), "")
        if path.with_suffix(".h").name not in first:
            report(1, "does not include its own header first")
tree.finish(findings, len(sources))
