#!/usr/bin/env python3
"""make_pictures.py EDITOR [--translation FILE] [SCALE...]: takes pictures of the editor's window, panels and dialogs
on a virtual screen, with the sample document, at the scales 1 and 2. All go to build/pictures/, those that the
documents show also to docs/pictures/. Those in the language of a compiled translation go to build/pictures/NAME/,
after the name of its file, and nowhere else.
"""

import argparse
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
# The button at the end of more tabs than fit, and the first tab.
TABS_LIST, FIRST_TAB = (1064, 81), (110, 81)
LAYERS_TAB, CHANNELS_TAB = (1112, 302), (1190, 302)
# The canvas shows the sample at its fitted size; the corners of a box around its sun.
SUN = ((644, 349), (784, 489))


def shown_pictures():
    """The names of the pictures that the documents link to."""
    texts = [ROOT / "README.md", *(ROOT / "docs").glob("*.md")]
    return {name for text in texts for name in re.findall(r"pictures/([\w@-]+)\.png", text.read_text())}


class Desk:
    """A virtual screen with a window manager, and the editor on it with a home of its own."""

    def __init__(self, command, files, scale, home, folder):
        self.command, self.scale, self.home, self.folder = command, scale, home, folder
        self.processes = []
        numbers, writer = os.pipe()
        size = "x".join(str(round(length * scale)) for length in SCREEN)
        self.start("Xvfb", "-displayfd", writer, "-screen", "0", f"{size}x24", "-nolisten", "tcp", pass_fds=[writer])
        os.close(writer)
        with os.fdopen(numbers) as source:
            number = source.readline().strip()
        os.environ.update(DISPLAY=f":{number}", QT_QPA_PLATFORM="xcb", QT_SCALE_FACTOR=str(scale), HOME=home,
                          XDG_CONFIG_HOME=f"{home}/config", XDG_DATA_HOME=f"{home}/data", XDG_STATE_HOME=f"{home}/state",
                          XDG_RUNTIME_DIR=home)
        os.environ.pop("WAYLAND_DISPLAY", None)
        self.start("openbox")
        self.start_editor(*files)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.terminate()
            process.wait(PATIENCE)

    def start(self, *arguments, **options):
        self.processes.append(subprocess.Popen([str(argument) for argument in arguments],
                                               stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL, **options))

    def start_editor(self, *files):
        self.start(*self.command, "--new-window", *files, cwd=self.home)
        self.window = until(self.find_windows, "the editor's window")[0]
        self.resize(*WINDOW)

    def crash_editor(self):
        self.processes[-1].kill()
        self.processes.pop().wait(PATIENCE)

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

    def take(self, name, window=None, part=None, waits=True):
        """Takes a picture of a window, or of a part of the main one with whatever lies over it, once it rests."""
        path = self.folder / f"{name}@{self.scale}x.png"
        source = ["-window", window or self.window]
        if part:
            left, top, width, height = self.pixels(*part)
            source = ["-window", "root", "-crop",
                      f"{width}x{height}+{self.corner[0] + left}+{self.corner[1] + top}", "+repage"]
        before = None
        for _ in range(12 if waits else 0):
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
    for key, name in (("h", "hand"), ("v", "move"), ("i", "eyedropper"), ("z", "zoom"), ("w", "wand"), ("b", "brush"),
                      ("e", "eraser"), ("m", "select")):
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
        desk.take(f"menu-{key}", part=(0, 0, 860, 400))
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


def take_alerts(desk):
    """A size that no canvas can have, and a file that is no image."""
    desk.keys("ctrl+n")
    until(desk.find_dialog, "the dialog")
    desk.keys("0", "Return")
    desk.take_open("warning-size")
    desk.close_dialog()
    (pathlib.Path(desk.home) / "Torn.png").write_bytes(b"no picture")
    desk.keys("ctrl+o")
    until(desk.find_dialog, "the panel")
    time.sleep(0.5)
    run("xdotool", "type", f"{desk.home}/Torn.png")
    desk.keys("Return")
    time.sleep(1)
    desk.take_open("warning-file")
    desk.close_dialog()


def take_tabs(desk):
    """As many documents as there are letters."""
    for _ in range(25):
        desk.keys("ctrl+n", "Return")
    desk.take("tabs")
    desk.click(*TABS_LIST)
    desk.rest_pointer()
    desk.take("tabs-list", part=(0, 0, *WINDOW))
    desk.keys("Escape")
    desk.point(*FIRST_TAB)
    run("xdotool", "click", "3")
    desk.rest_pointer()
    desk.take("tab-menu", part=(0, 0, *WINDOW))
    desk.keys("Escape")
    for _ in range(25):
        desk.keys("ctrl+w")


def take_loading(desk):
    """A file that is large enough to see it open and be saved."""
    large = pathlib.Path(desk.home) / "Large.png"
    run("convert", "-size", "800x800", "plasma:tomato-steelblue", "-sample", "1200%", large)
    desk.keys("ctrl+o")
    until(desk.find_dialog, "the panel")
    time.sleep(0.5)
    run("xdotool", "type", large)
    desk.keys("Return")
    time.sleep(0.4)
    desk.take("loading", waits=False)
    until(lambda: run("xdotool", "getwindowname", desk.window).decode().startswith("Large"), "the large file")
    desk.keys("ctrl+i", "ctrl+s")
    time.sleep(0.4)
    desk.take("saving", waits=False)
    until(lambda: not run("xdotool", "getwindowname", desk.window).decode().startswith("Large*"), "the save")
    time.sleep(2)
    desk.keys("ctrl+w")


def take_recovery(desk):
    desk.keys("ctrl+i")
    store = pathlib.Path(desk.home) / "state"
    until(lambda: list(store.rglob("*.journal")), "the journal")
    desk.crash_editor()
    desk.start_editor()
    desk.take_open("recovery")
    desk.close_dialog()


def take_all(command, scale, home, folder):
    sample = pathlib.Path(home) / "Dusk.tessel"
    run(sys.executable, ROOT / "scripts/make_sample.py", sample)
    with Desk(command, [sample], scale, home, folder) as desk:
        time.sleep(1)
        desk.keys("ctrl+0", "m", "m")
        desk.drag(*SUN)
        desk.rest_pointer()
        desk.take("window")
        take_panels(desk)
        take_tools(desk)
        take_menus(desk)
        take_dialogs(desk)
        take_alerts(desk)
        take_tabs(desk)
        take_loading(desk)
        for width, height in ((1280, 720), (1000, 640)):
            desk.resize(width, height)
            desk.take(f"window-{width}x{height}")
        desk.resize(*WINDOW)
        desk.keys("ctrl+d", "alt+BackSpace", "ctrl+w")
        desk.take_open("unsaved")
        desk.keys("Tab", "space")
        until(lambda: desk.find_dialog() is None, "the dialog to close")
        desk.take("empty")
        desk.keys("ctrl+n", "Return")
        take_recovery(desk)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("editor", type=pathlib.Path)
    parser.add_argument("--translation", type=pathlib.Path)
    parser.add_argument("scales", nargs="*", type=lambda text: float(text) if "." in text else int(text))
    chosen = parser.parse_intermixed_args()
    command = [chosen.editor.resolve()]
    folder = ALL_PICTURES
    if chosen.translation:
        command += ["--translation", chosen.translation.resolve()]
        folder /= chosen.translation.stem
    folder.mkdir(parents=True, exist_ok=True)
    for scale in chosen.scales or [1, 2]:
        with tempfile.TemporaryDirectory() as home:
            take_all(command, scale, home, folder)
    if chosen.translation:
        print(f"The pictures are in {folder.relative_to(ROOT)}/.")
        return
    SHOWN_PICTURES.mkdir(exist_ok=True)
    for name in sorted(shown_pictures()):
        # A palette halves the size of the files, with no visible difference at this scale.
        run("convert", ALL_PICTURES / f"{name}.png", "-dither", "FloydSteinberg", "-colors", "255", "-strip",
            "-define", "png:compression-level=9", f"PNG8:{SHOWN_PICTURES / name}.png")
    print(f"The pictures are in {ALL_PICTURES.relative_to(ROOT)}/, those of the documents in docs/pictures/.")


if __name__ == "__main__":
    main()
