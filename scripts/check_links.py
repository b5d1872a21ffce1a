"""Checks the links inside a site of HTML pages, and those of the Markdown pages that it is made from.

check_links.py SITE PAGE.md...: every file that is linked or shown has to exist, and every place within one of the site's
pages. Links to other hosts are not followed. Prints what is missing and fails if there is any.
"""

import html.parser
import pathlib
import re
import sys
import urllib.parse

MARKDOWN_LINK = re.compile(r"\]\(([^)\s]+)\)")


class Page(html.parser.HTMLParser):
    """Places that a page has, and what it links to."""

    def __init__(self, path):
        super().__init__()
        self.places = set()
        self.links = []
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("id", "name"):
                self.places.add(value)
            elif name in ("href", "src", "data") and value:
                self.links.append(value)


def missing(source, links, pages):
    """Of the links of one file, those that lead nowhere."""
    for link in links:
        target = urllib.parse.urlsplit(link)
        if target.scheme or target.netloc:
            continue
        path = (source.parent / urllib.parse.unquote(target.path)).resolve() if target.path else source
        page = pages.get(path)
        place = urllib.parse.unquote(target.fragment)
        if not path.exists() or (page and place and place not in page.places):
            yield link


def main():
    site, *sources = [pathlib.Path(argument).resolve() for argument in sys.argv[1:]]
    pages = {path: Page(path) for path in sorted(site.rglob("*.html"))}
    links = {path: page.links for path, page in pages.items()}
    links.update({path: MARKDOWN_LINK.findall(path.read_text(encoding="utf-8")) for path in sources})
    faults = [f"{path}: {link}" for path, ours in links.items() for link in missing(path, ours, pages)]
    print(*faults, sep="\n", file=sys.stderr)
    print(f"{sum(map(len, links.values()))} links in {len(links)} pages, {len(faults)} of them broken")
    sys.exit(bool(faults))


main()
