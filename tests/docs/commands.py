#!/usr/bin/env python3
"""Runs what the documents show.

Usage: commands.py ORVANE GUIDE_MODULE

Each line of README and guide that calls `orvane` is typed into a shell, in a folder that has the
files which it names; so is the configuration that docs/host.md shows. What else README tells to
type must name scripts and presets that are there. GUIDE_MODULE is made of the guide's blocks of
code: it is played, and must have come through all of them."""
import datetime
import gzip
import json
import os
import pathlib
import pty
import re
import shutil
import subprocess
import sys
import tempfile
import textwrap

ROOT = pathlib.Path(__file__).resolve().parents[2]
ORVANE, MODULE = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
findings = []


def check(right, what):
    if not right:
        findings.append(what)


def read(name):
    return (ROOT / name).read_text(encoding="utf-8")


def lines_to_type(text):
    """The lines of blocks for a shell: fenced ones, and those that are only indented. A block that
    shows a file is left out, since a test runs that file."""
    text = re.sub(r"^<!-- file: \S+ -->\n+```.*?^```", "", text, flags=re.M | re.S)
    blocks = re.findall(r"^```sh\n(.*?)^```", text, re.M | re.S)
    without_fences = re.sub(r"^```.*?^```", "", text, flags=re.M | re.S)
    blocks += [textwrap.dedent(block)
               for block in re.findall(r"(?<=\n\n)((?:    .*\n)+)", without_fences)]
    # A line that goes on in the next one is one line.
    return [line for block in blocks for line in re.sub(r"\\\n\s*", "", block).splitlines()
            if line.strip()]


def bars(minutes=40):
    rows = ["datetime,open,high,low,close,volume"]
    for at in range(minutes):
        price = 100 + at % 7
        rows.append(f"2021-01-04 {10 + at // 60}:{at % 60:02}:00,"
                    f"{price},{price + 1},{price - 1},{price},5")
    return "\n".join(rows) + "\n"


def days(count=400):
    rows = ["date,open,high,low,close,volume"]
    for at in range(count):
        price = 100 + at % 37 + at % 11
        day = datetime.date(2020, 1, 1) + datetime.timedelta(days=at)
        rows.append(f"{day},{price},{price + 1},{price - 1},{price},5")
    return "\n".join(rows) + "\n"


def prepare(folder):
    """The files that the documents' lines name."""
    for name in ("data.csv", "own.csv"):
        (folder / name).write_text(bars(), encoding="utf-8")
    (folder / "spy.csv").write_text(days(), encoding="utf-8")
    for name in ("my_bars.csv.gz", "if_5min.csv.gz"):
        text = bars() if name.startswith("my") else re.sub(
            r"10:(\d\d):00", lambda found: f"1{int(found[1]) // 12}:{int(found[1]) % 12 * 5:02}:00",
            bars())
        (folder / name).write_bytes(gzip.compress(text.encode(), mtime=0))
    shutil.copy(ORVANE.parent / "sma_cross.so", folder / "my.so")
    (folder / "examples").symlink_to(ROOT / "examples")
    (folder / "build/release").mkdir(parents=True)
    (folder / "build/release/bin").symlink_to(ORVANE.parent)


def shell(line, folder):
    # Whoever reads page by page reads all of it here.
    return subprocess.run(["bash", "-c", "less() { cat; }\nset -o pipefail\n" + line], cwd=folder,
                          env=dict(os.environ, PATH=f"{ORVANE.parent}:{os.environ['PATH']}"),
                          capture_output=True, text=True, check=False, encoding="utf-8")


def on_terminal(line, folder):
    """The same for a line that draws on the terminal: on one of its own. The words that it wrote,
    and all else, are in its standard output."""
    child, terminal = pty.fork()
    if child == 0:
        os.chdir(folder)
        os.execvpe("bash", ["bash", "-c", line],
                   dict(os.environ, PATH=f"{ORVANE.parent}:{os.environ['PATH']}",
                        TERM="xterm-256color"))
    written = b""
    try:
        while more := os.read(terminal, 4096):
            written += more
    except OSError:
        pass  # Nobody has the other end open any more.
    os.close(terminal)
    status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
    return subprocess.CompletedProcess(line, status, written.decode(errors="replace"), "")


def is_known(line):
    """Whether a line that is not tried here names what is there."""
    presets = json.loads(read("CMakePresets.json"))
    names = {kind: {preset["name"] for preset in presets[kind]}
             for kind in ("configurePresets", "buildPresets", "testPresets")}
    for command in re.split(r"\s+&&\s+|\s+#.*$", line):
        words = command.split()
        if not words:
            continue
        if words[0].startswith("scripts/"):
            good = os.access(ROOT / words[0], os.X_OK)
        elif words[:2] == ["cmake", "--preset"]:
            good = words[2] in names["configurePresets"]
        elif words[:3] == ["cmake", "--build", "--preset"]:
            good = words[3] in names["buildPresets"]
        elif words[:2] == ["ctest", "--preset"]:
            good = words[2] in names["testPresets"]
        elif words[:2] == ["cmake", "--install"]:
            good = words[2].removeprefix("build/") in names["configurePresets"]
        else:
            good = False
        if not good:
            return False
    return True


def try_lines(folder):
    tried = 0
    for name in ("README.md", "docs/guide.md"):
        for line in lines_to_type(read(name)):
            if re.match(r"(build/release/bin/)?orvane ", line):
                tried += 1
                result = (on_terminal if " --watch" in line else shell)(line, folder)
                check(result.returncode == 0, f"{name}: {line}\n{result.stdout}{result.stderr}")
            else:
                check(is_known(line), f"{name}: nobody tried this: {line}")
    check(tried >= 5, f"{tried} lines: the check is broken")
    completion = [line for line in lines_to_type(read("docs/host.md")) if "source" in line]
    check(len(completion) == 1, "docs/host.md: how to try the completion")
    for line in completion:
        result = shell(line + " && complete -p orvane", folder)
        check("_orvane" in result.stdout, f"docs/host.md: {line}: {result.stderr}")


def try_configuration(folder):
    shown = re.findall(r"^```json\n(.*?)^```", read("docs/host.md"), re.M | re.S)
    check(len(shown) == 1, f"docs/host.md: {len(shown)} configurations")
    for text in shown:
        (folder / "shown.json").write_text(text, encoding="utf-8")
        result = shell("orvane run shown.json", folder)
        check(result.returncode == 0, f"docs/host.md: {result.stdout}{result.stderr}")


def try_guide(folder):
    shutil.copy(MODULE, folder / "GuideBlocks.so")
    result = shell("orvane run --strategy ./GuideBlocks.so --params '{\"name\":\"guide\"}' "
                   "--bars IF2101.CFFEX=own.csv --report out", folder)
    check(result.returncode == 0, f"the guide's blocks: {result.stdout}{result.stderr}")
    if result.returncode != 0:
        return
    run = json.loads((folder / "out/report.json").read_text(encoding="utf-8"))["runners"][0]
    told = run["env"]
    check(run["exceptions"]["count"] == 0, f"the guide's blocks: {run['exceptions']}")
    check(told.get("name") == "guide" and "last" in told, f"parameters and bars: {told}")
    check("filled" in told, f"the order of the guide was not filled: {told}")
    check(told.get("records") == "1", f"the record of the guide did not come: {told}")
    wrong = shell("orvane run --strategy ./GuideBlocks.so --params '{\"fast\":0,\"slow\":1}' "
                  "--bars IF2101.CFFEX=own.csv", folder)
    check(wrong.returncode == 1 and "fast" in wrong.stdout and "slow" in wrong.stdout,
          f"parameters that are wrong: {wrong.stdout}{wrong.stderr}")


with tempfile.TemporaryDirectory() as name:
    scratch = pathlib.Path(name)
    prepare(scratch)
    try_lines(scratch)
    try_configuration(scratch)
    try_guide(scratch)
for finding in findings:
    print(finding)
print(len(findings), "findings")
sys.exit(1 if findings else 0)
