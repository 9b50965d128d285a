# SPDX-License-Identifier: MIT
"""A sound server of a desktop's own, with one output that nobody hears."""

from bench import process
from bench.waiting import until


class SoundServer:
    def __init__(self, desktop):
        self._desktop = desktop
        self._socket = desktop.folder / "sound"
        self._child = None
        self.start()

    @property
    def environment(self):
        """What a program must have to play on it."""
        return {"PULSE_SERVER": f"unix:{self._socket}"}

    def start(self):
        self._socket.unlink(missing_ok=True)  # left behind by one that was killed
        self._child = self._desktop.start(
            ["pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--disable-shm=yes", "--exit-idle-time=-1",
             "--log-level=error", "-L", "module-null-sink sink_name=silence",
             "-L", f"module-native-protocol-unix auth-anonymous=1 socket={self._socket}"])
        until(self._socket.exists, "the sound server listens")

    def kill(self):
        self._child.kill()
        self._child.wait(5)

    def runs(self):
        return self._child.poll() is None

    def streams(self):
        """How many programs play on it."""
        listed = self._desktop.run(["env", f"PULSE_SERVER=unix:{self._socket}", "pactl", "list", "short", "sink-inputs"])
        return len(listed.splitlines())
