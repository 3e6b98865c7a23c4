#!/usr/bin/env python3
"""Asks whether a call is to be recorded, with the library's C interface and nothing to build.

Usage: decide_call.py DIRECTORY CALLER CALLED, each side as a telephone system has it, such as
                      201, sip:201@pbx:5060, "Alice" <sip:201@pbx>;tag=1 or tel:+49-30-1234
       decide_call.py --check PATTERN

The environment variable CALLRECORDINGUTILS_LIBRARY names another library than the installed one.
"""

import ctypes
import os
import sys

NUMBER = 0
ERROR, NO, YES, DOUBTFUL = -1, 0, 1, 2


class Rule(ctypes.Structure):
    """callrecording_rule, member by member."""

    _fields_ = [("size", ctypes.c_size_t)] + \
               [(name, ctypes.c_int32) for name in
                ("place", "id", "state", "forbids_recording", "recording_type",
                 "caller_call_type", "called_call_type")] + \
               [(name, ctypes.c_char_p) for name in
                ("caller_pattern", "called_pattern", "record_to", "recording_duration",
                 "description")]


class Party(ctypes.Structure):
    """callrecording_party: a text, or user, host and port."""

    _fields_ = [("size", ctypes.c_size_t)] + \
               [field for name in ("text", "user", "host", "port")
                for field in ((name, ctypes.c_char_p), (name + "_length", ctypes.c_size_t))]

    def __init__(self, text):
        super().__init__(ctypes.sizeof(Party), text, len(text))


def load_library():
    library = ctypes.CDLL(os.environ.get("CALLRECORDINGUTILS_LIBRARY", "libcallrecordingutils.so.1"))
    library.callrecording_open.restype = ctypes.c_void_p
    library.callrecording_open.argtypes = [ctypes.c_char_p]
    library.callrecording_close.argtypes = [ctypes.c_void_p]
    library.callrecording_close.restype = None
    library.callrecording_last_failure.restype = ctypes.c_size_t
    library.callrecording_last_failure.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_size_t]
    library.callrecording_decide_parties.restype = ctypes.c_int32
    library.callrecording_decide_parties.argtypes = [
        ctypes.c_void_p, ctypes.POINTER(Party), ctypes.POINTER(Party),
        ctypes.POINTER(ctypes.POINTER(Rule))]
    library.callrecording_rule_free.argtypes = [ctypes.POINTER(Rule)]
    library.callrecording_rule_free.restype = None
    library.callrecording_check_pattern.restype = ctypes.c_int32
    library.callrecording_check_pattern.argtypes = [
        ctypes.c_char_p, ctypes.c_int32, ctypes.POINTER(ctypes.c_size_t), ctypes.c_char_p,
        ctypes.c_size_t]
    return library


def check(library, pattern):
    position = ctypes.c_size_t()
    reason = ctypes.create_string_buffer(256)
    answer = library.callrecording_check_pattern(
        os.fsencode(pattern), NUMBER, ctypes.byref(position), reason, len(reason))
    if answer == YES:
        print("well formed")
    else:
        word = {NO: "malformed", DOUBTFUL: "surely not meant"}.get(answer, "unchecked")
        print(f"{word}: {pattern}: byte {position.value}: {reason.value.decode()}")
    return 0 if answer in (YES, DOUBTFUL) else 1


def decide(library, directory, caller, called):
    rules = library.callrecording_open(os.fsencode(directory))
    failure = ctypes.create_string_buffer(1024)
    if library.callrecording_last_failure(rules, failure, len(failure)) > 0:
        print(failure.value.decode(errors="replace"), file=sys.stderr)
    rule = ctypes.POINTER(Rule)()
    answer = library.callrecording_decide_parties(
        rules, Party(os.fsencode(caller)), Party(os.fsencode(called)), ctypes.byref(rule))
    if answer == YES:
        text = {name: getattr(rule.contents, name).decode(errors="replace")
                for name in ("description", "record_to")}
        print(f"recorded under rule {rule.contents.id} ({text['description']}) "
              f"to {text['record_to']}")
    elif rule:
        print(f"not recorded: rule {rule.contents.id} says never")
    else:
        print("not recorded" if answer == NO else "undecided")
    library.callrecording_rule_free(rule)
    library.callrecording_close(rules)
    return {YES: 0, NO: 1}.get(answer, 3)


def main(arguments):
    if len(arguments) == 2 and arguments[0] == "--check":
        return check(load_library(), arguments[1])
    if len(arguments) == 3:
        return decide(load_library(), *arguments)
    print(__doc__, file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
