#!/usr/bin/env python3
"""Checks a certificate that "callrecordingctl prove --certificate" or "check --certificate" wrote, against the rules.

It shares no code with the library: it reads the rule file by itself, and patterns as expressions whose derivatives tell
which sets of rules an address can satisfy. It does not look for proofs; it only checks that the rules which the
certificate names take all the calls that they are said to take, and prints what it checked. It does not accept what it
cannot read: groups with items such as 1-2-3, and a certificate that says more than it checks.
Usage: check_proof.py CERTIFICATE RULE-FILE. Exit status: 0 everything is true, 1 something is not, 2 it cannot say."""

import hashlib
import json
import string
import sys

LETTERS, DIGITS = frozenset(string.ascii_letters), frozenset(string.digits)
LITERALS = LETTERS | DIGITS | frozenset("#^/_=+%~@;().:$&'")
HOST, PORT = "host mark", "port mark"  # The "@" and ":" that divide a SIP address; a user may hold others.
TEXT = frozenset(map(chr, range(256)))
SYMBOLS = TEXT | {HOST, PORT}
MARKS = {"@": HOST, ":": PORT}
MOST = 2 ** 31 - 1  # Greater numbers count as this one.
KINDS = ("number", "sip", "number2", "any")
CLAIMED = {"recorded": "", "record_to": "is recorded to ", "recording_duration": "is recorded for ",
           "call_recording_type": "is recorded with type ", "by_position": "is decided by rule #"}
NUMBER, SIP, ANY = 0, 1, 3


class Refused(Exception):
    """What cannot be checked."""


class Wrong(Exception):
    """What is not true."""


class Texts:
    """A set of texts, as an expression of one of these kinds: "one" or any number ("run") of the symbols of a set;
    "then", "either", "both" and "not" of other expressions. Of equal expressions there is one object."""
    known = {}

    def __new__(cls, kind, *parts):
        made = cls.known.get((kind, parts))
        if made is None:
            made = cls.known[kind, parts] = super().__new__(cls)
            made.kind, made.parts, made.rests = kind, parts, {}
            empties = [getattr(part, "has_empty", kind == "run") for part in parts]
            made.has_empty = any(empties) if kind == "either" else all(empties) != (kind == "not")
        return made

    def after(self, symbol):
        """What the texts that begin with symbol go on with."""
        if symbol not in self.rests:
            self.rests[symbol] = self.find_rest(symbol)
        return self.rests[symbol]

    def find_rest(self, symbol):
        if self.kind in ("run", "one"):
            return NOTHING if symbol not in self.parts[0] else self if self.kind == "run" else EMPTY
        if self.kind == "then":
            first, rest = self.parts
            return either(then(first.after(symbol), rest), rest.after(symbol) if first.has_empty else NOTHING)
        return {"either": either, "both": both, "not": but_not}[self.kind](*(part.after(symbol) for part in self.parts))


EVERYTHING, EMPTY, NOTHING = Texts("run", SYMBOLS), Texts("run", frozenset()), Texts("one", frozenset())


def one(symbols):
    return Texts("one", frozenset(symbols))


def run(symbols):
    return Texts("run", frozenset(symbols))


def some(symbols):
    return then(one(symbols), run(symbols))


def then(*parts):
    result = parts[-1]
    for part in reversed(parts[:-1]):
        if part.kind == "then":
            result = then(*part.parts, result)
        elif NOTHING in (part, result):
            result = NOTHING
        elif result is EMPTY:
            result = part
        elif part is not EMPTY and not (part is EVERYTHING and EVERYTHING in (result, result.parts[0])):
            result = Texts("then", part, result)
    return result


def members(kind, parts):
    return {member for part in parts for member in (part.parts if part.kind == kind else [part])}


def ends(texts):
    """The proper ends of a row that begin with anything: what such an end takes the whole row takes, too."""
    while texts.kind == "then":
        texts = texts.parts[1]
        if texts is EVERYTHING or texts.parts[0] is EVERYTHING:
            yield texts


def either(*parts):
    found = members("either", parts) - {NOTHING}
    if EVERYTHING in found:
        return EVERYTHING
    found = {part for part in found if found.isdisjoint(ends(part))}
    return joined("either", found) if found else NOTHING


def both(*parts):
    found = members("both", parts) - {EVERYTHING}
    return NOTHING if NOTHING in found else joined("both", found) if found else EVERYTHING


def joined(kind, found):
    return found.pop() if len(found) == 1 else Texts(kind, *sorted(found, key=id))


def but_not(texts):
    return {NOTHING: EVERYTHING, EVERYTHING: NOTHING}.get(texts) or Texts("not", texts)


def like(characters):
    """One of them, or a mark that is compared as one of them."""
    return one(set(characters) | {mark for c, mark in MARKS.items() if c in characters})


def literally(text):
    return then(*(one(SYMBOLS) if c == "?" else like({c}) for c in text), EMPTY)


def bound(digits, compare):
    """Texts as long as digits that are not below it, or not above it."""
    result = EMPTY
    for at in range(len(digits) - 1, -1, -1):
        apart = like({c for c in TEXT if compare(c, digits[at]) and c != digits[at]})
        result = either(then(one(digits[at]), result), then(apart, *[one(SYMBOLS)] * (len(digits) - at - 1), EMPTY))
    return result


def between(low, high):
    """Texts as long as both, in the order of texts."""
    return both(bound(low, str.__ge__), bound(high, str.__le__))


def numbers(low, high):
    """From one number to another. With a leading zero in the low end: texts of its width, in the order of texts. Else
    the leading digits count, and a text is no shorter than the low end and no longer than the high one."""
    if len(high) < len(low):
        return NOTHING
    if len(low) > 1 and low[0] == "0":
        return between(low, high[:len(low)])
    least, most = max(min(int(low), MOST), 1), int(high) if int(high) < MOST else 10 ** len(high) - 1
    by_width = [between(str(max(least, 10 ** (n - 1))), str(min(most, 10 ** n - 1)))
                for n in range(len(str(least)), len(str(most)) + 1) if least <= most]
    leading = then(both(either(*by_width), some(DIGITS)), either(EMPTY, then(one(SYMBOLS - DIGITS), EVERYTHING)))
    widths = either(*(then(*[one(SYMBOLS)] * n, EMPTY) for n in range(len(low), len(high) + 1)))
    return either(both(leading, widths), literally("0") if low == "0" else NOTHING)


def items(text):
    """What an item list takes."""
    sets = {False: [], True: []}
    for item in text.split(","):
        excludes = item.startswith("!")
        item = item[excludes:]
        low, dash, high = item.partition("-")
        if not dash and "!" not in item:
            sets[excludes].append(literally(item) if item and set(item) <= LITERALS | {"?"} else NOTHING)
            continue
        if low and high and set(low + high) <= DIGITS:
            sets[excludes].append(numbers(low, high))
        elif len(low) == 1 and len(high) == 1 and low in LITERALS and high in LETTERS:
            sets[excludes].append(one(c for c in LETTERS if low < c <= high))
        else:
            raise Refused("the item " + item)
        sets[excludes].append(literally(low))
    return both(either(*sets[False]), but_not(either(*sets[True])))


def read_pattern(pattern):
    """What the pattern takes. What follows a character that no pattern can have does not count."""
    parts, at = [], 0
    while at < len(pattern):
        c = pattern[at]
        if c in "[<":
            end = pattern.find("]" if c == "[" else ">", at)
            if end < 0:
                return NOTHING
            parts.append(both(items(pattern[at + 1:end]), one(SYMBOLS) if c == "[" else some(SYMBOLS)))
            at = end
        elif c == "?":
            parts.append(one(SYMBOLS))
        elif c in LITERALS:
            parts.append(like({c}))
        else:
            parts.append(EVERYTHING)
            if c != "*":
                break
        at += 1
    return then(*parts, EMPTY)


def compared(pattern):
    """A SIP pattern with a port, and nothing without an "@"."""
    head, colon, port = pattern.rpartition(":")
    if "@" not in (head if colon else pattern):
        return ""
    return pattern if port and colon else pattern + ("*" if colon else ":*")


def addresses_of(pattern, kind, are_parties):
    """What a pattern of a call type takes: of the addresses without a host, with one, and of those of type number2."""
    if kind not in range(4):
        raise Refused(f"the call type {kind}")
    pattern = compared(pattern) if kind == SIP else pattern
    texts = read_pattern(pattern) if pattern else NOTHING
    user = both(texts, some(DIGITS | set("+#"))) if are_parties and kind == NUMBER else texts
    whole = then(both(user, run(TEXT)), one({HOST}), EVERYTHING)  # Only the user is compared.
    if kind == SIP:
        return NOTHING, texts, NOTHING
    if are_parties:
        return (user, whole, NOTHING) if kind in (NUMBER, ANY) else (NOTHING, NOTHING, NOTHING)
    return tuple(each if kind in (at, ANY) else NOTHING for at, each in enumerate((texts, whole, texts)))


def all_addresses(are_parties):
    """Likewise, of all calls. The last "@" and the last ":" that can be meant divide an address with a host."""
    if not are_parties:
        return run(TEXT), then(run(TEXT), one({HOST}), run(TEXT - {"@"}), one({PORT}), some(TEXT - {":"})), run(TEXT)

    def user(symbols):
        """Behind a "+" at the front there are no separators; "%" stands for "-"."""
        return either(EMPTY, then(one(symbols - {"+"}), run(symbols)), then(one("+"), run(symbols - set(".()%"))))

    host = some(TEXT - set("@" + string.ascii_uppercase))
    return user(TEXT), then(user(TEXT - {"@"}), one({HOST}), host, one({PORT}), some(DIGITS)), NOTHING


def symbols_apart(every):
    """One symbol of each kind that none of the expressions tells from the others of its kind."""
    sets, seen, todo = set(), set(), list(every)
    while todo:
        texts = todo.pop()
        if texts.kind in ("run", "one"):
            sets.update(texts.parts)
        elif texts not in seen:
            seen.add(texts)
            todo += texts.parts
    return list({tuple(symbol in one_set for one_set in sets): symbol for symbol in sorted(SYMBOLS)}.values())


def accepted_sets(must, sides, are_parties, is_useful):
    """For the addresses that all of must take: the sets of sides that take them, as places in sides."""
    found = set()
    symbols = symbols_apart(texts for side in [all_addresses(are_parties)] + must + sides for texts in side)
    for at, every in enumerate(all_addresses(are_parties)):
        first = both(every, *(side[at] for side in must)), tuple(side[at] for side in sides)
        known, todo = {first}, [first]
        while todo:
            meant, rests = todo.pop()
            if meant is NOTHING or not is_useful(rests):
                continue
            if meant.has_empty:
                found.add(frozenset(i for i, rest in enumerate(rests) if rest.has_empty))
            for symbol in symbols:
                to = meant.after(symbol), tuple(rest.after(symbol) for rest in rests)
                if to not in known:
                    known.add(to)
                    todo.append(to)
    return found


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


def is_on(rule):
    return rule.get("recording_rule_state", "").startswith("1")


def is_as_claimed(claim, rule, position):
    """Whether a call that rule decides, None for no rule, is decided as claimed."""
    facts = {"recorded": rule is not None and rule.get("record_to", "") != "never:", "by_position": position}
    if facts["recorded"]:
        facts.update({key: rule.get(key, "") for key in CLAIMED if key not in facts})
        facts["call_recording_type"] = 0 if facts["call_recording_type"] == "0" else 1
    return all(claim[key] in (None, facts.get(key)) for key in CLAIMED)


def require(condition, message):
    if not condition:
        raise Wrong(message)


def require_names(entry, *names):
    """Refuses what has other members, which nothing would check."""
    if sorted(entry) != sorted(" ".join(names).split()):
        raise Refused("an entry of " + ", ".join(sorted(entry)))


class Checker:
    """Checks what a certificate says of rules. Positions are counted from 1."""

    def __init__(self, rules, are_parties):
        self.rules, self.are_parties = rules, are_parties

    def side(self, pattern, kind):
        return addresses_of(pattern, kind, self.are_parties)

    def claimed_side(self, entry):
        require_names(entry, "stored call_type")
        require(isinstance(entry["stored"], str), "a pattern that is no text")
        return self.side(entry["stored"], entry["call_type"])

    def sides_of(self, position):
        rule = self.rules[position - 1]
        return [self.side(rule.get(name + "_pattern", ""), "0123".find(rule.get(name + "_call_type", "") or " ") % 4)
                for name in ("caller", "called")]

    def is_covered(self, must, covering):
        """Whether every call that all of must match is matched by one of covering; all are pairs of sides."""
        callers = accepted_sets([m[0] for m in must], [c[0] for c in covering], self.are_parties, lambda rests: True)
        for left in callers:
            if any(other < left for other in callers):
                continue  # What the smaller set covers the larger one covers, too.
            called = accepted_sets([m[1] for m in must], [covering[i][1] for i in sorted(left)], self.are_parties,
                                   lambda rests: EVERYTHING not in rests)
            if frozenset() in called:
                return False
        return True

    def check_claim(self, entry):
        claim, proof, by, rules = entry["claim"], entry["proof"], entry["claim"]["by_position"], self.rules
        require((by is None and claim["by"] is None) or (0 < by <= len(rules) and claim["by"] is not None and
                int(rules[by - 1]["callrecordingrule_id"]) == claim["by"]), f"rule #{by} is not rule {claim['by']}")
        meant, anybody = [self.claimed_side(claim[word]) for word in ("from", "to")], self.side("*", ANY)
        exceptions = [(self.claimed_side(entry), anybody) for entry in claim["except_from"]]
        exceptions += [(anybody, self.claimed_side(entry)) for entry in claim["except_to"]]
        require(not self.is_covered([meant], exceptions), "there are no such calls")

        def covering(positions, before):
            for at in positions:
                require(0 < at < before and is_on(rules[at - 1]) and is_as_claimed(claim, rules[at - 1], at),
                        f"rule #{at} is no reason")
            return [self.sides_of(at) for at in positions] + exceptions

        end = len(rules) + 1
        if not is_as_claimed(claim, None, None):
            require(self.is_covered([meant], covering(proof["covering"], end)), "some calls are not covered")
            end = max(proof["covering"], default=0)
        for other in proof["others"]:
            require_names(other, "rule covering")
        others = {other["rule"]: other["covering"] for other in proof["others"]}
        for at, rule in enumerate(rules[:end], 1):
            if at < end and is_on(rule) and not is_as_claimed(claim, rule, at):
                require(self.is_covered([meant, self.sides_of(at)], covering(others.get(at, []), at)),
                        f"rule #{at} decides some calls otherwise")

    def check_hidden(self, entry):
        at, by = entry["rule"], entry["covering"]
        require(0 < at <= len(self.rules) and all(0 < other < at and is_on(self.rules[other - 1]) for other in by),
                f"rule #{at}: these rules are no reason")
        covering = [self.sides_of(other) for other in by]
        require(self.is_covered([self.sides_of(at)], covering), f"rule #{at} is not covered")


def shown(value):
    return json.dumps(value.encode("latin-1").decode("utf-8", "backslashreplace") if isinstance(value, str) else value)


def claim_text(entry):
    claim = entry["claim"]
    require_names(entry, "claim proof")
    require_names(entry["proof"], "covering others")
    require_names(claim, "from to except_from except_to by", *CLAIMED)
    sides = [(word, claim[word]) for word in ("from", "to")]
    sides += [("except " + word, entry) for word in ("from", "to") for entry in claim["except_" + word]]
    calls = ", ".join(f"{word} {KINDS[side['call_type']]} {shown(side['stored'])}" for word, side in sides)
    said = {key: what + shown(claim[key]) for key, what in CLAIMED.items() if claim[key] is not None}
    if "recorded" in said:
        said["recorded"] = "is recorded" if claim["recorded"] else "is left unrecorded"
    if not said:
        raise Refused("it claims nothing of " + calls)
    return f"every call {calls}: {' and '.join(said.values())}"


def hidden_text(entry):
    require_names(entry, "rule covering")
    return f"rule #{shown(entry['rule'])} never decides"


def main():
    with open(sys.argv[1], encoding="latin-1") as file:  # Bytes, as those of the rules.
        certificate = json.load(file)
    with open(sys.argv[2], "rb") as file:
        data = file.read()
    if hashlib.sha256(data).hexdigest() != certificate["sha256"]:
        print("these are not the rules of the certificate")
        return 1
    kind, result = certificate["calls"], 0
    require_names(certificate, "sha256 calls", "claims" if "claims" in certificate else "hidden")
    if kind not in ("typed", "parties"):
        raise Refused(f"calls of the kind {json.dumps(kind)}")
    checker = Checker(read_rules(data), kind == "parties")
    jobs = [(checker.check_claim, claim_text, entry) for entry in certificate.get("claims", [])] or \
        [(checker.check_hidden, hidden_text, entry) for entry in certificate.get("hidden", [])]
    if not jobs:
        raise Refused("the certificate claims nothing")
    print(f"about {'calls of parties' if kind == 'parties' else 'typed calls'}:")
    for check, text_of, entry in jobs:
        text = text_of(entry)
        try:
            check(entry)
            print("true:", text)
        except Refused as what:
            result = result or 2
            print(f"not checked: {text}: {what}")
        except Wrong as why:
            result = 1
            print(f"not proved: {text}: {why}")
    return result


if __name__ == "__main__":
    sys.setrecursionlimit(10000)
    try:
        sys.exit(main())
    except (Refused, OSError, ValueError, LookupError, TypeError, AttributeError, RecursionError) as fault:
        print(f"this cannot be checked: {type(fault).__name__}: {fault}")
        sys.exit(2)
