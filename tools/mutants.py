#!/usr/bin/env python3
"""Plants the faults of tests/mutants/FAMILY.txt, one at a time, and reports those that no test notices.

    tools/mutants.py [family...] [source file...]
    tools/mutants.py --check    only whether every change has its place, once

Works on a copy of the tree in build/mutants, built incrementally there. HACKING.md tells the format
of the lists.
"""
import dataclasses
import functools
import os
import pathlib
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
LISTS = ROOT / "tests" / "mutants"
COPY = ROOT / "build" / "mutants" / "tree"
PRESET = "i386"
BUILD = COPY / "build" / PRESET
# Test program, and what has to be built before it runs: two find the shared library.
PROGRAMS = {"kef_tests": "kef", "kef_internal_tests": "kef_internal_tests", "accuracy": "kef"}
TIMEOUT = 300  # seconds; a test that hangs has noticed


@dataclasses.dataclass
class Mutant:
    place: str  # where its list has it
    file: str
    tests: str  # filter of GoogleTest, or `accuracy` and functions
    text: str = ""
    replacement: str = ""

    def apply(self, source):
        count = source.count(self.text)
        if not self.text or count != 1:
            raise ValueError(f"the text stands {count} times in {self.file}")
        return source.replace(self.text, self.replacement)


def read_list(path):
    mutants, lines = [], {"-": [], "+": []}

    def finish():
        if mutants:
            mutants[-1].text, mutants[-1].replacement = "\n".join(lines["-"]), "\n".join(lines["+"])
        lines["-"].clear(), lines["+"].clear()

    for number, line in enumerate(path.read_text().splitlines(), 1):
        if line[:1] in ("-", "+") and mutants:
            lines[line[0]].append(line[2:])
        elif line.strip() and not line.startswith("#"):
            finish()
            file, _, tests = line.partition(": ")
            if not tests:
                sys.exit(f"{path}:{number}: FILE: TESTS is expected")
            mutants.append(Mutant(f"{path.relative_to(ROOT)}:{number}", file, tests.strip()))
    finish()
    return mutants


def sources(tree):
    """The files of a tree without what was built."""
    for folder, folders, files in os.walk(tree):
        if pathlib.Path(folder) == tree:
            folders[:] = [f for f in folders if f not in ("build", ".git")]
        for file in files:
            yield (pathlib.Path(folder) / file).relative_to(tree)


def update_copy():
    """Files that differ are copied, so that the build stays incremental."""
    wanted = set(sources(ROOT))
    for file in wanted:
        path, copy = ROOT / file, COPY / file
        if not copy.is_file() or copy.read_bytes() != path.read_bytes():
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(path, copy)
    for file in set(sources(COPY)) - wanted:
        (COPY / file).unlink()


def build(*targets):
    command = ["cmake", "--build", "--preset", PRESET, "--target", *targets]
    return subprocess.run(command, cwd=COPY, capture_output=True, text=True)


def run_tests(program, tests):
    """Whether all of them pass."""
    if program == "accuracy":
        command = [BUILD / "bench" / program, *tests.split()[1:], "--count", "16384", "--summary"]
    else:
        command = [BUILD / "tests" / program, f"--gtest_filter={tests}", "--gtest_brief=1",
                   "--gtest_fail_fast"]
    try:
        return subprocess.run(command, cwd=BUILD / "tests", capture_output=True,
                              timeout=TIMEOUT).returncode == 0
    except subprocess.TimeoutExpired:
        return False


@functools.cache
def programs_of(tests):
    """The programs that have tests of the filter."""
    def has_some(program):
        command = [BUILD / "tests" / program, f"--gtest_filter={tests}", "--gtest_list_tests"]
        listed = subprocess.run(command, capture_output=True, text=True, check=True).stdout
        return any(line.startswith("  ") for line in listed.splitlines())
    if tests.startswith("accuracy "):
        return ["accuracy"]
    return [program for program in PROGRAMS if program != "accuracy" and has_some(program)]


def verdict(mutant):
    path = COPY / mutant.file
    original = path.read_text()
    programs = programs_of(mutant.tests)
    if not programs:
        return "no test of that name"
    try:
        path.write_text(mutant.apply(original))
        built = build(*(PROGRAMS[program] for program in programs))
        if built.returncode != 0:
            print(built.stdout[-3000:])
            return "does not build"
        return "lives" if all(run_tests(p, mutant.tests) for p in programs) else "caught"
    except ValueError as error:
        return str(error)
    finally:
        if path.read_text() != original:
            path.write_text(original)


def check():
    """Reports the changes whose text does not stand exactly once in their file."""
    misplaced = 0
    for mutant in [m for path in sorted(LISTS.glob("*.txt")) for m in read_list(path)]:
        try:
            mutant.apply((ROOT / mutant.file).read_text())
        except (OSError, ValueError) as error:
            print(f"{mutant.place}: {error}")
            misplaced += 1
    return 1 if misplaced else 0


def main(arguments):
    if arguments == ["--check"]:
        return check()
    files = [a for a in arguments if "/" in a]
    families = [a for a in arguments if "/" not in a]
    known = sorted(path.stem for path in LISTS.glob("*.txt"))
    for family in families:
        if family not in known:
            sys.exit(f"no family {family}; there are: {', '.join(known)}")
    mutants = [m for family in families or known for m in read_list(LISTS / f"{family}.txt")
               if not files or m.file in files]
    COPY.mkdir(parents=True, exist_ok=True)
    update_copy()
    configured = subprocess.run(["cmake", "--preset", PRESET, "-DKEF_TESTS=ON", "-DKEF_BENCH=OFF"], cwd=COPY,
                                capture_output=True, text=True)
    if configured.returncode != 0:
        sys.exit(configured.stdout + configured.stderr + "the tree cannot be configured")
    print("building the copy in", COPY.relative_to(ROOT), flush=True)
    built = build(*PROGRAMS)
    if built.returncode != 0:
        sys.exit(built.stdout[-3000:] + "the tree does not build")
    for tests in sorted({m.tests for m in mutants}):
        for program in programs_of(tests):
            if not run_tests(program, tests):
                sys.exit(f"{tests} of {program} fails without any change")
    results = []
    for mutant in mutants:
        results.append(verdict(mutant))
        print(f"{results[-1]}: {mutant.place} {mutant.file}", flush=True)
    build(*PROGRAMS.values())  # the copy is left without a fault
    others = [(m, r) for m, r in zip(mutants, results) if r != "caught"]
    print(f"{len(mutants)} changes, {results.count('caught')} caught")
    for mutant, result in others:
        print(f"\n{mutant.place}: {result}\n{mutant.file}: {mutant.tests}")
        print("".join(f"- {line}\n" for line in mutant.text.split("\n")) +
              "".join(f"+ {line}\n" for line in mutant.replacement.split("\n")), end="")
    return 1 if others else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
