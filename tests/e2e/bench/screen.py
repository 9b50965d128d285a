# SPDX-License-Identifier: MIT
"""What is on the screen: pictures of the root window, also of what lies inside native video windows."""

import subprocess


class Picture:
    """The screen at one moment, for questions about single pixels."""

    def __init__(self, width, raw):
        self._width = width
        self._raw = raw

    def count(self, area, matches):
        """Number of pixels of the area (x, y, width, height) for which matches(red, green, blue) holds."""
        x, y, width, height = area
        found = 0
        for row in range(y, y + height):
            at = 3 * (row * self._width + x)
            line = self._raw[at:at + 3 * width]
            found += sum(map(matches, line[0::3], line[1::3], line[2::3]))
        return found


def dark(red, green, blue):
    """The colour of texts."""
    return red < 110 and green < 110 and blue < 110


def strong_red(red, green, blue):
    """Red texts and red videos, smoothed edges included."""
    return red > 170 and green < 90 and blue < 90


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

    def picture(self):
        """What is on the whole screen now."""
        raw = self._desktop.run_bytes(["import", "-silent", "-window", "root", "-depth", "8", "rgb:-"])
        return Picture(self._desktop.size[0], raw)

    def share(self, window, matches):
        """Which part of a window's pixels matches, 0..1, what lies inside it included: where no screen is to be seen."""
        raw = self._desktop.run_bytes(["import", "-silent", "-window", str(window), "-depth", "8", "rgb:-"])
        return sum(map(matches, raw[0::3], raw[1::3], raw[2::3])) / (len(raw) / 3)

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
