/* The C interface of Tagwright: the four operations of tagwright::Tagwright
 * for C and for anything that calls C (ctypes, FFI).
 *
 *   tagwright_instance* tw = NULL;
 *   char* text = NULL;
 *   size_t length = 0;
 *   int found = 0;
 *   tagwright_new(NULL, &tw, NULL);
 *   tagwright_set_site_root(tw, "/srv/site");
 *   tagwright_read(tw, "/news.htm", "p", "class", "news", 2, 1, "innerText", NULL, NULL, NULL,
 *                  &text, &length, &found);
 *   // text: the plain text of the second <p class="news">, found: 1
 *   tagwright_free(text);
 *   tagwright_delete(tw);
 *
 * Texts going in are UTF-8 and end with NUL; NULL stands for the default of
 * the C++ parameter of the same name. Texts coming out are owned byte strings:
 * `*length` bytes, followed by a NUL that is not counted, which the caller
 * releases with tagwright_free. Counted this way they keep NUL characters (the
 * default separator) and bytes outside UTF-8 exactly.
 *
 * Return codes. Every function that returns an int returns TAGWRIGHT_OK when
 * the operation ran. That includes an operation that failed: its text is then
 * the failure text ("ERROR: Overflow.") and its count -1, as from the C++
 * class. The other codes mean the operation did not run and the outputs are
 * untouched:
 *   TAGWRIGHT_MISUSE       a null handle or output pointer, or a number
 *                          outside -32768..32767;
 *   TAGWRIGHT_NO_MEMORY    out of memory;
 *   TAGWRIGHT_SETTINGS     tagwright_new: the settings cannot be applied;
 *   TAGWRIGHT_UNSUPPORTED  the build does not offer what was asked.
 * No C++ exception leaves this interface.
 *
 * Threads: a handle is used by one thread at a time; different handles may
 * be used on different threads at once. */
#ifndef TAGWRIGHT_TAGWRIGHT_C_H_
#define TAGWRIGHT_TAGWRIGHT_C_H_

#include <stddef.h>

#include "tagwright/export.h"
#include "tagwright/version.h"

#ifdef __cplusplus
extern "C" {
#endif

#define TAGWRIGHT_OK 0
#define TAGWRIGHT_MISUSE 1
#define TAGWRIGHT_NO_MEMORY 2
#define TAGWRIGHT_SETTINGS 3
#define TAGWRIGHT_UNSUPPORTED 4

/* What ends a line of a document. CRLF: CR or CR LF, a lone LF stays in its
 * line, and every line is written back with CR LF. ANY: LF alone ends a line
 * too, and a rewrite keeps each line's own end. */
#define TAGWRIGHT_LINE_ENDS_CRLF 0
#define TAGWRIGHT_LINE_ENDS_ANY 1

typedef struct tagwright_instance tagwright_instance;

/* Maps a virtual path of the site to an absolute host path ("/srv/site/a.htm"),
 * returned in memory from malloc that the library frees, or refuses it with
 * NULL: the operation then fails as for any path its page context refuses. */
typedef char* (*tagwright_map_path)(void* user_data, const char* virtual_path);

/* The library's version, "major.minor.patch", as TAGWRIGHT_VERSION. */
TAGWRIGHT_EXPORT const char* tagwright_version(void);

/* Makes a handle without a page context: virtual paths are refused until one
 * of the two functions below gives it one. The settings come from
 * `settings_path`, or with NULL from the file named by TAGWRIGHT_SETTINGS or
 * else /etc/tagwright/settings.conf. On TAGWRIGHT_SETTINGS, `*error_text`
 * (unless `error_text` is NULL) gets the reason, to be freed with
 * tagwright_free. */
TAGWRIGHT_EXPORT int tagwright_new(const char* settings_path, tagwright_instance** handle,
                                   char** error_text);

/* Ends a handle; NULL is allowed. */
TAGWRIGHT_EXPORT void tagwright_delete(tagwright_instance* handle);

/* Releases a text that an operation returned; NULL is allowed. */
TAGWRIGHT_EXPORT void tagwright_free(char* text);

/* Gives the handle a page context that maps virtual paths against the folder
 * `root` (relative to the working folder, or absolute): "/a.htm" is taken
 * from the root, "a.htm" from the working folder, and a path that climbs
 * above the root is refused. Replaces an earlier context. */
TAGWRIGHT_EXPORT int tagwright_set_site_root(tagwright_instance* handle, const char* root);

/* Gives the handle a page context that maps virtual paths through `map`,
 * called with `user_data` on the thread of the operation. Replaces an
 * earlier context. */
TAGWRIGHT_EXPORT int tagwright_set_path_mapper(tagwright_instance* handle, tagwright_map_path map,
                                               void* user_data);

/* Chooses the line ends, TAGWRIGHT_LINE_ENDS_CRLF or TAGWRIGHT_LINE_ENDS_ANY,
 * in place of the LineEnds setting. TAGWRIGHT_UNSUPPORTED for a mode that
 * this build cannot give. */
TAGWRIGHT_EXPORT int tagwright_set_line_ends(tagwright_instance* handle, int mode);

/* The parts of a document that a query locates, each followed by the
 * separator, less the last character; `*matches_found` gets their count. */
TAGWRIGHT_EXPORT int tagwright_read(tagwright_instance* handle, const char* document_name,
                                    const char* element_name, const char* attribute_name,
                                    const char* attribute_value, int start_instance,
                                    int count_instances, const char* content_type,
                                    const char* span_function, const char* string_function,
                                    const char* separator, char** result, size_t* result_length,
                                    int* matches_found);

/* Replaces the located parts with the `new_content_length` bytes at
 * `new_content`, keeping the former document as "<name>.bak". `*result` gets
 * the count or -1, `*error_result` the former texts or the failure text. */
TAGWRIGHT_EXPORT int tagwright_write(tagwright_instance* handle, const char* new_content,
                                     size_t new_content_length, const char* document_name,
                                     const char* element_name, const char* attribute_name,
                                     const char* attribute_value, int start_instance,
                                     int count_instances, const char* content_type,
                                     const char* span_function, const char* separator, int* result,
                                     char** error_result, size_t* error_result_length);

/* The <meta name content> pairs of a document as name, equals, content. */
TAGWRIGHT_EXPORT int tagwright_meta(tagwright_instance* handle, const char* document_name,
                                    const char* meta_name, int start_instance, int count_instances,
                                    const char* equals, const char* separator, char** result,
                                    size_t* result_length, int* matches_found);

/* The names of a folder's plain files that match `pattern`. */
TAGWRIGHT_EXPORT int tagwright_list(tagwright_instance* handle, const char* folder,
                                    const char* pattern, const char* separator, char** result,
                                    size_t* result_length, int* matches_found);

#ifdef __cplusplus
}
#endif

#endif /* TAGWRIGHT_TAGWRIGHT_C_H_ */
