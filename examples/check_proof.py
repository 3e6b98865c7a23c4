#!/usr/bin/env python3
"""Checks a certificate that "callrecordingctl prove --certificate" or "check --certificate" wrote, against the rules.

It shares no code with the library: it reads the rule file and the patterns by itself, and tries every set of rules that
an address can satisfy. It does not look for proofs; it only checks that the rules which the certificate names take all
the calls that they are said to take, and prints what it checked, whatever the text in the certificate says. What it
cannot read it does not accept: calls of parties, malformed patterns, and numbers in ranges from 2147483647 on.
Usage: check_proof.py CERTIFICATE RULE-FILE. Exit status: 0 everything is true, 1 something is not, 2 it cannot say."""

import hashlib
import json
import sys

LETTERS = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
DIGITS = "0123456789"
LITERALS = set(LETTERS + DIGITS + "#^/_=+%~@;().:$&'")
HOST, PORT = "host mark", "port mark"  # The "@" and ":" that divide a SIP address; a user may hold others.
ALL = "all"  # The state of a side that accepts whatever follows.
ANY = ("*", 3)
KINDS = ("number", "sip", "number2", "any")


class Refused(Exception):
    """What cannot be checked."""


class Wrong(Exception):
    """What is not true."""


class Row:
    """A character from each of some sets, None for any; the state is how many have been read."""
    start = 0

    def __init__(self, sets):
        self.sets = sets

    def step(self, n, c):
        return n + 1 if n < len(self.sets) and (self.sets[n] is None or c in self.sets[n]) else None

    def accepts(self, n):
        return n == len(self.sets)


class Range:
    """From one number to another. With a leading zero in the low end: texts of its width, in the order of texts. Else the
    leading digits count, and a candidate is no shorter than the low end and no longer than the high one. The state:
    how many characters were read, how many of them count, how these compare with both ends, and if no more of them count."""
    start = (0, 0, 0, 0, False)

    def __init__(self, low, high):
        self.is_fixed = len(low) > 1 and low[0] == "0"
        if self.is_fixed and len(high) < len(low):
            raise Refused(f"the item {low}-{high}")
        if not self.is_fixed and max(int(low), int(high)) >= 2 ** 31 - 1:
            raise Refused(f"the number range {low}-{high}")
        self.sizes = len(low), len(low if self.is_fixed else high)
        self.low, self.high = (low, high[:len(low)]) if self.is_fixed else (str(int(low)), str(int(high)))

    def step(self, state, c):
        n, m, low, high, ended = state
        is_digit = self.is_fixed or c in DIGITS
        if n == self.sizes[1] or low == "zero" or not (n or is_digit):
            return None
        if ended or not is_digit:
            return n + 1, m, low, high, True
        if not self.is_fixed and n == 0 and c == "0":  # Nothing follows a zero.
            return 1, 1, "zero", 0, False
        sign = [(c > end[m:m + 1]) - (c < end[m:m + 1]) for end in (self.low, self.high)]
        return n + 1, m + 1, low or sign[0], high or sign[1], False

    def accepts(self, state):
        n, m, low, high, _ = state
        if n == 0 or not self.sizes[0] <= n <= self.sizes[1]:
            return False
        if low == "zero":
            return self.low == "0"
        return (m, low) >= (len(self.low), 0) and (m, high) <= (len(self.high), 0)


def items(text):
    """Pairs of an item list: whether the item excludes, and what it takes."""
    found = []
    for item in text.split(","):
        excludes = item.startswith("!")
        item = item[excludes:]
        low, _, high = item.partition("-")
        if item and set(item) <= LITERALS | {"?"}:
            low = item
        elif low and high and set(low + high) <= set(DIGITS):
            found.append((excludes, Range(low, high)))
        elif len(low) == 1 and len(high) == 1 and low in LITERALS and high in LETTERS:
            found.append((excludes, Row([{c for c in LETTERS if low < c <= high}])))
        else:
            raise Refused("the item " + item)
        found.append((excludes, Row([None if c == "?" else {c} for c in low])))
    return found


def compared(pattern, kind):
    """The pattern as it is compared: of type SIP with a port, and nothing without an "@"."""
    if kind != 1:
        return pattern
    head, colon, port = pattern.rpartition(":")
    if "@" not in (head if colon else pattern):
        return ""
    return pattern if port and colon else pattern + ("*" if colon else ":*")


class Side:
    """A pattern and its call type. A state is the set of places in the pattern where the reader can be; within a group
    a place also says where each item is."""

    def __init__(self, pattern, kind):
        if kind not in (0, 1, 2, 3):
            raise Refused(f"the call type {kind}")
        self.kind, self.elements, self.memo = kind, [], {}
        pattern = compared(pattern, kind)
        self.is_empty = not pattern
        at = 0
        while at < len(pattern):
            c = pattern[at]
            if c in "[<":
                end = pattern.find("]" if c == "[" else ">", at)
                if end < 0:
                    raise Refused("the pattern " + pattern)
                self.elements.append((c, items(pattern[at + 1:end])))
                at = end
            elif c in LITERALS or c in "?*":
                self.elements.append((c, None))
            else:
                raise Refused("the pattern " + pattern)
            at += 1

    def enter(self, at, places):
        kind, list_of_items = self.elements[at] if at < len(self.elements) else ("", None)
        if list_of_items:
            places.add((at, tuple((i, item.start) for i, (_, item) in enumerate(list_of_items))))
            return
        places.add((at, None))
        if kind == "*":
            self.enter(at + 1, places)

    def settled(self, places):
        """Places before the last "*" that was reached add nothing; behind one at the end everything is accepted."""
        stars = [at for at, _ in places if at < len(self.elements) and self.elements[at][0] == "*"]
        if stars and max(stars) == len(self.elements) - 1:
            return ALL
        return frozenset(place for place in places if not stars or place[0] >= max(stars))

    def begin(self, kind):
        places = set()
        if self.kind in (3, kind) and not self.is_empty:
            self.enter(0, places)
        return self.settled(places)

    def accepts(self, state):
        return state == ALL or (len(self.elements), None) in state

    def step(self, state, symbol):
        if state == ALL or not state:
            return state
        if symbol == HOST and self.kind == 3:  # Only the user is compared.
            return ALL if self.accepts(state) else frozenset()
        c = {HOST: "@", PORT: ":"}.get(symbol, symbol)
        if (state, c) not in self.memo:
            self.memo[state, c] = self.follow(state, c)
        return self.memo[state, c]

    def follow(self, state, c):
        to = set()
        for at, inside in state:
            if at == len(self.elements):
                continue
            kind, list_of_items = self.elements[at]
            if kind == "*":
                self.enter(at, to)
            elif list_of_items:
                moved = ((i, list_of_items[i][1].step(place, c)) for i, place in inside)
                moved = tuple((i, place) for i, place in moved if place is not None)
                if {list_of_items[i][0] for i, place in moved if list_of_items[i][1].accepts(place)} == {False}:
                    self.enter(at + 1, to)
                if moved and kind == "<":
                    to.add((at, moved))
            elif kind in ("?", c):
                self.enter(at + 1, to)
        return self.settled(to)


def symbols_for(sides):
    """All characters that the sides tell apart, and one for the others below and above the digits."""
    used = set(DIGITS + "@:")
    for side in sides:
        for c, list_of_items in side.elements:
            used.add(c)
            for _, item in list_of_items or []:
                used.update(*(chars for chars in getattr(item, "sets", []) if chars))
    used -= set("?*[<")
    others = [chr(byte) for byte in range(256) if chr(byte) not in used]
    return sorted(used) + [next(c for c in others if c < "0"), next(c for c in others if c > "9")]


def zone_after(zone, symbol):
    """The part of an address that is read after symbol; None where no address goes on like this."""
    if zone == "number":
        return None if symbol in (HOST, PORT) else zone
    if zone == "user":
        return {HOST: "host", PORT: None}.get(symbol, zone)
    if zone == "host":
        return {HOST: None, "@": None, PORT: "port"}.get(symbol, zone)
    return None if symbol in (HOST, PORT, ":") else "ended port"


def accepted_sets(must, sides, symbols, is_useful):
    """For the addresses that all of must accept: the sets of sides that accept them."""
    every, found = must + sides, set()
    for kind in (0, 1, 2):
        first = ("user" if kind == 1 else "number", tuple(side.begin(kind) for side in every))
        known, todo = {first}, [first]
        while todo:
            zone, states = todo.pop()
            if not all(states[:len(must)]) or not is_useful(states[len(must):]):
                continue
            if zone in ("number", "ended port") and all(s.accepts(x) for s, x in zip(must, states)):
                rest = zip(sides, states[len(must):])
                found.add(frozenset(i for i, (side, state) in enumerate(rest) if side.accepts(state)))
            for symbol in symbols + [HOST, PORT]:
                to = zone_after(zone, symbol)
                node = to and (to, tuple(side.step(state, symbol) for side, state in zip(every, states)))
                if node and node not in known:
                    known.add(node)
                    todo.append(node)
    return found


def is_covered(must, covering):
    """Whether every call that all of must match is matched by one of covering; all are pairs of sides."""
    symbols = symbols_for([side for pair in must + covering for side in pair])
    callers = accepted_sets([m[0] for m in must], [c[0] for c in covering], symbols, lambda states: True)
    for left in callers:
        if any(other < left for other in callers):
            continue  # What the smaller set covers the larger one covers, too.
        called = [covering[i][1] for i in sorted(left)]
        if frozenset() in accepted_sets([m[1] for m in must], called, symbols, lambda states: ALL not in states):
            return False
    return True


def read_rules(data):
    """The rules of a rule file, as dictionaries of its keys."""
    rules, rule = [], None
    for line in data.decode("latin-1").split("\n"):
        line = line[:-1] if line.endswith("\r") else line
        word = line.strip(" \t")
        if word == "{":
            rule = {}
        elif word == "}":
            rules.append(rule)
        elif word and not word.startswith("#"):
            key, _, value = line.lstrip(" \t").partition("=")
            rule.setdefault(key, value)
    return rules


def sides_of(rule):
    kinds = [int(rule.get(key, "")) if rule.get(key, "") in ("0", "1", "2", "3") else 3
             for key in ("caller_call_type", "called_call_type")]
    return Side(rule.get("caller_pattern", ""), kinds[0]), Side(rule.get("called_pattern", ""), kinds[1])


def is_on(rule):
    return rule.get("recording_rule_state", "").startswith("1")


def is_as_claimed(claim, rule, position):
    """Whether a call that rule decides, None for no rule, is decided as claimed."""
    recorded = rule is not None and rule.get("record_to", "") != "never:"
    kind = None if rule is None else 0 if rule.get("call_recording_type", "") == "0" else 1

    def holds(name, value):
        wanted = claim[name].encode().decode("latin-1") if isinstance(claim[name], str) else claim[name]
        return wanted is None or (recorded and wanted == value)

    return (claim["recorded"] in (None, recorded)) and claim["by_position"] in (None, position) and \
        holds("record_to", rule and rule.get("record_to", "")) and \
        holds("recording_duration", rule and rule.get("recording_duration", "")) and holds("call_recording_type", kind)


def require(condition, message):
    if not condition:
        raise Wrong(message)


def claim_text(entry):
    """What the fields that are checked say; the text in the certificate might say anything."""
    claim = entry["claim"]

    def side(s):
        return f"{KINDS[s['call_type']]} {json.dumps(s['stored'])}"

    calls = [f"{word} {side(claim[word])}" for word in ("from", "to")]
    calls += [f"except {word} {side(s)}" for word in ("from", "to") for s in claim["except_" + word]]
    words = {"recorded": {True: "is recorded", False: "is left unrecorded"}.get(claim["recorded"])}
    for key, what in (("record_to", "is recorded to "), ("recording_duration", "is recorded with the duration "),
                      ("call_recording_type", "is recorded with type "), ("by_position", "is decided by rule #")):
        words[key] = None if claim[key] is None else what + json.dumps(claim[key])
    if not any(words.values()):
        raise Refused("it claims nothing of " + ", ".join(calls))
    return f"every call {', '.join(calls)}: {' and '.join(filter(None, words.values()))}"


def check_claim(entry, rules):
    """Checks one proof. Positions are counted from 1."""
    claim, proof, by = entry["claim"], entry["proof"], entry["claim"]["by_position"]
    require((by is None and claim["by"] is None) or (0 < by <= len(rules) and claim["by"] is not None and
            int(rules[by - 1]["callrecordingrule_id"]) == claim["by"]), f"rule #{by} is not rule {claim['by']}")
    meant = tuple(Side(claim[s]["stored"], claim[s]["call_type"]) for s in ("from", "to"))
    exceptions = [(Side(s["stored"], s["call_type"]), Side(*ANY)) for s in claim["except_from"]] + \
        [(Side(*ANY), Side(s["stored"], s["call_type"])) for s in claim["except_to"]]

    def sides(positions, before):
        for at in positions:
            require(0 < at < before and is_on(rules[at - 1]) and is_as_claimed(claim, rules[at - 1], at),
                    f"rule #{at} is no reason")
        return [sides_of(rules[at - 1]) for at in positions] + exceptions

    end = len(rules) + 1
    if not is_as_claimed(claim, None, None):
        require(is_covered([meant], sides(proof["covering"], end)), "some calls are not covered")
        end = max(proof["covering"], default=0)
    others = {other["rule"]: other["covering"] for other in proof["others"]}
    for at, rule in enumerate(rules[:end], 1):
        if at < end and is_on(rule) and not is_as_claimed(claim, rule, at):
            by = sides(others.get(at, []), at)
            require(is_covered([meant, sides_of(rule)], by), f"rule #{at} decides some calls otherwise")


def hidden_text(entry):
    return f"rule #{json.dumps(entry['rule'])} never decides"


def check_hidden(entry, rules):
    at = entry["rule"]
    require(0 < at <= len(rules) and all(0 < by < at and is_on(rules[by - 1]) for by in entry["covering"]),
            f"rule #{at}: these rules are no reason")
    require(is_covered([sides_of(rules[at - 1])], [sides_of(rules[by - 1]) for by in entry["covering"]]),
            f"rule #{at} is not covered")


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        certificate = json.load(file)
    with open(sys.argv[2], "rb") as file:
        data = file.read()
    if hashlib.sha256(data).hexdigest() != certificate["sha256"]:
        print("these are not the rules of the certificate")
        return 1
    if certificate["calls"] != "typed":
        print("only typed calls can be checked")
        return 2
    rules, result = read_rules(data), 0
    jobs = [(check_claim, claim_text, entry) for entry in certificate.get("claims", [])]
    jobs += [(check_hidden, hidden_text, entry) for entry in certificate.get("hidden", [])]
    if not jobs:
        raise Refused("the certificate claims nothing")
    for check, text_of, entry in jobs:
        text = text_of(entry)
        try:
            check(entry, rules)
            print("true:", text)
        except Refused as what:
            result = result or 2
            print(f"not checked: {text}: {what}")
        except Wrong as why:
            result = 1
            print(f"not proved: {text}: {why}")
    return result


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (Refused, OSError, ValueError, LookupError, TypeError, AttributeError, RecursionError) as fault:
        print(f"this cannot be checked: {type(fault).__name__}: {fault}")
        sys.exit(2)
