"""Turns what `xmllint --html --xpath` prints into the results of bench/compare.
    xmllint --html --xpath //p FILE | xmllint_split.py A|B
    xmllint --html --xpath '//div[@id="target"]' FILE | xmllint_split.py C
xmllint prints each element found, serialised as XML, on a line of its own;
this cuts each one's own tags off (and for B applies the strip-markup rule)
and writes the results joined by NUL, then "matches: N" on stderr."""

import re
import sys

from strip_markup import strip_markup


def main(task):
    printed = sys.stdin.buffer.read().decode("utf-8")
    # An element's text never holds a line that starts with "<p" or "<div":
    # paragraphs hold inline markup only, and the target holds no div.
    name = "p" if task in ("A", "B") else "div"
    elements = re.split(r"\n(?=<%s[ >])" % name, printed.rstrip("\n")) if printed else []
    results = [element[element.index(">") + 1:element.rindex("</")] for element in elements]
    if task == "B":
        results = [strip_markup(result.replace("&#13;", "")) for result in results]
    sys.stdout.buffer.write("\0".join(results).encode("utf-8"))
    sys.stderr.write("matches: %d\n" % len(results))


if __name__ == "__main__":
    main(sys.argv[1])
