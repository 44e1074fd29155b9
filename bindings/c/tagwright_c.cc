// The C interface: a thin layer that maps C texts onto the C++ class and its
// answers back into owned byte strings. Nothing of the component's rules is
// here; only transport, defaults for NULL, and the guard that keeps C++
// exceptions on this side.
#include "tagwright/tagwright_c.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <memory>
#include <new>
#include <string>

#include "platform/failure.h"
#include "platform/host_path.h"
#include "platform/platform.h"
#include "tagwright/site_context.h"
#include "tagwright/tagwright.h"

struct tagwright_instance {
  std::unique_ptr<tagwright::Platform> ownPlatform;  // set when the handle has its own settings
  std::unique_ptr<tagwright::Tagwright> instance;
};

namespace {

using tagwright::PageServer;
using tagwright::ScriptingContext;

class MapperContext : public ScriptingContext, private PageServer {
 public:
  MapperContext(tagwright_map_path map, void* userData) : map_(map), userData_(userData) {}
  PageServer& Server() override { return *this; }

 private:
  std::string MapPath(const std::string& path) override {
    char* mapped = map_(userData_, path.c_str());
    // A refusal reads as the site root's own refusal of a path above it.
    if (mapped == nullptr) throw tagwright::Failure(tagwright::Failure::Kind::kOutsideSiteRoot);
    std::string hostPath(mapped);
    std::free(mapped);
    return tagwright::toUtf8(tagwright::physicalPathOf(hostPath));
  }

  tagwright_map_path map_;
  void* userData_;
};

std::string textOr(const char* text, const char* fallback) {
  return text != nullptr ? text : fallback;
}

bool isInt16(int value) {
  return value >= std::numeric_limits<std::int16_t>::min() &&
         value <= std::numeric_limits<std::int16_t>::max();
}

bool instancesFit(int startInstance, int countInstances) {
  return isInt16(startInstance) && isInt16(countInstances);
}

// Copies `bytes` into memory that tagwright_free releases, with a NUL behind.
char* ownedCopy(const std::string& bytes) {
  char* copy = static_cast<char*>(std::malloc(bytes.size() + 1));
  if (copy == nullptr) throw std::bad_alloc();
  std::memcpy(copy, bytes.data(), bytes.size());
  copy[bytes.size()] = '\0';
  return copy;
}

// Runs `body`, turning what it throws into a return code.
template <typename Body>
int guarded(Body&& body) {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return TAGWRIGHT_NO_MEMORY;
  } catch (...) {
    return TAGWRIGHT_MISUSE;
  }
}

// Every call that answers a text and a count: refuses a null handle, a null
// output, or arguments that the call's own checks refused (`argumentsFit`
// false), then runs `make(instance, &count)` under the guard. The text and its count are handed
// out only once both can be made, so that a failing allocation leaves the
// caller's outputs untouched.
template <typename Make>
int textAnswer(tagwright_instance* handle, bool argumentsFit, char** out, std::size_t* outLength,
               int* outCount, Make&& make) {
  if (handle == nullptr || !argumentsFit || out == nullptr || outLength == nullptr ||
      outCount == nullptr) {
    return TAGWRIGHT_MISUSE;
  }
  return guarded([&] {
    int count = 0;
    std::string text = make(*handle->instance, &count);
    *out = ownedCopy(text);
    *outLength = text.size();
    *outCount = count;
    return TAGWRIGHT_OK;
  });
}

}  // namespace

extern "C" {

const char* tagwright_version(void) { return TAGWRIGHT_VERSION; }

int tagwright_new(const char* settings_path, tagwright_instance** handle, char** error_text) {
  if (handle == nullptr) return TAGWRIGHT_MISUSE;
  return guarded([&] {
    auto made = std::make_unique<tagwright_instance>();
    try {
      if (settings_path != nullptr) {
        made->ownPlatform = tagwright::systemPlatformWithSettings(settings_path);
        made->instance = std::make_unique<tagwright::Tagwright>(*made->ownPlatform);
      } else {
        made->instance = std::make_unique<tagwright::Tagwright>();
      }
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& failure) {
      if (error_text != nullptr) *error_text = ownedCopy(failure.what());
      return TAGWRIGHT_SETTINGS;
    }
    *handle = made.release();
    return TAGWRIGHT_OK;
  });
}

void tagwright_delete(tagwright_instance* handle) { delete handle; }

void tagwright_free(char* text) { std::free(text); }

int tagwright_set_site_root(tagwright_instance* handle, const char* root) {
  if (handle == nullptr || root == nullptr) return TAGWRIGHT_MISUSE;
  return guarded([&] {
    std::error_code ignored;
    std::filesystem::path workingFolder = std::filesystem::current_path(ignored);
    handle->instance->OnStartPage(std::make_shared<tagwright::SiteContext>(
        root, workingFolder.string(), handle->instance->followsLinksOut()));
    return TAGWRIGHT_OK;
  });
}

int tagwright_set_path_mapper(tagwright_instance* handle, tagwright_map_path map, void* user_data) {
  if (handle == nullptr || map == nullptr) return TAGWRIGHT_MISUSE;
  return guarded([&] {
    handle->instance->OnStartPage(std::make_shared<MapperContext>(map, user_data));
    return TAGWRIGHT_OK;
  });
}

int tagwright_set_line_ends(tagwright_instance* handle, int mode) {
  if (handle == nullptr) return TAGWRIGHT_MISUSE;
  if (mode == TAGWRIGHT_LINE_ENDS_CRLF) {
    handle->instance->setLineEnds(tagwright::LineEnds::kCrLf);
  } else if (mode == TAGWRIGHT_LINE_ENDS_ANY) {
    handle->instance->setLineEnds(tagwright::LineEnds::kAny);
  } else {
    return TAGWRIGHT_MISUSE;
  }
  return TAGWRIGHT_OK;
}

int tagwright_read(tagwright_instance* handle, const char* document_name, const char* element_name,
                   const char* attribute_name, const char* attribute_value, int start_instance,
                   int count_instances, const char* content_type, const char* span_function,
                   const char* string_function, const char* separator, char** result,
                   size_t* result_length, int* matches_found) {
  bool argumentsFit = document_name != nullptr && instancesFit(start_instance, count_instances);
  return textAnswer(
      handle, argumentsFit, result, result_length, matches_found,
      [&](tagwright::Tagwright& instance, int* found) {
        return instance.readXPointer(
            document_name, textOr(element_name, "#element"), textOr(attribute_name, "*"),
            textOr(attribute_value, "*"), static_cast<std::int16_t>(start_instance),
            static_cast<std::int16_t>(count_instances), textOr(content_type, "innerMarkup"),
            textOr(span_function, ""), textOr(string_function, ""), textOr(separator, ""), found);
      });
}

int tagwright_write(tagwright_instance* handle, const char* new_content, size_t new_content_length,
                    const char* document_name, const char* element_name, const char* attribute_name,
                    const char* attribute_value, int start_instance, int count_instances,
                    const char* content_type, const char* span_function, const char* separator,
                    int* result, char** error_result, size_t* error_result_length) {
  bool argumentsFit = (new_content != nullptr || new_content_length == 0) &&
                      document_name != nullptr && instancesFit(start_instance, count_instances);
  // The answer's text is the former content and its count the parts replaced.
  return textAnswer(
      handle, argumentsFit, error_result, error_result_length, result,
      [&](tagwright::Tagwright& instance, int* count) {
        std::string former;
        std::string content =
            new_content != nullptr ? std::string(new_content, new_content_length) : std::string();
        // Rewrites of one document by other processes take turns with this one.
        std::unique_ptr<tagwright::FileLock> lock = instance.lockForRewrite(document_name);
        *count = instance.writeXPointer(
            content, document_name, textOr(element_name, "#element"), textOr(attribute_name, "*"),
            textOr(attribute_value, "*"), static_cast<std::int16_t>(start_instance),
            static_cast<std::int16_t>(count_instances), textOr(content_type, "innermarkup"),
            textOr(span_function, ""), textOr(separator, ""), &former);
        return former;
      });
}

int tagwright_meta(tagwright_instance* handle, const char* document_name, const char* meta_name,
                   int start_instance, int count_instances, const char* equals,
                   const char* separator, char** result, size_t* result_length,
                   int* matches_found) {
  bool argumentsFit = document_name != nullptr && instancesFit(start_instance, count_instances);
  return textAnswer(handle, argumentsFit, result, result_length, matches_found,
                    [&](tagwright::Tagwright& instance, int* found) {
                      return instance.readMetaContent(document_name, textOr(meta_name, "*"),
                                                      static_cast<std::int16_t>(start_instance),
                                                      static_cast<std::int16_t>(count_instances),
                                                      textOr(equals, "$eq$"), textOr(separator, ""),
                                                      found);
                    });
}

int tagwright_list(tagwright_instance* handle, const char* folder, const char* pattern,
                   const char* separator, char** result, size_t* result_length,
                   int* matches_found) {
  return textAnswer(handle, folder != nullptr, result, result_length, matches_found,
                    [&](tagwright::Tagwright& instance, int* found) {
                      return instance.fileListing(folder, textOr(pattern, "*.*"),
                                                  textOr(separator, ""), found);
                    });
}

}  // extern "C"
