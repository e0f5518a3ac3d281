"""Waits for a condition by asking again and again."""
import time

LIMIT = 300  # seconds; generous, since machines are busy and sanitized builds slow


def wait_until(condition, complaint=lambda: "the expected condition did not occur"):
    """Calls `condition` until its result is true, and returns that result."""
    end = time.monotonic() + LIMIT
    while time.monotonic() < end:
        if result := condition():
            return result
        time.sleep(0.02)
    raise AssertionError(complaint())
