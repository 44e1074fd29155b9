"""The whole-tree peer of bench/compare: lxml parses the file, then walks the tree.
    lxml_tree.py A|B|C FILE      results joined by NUL on stdout
    lxml_tree.py D FILE NEW      rewrites FILE through a temporary file
Every task ends with "matches: N" on stderr. Inner markup is the element
serialised by lxml less its own tags, so it is the document's markup as lxml
writes it back (entities decoded, empty elements in HTML form), not the bytes
of the file."""

import os
import sys

from lxml import etree, html

from strip_markup import strip_markup


def inner_markup(element):
    outer = etree.tostring(element, method="html", encoding="unicode", with_tail=False)
    return outer[outer.index(">") + 1:outer.rindex("</")]


def main(task, path, new_content=None):
    tree = html.parse(path, parser=html.HTMLParser(encoding="utf-8"))
    out = sys.stdout.buffer
    if task in ("A", "B"):
        results = [inner_markup(p) for p in tree.iter("p")]
        if task == "B":
            results = [strip_markup(result) for result in results]
    else:
        results = [inner_markup(div) for div in tree.iterfind('.//div[@id="target"]')][:1]
    if task == "D":
        target = tree.find('.//div[@id="target"]')
        if target is not None:
            for child in list(target):
                target.remove(child)
            fragment = html.fragment_fromstring(new_content, create_parent="div")
            target.text = fragment.text
            target.extend(fragment)
            temporary = path + ".tmp~"
            tree.write(temporary, method="html", encoding="utf-8")
            os.replace(temporary, path)
    else:
        out.write("\0".join(results).encode("utf-8"))
    sys.stderr.write("matches: %d\n" % len(results))


if __name__ == "__main__":
    main(*sys.argv[1:])
