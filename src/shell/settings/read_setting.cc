#include "shell/settings/read_setting.h"

#include <optional>
#include <string>

namespace tagwright {
namespace {

// The store kept its texts in a buffer of 1023 characters, terminator
// included: a text of 1023 characters or more did not fit and read as empty.
constexpr std::size_t kLongestText = 1022;

char32_t foldAscii(char32_t c) { return (c >= U'A' && c <= U'Z') ? c + 32 : c; }

bool sameName(TextView a, TextView b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (foldAscii(a[i]) != foldAscii(b[i])) return false;
  }
  return true;
}

}  // namespace

Text readSetting(Platform& platform, TextView settingName) {
  std::optional<std::string> file;
  try {
    file = platform.readSettingsFile();
  } catch (...) {
    // An unreadable store is an absent one.
    return {};
  }
  if (!file) return {};
  const Text store = fromUtf8(*file);
  const TextView all(store);

  std::optional<TextView> found;
  std::size_t lineStart = 0;
  while (lineStart < all.size()) {
    std::size_t lineEnd = all.find(U'\n', lineStart);
    if (lineEnd == TextView::npos) lineEnd = all.size();
    TextView line = all.substr(lineStart, lineEnd - lineStart);
    lineStart = lineEnd + 1;
    if (!line.empty() && line.back() == U'\r') line.remove_suffix(1);
    if (line.empty() || line.front() == U'#') continue;
    std::size_t equals = line.find(U'=');
    if (equals == TextView::npos) continue;
    // The last line that names the setting wins, so the search goes on.
    if (sameName(line.substr(0, equals), settingName)) found = line.substr(equals + 1);
  }
  if (!found || found->size() > kLongestText) return {};
  return Text(*found);
}

}  // namespace tagwright
