#!/usr/bin/env python3
"""Calls per second of one read in the same process: the inner markup of the
<div id="target"> of a 20 KB page, through Tagwright's C interface (ctypes on
the shared library), through the Python module, and through lxml (lxml.html
parse of the file plus one XPath). The three run in turns within each round,
and the ratios are taken round by round, so that a slow moment of a shared
machine weighs on all three alike.

    bench/call_benchmark.py [--rounds N] [--build DIR]

Run it with the python3 the module is built for; lxml comes from Debian's
python3-lxml where that interpreter has none of its own (bench/compare
installs it). Prints one Markdown table."""
import argparse
import ctypes
import os
import statistics
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]


def page(size):
    """A page of about `size` bytes: CR LF lines, nested divs, paragraphs with
    inline markup and entities, and the target at 95%."""
    lines, length, n = ["<html><head><title>Call benchmark</title></head><body>"], 0, 0
    target = '<div id="target"><p>The <b>target</b> paragraph, caf\u00e9 &amp; co.</p></div>'
    placed = False
    while length < size:
        if not placed and length >= size * 0.95:
            lines.append(target)
            placed = True
        n += 1
        lines.append(f'<div class="c{n % 7}"><p>Paragraph {n} with <i>inline</i> markup, '
                     f'an entity &lt;{n}&gt; and <a href="/x{n}">a link</a>.</p></div>')
        length += len(lines[-1].encode()) + 2
    if not placed:
        lines.append(target)
    lines.append("</body></html>")
    return ("\r\n".join(lines) + "\r\n").encode()


def rate(call, seconds):
    """Calls per second of `call`, over at least `seconds`."""
    calls, start = 0, time.perf_counter()
    while True:
        for _ in range(20):
            call()
        calls += 20
        elapsed = time.perf_counter() - start
        if elapsed >= seconds:
            return calls / elapsed


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--rounds", type=int, default=15)
    parser.add_argument("--seconds", type=float, default=0.3, help="per tool and round")
    parser.add_argument("--build", default=str(ROOT / "build"))
    args = parser.parse_args()
    sys.path.insert(0, os.path.join(args.build, "python"))
    import tagwright
    try:
        import lxml.html
    except ImportError:
        sys.path.append("/usr/lib/python3/dist-packages")
        import lxml.html

    folder = tempfile.mkdtemp(prefix="tagwright-call-")
    path = Path(folder) / "page.htm"
    path.write_bytes(page(20 * 1024))

    lib = ctypes.CDLL(os.path.join(args.build, "libtagwright.so"))
    handle = ctypes.c_void_p()
    assert lib.tagwright_new(None, ctypes.byref(handle), None) == 0
    assert lib.tagwright_set_site_root(handle, folder.encode()) == 0
    text, length, found = ctypes.c_void_p(), ctypes.c_size_t(), ctypes.c_int()

    def c_interface():
        lib.tagwright_read(handle, b"/page.htm", b"div", b"id", b"target", 1, 1, None, None,
                           None, None, ctypes.byref(text), ctypes.byref(length),
                           ctypes.byref(found))
        answer = ctypes.string_at(text, length.value)
        lib.tagwright_free(text)
        return answer.decode()

    module = tagwright.Tagwright(root=folder)

    def python_module():
        return module.read("/page.htm", element_name="div", attribute_name="id",
                           attribute_value="target", count_instances=1)[0]

    parser = lxml.html.HTMLParser(encoding="utf-8")

    def lxml_tree():
        div = lxml.html.parse(str(path), parser).xpath('//div[@id="target"]')[0]
        return "".join(lxml.html.tostring(child, encoding="unicode") for child in div)

    # Check before timing: every tool gives the target's inner markup.
    want = c_interface()
    assert want.startswith("<p>The <b>target</b>"), want
    assert python_module() == want
    assert lxml_tree().replace("&amp;", "&") == want.replace("&amp;", "&")

    tools = {"C interface": c_interface, "Python module": python_module, "lxml": lxml_tree}
    rates = {name: [] for name in tools}
    for _ in range(args.rounds):
        for name, call in tools.items():
            rates[name].append(rate(call, args.seconds))
    print(f"20 KB page ({path.stat().st_size} bytes), target at 95%, {args.rounds} paired rounds, "
          f"Python {sys.version.split()[0]}, lxml {lxml.etree.__version__}\n")
    print("| way in | calls/s (median) | µs per call | × lxml (median of rounds) |")
    print("|---|---:|---:|---:|")
    for name in tools:
        ratios = [a / b for a, b in zip(rates[name], rates["lxml"])]
        median = statistics.median(rates[name])
        print(f"| {name} | {median:,.0f} | {1e6 / median:.1f} | {statistics.median(ratios):.1f} |")
    lib.tagwright_delete(handle)
    path.unlink()
    os.rmdir(folder)


if __name__ == "__main__":
    main()
