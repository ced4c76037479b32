"""What the style checks share: the files of the tree, and how a check reports and ends."""
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
SKIPPED = {"build", "install", ".git"}


def files(*suffixes, under=""):
    """The tree's files with one of these suffixes: what git tracks or would track, where there is
    git, else everything outside the build folders. Sorted, as paths relative to the root."""
    try:
        listed = subprocess.run(
            ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
            cwd=ROOT, capture_output=True, check=True).stdout.decode().split("\0")
        paths = [pathlib.PurePosixPath(name) for name in listed if name]
    except (OSError, subprocess.CalledProcessError):
        paths = [pathlib.PurePosixPath(path.relative_to(ROOT).as_posix())
                 for path in ROOT.rglob("*") if path.is_file()]
    chosen = [path for path in set(paths)
              if path.parts[0] not in SKIPPED and (ROOT / path).is_file()
              and str(path).startswith(under)
              and (not suffixes or path.suffix in suffixes or path.name in suffixes)]
    if not chosen:
        sys.exit(f"no file found for {suffixes} under \"{under}\": the check is broken")
    return sorted(chosen)


def read(path):
    return (ROOT / path).read_text(encoding="utf-8")


def finish(findings, looked_at):
    """Prints what was found and ends the process: 0 if that is nothing."""
    for finding in findings:
        print(finding)
    print(f"{len(findings)} findings in {looked_at} files")
    sys.exit(1 if findings else 0)
