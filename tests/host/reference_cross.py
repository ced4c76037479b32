"""Compares the trades of `sma_cross` with an implementation of its definition that shares nothing
with it: closes and opens are read straight from the file's text, means are exact fractions.

    reference_cross.py ORVANE MODULE DATA_FOLDER SCRATCH_FOLDER
"""
import csv
import glob
import gzip
import io
import json
import os
import subprocess
import sys
from decimal import Decimal

START = Decimal(1000000)

# File, or pattern of files that make one series, column of the open, column of the close, what
# prices are divided by, whether the newest row comes first, the price tick that binary noise in the
# file is cleaned to, lines above the rows.
FILES = [
    ("bars/minute/cffex_if_hot_2010_2022_5min.csv.gz", 2, 5, 1, False, "0.2", 1),
    ("bars/daily/aapl_1998_2021_day.csv", 1, 4, 10000, False, None, 0),
    ("bars/daily/spy_1998_2021_day.csv", 1, 4, 10000, False, None, 0),
    ("bars/daily/ibm_1998_2021_day.csv", 1, 4, 10000, False, None, 0),
    ("bars/daily/btcusd_coinbase_2014_2018_day.csv", 1, 4, 1, False, None, 0),
    ("bars/daily/cffex_ic_hot_2015_2021_day.csv", 1, 4, 1, False, None, 1),
    ("bars/daily/csi300_2013_2018_day.csv", 4, 1, 1, False, None, 1),
    ("bars/daily/sse_600000_2014_2020_day.csv", 3, 6, 1, True, None, 1),
    ("bars/daily/eurusd_fxcm_2007_2018_day_bidask.csv", 1, 4, 1, False, None, 0),
    ("bars/minute/bb_20131206_20140102_1min.csv", 1, 2, 1, False, None, 1),
    ("bars/minute/cffex_if_20131206_20131209_1min.csv", 1, 2, 1, False, None, 1),
    ("bars/minute/cffex_if_20131206_20131209_5sec.csv", 1, 2, 1, False, None, 1),
    ("bars/minute/sse_composite_2017_1min.csv.gz", 1, 4, 1, False, None, 1),
    ("bars/minute/shfe_rb2401_2023_1min.csv", 3, 4, 1, True, None, 1),
    ("bars/minute/es_201312/*_trade.csv", 1, 4, 1, False, None, 0),
    ("bars/minute/spy/*_trade.csv", 1, 4, 10000, False, None, 0),
    ("bars/minute/btcusd_coinbase/*_trade.csv", 1, 4, 1, False, None, 0),
]
# A zone with summer time, in which days and weeks differ in length, must change nothing.
ZONES = {"bars/daily/aapl_1998_2021_day.csv": "America/New_York",
         "bars/minute/spy/*_trade.csv": "America/New_York"}
RUNS = [(5, 20, 1, "longOnly"), (10, 30, 3, "longShort"), (1, 2, 100, "longShort"),
        (2, 3, 7, "longOnly")]


def rows_of(paths, newest_first, lines_above):
    rows = []
    for path in paths:
        raw = open(path, "rb").read()
        if path.endswith(".gz"):
            raw = gzip.decompress(raw)
        lines = [row for row in csv.reader(io.StringIO(raw.decode("utf-8-sig"))) if row]
        rows += lines[lines_above:]
    return rows[::-1] if newest_first else rows


def price(text, divisor, tick):
    value = Decimal(text) / divisor
    if tick is None:
        return value
    return (value / Decimal(tick)).quantize(Decimal(1)) * Decimal(tick)


def expected(opens, closes, fast, slow, volume, mode):
    """The fills, as (side, price, volume), and the final value."""
    fills, cash, held, last = [], START, 0, 0
    fast_sum = slow_sum = Decimal(0)
    for i, close in enumerate(closes):
        fast_sum += close - (closes[i - fast] if i >= fast else 0)
        slow_sum += close - (closes[i - slow] if i >= slow else 0)
        if i + 1 < slow:
            continue
        difference = fast_sum * slow - slow_sum * fast
        if difference == 0:
            continue
        sign = 1 if difference > 0 else -1
        crossed = last != 0 and sign != last
        last = sign
        if not crossed or i + 1 == len(closes):
            continue
        deals = []
        if sign > 0:
            if held < 0:
                deals.append(-held)
            if held <= 0:
                deals.append(volume)
        else:
            if held > 0:
                deals.append(-held)
            if held >= 0 and mode == "longShort":
                deals.append(-volume)
        for deal in deals:
            cash -= deal * opens[i + 1]
            held += deal
            fills.append(("buy" if deal > 0 else "sell", opens[i + 1], abs(deal)))
    return fills, cash + held * closes[-1]


def played(orvane, module, bars, scratch, divisor, zone, fast, slow, volume, mode):
    scale = ["--price-scale", str(divisor)] if divisor != 1 else []
    scale += ["--timezone", zone] if zone else []
    params = {"fast": fast, "slow": slow, "volume": volume, "mode": mode}
    subprocess.run(
        [orvane, "run", "--strategy", module, "--bars", *bars, "--params", json.dumps(params),
         *scale, "--report", scratch, "--quiet", "--no-digest", "--strategy-log-level", "off"],
        check=True)
    with open(os.path.join(scratch, "trades.csv"), newline="") as file:
        fills = [(row["side"], Decimal(row["price"]), Decimal(row["volume"]))
                 for row in csv.DictReader(file)]
    with open(os.path.join(scratch, "report.json")) as file:
        report = json.load(file, parse_float=Decimal, parse_int=Decimal)
    runner = report["runners"][0]
    final = runner["trading"]["figures"]["finalEquity"] if runner["trading"] else START
    return fills, final


def main():
    orvane, module, data, scratch = sys.argv[1:]
    compared = failed = 0
    for name, open_at, close_at, divisor, newest_first, tick, above in FILES:
        paths = sorted(glob.glob(os.path.join(data, name)))
        rows = rows_of(paths, newest_first, above)
        bars = [f"ONE={path}" for path in paths]
        opens = [price(row[open_at], divisor, tick) for row in rows]
        closes = [price(row[close_at], divisor, tick) for row in rows]
        for fast, slow, volume, mode in RUNS:
            want, want_final = expected(opens, closes, fast, slow, volume, mode)
            got, got_final = played(orvane, module, bars, scratch, divisor, ZONES.get(name), fast,
                                    slow, volume, mode)
            same = want == got and want_final == got_final
            first = next((i for i, pair in enumerate(zip(want, got)) if pair[0] != pair[1]), None)
            print(f"{'same' if same else 'DIFFERS'} {name} {fast}/{slow} x {volume} {mode}: "
                  f"{len(want)} fills, final {want_final}"
                  + ("" if same else f"; got {len(got)} fills, final {got_final}, "
                     f"first difference at fill {first}"))
            compared += len(want)
            failed += not same
    print(f"{compared} fills compared, {failed} runs differ")
    return 1 if failed or compared < 1000 else 0


if __name__ == "__main__":
    sys.exit(main())
