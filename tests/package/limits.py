#!/usr/bin/env python3
"""Holds the README's list of operations that answer 23 against what they answer.

Usage: limits.py README ORVANE MODULE: plays one bar through MODULE, which prints "operation code"
for each operation, and compares those of code 23 with the list."""
import pathlib
import re
import subprocess
import sys
import tempfile

readme, orvane, module = sys.argv[1:]
text = pathlib.Path(readme).read_text(encoding="utf-8")
# The list's own items, without what stands in brackets about their neighbours.
items = re.search(r"answer code 23 with[^:]*:\n((?:  .*\n)+)", text).group(1)
listed = set(re.findall(r"`(\w+)`", re.sub(r"\([^)]*\)", "", items)))

with tempfile.TemporaryDirectory() as folder:
    bars = pathlib.Path(folder) / "ONE.csv"
    bars.write_text("datetime,open,high,low,close,volume\n2021-01-04 10:00:00,1,1,1,1,1\n"
                    "2021-01-04 10:01:00,1,1,1,1,1\n", encoding="utf-8")
    run = subprocess.run([orvane, "run", "--quiet", "--strategy", module, "--bars", str(bars)],
                         capture_output=True, text=True, check=False)
print(run.stderr)
answered = dict(line.split() for line in run.stdout.splitlines()
                if re.fullmatch(r"\w+ -?\d+", line))
absent = {operation for operation, code in answered.items() if code == "23"}
for operation in sorted(listed - absent):
    print(f"listed, but answered {answered.get(operation, 'nothing')}:", operation)
for operation in sorted(absent - listed):
    print("answered 23, but not listed:", operation)
print(len(answered), "operations answered,", len(absent), "of them with 23")
sys.exit(0 if run.returncode == 0 and answered and listed == absent else 1)
