#!/usr/bin/env python3
"""session_end.py EDITOR CLI: ends the session around the real editor as a session manager does, and answers its
question about unsaved changes.
"""

import ctypes
import os
import pathlib
import select
import sys
import tempfile
import threading
from ctypes import CFUNCTYPE, POINTER, Structure, byref, c_char_p, c_int, c_ulong, c_void_p

from drive_editor import Editor, Pictures, Screen, check, run, until

SAVE_LOCAL, SAVE_BOTH = 1, 2
INTERACT_NONE, INTERACT_ANY = 0, 2
PENDING = 0
ALL_CALLBACKS = 0x3FF

# What a client may tell the manager, in the order of the library's table, with what follows connection and data.
CALLBACKS = {
    "register_client": (c_char_p,),
    "interact_request": (c_int,),
    "interact_done": (c_int,),
    "save_yourself_request": (c_int, c_int, c_int, c_int, c_int),
    "save_yourself_phase2_request": (),
    "save_yourself_done": (c_int,),
    "close_connection": (c_int, c_void_p),
    "set_properties": (c_int, c_void_p),
    "delete_properties": (c_int, c_void_p),
    "get_properties": (),
}


class Slot(Structure):
    _fields_ = [("callback", c_void_p), ("data", c_void_p)]


class SessionManager:
    """A session of one client."""

    def __init__(self):
        self.ice, self.sm = ctypes.CDLL("libICE.so.6"), ctypes.CDLL("libSM.so.6")
        for function in (self.ice.IceAcceptConnection, self.sm.SmsGenerateClientID):
            function.restype = c_void_p
        self.ice.IceComposeNetworkIdList.restype = c_char_p
        self.kept = []
        self.told = []
        self.orders = []
        self.client = None
        self.listen()
        threading.Thread(target=self.serve, daemon=True).start()

    def c(self, result, arguments, function):
        """The function for the library, which doesn't keep it."""
        self.kept.append(CFUNCTYPE(result, *arguments)(function))
        return self.kept[-1]

    def listen(self):
        error = ctypes.create_string_buffer(256)
        anybody = self.c(c_int, (c_char_p,), lambda host: 1)
        # The library would end the process.
        self.ice.IceSetIOErrorHandler(self.c(None, (c_void_p,), lambda connection: None))
        admit = self.c(c_int, (c_void_p, c_void_p, POINTER(c_ulong), POINTER(Slot), c_void_p), self.admit)
        assert self.sm.SmsInitialize(b"Session", b"1", admit, None, anybody, 256, error), error.value
        count, listeners = c_int(), POINTER(c_void_p)()
        assert self.ice.IceListenForConnections(byref(count), byref(listeners), 256, error), error.value
        self.listeners = [c_void_p(listeners[i]) for i in range(count.value)]
        for listener in self.listeners:
            self.ice.IceSetHostBasedAuthProc(listener, anybody)
        self.address = self.ice.IceComposeNetworkIdList(count, listeners).decode()

    def admit(self, _connection, _data, mask, slots, _failure):
        mask[0] = ALL_CALLBACKS
        for index, (name, arguments) in enumerate(CALLBACKS.items()):
            result = c_int if name == "register_client" else None
            function = self.c(result, (c_void_p, c_void_p, *arguments),
                              lambda connection, data, *values, name=name: self.hear(name, c_void_p(connection), values))
            slots[index].callback = ctypes.cast(function, c_void_p)
            slots[index].data = None
        return 1

    def hear(self, name, connection, values):
        if name == "register_client":
            self.client = connection
            self.sm.SmsRegisterClientReply(connection, c_void_p(self.sm.SmsGenerateClientID(connection)))
            self.sm.SmsSaveYourself(connection, SAVE_LOCAL, 0, INTERACT_NONE, 0)
            return 1
        if name == "interact_request":
            self.sm.SmsInteract(connection)
        elif name == "save_yourself_phase2_request":
            self.sm.SmsSaveYourselfPhase2(connection)
        elif name == "close_connection":
            self.client = None
        self.told.append((name, *values))
        return 1

    def serve(self):
        connections = []
        while True:
            numbers = {self.ice.IceGetListenConnectionNumber(each): each for each in self.listeners}
            open_now = {self.ice.IceConnectionNumber(each): each for each in connections}
            ready, _, _ = select.select([*numbers, *open_now], [], [], 0.05)
            for number in ready:
                if number in open_now:
                    if self.ice.IceProcessMessages(open_now[number], None, None) != 0 or self.client is None:
                        connections.remove(open_now[number])
                    continue
                connection = c_void_p(self.ice.IceAcceptConnection(numbers[number], byref(c_int())))
                while self.ice.IceConnectionStatus(connection) == PENDING:
                    self.ice.IceProcessMessages(connection, None, None)
                connections.append(connection)
                until(lambda each=connection: self.registers(each), "the client")
            # The library may only be used by one thread at a time.
            while self.orders:
                self.orders.pop(0)()

    def registers(self, connection):
        self.ice.IceProcessMessages(connection, None, None)
        return self.client is not None

    def wait_for(self, *what):
        until(lambda: what in self.told, f"the client's {what}")

    def end_session(self):
        self.told.clear()
        self.orders.append(lambda: self.sm.SmsSaveYourself(self.client, SAVE_BOTH, 1, INTERACT_ANY, 0))

    def go_on(self):
        self.orders.append(lambda: self.sm.SmsShutdownCancelled(self.client))

    def die(self):
        self.orders.append(lambda: self.sm.SmsDie(self.client))


def answer(editor, *keys):
    other = until(lambda: [each for each in editor.find_windows() if each != editor.window], "the question")[0]
    run("xdotool", "windowfocus", "--sync", other, "key", *keys)


def end_twice(manager, editor, folder):
    editor.wait_for_document("first")
    until(lambda: ("save_yourself_done", 1) in manager.told, "the client in the session")
    editor.keys("ctrl+i")
    editor.wait_for_document("first*")

    manager.end_session()
    answer(editor, "Escape")
    manager.wait_for("interact_done", 1)
    manager.go_on()
    check(editor.process.poll() is None, "Cancel keeps the session")

    manager.end_session()
    answer(editor, "Tab", "space")
    manager.wait_for("interact_done", 0)
    manager.wait_for("save_yourself_done", 1)
    manager.die()
    until(lambda: editor.process.poll() is not None, "the end of the editor without a second question")
    check(editor.process.returncode == 0, "after Don't Save it ends with the session")
    left = list((pathlib.Path(folder) / "state").rglob("*.journal"))
    check(not left, "nothing is kept that the user has given up")


def main():
    program, cli = sys.argv[1:3]
    with tempfile.TemporaryDirectory() as folder, Screen():
        manager = SessionManager()
        os.environ["SESSION_MANAGER"] = manager.address
        editor = Editor(program, [Pictures(cli, folder).make("first", 0)], folder)
        try:
            end_twice(manager, editor, folder)
        finally:
            if editor.process.poll() is None:
                editor.process.kill()


if __name__ == "__main__":
    main()
