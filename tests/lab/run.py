#!/usr/bin/env python3
"""Runs one set of scenarios: run.py --programs DIRECTORY SET [PATTERN]

A set is a module beside this file; its functions named scenario… run in order on the same hosts,
and on fresh ones after a failure. Exits with 77 where no lab can be made, unless CI is set.
"""

import argparse
import importlib
import os
import sys
import time
import traceback

import lab


def run(scenarios, programs):
    failed = []
    while scenarios:
        with lab.Lab(programs) as hosts:
            while scenarios:
                scenario = scenarios.pop(0)
                print(f"{scenario.__name__}: {scenario.__doc__}", flush=True)
                start = time.monotonic()
                try:
                    scenario(hosts)
                    hosts.tidy()
                except Exception as error:  # whatever it is, the others still run
                    failed.append(scenario.__name__)
                    print(f"FAILED after {time.monotonic() - start:.1f} s: {error}")
                    traceback.print_exc(file=sys.stdout)
                    hosts.report()
                    break
                print(f"passed in {time.monotonic() - start:.1f} s", flush=True)
    return failed


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("set")
    parser.add_argument("pattern", nargs="?", default="")
    parser.add_argument("--programs", required=True)
    arguments = parser.parse_args()
    reason = lab.why_not_here()
    if reason:
        print(reason)
        return 1 if os.environ.get("CI") == "true" else 77
    module = importlib.import_module(arguments.set)
    scenarios = [value for name, value in vars(module).items()
                 if name.startswith("scenario") and arguments.pattern in name]
    if not scenarios:
        parser.error("no such scenario")
    failed = run(scenarios, arguments.programs)
    print("failed: " + ", ".join(failed) if failed else "all passed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
