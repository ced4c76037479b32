#!/usr/bin/env python3
"""Loads libraries into this process while another thread is there, as a host with plugins does.

Usage: load.py LIBRARY...: what a library has of each thread must fit into what the process keeps
for libraries that come later."""
import ctypes
import sys
import threading

goes_on = threading.Event()
other = threading.Thread(target=goes_on.wait)
other.start()
try:
    for library in sys.argv[1:]:
        ctypes.CDLL(library)
        print("loaded", library)
finally:
    goes_on.set()
    other.join()
