"""What the scripts that work with a running program from outside have in common."""

import subprocess
import time

# Seconds; a busy machine may take long.
PATIENCE = 30.0


def run(*arguments, **options):
    """Runs a program that must succeed; returns what it prints."""
    return subprocess.run([str(argument) for argument in arguments], check=True, capture_output=True,
                          **options).stdout


def until(condition, what):
    """Waits for a condition; returns its first true value."""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.05)
    raise AssertionError(f"waited in vain for {what}")
