#!/usr/bin/env python3
"""Loopback HTTP server for the contract suite: what it sends is exact to the byte, faults included.

Prints its port on the first line and serves until standard input ends. Connections are kept alive.

  /body/N          200 with N bytes of the pattern (byte i is i % 251)
  /status/N        status N with a short body
  /redirect        302 to /body/1000; /redirect/loop: 302 to itself
  /headers         200 with Cache-Control twice and an empty header
  /chunked/N       the pattern in chunks of 1000 bytes; /chunked-length/N: with a length beside it that is void
  /cut/N/M         announces N bytes, sends M, closes
  /chunked-cut/N   N bytes in chunks, then closes without the last chunk
  /until-close/N   no length; the end of the connection ends the body
  /reset           resets the connection instead of answering
  /stale/N         as /body/N, then closes the connection though it promised to keep it
  /late/N/KEY      headers at once; the body only when some client has asked for /release/KEY
  /connections     200 with the number of connections accepted so far, this one included
  /echo...         200 with the head of the request
"""

import collections
import os
import socket
import struct
import sys
import threading

accepted = 0
count_lock = threading.Lock()
release = collections.defaultdict(threading.Event)
PATTERN = bytes(i % 251 for i in range(251 * 64))


def pattern(size):
    return (PATTERN * (size // len(PATTERN) + 1))[:size]


def chunks(body):
    for at in range(0, len(body), 1000):
        part = body[at:at + 1000]
        yield b"%x\r\n%s\r\n" % (len(part), part)


class Client:
    def __init__(self, connection):
        self.connection = connection
        self.received = b""

    def request_head(self):
        while b"\r\n\r\n" not in self.received:
            block = self.connection.recv(65536)
            if not block:
                return None
            self.received += block
        head, self.received = self.received.split(b"\r\n\r\n", 1)
        return head.decode("latin-1").split("\r\n")

    def send(self, *parts):
        self.connection.sendall(b"".join(parts))

    def answer(self, status, body, extra=b""):
        self.send(b"HTTP/1.1 %d Word\r\nContent-Length: %d\r\n%s\r\n" % (status, len(body), extra), body)

    def serve(self):
        try:
            while (head := self.request_head()) is not None and self.respond(head):
                pass
        except OSError:
            pass
        finally:
            self.connection.close()

    def respond(self, head):
        """Answers one request; false ends the connection."""
        path = head[0].split(" ")[1]
        name, *rest = path.strip("/").split("/")
        numbers = [int(text) for text in rest if text.isdigit()]
        if name.startswith("echo"):
            self.answer(200, "\n".join(head).encode("latin-1"))
        elif name == "connections":
            with count_lock:
                self.answer(200, b"%d" % accepted)
        elif name == "headers":
            self.answer(200, b"", b"Cache-Control: public\r\nEmpty:\r\nCACHE-control: max-age=5\r\n")
        elif name == "redirect":
            self.answer(302, b"moved", b"X-Step: 1\r\nLocation: %s\r\n" % (b"/redirect/loop" if rest else b"/body/1000"))
        elif name == "status":
            self.answer(numbers[0], b"word")
        elif name == "release":
            release[rest[0]].set()
            self.answer(200, b"")
        else:
            return self.respond_with_pattern(name, numbers, rest)
        return True

    def respond_with_pattern(self, name, numbers, rest):
        if name == "body":
            self.answer(200, pattern(numbers[0]))
            return True
        if name == "late":
            self.send(b"HTTP/1.1 200 Word\r\nContent-Length: %d\r\n\r\n" % numbers[0])
            release[rest[1]].wait()
            self.send(pattern(numbers[0]))
            return True
        if name in ("chunked", "chunked-length"):
            length = b"Content-Length: 7\r\n" if name == "chunked-length" else b""
            self.send(b"HTTP/1.1 200 Word\r\n%sTransfer-Encoding: chunked\r\n\r\n" % length,
                      *chunks(pattern(numbers[0])), b"0\r\n\r\n")
            return True
        if name == "reset":
            self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        elif name == "stale":
            self.answer(200, pattern(numbers[0]))
        elif name == "cut":
            self.send(b"HTTP/1.1 200 Word\r\nContent-Length: %d\r\n\r\n" % numbers[0], pattern(numbers[1]))
        elif name == "chunked-cut":
            self.send(b"HTTP/1.1 200 Word\r\nTransfer-Encoding: chunked\r\n\r\n", *chunks(pattern(numbers[0])))
        elif name == "until-close":
            self.send(b"HTTP/1.1 200 Word\r\n\r\n", pattern(numbers[0]))
        return False


def accept(listener):
    global accepted
    while True:
        connection, _ = listener.accept()
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        with count_lock:
            accepted += 1
        threading.Thread(target=Client(connection).serve, daemon=True).start()


def main():
    listener = socket.create_server(("127.0.0.1", 0), backlog=64)
    print(listener.getsockname()[1], flush=True)
    threading.Thread(target=accept, args=(listener,), daemon=True).start()
    sys.stdin.read()
    os._exit(0)


main()
