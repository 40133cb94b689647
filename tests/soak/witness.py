#!/usr/bin/env python3
"""Sleeps on one processor, before all other programs, and says when it woke late: then the machine stood still.

usage: witness.py PROCESSOR      prints the counter in ns and the milliseconds for every late wake-up, until it is ended
"""
import os
import sys
import time

NAP_MS, LATE_MS = 2, 5

os.sched_setaffinity(0, {int(sys.argv[1])})
os.sched_setscheduler(0, os.SCHED_RR, os.sched_param(1))
now = lambda: time.clock_gettime_ns(time.CLOCK_MONOTONIC_RAW)       # the device's clock
while True:
    due = now() + NAP_MS * 1_000_000
    time.sleep(NAP_MS / 1000)
    woken = now()
    if woken - due > LATE_MS * 1_000_000:
        print(woken, (woken - due) / 1e6, flush=True)
