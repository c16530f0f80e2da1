"""check_links.py FILE...: fails if a link in one of these documents leads to no file, or to no heading."""

import re
import sys
from pathlib import Path


def headings(path):
    """Returns the headings as links name them."""
    titles = re.findall(r"^#+ (.*)$", path.read_text(encoding="utf-8"), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-") for title in titles}


def links_of(document):
    code = r"^    .*$|`[^`\n]*`"  # removed first, because brackets in code are not links
    text = re.sub(code, "", document.read_text(encoding="utf-8"), flags=re.MULTILINE)
    return re.findall(r"\]\(([^)#:]*)(?:#([^)]*))?\)", text)


def is_broken(document, target, heading):
    path = document.parent / target if target else document
    return not path.exists() or (heading and heading not in headings(path))


broken = links = 0
for document in map(Path, sys.argv[1:]):
    for target, heading in links_of(document):
        links += 1
        if is_broken(document, target, heading):
            print(f"{document}: no {target}#{heading}")
            broken += 1
sys.exit(1 if broken or links == 0 else 0)
