"""A server for the tests: files of folders, at a speed, by ranges or without, and what it sent."""

import http.server
import pathlib
import re
import threading
import time
import urllib.parse

CHUNKS_PER_SECOND = 20


class Handler(http.server.SimpleHTTPRequestHandler):
    """The path's query says how: speed=BYTES a second, ranges=no, length=no, silent=yes, break=AFTER_BYTES."""

    def do_HEAD(self):
        self.do_GET()

    def do_GET(self):
        address = urllib.parse.urlsplit(self.path)
        query = dict(urllib.parse.parse_qsl(address.query))
        found = next((f for f in self.server.folders if (f / address.path[1:]).is_file()), None)
        if found is None:
            self.send_error(404)
            return
        content = (found / address.path[1:]).read_bytes()
        if query.get("silent"):
            time.sleep(30)
        self.send_content(content, self.part_of(content, query), query)

    def part_of(self, content, query):
        asked = re.fullmatch(r"bytes=(\d+)-(\d+)", self.headers.get("Range", ""))
        if asked is None or query.get("ranges") == "no":
            return None
        return range(int(asked[1]), min(int(asked[2]) + 1, len(content)))

    def send_content(self, content, part, query):
        if part is not None and len(part) == 0:
            self.send_error(416)
            return
        body = content if part is None else content[part.start : part.stop]
        self.send_response(200 if part is None else 206)
        if part is not None:
            self.send_header("Content-Range", f"bytes {part.start}-{part.stop - 1}/{len(content)}")
        self.send_header("Content-Type", self.guess_type(urllib.parse.urlsplit(self.path).path))
        if query.get("length") != "no":
            self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        if self.command == "HEAD":
            return
        body = body[: int(query.get("break", len(body)))]
        self.send_slowly(body, int(query.get("speed", 0)) or len(body) * CHUNKS_PER_SECOND)

    def send_slowly(self, body, speed):
        step = max(speed // CHUNKS_PER_SECOND, 1)
        for begin in range(0, len(body), step):
            try:
                self.wfile.write(body[begin : begin + step])
            except OSError:  # the page has what it wants
                return
            self.server.sent_bytes += len(body[begin : begin + step])
            if begin + step < len(body):
                time.sleep(1 / CHUNKS_PER_SECOND)

    def log_message(self, *_):
        pass


class Server(http.server.ThreadingHTTPServer):
    """Serves files of folders, the first that has one."""

    daemon_threads = True
    sent_bytes = 0

    def __init__(self, *folders):
        super().__init__(("127.0.0.1", 0), Handler)
        self.folders = [pathlib.Path(folder) for folder in folders]
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def address(self, path=""):
        return f"http://127.0.0.1:{self.server_port}/{path}"
