# Writes OUTPUT: a C++ table kEmbeddedFiles of {name, bytes, size} for each
# file of FILES (names parted by "|"), so that a program carries them in its
# binary.
#   cmake -DOUTPUT=out.inc -DFILES="a.html|b.js" -P embed_files.cmake
string(REPLACE "|" ";" FILES "${FILES}")
set(body "")
set(table "")
set(index 0)
foreach(file IN LISTS FILES)
  file(READ "${file}" hex HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${hex}")
  get_filename_component(name "${file}" NAME)
  string(APPEND body "static const char kEmbedded${index}[] = {${bytes}};\n")
  string(APPEND table "    {\"${name}\", {kEmbedded${index}, sizeof kEmbedded${index}}},\n")
  math(EXPR index "${index} + 1")
endforeach()
file(WRITE "${OUTPUT}.new"
  "// Generated from ${CMAKE_CURRENT_LIST_FILE}; do not edit.\n${body}"
  "static constexpr std::pair<std::string_view, std::string_view> kEmbeddedFiles[] = {\n"
  "${table}};\n")
file(RENAME "${OUTPUT}.new" "${OUTPUT}")
