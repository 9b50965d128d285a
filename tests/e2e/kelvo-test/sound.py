# SPDX-License-Identifier: MIT
"""A sound server of a test's own."""
import subprocess
import time
from pathlib import Path

from program import PATIENCE


class Sound:
    """A sound server with one sink that nobody hears."""

    def __init__(self, folder):
        self.address = f"unix:{folder}/sound"
        self.process = subprocess.Popen(
            ["pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--disable-shm=yes", "--exit-idle-time=-1",
             "--log-level=error", "-L", "module-null-sink sink_name=silence",
             "-L", f"module-native-protocol-unix auth-anonymous=1 socket={folder}/sound"], stderr=subprocess.DEVNULL)
        deadline = time.monotonic() + PATIENCE
        while not Path(folder, "sound").exists():
            if time.monotonic() > deadline:
                raise AssertionError("the sound server does not start")
            time.sleep(0.05)

    def end(self):
        self.process.kill()
        self.process.wait()
