#!/usr/bin/python3
"""Counts code lines (non-blank, non-comment) of the tests against everything
else (src, bench, tools, fuzz) and prints the tests' share of all code lines.

    /usr/bin/python3 tools/code_lines.py [root]

C++ comments (// and /* */) and Python and shell comments (#, docstrings
standing alone) are left out; data files (decks, references, Markdown) are not
code and are not counted.
"""
import pathlib
import re
import sys

CODE_SUFFIXES = {".cpp", ".h", ".py", ".sh"}
GROUPS = {"tests": ["tests"], "rest": ["src", "bench", "tools", "fuzz"]}


def cpp_lines(text):
    text = re.sub(r"/\*.*?\*/", lambda m: "\n" * m.group(0).count("\n"), text, flags=re.S)
    return [l for l in text.splitlines() if l.strip() and not l.strip().startswith("//")]


def script_lines(text):
    text = re.sub(r'^\s*(""".*?"""|\'\'\'.*?\'\'\')', lambda m: "\n" * m.group(0).count("\n"),
                  text, flags=re.S | re.M)
    return [l for l in text.splitlines() if l.strip() and not l.strip().startswith("#")]


def count(path):
    text = path.read_text(errors="replace")
    return len(cpp_lines(text) if path.suffix in (".cpp", ".h") else script_lines(text))


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent)
    totals = {}
    for group, dirs in GROUPS.items():
        totals[group] = sum(count(p) for d in dirs for p in sorted((root / d).rglob("*"))
                            if p.is_file() and p.suffix in CODE_SUFFIXES)
    share = totals["tests"] / (totals["tests"] + totals["rest"])
    print(f"tests {totals['tests']}  everything else {totals['rest']}  "
          f"test share of all code {share:.2f}")


if __name__ == "__main__":
    main()
