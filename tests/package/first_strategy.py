#!/usr/bin/env python3
"""Makes a first strategy by the commands that the guide shows, in a folder of its own.

Usage: first_strategy.py SCRIPT PREFIX FOLDER: runs SCRIPT in FOLDER, which is made anew, with the
command of PREFIX in the PATH; then looks at what came of it. Compiler, launcher and generator come
from the environment (CXX, CMAKE_CXX_COMPILER_LAUNCHER, CMAKE_GENERATOR, CMAKE_BUILD_TYPE)."""
import json
import os
import pathlib
import shutil
import subprocess
import sys

script, prefix, folder = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
environment = dict(os.environ, PATH=f"{prefix}/bin:{os.environ['PATH']}")
shutil.rmtree(folder, ignore_errors=True)
folder.mkdir(parents=True)
findings = []


def run(*command, where=folder):
    result = subprocess.run(command, cwd=where, env=environment, text=True, check=False,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    print("$", *command)
    print(result.stdout)
    return result


def expect(right, what):
    if not right:
        findings.append(what)


def report():
    whole = json.loads((folder / "my_first/report/report.json").read_text(encoding="utf-8"))
    return whole["runners"][0]


made = run("sh", "-e", str(script))
expect(made.returncode == 0, f"the commands of the guide ended with {made.returncode}")
if not findings:
    expect("100% tests passed" in made.stdout, "the project's own test did not run")
    first = report()
    expect(first.get("status") == "Stopped", f"the run ended as {first.get('status')}")
    expect(int(first.get("env", {}).get("fills", 0)) > 10, "it hardly traded")
    again = run("orvane", "run", "run.json", where=folder / "my_first")
    expect(again.returncode == 0, "it does not run a second time")
    expect(report().get("digest") == first.get("digest") and first.get("digest"),
           "a second run differs")
    # What is there stays as it is.
    twice = run("orvane", "new-strategy", "my_first")
    expect(twice.returncode == 2 and "is not empty" in twice.stdout, "it was written over")

for finding in findings:
    print("WRONG:", finding)
sys.exit(1 if findings else 0)
