#!/usr/bin/env python3
"""Writes the pages that bench/compare measures on, with the answers each task must give.

    generate_pages.py SIZE_MIB OUT_DIR [SHAPE]   writes OUT_DIR/page[-SHAPE]-SIZEm.htm and its answers

Three shapes of page, each from its own writer:

    mixed    (page-16m.htm) the page described below
    inline   (page-inline-16m.htm) long paragraphs full of inline markup over
             lines of about 108 bytes, attributes in both quote styles
    ptags    (page-ptags-16m.htm) many tags that begin with "p" and are no
             <p>: <pre>, <param>, <path>, <picture>, <progress>

A page is the same for a size on every machine (fixed seed, no library random
generator whose sequence could change): CR LF lines, nested divs, paragraphs
with inline markup, comments inside and between them, entities, tabs and
non-ASCII text, lists, tables and <pre> blocks, and one <div id="target"> at
95% of the document. The answers come from the pieces as they are written,
never from reading the page back, so they judge every tool, Tagwright
included:

    page-16m.A      the inner markup of every <p>, joined by NUL
    page-16m.B      the plain text of every <p> by the strip-markup rule, joined by NUL
    page-16m.C      the inner markup of the target div
    page-16m.json   counts and byte offsets (the target's stretch for the rewrite)

The strip-markup rule, as every tool must apply it for task B: remove every
CR, trim blanks at both ends, remove every LF and TAB; if no "<" is left that
is the text; otherwise drop every tag (a "<" up to the first ">" behind it),
trim the pieces around the tags, and join the pieces that are not empty by
one blank.
"""

import hashlib
import itertools
import json
import os
import sys

# The one statement of the plain-text rule, shared with the Python peers.
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "peers"))
from strip_markup import strip_markup  # noqa: E402

GENERATOR_VERSION = 4
SEED = 20240607
# Tagwright's default CountInstances: a read takes at most this many instances.
COUNT_INSTANCES_CAP = 32000
NEW_CONTENT = '<p class="replaced">Rewritten by the benchmark: Ærø &amp; Zürich — 12 €.</p>'

WORDS = [
    "harbour", "ferry", "tide", "pier", "storm", "north", "lantern", "market", "fish",
    "quay", "anchor", "gull", "rope", "sail", "dock", "weather", "island", "bridge",
    "Öresund", "café", "naïve", "Ærøskøbing", "Kraków", "Zürich", "façade", "smörgåsbord",
    "Ελλάδα", "東京", "Straße", "€12", "—", "½", "São", "Łódź", "déjà-vu", "fjörður",
]
ENTITIES = ["&amp;", "&lt;", "&gt;", "&quot;", "&nbsp;", "&eacute;", "&#8364;", "&#x2014;"]


class Rng:
    """xorshift32: the same sequence on every Python."""

    def __init__(self, seed):
        self.state = seed & 0xFFFFFFFF or 1

    def next(self):
        x = self.state
        x ^= (x << 13) & 0xFFFFFFFF
        x ^= x >> 17
        x ^= (x << 5) & 0xFFFFFFFF
        self.state = x
        return x

    def below(self, n):
        return self.next() % n

    def pick(self, items):
        return items[self.next() % len(items)]


class PageWriter:
    """Writes the page and its answers side by side and keeps the offsets."""

    def __init__(self, base):
        self.page = open(base + ".htm", "wb")
        self.inner_markup = open(base + ".A", "wb")
        self.inner_text = open(base + ".B", "wb")
        self.offset = 0
        self.angle_brackets = 0
        self.paragraphs = 0
        self.cap_end_offset = None

    def emit(self, text):
        data = text.encode("utf-8")
        self.page.write(data)
        self.offset += len(data)
        self.angle_brackets += data.count(b"<")

    def paragraph(self, open_tag, inner):
        self.emit(open_tag)
        self.emit(inner)
        self.emit("</p>")
        separator = b"\0" if self.paragraphs else b""
        self.inner_markup.write(separator + inner.encode("utf-8"))
        self.inner_text.write(separator + strip_markup(inner).encode("utf-8"))
        self.paragraphs += 1
        if self.paragraphs == COUNT_INSTANCES_CAP:
            self.cap_end_offset = self.offset

    def close(self):
        for file in (self.page, self.inner_markup, self.inner_text):
            file.close()


def words(rng, count):
    return " ".join(rng.pick(WORDS) for _ in range(count))


def inline_piece(rng):
    """One run of phrasing content: never a block element, never a "<p" or a ">" in text."""
    kind = rng.below(20)
    if kind == 0:
        return "<b>%s</b>" % words(rng, 1 + rng.below(2))
    if kind == 1:
        return "<i>%s</i>" % words(rng, 1 + rng.below(3))
    if kind == 2:
        return "<em>%s</em>" % rng.pick(WORDS)
    if kind == 3:
        return '<a href="/news/%d.htm?id=%d&amp;page=2">%s</a>' % (
            rng.below(5000), rng.below(90), words(rng, 1 + rng.below(3)))
    if kind == 4:
        return '<span class="tag">%s</span>' % rng.pick(WORDS)
    if kind == 5:
        return "<code>x &lt; %d</code>" % rng.below(100)
    if kind == 6:
        return "<br>"
    if kind == 7:
        return '<img src="/img/%d.png" alt="%s">' % (rng.below(400), rng.pick(WORDS))
    if kind == 8:
        return "<!-- note %d -->" % rng.below(1000)
    if kind == 9:
        return rng.pick(ENTITIES)
    if kind == 10:
        return "<strong>%s %s</strong>" % (rng.pick(WORDS), rng.pick(ENTITIES))
    if kind == 11:
        return "\t" + rng.pick(WORDS)
    return words(rng, 2 + rng.below(6))


def paragraph_inner(rng):
    """The inner markup of one paragraph: 1 to 3 lines, never blank."""
    lines = []
    for _ in range(1 + rng.below(3)):
        pieces = [inline_piece(rng) for _ in range(4 + rng.below(10))]
        lines.append(" ".join(pieces))
    inner = rng.pick(WORDS) + " " + "\r\n".join(lines)
    shape = rng.below(8)
    if shape == 0:
        inner = "\r\n  " + inner + "\r\n"
    elif shape == 1:
        inner = "  " + inner + " "
    return inner


def paragraph_tag(rng):
    return rng.pick(['<p>', '<p class="news">', '<p class="note" lang="de">', '<p title="%s">'
                     % rng.pick(WORDS)])


def write_section(out, rng, number):
    out.emit('<div class="section" id="s%d">\r\n' % number)
    out.emit("<h2>%s %s %s</h2>\r\n" % (rng.pick(WORDS), rng.pick(ENTITIES), rng.pick(WORDS)))
    out.emit("<!-- section %d: %s -->\r\n" % (number, words(rng, 3)))
    out.emit('<div class="column">\r\n')
    for _ in range(1 + rng.below(4)):
        out.paragraph(paragraph_tag(rng), paragraph_inner(rng))
        out.emit("\r\n")
    if rng.below(2) == 0:
        out.emit('<ul class="list">\r\n')
        for _ in range(2 + rng.below(5)):
            out.emit("  <li>%s %s</li>\r\n" % (words(rng, 3), rng.pick(ENTITIES)))
        out.emit("</ul>\r\n")
    if rng.below(2) == 0:
        out.emit('<table class="prices">\r\n')
        for _ in range(2 + rng.below(4)):
            out.emit("<tr><td>%s</td><td>%d,%02d €</td><td>%s</td></tr>\r\n"
                     % (rng.pick(WORDS), rng.below(200), rng.below(100), words(rng, 2)))
        out.emit("</table>\r\n")
    if rng.below(3) == 0:
        out.emit("<pre>\r\nif (a &lt; b) { print(&quot;%s&quot;); }\r\n</pre>\r\n" % rng.pick(WORDS))
    out.emit("</div>\r\n")
    out.emit('<div class="aside"><div class="box">\r\n<span>%s</span> %s\r\n</div></div>\r\n'
             % (words(rng, 2), words(rng, 4)))
    out.emit("</div>\r\n")


def write_target(out, rng):
    """The one <div id="target">: paragraphs and a list over several lines, no nested div."""
    out.emit('<div class="section" id="s-target">\r\n<div class="column">\r\n')
    out.emit('<div id="target">')
    start = out.offset
    out.emit("\r\n<h3>Target &amp; %s</h3>\r\n" % rng.pick(WORDS))
    for _ in range(3):
        out.paragraph(paragraph_tag(rng), paragraph_inner(rng))
        out.emit("\r\n")
    out.emit('<ul class="list">\r\n  <li>%s</li>\r\n</ul>\r\n' % words(rng, 4))
    end = out.offset
    out.emit("</div>\r\n</div>\r\n</div>\r\n")
    return start, end


def write_blocks(out, rng, size, write_block):
    """Writes blocks until the page reaches `size`, the target among them once 95% is written;
    returns the target's offsets."""
    target = None
    while out.offset < size:
        if target is None and out.offset >= size * 95 // 100:
            target = write_target(out, rng)
        write_block()
    return target


def write_mixed(out, rng, size):
    out.emit('<!DOCTYPE html>\r\n<html lang="en">\r\n<head>\r\n<meta charset="utf-8">\r\n'
             "<title>Harbour news — %d MiB</title>\r\n</head>\r\n<body>\r\n"
             '<div class="page">\r\n' % (size >> 20))
    numbers = itertools.count()
    target = write_blocks(out, rng, size, lambda: write_section(out, rng, next(numbers)))
    out.emit("</div>\r\n</body>\r\n</html>\r\n")
    return target


# --- the inline-heavy shape ---------------------------------------------------

INLINE_WORDS = ["the", "harbour", "master", "said", "that", "ferries", "will", "run", "late",
                "tonight", "because", "of", "fog", "and", "a", "strong", "tide", "near", "pier",
                "seven", "weather", "island", "market", "bridge", "morning", "evening", "boats",
                "passengers", "were", "told", "to", "wait", "at", "terminal", "north", "south",
                "after", "storm", "warning", "from", "coast", "guard", "service", "Zürich", "Ærø", "café", "Kraków", "naïve", "façade", "—", "€40",
                "Ελλάδα", "東京", "Straße", "Łódź"]


def inline_words(rng, count):
    return " ".join(rng.pick(INLINE_WORDS) for _ in range(count))


def inline_run(rng):
    """A run of phrasing content of an inline-heavy paragraph: mostly markup."""
    kind = rng.below(12)
    quote = rng.pick(['"', "'"])
    if kind == 0:
        return "<b>%s</b>" % inline_words(rng, 1 + rng.below(3))
    if kind == 1:
        return "<i>%s</i>" % inline_words(rng, 1 + rng.below(2))
    if kind == 2:
        return "<a href=%s/story/%d.htm%s class=%slink%s>%s</a>" % (
            quote, rng.below(90000), quote, quote, quote, inline_words(rng, 1 + rng.below(4)))
    if kind == 3:
        return "<span class=%s%s%s>%s</span>" % (quote, rng.pick(["em", "hl", "q", "x-y"]), quote,
                                                 inline_words(rng, 1 + rng.below(3)))
    if kind == 4:
        return "<span><b>%s</b> <i>%s</i></span>" % (rng.pick(INLINE_WORDS), rng.pick(INLINE_WORDS))
    if kind == 5:
        return "<!-- %s -->" % inline_words(rng, 2)
    if kind == 6:
        return rng.pick(ENTITIES)
    return inline_words(rng, 1 + rng.below(5))


def wrapped(runs, first_width):
    """The runs joined by blanks, with CR LF in place of a blank wherever a line would pass
    about 108 bytes."""
    lines, line, width = [], [], first_width
    for run in runs:
        size = len(run.encode("utf-8")) + 1
        if line and width + size > 106:
            lines.append(" ".join(line))
            line, width = [], 0
        line.append(run)
        width += size
    lines.append(" ".join(line))
    return "\r\n".join(lines)


def write_inline(out, rng, size):
    out.emit("<!DOCTYPE html>\r\n<html>\r\n<head>\r\n<meta charset='utf-8'>\r\n"
             "<title>Inline-heavy page</title>\r\n</head>\r\n<body>\r\n")

    def write_story():
        out.emit("<!-- story %d -->\r\n<div class='story'>\r\n<h2>%s</h2>\r\n"
                 % (rng.below(100000), inline_words(rng, 4)))
        for _ in range(2 + rng.below(4)):
            tag = rng.pick(["<p>", '<p class="lead">', "<p class='body' id='p%d'>"
                            % rng.below(9999), '<p lang="de">'])
            runs = [inline_run(rng) for _ in range(10 + rng.below(30))]
            out.paragraph(tag, wrapped(runs, len(tag)))
            out.emit("\r\n")
        out.emit("</div>\r\n")

    target = write_blocks(out, rng, size, write_story)
    out.emit("</body>\r\n</html>\r\n")
    return target


# --- the shape of many tags that begin with "p" ----------------------------------

def p_words_tag(rng, phrasing=False):
    """A tag that begins with "<p" and is no <p>; with `phrasing`, only those that a paragraph
    may hold, so that the tree parsers keep the paragraph whole."""
    kind = 1 + rng.below(3) if phrasing else rng.below(6)
    if kind == 0:
        return '<param name="%s" value="%d">' % (rng.pick(WORDS), rng.below(100))
    if kind == 1:
        return '<svg width="16" height="16"><path d="M%d %dL%d %d"/></svg>' % (
            rng.below(16), rng.below(16), rng.below(16), rng.below(16))
    if kind == 2:
        return "<picture><source srcset='/i/%d.webp'><img src='/i/%d.png' alt=''></picture>" % (
            rng.below(900), rng.below(900))
    if kind == 3:
        return '<progress value="%d" max="100"></progress>' % rng.below(100)
    if kind == 4:
        return "<PRE class='inline'>%s</PRE>" % words(rng, 2)
    return "<path d='M0 0'/>"


def write_ptags(out, rng, size):
    out.emit("<!DOCTYPE html>\r\n<html>\r\n<head><title>Tags that begin with p</title></head>"
             "\r\n<body>\r\n")

    def write_widget():
        out.emit("<div class='widget'>\r\n<object data='/w/%d'>\r\n" % rng.below(5000))
        for _ in range(3 + rng.below(6)):
            out.emit("  %s\r\n" % p_words_tag(rng))
        out.emit("</object>\r\n<pre>\r\n")
        for _ in range(2 + rng.below(8)):
            out.emit("%s &lt;%s&gt;\r\n" % (words(rng, 4), rng.pick(["p", "pre", "param"])))
        out.emit("</pre>\r\n")
        if rng.below(2) == 0:
            runs = []
            for _ in range(6 + rng.below(14)):
                runs.append(p_words_tag(rng, True) if rng.below(3) == 0
                            else words(rng, 1 + rng.below(4)))
            out.paragraph(rng.pick(["<p>", '<p class="caption">']), wrapped(runs, 3))
            out.emit("\r\n")
        out.emit("</div>\r\n")

    target = write_blocks(out, rng, size, write_widget)
    out.emit("</body>\r\n</html>\r\n")
    return target


SHAPES = {"mixed": ("page-%dm", write_mixed), "inline": ("page-inline-%dm", write_inline),
          "ptags": ("page-ptags-%dm", write_ptags)}


def generate(size_mib, out_dir, shape="mixed"):
    size = size_mib << 20
    name, writer = SHAPES[shape]
    base = os.path.join(out_dir, name % size_mib)
    rng = Rng(SEED)
    out = PageWriter(base)
    target = writer(out, rng, size)
    out.close()
    with open(base + ".htm", "rb") as page:
        page.seek(target[0])
        inner = page.read(target[1] - target[0])
    with open(base + ".C", "wb") as answer:
        answer.write(inner)
    facts = {
        "version": GENERATOR_VERSION,
        "shape": shape,
        "bytes": out.offset,
        "paragraphs": out.paragraphs,
        "angle_brackets": out.angle_brackets,
        "cap": COUNT_INSTANCES_CAP,
        "cap_end_offset": out.cap_end_offset,
        "target_start": target[0],
        "target_end": target[1],
        "new_content": NEW_CONTENT,
        "sha256": sha256_of(base + ".htm"),
    }
    with open(base + ".json", "w") as file:
        json.dump(facts, file, indent=1)
    return facts


def sha256_of(path):
    digest = hashlib.sha256()
    with open(path, "rb") as file:
        for block in iter(lambda: file.read(1 << 20), b""):
            digest.update(block)
    return digest.hexdigest()


if __name__ == "__main__":
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    print(json.dumps(generate(int(sys.argv[1]), sys.argv[2], *sys.argv[3:])))
