# SPDX-License-Identifier: MIT
"""The quantities that a process is not to hold more and more of."""

import dataclasses


@dataclasses.dataclass(frozen=True)
class Gauge:
    """A quantity that is to be flat. Growths are in its unit and in an hour."""

    id: str
    name: str
    unit: str
    bound: float  # what is called flat all the same
    visible: float  # what must be seen, or the run says nothing
    is_judged: bool = True


# Of what is counted, less than one in an hour of a hundred rounds is no leak: how many there are in a round depends a
# little on how busy the machine is.
GAUGES = (
    Gauge("memory", "private memory (written pages)", " MB", 1.0, 10.0),
    # These two have pages of files in them, which come and go with other programs that share them.
    Gauge("resident", "resident memory (RSS)", " MB", 1.0, 10.0, is_judged=False),
    Gauge("proportional", "proportional memory (PSS)", " MB", 1.0, 10.0, is_judged=False),
    Gauge("descriptors", "open descriptors", "", 1.0, 3.0),
    Gauge("threads", "threads", "", 1.0, 3.0),
    Gauge("names", "names on the session bus", "", 0.2, 1.0),
    Gauge("x-resources", "resources of the X server", "", 1.0, 10.0),
    Gauge("x-pixmaps", "pixmaps of the X server", " MB", 0.5, 5.0),
)
