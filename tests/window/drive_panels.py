#!/usr/bin/env python3
"""drive_panels.py EDITOR CLI: works in the panels and dialogs of the real editor with the mouse and the keys, and
compares the files that it saves with what the same commands make of them without a window.
"""

import json
import shutil
import sys
import tempfile
import time

from accessible import application, on_a_bus_of_its_own
from drive_editor import MODES, Editor, Pictures, Screen, check, pixels_of, run, until

LASSO = ((30, 30), (90, 30), (90, 70), (130, 110), (60, 110), (30, 80))
CORNERS = ((120, 20), (210, 20), (210, 90), (160, 140), (120, 100))
# Where the shape lies for each mode; something stays selected.
OFFSETS = ((0, 0), (20, 20), (-10, 30), (10, 10))


class Hand:
    """The user's hand in the panels, which finds everything by its name."""

    def __init__(self, editor, app):
        self.editor, self.app = editor, app

    def move(self, x, y):
        run("xdotool", "mousemove", str(x), str(y))
        time.sleep(0.03)

    def click(self, thing, times=1):
        self.move(*thing.centre())
        run("xdotool", "click", "--repeat", str(times), "--delay", "40", "1")

    def drag(self, *places):
        """Presses at the first place of the screen, passes the others slowly, releases at the last."""
        self.move(*places[0])
        run("xdotool", "mousedown", "1")
        for (x0, y0), (x1, y1) in zip(places, places[1:]):
            for step in range(1, 7):
                self.move(x0 + (x1 - x0) * step // 6, y0 + (y1 - y0) * step // 6)
        run("xdotool", "mouseup", "1")

    def type_number(self, number):
        self.editor.keys("ctrl+a", *str(number))

    def choose(self, *names):
        """Goes through the menus."""
        place = self.app
        for name in names:
            place = place.find("menu item", name, "SHOWING", "ENABLED")
            self.click(place)

    def hold_for(self, slot, tool):
        """Holds a slot of the palette until its menu opens, and lets go over a tool."""
        button = self.app.find("radio button", slot, "SHOWING", "ENABLED")
        self.move(*button.centre())
        run("xdotool", "mousedown", "1")
        item = button.find("menu item", tool, "SHOWING")
        self.move(*item.centre())
        run("xdotool", "mouseup", "1")
        self.app.find("radio button", tool, "CHECKED")

    def row(self, name, *states):
        return self.app.find("table cell", f"{name}, layer", "SHOWING", *states)

    def rename(self, name, new_name):
        self.click(self.row(name, "SELECTED"), times=2)
        # The field of a name is no part of the tree; it takes the keyboard from the list, which had it from the
        # canvas.
        canvas, layers = self.app.find("canvas", "Canvas"), self.app.find("tree", "Layers")
        until(lambda: not canvas.has("FOCUSED") and not layers.has("FOCUSED"), "the field of a name")
        run("xdotool", "type", new_name)
        self.editor.keys("Return")
        self.row(new_name, "SELECTED")
        until(lambda: canvas.has("FOCUSED"), "the keyboard back at the canvas")

    def accept_dialog(self):
        self.editor.keys("Return")
        until(lambda: not self.app.find_all("text", "Width"), "the dialog's end")
        # There is no window manager that would give the keyboard back.
        run("xdotool", "windowfocus", "--sync", self.editor.window)

    def eyes(self):
        return self.app.find_all("table cell", "Visible") + self.app.find_all("table cell", "Hidden")


class Comparison:
    """A document, and what the same steps make of it without a window."""

    def __init__(self, pictures, document):
        self.pictures, self.document = pictures, document
        self.original = document.with_name("original.tessel")
        shutil.copy(document, self.original)
        self.steps = []

    def expected(self):
        script = self.document.with_name("steps.json")
        script.write_text(json.dumps(self.steps))
        out = self.document.with_name("expected.tessel")
        run(self.pictures.cli, "run", script, self.original, out)
        return out

    def seen(self, path):
        """The image, and the tree with everything but identities."""
        facts = json.loads(run(self.pictures.cli, "info", path))
        for node in facts["nodes"]:
            del node["id"]
        image = path.with_suffix(".seen.png")
        run(self.pictures.cli, "convert", path, image)
        return facts["canvasWidth"], facts["canvasHeight"], facts["nodes"], pixels_of(image)

    def after(self, editor, *steps):
        """Saves what the editor has now and compares it with the document after these steps as well."""
        self.steps += steps
        editor.save(self.document)
        saved, expected = self.seen(self.document), self.seen(self.expected())
        for got, wanted in zip(saved[:3], expected[:3]):
            assert got == wanted, f"the editor saved {got}, not {wanted}"
        return saved == expected


def shapes_of(points):
    """The mode, the modifiers that choose it, and the points of a shape for each mode."""
    for (mode, hold), (dx, dy) in zip(MODES.items(), OFFSETS):
        yield mode, hold, [(x + dx, y + dy) for x, y in points]


def draw_with_lassos(hand, compare):
    editor = hand.editor
    hand.hold_for("Lasso Select", "Polygonal Lasso Select")
    steps = []
    for mode, hold, corners in shapes_of(CORNERS):
        # The first press would otherwise move what is selected, and the last says how the shape combines.
        for corner in [*corners, corners[0]]:
            editor.click(*corner, hold=hold)
        steps.append({"do": "polygon", "points": corners, "mode": mode})
    editor.keys("alt+BackSpace", "Escape")
    steps += [{"do": "fill", "color": [0, 0, 0, 1]}, {"do": "deselect"}]
    check(compare.after(editor, *steps), "the polygonal lasso")

    hand.hold_for("Polygonal Lasso Select", "Lasso Select")
    steps = []
    for mode, hold, points in shapes_of(LASSO):
        editor.drag(*points, hold=hold)
        steps.append({"do": "polygon", "points": points, "mode": mode})
    editor.keys("x", "alt+BackSpace", "Escape")
    steps += [{"do": "fill", "color": [1, 1, 1, 1]}, {"do": "deselect"}]
    check(compare.after(editor, *steps), "the lasso")


def add_named_layers(hand, compare):
    """A key for a tool follows each name, which types nothing if the field is closed and works on the canvas."""
    editor = hand.editor
    for name, (x, y) in (("Sky", (20, 20)), ("Sea", (100, 60))):
        hand.click(hand.app.find("push button", "New Layer", "SHOWING"))
        hand.rename("Layer", name)
        editor.keys("v", "m")
        hand.app.find("radio button", "Rectangle Select", "CHECKED")
        editor.drag((x, y), (x + 80, y + 70))
        editor.keys("alt+BackSpace", "Escape")
        compare.steps += [{"do": "addLayer", "name": "Layer"}, {"do": "set", "name": name},
                          {"do": "rectangle", "x": x, "y": y, "width": 80, "height": 70},
                          {"do": "fill", "color": [1, 1, 1, 1]}, {"do": "deselect"}]
    check(compare.after(editor), "new layers and their names")


def set_opacity(hand, compare):
    opacity = hand.app.find("spin button", "Opacity", "SHOWING")
    left, top, _, height = opacity.find("push button", "Opacity: slider").place()
    hand.move(left - 20, top + height // 2)
    run("xdotool", "click", "1")
    opacity.find("text", "Opacity", "FOCUSED")
    hand.type_number(40)
    hand.editor.keys("Return")
    until(lambda: opacity.value == 40, "the opacity")
    check(compare.after(hand.editor, {"do": "set", "opacity": 0.4}), "the opacity by its field")
    hand.editor.keys("z")
    hand.app.find("radio button", "Zoom", "CHECKED")


def drag_row(hand, compare):
    """The uppermost layer goes below the lowest."""
    left, top, width, height = hand.row("first").place()
    x = left + width // 2
    hand.drag((x, hand.row("Sea").centre()[1]), (x, top + height - 3), (x, top + height - 2))
    until(lambda: hand.row("Sea").place()[1] == top, "the row at its new place")
    step = {"do": "moveNode", "node": "Sea", "parent": None, "index": 0}
    check(compare.after(hand.editor, step), "a row dragged below the others")


def sweep_eyes(hand, compare):
    eyes = sorted((eye.centre() for eye in hand.eyes()), key=lambda place: place[1])
    assert len(eyes) == 3, f"eyes at {eyes}"
    hand.drag(*eyes)
    until(lambda: len(hand.app.find_all("table cell", "Hidden")) == 3, "three hidden rows")
    hidden = [step for name in ("first", "Sky", "Sea")
              for step in ({"do": "select", "node": name}, {"do": "set", "isVisible": False})]
    check(compare.after(hand.editor, *hidden), "an eye swept over all rows")
    hand.editor.keys("ctrl+z")
    until(lambda: len(hand.app.find_all("table cell", "Visible")) == 3, "three visible rows")
    compare.steps = compare.steps[:-len(hidden)]
    check(compare.after(hand.editor), "the sweep undone")


def enter_sizes(hand, compare):
    hand.choose("Image", "Image Size...")
    hand.app.find("text", "Width", "FOCUSED")
    hand.type_number(120)
    until(lambda: hand.app.find("text", "Height").text == "90", "the height that goes with the width")
    hand.accept_dialog()
    step = {"do": "imageSize", "width": 120, "height": 90, "method": 0}
    check(compare.after(hand.editor, step), "the image's size")

    hand.choose("Image", "Canvas Size...")
    hand.app.find("text", "Width", "FOCUSED")
    hand.click(hand.app.find("check box", "Top left"))
    hand.click(hand.app.find("text", "Width"))
    hand.type_number(150)
    hand.editor.keys("Tab")
    hand.app.find("text", "Height", "FOCUSED")
    hand.type_number(100)
    hand.accept_dialog()
    step = {"do": "canvasSize", "width": 150, "height": 100, "anchorX": -1, "anchorY": -1}
    check(compare.after(hand.editor, step), "the canvas's size")


def choose_color(hand, _):
    """The picker leaves the keyboard to the canvas until one of its fields is clicked."""
    app, editor = hand.app, hand.editor
    editor.keys("d")
    hand.click(app.find("push button", "Foreground Color: #000000", "SHOWING"))
    app.find("text", "Hexadecimal color", "SHOWING")
    editor.keys("x")
    app.find("push button", "Foreground Color: #FFFFFF", "SHOWING")
    hand.click(app.find("text", "Hexadecimal color", "SHOWING"))
    app.find("text", "Hexadecimal color", "FOCUSED")
    editor.keys("ctrl+a", *"00ff00")
    app.find("push button", "Foreground Color: #00FF00", "SHOWING")
    hand.click(app.find("push button", "OK", "SHOWING"))


def main():
    program, cli = sys.argv[1:3]
    with tempfile.TemporaryDirectory() as folder, Screen():
        pictures = Pictures(cli, folder)
        first = pictures.make("first", 0)
        editor = Editor(program, [first], folder)
        try:
            editor.wait_for_document("first")
            editor.find_canvas()
            hand, compare = Hand(editor, application(editor.process)), Comparison(pictures, first)
            for work in (draw_with_lassos, add_named_layers, set_opacity, drag_row, sweep_eyes, enter_sizes,
                         choose_color):
                work(hand, compare)
        finally:
            editor.close()


if __name__ == "__main__":
    on_a_bus_of_its_own(main)
