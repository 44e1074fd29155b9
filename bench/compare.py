"""Runs tagwright beside its peer tools on generated pages and prints one table.

Started by bench/compare, which installs the peers and builds what is needed;
see that file for the command line. Four tasks, each a whole-process run per
tool, with the tools' runs alternated round by round so that each round gives
one paired ratio per peer:

    A  the inner markup of every <p>
    B  the plain text of every <p>, by the strip-markup rule of generate_pages.py
    C  the inner markup of the one <div id="target">, at 95% of the page
    D  a rewrite of that div's inner markup, the document replaced on disk

Every run's output is judged against the answers that the generator wrote
beside the page: byte-exact for tagwright, the text-tool and the streaming
peer and the reference programs; for the whole-tree peers, which write the
markup back from their tree, after normalising both sides (entities decoded,
CR dropped, "/>" read as ">", white space between tags dropped and other runs
of white space read as one blank). A run that does not agree is a failure,
printed as such and never as a speed.
"""

import argparse
import atexit
import datetime
import hashlib
import html
import json
import os
import platform
import re
import shutil
import statistics
import subprocess
import sys
import time

BENCH = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, BENCH)
import generate_pages  # noqa: E402

PYTHON = "/usr/bin/python3"  # Debian's, which has python3-lxml
TASKS = {
    "A": "inner markup of every <p>",
    "B": "inner text of every <p>",
    "C": "inner markup of <div id=\"target\">",
    "D": "rewrite of that div's inner markup",
}
DEFAULT_RUNS = {1: 9, 16: 5, 128: 3}
MIB = 1 << 20


class Tool:
    """One row kind: how to run a task, and how close its output must come."""

    def __init__(self, name, role, tasks, level, command, shapes=None):
        self.name = name
        # The page shapes the tool runs on; None for all of them.
        self.shapes = shapes
        # "tagwright", "tagwright-chunk" (tagwright at another chunk length),
        # "tagwright-lf" (tagwright with --line-ends=any on the LF version of the page), "peer",
        # "ceiling" (the C scan) or "floor" (the C copy)
        self.role = role
        self.tasks = tasks
        self.level = level  # "exact" or "normalised"
        self.command = command  # (task, page path, new content) -> list of argv


def physical(path):
    """tagwright's physical form of a host path: a drive and backslashes."""
    return "C:" + os.path.abspath(path).replace("/", "\\")


def is_tagwright(tool):
    return tool.role in ("tagwright", "tagwright-chunk", "tagwright-lf")


def reads_lf_page(tool):
    return tool.role == "tagwright-lf"


def crlf_to_lf(data):
    return data.replace(b"\r\n", b"\n")


def make_tools(tagwright, binaries, work):
    peers = os.path.join(BENCH, "peers")
    locate_target = ["--element-name", "div", "--attribute-name", "id",
                     "--attribute-value", "target"]

    def tagwright_command(task, path, new_content):
        if task == "A":
            return [[tagwright, "read", physical(path), "--element-name", "p",
                     "--count-instances", "0"]]
        if task == "B":
            return [[tagwright, "read", physical(path), "--element-name", "p",
                     "--count-instances", "0", "--content-type", "innerText"]]
        if task == "C":
            return [[tagwright, "read", physical(path), *locate_target, "--count-instances", "1"]]
        return [[tagwright, "write", physical(path), *locate_target, "--new-content", new_content]]

    def script(interpreter, name):
        return lambda task, path, new: [[*interpreter, os.path.join(peers, name), task, path]
                                        + ([new] if task == "D" else [])]

    def xmllint(task, path, new_content):
        xpath = "//p" if task in ("A", "B") else '//div[@id="target"]'
        return [["xmllint", "--html", "--xpath", xpath, path],
                [PYTHON, os.path.join(peers, "xmllint_split.py"), task]]

    def at_chunk_length(length):
        """tagwright with its chunk length set by a settings file: the results must not
        change with it."""
        settings = os.path.join(work, "settings-chunk-%d.conf" % length)
        with open(settings, "w") as file:
            file.write("BufferLengthCharacters=%d\n" % length)
        return lambda task, path, new: [["env", "TAGWRIGHT_SETTINGS=" + settings, *argv]
                                        for argv in tagwright_command(task, path, new)]

    def any_line_end(task, path, new):
        return [[*argv, "--line-ends=any"] for argv in tagwright_command(task, path, new)]

    return [
        Tool("tagwright", "tagwright", "ABCD", "exact", tagwright_command),
        Tool("tagwright, LF page, --line-ends=any", "tagwright-lf", "ABCD", "exact",
             any_line_end),
        Tool("tagwright, chunk 257", "tagwright-chunk", "ABCD", "exact", at_chunk_length(257)),
        Tool("tagwright, chunk 30000", "tagwright-chunk", "ABCD", "exact",
             at_chunk_length(30000)),
        Tool("perl regex", "peer", "ABCD", "exact", script(["perl"], "perl_regex.pl")),
        Tool("htmlparser2", "peer", "ABCD", "exact", script(["node"], "htmlparser2_stream.js")),
        # The tree parsers write markup back from their tree, which the judge can tell from
        # the page's own only on the mixed shape.
        Tool("lxml", "peer", "ABCD", "normalised", script([PYTHON], "lxml_tree.py"), ("mixed",)),
        Tool("xmllint + split", "peer", "ABC", "normalised", xmllint, ("mixed",)),
        Tool("C scan for \"<\"", "ceiling", "ABC", "exact",
             lambda task, path, new: [[binaries["scan_markers"], path]]),
        Tool("C copy + rename", "floor", "D", "exact",
             lambda task, path, new: [[binaries["copy_rename"], path]]),
        Tool("C copy + fsync + rename", "floor", "D", "exact",
             lambda task, path, new: [[binaries["copy_rename"], "--sync", path]]),
    ]


# --- running -----------------------------------------------------------------

class Run:
    def __init__(self, seconds, peak_kib, status, stdout_path, stderr_text):
        self.seconds = seconds
        self.peak_kib = peak_kib
        self.status = status
        self.stdout_path = stdout_path
        self.stderr_text = stderr_text


def run_pipeline(commands, stdout_path, env):
    """Runs the commands as one pipe; wall time from the first start to the last exit.
    Each process runs under /usr/bin/time, a small parent, so that its peak resident
    set is its own and not that of this driver it was forked from; the peak of a pipe
    is the sum of its processes' peaks."""
    stderr_path = stdout_path + ".err"
    peak_paths = ["%s.peak%d" % (stdout_path, index) for index in range(len(commands))]
    processes = []
    with open(stdout_path, "wb") as stdout, open(stderr_path, "wb") as stderr:
        start = time.perf_counter()
        previous = None
        for index, argv in enumerate(commands):
            last = index == len(commands) - 1
            process = subprocess.Popen(
                ["/usr/bin/time", "-f", "%M", "-o", peak_paths[index], *argv],
                stdin=previous.stdout if previous else subprocess.DEVNULL,
                stdout=stdout if last else subprocess.PIPE, stderr=stderr, env=env)
            if previous:
                previous.stdout.close()
            processes.append(process)
            previous = process
        status = 0
        for process in processes:
            status = process.wait() or status
        seconds = time.perf_counter() - start
    peak = 0
    for path in peak_paths:
        with open(path) as file:
            peak += int(file.read().split()[-1])
    with open(stderr_path, "rb") as file:
        stderr_text = file.read().decode("utf-8", "replace")
    return Run(seconds, peak, status, stdout_path, stderr_text)


def reported_matches(run):
    found = re.findall(r"^matches: (-?\d+)$", run.stderr_text, re.M)
    return int(found[-1]) if found else None


# --- judging -----------------------------------------------------------------

def normalise(text):
    text = html.unescape(text.replace("\r", ""))
    text = re.sub(r"\s*/>", ">", text)
    text = re.sub(r">\s+<", "><", text)
    return re.sub(r"\s+", " ", text).strip()


def compare_texts(got, expected, level, what):
    """'exact', 'normalised', or raises Disagreement naming the first difference."""
    if got == expected:
        return "exact"
    got_text = got.decode("utf-8", "replace")
    expected_text = expected.decode("utf-8", "replace")
    if level == "normalised" and normalise(got_text) == normalise(expected_text):
        return "normalised"
    raise Disagreement("%s differs: %s" % (what, first_difference(got_text, expected_text)))


def compare_results(got, expected_pieces, level):
    """Results joined by NUL against the expected pieces: 'exact', 'normalised' or raises."""
    pieces = got.split(b"\0") if got else []
    if len(pieces) != len(expected_pieces):
        raise Disagreement("%d results, expected %d" % (len(pieces), len(expected_pieces)))
    if pieces == expected_pieces:
        return "exact"
    for number, (piece, expected) in enumerate(zip(pieces, expected_pieces), 1):
        if piece != expected:
            compare_texts(piece, expected, level, "result %d" % number)
    return "normalised"


def first_difference(got, expected):
    at = next((i for i, (a, b) in enumerate(zip(got, expected)) if a != b),
              min(len(got), len(expected)))
    return "at character %d: got %r, expected %r" % (
        at, got[max(0, at - 20):at + 20], expected[max(0, at - 20):at + 20])


class Disagreement(Exception):
    pass


class Page:
    """A generated page, its facts and its answers."""

    def __init__(self, size_mib, pages_dir, shape):
        self.size_mib = size_mib
        self.shape = shape
        self.path = os.path.join(pages_dir, generate_pages.SHAPES[shape][0] % size_mib + ".htm")
        base = self.path[:-4]
        facts_path = base + ".json"
        facts = None
        if os.path.exists(facts_path):
            with open(facts_path) as file:
                facts = json.load(file)
        if (not facts or facts.get("version") != generate_pages.GENERATOR_VERSION
                or facts.get("shape", "mixed") != shape
                or not os.path.exists(self.path) or os.path.getsize(self.path) != facts["bytes"]):
            print("generating the %d MiB %s page..." % (size_mib, shape), file=sys.stderr, flush=True)
            facts = generate_pages.generate(size_mib, pages_dir, shape)
        self.facts = facts
        self.bytes = facts["bytes"]
        self.answers = {}
        for task in "ABC":
            with open(base + "." + task, "rb") as file:
                self.answers[task] = file.read()
        self.paragraph_pieces = {task: self.answers[task].split(b"\0") for task in "AB"}
        with open(self.path, "rb") as file:
            document = file.read()
        self.original = document
        self.rewritten = (document[:facts["target_start"]] + facts["new_content"].encode()
                          + document[facts["target_end"]:])

    @property
    def lf_path(self):
        """The page with every CR LF made LF, made once beside it."""
        path = self.path[:-4] + "-lf.htm"
        if not os.path.exists(path) or os.path.getmtime(path) < os.path.getmtime(self.path):
            with open(path, "wb") as file:
                file.write(crlf_to_lf(self.original))
        return path

    @property
    def label(self):
        return "%d MiB %s" % (self.size_mib, self.shape)

    @property
    def capped(self):
        return self.facts["paragraphs"] > self.facts["cap"]


def judge(tool, task, page, run, rewritten_path):
    """Says how the run agrees with the page: (label, result count), or raises Disagreement."""
    with open(run.stdout_path, "rb") as file:
        output = file.read()
    if run.status != 0:
        said = (output[:200].decode("utf-8", "replace") + " " + run.stderr_text).split()
        raise Disagreement("exit status %d: %s" % (run.status, " ".join(said)[:200]))
    matches = reported_matches(run)
    lf = crlf_to_lf if reads_lf_page(tool) else (lambda data: data)
    if tool.role == "ceiling":
        expected = page.facts["angle_brackets"]
        if output.decode() != str(expected):
            raise Disagreement("counted %s \"<\", expected %d" % (output.decode(), expected))
        return "exact", expected
    if task in ("A", "B"):
        expected = [lf(piece) for piece in page.paragraph_pieces[task]]
        label = ""
        if is_tagwright(tool) and page.capped:
            expected = expected[:page.facts["cap"]]
            label = ", first %s (cap)" % format(page.facts["cap"], ",")
        agreement = compare_results(output, expected, tool.level)
        if matches != len(expected):
            raise Disagreement("reports %s matches, returned %d" % (matches, len(expected)))
        return agreement + label, len(expected)
    if task == "C":
        agreement = compare_texts(output, lf(page.answers["C"]), tool.level, "the inner markup")
        if matches != 1:
            raise Disagreement("reports %s matches, expected 1" % matches)
        return agreement, 1
    with open(rewritten_path, "rb") as file:
        document = file.read()
    copy_only = tool.role == "floor"
    expected_document = lf(page.original if copy_only else page.rewritten)
    agreement = compare_texts(document, expected_document, tool.level, "the rewritten document")
    if is_tagwright(tool):
        # What a rewrite returns is the text it replaced.
        compare_texts(output, lf(page.answers["C"]), "exact", "the replaced text returned")
    if matches != (0 if copy_only else 1):
        raise Disagreement("reports %s matches" % matches)
    return agreement, matches


def check_the_judge(page):
    """Self-test of the judging itself: outputs with one fault each must be refused,
    at both levels, so that an "agrees" in the table can be trusted."""
    pieces = page.paragraph_pieces["A"]
    one_changed = list(pieces)
    one_changed[7] = one_changed[7][:-1] + b"!"
    faulty = {
        "a result with one character changed": (b"\0".join(one_changed), pieces),
        "a result missing": (b"\0".join(pieces[1:]), pieces),
        "two results swapped": (b"\0".join([pieces[1], pieces[0]] + pieces[2:]), pieces),
        "the results of task B for A": (page.answers["B"], pieces),
    }
    refused = 0
    for level in ("exact", "normalised"):
        for name, (output, expected) in faulty.items():
            try:
                compare_results(output, expected, level)
                print("the judge let through %s (%s)" % (name, level), file=sys.stderr)
            except Disagreement:
                refused += 1
        for name, document in (("the page unchanged", page.original),
                               ("the new content added, not put in place",
                                page.original[:page.facts["target_end"]]
                                + page.facts["new_content"].encode()
                                + page.original[page.facts["target_end"]:])):
            try:
                compare_texts(document, page.rewritten, level, "the rewritten document")
                print("the judge let through %s (%s)" % (name, level), file=sys.stderr)
            except Disagreement:
                refused += 1
    return refused == 2 * (len(faulty) + 2)


def digest(path):
    with open(path, "rb") as file:
        return hashlib.sha256(file.read()).hexdigest()


# --- one task on one page ---------------------------------------------------

class Row:
    def __init__(self, tool, task, page):
        self.tool = tool
        self.task = task
        self.page = page
        self.runs = []
        self.failure = None
        self.agreement = None
        self.results = None
        self.output_digest = None

    @property
    def median(self):
        return statistics.median(run.seconds for run in self.runs) if self.runs else None

    @property
    def measured_bytes(self):
        """What the tool had to read: a capped read stops behind the 32,000th <p>."""
        if is_tagwright(self.tool) and self.task in "AB" and self.page.capped:
            return self.page.facts["cap_end_offset"]
        if reads_lf_page(self.tool):
            return os.path.getsize(self.page.lf_path)
        return self.page.bytes


def output_folder(work):
    """Where the tools write their results: a memory-backed folder when the machine has
    one. Every tool writes megabytes of results in every round, and on a disk the kernel
    writes them back some seconds later, in the middle of whichever tool runs then."""
    shm = "/dev/shm"
    if os.path.isdir(shm) and os.access(shm, os.W_OK):
        return os.path.join(shm, "tagwright-compare-%d" % os.getpid())
    return os.path.join(work, "runs")


def run_task(task, page, tools, rounds, work, outputs, env):
    rows = [Row(tool, task, page) for tool in tools
            if task in tool.tasks and (tool.shapes is None or page.shape in tool.shapes)]
    name = "%dm-%s-%s" % (page.size_mib, page.shape, task)
    folder = os.path.join(work, "runs", name)
    for row in rows:
        for parent in (folder, os.path.join(outputs, name)):
            os.makedirs(os.path.join(parent, slug(row.tool.name)), exist_ok=True)
    new_content = page.facts["new_content"]

    def run_row(row, checked):
        tool_folder = os.path.join(folder, slug(row.tool.name))
        path = page.lf_path if reads_lf_page(row.tool) else page.path
        if task == "D":
            source_path = path
            path = os.path.join(tool_folder, "page.htm")
            with open(source_path, "rb") as source, open(path, "wb") as copy:
                shutil.copyfileobj(source, copy, MIB)
                copy.flush()
                os.fsync(copy.fileno())  # no write-back of the copy during the timed run
        run = run_pipeline(row.tool.command(task, path, new_content),
                           os.path.join(outputs, name, slug(row.tool.name), "out"), env)
        output = path if task == "D" else run.stdout_path
        if checked:
            row.agreement, row.results = judge(row.tool, task, page, run, path)
            row.output_digest = digest(output)
        elif run.status != 0:
            raise Disagreement("a later run ended with exit status %d" % run.status)
        elif digest(output) != row.output_digest:
            raise Disagreement("a later run gave other output")
        return run

    # Round 0 warms the page cache and judges every tool; the timed rounds follow,
    # each in a turned order so that no tool always runs first.
    for number in range(rounds + 1):
        turn = number % len(rows)
        for row in rows[turn:] + rows[:turn]:
            if row.failure:
                continue
            try:
                run = run_row(row, checked=number == 0)
                if number > 0:
                    row.runs.append(run)
            except Disagreement as failure:
                row.failure = str(failure)
            except OSError as failure:
                row.failure = "cannot run: %s" % failure
    return rows


def slug(name):
    return re.sub(r"[^a-z0-9]+", "-", name.lower()).strip("-")


def paired_ratio(row, tagwright_row):
    """tagwright's speed over this tool's: the median of the per-round time ratios."""
    if (row is tagwright_row or row.failure or tagwright_row.failure or not row.runs
            or len(row.runs) != len(tagwright_row.runs)
            or tagwright_row.measured_bytes != tagwright_row.page.bytes):
        return None
    return statistics.median(mine.seconds / theirs.seconds
                             for mine, theirs in zip(row.runs, tagwright_row.runs))


# --- reporting ---------------------------------------------------------------

def format_count(number):
    return format(number, ",")


def table(rows_by_task, self_test):
    header = ["page", "task", "tool", "results", "agrees"]
    if not self_test:
        header += ["median s", "MiB/s", "peak RSS MiB", "tagwright speed ÷ tool speed"]
    lines = ["| " + " | ".join(header) + " |", "|" + "---|" * len(header)]
    for rows in rows_by_task:
        tagwright = next(row for row in rows if row.tool.role == "tagwright")
        for row in rows:
            cells = [row.page.label, row.task, row.tool.name]
            if row.failure:
                cells += ["—", "**FAIL**: " + row.failure.replace("|", "\\|")]
                if not self_test:
                    cells += ["—", "**FAIL**", "—", "—"]
            else:
                cells += [format_count(row.results), row.agreement]
                if not self_test:
                    ratio = (paired_ratio(row, tagwright)
                             if row.tool.role != "tagwright-chunk" else None)
                    cells += ["%.3f" % row.median,
                              "%.0f" % (row.measured_bytes / MIB / row.median),
                              "%.0f" % (max(run.peak_kib for run in row.runs) / 1024),
                              "%.2f×" % ratio if ratio else "—"]
            lines.append("| " + " | ".join(cells) + " |")
    return "\n".join(lines)


def headline(rows_by_task, shapes):
    """Per task and page shape, the paired ratios at the largest page where tagwright has them."""
    lines = []
    for task, shape in ((task, shape) for task in TASKS for shape in shapes):
        best = None
        for rows in rows_by_task:
            if rows[0].task != task or rows[0].page.shape != shape:
                continue
            tagwright = next(row for row in rows if row.tool.role == "tagwright")
            ratios = [(row.tool.name, paired_ratio(row, tagwright)) for row in rows
                      if row.tool.role != "tagwright-chunk"]
            ratios = [(name, ratio) for name, ratio in ratios if ratio]
            if ratios and (best is None or rows[0].page.size_mib > best[0]):
                best = (rows[0].page.size_mib, ratios)
        if best:
            lines.append("- **%s** (%s), %d MiB %s: %s" % (
                task, re.sub(r"(<[^>]*>)", r"`\1`", TASKS[task]), best[0], shape,
                ", ".join("%s %.2f×" % (name, ratio) for name, ratio in best[1])))
    if not lines:
        return ""
    return ("Headline, tagwright speed ÷ tool speed (paired, median of rounds; above 1 tagwright"
            " is faster):\n\n" + "\n".join(lines) + "\n\n")


def notes(pages, self_test):
    lines = []
    for page in pages:
        lines.append("- %s page: %s bytes, %s `<p>`, the target at byte %s (%.0f%%)."
                     % (page.label, format_count(page.bytes),
                        format_count(page.facts["paragraphs"]),
                        format_count(page.facts["target_start"]),
                        100 * page.facts["target_start"] / page.bytes))
    capped = [page for page in pages if page.capped]
    if capped:
        for page in capped:
            lines.append(
                "- **CountInstances limit:** a read takes at most %s instances (`--count-instances 0`"
                " means 32,000, and 32,767 is the most a 16-bit count can say). The %s page has"
                " %s `<p>`, so tagwright's A and B rows there return the first %s only: they agree"
                " with the first %s results, their MiB/s count the %.1f MiB read up to the %s"
                " `</p>`, and they have no paired ratio."
                % (format_count(page.facts["cap"]), page.label,
                   format_count(page.facts["paragraphs"]), format_count(page.facts["cap"]),
                   format_count(page.facts["cap"]), page.facts["cap_end_offset"] / MIB,
                   ordinal(page.facts["cap"])))
    else:
        lines.append("- Every page has fewer `<p>` than tagwright's CountInstances limit (32,000).")
    lines.append("- Shapes: *mixed* is the page described in bench/generate_pages.py; *inline* has"
                 " long paragraphs full of inline markup over lines of about 108 bytes; *ptags* has"
                 " many tags that begin with \"p\" and are no `<p>` (`<pre>`, `<param>`, `<path>`,"
                 " `<picture>`, `<progress>`). lxml and xmllint run on the mixed shape only: what"
                 " they write back from their trees is judged after normalising, and the normaliser"
                 " is made for that page.")
    lines.append("- agrees: *exact* is byte for byte with the answers written by the generator;"
                 " *normalised* (whole-tree peers, which write markup back from their tree) after"
                 " decoding entities, dropping CR and white space between tags, reading `/>` as"
                 " `>` and other white space runs as one blank.")
    lines.append("- *tagwright, chunk 257* and *chunk 30000*: tagwright with its chunk length"
                 " (BufferLengthCharacters, 2048 by default) set by a settings file; its results"
                 " must not change with it.")
    if not self_test:
        lines.append("- Wall time of the whole process (start-up included), median of the timed"
                     " runs after one untimed, checked run; peak RSS is the largest of the runs"
                     " (for `xmllint + split`, a pipe, the sum of both processes).")
        lines.append("- tagwright speed ÷ tool speed: per round, the tool's time over tagwright's"
                     " (runs alternated, order turned each round), median over the rounds;"
                     " above 1 tagwright is faster.")
        lines.append("- B: every tool applies one plain-text rule (CR removed, blanks trimmed, LF and"
                     " TAB removed, tags dropped, trimmed pieces joined by one blank), so outputs"
                     " compare byte for byte. D rewrites a fresh copy each run (the copy untimed and"
                     " synced); tagwright syncs its new file and folder, perl -i, htmlparser2 and"
                     " lxml do not: compare it with both C floors.")
    return "\n".join(lines)


def ordinal(number):
    return format_count(number) + "th"


def machine_line(tagwright):
    cpu = "unknown CPU"
    try:
        with open("/proc/cpuinfo") as file:
            cpu = next(line.split(":", 1)[1].strip() for line in file if line.startswith("model name"))
    except (OSError, StopIteration):
        pass
    return "%s, %d cores, %s %s; tagwright build: %s; %s" % (
        cpu, os.cpu_count(), platform.system(), platform.release(), build_type(tagwright),
        datetime.date.today().isoformat())


def build_type(tagwright):
    """The CMake build type of the folder the program lies in, if it is a build folder."""
    cache = os.path.join(os.path.dirname(os.path.abspath(tagwright)), "CMakeCache.txt")
    if os.path.exists(cache):
        with open(cache) as file:
            found = re.search(r"^CMAKE_BUILD_TYPE:STRING=(.*)$", file.read(), re.M)
            if found:
                return found.group(1)
    return "unknown"


def chart(rows_by_task, pages, path):
    """A PNG of MiB/s per tool and task, one panel per page size, by gnuplot.
    A tool keeps its colour in every panel; a failed row has no bar."""
    if not shutil.which("gnuplot"):
        print("no gnuplot: chart skipped", file=sys.stderr)
        return False
    tools = []
    for rows in rows_by_task:
        for row in rows:
            if row.tool.name not in tools and row.tool.role != "tagwright-chunk":
                tools.append(row.tool.name)
    colours = ["#d62728", "#1f77b4", "#2ca02c", "#ff7f0e", "#9467bd", "#7f7f7f", "#bcbd22",
               "#17becf", "#8c564b"]
    data_path = path + ".dat"
    plots = []
    with open(data_path, "w") as data:
        for index, page in enumerate(pages):
            data.write("# %s\ntask %s\n" % (page.label, " ".join(
                '"%s"' % tool.replace('"', "'") for tool in tools)))
            drawn = set()
            for task in TASKS:
                values = []
                for column, tool in enumerate(tools):
                    row = next((row for rows in rows_by_task for row in rows
                                if row.page is page and row.task == task
                                and row.tool.name == tool), None)
                    if row and not row.failure and row.runs:
                        values.append("%.1f" % (row.measured_bytes / MIB / row.median))
                        drawn.add(column)
                    else:
                        values.append("NaN")
                data.write("%s %s\n" % (task, " ".join(values)))
            data.write("\n\n")
            failed = any(row.failure for rows in rows_by_task for row in rows
                         if row.page is page and is_tagwright(row.tool))
            title = "%s page%s%s" % (
                page.label, " (tagwright rows that failed have no bar)" if failed else "",
                " (tagwright A, B: the first 32,000 <p> only)" if page.capped else "")
            columns = ", ".join(
                "'%s' index %d using %d:xtic(1) title columnheader(%d) lc rgb '%s'"
                % (data_path, index, column + 2, column + 2, colours[column % len(colours)])
                for column in sorted(drawn))
            plots.append("set title '%s'\nplot %s" % (title, columns))
    script = [
        "set terminal pngcairo size %d,%d font 'sans,10'" % (
            max(800, 560 * min(3, len(pages))), 640 * ((len(pages) + 2) // 3)),
        "set output '%s'" % path,
        "set style data histograms",
        "set style histogram clustered gap 1",
        "set style fill solid 0.9 border -1",
        "set boxwidth 0.9",
        "set logscale y",
        "set yrange [1:5000]",
        "set ylabel 'MiB/s (log scale)'",
        "set grid ytics",
        "set key outside bottom center horizontal font ',9'",
        "set multiplot layout %d,%d title 'tagwright and its peers, MiB/s by task:"
        " A <p> markup, B <p> text, C one <div id=\"target\">, D its rewrite'" % (
            (len(pages) + 2) // 3, min(3, len(pages))),
        *plots,
        "unset multiplot",
    ]
    done = subprocess.run(["gnuplot"], input="\n".join(script), text=True,
                          stderr=subprocess.PIPE)
    if done.returncode != 0:
        print("gnuplot failed, chart skipped:\n" + done.stderr, file=sys.stderr)
        return False
    return True


def publish(report, png, root):
    """Puts the table into doc/performance.md between its markers, the chart beside it."""
    doc = os.path.join(root, "doc", "performance.md")
    with open(doc) as file:
        text = file.read()
    begin, end = "<!-- compare:begin -->", "<!-- compare:end -->"
    if begin not in text or end not in text:
        sys.exit("%s has no %s ... %s markers" % (doc, begin, end))
    head, rest = text.split(begin, 1)
    _, tail = rest.split(end, 1)
    with open(doc, "w") as file:
        file.write(head + begin + "\n" + report + "\n" + end + tail)
    if png:
        shutil.copyfile(png, os.path.join(root, "doc", "performance.png"))
    print("published to %s" % doc, file=sys.stderr)


def main():
    parser = argparse.ArgumentParser(prog="bench/compare", description=__doc__.split("\n")[0])
    parser.add_argument("--tagwright", required=True, help="the tagwright program")
    parser.add_argument("--bin", required=True, help="folder of the compiled C references")
    parser.add_argument("--work", required=True, help="folder for pages, outputs and the report")
    parser.add_argument("--sizes", default="1,16,128", help="page sizes in MiB (default 1,16,128)")
    parser.add_argument("--runs", type=int, help="timed rounds per task (default 9, 5, 3 by size)")
    parser.add_argument("--tasks", default="ABCD", help="tasks to run (default ABCD)")
    parser.add_argument("--shapes", default=",".join(generate_pages.SHAPES),
                        help="page shapes (default %s)" % ",".join(generate_pages.SHAPES))
    parser.add_argument("--self-test", action="store_true",
                        help="1 MiB, two rounds: check that every tool agrees, time nothing")
    parser.add_argument("--publish", action="store_true",
                        help="write the table into doc/performance.md and the chart beside it")
    args = parser.parse_args()

    sizes = [1] if args.self_test else [int(size) for size in args.sizes.split(",")]
    pages_dir = os.path.join(args.work, "pages")
    os.makedirs(pages_dir, exist_ok=True)
    shapes = args.shapes.split(",")
    pages = [Page(size, pages_dir, shape) for size in sizes for shape in shapes]
    binaries = {name: os.path.join(args.bin, name) for name in ("scan_markers", "copy_rename")}
    tools = make_tools(os.path.abspath(args.tagwright), binaries, os.path.abspath(args.work))
    env = dict(os.environ, NODE_PATH="/usr/share/nodejs", LC_ALL="C.UTF-8",
               PYTHONDONTWRITEBYTECODE="1")

    if not args.self_test and build_type(args.tagwright) not in ("Release", "RelWithDebInfo"):
        print("warning: %s is a %s build; its times say little" % (
            args.tagwright, build_type(args.tagwright)), file=sys.stderr)
    rows_by_task = []
    outputs = output_folder(args.work)
    atexit.register(shutil.rmtree, outputs, True)
    for page in pages:
        rounds = 2 if args.self_test else args.runs or DEFAULT_RUNS.get(page.size_mib, 3)
        for task in args.tasks:
            print("%s, task %s: %s ..." % (page.label, task, TASKS[task]),
                  file=sys.stderr, flush=True)
            rows_by_task.append(run_task(task, page, tools, rounds, args.work, outputs, env))

    report = "%s\n\n%s%s\n\n%s\n" % (
        machine_line(args.tagwright), "" if args.self_test else headline(rows_by_task, shapes),
        table(rows_by_task, args.self_test),
        notes(pages, args.self_test))
    print(report)
    failures = [row for rows in rows_by_task for row in rows if row.failure]
    if args.self_test and not check_the_judge(pages[0]):
        failures.append("the judge")
    if not args.self_test:
        with open(os.path.join(args.work, "compare.md"), "w") as file:
            file.write(report)
        png = os.path.join(args.work, "compare.png")
        made = chart(rows_by_task, pages, png)
        if args.publish:
            publish(report, png if made else None, os.path.dirname(BENCH))
    if failures:
        print("%d row(s) do not agree with the page" % len(failures), file=sys.stderr)
        return 1
    print("every row agrees with the page", file=sys.stderr)
    return 0


if __name__ == "__main__":
    sys.exit(main())
