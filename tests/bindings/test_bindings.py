"""The three ways in — the command line, the C interface (through ctypes on
the shared library) and the Python module — give the same answers on the
example site; and the library exports its public interface alone.

TAGWRIGHT_CLI and TAGWRIGHT_LIBRARY name the program and the library under
test, PYTHONPATH the module: the build tree, or an installed package."""
import ctypes
import os
import re
import shutil
import subprocess
from pathlib import Path

import pytest
import tagwright

SITE = Path(__file__).resolve().parents[2] / "examples" / "site"
CLI = os.environ["TAGWRIGHT_CLI"]
LIBRARY = os.environ["TAGWRIGHT_LIBRARY"]
#A page with bytes outside UTF - 8(a Latin - 1 é, a lone continuation byte).
RAW_PAGE = b'<p class="x">caf\xe9 \x80 ok</p>\r\n<p class="x">two</p>\r\n'


@pytest.fixture
def site(tmp_path):
    copy = tmp_path / "site"
    shutil.copytree(SITE, copy)
    (copy / "raw.htm").write_bytes(RAW_PAGE)
    return copy


def run_cli(site, command, target, options, input=None):
    arguments = [CLI, command, target, "--root", str(site)]
    for name, value in options.items():
        arguments.append(f"--{name.replace('_', '-')}={value}")
    done = subprocess.run(arguments, capture_output=True, cwd=site, input=input)
#A refused path may be explained on a line of its own before the count.
    match = re.fullmatch(rb"(?:tagwright: [^\n]*\n)?matches: (-?\d+)\n", done.stderr)
    assert match, done.stderr
    return done.stdout, int(match.group(1))


def as_bytes(text):
    return text.encode("utf-8", "surrogateescape")


class CInterface:
    """The C interface, called as a C program calls it."""

#The parameters of each call between the document(or folder) and the
#outputs, with the numbers' defaults; a text left out goes as NULL.
    PARAMETERS = {
        "read": "element_name attribute_name attribute_value start_instance=1 count_instances=0 "
                "content_type span_function string_function separator",
        "write": "element_name attribute_name attribute_value start_instance=1 count_instances=1 "
                 "content_type span_function separator",
        "meta": "meta_name start_instance=1 count_instances=0 equals separator",
        "list": "pattern separator",
    }

    def __init__(self, root):
        lib = ctypes.CDLL(LIBRARY)
        self.lib = lib
        self.handle = ctypes.c_void_p()
        assert lib.tagwright_new(None, ctypes.byref(self.handle), None) == 0
        assert lib.tagwright_set_site_root(self.handle, str(root).encode()) == 0

    def __del__(self):
        self.lib.tagwright_delete(self.handle)

    def _arguments(self, command, target, options):
        parameters = [p.partition("=") for p in self.PARAMETERS[command].split()]
        assert set(options) <= {name for name, _, _ in parameters}, options
        values = [options.get(name, int(default) if default else None)
                  for name, _, default in parameters]
        return [as_bytes(v) if isinstance(v, str) else v for v in [target, *values]]

    def _owned(self, text, length):
        answer = ctypes.string_at(text, length.value)
        self.lib.tagwright_free(text)
        return answer

    def call(self, command, target, code=0, **options):
        text, length, count = ctypes.c_void_p(), ctypes.c_size_t(), ctypes.c_int(7)
        assert getattr(self.lib, "tagwright_" + command)(
            self.handle, *self._arguments(command, target, options), ctypes.byref(text),
            ctypes.byref(length), ctypes.byref(count)) == code
        return (self._owned(text, length), count.value) if code == 0 else count.value

    def write(self, document, content, **options):
        former, length, count = ctypes.c_void_p(), ctypes.c_size_t(), ctypes.c_int()
        content = as_bytes(content)
        code = self.lib.tagwright_write(
            self.handle, content, ctypes.c_size_t(len(content)),
            *self._arguments("write", document, options), ctypes.byref(count),
            ctypes.byref(former), ctypes.byref(length))
        assert code == 0
        return count.value, self._owned(former, length)

#(command, target, options) : one row per branch of the transport, failures
#and the default NUL separator included.
CASES = [
    ("read", "/index.htm", dict(element_name="p", attribute_name="class",
                                attribute_value="news", content_type="innerText", separator="|")),
    ("read", "/index.htm", dict(element_name="p")),  # NUL between the results
    ("read", "/index.htm", dict(element_name="#aspcode", start_instance=2, count_instances=1)),
    ("read", "/index.htm", dict(element_name="div", string_function="1,warning,0,5")),
    ("read", "/raw.htm", dict(element_name="p", separator=";")),  # bytes outside UTF-8
    ("read", "/index.htm", dict(content_type="sideways")),  # a failure
    ("read", "/../index.htm", dict()),  # above the site root
    ("meta", "/index.htm", dict(meta_name="*", separator=";")),
    ("meta", "/index.htm", dict(start_instance=2, count_instances=1, equals="=")),
    ("meta", "/missing.htm", dict()),
    ("list", "/images", dict(pattern="*.png", separator=",")),
    ("list", "/", dict()),
]


@pytest.mark.parametrize("command,target,options", CASES)
def test_every_interface_answers_as_the_command_line(site, command, target, options):
    want = run_cli(site, command, target, options)
    c_answer = CInterface(site).call(command, target, **options)
    module = tagwright.Tagwright(root=str(site), raise_errors=False)
    text, found = getattr(module, command)(target, **options)
    assert c_answer == want
    assert (as_bytes(text), found) == want


def test_a_failure_raises_its_message_alone(site):
    tw = tagwright.Tagwright(root=str(site))
    want, _ = run_cli(site, "read", "/index.htm", {"content_type": "sideways"})
    with pytest.raises(tagwright.Error) as failure:
        tw.read("/index.htm", content_type="sideways")
    assert "ERROR: " + str(failure.value) == want.decode()
    with pytest.raises(tagwright.Error, match="^Virtual file paths"):
        tagwright.Tagwright().read("/index.htm")


def test_a_rewrite_is_the_same_through_every_interface(tmp_path):
    options = dict(element_name="p", attribute_name="class", attribute_value="x",
                   start_instance=2, count_instances=1)
    sites = []
    for name in ("cli", "c", "python"):
        sites.append(tmp_path / name)
        sites[-1].mkdir()
        (sites[-1] / "raw.htm").write_bytes(RAW_PAGE)
    new = "n\xe9w \udc80"  # a byte outside UTF-8 goes out as it came in
    text, count = run_cli(sites[0], "write", "/raw.htm", {"new_content_file": "-", **options},
                          input=as_bytes(new))
    want = (count, text)
    assert CInterface(sites[1]).write("/raw.htm", new, **options) == want
    found, former = tagwright.Tagwright(root=str(sites[2])).write("/raw.htm", new, **options)
    assert (found, as_bytes(former)) == want == (1, b"two")
    for site in sites:
        assert (site / "raw.htm").read_bytes() == RAW_PAGE.replace(b"two", as_bytes(new))
        assert (site / "raw.bak").read_bytes() == RAW_PAGE


def test_settings_and_checks_of_the_module(site, tmp_path):
    settings = tmp_path / "settings.conf"
    settings.write_text("AllowVirtualDocReadOnly=1\n")
    tw = tagwright.Tagwright(root=str(site), settings=str(settings))
    with pytest.raises(tagwright.Error):
        tw.read(str(site / "index.htm"))  # a physical path, refused by the setting
    assert tw.read("/news.htm", element_name="p", count_instances=1)[1] == 1
    settings.write_text("BufferLengthCharacters=99999999999\n")
    with pytest.raises(tagwright.Error, match="BufferLengthCharacters"):
        tagwright.Tagwright(settings=str(settings))
    with pytest.raises(ValueError):
        tw.read("/news.htm", start_instance=40000)
    with pytest.raises(ValueError):
        tw.read("/news.htm", separator="a\0b")
    with pytest.raises(ValueError):
        tagwright.Tagwright(line_ends="cr")
    assert tagwright.Tagwright(line_ends="crlf").list(str(site).replace("/", "\\"))[1] > 0
    lf_page = site / "lf.htm"
    for mode, line_end in (("crlf", b"\r\n"), ("any", b"")):
        lf_page.write_bytes(b"<p>a\nb</p>\n<p>c</p>")
        tw = tagwright.Tagwright(root=str(site), line_ends=mode)
        assert tw.write("/lf.htm", "x", element_name="p", count_instances=0) == (2, "a\nb\0c")
        assert lf_page.read_bytes() == b"<p>x</p>\n<p>x</p>" + line_end


def test_the_c_interface_refuses_misuse(site):
    tw = CInterface(site)
    assert tw.call("read", "/index.htm", code=1, start_instance=32768) == 7  # count untouched
    assert tw.lib.tagwright_set_line_ends(tw.handle, 0) == 0
    assert tw.lib.tagwright_set_line_ends(tw.handle, 9) == 1
    tw.handle, handle = None, tw.handle
    assert tw.call("read", "/index.htm", code=1) == 7
    tw.handle = handle


def test_one_version_and_the_public_interface_alone():
    lib = ctypes.CDLL(LIBRARY)
    lib.tagwright_version.restype = ctypes.c_char_p
    version = lib.tagwright_version().decode()
    assert tagwright.__version__ == version
    done = subprocess.run([CLI, "--version"], capture_output=True, text=True, check=True)
    assert done.stdout == f"tagwright {version}\n"
    assert Path(LIBRARY).resolve().name == f"libtagwright.so.{version}"
    soname = subprocess.run(["objdump", "-p", LIBRARY], capture_output=True, text=True,
                            check=True).stdout
    assert re.search(rf"SONAME\s+libtagwright\.so\.{version.split('.')[0]}\n", soname)
    names = subprocess.run(["nm", "-D", "--defined-only", "--demangle", LIBRARY],
                           capture_output=True, text=True, check=True).stdout.splitlines()
    public = re.compile(r"tagwright_\w+$|tagwright::(Tagwright|SiteContext)::|"
                        r"(typeinfo (name )?for|vtable for) tagwright::"
                        r"(PageServer|ScriptingContext|SiteContext)$")
#Less the version node("A TAGWRIGHT_0"), which names no code or data.
    symbols = [line.split(" ", 2)[2].split("@")[0] for line in names
               if line.count(" ") >= 2 and " A " not in line]
    assert len(symbols) > 10
    assert [s for s in symbols if not public.match(s)] == []
