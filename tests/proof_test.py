"""Certificates of random rules and claims: examples/check_proof.py accepts each, and rejects it when a rule is missing
from it, when it claims something false, or nothing, or for other rules. Usage: proof_test.py CLIENT SOURCE-DIR"""

import copy
import json
import os
import random
import subprocess
import sys
import tempfile

client, source = sys.argv[1:]
directory = tempfile.mkdtemp()
os.mkdir(os.path.join(directory, "telephony"))
rules_file = os.path.join(directory, "telephony/callrecordingdb")
certificate_file = os.path.join(directory, "certificate")
choices = random.Random(20)
PATTERNS = ["*", "1*", "11[0,2]", "{100-149}", "{100-199,!113}", "*5", "1?2", "[1-3]*", "{01-20}", "12", "1[a-c]*", "*@*",
            "12@pbx", "1*@pbx:50?", "a*@*", "{5-20}*", "*1*2", "+4*", "{0-7}[#,1]"]
MALFORMED = ["12 3", "[1", "1**2", "{7-3000000000}", "{3000000000-7}", "{1,[2}", "{2-05}", "1{@,2}*", "1[?]pbx@*"]
counts = {"accepted": 0, "rejected": 0, "hidden": 0}


def write_rules():
    sections = []
    for identifier in range(choices.randrange(2, 9)):
        sides = [choices.choice(["*"] * len(PATTERNS) + PATTERNS), choices.choice(PATTERNS * 4 + MALFORMED)]
        kinds = [1 if "@" in side else 3 if side == "*" else choices.choice([0, 0, 3]) for side in sides]
        stored = [side.replace("{", "<").replace("}", ">") for side in sides]
        sections.append(f"{{\ncallrecordingrule_id={identifier}\ncaller_pattern={stored[0]}\n"
                        f"caller_call_type={kinds[0]}\ncalled_pattern={stored[1]}\ncalled_call_type={kinds[1]}\n"
                        f"call_recording_type=0\nrecord_to={choices.choice(['a', 'a', 'b', 'never:'])}\n"
                        f"recording_duration=\nrecording_rule_state={int(choices.random() < 0.95)}\n}}\n")
    with open(rules_file, "w", encoding="utf-8") as file:
        file.write("".join(sections))


def run(*words):
    """What the client prints as JSON; None when it prints nothing."""
    output = subprocess.run([client, *words, "--config-dir", directory, "--json"], stdout=subprocess.PIPE,
                            stderr=subprocess.DEVNULL, check=False).stdout
    return json.loads(output) if output else None


def is_accepted(certificate, statuses=(0, 1)):
    with open(certificate_file, "w", encoding="utf-8") as file:
        json.dump(certificate, file)
    checker = os.path.join(source, "examples/check_proof.py")
    done = subprocess.run([sys.executable, checker, certificate_file, rules_file], stdout=subprocess.PIPE, text=True,
                          check=False)
    if done.returncode not in statuses or "untrue" in done.stdout:
        sys.exit(f"{done.stdout} with exit status {done.returncode}, for {certificate}")
    return done.returncode == 0


def expect(is_right, message, certificate):
    if not is_right:
        with open(rules_file, encoding="utf-8") as file:
            sys.exit(f"{message}: {json.dumps(certificate)}\n{file.read()}")


def certified(*words):
    """The certificate that a command writes; None when it proves nothing."""
    if os.path.exists(certificate_file):
        os.remove(certificate_file)
    run(*words, "--calls", choices.choice(["typed", "parties"]), "--certificate", certificate_file)
    if not os.path.exists(certificate_file):
        return None
    with open(certificate_file, encoding="utf-8") as file:
        certificate = json.load(file)
    expect(is_accepted(certificate), "a true certificate is rejected", certificate)
    counts["accepted"] += 1
    return certificate


def expect_rejected(certificate, what):
    expect(not is_accepted(certificate), what + " is accepted", certificate)
    counts["rejected"] += 1


def tamper_with_proof(certificate):
    """What a proof names is the fewest rules, so without one of them it is none."""
    proof = certificate["claims"][0]["proof"]
    for i in range(len(proof["covering"])):
        changed = copy.deepcopy(certificate)
        del changed["claims"][0]["proof"]["covering"][i]
        expect_rejected(changed, "a proof without one of its rules")
    for i, other in enumerate(proof["others"]):
        for j in range(len(other["covering"])):
            changed = copy.deepcopy(certificate)
            del changed["claims"][0]["proof"]["others"][i]["covering"][j]
            expect_rejected(changed, "a proof without a rule that takes calls of another one")


def tamper_with_words(certificate):
    """What is not checked is not accepted, the rule named is the one meant, and what claims nothing is not accepted."""
    changed = copy.deepcopy(certificate)
    claim = changed["claims"][0]["claim"]
    claim["text"] = "untrue"
    expect(not is_accepted(changed, (2,)), "a text of its own is accepted", changed)
    del claim["text"]
    claim["to"]["stored"] = ""
    expect(not is_accepted(changed, (1,)), "a claim about no call is accepted", changed)
    claim["to"] = certificate["claims"][0]["claim"]["to"]
    claim["by"] = 99
    expect(not is_accepted(changed, (1, 2)), "a rule of another name is accepted", changed)
    claim.update({key: None for key in claim if key[:3] in ("rec", "by", "by_", "cal")})
    for nothing in (changed, {**certificate, "claims": []}, {**certificate, "claims": [{}]}, {"claims": 1}, [], "x"):
        expect(not is_accepted(nothing, (2,)), "what claims nothing is accepted", nothing)


def tamper_with_claim(certificate, words):
    """About other calls the claim is rejected where it is false."""
    at = words.index("--to") + 1
    for pattern in choices.sample(PATTERNS, 3):
        answer = run("prove", *words[:at], pattern, *words[at + 1:], "--calls", certificate["calls"])
        if answer and answer["proved"] is False:
            changed = copy.deepcopy(certificate)
            changed["claims"][0]["claim"]["to"] = {key: answer["claim"]["to"][key] for key in ("stored", "call_type")}
            expect_rejected(changed, "a false claim")


for _ in range(60):
    write_rules()
    for _ in range(3):
        claim = ["--to", choices.choice([p for p in PATTERNS if "@" not in p]), "--to-type", choices.choice(["number", "number", "any"])]
        claim += choices.choice([[], ["--except-from", "*5"], ["--except-to", "11*"]])
        claim += choices.choice([["--recorded"], ["--not-recorded"], ["--record-to", "a"], ["--by", "#1"],
                                 ["--record-to", "a", "--recording-type", "0"]])
        certificate = certified("prove", *claim)
        if certificate:
            tamper_with_proof(certificate)
            tamper_with_words(certificate)
            tamper_with_claim(certificate, claim)
            expect_rejected({**certificate, "sha256": certificate["sha256"][::-1]}, "a proof for other rules")
    hidden = certified("check")
    for i, entry in enumerate(hidden["hidden"] if hidden else []):
        counts["hidden"] += 1
        for j in range(len(entry["covering"])):
            changed = copy.deepcopy(hidden)
            del changed["hidden"][i]["covering"][j]
            expect_rejected(changed, "a rule that not all of the named rules hide")

print(counts)
sys.exit(min(counts.values()) < 20)
