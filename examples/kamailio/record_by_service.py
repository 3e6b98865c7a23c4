"""Asks callrecordingd about each new call. kamailio.cfg calls decide().

The environment variable CALLRECORDINGD_SOCKET names another socket than /run/callrecordingd/socket.
"""

import json
import os
import socket
import time
from urllib.parse import quote

import KSR

import recording_flags

PATH = os.environ.get("CALLRECORDINGD_SOCKET", "/run/callrecordingd/socket")
DEADLINE = 0.05  # Seconds that a call waits at most for the answer.
PAUSE = 1.0  # Seconds in which nobody is asked after a miss, so that not every call waits for a service that hangs.
LONGEST_ANSWER = 1 << 20


class Service:
    """The connection of one Kamailio process, kept between calls."""

    def __init__(self):
        self.connection = None
        self.not_before = 0.0

    def ask(self, path):
        """Returns status and body, or None if there was no answer in time."""
        now = time.monotonic()
        if now < self.not_before:
            return None
        try:
            return self.ask_until(path, now + DEADLINE)
        except (OSError, ValueError) as error:
            KSR.err(f"no answer from {PATH}: {error!r}\n")
            self.disconnect()
            self.not_before = time.monotonic() + PAUSE
            return None

    def ask_until(self, path, deadline):
        if self.connection is not None:
            try:
                return self.exchange(path, deadline)
            except ConnectionError:  # The service has closed the kept connection, or was started again.
                self.disconnect()
        self.connection = socket.socket(socket.AF_UNIX)
        self.wait_until(deadline)
        self.connection.connect(PATH)
        return self.exchange(path, deadline)

    def exchange(self, path, deadline):
        self.wait_until(deadline)
        self.connection.sendall(f"GET {path} HTTP/1.1\r\nHost: localhost\r\n\r\n".encode())
        answer = b""
        while b"\r\n\r\n" not in answer:
            answer += self.receive(deadline)
        head, body = answer.split(b"\r\n\r\n", 1)
        status, *lines = head.decode("latin-1").split("\r\n")
        headers = dict(line.lower().split(": ", 1) for line in lines)
        length = int(headers["content-length"])
        if length > LONGEST_ANSWER:
            raise ValueError(f"an answer of {length} bytes")
        while len(body) < length:
            body += self.receive(deadline)
        if headers.get("connection") == "close":
            self.disconnect()
        return int(status.split()[1]), body

    def wait_until(self, deadline):
        left = deadline - time.monotonic()
        if left <= 0:
            raise TimeoutError("timed out")
        self.connection.settimeout(left)

    def receive(self, deadline):
        self.wait_until(deadline)
        received = self.connection.recv(65536)
        if not received:
            raise ConnectionResetError("the connection was closed")
        return received

    def disconnect(self):
        if self.connection is not None:
            self.connection.close()
        self.connection = None


class Script:
    def __init__(self):
        self.service = Service()

    def child_init(self, rank):
        return 0

    def decide(self, message):
        try:
            caller, called, call = (quote(KSR.pv.gete(name), safe="")
                                    for name in ("$var(caller)", "$var(called)", "$ci"))
            answer = self.service.ask(f"/decide?from={caller}&to={called}&id={call}")
            if answer is None:
                return recording_flags.UNDECIDED
            status, body = answer
            if status != 200:
                KSR.err(f"the service answers {status}: {body[:200]!r}\n")
                return recording_flags.UNDECIDED
            answer = json.loads(body)
            if not answer["recorded"]:
                return recording_flags.NOT_RECORDED
            rule = answer["rule"]
            return recording_flags.record(rule["callrecordingrule_id"], rule["record_to"],
                                          rule["recording_duration"], rule["description"])
        except Exception as error:  # A call that cannot be decided is no reason to lose it.
            KSR.err(f"no decision: {error!r}\n")
            return recording_flags.UNDECIDED


def mod_init():
    return Script()
