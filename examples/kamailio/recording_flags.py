"""Turns a rule into what kamailio.cfg needs: the flags for rtpengine, and how many seconds to record."""

import re
from urllib.parse import quote

import KSR

RECORDED, NOT_RECORDED, UNDECIDED = 1, 2, -1  # What decide() returns; 0 would end the routing script.
LONGEST = 512  # Bytes of each text, so that the flags fit into Kamailio's buffer of 8 KB.
MOST_SECONDS = 2**31 - 1


def bytes_of(text):
    return text if isinstance(text, bytes) else text.encode(errors="replace")


def encoded(text):
    """A text of a rule without anything that would end a flag or a field of the metadata."""
    return quote(bytes_of(text)[:LONGEST], safe="")


def seconds_of(rule_id, duration):
    """The limit that a duration means; 0 is no limit."""
    text = bytes_of(duration).decode(errors="replace")
    if not re.fullmatch("[0-9]*", text):
        KSR.warn(f"rule {rule_id}: the duration {text[:40]!r} is not a number of seconds: recording without a limit\n")
        return 0
    return min(int(text[:12] or "0"), MOST_SECONDS)


def record(rule_id, record_to, duration, description):
    """Tells kamailio.cfg to record this call under a rule."""
    KSR.pv.sets("$avp(record)", f" record-call=on metadata=rule:{rule_id}|to:{encoded(record_to)}"
                                f"|for:{encoded(duration)}|about:{encoded(description)}")
    KSR.pv.seti("$avp(seconds)", seconds_of(rule_id, duration))
    return RECORDED
