"""Compares the manual page and docs/ with what the client does: commands, options, examples, members of its JSON, kinds
of findings, and names of columns. Usage: manual_test.py CLIENT SOURCE-DIR"""

import glob
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile

client, source = sys.argv[1:]
directory = tempfile.mkdtemp()
failures = []


def path(name):
    return os.path.join(directory, name)


def read(name):
    with open(os.path.join(source, name), encoding="utf-8") as file:
        return file.read()


def run(line):
    """The output of the client and its messages, for a line in which {} is the directory of the rules."""
    words = [word.replace("{}", directory) for word in line.split()]
    done = subprocess.run([client] + words, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          env={**os.environ, "QUVA_PATH": directory + "/"}, check=False)
    return done.stdout, done.stderr


def expect(condition, message):
    if not condition:
        failures.append(message)


def options_of(text):
    return set(re.findall(r"(?<![\w-])--[a-z][a-z-]*", text))


def listed_options(command):
    """Those that the help has an entry for: --name, -n,--name or --name,--other, at the beginning of a line."""
    entry = r"^ +(?:-\w,)?((?:--[a-z-]+,)*--[a-z-]+)"
    return options_of(" ".join(re.findall(entry, run("help " + command)[0], re.MULTILINE))) - {"--help"}


frame = read("tools/callrecordingctl/callrecordingctl.1.md")
generated = run("__manual")[0]
commands = re.findall(r"^  ([a-z]+) ", run("--help")[0].split("\n\nA rule has")[0], re.MULTILINE)

# Every option of every command is described in the command's section, or in the list of those that it shares.
shared, *sections = re.split(r"^## ", generated[generated.index("# COMMANDS"):], flags=re.MULTILINE)
lists = re.split(r"^(All commands|The commands .* also) take:$", shared, flags=re.MULTILINE)[1:]
sections = {section.split("\n")[0]: section for section in sections}
expect(len(commands) > 15, f"only {len(commands)} commands are known")
expect(set(commands) == set(sections), "the manual has other commands than the help")
for command in commands:
    described = sections.get(command, "")
    for takers, entries in zip(lists[::2], lists[1::2]):
        if takers == "All commands" or command in re.split(r"\W+", takers):
            described += entries
    titles = options_of("".join(line for line in described.splitlines(True) if line.startswith("**-")))
    expect(titles == listed_options(command),
           f"{command}: help and manual differ in {titles ^ listed_options(command)}")

# The examples in the documents use commands and options that exist.
documents = [os.path.relpath(name, source) for name in glob.glob(source + "/docs/*.md")] + ["README.md"]
examples = [(name, line) for name in documents for line in read(name).splitlines()]
examples += [("the manual", line) for line in (frame + generated).splitlines()]
for name, line in examples:
    for command, rest in re.findall(r"^[$ ]*callrecordingctl ([a-z]+)\b([^#|`]*)", line):
        known = listed_options(command) | {"--help"} if command in commands else set()
        expect(command in commands and options_of(rest) <= known, f"{name} has a wrong example: {line}")

# Every member of what --json prints, and every kind of finding, is named.
os.mkdir(path("telephony"))
shutil.copy(os.path.join(source, "examples/sample/telephony/callrecordingdb"), path("telephony"))
with open(path("faulty"), "w", encoding="utf-8") as file:
    file.write("{\ncallrecordingrule_id=x\ncaller_patern=5\ncaller_pattern=<5-1>\ncaller_call_type=7\n}\n"
               "{\ncaller_pattern=<5-1,!5-1>\ncalled_pattern=[\n}\n"
               "{\ncaller_call_type=0\ncaller_pattern=1\ncalled_pattern=*\ncalled_call_type=3\n}\n"
               "{\ncaller_call_type=0\ncaller_pattern=*\ncalled_pattern=*\ncalled_call_type=3\n}\n"
               "{\ncaller_call_type=0\ncaller_pattern=2\ncalled_pattern=*\ncalled_call_type=3\n}\n")
with open(path("policy"), "w", encoding="utf-8") as file:
    file.write("--by 3\n")
calls = os.path.join(source, "examples/calls/november.csv")
lines = ["list", "list --basic", "show 3", "show --at today", "show 99", "decide --from 500 --to 501 --explain",
         "decide --from 201 --to 0044 --explain --all", "check 1 [1", "check", "check {}/faulty", "example 3",
         "diff {}/faulty", "diff {}/telephony/callrecordingdb", "prove --by 3 --all-gaps", "explain 3", "explain 4", "prove --file {}/policy",
         f"replay {calls}", f"replay {calls} --against {{}}/faulty",
         f"replay {calls} --each --key src --against {{}}/faulty", f"replay {calls} --each --to-type-column dst", "add --from 1 --twin",
         "modify 3 --from 21* --dry-run", f"modify 3 --from 21* --dry-run --replay {calls}", "delete 2", "up 3",
         "move 3 --to 1", "disable 3", "renumber --all", "undo", "import {}/policy", "export", "log",
         "status --socket {}/none"]
if shutil.which("git"):
    git = ["git", "-C", path("git"), "-c", "user.name=ada", "-c", "user.email=ada@example.com"]
    subprocess.run(["git", "init", "-q", "-b", "main", path("git")], check=True)
    shutil.copy(os.path.join(source, "examples/rules-as-code/callrecordingdb"), path("git"))
    subprocess.run(git + ["add", "."], check=True)
    subprocess.run(git + ["commit", "-q", "-m", "rules"], check=True)
    lines += ["pull {}/git --cache {}/cache --over"] * 2
named = set(re.findall(r"\*\*([a-z_]+)\*\*", frame)) | set(re.findall(r"`([a-z0-9_:]+)`", read("docs/replay.md")))
kinds = set()


def look_at(value, line):
    if isinstance(value, dict):
        expect(set(value) <= named, f"{line} --json: neither the manual nor docs/replay.md names {set(value) - named}")
        kinds.add(value.get("kind"))
    for part in value.values() if isinstance(value, dict) else value if isinstance(value, list) else []:
        look_at(part, line)


for line in lines:
    output, messages = run(line + " --json")
    expect(output or messages, f"{line} --json prints nothing")
    documents = output.splitlines() if "--each" in line else [output] if output else []
    for document in documents + messages.splitlines():
        look_at(json.loads(document), line)
kinds.discard(None)
expect(len(kinds) > 4 and kinds <= named, f"the manual does not name {kinds - named}, or there are too few")

# The names of columns that docs/replay.md lists are those of the table in the code.
(table,) = glob.glob(source + "/src/**/Columns.cpp", recursive=True) + \
    glob.glob(source + "/tools/**/Columns.cpp", recursive=True)
in_code = set(re.findall(r'"([a-z]+)"', read(table)))
rows = re.findall(r"^\| (?:from|to|type of from|type of to|time|date) \| (.*) \|$", read("docs/replay.md"), re.MULTILINE)
in_document = {name.replace("_", "") for row in rows for name in re.findall(r"`(\w+)`", row)}
expect(in_code == in_document, f"docs/replay.md and the code differ in {in_code ^ in_document}")

shutil.rmtree(directory)
sys.exit("\n".join(dict.fromkeys(failures)) or None)
