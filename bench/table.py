#!/usr/bin/env python3
"""Makes a table of what orvane_bench measured: medians, with what each thing is measured against.

    table.py RESULTS.json [--write PERFORMANCE.md]

--write replaces what stands between the two marks of that file.
"""
import argparse
import json
import os
import statistics
import subprocess
import sys

BEGIN, END = "<!-- measured: begin -->", "<!-- measured: end -->"
PEERS = {"AsioStrands": "Asio's strand", "TbbQueues": "oneTBB",
         "LockFreeQueues": "a lock-free queue"}

# What a playback is measured against.
FLOORS = {"tickPlayback": "roadFloor", "tradingPlayback": "orderFloor"}


class Results:
    """The median of each benchmark's figure over its repetitions."""

    def __init__(self, path):
        with open(path, encoding="utf-8") as file:
            whole = json.load(file)
        self.context = whole["context"]
        self.runs = {}
        for run in whole["benchmarks"]:
            if run["run_type"] == "iteration" and not run.get("error_occurred"):
                self.runs.setdefault(run["run_name"], []).append(run)

    def median(self, name, key):
        """None where it was not measured."""
        for known, runs in self.runs.items():
            if known == name or known.startswith(name + "/"):
                figures = [run[key] for run in runs if key in run]
                return statistics.median(figures) if figures else None
        return None


def rate(value):
    return f"{value / 1e6:.2f} million/s" if value >= 1e6 else f"{value / 1e3:,.0f} thousand/s"


def rate_rows(results):
    rows = []
    floor = results.median("pumpFloor", "items_per_second")
    for contexts in ("1", "1000"):
        ours = results.median(f"flood<RunnerFarm>/{contexts}", "items_per_second")
        if ours is None:
            continue
        beside = [] if floor is None else [f"{ours / floor:.2f} of no queue and no thread"]
        for peer, called in PEERS.items():
            theirs = results.median(f"flood<{peer}>/{contexts}", "items_per_second")
            if theirs is not None:
                beside.append(f"{ours / theirs:.2f} of {called} ({rate(theirs)})")
        to = "one runner" if contexts == "1" else "1,000 runners by turns"
        rows.append((f"the pump alone, one producer to {to}", rate(ours), "; ".join(beside)))
    return rows


def latency_rows(results):
    rows = []
    for pause, after in (("0", "at once after the last"), ("50", "50 us after the last"),
                         ("1000", "1 ms after the last, workers asleep")):
        own = f"handOff<RunnerFarm>/{pause}"
        if results.median(own, "p50_ns") is None:
            continue
        beside = []
        for peer, called in PEERS.items():
            name = f"handOff<{peer}>/{pause}"
            if results.median(name, "p50_ns") is not None:
                beside.append(f"{called} {results.median(name, 'p50_ns') / 1e3:.1f} us "
                              f"({results.median(name, 'p99_ns') / 1e3:.1f})")
        figure = (f"{results.median(own, 'p50_ns') / 1e3:.1f} us median, "
                  f"{results.median(own, 'p99_ns') / 1e3:.1f} us at 99 %")
        rows.append((f"push to call-back, {after}", figure, "; ".join(beside)))
    return rows


def first_run(results, name):
    """What a process had when it was run right before it was measured, behind other benchmarks."""
    figure = results.median(name, "first")
    return [] if figure is None else [f"{rate(figure)} in the run right before"]


def playback_rows(results):
    rows = []
    one = results.median("tickPlayback", "items_per_second")
    many = results.median("tickPlaybackOfMany", "items_per_second")
    for name, what in (("tickPlayback", "playback, one runner, quotes"),
                       ("barPlayback", "playback, one runner, bars"),
                       ("quoteTradingPlayback",
                        "playback, an order and its fill on every tenth quote"),
                       ("tradingPlayback", "playback, an order and its fill on every bar")):
        figure = results.median(name, "items_per_second")
        if figure is not None:
            floor = FLOORS.get(name) and results.median(FLOORS[name], "items_per_second")
            beside = "" if floor is None else (
                f"{figure / floor:.2f} of the contract's locks, copies and calls alone "
                f"({rate(floor)})")
            rows.append((what, rate(figure), beside))
    whole = results.median("runFromText", "items_per_second")
    if whole is not None:
        beside = first_run(results, "runFromText")
        for floor, what in (("wholeFloor", "reading the file's numbers by `std::from_chars` on two "
                                           "cores, and the contract's locks, copies and calls "
                                           "alone, without books, times and a process"),
                            ("textFloor", "reading the numbers alone, on one core")):
            least = results.median(floor, "items_per_second")
            if least is not None:
                beside.append(f"{whole / least:.2f} of {what} ({rate(least)})")
        beside = "; ".join(beside)
        rows.append(("1,000,000 bars from CSV through a 10/30 crossover that trades, the whole "
                     "process", rate(whole), beside))
    for name, what in (("runFromTextWithoutOrders", "the same process without an order"),
                       ("runFromCache", "the same process, with orders, from the binary cache")):
        figure = results.median(name, "items_per_second")
        if figure is not None:
            beside = first_run(results, name)
            if whole is not None:
                beside.insert(0, f"{figure / whole:.2f} of the row above from CSV")
            rows.append((what, rate(figure), "; ".join(beside)))
    if many is not None:
        beside = "" if one is None else f"{many / one:.2f} of one runner"
        rows.append(("playback, 64 runners, quotes, call-backs of all", rate(many), beside))
    return rows


def other_rows(results):
    rows = []
    road = results.median("quoteToStrategy/10000", "cpu_time")
    if road is not None:
        count = results.runs[next(n for n in results.runs if n.startswith("quoteToStrategy/10000"))]
        each = statistics.median(run["cpu_time"] for run in count) / 10000
        rows.append(("a quote of ten levels, service to strategy, processor time of all threads",
                     f"{each:.0f} ns", ""))
    for name, key, what, unit in (
            ("startAndStop", "start_us", "start to `onStart`, module loaded", "us"),
            ("startAndStop", "stop_us", "stop to the status Stopped", "us"),
            ("idleRunners", "MiB", "10,000 idle runners", "MiB"),
            ("pendingQuotes", "of_record", "a pending quote, in sizes of its record", "")):
        figure = results.median(name, key)
        if figure is not None:
            rows.append((what, f"{figure:.2f} {unit}".strip(), ""))
    return rows


def machine(results):
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True, check=True)
    load = ", ".join(f"{value:.1f}" for value in results.context["load_avg"])
    return (f"{results.context['date'][:10]}; {results.context['num_cpus']} cores "
            f"({os.uname().machine}) of {results.context['mhz_per_cpu']} MHz, load before {load}; "
            f"{compiler.stdout.splitlines()[0]}, preset `release`")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("results")
    parser.add_argument("--write", metavar="FILE")
    arguments = parser.parse_args()
    results = Results(arguments.results)
    rows = (rate_rows(results) + latency_rows(results) + playback_rows(results)
            + other_rows(results))
    if not rows:
        sys.exit("table.py: nothing of the table was measured")
    table = ["| what | figure | in the same run |", "|---|---|---|"]
    table += [f"| {what} | {figure} | {beside} |" for what, figure, beside in rows]
    text = machine(results) + ".\n\n" + "\n".join(table) + "\n"
    print("\n" + text)
    if arguments.write:
        with open(arguments.write, encoding="utf-8") as file:
            whole = file.read()
        before, _, rest = whole.partition(BEGIN)
        _, found, after = rest.partition(END)
        if not found:
            sys.exit(f"table.py: {arguments.write} has no place between {BEGIN} and {END}")
        with open(arguments.write, "w", encoding="utf-8") as file:
            file.write(f"{before}{BEGIN}\n{text}{END}{after}")


if __name__ == "__main__":
    main()
