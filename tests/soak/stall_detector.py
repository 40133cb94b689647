#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Sleeps on one processor at real-time priority and reports late wake-ups: the machine stalled then.

usage: stall_detector.py PROCESSOR      prints the clock in ns and the delay in ms of each, until terminated
"""
import os
import sys
import time

SLEEP_MS, LATE_MS = 2, 5

os.sched_setaffinity(0, {int(sys.argv[1])})
os.sched_setscheduler(0, os.SCHED_RR, os.sched_param(1))
now = lambda: time.clock_gettime_ns(time.CLOCK_MONOTONIC_RAW)  # the device's clock
while True:
    due = now() + SLEEP_MS * 1_000_000
    time.sleep(SLEEP_MS / 1000)
    woken = now()
    if woken - due > LATE_MS * 1_000_000:
        print(woken, (woken - due) / 1e6, flush=True)
