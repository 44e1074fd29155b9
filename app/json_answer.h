#ifndef TAGWRIGHT_APP_JSON_ANSWER_H_
#define TAGWRIGHT_APP_JSON_ANSWER_H_

#include <string>

namespace tagwright {

// The JSON objects that the hosts answer with, on one line without its end.
// JSON cannot carry raw bytes: each byte that the component keeps as a
// character of its own becomes one U+FFFD, so a string holds as many
// characters as the component counted in it.
//   textAnswerJson("a", 1) == R"({"result":"a","matchesFound":1})"
//   writeAnswerJson(1, "old") == R"({"result":1,"errorResult":"old"})"
std::string textAnswerJson(const std::string& result, int matchesFound);
std::string writeAnswerJson(int result, const std::string& errorResult);

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_JSON_ANSWER_H_
