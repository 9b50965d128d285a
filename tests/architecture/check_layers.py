#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Every test belongs to one layer: it has the label of exactly one, and its name begins with it, so that
"ctest -L unit" and "ctest -R unit-" mean the same tests.

Exit status 1 and one line for each test that does not.
"""
import argparse
import json
import subprocess
import sys

LAYERS = ("unit", "model", "contract", "integration", "architecture", "build", "scripts", "mutation", "e2e",
          "chaos", "faults", "kills", "soak")
# Not a layer, but what the tests of several stand on: what makes their media.
SUPPORT = "support"


def layer_faults(tests):
    """Faults of the tests, given as (name, labels)."""
    faults = []
    for name, labels in tests:
        layers = [label for label in labels if label in LAYERS or label == SUPPORT]
        if len(layers) != 1:
            faults.append(f"{name}: has the labels of {len(layers)} layers ({', '.join(layers) or 'none'})")
        elif layers[0] != SUPPORT and name.split("-")[0] != layers[0]:
            faults.append(f"{name}: its label says {layers[0]}, its name does not")
    found = {label for _, labels in tests for label in labels}
    return faults + [f"{layer}: no test has this label" for layer in LAYERS if layer not in found]


def tests_of(ctest, build):
    listing = subprocess.run([ctest, "--test-dir", build, "--show-only=json-v1"], check=True, capture_output=True)
    for test in json.loads(listing.stdout)["tests"]:
        labels = [prop["value"] for prop in test["properties"] if prop["name"] == "LABELS"]
        yield test["name"], labels[0] if labels else []


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--ctest", required=True)
    parser.add_argument("--build", required=True)
    arguments = parser.parse_args()
    faults = layer_faults(list(tests_of(arguments.ctest, arguments.build)))
    print("\n".join(faults) or "Every test belongs to one layer.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
