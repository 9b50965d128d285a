#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Media renderers of a UPnP network that play nothing: any number of them at one HTTP server on the loopback interface.

Prints its port and serves /N/device.xml for every number N until its standard input ends. Somebody else announces them.
"""

import asyncio
import re
import sys
import time
from xml.sax.saxutils import escape

AVT, RC = "AVTransport", "RenderingControl"
ACTIONS = {AVT: ("SetAVTransportURI", "Play", "Pause", "Stop", "Seek", "GetTransportInfo", "GetPositionInfo",
                 "GetMediaInfo"), RC: ("GetVolume", "SetVolume", "GetMute", "SetMute")}
AFTER = {"Play": "PLAYING", "Pause": "PAUSED_PLAYBACK", "Stop": "STOPPED", "SetAVTransportURI": "STOPPED"}
DURATION = "0:10:00"
TASKS = set()  # the loop itself does not keep them


def begin(coroutine):
    task = asyncio.get_running_loop().create_task(asyncio.wait_for(coroutine, 5))
    TASKS.add(task)
    task.add_done_callback(TASKS.discard)


def service(number, name):
    return (f"<service><serviceType>urn:schemas-upnp-org:service:{name}:1</serviceType>"
            f"<serviceId>urn:upnp-org:serviceId:{name}</serviceId><SCPDURL>/{number}/{name}.xml</SCPDURL>"
            f"<controlURL>/{number}/{name}/control</controlURL><eventSubURL>/{number}/{name}/event</eventSubURL></service>")


def description(number):
    return ('<?xml version="1.0"?><root xmlns="urn:schemas-upnp-org:device-1-0"><specVersion><major>1</major>'
            "<minor>0</minor></specVersion><device><deviceType>urn:schemas-upnp-org:device:MediaRenderer:1</deviceType>"
            f"<friendlyName>Pretended {number}</friendlyName><manufacturer>Nobody</manufacturer>"
            f"<modelName>Pretended</modelName><UDN>uuid:pretended-{number}</UDN><serviceList>"
            f"{service(number, AVT)}{service(number, RC)}</serviceList></device></root>")


def actions(name):
    listed = "".join(f"<action><name>{action}</name></action>" for action in ACTIONS[name])
    return ('<?xml version="1.0"?><scpd xmlns="urn:schemas-upnp-org:service-1-0"><specVersion><major>1</major>'
            f"<minor>0</minor></specVersion><actionList>{listed}</actionList><serviceStateTable>"
            '<stateVariable sendEvents="yes"><name>LastChange</name><dataType>string</dataType></stateVariable>'
            '<stateVariable sendEvents="no"><name>Volume</name><dataType>ui2</dataType><allowedValueRange><minimum>0'
            "</minimum><maximum>100</maximum></allowedValueRange></stateVariable></serviceStateTable></scpd>")


class Device:
    def __init__(self, number):
        self.number = number
        self.state, self.uri, self.volume = "NO_MEDIA_PRESENT", "", "50"
        self.started = time.monotonic()
        self.listeners = {}  # sid: [callback, service, next number]

    def answer(self, action, body):
        """The values of an action's response."""
        if action == "SetAVTransportURI":
            self.uri = re.search(r"<CurrentURI[^>]*>(.*?)</CurrentURI>", body, re.S)[1]
        elif action == "SetVolume":
            self.volume = re.search(r"<DesiredVolume[^>]*>(.*?)</", body)[1]
        if action in AFTER:
            self.state = AFTER[action]
            for sid in list(self.listeners):
                begin(self.tell(sid))
        seconds = int(time.monotonic() - self.started) % 500
        place = f"0:{seconds // 60:02}:{seconds % 60:02}"
        return {"GetTransportInfo": {"CurrentTransportState": self.state, "CurrentTransportStatus": "OK",
                                     "CurrentSpeed": "1"},
                "GetPositionInfo": {"Track": "1", "TrackDuration": DURATION, "TrackMetaData": "", "TrackURI": self.uri,
                                    "RelTime": place, "AbsTime": place, "RelCount": "0", "AbsCount": "0"},
                "GetMediaInfo": {"NrTracks": "1", "MediaDuration": DURATION, "CurrentURI": self.uri,
                                 "CurrentURIMetaData": ""},
                "GetVolume": {"CurrentVolume": self.volume}, "GetMute": {"CurrentMute": "0"}}.get(action, {})

    def subscribe(self, name, headers):
        sid = headers.get("sid", f"uuid:{self.number}-{name}-{time.monotonic_ns()}")
        if sid not in self.listeners:
            self.listeners[sid] = [headers.get("callback", "").strip("<>"), name, 0]
            # After the answer, without which nobody knows the id.
            asyncio.get_running_loop().call_later(0.02, lambda: begin(self.tell(sid)))
        return sid

    async def tell(self, sid):
        callback, name, number = self.listeners.get(sid, ("", "", 0))
        place = re.match(r"http://([^:/]+):(\d+)(/.*)", callback)
        if not place:
            return
        self.listeners[sid][2] += 1
        values = f'<TransportState val="{self.state}"/>' if name == AVT else f'<Volume channel="Master" val="{self.volume}"/>'
        space = "AVT" if name == AVT else "RCS"
        change = (f'<Event xmlns="urn:schemas-upnp-org:metadata-1-0/{space}/"><InstanceID val="0">{values}</InstanceID>'
                  "</Event>")
        body = ('<e:propertyset xmlns:e="urn:schemas-upnp-org:event-1-0"><e:property><LastChange>'
                f"{escape(change)}</LastChange></e:property></e:propertyset>")
        try:
            reader, writer = await asyncio.open_connection(place[1], int(place[2]))
            writer.write((f"NOTIFY {place[3]} HTTP/1.1\r\nHOST: {place[1]}:{place[2]}\r\nCONTENT-TYPE: text/xml\r\n"
                          f"NT: upnp:event\r\nNTS: upnp:propchange\r\nSID: {sid}\r\nSEQ: {number}\r\n"
                          f"CONTENT-LENGTH: {len(body)}\r\nCONNECTION: close\r\n\r\n{body}").encode())
            await reader.read()
            writer.close()
        except (OSError, asyncio.CancelledError):
            self.listeners.pop(sid, None)  # gone without a word


DEVICES = {}


def respond(method, path, headers, body):
    """(headers, body) of the response to a request."""
    _, number, rest = path.split("/", 2)
    device = DEVICES.setdefault(number, Device(number))
    name = rest.split("/")[0].removesuffix(".xml")
    if method == "SUBSCRIBE":
        return f"SID: {device.subscribe(name, headers)}\r\nTIMEOUT: Second-1800\r\n", ""
    if method == "UNSUBSCRIBE":
        device.listeners.pop(headers.get("sid"), None)
        return "", ""
    if method == "POST":
        action = headers["soapaction"].strip('"').rpartition("#")[2]
        values = "".join(f"<{key}>{value}</{key}>" for key, value in device.answer(action, body).items())
        return "", ('<?xml version="1.0"?><s:Envelope xmlns:s="http://schemas.xmlsoap.org/soap/envelope/" '
                    's:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/"><s:Body>'
                    f'<u:{action}Response xmlns:u="urn:schemas-upnp-org:service:{name}:1">{values}</u:{action}Response>'
                    "</s:Body></s:Envelope>")
    return "", description(number) if name == "device" else actions(name)


async def serve(reader, writer):
    try:
        while True:
            head = (await reader.readuntil(b"\r\n\r\n")).decode("latin-1")
            line, *rest = head.strip().split("\r\n")
            method, path, _ = line.split(" ", 2)
            headers = {key.lower(): value.strip() for key, _, value in (one.partition(":") for one in rest)}
            body = (await reader.readexactly(int(headers.get("content-length", 0)))).decode()
            extra, answer = respond(method, path, headers, body)
            payload = answer.encode()
            writer.write(f"HTTP/1.1 200 OK\r\nSERVER: test UPnP/1.0 test\r\nEXT:\r\n{extra}CONTENT-TYPE: text/xml\r\n"
                         f"CONTENT-LENGTH: {len(payload)}\r\n\r\n".encode() + payload)
            await writer.drain()
    except (asyncio.IncompleteReadError, OSError):
        pass
    finally:
        writer.close()


async def main():
    server = await asyncio.start_server(serve, "127.0.0.1", 0)
    print(server.sockets[0].getsockname()[1], flush=True)
    await asyncio.get_running_loop().run_in_executor(None, sys.stdin.read)
    server.close()


if __name__ == "__main__":
    asyncio.run(main())
