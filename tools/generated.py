"""Generated files: written, or with --check compared with what stands there."""

import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def write_or_check(target, text):
    if sys.argv[1:] != ["--check"]:
        target.write_text(text)
    elif not target.exists() or target.read_text() != text:
        sys.exit(f"{target.relative_to(ROOT)} is not current: run ./run generate")
