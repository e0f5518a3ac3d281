"""Serves a folder with nginx on a free loopback port."""
import contextlib
import pathlib
import shutil
import socket
import subprocess
import time

CONFIGURATION = """
daemon off; master_process off; pid {state}/nginx.pid; error_log {state}/error.log;
events {{ worker_connections 256; }}
http {{
  access_log {state}/access.log; sendfile on; tcp_nopush on; keepalive_requests 100000;
  client_body_temp_path {state}/t1; proxy_temp_path {state}/t2; fastcgi_temp_path {state}/t3;
  uwsgi_temp_path {state}/t4; scgi_temp_path {state}/t5;
  types {{ application/json json; application/zip zip; }}
  default_type application/octet-stream;
  server {{
    listen 127.0.0.1:{port};
    root "{root}";
    location = /patch/version.json {{ add_header Cache-Control no-cache; }}
    location /patch/ {{ add_header Cache-Control "public, max-age=31536000, immutable"; }}
  }}
}}
"""


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as probe:
        return probe.getsockname()[1]


def answers(port):
    with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", port), timeout=1):
        return True
    return False


@contextlib.contextmanager
def patch_server(root, state):
    """Serves `root` until the block ends; returns the base URL. `state` is a directory for the server's own files."""
    state = pathlib.Path(state)
    state.mkdir(parents=True, exist_ok=True)
    port = free_port()
    configuration = state / "nginx.conf"
    configuration.write_text(CONFIGURATION.format(state=state, root=root, port=port), encoding="utf-8")
    program = shutil.which("nginx") or "/usr/sbin/nginx"
    server = subprocess.Popen([program, "-e", state / "error.log", "-c", configuration])
    try:
        while not answers(port):
            if server.poll() is not None:
                raise RuntimeError("nginx did not start: " + (state / "error.log").read_text(encoding="utf-8"))
            time.sleep(0.05)
        yield f"http://127.0.0.1:{port}"
    finally:
        server.terminate()
        server.wait()
