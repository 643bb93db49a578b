#!/usr/bin/env python3
"""The blocks of README.md, HACKING.md and docs/*.md, tried as a reader would.

  documents.py examples [--cxx compiler] [document...] -- compiler flag...
                                                            C and C++ blocks compile and print what is said
  documents.py commands [--quick | --fresh] [document...]   command blocks typed in a clean clone
  documents.py commands --kef DIRECTORY [document...]       those of the command kef, which is there

A fenced block says what it is by the first word of its fence, and by further words, which no reader of
the rendered document sees:

  ```sh              commands, typed line by line by bash -e in the clone; they must succeed
  ```sh fresh        likewise, but on a fresh machine only, since they change the system: a new one,
                     unless the commands before were on one too
  ```sh long         likewise, but not by --quick
  ```sh limit        likewise, and every measurement ends after some seconds (KEF_LIMIT)
  ```sh kef          typed where the command kef is built, by --kef
  ```sh by-hand      not typed
  ```c [name]        a program; without main, statements. They run too, unless a comment <!-- c ... -->
                     before them has the declarations that they need; then they are only compiled
  ```cpp [name]      likewise in C++, with kef.hpp
  ```python          an interactive session, tried by the tests of the Python package
  ```text            anything
  ```text output     what the program or the commands before it print, blanks at line ends aside
  ```text similar    likewise, whatever its numbers are

A block whose fence names a file (```c example.c) is written to it. The commands behind generated
tables, <!-- ./run ... -->, count as limited ones.

--fresh types everything, as a user who may sudo, on a Debian 12 made for it (mmdebstrap, as root).
Ends with status 1 where a block fails; prints a line a block in the form of ctest.
"""

import argparse
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass, field
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
KNOWN = {"sh": {"fresh", "long", "limit", "kef", "by-hand"}, "c": set(), "cpp": set(), "text": {"output", "similar"},
         "cmake": set(), "python": set()}
HEADERS = {"c": ["kef_vm.h", "kef_rng.h", "kef_dist.h", "kef_stats.h", "kef_fit.h"], "cpp": ["kef.hpp"]}
SYSTEM = ROOT / "tools/system.sh"
SECONDS = 5  # of a limited measurement


@dataclass
class Block:
    document: str
    line: int
    language: str
    words: list
    text: str
    context: str = ""  # of the comment before it
    name: str = field(default="")

    def __str__(self):
        return f"{self.document}:{self.line}"


def fail(document, number, message):
    sys.exit(f"{document}:{number}: {message}")


def blocks(document):
    """The blocks of a document in their order. A block without a fence is an error: what it is meant
    for could not be told."""
    result, fence, comment, context, blank, in_list = [], None, None, "", True, False
    for number, line in enumerate((ROOT / document).read_text().split("\n"), 1):
        if fence:
            if line.strip() == "```":
                fence.text = "\n".join(fence.text) + "\n"
                result.append(fence)
                fence = None
            else:
                fence.text.append(line)
            continue
        if comment is not None or line.startswith("<!-- c"):
            comment = (comment or "") + line.removeprefix("<!-- c").removesuffix("-->") + "\n"
            if line.endswith("-->"):
                context, comment = comment, None
            continue
        if match := re.fullmatch(r"```(.*)", line):
            language, *words = match[1].split() or [""]
            name = next((word for word in words if "." in word), "")
            words = [word for word in words if word != name]
            if language not in KNOWN or not KNOWN[language].issuperset(words):
                fail(document, number, f"a block of unknown kind: {line}")
            fence = Block(document, number, language, words, [], context, name)
            context = ""
        elif match := re.fullmatch(r"<!-- (\./run .*) -->", line):
            result.append(Block(document, number, "sh", ["limit"], match[1] + "\n"))
        elif line.startswith("    ") and blank and not in_list:
            fail(document, number, "an indented block: fence it, and say what it is")
        if line.strip():
            if not line.startswith(" "):
                in_list = bool(re.match(r"([-*]|\d+\.) ", line))
        blank = not line.strip()
    if fence:
        fail(document, fence.line, "a block without end")
    return result


def same(expected, got, similar):
    def plain(text):
        lines = [line.rstrip() for line in text.strip("\n").split("\n")]
        if similar:
            lines = [re.sub(r"\s+", " ", re.sub(r"-?\d[\d.]*(e[-+]\d+)?", "#", line)) for line in lines]
        return lines
    return plain(expected) == plain(got)


def output_of(inside, i, *makers):
    """The block that tells what block i prints: one before the next that could have printed it."""
    for block in inside[i + 1:]:
        if block.document != inside[i].document or block.language in makers:
            return None
        if {"output", "similar"} & set(block.words):
            return block
    return None


class Report:
    """Lines in the form of ctest, so that who counts those counts these."""

    def __init__(self, total):
        self.total, self.number, self.failed = total, 0, 0

    def add(self, block, start, problem, skipped=False):
        self.number += 1
        self.failed += bool(problem)
        outcome = "***Skipped" if skipped else "***Failed " if problem else "   Passed "
        print(f"{self.number:3}/{self.total} Test {'#' + str(self.number):>4}: {str(block):.<40} "
              f"{outcome} {time.time() - start:7.2f} sec", flush=True)
        if problem:
            print(problem, flush=True)


def run(command, **options):
    return subprocess.run(command, text=True, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, **options)


# ---- C and C++ blocks

def has_main(block):
    return "int main(" in block.text


def program(block):
    if has_main(block):
        return block.text
    include = "".join(f'#include "{header}"\n' for header in HEADERS[block.language])
    return f"{include}#include <stdio.h>\nint main(void) {{\n{block.context}\n{block.text}return 0;\n}}\n"


def examples(documents, compiler, cxx):
    inside = [block for document in documents for block in blocks(document)]
    found = [(i, block) for i, block in enumerate(inside) if block.language in HEADERS]
    start_of = {"c": [compiler[0], "-std=c11"], "cpp": [cxx, "-std=c++20"]}
    report = Report(len(found))
    for i, block in found:
        output = output_of(inside, i, *HEADERS)
        start = time.time()
        with tempfile.TemporaryDirectory() as work:
            source = Path(work) / f"example.{block.language}"
            source.write_text(program(block))
            whole = has_main(block) or not block.context
            made = run([*start_of[block.language], "-Wall", "-Wextra", "-Werror", source, *compiler[1:],
                        *(["-o", f"{work}/example"] if whole else ["-fsyntax-only"]),
                        *([] if has_main(block) else ["-Wno-unused"])])
            problem = made.stderr
            if whole and made.returncode == 0:
                environment = {k: v for k, v in os.environ.items() if k != "KEF_VTM_MODE"}
                ran = run([f"{work}/example"], cwd=work, env=environment)
                if ran.returncode:
                    problem = f"status {ran.returncode}\n{ran.stderr}"
                elif output and not same(output.text, ran.stdout, "similar" in output.words):
                    problem = f"expected, from {output}:\n{output.text}got:\n{ran.stdout}"
        report.add(block, start, problem)
    return report.failed


# ---- commands

def files():
    """What belongs to the tree: versioned or not, but not ignored."""
    if (ROOT / ".git").exists() and shutil.which("git"):
        listed = run(["git", "ls-files", "-z", "-co", "--exclude-standard"], cwd=ROOT)
        listed.check_returncode()
        return [name for name in listed.stdout.split("\0") if name and (ROOT / name).is_file()]
    return [str(path.relative_to(ROOT)) for path in ROOT.rglob("*")
            if path.is_file() and path.relative_to(ROOT).parts[0] != "build"]


def copy_tree(to):
    for name in files():
        (to / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(ROOT / name, to / name)


class Clone:
    """A clean copy of the tree on this machine."""

    def __init__(self, work):
        self.tree = work / "kef"
        copy_tree(self.tree)

    def type(self, script, environment):
        return run(["bash", "-e", "-c", script], cwd=self.tree, env=os.environ | environment)


class FreshMachine:
    """A Debian 12 that has nothing but its base system and sudo, and a user with a clean clone."""

    def __init__(self, work):
        self.root = work
        subprocess.run([SYSTEM, "make", self.root], check=True)
        # The lists go again: a fresh machine has none.
        self.enter("apt-get update; apt-get install -y --no-install-recommends sudo; rm -r /var/lib/apt/lists/*; "
                   "useradd -m -s /bin/bash user; echo 'user ALL=(ALL) NOPASSWD: ALL' >/etc/sudoers.d/user"
                   ).check_returncode()
        self.tree = self.root / "home/user/kef"
        copy_tree(self.tree)
        self.enter("chown -R user: /home/user")

    def enter(self, command):
        return run([SYSTEM, "enter", self.root, command])

    def type(self, script, environment):
        variables = " ".join(f"{name}={shlex.quote(value)}" for name, value in environment.items())
        (self.tree.parent / "script").write_text(f"cd kef\n{script}")
        return self.enter(f"su - user -c {shlex.quote(f'{variables} bash -e script')}")


def commands(documents, quick, fresh, kef):
    inside = [block for document in documents for block in blocks(document)]
    typed = [block for block in inside if block.language == "sh" and "by-hand" not in block.words
             and ("kef" in block.words) == bool(kef)]
    report = Report(len(typed))
    with tempfile.TemporaryDirectory() as directory:
        machines = [(FreshMachine if fresh else Clone)(Path(directory) / "0")]
        on_fresh = False
        for i, block in enumerate(inside):
            if block.name:
                for machine in machines:
                    (machine.tree / block.name).write_text(block.text)
            if block not in typed:
                continue
            start, problem = time.time(), ""
            if "fresh" in block.words and not fresh or quick and {"long", "limit"} & set(block.words):
                report.add(block, start, "", skipped=True)
                continue
            if "fresh" in block.words and not on_fresh:
                machines.append(FreshMachine(Path(directory) / str(len(machines))))
                for named in inside[:i]:
                    if named.name:
                        (machines[-1].tree / named.name).write_text(named.text)
            on_fresh = "fresh" in block.words
            variables = {"KEF_LIMIT": str(SECONDS)} if "limit" in block.words else {}
            if kef:
                variables["PATH"] = f"{Path(kef).resolve()}:{os.environ['PATH']}"
            done = machines[-1 if on_fresh else 0].type(block.text, variables)
            output = output_of(inside, i, *HEADERS, "sh")
            if done.returncode:
                problem = f"status {done.returncode}\n{block.text}{done.stdout[-4000:]}{done.stderr[-4000:]}"
            elif output and not same(output.text, done.stdout, "similar" in output.words):
                problem = f"expected, from {output}:\n{output.text}got:\n{done.stdout}"
            report.add(block, start, problem)
    return report.failed


def main():
    arguments, compiler = sys.argv[1:], []
    if "--" in arguments:
        split = arguments.index("--")
        arguments, compiler = arguments[:split], arguments[split + 1:]
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("what", choices=["examples", "commands"])
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--fresh", action="store_true")
    parser.add_argument("--cxx", default="c++")
    parser.add_argument("--kef")
    parser.add_argument("documents", nargs="*")
    options = parser.parse_intermixed_args(arguments)
    documents = options.documents or ["README.md", "HACKING.md"] + sorted(
        str(path.relative_to(ROOT)) for path in ROOT.glob("docs/*.md"))
    if options.what == "examples":
        return examples(documents, compiler, options.cxx)
    return commands(documents, options.quick, options.fresh, options.kef)


if __name__ == "__main__":
    sys.exit(1 if main() else 0)
