"""Decides about each new call with the library, in Kamailio's own processes. kamailio.cfg calls decide().

The environment variable QUVA_PATH, with a slash at its end, names another configuration directory than /etc/quva-conf/;
CALLRECORDINGUTILS_LIBRARY names another library than the installed one.
"""

import ctypes
import os

import KSR

import recording_flags

ERROR, NO, YES = -1, 0, 1


class Rule(ctypes.Structure):
    """callrecording_rule, member by member."""

    _fields_ = [("size", ctypes.c_size_t)] + \
               [(name, ctypes.c_int32) for name in
                ("place", "id", "state", "forbids_recording", "recording_type", "caller_call_type",
                 "called_call_type")] + \
               [(name, ctypes.c_char_p) for name in
                ("caller_pattern", "called_pattern", "record_to", "recording_duration", "description")]


class Party(ctypes.Structure):
    """callrecording_party, as a text."""

    _fields_ = [("size", ctypes.c_size_t)] + \
               [field for name in ("text", "user", "host", "port")
                for field in ((name, ctypes.c_char_p), (name + "_length", ctypes.c_size_t))]

    def __init__(self, text):
        super().__init__(ctypes.sizeof(Party), text, len(text))


class Failure(ctypes.Structure):
    """callrecording_failure."""

    _fields_ = [("size", ctypes.c_size_t), ("kind", ctypes.c_int32), ("text", ctypes.c_char * 1020)]

    def __init__(self):
        super().__init__(ctypes.sizeof(Failure))


def load_library():
    library = ctypes.CDLL(os.environ.get("CALLRECORDINGUTILS_LIBRARY", "libcallrecordingutils.so.1"))
    library.callrecording_open.restype = ctypes.c_void_p
    library.callrecording_open.argtypes = [ctypes.c_char_p]
    library.callrecording_reload_if_changed.restype = ctypes.c_int32
    library.callrecording_reload_if_changed.argtypes = [ctypes.c_void_p, ctypes.POINTER(Failure)]
    library.callrecording_decide_parties.restype = ctypes.c_int32
    library.callrecording_decide_parties.argtypes = [ctypes.c_void_p, ctypes.POINTER(Party), ctypes.POINTER(Party),
                                                     ctypes.POINTER(ctypes.POINTER(Rule))]
    library.callrecording_rule_free.restype = None
    library.callrecording_rule_free.argtypes = [ctypes.POINTER(Rule)]
    return library


class Script:
    """The rules are read before Kamailio forks, so its processes share the memory until the file changes."""

    def __init__(self):
        self.library = load_library()
        self.rules = self.library.callrecording_open(None)
        self.last_failure = b""

    def child_init(self, rank):
        return 0

    def reload_if_changed(self):
        """A Kamailio process has no thread to watch the file, so it looks when a call comes."""
        failure = Failure()
        self.library.callrecording_reload_if_changed(self.rules, ctypes.byref(failure))
        if failure.text and failure.text != self.last_failure:
            KSR.err(f"rules: {failure.text.decode(errors='replace')}\n")
        self.last_failure = failure.text

    def decide(self, message):
        rule = ctypes.POINTER(Rule)()
        try:
            self.reload_if_changed()
            caller, called = (Party(os.fsencode(KSR.pv.gete(name))) for name in ("$var(caller)", "$var(called)"))
            answer = self.library.callrecording_decide_parties(self.rules, ctypes.byref(caller), ctypes.byref(called),
                                                               ctypes.byref(rule))
            if answer == YES:
                found = rule.contents
                return recording_flags.record(found.id, found.record_to, found.recording_duration, found.description)
            return recording_flags.NOT_RECORDED if answer == NO else recording_flags.UNDECIDED
        except Exception as error:  # A call that cannot be decided is no reason to lose it.
            KSR.err(f"no decision: {error!r}\n")
            return recording_flags.UNDECIDED
        finally:
            self.library.callrecording_rule_free(rule)


def mod_init():
    return Script()
