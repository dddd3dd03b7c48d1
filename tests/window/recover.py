#!/usr/bin/env python3
"""recover.py EDITOR CLI: kills the real editor while it has unsaved work, starts it again, takes the work back,
and compares it, pixel by pixel, with what the same commands make without a window.
"""

import pathlib
import subprocess
import sys
import tempfile

from drive_editor import PATIENCE, Editor, Pictures, Screen, check, run, until


def journals(folder):
    return list(pathlib.Path(folder).glob("state/orvanel/recovery/*.journal"))


def window_called(title):
    """The window of that title, if it is shown."""
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--class", "orvanel"],
                           capture_output=True, check=False).stdout.split()
    for window in found:
        name = subprocess.run(["xdotool", "getwindowname", window], capture_output=True, check=False)
        if name.stdout.decode().startswith(title):
            return window.decode()
    return None


def answer(title, *keys):
    """Waits for a dialog and types into it."""
    dialog = until(lambda: window_called(title), f"the dialog {title}")
    run("xdotool", "windowfocus", "--sync", dialog)
    run("xdotool", "key", *keys)
    until(lambda: not window_called(title), f"the end of the dialog {title}")


def main():
    program, cli = sys.argv[1:3]
    steps = [{"do": "selectAll"}, {"do": "invert"}, {"do": "deselect"}]
    with tempfile.TemporaryDirectory() as folder, Screen():
        pictures = Pictures(cli, folder)
        document = pictures.make("first", 0)
        saved = document.read_bytes()

        editor = Editor(program, [document], folder)
        try:
            editor.wait_for_document("first")
            editor.keys("ctrl+a", "ctrl+i")
            editor.wait_for_document("first*")
            until(lambda: journals(folder), "a record of the change")
        finally:
            editor.process.kill()
            editor.process.wait(PATIENCE)
        check(document.read_bytes() == saved, "the file isn't touched by what wasn't saved")

        editor = Editor(program, [], folder)
        try:
            answer("Recover Unsaved Documents", "Escape")
            check(journals(folder), "what isn't decided is kept")
        finally:
            editor.process.kill()
            editor.process.wait(PATIENCE)

        editor = Editor(program, [], folder)
        try:
            answer("Recover Unsaved Documents", "Return")
            run("xdotool", "windowfocus", "--sync", editor.window)
            editor.wait_for_document("first*")
            check(document.read_bytes() == saved, "restoring overwrites nothing")
            editor.save(document)
            check(pictures.flattened(document) == pictures.edited(document, steps), "the work is back")
            until(lambda: not journals(folder), "the end of the journal of a document that was saved")
        finally:
            editor.close()


main()
