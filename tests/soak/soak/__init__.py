# SPDX-License-Identifier: MIT
"""A tester's day in short: the console is used for a long time, and what it holds is watched from outside."""
