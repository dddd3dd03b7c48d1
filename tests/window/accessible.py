"""The editor as assistive technology finds it: a tree of things with roles, names, states, actions and values."""

import os
import pathlib
import subprocess
import sys
import tempfile

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402  (the version comes first)

from drive_editor import until  # noqa: E402

INSIDE = "ORVANEL_TEST_HAS_OWN_BUS"


def on_a_bus_of_its_own(work):
    """Runs the script again in a session of its own, whose bus nobody else is on, and `work` there."""
    if INSIDE in os.environ:
        work()
        return
    with tempfile.TemporaryDirectory() as folder:
        runtime = pathlib.Path(folder) / "run"
        runtime.mkdir(mode=0o700)
        environment = dict(os.environ, HOME=folder, XDG_RUNTIME_DIR=str(runtime),
                           QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", **{INSIDE: "1"})
        for name in ("AT_SPI_BUS_ADDRESS", "DISPLAY", "WAYLAND_DISPLAY"):
            environment.pop(name, None)
        command = ["dbus-run-session", "--", sys.executable, "-W", "ignore::DeprecationWarning", *sys.argv]
        sys.exit(subprocess.run(command, env=environment, check=False).returncode)


class Thing:
    """One thing of the tree. What is read is what is so at that moment."""

    def __init__(self, accessible):
        self._accessible = accessible

    @property
    def accessible(self):
        # Nothing here listens to the signals that would keep the library's copies up to date.
        self._accessible.clear_cache()
        return self._accessible

    @property
    def name(self):
        return self.accessible.get_name() or ""

    @property
    def description(self):
        return self.accessible.get_description() or ""

    @property
    def role(self):
        return self.accessible.get_role_name()

    def __str__(self):
        return f"{self.role} \"{self.name}\""

    def has(self, *states):
        now = self.accessible.get_state_set()
        return all(now.contains(getattr(Atspi.StateType, state)) for state in states)

    def children(self):
        this = self.accessible
        found = (this.get_child_at_index(i) for i in range(this.get_child_count()))
        return [Thing(child) for child in found if child is not None]

    def walk(self):
        """Itself and everything in it, with the things that lead there."""
        left = [((), self)]
        while left:
            above, thing = left.pop()
            yield above, thing
            inside = (*above, thing)
            left.extend((inside, child) for child in reversed(thing.children()))

    def find_all(self, role, name=None, states=()):
        """Things may go while they are looked at."""
        found = []
        try:
            for _, thing in self.walk():
                if thing.role == role and name in (None, thing.name) and thing.has(*states):
                    found.append(thing)
        except GLib.Error:
            return []
        return found

    def find(self, role, name, *states):
        """Waits for the first one of that kind."""
        return until(lambda: self.find_all(role, name, states), f"{role} \"{name}\" {states}")[0]

    def has_label(self):
        kinds = (relation.get_relation_type() for relation in self.accessible.get_relation_set())
        return Atspi.RelationType.LABELLED_BY in kinds

    def actions(self):
        if "Action" not in self.accessible.get_interfaces():
            return []
        return [Atspi.Action.get_action_name(self.accessible, i)
                for i in range(Atspi.Action.get_n_actions(self.accessible))]

    def do(self, action):
        names = self.actions()
        assert action in names, f"{self} offers {names}, not {action}"
        Atspi.Action.do_action(self.accessible, names.index(action))

    @property
    def value(self):
        return Atspi.Value.get_current_value(self.accessible)

    @value.setter
    def value(self, value):
        Atspi.Value.set_current_value(self.accessible, value)

    @property
    def text(self):
        count = Atspi.Text.get_character_count(self.accessible)
        return Atspi.Text.get_text(self.accessible, 0, count)

    def place(self):
        """Left, top, width and height on the screen."""
        box = Atspi.Component.get_extents(self.accessible, Atspi.CoordType.SCREEN)
        return box.x, box.y, box.width, box.height

    def centre(self):
        left, top, width, height = self.place()
        return left + width // 2, top + height // 2


def application(process):
    """The tree of a running program."""
    def look():
        desktop = Atspi.get_desktop(0)
        for i in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(i)
            if child is not None and child.get_process_id() == process.pid and child.get_child_count() > 0:
                return child
        return None

    return Thing(until(look, "the editor on the accessibility bus"))
