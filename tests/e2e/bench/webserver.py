# SPDX-License-Identifier: MIT
"""A web server on the loopback that is as slow, or as silent, as a test wants."""

import functools
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer


class _Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def __init__(self, owner, *args):
        self._owner = owner
        super().__init__(*args)

    def log_message(self, *unused):
        pass

    def do_GET(self):  # noqa: N802 (named by the base class)
        self._owner.requests.append((self.path, self.headers.get("Range")))
        path, _, name = self.path[1:].partition("/")
        file = self._owner.folder / name
        if path not in ("plain", "slow", "stall", "silent") or not file.is_file():
            self.send_error(404)
            return
        if path == "silent":
            self._owner.ending.wait(60)
            self.close_connection = True
            return
        data = file.read_bytes()
        start = self._range_start(len(data))
        self.send_response(206 if start else 200)
        self.send_header("Content-Type", "audio/mpeg")
        self.send_header("Content-Length", str(len(data) - start))
        self.send_header("Accept-Ranges", "bytes")
        if start:
            self.send_header("Content-Range", f"bytes {start}-{len(data) - 1}/{len(data)}")
        self.end_headers()
        try:
            self._send(data, start, path)
        except OSError:
            self.close_connection = True

    def _range_start(self, size):
        text = self.headers.get("Range") or ""
        start = text.removeprefix("bytes=").partition("-")[0]
        return min(int(start), size) if start.isdigit() else 0

    def _send(self, data, start, path):
        owner = self._owner
        step = len(data) if path == "plain" else max(1, owner.rate // 10)
        while start < len(data):
            if path == "stall" and start >= owner.stall_at:
                owner.stalled.set()
                owner.ending.wait(60)
                self.close_connection = True
                return
            self.wfile.write(data[start:start + step])
            self.wfile.flush()
            start += step
            if path == "slow" and owner.ending.wait(0.1):
                return


class WebServer:
    """Serves <folder> as /plain/..., at `rate` bytes per second as /slow/..., up to `stall_at` bytes and then nothing
    more as /stall/..., and accepting but never answering as /silent/...."""

    def __init__(self, folder, rate=20000, stall_at=100000):
        self.folder = folder
        self.rate = rate
        self.stall_at = stall_at
        self.requests = []
        self.stalled = threading.Event()
        self.ending = threading.Event()
        self._server = ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(_Handler, self))
        self._server.daemon_threads = True
        self._server.block_on_close = False
        self._thread = threading.Thread(target=self._server.serve_forever, kwargs={"poll_interval": 0.05}, daemon=True)
        self._thread.start()

    def url(self, how, name):
        return f"http://127.0.0.1:{self._server.server_port}/{how}/{name}"

    def close(self):
        self.ending.set()
        self._server.shutdown()
        self._server.server_close()
        self._thread.join(5)
