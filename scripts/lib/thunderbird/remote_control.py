"""Thunderbird's remote control (Marionette): scripts run with the rights of the program itself, and in a page."""

import json
import socket

CONNECT_SECONDS = 30
ANSWER_SECONDS = 120


class RemoteControl:
    """A session with a Thunderbird that was started with --marionette. Used with `with`."""

    def __init__(self, port):
        self._socket = socket.create_connection(("127.0.0.1", port), CONNECT_SECONDS)
        self._socket.settimeout(ANSWER_SECONDS)
        self._file = self._socket.makefile("rb")
        self._last = 0
        self._doing = "the greeting"

    def __enter__(self):
        self._read()  # a greeting
        self._call("WebDriver:NewSession", capabilities={"alwaysMatch": {"timeouts": {"script": ANSWER_SECONDS * 1000}}})
        return self

    def __exit__(self, *_):
        """Thunderbird turns others away until the session is over, and sees too late that a connection was closed."""
        try:
            self._call("WebDriver:DeleteSession")
        except OSError:
            pass  # it has ended, and the session with it
        self._file.close()
        self._socket.close()

    def _read(self):
        digits = b""
        while (byte := self._file.read(1)) != b":":
            if not byte:
                raise OSError(f"Thunderbird has ended its remote control at {self._doing}")
            digits += byte
        return json.loads(self._file.read(int(digits)))

    def _call(self, command, **arguments):
        self._last += 1
        self._doing = command
        message = json.dumps([0, self._last, command, arguments]).encode()
        self._socket.sendall(b"%d:%s" % (len(message), message))
        _, _, error, result = self._read()
        if error:
            raise OSError(f"{command}: {error['message']}")
        return result

    def run(self, script, *arguments):
        """Runs the body of an async function with `arguments` in the main window; returns what it returns."""
        self._call("Marionette:SetContext", value="chrome")
        body = ("const [window, finish] = [Services.wm.getMostRecentWindow('mail:3pane'), arguments[arguments.length - 1]];"
                f"(async (...args) => {{{script}}})(...[...arguments].slice(0, -1))"
                ".then(value => finish({value}), error => finish({error: String(error)}));")
        outcome = self._call("WebDriver:ExecuteAsyncScript", script=body, args=list(arguments))["value"]
        if "error" in outcome:
            raise OSError(outcome["error"])
        return outcome.get("value")
