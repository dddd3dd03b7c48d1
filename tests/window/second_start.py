#!/usr/bin/env python3
"""second_start.py EDITOR: starts the real editor more than once, and looks into which window the files go."""

import os
import pathlib
import signal
import subprocess
import sys
import tempfile

from drive_editor import PATIENCE, Screen, check, run, until


class Session:
    """A user's session: a home, a runtime folder, and the editors started in it."""

    def __init__(self, program, folder):
        self.program = program
        self.folder = pathlib.Path(folder)
        (self.folder / "run").mkdir(mode=0o700)
        self.environment = dict(os.environ, HOME=str(folder), XDG_RUNTIME_DIR=f"{folder}/run",
                                XDG_CONFIG_HOME=f"{folder}/config", XDG_DATA_HOME=f"{folder}/data")
        self.editors = []

    def start(self, *arguments):
        editor = subprocess.Popen([self.program, *arguments], env=self.environment, cwd=self.folder,
                                  stdin=subprocess.DEVNULL)
        self.editors.append(editor)
        return editor

    def picture(self, name):
        path = self.folder / name
        run("convert", "-size", "40x30", "xc:gray", f"png:{path}")
        return path

    def end(self):
        for editor in self.editors:
            if editor.poll() is None:
                editor.send_signal(signal.SIGCONT)
                editor.terminate()
        for editor in self.editors:
            editor.wait(PATIENCE)


def titles():
    """The titles of all windows of the editor that are shown."""
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--class", "orvanel"],
                           capture_output=True, check=False).stdout.split()
    names = [subprocess.run(["xdotool", "getwindowname", window], capture_output=True, check=False)
             for window in found]
    return sorted(name.stdout.decode().strip() for name in names)


def shows(*documents):
    expected = sorted(f"{document} — Orvanel" for document in documents)
    return lambda: titles() == expected


def main():
    with tempfile.TemporaryDirectory() as folder, Screen():
        session = Session(sys.argv[1], folder)
        try:
            session.picture("first.png")
            first = session.start("first.png")
            until(shows("first"), "the first window")

            session.picture("a second – one.png")
            status = session.start("a second – one.png").wait(PATIENCE)
            until(shows("a second – one"), "the second file in the first window")
            check(status == 0 and first.poll() is None, "a second start opens its file in the first window")

            own = session.start("--new-window", "first.png")
            until(shows("a second – one", "first"), "a window of its own")
            check(own.poll() is None, "a start with --new-window stays")

            session.picture("third.png")
            first.send_signal(signal.SIGSTOP)
            alone = session.start("third.png")
            until(lambda: "third — Orvanel" in titles(), "a window despite the program that hangs")
            check(alone.poll() is None, "a start beside a program that hangs opens its own window")
            first.send_signal(signal.SIGCONT)

            first.kill()
            first.wait(PATIENCE)
            session.picture("fourth.png")
            fourth = session.start("fourth.png")
            until(lambda: "fourth — Orvanel" in titles(), "a window after the crash of the first")
            session.picture("fifth.png")
            status = session.start("fifth.png").wait(PATIENCE)
            until(lambda: "fifth — Orvanel" in titles(), "the fifth file")
            check(status == 0 and fourth.poll() is None, "after a crash the next start is the one that others find")
        finally:
            session.end()


if __name__ == "__main__":
    main()
