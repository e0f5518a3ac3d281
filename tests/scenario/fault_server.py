"""An HTTP/1.1 server on a loopback port that misbehaves as told, and counts what it is asked for."""
import collections
import socket
import threading
import urllib.parse

PIECE = 16384


class FaultServer:
    """Serves `content` (request path to bytes). `faults` maps a path to a list of faults, one for each request to
    come; the last one stays. A fault is None or

      a number             that status, with the body if it is below 300
      ("wrong",)           other bytes of the same length
      ("reset",)           the connection ends without an answer
      ("cut", n)           the connection ends behind n bytes of the body
      ("silent", n)        nothing more comes behind n bytes of the body; n None: not even a head
      ("hold", event)      the answer waits until the event is set
      ("chunked",)         the body in chunks
      ("chunked-cut", n)   n bytes in chunks, then the connection ends
      ("until-close", n)   n bytes without a length; the end of the connection ends the body
      ("endless",)         chunks until the launcher goes away
      ("announced", n)     a length of n bytes; none comes until the launcher goes away
      ("redirect", url)    302

    `on_bytes`, if set, is called from the server's threads with the number of body bytes sent so far."""

    def __init__(self):
        self.content = {}
        self.faults = {}
        self.requests = collections.Counter()
        self.connections = 0
        self.on_bytes = None
        self.sent = 0
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
                while line := stream.readline():
                    while stream.readline() not in (b"\r\n", b""):
                        pass
                    path = urllib.parse.unquote(line.split()[1].decode())
                    if not self._answer(peer, path):
                        return
        except OSError:
            pass

    def _next_fault(self, path):
        with self.lock:
            self.requests[path] += 1
            faults = self.faults.get(path)
            if not faults:
                return None
            return faults.pop(0) if len(faults) > 1 else faults[0]

    def _answer(self, peer, path):
        """Answers one request; false ends the connection."""
        fault = self._next_fault(path)
        body = self.content.get(path)
        kind, *rest = fault if isinstance(fault, tuple) else (None,)
        if kind == "hold":
            rest[0].wait()
        if kind == "redirect":
            return self._send(peer, 302, b"see", f"Location: {rest[0]}\r\n".encode())
        if kind == "reset":
            return False
        if kind == "silent" and rest[0] is None:
            return self._fall_silent()
        if body is None or (isinstance(fault, int) and fault >= 300):
            return self._send(peer, fault if isinstance(fault, int) else 404, b"<html>no</html>")
        if kind == "wrong":
            body = bytes(b ^ 1 for b in body) or b"x"
        if kind in ("chunked", "chunked-cut"):
            return self._send_chunks(peer, body, *rest)
        if kind == "endless":
            return self._send_without_end(peer)
        if kind == "until-close":
            peer.sendall(b"HTTP/1.1 200 OK\r\n\r\n" + body[:rest[0]])
            return False
        if kind == "announced":
            self._send_head(peer, 200, rest[0])
            return bool(peer.recv(1))
        if kind in ("cut", "silent"):
            self._send_head(peer, 200, len(body))
            self._send_body(peer, body[:rest[0]])
            return self._fall_silent() if kind == "silent" else False
        return self._send(peer, fault if isinstance(fault, int) else 200, body)

    def _fall_silent(self):
        self.silences += 1
        self.closed.wait()
        return False

    @staticmethod
    def _send_head(peer, status, length, extra=b""):
        peer.sendall(b"HTTP/1.1 %d X\r\nContent-Length: %d\r\n%s\r\n" % (status, length, extra))

    def _send_body(self, peer, body):
        for at in range(0, len(body), PIECE):
            piece = body[at:at + PIECE]
            peer.sendall(piece)
            with self.lock:
                self.sent += len(piece)
                sent = self.sent
            if self.on_bytes:
                self.on_bytes(sent)

    def _send(self, peer, status, body, extra=b""):
        self._send_head(peer, status, len(body), extra)
        self._send_body(peer, body)
        return True

    @staticmethod
    def _send_without_end(peer):
        peer.sendall(b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n")
        chunk = b"%x\r\n%s\r\n" % (2**20, bytes(2**20))
        while True:
            peer.sendall(chunk)

    @staticmethod
    def _send_chunks(peer, body, end=None):
        peer.sendall(b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n")
        shown = body[:end]
        size = 700 if len(body) < 1_000_000 else 70_000
        for at in range(0, len(shown), size):
            peer.sendall(b"%x\r\n%s\r\n" % (len(shown[at:at + size]), shown[at:at + size]))
        if end is not None:
            return False
        peer.sendall(b"0\r\n\r\n")
        return True
