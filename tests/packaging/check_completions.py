#!/usr/bin/env python3
"""Holds the completions and the manual page of a program against what --help says.

usage: check_completions.py PROGRAM PACKAGING-FOLDER SHELL     SHELL: bash, zsh, fish or man

The completion of bash is run; those of zsh and fish are taken apart here, since neither shell need
be installed. Each check is then tried on a file that lacks one of the options, and must complain.
"""
import copy
import re
import subprocess
import sys
from pathlib import Path

# What the completion of bash calls, without the package that has it.
BASH_STUBS = r"""
complete() { :; }
compopt() { :; }
_filedir() { COMPREPLY=("files:$*"); }
_init_completion() {
    cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]} split=false
}
ask() { COMP_WORDS=(PROGRAM "$@") COMP_CWORD=$# COMPREPLY=(); FUNCTION
        printf '%s|' "${COMPREPLY[@]}"; echo; }
"""


class Option:
    def __init__(self, short, name, value, text):
        self.short, self.name, self.takes_value = short, name, value is not None
        self.words = words_of(name, text)

    def names(self):
        return [self.name] + ([self.short] if self.short else [])


def words_of(name, text):
    """The words that the help names as values."""
    if name == "--format":
        return re.match(r"([a-z0-9, ]+) \(", text)[1].split(", ")
    if name == "--compression":
        return re.match(r"TIFF: ([a-z, ]+);", text)[1].split(", ")
    return []


def options_of(help_text):
    found = []
    for line in help_text.splitlines():
        match = re.match(r" +(?:(-\w), ?)?(--[\w-]+)(?: (\S+))? {2,}(\S.*)", line)
        if match:
            found.append(Option(*match.groups()))
    settings = [o.name[2:] for o in found
                if re.search(rf"  {o.name} NUMBER ", help_text)]
    for option in found:
        if option.name == "--sweep":
            option.words = settings
    return found


def bash_complaints(text, options):
    questions = [["-"]] + [[name, ""] for o in options if o.takes_value for name in o.names()]
    function = re.search(r"^(_\w+)\(\) \{", text, re.M)[1]
    script = BASH_STUBS.replace("FUNCTION", function) + text + "\n" + "\n".join(
        "ask " + " ".join(f"'{word}'" for word in question) for question in questions)
    run = subprocess.run(["bash", "-c", script], capture_output=True, text=True, check=False)
    if run.returncode != 0 or run.stderr:
        return ["bash says: " + run.stderr]
    answers = [line.rstrip("|").split("|") for line in run.stdout.splitlines()]
    wanted = {name for o in options for name in o.names()}
    offered = set(answers[0])
    complaints = [f"{name} is not offered" for name in sorted(wanted - offered)]
    complaints += [f"{name} is offered and unknown" for name in sorted(offered - wanted)]
    by_name = {name: o for o in options for name in o.names()}
    for (name, _), answer in zip(questions[1:], answers[1:]):
        words = [word.rstrip("=") for word in answer]
        if any("@(" in word for word in words):
            complaints.append(f"{name} is answered with pictures")
        if by_name[name].words and set(words) != set(by_name[name].words):
            complaints.append(f"{name} is answered with {words}")
    return complaints


def fish_complaints(text, options):
    return compare(options, {
        match["name"]: (match["short"] and "-" + match["short"],
                        bool(re.search(r" -[xr] ", match["rest"] + " ")),
                        set((re.search(r"-a '([a-z][^'(]*)'", match["rest"]) or ["", ""])[1]
                            .replace("=", "").split()))
        for match in re.finditer(
            r"^\$c(?: -s (?P<short>\w))? -l (?P<name>[\w-]+)(?P<rest>.*)$", text, re.M)})


def zsh_complaints(text, options):
    settings = re.search(r"settings=\(([^)]*)\)", text)
    text = text.replace("($settings)", f"({settings[1]})") if settings else text
    entry = (r"^    ['\"](?:\([^)]*\))?(?:['\"]\{(?P<short>-\w),--(?P<long>[\w-]+)\}'|"
             r"--(?P<only>[\w-]+))\[(?P<about>[^]]*)\](?P<rest>.*)['\"] \\?$")
    return compare(options, {
        match["long"] or match["only"]: (
            match["short"], match["rest"].startswith(":"),
            set((re.search(r":\(([^)]*)\)$", match["rest"]) or ["", ""])[1].split()))
        for match in re.finditer(entry, text, re.M)})


def compare(options, found):
    complaints = [f"--{name} is unknown" for name in found
                  if "--" + name not in {o.name for o in options}]
    for option in options:
        short, takes_value, words = found.get(option.name[2:], ("", None, set()))
        if takes_value is None:
            complaints.append(f"{option.name} is missing")
            continue
        if short != option.short:
            complaints.append(f"{option.name} is short as {short}, not {option.short}")
        if takes_value != option.takes_value:
            complaints.append(f"{option.name} and its value do not fit")
        if option.words and words != set(option.words):
            complaints.append(f"{option.name} has the values {sorted(words)}")
    return complaints


def man_complaints(text, options):
    text = text.replace("\\-", "-")
    named = {}
    for match in re.finditer(r'^\.TP\n\.BR? (?:(-\w) ?"?, "? )?(--[\w-]+)(.*)$', text, re.M):
        named[match[2][2:]] = (match[1], "\\f" in match[3], set())
    complaints = compare([plain(o) for o in options], named)
    for option in options:
        entry = re.search(rf"^\.TP\n\.BR? [^\n]*{option.name}\b.*?^\.(?:TP|SS|SH)", text, re.M | re.S)
        complaints += [f"{option.name} does not tell of {word}" for word in option.words
                       if option.name != "--sweep" and entry and word not in entry[0]]
    return complaints + wide_rows(text)


def wide_rows(text):
    """Rows of tables that a terminal of 80 columns cannot show: cells are not wrapped."""
    indent, gap, columns = 7, 3, 80
    complaints = []
    for table in re.findall(r"^\.TS\n.*?^\.TE$", text, re.M | re.S):
        rows = [row.split("\t") for row in table.splitlines() if "\t" in row]
        first = max(len(row[0]) for row in rows)
        complaints += [f"\"{row[0]}\" has a row too wide for {columns} columns" for row in rows
                       if indent + first + gap + len(row[1]) > columns]
    return complaints


def plain(option):
    """Without the words of its value, which a manual page tells in sentences."""
    result = copy.copy(option)
    result.words = []
    return result


CHECKS = {"bash": ("completions/{}.bash", bash_complaints),
          "zsh": ("completions/{}.zsh", zsh_complaints),
          "fish": ("completions/{}.fish", fish_complaints),
          "man": ("man/{}.1.in", man_complaints)}


def without(text, name):
    """The file with an option under another name."""
    bare = name.lstrip("-")
    dashes = name[:len(name) - len(bare)]
    for old in (name, name.replace("-", "\\-"), f"-l {bare} ", f"-s {bare} "):
        pattern = re.escape(old) + ("" if old.endswith(" ") else r"(?![\w-])(?!\\-)")
        text = re.sub(r"(?<![\w-])" + pattern, lambda m: m[0].replace(bare[0], "Z", 1), text)
    return text


def main():
    program, folder, shell = sys.argv[1:]
    name = Path(program).name
    path, complaints_of = CHECKS[shell]
    path = path.format(name)
    text = (Path(folder) / path).read_text()  # a file that is not there is a failure
    help_text = subprocess.run([program, "--help"], capture_output=True, text=True, check=True)
    options = options_of(help_text.stdout)
    complaints = complaints_of(text, options)
    with_words = [o for o in options if o.words]
    if (len(options), len(with_words)) < {"skarnel": (2, 0), "skarnel-render": (30, 3)}[name]:
        complaints.append("the help was not understood")
    for name in [name for o in options for name in o.names()]:
        if not complaints_of(without(text, name), options):
            complaints.append(f"the check does not miss {name}")
    for complaint in complaints:
        print(f"{path}: {complaint}", file=sys.stderr)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
