// The Python module `tagwright`: a thin layer over the C interface of the
// shared library. Texts cross as UTF-8 bytes; a byte outside UTF-8 becomes a
// lone surrogate (Python's "surrogateescape") and is written back as the same
// byte, so a result given back to write() keeps the document's bytes.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "tagwright/tagwright_c.h"

namespace py = pybind11;

namespace {

// Set once at import; the module's own exception type.
PyObject* errorType = nullptr;

std::string bytesOf(const py::str& text) {
  py::object encoded = py::reinterpret_steal<py::object>(
      PyUnicode_AsEncodedString(text.ptr(), "utf-8", "surrogateescape"));
  if (!encoded) throw py::error_already_set();
  return std::string(PyBytes_AS_STRING(encoded.ptr()),
                     static_cast<std::size_t>(PyBytes_GET_SIZE(encoded.ptr())));
}

py::str strOf(const char* data, std::size_t length) {
  PyObject* decoded =
      PyUnicode_DecodeUTF8(data, static_cast<Py_ssize_t>(length), "surrogateescape");
  if (decoded == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(decoded);
}

// A parameter text. The C interface takes NUL-terminated texts, so a NUL
// inside one cannot pass; only the new content of write() is counted.
std::string parameter(const py::str& text, const char* name) {
  std::string bytes = bytesOf(text);
  if (bytes.find('\0') != std::string::npos) {
    throw py::value_error(std::string(name) + " must not hold the NUL character");
  }
  return bytes;
}

int int16Parameter(int value, const char* name) {
  if (value < -32768 || value > 32767) {
    throw py::value_error(std::string(name) + " must lie in -32768..32767");
  }
  return value;
}

// What read() and write() share: the document and the parts of it located,
// checked and turned into the bytes the C interface takes.
struct Query {
  Query(const py::str& documentName, const py::str& elementName, const py::str& attributeName,
        const py::str& attributeValue, int startInstance, int countInstances,
        const py::str& contentType, const py::str& spanFunction, const py::str& separator)
      : document(parameter(documentName, "document_name")),
        element(parameter(elementName, "element_name")),
        attribute(parameter(attributeName, "attribute_name")),
        value(parameter(attributeValue, "attribute_value")),
        contentKind(parameter(contentType, "content_type")),
        span(parameter(spanFunction, "span_function")),
        separatorText(parameter(separator, "separator")),
        start(int16Parameter(startInstance, "start_instance")),
        count(int16Parameter(countInstances, "count_instances")) {}

  std::string document, element, attribute, value, contentKind, span, separatorText;
  int start, count;
};

// Turns a return code that says the call did not run into a Python error.
void check(int code) {
  if (code == TAGWRIGHT_OK) return;
  if (code == TAGWRIGHT_NO_MEMORY) throw std::bad_alloc();
  throw std::logic_error("tagwright: the C interface refused a call (code " + std::to_string(code) +
                         ")");
}

// An owned text from the C interface, released whatever happens.
struct OwnedText {
  char* data = nullptr;
  std::size_t length = 0;
  ~OwnedText() { tagwright_free(data); }
};

class Tagwright {
 public:
  Tagwright(std::optional<std::string> root, std::optional<std::string> settings,
            std::optional<std::string> lineEnds, bool raiseErrors)
      : raiseErrors_(raiseErrors) {
    tagwright_instance* made = nullptr;
    char* reason = nullptr;
    int code = tagwright_new(settings ? settings->c_str() : nullptr, &made, &reason);
    if (code == TAGWRIGHT_SETTINGS) {
      std::string text = reason != nullptr ? reason : "the settings cannot be applied";
      tagwright_free(reason);
      PyErr_SetString(errorType, text.c_str());
      throw py::error_already_set();
    }
    check(code);
    handle_.reset(made);
    if (root) check(tagwright_set_site_root(handle_.get(), root->c_str()));
    if (lineEnds) setLineEnds(*lineEnds);
  }

  py::tuple read(const py::str& documentName, const py::str& elementName,
                 const py::str& attributeName, const py::str& attributeValue, int startInstance,
                 int countInstances, const py::str& contentType, const py::str& spanFunction,
                 const py::str& stringFunction, const py::str& separator) {
    Query query(documentName, elementName, attributeName, attributeValue, startInstance,
                countInstances, contentType, spanFunction, separator);
    std::string stringFunctionText = parameter(stringFunction, "string_function");
    OwnedText text;
    int found = 0;
    check(unlocked([&] {
      return tagwright_read(handle_.get(), query.document.c_str(), query.element.c_str(),
                            query.attribute.c_str(), query.value.c_str(), query.start, query.count,
                            query.contentKind.c_str(), query.span.c_str(),
                            stringFunctionText.c_str(), query.separatorText.c_str(), &text.data,
                            &text.length, &found);
    }));
    return textAnswer(text, found);
  }

  py::tuple write(const py::str& documentName, const py::str& newContent,
                  const py::str& elementName, const py::str& attributeName,
                  const py::str& attributeValue, int startInstance, int countInstances,
                  const py::str& contentType, const py::str& spanFunction,
                  const py::str& separator) {
    std::string content = bytesOf(newContent);
    Query query(documentName, elementName, attributeName, attributeValue, startInstance,
                countInstances, contentType, spanFunction, separator);
    OwnedText former;
    int found = 0;
    check(unlocked([&] {
      return tagwright_write(handle_.get(), content.data(), content.size(), query.document.c_str(),
                             query.element.c_str(), query.attribute.c_str(), query.value.c_str(),
                             query.start, query.count, query.contentKind.c_str(),
                             query.span.c_str(), query.separatorText.c_str(), &found, &former.data,
                             &former.length);
    }));
    py::str formerText = strOf(former.data, former.length);
    raiseIfFailed(formerText, found);
    return py::make_tuple(found, formerText);
  }

  py::tuple meta(const py::str& documentName, const py::str& metaName, int startInstance,
                 int countInstances, const py::str& equals, const py::str& separator) {
    std::string args[] = {parameter(documentName, "document_name"),
                          parameter(metaName, "meta_name"), parameter(equals, "equals"),
                          parameter(separator, "separator")};
    int start = int16Parameter(startInstance, "start_instance");
    int count = int16Parameter(countInstances, "count_instances");
    OwnedText text;
    int found = 0;
    check(unlocked([&] {
      return tagwright_meta(handle_.get(), args[0].c_str(), args[1].c_str(), start, count,
                            args[2].c_str(), args[3].c_str(), &text.data, &text.length, &found);
    }));
    return textAnswer(text, found);
  }

  py::tuple list(const py::str& folder, const py::str& pattern, const py::str& separator) {
    std::string args[] = {parameter(folder, "folder"), parameter(pattern, "pattern"),
                          parameter(separator, "separator")};
    OwnedText text;
    int found = 0;
    check(unlocked([&] {
      return tagwright_list(handle_.get(), args[0].c_str(), args[1].c_str(), args[2].c_str(),
                            &text.data, &text.length, &found);
    }));
    return textAnswer(text, found);
  }

 private:
  // Runs a call of the C interface with the interpreter lock released, one
  // call of this instance at a time.
  template <typename Call>
  int unlocked(Call call) {
    py::gil_scoped_release released;
    std::lock_guard<std::mutex> oneCallAtATime(busy_);
    return call();
  }

  struct Delete {
    void operator()(tagwright_instance* handle) const { tagwright_delete(handle); }
  };

  void setLineEnds(const std::string& mode) {
    int code = TAGWRIGHT_MISUSE;
    if (mode == "crlf") code = tagwright_set_line_ends(handle_.get(), TAGWRIGHT_LINE_ENDS_CRLF);
    if (mode == "any") code = tagwright_set_line_ends(handle_.get(), TAGWRIGHT_LINE_ENDS_ANY);
    if (code == TAGWRIGHT_MISUSE) throw py::value_error("line_ends must be 'crlf' or 'any'");
    if (code == TAGWRIGHT_UNSUPPORTED) {
      PyErr_SetString(errorType, ("line_ends '" + mode + "' is not offered by this build").c_str());
      throw py::error_already_set();
    }
    check(code);
  }

  py::tuple textAnswer(const OwnedText& text, int found) {
    py::str result = strOf(text.data, text.length);
    raiseIfFailed(result, found);
    return py::make_tuple(result, found);
  }

  // A failure comes back as "ERROR: <message>" and -1; the error carries the
  // message alone.
  void raiseIfFailed(const py::str& text, int found) {
    if (found != -1 || !raiseErrors_) return;
    std::string message = bytesOf(text);
    const std::string prefix = "ERROR: ";
    if (message.starts_with(prefix)) message.erase(0, prefix.size());
    PyErr_SetObject(errorType, strOf(message.data(), message.size()).ptr());
    throw py::error_already_set();
  }

  std::unique_ptr<tagwright_instance, Delete> handle_;
  bool raiseErrors_;
  // An instance serves one call at a time; with the interpreter lock
  // released, two Python threads could otherwise enter it together.
  std::mutex busy_;
};

}  // namespace

PYBIND11_MODULE(tagwright, module) {
  module.doc() =
      "Locate and rewrite parts of HTML, XML and server-page documents on disk.\n\n"
      "  tw = tagwright.Tagwright(root='/srv/site')\n"
      "  text, found = tw.read('/news.htm', element_name='p', content_type='innerText')";
  module.attr("__version__") = tagwright_version();
  static py::exception<std::runtime_error> error(module, "Error");
  errorType = error.ptr();

  using namespace pybind11::literals;
  py::class_<Tagwright>(module, "Tagwright",
                        "One instance of the component. root: the site root that virtual paths "
                        "are mapped against (None: virtual paths are refused). settings: a "
                        "settings file in place of the system's. line_ends: 'crlf' or 'any'. "
                        "raise_errors=False returns the component's own failure answer "
                        "('ERROR: ...', -1) instead of raising tagwright.Error.")
      .def(py::init<std::optional<std::string>, std::optional<std::string>,
                    std::optional<std::string>, bool>(),
           "root"_a = py::none(), py::kw_only(), "settings"_a = py::none(),
           "line_ends"_a = py::none(), "raise_errors"_a = true)
      .def("read", &Tagwright::read, "document_name"_a, py::kw_only(),
           "element_name"_a = "#element", "attribute_name"_a = "*", "attribute_value"_a = "*",
           "start_instance"_a = 1, "count_instances"_a = 0, "content_type"_a = "innerMarkup",
           "span_function"_a = "", "string_function"_a = "", "separator"_a = "",
           "The parts of a document that a query locates: (text, found).")
      .def("write", &Tagwright::write, "document_name"_a, "new_content"_a, py::kw_only(),
           "element_name"_a = "#element", "attribute_name"_a = "*", "attribute_value"_a = "*",
           "start_instance"_a = 1, "count_instances"_a = 1, "content_type"_a = "innermarkup",
           "span_function"_a = "", "separator"_a = "",
           "Replaces the located parts, keeping the former document as <name>.bak: "
           "(found, former texts).")
      .def("meta", &Tagwright::meta, "document_name"_a, py::kw_only(), "meta_name"_a = "*",
           "start_instance"_a = 1, "count_instances"_a = 0, "equals"_a = "$eq$", "separator"_a = "",
           "The <meta> name and content pairs: (text, found).")
      .def("list", &Tagwright::list, "folder"_a, py::kw_only(), "pattern"_a = "*.*",
           "separator"_a = "", "The names of a folder's files: (text, found).");
}
