#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""run-scenario.py FILE [TEST...]: runs the tests of a scenario file.

Environment: KELVO_E2E_PROGRAM (the console), KELVO_E2E_TEST_PLUGINS (folder of the back ends for tests), KELVO_E2E_MEDIA
(folder for the generated media), KELVO_E2E_OUTPUT (folder for what failed tests leave), KELVO_E2E_SLOWNESS (factor on
all limits); CTest also sets KELVO_E2E_LEAK_OPTIONS and KELVO_E2E_GLIB_TABLES, for scenarios that look for leaks.
"""

import sys

sys.dont_write_bytecode = True  # the source folder stays clean
from bench import scenario  # noqa: E402

if __name__ == "__main__":
    sys.exit(scenario.main(sys.argv[1:]))
