# SPDX-License-Identifier: MIT
"""A bench that drives the real program on a display, a bus and in folders of its own.

Reading goes over the accessibility bus, acting through a real mouse and keyboard, and what came of it is confirmed in
the program's log and on the screen.
"""
