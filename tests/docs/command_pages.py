#!/usr/bin/env python3
"""Holds what is written about the command against the command's own help.

Usage: command_pages.py ORVANE

For the program and each sub-command, the options that `--help` lists must be those of the manual
page, of the completions for bash and zsh, and of docs/command.md. The completion for bash is run;
that for zsh too, where there is one. What a value can be completed with is tried for each kind."""
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
ORVANE = str(pathlib.Path(sys.argv[1]).resolve())
ENVIRONMENT = dict(os.environ, LC_ALL="C.UTF-8")
findings = []


def check(right, what):
    if not right:
        findings.append(what)


def run(*words, folder=None, text=None):
    return subprocess.run(words, capture_output=True, text=True, cwd=folder, input=text,
                          env=ENVIRONMENT, check=False, encoding="utf-8")


def page(kind):
    result = run(ORVANE, "--page", kind)
    check(result.returncode == 0 and result.stdout, f"--page {kind}: {result.stderr}")
    return result.stdout


def commands_by_help(path=()):
    """Each command's path, and its options as the help lists them."""
    text = run(ORVANE, *path, "--help").stdout
    options = set()
    for names in re.findall(r"^  (-\w,--[\w-]+|--[\w-]+|-\w)(?= )", text, re.M):
        options.update(names.split(","))
    result = {path: options}
    listed = re.search(r"^Subcommands:\n((?:  .*\n)+)", text, re.M)
    for child in re.findall(r"^  ([\w-]+)", listed.group(1), re.M) if listed else []:
        result.update(commands_by_help(path + (child,)))
    return result


def compare(what, path, shown, expected):
    name = " ".join(("orvane",) + path)
    for option in sorted(expected - shown):
        findings.append(f"{what}: {name} has {option}, which is missing")
    for option in sorted(shown - expected):
        findings.append(f"{what}: {name} has no {option}")


def check_manual(commands):
    text = page("man")
    sections = {title.replace("\\-", "-"): body for title, body in
                re.findall(r'^\.SH "?([^"\n]+)"?\n(.*?)(?=^\.SH |\Z)', text, re.M | re.S)}
    for path, options in commands.items():
        title = "ORVANE " + " ".join(path) if path else "OPTIONS"
        check(title in sections, f"man: there is no section {title}")
        lines = re.findall(r"^\.TP\n(\\fB.*)$", sections.get(title, ""), re.M)
        shown = {name.replace("\\-", "-") for line in lines
                 for name in re.findall(r"\\fB(\\-.*?)\\fR", line)}
        compare("man", path, shown, options)
    if shutil.which("man"):
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "orvane.1"
            file.write_text(text, encoding="utf-8")
            shown = run("man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", str(file))
        check(shown.returncode == 0 and not shown.stderr, f"man: {shown.stderr}")
    codes = set(re.findall(r"^\.B (\d+)$", sections.get("EXIT STATUS", ""), re.M))
    check(codes == exit_codes(), f"man: exit codes {sorted(codes)}")


def exit_codes():
    text = (ROOT / "host/InputError.h").read_text(encoding="utf-8")
    return set(re.findall(r"^  kExit\w+ = (\d+),", text, re.M))


def check_reference(commands):
    shown = (ROOT / "docs/command.md").read_text(encoding="utf-8")
    check(shown == page("markdown"),
          "docs/command.md is not what the command says: run scripts/docs --command")
    for path, options in commands.items():
        title = " ".join(("orvane",) + path)
        section = re.search(rf"^## `{title}`\n(.*?)(?=^## |\Z)", shown, re.M | re.S)
        check(section, f"docs/command.md: no section {title}")
        rows = re.findall(r"^\| (`-.*?) \|", section.group(1) if section else "", re.M)
        compare("docs/command.md", path,
                {name for row in rows for name in re.findall(r"`(-[\w-]+)`", row)}, options)
    for name in ("docs/command.md", "docs/host.md"):
        text = (ROOT / name).read_text(encoding="utf-8")
        section = re.search(r"^## Exit codes\n(.*?)(?=^## |\Z)", text, re.M | re.S).group(1)
        codes = set(re.findall(r"^\| (\d+) \|", section, re.M))
        check(codes == exit_codes(), f"{name}: exit codes {sorted(codes)}")


def check_capital():
    """The one default that the command does not hold itself, but takes from the platform."""
    said = re.search(r"^\| `--capital` .*default `([0-9]+)` \|$",
                     (ROOT / "docs/command.md").read_text(encoding="utf-8"), re.M)
    with tempfile.TemporaryDirectory() as folder:
        bars = pathlib.Path(folder) / "bars.csv"
        bars.write_text("datetime,open,high,low,close,volume\n2021-01-04 10:00:00,1,1,1,1,1\n"
                        "2021-01-04 10:01:00,1,1,1,1,1\n", encoding="utf-8")
        ran = run(ORVANE, "run", "-s", "sma_cross", "--bars", "bars.csv", "--report", "out",
                  folder=folder)
        report = pathlib.Path(folder) / "out/report.json"
        check(ran.returncode == 0 and report.exists(), f"the run: {ran.stderr}")
        if report.exists():
            account = json.loads(report.read_text(encoding="utf-8"))["accounts"][0]
            check(said and float(account["startBalance"]) == float(said.group(1)),
                  f"--capital: the account begins with {account['startBalance']}")


BASH_ASK = r"""
source "$1"
while IFS= read -r line; do
  IFS=$'\x1f' read -ra COMP_WORDS <<<"$line"
  if [[ $line == *$'\x1f' ]]; then COMP_WORDS+=(""); fi
  COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
  COMPREPLY=()
  _orvane
  (IFS=$'\x1f'; printf '%s\n' "${COMPREPLY[*]}")
done
"""


def bash_answers(questions, folder):
    """What bash completes each line with; a line is the words as the shell splits them."""
    script = folder / "orvane.bash"
    script.write_text(page("bash"), encoding="utf-8")
    asked = "".join("\x1f".join((ORVANE,) + question) + "\n" for question in questions)
    result = run("bash", "-c", BASH_ASK, "ask", str(script), folder=folder, text=asked)
    check(result.returncode == 0 and not result.stderr, f"bash: {result.stderr}")
    return [set(filter(None, line.split("\x1f"))) for line in result.stdout.splitlines()]


def check_bash(commands):
    modules = set(run(ORVANE, "--modules").stdout.split())
    check({"sma_cross", "print_events"} <= modules, f"--modules: {sorted(modules)}")
    check(not any(name.startswith("lib") for name in modules), f"--modules: {sorted(modules)}")
    children = {path[0] for path in commands if len(path) == 1}
    everything = {"day.csv", "day two.csv", "own.so", "run.json", "data", "orvane.bash"}
    # The words behind the program, and what they are to be completed with.
    asked = {path + ("-",): options for path, options in commands.items()}
    asked.update({
        ("",): children,
        ("ru",): {"run"},
        ("--page", ""): {"man", "bash", "zsh", "markdown"},
        ("run", "--stamp", ""): {"start", "end"},
        ("run", "--stamp", "e"): {"end"},
        ("run", "--stamp", "=", "e"): {"end"},
        ("run", "--log-level", "w"): {"warn"},
        ("run", "--timezone", "Asia/Shang"): {"Asia/Shanghai"},
        ("inspect", "--timezone", "=", "UT"): {"UTC"},
        ("sweep", "--rank", "s"): {"sharpe", "sortino", "startBalance"},
        ("sweep", "--rank", "maxDrawdown.s"): {"maxDrawdown.share"},
        ("run", "-s", ""): modules | {"own.so", "data"},
        ("run", "--strategy", "sma"): {"sma_cross"},
        ("run", "--bars", "d"): {"day.csv", "day two.csv", "data"},
        ("run", "--bars", "day.csv", "data/"): {"data/ticks.csv"},
        ("run", "--bars", "IF", "=", "day."): {"day.csv"},
        ("run", "--bars", "IF", "="): everything,
        ("run", "--report", ""): {"data"},
        ("run", "--report", "data", "run"): {"run.json"},
        ("run", "--speed", ""): set(),
        ("run", "--quiet", "run"): {"run.json"},
        ("run", ""): everything,
        ("inspect", "day.csv", "da"): {"day.csv", "day two.csv", "data"},
        ("generate", "--out", "d"): {"data"},
        ("generate", ""): set(),
    })
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for file in ("day.csv", "day two.csv", "own.so", "run.json", "data/ticks.csv"):
            (folder / file).parent.mkdir(exist_ok=True)
            (folder / file).touch()
        answers = bash_answers(asked, folder)
    check(len(answers) == len(asked), f"bash: {len(answers)} answers to {len(asked)} questions")
    for (question, expected), answer in zip(asked.items(), answers):
        check(answer == expected, f"bash: {' '.join(question)!r} is completed with "
                                  f"{sorted(answer)}, and not with {sorted(expected)}")


# `_arguments` only notes what it was asked; which command it is for stands in the name of the
# function around it.
ZSH_ASK = r"""
compdef() { : }
_arguments() { for spec in "$@"; do print -r -- "${funcstack[2]}"$'\x1f'"$spec"; done }
source "$1"
words=(orvane)
for function in ${(k)functions}; do
  case $function in
    _orvane_modules | _orvane_coded_files) ;;
    _orvane*) $function ;;
  esac
done
"""


def check_zsh(commands):
    text = page("zsh")
    if not shutil.which("zsh"):
        print("zsh is not installed: only the text of its completion is looked at")
        specs = {}
        for name, body in re.findall(r"^(_orvane[\w-]*)\(\) \{\n(.*?)^\}", text, re.M | re.S):
            specs[name] = re.findall(r"^    '(.*?)'(?= \\$|$)", body, re.M)
    else:
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "_orvane"
            file.write_text(text, encoding="utf-8")
            result = run("zsh", "-f", "-c", ZSH_ASK, "ask", str(file))
        check(result.returncode == 0 and not result.stderr, f"zsh: {result.stderr}")
        specs = {}
        for line in result.stdout.splitlines():
            if "\x1f" in line:
                name, spec = line.split("\x1f")
                specs.setdefault(name, []).append(spec)
    for path, options in commands.items():
        shown = set()
        for spec in specs.get("_".join(("_orvane",) + path), []):
            found = re.match(r"(?:\([^)]*\)|\*)(--?[\w-]+)=?\[", spec)
            if found:
                shown.add(found.group(1))
        compare("zsh", path, shown, options)


for wrong in (("--page", "fish"), ("--page",)):
    refused = run(ORVANE, *wrong)
    check(refused.returncode == 2 and "--page" in refused.stderr and not refused.stdout,
          f"{wrong}: {refused.returncode} {refused.stderr}")
every = commands_by_help()
check(len(every) >= 4, f"{len(every)} commands: the check is broken")
check({"-s", "--strategy", "--bars", "--price-tick"} <= every.get(("run",), set()),
      "run: the check does not see its options")
check_manual(every)
check_reference(every)
check_capital()
check_bash(every)
check_zsh(every)
for finding in findings:
    print(finding)
print(len(findings), "findings in", sum(map(len, every.values())), "options")
sys.exit(1 if findings else 0)
