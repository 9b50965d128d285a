# SPDX-License-Identifier: MIT
"""What is on the screen: pictures of the root window, also of what lies inside native video windows.

They are taken and counted within this process: scenarios look many times a second, and a tool that is started each
time would take a fifth of the processor time of all of them.
"""

import io

from PIL import Image, ImageChops, ImageGrab

_SET = 255  # what a mask has where it holds
_ALIKE = 13  # of 255: what a channel may differ by and still be the same colour


class Picture:
    """The screen, or a window, at one moment."""

    def __init__(self, image):
        self._image = image.convert("RGB")

    def count(self, area, colour):
        """Number of pixels of the area (x, y, width, height) that have such a colour."""
        return _ones(colour(*_cut(self._image, area).split()))

    def share(self, colour):
        """Which part of all pixels has such a colour, 0..1."""
        width, height = self._image.size
        return self.count((0, 0, width, height), colour) / (width * height)

    def difference(self, other):
        """Number of pixels that have clearly another colour in the other picture, which has the same size."""
        apart = ImageChops.difference(self._image, other._image)  # pylint: disable=protected-access
        return _ones(_above(_lightest(*apart.split()), _ALIKE))

    def save(self, path, area=None):
        """As a PNG file: the area (x, y, width, height), or everything."""
        (_cut(self._image, area) if area else self._image).save(path)


# Colours: of three channels, the mask of those pixels that are meant.

def dark(red, green, blue):
    """The colour of texts."""
    return _below(_lightest(red, green, blue), 110)


def strong_red(red, green, blue):
    """Red texts and red videos, smoothed edges included."""
    return ImageChops.darker(_above(red, 170), _below(ImageChops.lighter(green, blue), 90))


def bright_but_not_red(_, green, blue):
    """The edges of a red caption on black are all between the two."""
    return _above(ImageChops.lighter(green, blue), 110)


class Screen:
    """The display of a desktop."""

    def __init__(self, desktop):
        self._desktop = desktop

    def picture(self):
        """What is on the whole screen now, without the pointer."""
        return Picture(ImageGrab.grab(xdisplay=self._desktop.env["DISPLAY"]))

    def picture_of(self, window):
        """What is in a window and the windows inside it: also where no screen is to be seen."""
        found = self._desktop.run_bytes(["import", "-silent", "-window", str(window), "ppm:-"])
        return Picture(Image.open(io.BytesIO(found)))

    def shoot(self, path, area=None):
        """A PNG file of the area (x, y, width, height), of everything by default."""
        self.picture().save(path, area)


def _cut(image, area):
    x, y, width, height = area
    return image.crop((x, y, x + width, y + height))


def _lightest(red, green, blue):
    return ImageChops.lighter(red, ImageChops.lighter(green, blue))


def _above(channel, limit):
    return channel.point(lambda value: _SET if value > limit else 0)


def _below(channel, limit):
    return channel.point(lambda value: _SET if value < limit else 0)


def _ones(mask):
    return mask.histogram()[_SET]
