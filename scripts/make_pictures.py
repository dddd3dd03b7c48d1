#!/usr/bin/env python3
"""make_pictures.py EDITOR: takes pictures of the editor's window, panels and dialogs on a virtual screen, with the
sample document, at the scales 1 and 2. All go to build/pictures/, those that the documents show also to
docs/pictures/.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time

from patience import PATIENCE, run, until

ROOT = pathlib.Path(__file__).resolve().parent.parent
ALL_PICTURES = ROOT / "build/pictures"
SHOWN_PICTURES = ROOT / "docs/pictures"
SCREEN = (1440, 900)
WINDOW = (1366, 768)

# Where things stand in the window, in view points.
OPTIONS = (0, 25, 760, 40)
PALETTE = (0, 65, 48, 300)
TOOL_X, FIRST_TOOL_Y, TOOL_STEP = 24, 86, 32
SWATCH = (17, 337)
INSPECTOR = (1078, 65, 288, 220)
PANEL = (1078, 285, 288, 483)
LAYERS_TAB, CHANNELS_TAB = (1112, 302), (1190, 302)
# The canvas shows the sample at its fitted size; the corners of a box around its sun.
SUN = ((644, 349), (784, 489))


def shown_pictures():
    """The names of the pictures that the documents link to."""
    texts = [ROOT / "README.md", *(ROOT / "docs").glob("*.md")]
    return {name for text in texts for name in re.findall(r"pictures/([\w@-]+)\.png", text.read_text())}


class Desk:
    """A virtual screen with a window manager, and the editor on it with a home of its own."""

    def __init__(self, editor, files, scale, home):
        self.scale = scale
        self.processes = []
        numbers, writer = os.pipe()
        size = "x".join(str(round(length * scale)) for length in SCREEN)
        self.start("Xvfb", "-displayfd", writer, "-screen", "0", f"{size}x24", "-nolisten", "tcp", pass_fds=[writer])
        os.close(writer)
        with os.fdopen(numbers) as source:
            number = source.readline().strip()
        os.environ.update(DISPLAY=f":{number}", QT_QPA_PLATFORM="xcb", QT_SCALE_FACTOR=str(scale), HOME=home,
                          XDG_CONFIG_HOME=f"{home}/config", XDG_DATA_HOME=f"{home}/data", XDG_RUNTIME_DIR=home)
        os.environ.pop("WAYLAND_DISPLAY", None)
        self.start("openbox")
        self.start(editor, "--new-window", *files, cwd=home)
        self.window = until(self.find_windows, "the editor's window")[0]
        self.resize(*WINDOW)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.terminate()
            process.wait(PATIENCE)

    def start(self, *arguments, **options):
        self.processes.append(subprocess.Popen([str(argument) for argument in arguments],
                                               stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL, **options))

    @staticmethod
    def find_windows():
        return subprocess.run(["xdotool", "search", "--onlyvisible", "--class", "orvanel"],
                              capture_output=True, check=False).stdout.decode().split()

    def resize(self, width, height):
        run("xdotool", "windowsize", "--sync", self.window, *self.pixels(width, height))
        time.sleep(0.5)
        # The window manager's frame makes the position that the window reports unreliable.
        run("xdotool", "mousemove", "--window", self.window, 0, 0)
        place = dict(line.split("=") for line in run("xdotool", "getmouselocation", "--shell").decode().split())
        self.corner = (int(place["X"]), int(place["Y"]))
        self.rest_pointer()

    def pixels(self, *lengths):
        return [round(length * self.scale) for length in lengths]

    # Input, in view points of the window.

    def keys(self, *names):
        for name in names:
            run("xdotool", "key", name)
            time.sleep(0.25)

    def point(self, x, y):
        run("xdotool", "mousemove", "--window", self.window, *self.pixels(x, y))
        time.sleep(0.05)

    def rest_pointer(self):
        """Moves the pointer to where it touches nothing."""
        run("xdotool", "mousemove", *self.pixels(SCREEN[0] - 1, SCREEN[1] - 1))

    def click(self, x, y):
        self.point(x, y)
        run("xdotool", "click", "1")
        time.sleep(0.2)

    def drag(self, start, end):
        self.point(*start)
        run("xdotool", "mousedown", "1")
        for step in range(1, 6):
            self.point(*(a + (b - a) * step / 5 for a, b in zip(start, end)))
        run("xdotool", "mouseup", "1")
        time.sleep(0.2)

    def press_tool(self, index, seconds=0.0):
        self.point(TOOL_X, FIRST_TOOL_Y + index * TOOL_STEP)
        run("xdotool", "mousedown", "1")
        time.sleep(seconds)
        run("xdotool", "mouseup", "1")
        time.sleep(0.2)

    # Pictures.

    def take(self, name, window=None, part=None):
        """Takes a picture of a window, or of a part of the main one with whatever lies over it, once it rests."""
        path = ALL_PICTURES / f"{name}@{self.scale}x.png"
        source = ["-window", window or self.window]
        if part:
            left, top, width, height = self.pixels(*part)
            source = ["-window", "root", "-crop",
                      f"{width}x{height}+{self.corner[0] + left}+{self.corner[1] + top}", "+repage"]
        before = None
        for _ in range(12):
            time.sleep(0.25)
            now = run("import", *source, "-depth", "8", "rgb:-")
            if now == before:
                break
            before = now
        run("import", *source, "-depth", "8", f"png24:{path}")

    def take_dialog(self, name, *openers):
        """Opens a dialog by keys, takes its picture and closes it again."""
        self.keys(*openers)
        self.take_open(name)
        self.close_dialog()

    def close_dialog(self):
        # Panels that float above the window don't take the focus by themselves.
        run("xdotool", "windowfocus", self.find_dialog())
        time.sleep(0.2)
        self.keys("Escape")
        until(lambda: self.find_dialog() is None, "the dialog to close")

    def take_open(self, name):
        dialog = until(self.find_dialog, f"the window for {name}")
        self.rest_pointer()
        self.take(name, window=dialog)

    def find_dialog(self):
        found = self.find_windows()
        return next((window for window in found if window != self.window), None)


def take_tools(desk):
    """The options of each tool, and the palette."""
    for key, name in (("h", "hand"), ("v", "move"), ("i", "eyedropper"), ("z", "zoom"), ("w", "wand"), ("m", "select")):
        desk.keys(key)
        desk.rest_pointer()
        desk.take(f"options-{name}", part=OPTIONS)
    desk.take("palette", part=PALETTE)
    desk.point(TOOL_X, FIRST_TOOL_Y + 2 * TOOL_STEP)
    run("xdotool", "mousedown", "1")
    time.sleep(0.8)
    desk.take("palette-menu", part=(0, 65, 288, 300))
    run("xdotool", "mouseup", "1")
    desk.keys("Escape", "ctrl+t")
    desk.rest_pointer()
    desk.take("options-transform", part=OPTIONS)
    desk.take("transform")
    desk.keys("Escape")
    desk.press_tool(3)
    desk.take("options-lasso", part=OPTIONS)


def take_panels(desk):
    desk.take("inspector", part=INSPECTOR)
    desk.take("layers", part=PANEL)
    desk.click(*CHANNELS_TAB)
    desk.rest_pointer()
    desk.take("channels", part=PANEL)
    desk.click(*LAYERS_TAB)
    desk.click(1342, 235)
    desk.take("opacity", part=INSPECTOR)
    desk.keys("Escape")


def take_menus(desk):
    for key in "feilsvwh":
        desk.keys(f"alt+{key}")
        desk.rest_pointer()
        desk.take(f"menu-{key}", part=(0, 0, 640, 400))
        desk.keys("Escape")


def take_dialogs(desk):
    desk.take_dialog("new", "ctrl+n")
    desk.take_dialog("open", "ctrl+o")
    desk.take_dialog("save", "ctrl+shift+s")
    desk.take_dialog("export", "ctrl+shift+e")
    desk.take_dialog("canvas-size", "alt+i", "Down", "Down", "Return")
    desk.take_dialog("image-size", "alt+i", "Down", "Down", "Down", "Return")
    desk.take_dialog("levels", "ctrl+l")
    desk.take_dialog("shortcuts", "F1")
    desk.take_dialog("about", "alt+h", "Down", "Return")
    desk.click(*SWATCH)
    desk.take_open("color-picker")
    desk.close_dialog()


def take_all(editor, scale, home):
    sample = pathlib.Path(home) / "Dusk.tessel"
    run(sys.executable, ROOT / "scripts/make_sample.py", sample)
    with Desk(editor, [sample], scale, home) as desk:
        time.sleep(1)
        desk.keys("ctrl+0", "m", "m")
        desk.drag(*SUN)
        desk.rest_pointer()
        desk.take("window")
        take_panels(desk)
        take_tools(desk)
        take_menus(desk)
        take_dialogs(desk)
        for width, height in ((1280, 720), (1000, 640)):
            desk.resize(width, height)
            desk.take(f"window-{width}x{height}")
        desk.resize(*WINDOW)
        desk.keys("ctrl+d", "alt+BackSpace", "ctrl+w")
        desk.take_open("unsaved")
        desk.keys("Tab", "space")
        until(lambda: desk.find_dialog() is None, "the dialog to close")
        desk.take("empty")


def main():
    editor = pathlib.Path(sys.argv[1]).resolve()
    scales = [float(text) if "." in text else int(text) for text in sys.argv[2:]] or [1, 2]
    ALL_PICTURES.mkdir(parents=True, exist_ok=True)
    for scale in scales:
        with tempfile.TemporaryDirectory() as home:
            take_all(editor, scale, home)
    SHOWN_PICTURES.mkdir(exist_ok=True)
    for name in sorted(shown_pictures()):
        # A palette halves the size of the files, with no visible difference at this scale.
        run("convert", ALL_PICTURES / f"{name}.png", "-dither", "FloydSteinberg", "-colors", "255", "-strip",
            "-define", "png:compression-level=9", f"PNG8:{SHOWN_PICTURES / name}.png")
    print(f"The pictures are in {ALL_PICTURES.relative_to(ROOT)}/, those of the documents in docs/pictures/.")


if __name__ == "__main__":
    main()
