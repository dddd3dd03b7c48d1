#!/usr/bin/env python3
"""drive_by_name.py EDITOR CLI: works in the real editor as assistive technology does: finds things by their
names, acts on them, reads back what they say, and looks for things that can be used but have no name.
"""

import os
import pathlib
import sys
import tempfile

from accessible import application, on_a_bus_of_its_own
from drive_editor import Editor, Pictures, Screen, check, run, until

# What a user, or assistive technology in his place, sets off.
USES = {"Press", "Toggle", "ShowMenu", "Increase", "Decrease", "SetFocus"}


def can_be_used(thing):
    return thing.has("FOCUSABLE") or USES.intersection(thing.actions())


def nameless(root):
    """The things in a tree that can be used but have no name, each with what leads there."""
    found = []
    for above, thing in root.walk():
        # A list that drops down is spoken of by the name of its box.
        is_dropdown = thing.role == "list" and above and above[-1].role == "combo box"
        # Folders have no size, say, and the toolkit has a cell for it all the same.
        is_of_file = any(outer.name == "Files" for outer in above)
        if is_dropdown or is_of_file or thing.name.strip() or thing.has_label() or not can_be_used(thing):
            continue
        found.append(" > ".join(map(str, (*above, thing))))
    return found


def markup_in(root):
    """Things whose names or descriptions would be read out with tags."""
    return [str(thing) for _, thing in root.walk() if "</" in thing.name + thing.description]


def expect_names(root, where):
    found = nameless(root)
    assert not found, f"without a name in {where}:\n" + "\n".join(found)
    found = markup_in(root)
    assert not found, f"markup in {where}:\n" + "\n".join(found)
    check(len(root.children()) > 0, f"everything has a name in {where}")


def become(condition, what):
    until(condition, what)
    check(True, what)


def choose_tools(app):
    for name, other in (("Magic Wand", "Zoom"), ("Zoom", "Magic Wand")):
        tool = app.find("radio button", name, "SHOWING", "ENABLED")
        tool.do("Press")
        become(lambda tool=tool: tool.has("CHECKED"), f"{name} is chosen")
        before = app.find("radio button", other)
        become(lambda before=before: not before.has("CHECKED"), f"{other} is not")
    app.find("radio button", "Zoom").do("Press")
    check(app.find("radio button", "Zoom").has("CHECKED"), "choosing it again leaves it chosen")
    app.find("radio button", "Magic Wand").do("Press")
    tolerance = app.find("spin button", "Tolerance", "SHOWING")
    tolerance.value = 77
    become(lambda: tolerance.value == 77, "the tolerance is set")


def edit_layers(app):
    layers = app.find("tree", "Layers", "SHOWING")
    layers.find("table cell", "first, layer", "SELECTED")
    menu_item(app, "Layer", "Duplicate").do("Press")
    copy = layers.find("table cell", "first Copy, layer", "SELECTED")
    app.find("frame", "first* — Orvanel")
    check(not layers.find("table cell", "first, layer").has("SELECTED"), "the copy is active")

    opacity = app.find("spin button", "Opacity", "SHOWING")
    opacity.value = 40
    become(lambda: opacity.value == 40, "the copy's opacity is set")
    layers.find("table cell", "first, layer").do("Toggle")
    become(lambda: not copy.has("SELECTED") and opacity.value == 100, "another row shows its own opacity")
    copy.do("Toggle")
    become(lambda: copy.has("SELECTED") and opacity.value == 40, "and the copy's row again")

    app.find("push button", "New Layer", "SHOWING").do("Press")
    layers.find("table cell", "Layer, layer", "SELECTED")
    for _ in range(3):
        menu_item(app, "Edit", "Undo").do("Press")
    become(lambda: not layers.find_all("table cell", "first Copy, layer"), "undone by name")
    check(not menu_item(app, "Edit", "Undo").has("ENABLED"), "nothing is left to undo")


def menu_item(app, menu, name):
    """Undo and Redo go on to say what."""
    items = app.find("menu item", menu, "SHOWING")
    return until(lambda: [item for item in items.find_all("menu item") if item.name.startswith(name)],
                 f"the item {name}")[0]


def show_channels(app):
    app.find("page tab", "Channels").do("Press")
    channels = app.find("list", "Channels", "SHOWING")
    channels.find("list item", "Red, visible", "CHECKED")
    app.find("page tab", "Layers").do("Press")
    app.find("tree", "Layers", "SHOWING")


class Mouse:
    """Opens windows with the mouse: who asks for a modal one by name would wait for its end."""

    def __init__(self, editor, app):
        self.editor, self.app = editor, app

    def click(self, thing):
        run("xdotool", "mousemove", *map(str, thing.centre()), "click", "1")

    def choose(self, *names):
        """Goes through the menus."""
        place = self.app
        for name in names:
            place = place.find("menu item", name, "SHOWING")
            self.click(place)


def swatch(app, name):
    """Its name goes on to tell its colour."""
    return until(lambda: [thing for thing in app.find_all("push button", states=("SHOWING",))
                          if thing.name.startswith(f"{name}: #")], f"the swatch {name}")[0]


def shown_windows(app):
    return [window for window in app.children() if window.has("SHOWING")]


def look_into_window(mouse, app, title):
    until(lambda: len(shown_windows(app)) == 2, f"the window {title}")
    for window in shown_windows(app):
        expect_names(window, f"\"{window.name}\" ({title})")
    cancel = app.find_all("push button", "Cancel", ("SHOWING",))
    if cancel:
        mouse.click(cancel[0])
    else:
        mouse.editor.press_in_other_window("Escape")
    until(lambda: len(shown_windows(app)) == 1, f"the end of {title}")


def look_into_windows(editor, app):
    mouse = Mouse(editor, app)
    for path in (("Image", "Image Size..."), ("Image", "Canvas Size..."), ("File", "New..."), ("File", "Open..."),
                 ("File", "Save As..."), ("File", "Export Image..."), ("Image", "Adjustments", "Levels..."),
                 ("Help", "Keyboard Shortcuts"), ("Help", "About Orvanel")):
        mouse.choose(*path)
        look_into_window(mouse, app, path[-1])
    for name in ("Foreground Color", "Background Color"):
        mouse.click(swatch(app, name))
        look_into_window(mouse, app, f"Color Picker, {name}")


def look_into_question(editor, app):
    mouse = Mouse(editor, app)
    mouse.choose("File", "Close")
    save = app.find("push button", "Save", "SHOWING")
    expect_names(app, "the question about unsaved changes")
    others = [app.find("push button", name, "SHOWING") for name in ("Don't Save", "Cancel")]
    lefts = [button.place()[0] for button in (save, *others)]
    check(lefts == sorted(lefts), "Save, Don't Save and Cancel stand in this order on any desktop")
    mouse.click(others[-1])
    until(lambda: len(shown_windows(app)) == 1, "the end of the question")


def look_into_recovery(program, document, folder):
    """After a crash."""
    editor = Editor(program, [document], folder)
    try:
        editor.wait_for_document("first")
        editor.keys("ctrl+i")
        until(lambda: list((pathlib.Path(folder) / "state").rglob("*.journal")), "the journal")
    finally:
        editor.process.kill()
        editor.process.wait()
    editor = Editor(program, [], folder)
    try:
        dialog = application(editor.process).find("dialog", "Recover Unsaved Documents", "SHOWING")
        expect_names(dialog, "the offer to recover documents")
    finally:
        editor.process.kill()
        editor.process.wait()


def work_through(editor, app):
    expect_names(app, "the main window")
    choose_tools(app)
    edit_layers(app)
    show_channels(app)
    look_into_windows(editor, app)
    look_into_question(editor, app)
    menu_item(app, "File", "Save").do("Press")
    app.find("frame", "first — Orvanel")
    menu_item(app, "File", "Close").do("Press")
    app.find("push button", "Create a new document", "SHOWING")
    expect_names(app, "the empty window")


def main():
    program, cli = sys.argv[1:3]
    # A desktop that puts the buttons of dialogs in another order.
    os.environ.update(XDG_CURRENT_DESKTOP="GNOME", QT_QPA_PLATFORMTHEME="gnome")
    with tempfile.TemporaryDirectory() as folder, Screen():
        first = Pictures(cli, folder).make("first", 0)
        editor = Editor(program, [first], folder)
        try:
            editor.wait_for_document("first")
            work_through(editor, application(editor.process))
        finally:
            editor.close()
        look_into_recovery(program, first, folder)


if __name__ == "__main__":
    on_a_bus_of_its_own(main)
