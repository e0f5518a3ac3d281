"""An HTTP/1.1 server on a loopback port that misbehaves as told, and counts what it is asked for."""
import collections
import socket
import threading
import urllib.parse


class FaultServer:
    """Serves `content` (request path to bytes). `faults` maps a path to a list of faults, one for each request to
    come; the last one stays. A fault is None, a status number, ("cut", n), ("wrong",), ("chunked",), ("reset",),
    ("redirect", path) or ("hold", event): the answer waits until the event is set."""

    def __init__(self):
        self.content = {}
        self.faults = {}
        self.requests = collections.Counter()
        self.connections = 0
        self.lock = threading.Lock()
        self.socket = socket.create_server(("127.0.0.1", 0), backlog=64)
        self.port = self.socket.getsockname()[1]
        threading.Thread(target=self._accept, daemon=True).start()

    def url(self):
        return f"http://127.0.0.1:{self.port}"

    def close(self):
        self.socket.close()

    def _accept(self):
        while True:
            try:
                peer, _ = self.socket.accept()
            except OSError:
                return
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
        fault = self._next_fault(path)
        body = self.content.get(path)
        if isinstance(fault, int) or body is None:
            return self._send(peer, fault or 404, b"<html>no</html>")
        kind = fault[0] if fault else "ok"
        if kind == "wrong":
            body = bytes(b ^ 1 for b in body) or b"x"
        if kind == "hold":
            fault[1].wait()
        if kind == "redirect":
            peer.sendall(f"HTTP/1.1 302 Found\r\nLocation: {fault[1]}\r\nContent-Length: 3\r\n\r\nsee".encode())
            return True
        if kind == "chunked":
            chunks = [body[i:i + 700] for i in range(0, len(body), 700)]
            peer.sendall(b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n")
            for chunk in chunks:
                peer.sendall(b"%x\r\n%s\r\n" % (len(chunk), chunk))
            peer.sendall(b"0\r\n\r\n")
            return True
        if kind == "reset":
            return False
        if kind == "cut":
            peer.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: %d\r\n\r\n" % len(body) + body[:fault[1]])
            return False
        return self._send(peer, 200, body)

    @staticmethod
    def _send(peer, status, body):
        peer.sendall(b"HTTP/1.1 %d X\r\nContent-Length: %d\r\n\r\n" % (status, len(body)) + body)
        return True
