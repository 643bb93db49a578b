#!/usr/bin/env python3
"""A document as the manual's generator reads it: manual_filter.py FILE.md

A fence keeps the first word that it has, in the generator's form; what further words say is for the
tests of the documents, as their comments are. Headings get labels, which links to them name.
"""

import re
import sys
from pathlib import Path

LANGUAGES = {"sh": ".sh", "c": ".c", "cpp": ".cpp", "python": ".py", "cmake": ".cmake"}
OUTSIDE = re.compile(r"(^```.*?^```$)", re.M | re.S)


def label(document, heading):
    """The name of a heading in the whole manual, where the document calls it #some-words."""
    words = re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")
    return f"{Path(document).stem.lower()}-{words}"


def of_file(link):
    """Headers have pages of their names; files that are no part of the manual are named."""
    name = Path(link[2]).name
    if name.endswith(".md"):
        return link[0]
    if name.endswith((".h", ".hpp")):
        return f"[{link[1]}]({name.replace('_', '__').replace('.', '_8')}.html)"
    return f"`{link[1]}`"


def filtered(path, text):
    pieces = OUTSIDE.split(re.sub(r"<!--.*?-->", "", text, flags=re.S))
    for i, piece in enumerate(pieces):
        if i % 2:
            pieces[i] = re.sub(r"^```(\w+).*$", lambda fence: "```{" + LANGUAGES[fence[1]] + "}"
                               if fence[1] in LANGUAGES else "```", piece, count=1, flags=re.M)
            continue
        piece = re.sub(r"^(##+ +)(.*)$", lambda h: f"{h[0]} {{#{label(path, h[2])}}}", piece, flags=re.M)
        piece = re.sub(r"\]\(([\w./-]*)#([\w-]+)\)",
                       lambda link: f"](#{label(link[1] or path, link[2])})", piece)
        pieces[i] = re.sub(r"\[([^]]*)\]\(([\w./-]+)\)", of_file, piece)
    return "".join(pieces)


path = Path(sys.argv[1])
sys.stdout.write(filtered(path, path.read_text(encoding="utf-8")))
