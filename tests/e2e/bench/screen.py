# SPDX-License-Identifier: MIT
"""What is on the screen: pictures of the root window, also of what lies inside native video windows."""

import re
import subprocess


class Screen:
    def __init__(self, desktop):
        self._desktop = desktop

    def shoot(self, path, area=None):
        """A PNG file of the area (x, y, width, height), of everything by default. The pointer is not in it."""
        self._desktop.run(["import", "-silent", "-window", "root", *_crop(area), str(path)])
        return path

    def _measure(self, area, text):
        out = self._desktop.run(["import", "-silent", "-window", "root", *_crop(area), "-depth", "8", "-format", text,
                                 "info:"])
        return [float(part) for part in out.split()]

    def pixel(self, x, y):
        """(red, green, blue), 0..255."""
        return self.mean((x, y, 1, 1))

    def mean(self, area):
        """Mean colour of an area, 0..255 per channel."""
        values = self._measure(area, "%[fx:mean.r*255] %[fx:mean.g*255] %[fx:mean.b*255]")
        return tuple(round(value) for value in values)

    def deviation(self, area):
        """Standard deviation of the brightness, 0..255: 0 for a plain area."""
        return self._measure(area, "%[fx:standard_deviation*255]")[0]

    def has_colour(self, area, colour, tolerance=40):
        """How many pixels of the area come near the colour."""
        out = self._desktop.run(["import", "-silent", "-window", "root", *_crop(area), "-depth", "8", "-format", "%c",
                                 "histogram:info:"])
        count = 0
        for number, red, green, blue in re.findall(r"(\d+): \((\d+),(\d+),(\d+)", out):
            if all(abs(int(have) - want) <= tolerance for have, want in zip((red, green, blue), colour)):
                count += int(number)
        return count

    def difference(self, first, second):
        """Number of pixels in which two picture files differ."""
        done = subprocess.run(["compare", "-metric", "AE", "-fuzz", "5%", str(first), str(second), "null:"],
                              env=self._desktop.env, capture_output=True, timeout=20, check=False)
        return int(float(done.stderr.split()[0]))


def _crop(area):
    if area is None:
        return []
    x, y, width, height = area
    return ["-crop", f"{width}x{height}+{x}+{y}", "+repage"]
