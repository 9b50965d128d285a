# SPDX-License-Identifier: MIT
"""Players that are no part of the console."""

import os
import shutil

_MPV_SCRIPT = "/usr/lib/mpv-mpris/mpris.so"
NO_MPV = "mpv or its script for MPRIS is not installed"


def have_mpv():
    return bool(shutil.which("mpv")) and os.path.exists(_MPV_SCRIPT)


def start_mpv(desktop, *media):
    """A silent one that plays these media, or nothing yet."""
    return desktop.start(["mpv", "--no-config", f"--script={_MPV_SCRIPT}", "--ao=null", "--vo=null", "--idle=yes",
                          "--no-terminal", *media])
