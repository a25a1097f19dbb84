#!/usr/bin/env python3
"""Checks that the links between the pages of the documentation lead somewhere."""

import pathlib
import re
import sys


def anchors(page):
    """What a page's headings are linked by."""
    text = re.sub(r"^```.*?^```$", "", page.read_text(), flags=re.MULTILINE | re.DOTALL)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")
            for heading in re.findall(r"^#+ (.*)$", text, re.MULTILINE)}


def main():
    root = pathlib.Path(sys.argv[1])
    pages = [*root.glob("*.md"), *root.glob("docs/*.md")]
    count = 0
    wrong = []
    for page in pages:
        for link in re.findall(r"\]\(([^)\s]+)\)", page.read_text()):
            if "://" in link:
                continue
            path, _, anchor = link.partition("#")
            target = (page.parent / path).resolve() if path else page
            count += 1
            if not target.exists() or (anchor and anchor not in anchors(target)):
                wrong.append(f"{page.relative_to(root)}: {link} leads nowhere")
    if wrong or not count:
        sys.exit("\n".join(wrong) or "no link found")
    print(f"{count} links in {len(pages)} pages")


if __name__ == "__main__":
    main()
