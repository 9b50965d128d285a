# SPDX-License-Identifier: MIT
"""A renderer of the network, driven from the console's own buttons. The devices are started by run-upnp-peers.sh."""

import os
import socket
import unittest

from bench import media, players
from bench.scenario import Scenario
from bench.waiting import holds, until

RENDERER = "Test renderer"  # as run-upnp-peers.sh names it
DEVICE_TYPE = "urn:schemas-upnp-org:device:MediaRenderer:1"


def answers(tries=20):
    """Whether a renderer answers a search on the loopback interface, where multicast may be forbidden."""
    question = (f"M-SEARCH * HTTP/1.1\r\nHOST: 239.255.255.250:1900\r\nMAN: \"ssdp:discover\"\r\nMX: 1\r\n"
                f"ST: {DEVICE_TYPE}\r\n\r\n")
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as searcher:
        searcher.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, socket.inet_aton("127.0.0.1"))
        searcher.bind(("127.0.0.1", 0))
        searcher.settimeout(1.5)
        for _ in range(tries):
            try:
                searcher.sendto(question.encode(), ("239.255.255.250", 1900))
                if searcher.recv(4096):
                    return True
            except TimeoutError:
                continue
            except OSError:
                return False
    return False


def setUpModule():  # noqa: N802
    missing = os.environ.get("KELVO_TEST_UPNP_MISSING", "run-upnp-peers.sh did not start this")
    if missing:
        raise unittest.SkipTest(missing)
    if not answers():
        raise unittest.SkipTest("no device of the loopback interface answers: multicast does not work here")


class NetworkRenderer(Scenario):
    def start_console(self, plugins):
        (self.desktop.home / "qkelvo-gui-uris.txt").write_text(media.url("long.mp3") + "\n")
        return self.start(env={"KELVO_PLUGINS": plugins,
                               "KELVO_UPNP_INTERFACE": os.environ["KELVO_UPNP_INTERFACE"]})

    def renderers(self, console):
        return console.combos()[0].find("list", showing=False).rows()

    def wait_renderer(self, console, name):
        until(lambda: name in self.renderers(console), lambda: f"{name} among {self.renderers(console)}", 20)

    def choose(self, console, name):
        console.user.choose_in_combo(console.combos()[0], name)
        until(lambda: console.combos()[0].name() == name, f"{name} is the current renderer")

    def test_it_is_driven_by_the_console(self):
        console = self.start_console("simulator,upnp.so")
        self.wait_renderer(console, RENDERER)
        self.choose(console, RENDERER)
        console.play_uri(media.url("long.mp3"))
        console.wait_button("Pause", 20)
        console.wait_position(lambda at: at >= 1, "has begun to move")
        self.assertEqual(console.times()[1], 60)
        before = self.pause(console)
        console.press("Seek >")
        console.wait_position(lambda at: at >= before + 9, "jumps ahead")
        console.press("Resume")
        console.wait_button("Pause")
        console.wait_position(lambda at: at >= before + 11, "goes on from there")
        console.press("Stop")
        console.wait_button("Play")
        console.wait_position(lambda at: at == 0, "is 0")
        self.assertEqual(console.dialogs(), [])

    def pause(self, console):
        """Position at which it rests."""
        console.press("Pause")
        console.wait_button("Resume")
        before = console.position()
        holds(lambda: console.position() - before <= 1 and console.has_button("Resume"), "it rests", 1.5)
        return console.position()

    @unittest.skipUnless(players.have_mpv(), players.NO_MPV)
    def test_three_families_in_one_list(self):
        players.start_mpv(self.desktop)
        console = self.start_console("gst-renderer.so,mpris.so,upnp.so")
        for name in ("KelvoGstRenderer", "mpv", RENDERER):
            self.wait_renderer(console, name)
        console.user.resize(*self.screen_size)
        console.user.click(console.combos()[0], wait=False)
        box = console.combos()[0].wait_find("list", showing=True)
        self.assertCountEqual(box.rows(), ["KelvoGstRenderer", "mpv", RENDERER])
        console.screen.shoot(self.output("-list.png"))
        console.user.leave_menus()
        for name in ("mpv", RENDERER, "KelvoGstRenderer"):
            self.choose(console, name)
        self.assertEqual(console.dialogs(), [])
