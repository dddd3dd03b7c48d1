#!/usr/bin/env python3
"""wayland.py EDITOR CLI: shows a document in the real editor under a Wayland compositor, at the scales that it has, and
quits by the keyboard. The compositor is itself a window of a virtual X screen, so that keys and pixels can be had.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

from drive_editor import FRAME, PATIENCE, Pictures, Screen, check, run, until

SKIPPED = 77
SIZE = (1200, 760)


class Compositor:
    """A compositor with a session folder of its own."""

    def __init__(self, folder, scale):
        self.environment = dict(os.environ, HOME=str(folder), XDG_RUNTIME_DIR=str(folder),
                                XDG_CONFIG_HOME=f"{folder}/config", XDG_DATA_HOME=f"{folder}/data")
        self.log = pathlib.Path(folder) / "weston.log"
        width, height = (side // scale for side in SIZE)
        # Without a panel no click can start another program.
        configuration = pathlib.Path(folder) / "weston.ini"
        configuration.write_text("[shell]\npanel-position=none\n")
        self.process = subprocess.Popen(
            ["weston", "--backend=x11-backend.so", "--use-pixman", f"--config={configuration}", "--idle-time=0",
             f"--width={width}", f"--height={height}", f"--scale={scale}", "--socket=wayland-test",
             f"--log={self.log}"], env=self.environment, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            until(lambda: self._is_running() and (pathlib.Path(folder) / "wayland-test").exists(), "the compositor")
            self.window = until(self._find_window, "the compositor's window")
        except BaseException:
            print(self.log.read_text() if self.log.exists() else "The compositor wrote no log.", file=sys.stderr)
            self.end()
            raise

    def _is_running(self):
        assert self.process.poll() is None, "the compositor has exited"
        return True

    def _find_window(self):
        found = re.search(r"x11 output .* window id (\d+)", self.log.read_text())
        return found.group(1) if found else None

    def start(self, *command):
        environment = dict(self.environment, QT_QPA_PLATFORM="wayland", WAYLAND_DISPLAY="wayland-test")
        environment.pop("DISPLAY")
        return subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL)

    def pixels(self):
        return run("import", "-window", self.window, "-depth", "8", "rgb:-")

    def click_and_press(self, key):
        """The compositor may miss an event that comes right after its window was entered."""
        run("xdotool", "windowfocus", "--sync", self.window)
        run("xdotool", "mousemove", "600", "400", "sleep", "0.2", "click", "1", "sleep", "0.2", "key", key)

    def end(self):
        self.process.terminate()
        self.process.wait(PATIENCE)


def show_and_quit(program, pictures, folder, scale, factor):
    document = pictures.make("picture", 0)
    compositor = Compositor(folder, scale)
    editor = None
    try:
        editor = compositor.start(program, document)

        def is_shown():
            assert editor.poll() is None, "the editor has exited"
            # A run of the frame's upper edge.
            return bytes(FRAME) * 40 in compositor.pixels()

        until(is_shown, "the picture on the screen")
        check(compositor.start(program, document).wait(PATIENCE) == 0 and editor.poll() is None,
              "a second start hands its file to the first")

        def has_quit():
            compositor.click_and_press("ctrl+q")
            return editor.poll() is not None

        until(has_quit, "the end of the editor")
        check(editor.returncode == 0, f"the editor shows a document on Wayland at scale {scale * factor} and quits")
    finally:
        if editor is not None and editor.poll() is None:
            editor.kill()
        compositor.end()


def main():
    if shutil.which("weston") is None:
        print("Skipped: weston is not installed.")
        sys.exit(SKIPPED)
    program, cli = sys.argv[1:3]
    # The compositor knows whole scales; the rest is the toolkit's.
    for scale, factor in ((1, 1), (2, 1), (1, 1.5)):
        with tempfile.TemporaryDirectory() as folder, Screen():
            os.chmod(folder, 0o700)
            os.environ["QT_SCALE_FACTOR"] = str(factor)
            show_and_quit(program, Pictures(cli, folder), folder, scale, factor)


if __name__ == "__main__":
    main()
