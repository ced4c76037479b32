#!/usr/bin/env python3
"""Checks the reference of the headers.

api.py --list   docs/Doxyfile must name the headers that are installed, and no others.
api.py          Makes the reference, in which any warning is an error; then asks doxygen what has no
                comment. Every class, structure and enumeration needs one, and in the headers that
                most users meet, every operation. Ends with 77, which counts as skipped, where there
                is no doxygen."""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
# Here each member has a comment of its own. Elsewhere a comment may be that of a group.
IN_FULL = ("sdk/", "EventStrategy/ov.strategy.runner/", "platform/EmbeddedPlatform.h",
           "platform/market/files/DataFiles.h")
# What every class of these may have without a word.
PLAIN = re.compile(r"(operator=|operator==|~\w+\(|\b(\w+)\((const )?\2 ?&|\(friend\))")


def read(name):
    return (ROOT / name).read_text(encoding="utf-8")


def installed():
    """The public headers, as the two lists of the build have them."""
    build = read("cmake/OrvaneInstall.cmake")
    headers = set()
    for arguments in re.findall(r"^orvane_public_headers\(\w+([^)]*)\)", build, re.M):
        headers.update(re.findall(r"\S+\.h\b", arguments))
    for pattern in re.findall(r'"\$\{PROJECT_SOURCE_DIR\}/(\S+)/\*\.h"', build):
        headers.update(str(path.relative_to(ROOT)) for path in (ROOT / pattern).rglob("*.h"))
    kit = re.search(r"FILE_SET HEADERS.*?FILES\n(.*?)\)", read("sdk/CMakeLists.txt"), re.S).group(1)
    headers.update("sdk/" + name for name in kit.split())
    return headers


def referred():
    """The headers that doxygen is given."""
    text = re.search(r"^INPUT\s*=(.*?[^\\])$", read("docs/Doxyfile"), re.M | re.S).group(1)
    headers = set()
    for name in text.replace("\\\n", " ").split():
        if name.endswith(".h"):
            headers.add(name)
        elif (ROOT / name).is_dir():
            headers.update(str(path.relative_to(ROOT)) for path in (ROOT / name).rglob("*.h"))
    return headers


def compare_lists():
    wanted, given = installed(), referred()
    findings = [f"installed, but not in docs/Doxyfile: {name}" for name in sorted(wanted - given)]
    findings += [f"in docs/Doxyfile, but not installed: {name}" for name in sorted(given - wanted)]
    if len(wanted) < 40:
        findings.append(f"{len(wanted)} headers: the check is broken")
    return findings


def without_comment():
    """What doxygen misses a comment of, and we do too."""
    with tempfile.TemporaryDirectory() as folder:
        settings = pathlib.Path(folder) / "Doxyfile"
        settings.write_text(
            read("docs/Doxyfile") +
            f"\nOUTPUT_DIRECTORY={folder}\nGENERATE_HTML=NO\nGENERATE_XML=YES\n"
            "WARN_IF_UNDOCUMENTED=YES\nWARN_AS_ERROR=NO\n", encoding="utf-8")
        told = subprocess.run(["doxygen", str(settings)], cwd=ROOT, capture_output=True, text=True,
                              env=dict(os.environ, ORVANE_VERSION="0"), check=False)
    findings = []
    for line in told.stderr.splitlines():
        found = re.match(r"(\S+?):(\d+): (?:warning|error): (Compound|Member) (.*) is not ", line)
        if not found:
            continue
        place = os.path.relpath(found[1], ROOT)
        if found[3] == "Compound":
            findings.append(f"{place}:{found[2]}: {found[4]} has no comment")
        elif place.startswith(IN_FULL) and not PLAIN.search(found[4]):
            findings.append(f"{place}:{found[2]}: {found[4]} has no comment")
    if "is not documented" not in told.stderr:
        findings.append("doxygen misses nothing at all: the check is broken\n" + told.stderr)
    return findings


if sys.argv[1:] == ["--list"]:
    result = compare_lists()
elif shutil.which("doxygen") is None:
    print("doxygen is not installed (scripts/deps installs it): the reference was not made")
    sys.exit(77)
else:
    made = subprocess.run([str(ROOT / "scripts/docs")], capture_output=True, text=True, check=False)
    result = [] if made.returncode == 0 else [made.stdout + made.stderr]
    result += without_comment()
for finding in result:
    print(finding)
print(len(result), "findings")
sys.exit(1 if result else 0)
