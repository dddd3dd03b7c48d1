#!/usr/bin/env python3
"""drive_editor.py EDITOR CLI: works in the real editor on a virtual screen with real key and mouse events, and
compares the files that it saves, pixel by pixel, with what the same commands make of them without a window.
"""

import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))

from patience import PATIENCE, run, until  # noqa: E402  (found by the line above)

WIDTH, HEIGHT = 240, 180
FRAME = (255, 0, 255)
SURROUND = (148, 148, 156)


def pixels_of(path):
    """An image's size and its RGBA bytes."""
    size = run("identify", "-format", "%w %h", f"{path}[0]").split()
    return tuple(map(int, size)), run("convert", f"{path}[0]", "-depth", "8", "rgba:-")


def test_picture(seed):
    """A picture without two equal neighbours in its interior, in a frame that is easy to find on the screen."""
    rows = bytearray()
    for y in range(HEIGHT):
        for x in range(WIDTH):
            if x in (0, WIDTH - 1) or y in (0, HEIGHT - 1):
                rows += bytes(FRAME)
            else:
                rows += bytes((x & 0xF8, y & 0xF8, (x // 16 * 37 + y // 16 * 11 + seed) & 0xF0))
    return bytes(rows)


class Screen:
    """A virtual screen of its own."""

    SIZE = "1280 800"

    def __enter__(self):
        # Servers that start at the same moment may choose the same number, and only one of them gets it. A server
        # that resets when its last client has gone refuses the next one for a moment.
        until(self._start, "a virtual screen")
        os.environ.pop("WAYLAND_DISPLAY", None)
        os.environ["QT_QPA_PLATFORM"] = "xcb"
        return self

    def _start(self):
        numbers, writer = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writer), "-screen", "0", self.SIZE.replace(" ", "x") + "x24",
             "-nolisten", "tcp", "-noreset"],
            pass_fds=[writer], stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(numbers) as source:
            number = source.readline().strip()
        assert number, "the virtual screen did not start"
        os.environ["DISPLAY"] = f":{number}"
        answer = subprocess.run(["xdotool", "getdisplaygeometry"], capture_output=True, text=True, check=False)
        if answer.stdout.strip() == self.SIZE:
            return True
        self.__exit__()
        return False

    def __exit__(self, *_):
        self.server.terminate()
        self.server.wait()


class Editor:
    """The running editor, seen and used from outside."""

    def __init__(self, program, files, home):
        environment = dict(os.environ, HOME=str(home), XDG_CONFIG_HOME=f"{home}/config",
                           XDG_DATA_HOME=f"{home}/data", XDG_STATE_HOME=f"{home}/state")
        # Without a runtime folder no other start of the editor can find this one.
        environment.pop("XDG_RUNTIME_DIR", None)
        self.process = subprocess.Popen([program, *files], env=environment, stdin=subprocess.DEVNULL)
        self.window = until(self._find_window, "the editor's window")
        for command in (("windowmove", self.window, "0", "0"),
                        ("windowsize", "--sync", self.window, "1000", "700"),
                        ("windowfocus", self.window)):
            run("xdotool", *command)

    def _find_window(self):
        assert self.process.poll() is None, "the editor has exited"
        return next(iter(self.find_windows()), None)

    @staticmethod
    def find_windows():
        return subprocess.run(["xdotool", "search", "--onlyvisible", "--class", "orvanel"],
                              capture_output=True, check=False).stdout.decode().split()

    def press_in_other_window(self, key):
        """Presses a key in the window that is open beside the main one."""
        other = until(lambda: [each for each in self.find_windows() if each != self.window], "another window")[0]
        run("xdotool", "windowfocus", "--sync", other, "key", key)
        run("xdotool", "windowfocus", self.window)

    def close(self):
        self.process.terminate()
        self.process.wait(PATIENCE)

    def wait_for_document(self, name):
        """Waits until the document of that name is active, as the window's title says."""
        until(lambda: run("xdotool", "getwindowname", self.window).decode().startswith(name),
              f"the document {name}")

    def find_canvas(self):
        """Shows the picture at 100 % and finds it on the screen, with whole pixels on both axes."""
        self.keys("ctrl+1")
        for attempt in range(4):
            left, top, odd_x, odd_y = until(self._locate, "the canvas on the screen")
            if not odd_x and not odd_y:
                self.origin = (left, top)
                return
            size = (1000 + (attempt + 1 if odd_x else 0), 700 + (attempt + 1 if odd_y else 0))
            run("xdotool", "windowsize", "--sync", self.window, *map(str, size))
        raise AssertionError("the canvas never stands on whole pixels")

    def _locate(self):
        time.sleep(0.3)
        shot = run("import", "-window", self.window, "-depth", "8", "rgb:-")
        size = run("xdotool", "getwindowgeometry", "--shell", self.window).decode()
        geometry = dict(line.split("=") for line in size.split())
        width, height = int(geometry["WIDTH"]), int(geometry["HEIGHT"])
        if len(shot) != width * height * 3:
            return None

        def at(x, y):
            place = (y * width + x) * 3
            return tuple(shot[place:place + 3]) if 0 <= x < width and 0 <= y < height else None

        first = shot.find(bytes(FRAME) * WIDTH)
        if first < 0 or first % 3:
            return None
        top, left = divmod(first // 3, width)

        def margin(x, y, dx, dy):
            length = 0
            while at(x + dx * length, y + dy * length) == SURROUND:
                length += 1
            return length

        across = margin(left - 1, top, -1, 0) - margin(left + WIDTH, top, 1, 0)
        down = margin(left, top - 1, 0, -1) - margin(left, top + HEIGHT, 0, 1)
        return left, top, across % 2, down % 2

    def keys(self, *names):
        for name in names:
            run("xdotool", "key", name)
            time.sleep(0.05)

    def point(self, x, y):
        run("xdotool", "mousemove", str(self.origin[0] + x), str(self.origin[1] + y))
        time.sleep(0.03)

    def drag(self, *points, hold=()):
        """Presses at the first point, passes the others, releases at the last; `hold` names modifiers."""
        self.point(*points[0])
        for name in hold:
            run("xdotool", "keydown", name)
        run("xdotool", "mousedown", "1")
        for (x0, y0), (x1, y1) in zip(points, points[1:]):
            self.point((x0 + x1) // 2, (y0 + y1) // 2)
            self.point(x1, y1)
        run("xdotool", "mouseup", "1")
        for name in hold:
            run("xdotool", "keyup", name)
        time.sleep(0.05)

    def click(self, x, y, hold=()):
        self.drag((x, y), hold=hold)

    def save(self, path):
        """Saves and waits until the file is a new one."""
        before = os.stat(path).st_mtime_ns
        self.keys("ctrl+s")
        until(lambda: os.stat(path).st_mtime_ns != before, f"the save of {path.name}")


MODES = {"new": (), "add": ("shift",), "subtract": ("alt",), "intersect": ("shift", "alt")}
# The corner, width and height of a box for each mode; something stays selected.
BOXES = ((20, 15, 60, 40), (45, 30, 60, 45), (60, 20, 25, 30), (28, 22, 70, 44))


def select_by_rectangles(editor):
    steps = []
    editor.keys("m", "d")
    for (mode, hold), (x, y, width, height) in zip(MODES.items(), BOXES):
        editor.drag((x, y), (x + width, y + height), hold=hold)
        steps.append({"do": "rectangle", "x": x, "y": y, "width": width, "height": height, "mode": mode})
    editor.keys("alt+BackSpace", "Escape")
    return steps + [{"do": "fill", "color": [0, 0, 0, 1]}, {"do": "deselect"}]


def select_by_ellipses(editor):
    steps = []
    editor.keys("m", "x")
    for (mode, hold), (left, top, width, height) in zip(MODES.items(), BOXES):
        x, y = left + 110, top + 70
        editor.drag((x, y), (x + width, y + height), hold=hold)
        steps.append({"do": "ellipse", "cx": x + width / 2, "cy": y + height / 2, "rx": width / 2,
                      "ry": height / 2, "mode": mode})
    editor.keys("alt+BackSpace", "Escape", "x")
    return steps + [{"do": "fill", "color": [1, 1, 1, 1]}, {"do": "deselect"}]


# A place for each mode; the last one's surroundings and what is selected by then have pixels in common.
WAND_PLACES = ((150, 120), (60, 130), (158, 128), (64, 134))


def select_by_wand(editor):
    steps = []
    editor.keys("w")
    for (mode, hold), (x, y) in zip(MODES.items(), WAND_PLACES):
        editor.click(x, y, hold=hold)
        steps.append({"do": "wand", "x": x, "y": y, "tolerance": 32, "mode": mode})
    editor.keys("ctrl+i", "Escape")
    # One unit of tolerance for each point to the right or down: 32 + 20 + 8.
    editor.drag((60, 130), (80, 138))
    editor.keys("alt+BackSpace", "Escape")
    return steps + [{"do": "invert"}, {"do": "deselect"}, {"do": "wand", "x": 60, "y": 130, "tolerance": 60},
                    {"do": "fill", "color": [0, 0, 0, 1]}, {"do": "deselect"}]


def place_a_copy(editor):
    """Copies a piece to a layer of its own, then moves, scales and transforms it."""
    editor.keys("v", "m")
    editor.drag((30, 60), (130, 140))
    editor.keys("ctrl+c", "ctrl+v", "Escape", "v")
    editor.drag((80, 100), (87, 95))
    # The corner at (137, 135) goes to (157, 151): 1.2 times the size, from the opposite corner.
    editor.drag((137, 135), (157, 151))
    editor.keys("ctrl+t")
    editor.drag((97, 103), (107, 109))
    editor.keys("Return", "ctrl+t")
    editor.drag((107, 109), (130, 90))
    editor.keys("Escape")
    return [{"do": "rectangle", "x": 30, "y": 60, "width": 100, "height": 80}, {"do": "copy"},
            {"do": "paste"}, {"do": "deselect"}, {"do": "move", "dx": 7, "dy": -5},
            {"do": "scale", "to": [37, 55, 120, 96]},
            {"do": "transform", "matrix": [1, 0, 0, 1, 10, 6]}]


class Pictures:
    """The documents of a run in a folder of their own, and what their files should look like."""

    def __init__(self, cli, folder):
        self.cli = cli
        self.folder = pathlib.Path(folder)

    def make(self, name, seed):
        """A document of one layer, and the picture that it was made of."""
        source = self.folder / f"{name}.ppm"
        source.write_bytes(b"P6 %d %d 255\n" % (WIDTH, HEIGHT) + test_picture(seed))
        run("convert", source, source.with_suffix(".png"))
        run(self.cli, "convert", source.with_suffix(".png"), source.with_suffix(".tessel"))
        return source.with_suffix(".tessel")

    def flattened(self, document):
        """The pixels of a document as its file has them."""
        out = self.folder / "flattened.png"
        run(self.cli, "convert", document, out)
        return pixels_of(out)

    def edited(self, document, steps):
        """The pixels of the document's picture after the steps of a script."""
        script = self.folder / "steps.json"
        script.write_text(json.dumps(steps))
        out = self.folder / "edited.png"
        run(self.cli, "run", script, document.with_suffix(".png"), out)
        return pixels_of(out)


def check(is_true, what):
    assert is_true, f"not as expected: {what}"
    print(f"as expected: {what}", flush=True)


def with_piece(picture, piece_of, x, y, width, height):
    """The picture's bytes with a rectangle of another one's."""
    out = bytearray(picture)
    for row in range(y, y + height):
        place = slice((row * WIDTH + x) * 4, (row * WIDTH + x + width) * 4)
        out[place] = piece_of[place]
    return bytes(out)


def work_through(editor, pictures, first, second):
    steps = []
    for work in (select_by_rectangles, select_by_ellipses, select_by_wand):
        steps += work(editor)
        editor.save(first)
        check(pictures.flattened(first) == pictures.edited(first, steps), work.__name__.replace("_", " "))

    # A piece of one document goes into the other, at the same place.
    # A slot that is chosen again shows its last tool, the ellipse; a second press gives the rectangle.
    editor.keys("v", "m", "m")
    editor.drag((100, 60), (140, 100))
    editor.keys("ctrl+c", "Escape", "Tab", "ctrl+v")
    editor.save(second)
    expected = with_piece(pictures.edited(second, [])[1], pictures.edited(first, steps)[1], 100, 60, 40, 40)
    check(pictures.flattened(second)[1] == expected, "paste into another document")
    editor.keys("Tab")
    steps += [{"do": "rectangle", "x": 100, "y": 60, "width": 40, "height": 40}, {"do": "deselect"}]

    steps += place_a_copy(editor)
    editor.save(first)
    check(pictures.flattened(first) == pictures.edited(first, steps), "move, scale and free transform")

    records = sum(step["do"] != "copy" for step in steps)
    editor.keys(*["ctrl+z"] * records)
    editor.save(first)
    check(pictures.flattened(first) == pictures.edited(first, []), "undo to the start")
    editor.keys(*["ctrl+shift+z"] * records)
    editor.save(first)
    check(pictures.flattened(first) == pictures.edited(first, steps), "redo to the end")


def main():
    program, cli = sys.argv[1:3]
    with tempfile.TemporaryDirectory() as folder, Screen():
        pictures = Pictures(cli, folder)
        first, second = pictures.make("first", 0), pictures.make("second", 90)
        editor = Editor(program, [first, second], folder)
        try:
            # The last one opened is active; the next tab after it is the first.
            editor.wait_for_document("second")
            editor.keys("Tab")
            editor.wait_for_document("first")
            editor.find_canvas()
            work_through(editor, pictures, first, second)
        finally:
            editor.close()


if __name__ == "__main__":
    main()
