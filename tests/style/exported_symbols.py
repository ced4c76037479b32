#!/usr/bin/env python3
"""Compares what a shared library offers with a checked-in list.

Usage: exported_symbols.py LIBRARY LIST [--write]

What counts is our own names. Weak copies of the templates of the standard library and of packages
differ between compilers and are left out, and so are inline operations, which a compiler may or
may not emit. With --write the list is written anew."""
import pathlib
import re
import subprocess
import sys

library, listed = sys.argv[1], pathlib.Path(sys.argv[2])
out = subprocess.run(["nm", "-D", "-C", "--defined-only", library],
                     capture_output=True, check=True, text=True).stdout
symbols = set()
for line in out.splitlines():
    kind, name = re.match(r"^[0-9a-f]+\s+(\S)\s+(.*)$", line).groups()
    name = name.replace("[abi:cxx11]", "")
    name = name.replace("std::__cxx11::basic_string<char, std::char_traits<char>, "
                        "std::allocator<char> >", "std::string")
    of_ours = re.match(r"(vtable for |typeinfo for |typeinfo name for |VTT for )?orvane::", name)
    if of_ours and (kind in "TDBR" or name.startswith(("vtable", "typeinfo for"))):
        symbols.add(name)

if "--write" in sys.argv[3:]:
    listed.write_text("".join(f"{name}\n" for name in sorted(symbols)), encoding="utf-8")
    print(len(symbols), "symbols written")
    sys.exit(0)
wanted = set(listed.read_text(encoding="utf-8").splitlines())
for name in sorted(symbols - wanted):
    print("offered, but not in the list:", name)
for name in sorted(wanted - symbols):
    print("in the list, but not offered:", name)
print(len(symbols), "symbols offered,", len(wanted), "listed")
sys.exit(0 if symbols == wanted else 1)
