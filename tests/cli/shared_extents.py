#!/usr/bin/env python3
"""shared_extents.py CLI TESTS: on file systems that share blocks between files, each in a file of its own that is
mounted for this process alone, a save shares what hasn't changed with the file of the save before instead of copying
it, and only what it has written is read back. TESTS is the program with the tests of files, which are run there, too.

Skips, with a reason, what this machine or this user can't mount. SIDE and LAYERS in the environment make the document
larger, for figures.
"""

import ctypes
import json
import os
import pathlib
import random
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib

SKIPPED = 77
SIDE = int(os.environ.get("SIDE", "1024"))
LAYERS = int(os.environ.get("LAYERS", "6"))
CLONE_NEWNS = 0x20000
TESTS = "Resaving*:*ChangedBehind*:SharedSave*:*DoubtfulMap*:RealExtents*"
MAKERS = {"btrfs": ["mkfs.btrfs", "-q"], "xfs": ["mkfs.xfs", "-q", "-m", "reflink=1"]}


def noise_png(path):
    """Pixels that hardly shrink."""
    def chunk(kind, content):
        return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))

    rows = b"".join(b"\0" + random.Random(row).randbytes(3 * SIDE) for row in range(SIDE))
    header = struct.pack(">IIBBBBB", SIDE, SIDE, 8, 2, 0, 0, 0)
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows, 1)) +
                     chunk(b"IEND", b""))


def unshare_mounts():
    """What is mounted from now on goes with this process."""
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.unshare(CLONE_NEWNS) != 0:
        return False
    return subprocess.run(["mount", "--make-rprivate", "/"], check=False, capture_output=True).returncode == 0


def mounted(kind, folder):
    """The place of a new file system; None, with a message, if there can't be one."""
    maker = shutil.which(MAKERS[kind][0], path=os.environ["PATH"] + ":/usr/sbin:/sbin")
    if maker is None:
        print(f"{kind}: {MAKERS[kind][0]} isn't installed")
        return None
    image, place = folder / f"{kind}.image", folder / kind
    place.mkdir()
    with open(image, "wb") as file:
        file.truncate(max(1 << 30, 4 * LAYERS * SIDE * SIDE * 8))
    for command in ([maker, *MAKERS[kind][1:], image], ["mount", "-o", "loop", image, place]):
        done = subprocess.run(command, check=False, capture_output=True)
        if done.returncode != 0:
            print(f"{kind}: {done.stderr.decode().strip()}")
            return None
    return place


def used(place):
    os.sync()
    space = os.statvfs(place)
    return (space.f_blocks - space.f_bfree) * space.f_frsize


def saves(cli, picture, steps):
    """Runs them on a document of many layers; the duration of each, in milliseconds."""
    make = [{"do": "colorMode", "mode": 3}] + [{"do": "duplicateNode"}] * (LAYERS - 1)
    done = subprocess.run([cli, "run", "--time", "-", picture], input=json.dumps(make + steps).encode(), check=True,
                          capture_output=True)
    return [float(line.split()[-2]) for line in done.stderr.decode().splitlines()][len(make):]


def check(kind, place, cli, picture):
    first, second = place / "first.tessel", place / "second.tessel"

    def save(path):
        return {"do": "save", "path": str(path)}

    rename = {"do": "set", "name": "Another"}
    before = used(place)
    times = saves(cli, picture, [save(first), rename, save(second), rename, save(second)])
    together = used(place) - before
    alone = first.stat().st_blocks * 512
    print(f"{kind}: the first file takes {alone / 1e6:.1f} MB, both take {together / 1e6:.1f} MB; saved first in "
          f"{times[0]:.0f} ms, again in {times[2]:.0f} ms and over itself in {times[4]:.0f} ms")
    subprocess.run([cli, "check", second], check=True, stdout=subprocess.DEVNULL)
    return together < 1.1 * alone


def passes_tests(tests, place):
    """None of them may find that the file system shares nothing."""
    done = subprocess.run([tests, f"--gtest_filter={TESTS}"], check=False, capture_output=True, text=True,
                          env={**os.environ, "TMPDIR": str(place), "QT_QPA_PLATFORM": "offscreen"})
    if done.returncode == 0 and "SKIPPED" not in done.stdout:
        return True
    print(done.stdout, done.stderr)
    return False


def main():
    if os.geteuid() != 0 or not unshare_mounts():
        print("Only root may mount file systems.")
        return SKIPPED
    results = []
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        picture = folder / "noise.png"
        noise_png(picture)
        for kind in MAKERS:
            place = mounted(kind, folder)
            if place is None:
                continue
            try:
                results.append(check(kind, place, sys.argv[1], picture) and passes_tests(sys.argv[2], place))
            finally:
                subprocess.run(["umount", place], check=False)
    if not results:
        return SKIPPED
    return 0 if all(results) else 1


if __name__ == "__main__":
    sys.exit(main())
