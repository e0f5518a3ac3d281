"""An HTTP/1.1 server on a loopback port that misbehaves as it is set up to, and counts what it is asked for."""
import collections
import socket
import struct
import threading
import urllib.parse


class FaultServer:
    """Serves `content` (request path to bytes). `faults` maps a path to a list of faults, one for each request to
    come; the last one stays. A fault is None or

      a number             that status, with the body if it is below 300
      ("wrong",)           other bytes of the same length
      ("reset",)           the connection is reset without an answer
      ("cut", n)           the connection ends after n bytes of the body
      ("silent", n)        nothing more comes after n bytes of the body; n None: not even a head
      ("hold", event)      the answer waits until the event is set
      ("stale",)           the connection ends after the answer though it promised to stay
      ("chunked", extra)   the body in chunks, with extra headers
      ("chunked-cut", n)   n bytes in chunks, then the connection ends
      ("until-close", n)   n bytes without a length; the end of the connection ends the body
      ("endless",)         chunks until the client goes away
      ("announced", n)     a length of n bytes; none comes until the client goes away
      ("redirect", url)    302, with a header X-Step and a large body of its own
      ("headers", extra)   extra headers"""

    def __init__(self):
        self.content = {}
        self.faults = {}
        self.requests = collections.Counter()
        self.connections = 0
        self.silences = 0
        self.lock = threading.Lock()
        self.closed = threading.Event()
        self.socket = socket.create_server(("127.0.0.1", 0), backlog=64)
        self.port = self.socket.getsockname()[1]
        self.acceptor = threading.Thread(target=self._accept, daemon=True)
        self.acceptor.start()

    def url(self):
        return f"http://127.0.0.1:{self.port}"

    def close(self):
        self.closed.set()
        # Wakes the thread that accepts; the number of a socket closed under it could be the next server's.
        self.socket.shutdown(socket.SHUT_RDWR)
        self.acceptor.join()
        self.socket.close()

    def _accept(self):
        while not self.closed.is_set():
            try:
                peer, _ = self.socket.accept()
            except OSError:
                continue  # a launcher that died between its call and the answer, or the end
            self.connections += 1
            threading.Thread(target=self._serve, args=(peer,), daemon=True).start()

    def _serve(self, peer):
        try:
            with peer, peer.makefile("rb") as stream:
                peer.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
                while (head := self._read_head(stream)) and self._answer(peer, *self.reply(head)):
                    pass
        except OSError:
            pass

    @staticmethod
    def _read_head(stream):
        """The lines of a request; none at the end of the connection."""
        head = []
        while (line := stream.readline()) not in (b"\r\n", b""):
            head.append(line)
        return head if line else []

    def reply(self, head):
        """The fault and the body for a request."""
        path = urllib.parse.unquote(head[0].split()[1].decode())
        with self.lock:
            self.requests[path] += 1
            faults = self.faults.get(path) or [None]
            return faults.pop(0) if len(faults) > 1 else faults[0], self.content.get(path)

    def _answer(self, peer, fault, body):
        """Answers one request; false ends the connection."""
        kind, value = (*fault, None)[:2] if isinstance(fault, tuple) else (None, None)
        if kind == "hold":
            value.wait()
        elif kind == "reset":
            peer.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            return False
        elif kind == "silent" and value is None:
            return self._fall_silent()
        usual = 302 if kind == "redirect" else 404 if body is None else 200
        status = fault if isinstance(fault, int) else usual
        if status in (204, 304):
            body = b""  # these have none: it would disturb the next answer
        elif status >= 300 or body is None:
            body = b"moved" * 200_000 if kind == "redirect" else b"<html>no</html>"
        elif kind == "wrong":
            body = bytes(b ^ 1 for b in body) or b"x"
        chunked = kind in ("chunked", "chunked-cut", "endless")
        peer.sendall(f"HTTP/1.1 {status} X\r\n{self._headers(kind, value, len(body), chunked)}\r\n".encode())
        if kind == "announced":
            return bool(peer.recv(1))
        part = body[:value] if isinstance(value, int) else body
        if chunked:
            self._send_chunks(peer, part, kind)
        else:
            peer.sendall(part)
        return self._fall_silent() if kind == "silent" else kind not in ("cut", "chunked-cut", "until-close", "stale")

    @staticmethod
    def _headers(kind, value, size, chunked):
        headers = {"redirect": f"X-Step: 1\r\nLocation: {value}\r\n", "headers": value, "chunked": value or ""}.get(kind, "")
        if chunked:
            return "Transfer-Encoding: chunked\r\n" + headers
        if kind == "until-close":
            return headers
        return headers + f"Content-Length: {value if kind == 'announced' else size}\r\n"

    @staticmethod
    def _send_chunks(peer, body, kind):
        while kind == "endless":
            peer.sendall(b"%x\r\n%s\r\n" % (2**20, bytes(2**20)))
        size = 700 if len(body) < 1_000_000 else 70_000
        for at in range(0, len(body), size):
            piece = body[at:at + size]
            peer.sendall(b"%x\r\n%s\r\n" % (len(piece), piece))
        if kind == "chunked":
            peer.sendall(b"0\r\n\r\n")

    def _fall_silent(self):
        self.silences += 1
        self.closed.wait()
        return False
