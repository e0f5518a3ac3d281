"""Waiting for what nothing announces."""
import time

LIMIT = 300  # seconds; generous, since machines are busy and sanitized builds slow


def wait_until(condition, complaint=lambda: "it does not come"):
    """Asks until the condition holds, and returns what it then gives."""
    end = time.monotonic() + LIMIT
    while time.monotonic() < end:
        if result := condition():
            return result
        time.sleep(0.02)
    raise AssertionError(complaint())
