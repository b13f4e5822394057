#!/usr/bin/env python3
"""Runs one set of scenarios: run.py --programs DIRECTORY SET [PATTERN]

A set is a module beside this file; its functions named scenario… run in order on the same hosts,
and on fresh ones after a failure. What came too late may be the machine's doing: such a scenario
gets a second try on fresh hosts, and the last line names it. What is wrong is wrong at once. Exits
with 77 where no lab can be made, unless CI is set.
"""

import argparse
import importlib
import os
import sys
import time
import traceback

import lab


def run(scenarios, programs):
    failed, late = [], []
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
                    if isinstance(error, lab.TooLate) and scenario not in late:
                        late.append(scenario)
                        scenarios.insert(0, scenario)
                    else:
                        failed.append(scenario.__name__)
                    print(f"FAILED after {time.monotonic() - start:.1f} s: {error}")
                    traceback.print_exc(file=sys.stdout)
                    hosts.report()
                    break
                print(f"passed in {time.monotonic() - start:.1f} s", flush=True)
    return failed, [scenario.__name__ for scenario in late]


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
    failed, late = run(scenarios, arguments.programs)
    print("failed: " + ", ".join(failed) if failed else "all passed")
    if late:
        print("tried twice, being late: " + ", ".join(late))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
