#include "platform/text.h"

#include <algorithm>
#include <cwchar>

namespace tagwright {
namespace {

// How common a character is in markup and prose, lower being rarer: the
// search scans for the rarest character of what it looks for ("v" of
// "<div", "%" of "<%"), so that it stops at few false candidates.
int commonness(char32_t c) {
  // English letters by frequency, most common first.
  static constexpr std::u32string_view kLetters = U"etaoinsrhldcumfpgwybvkxjqz";
  if (c == U' ' || c == U'<' || c == U'>' || c == U'"' || c == U'=' || c == U'/' || c == U'\r' ||
      c == U'\n') {
    return 100;
  }
  if (c >= U'a' && c <= U'z') return 60 - static_cast<int>(kLetters.find(c));
  if (c >= U'0' && c <= U'9') return 30;
  return 10;
}

std::size_t anchorOf(TextView what) {
  std::size_t best = 0;
  for (std::size_t k = 1; k < what.size(); ++k) {
    if (commonness(what[k]) < commonness(what[best])) best = k;
  }
  return best;
}

// The first occurrence of `c` in [begin, end), by the C library's vectorised
// wide-character search (wchar_t is the same 32-bit unit as char32_t here).
const char32_t* findChar(const char32_t* begin, const char32_t* end, char32_t c) {
  static_assert(sizeof(wchar_t) == sizeof(char32_t));
  if (begin >= end) return nullptr;
  const wchar_t* hit = std::wmemchr(reinterpret_cast<const wchar_t*>(begin),
                                    static_cast<wchar_t>(c), static_cast<std::size_t>(end - begin));
  return reinterpret_cast<const char32_t*>(hit);
}

constexpr std::size_t kShortText = 64;

std::size_t findFrom(TextView text, TextView what, std::size_t start) {
  const std::size_t m = what.size();
  if (m == 0) return start;
  if (text.size() - start < m) return TextView::npos;
  if (text.size() - start < kShortText) {
    // A tag or a head: choosing an anchor would cost more than it saves.
    auto hit = std::search(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(),
                           what.begin(), what.end());
    return hit == text.end() ? TextView::npos : static_cast<std::size_t>(hit - text.begin());
  }
  const std::size_t k = anchorOf(what);
  const char32_t* first = text.data() + start;
  // The last place where `what` can begin.
  const char32_t* last = text.data() + (text.size() - m);
  const char32_t* scan = first + k;
  while (const char32_t* hit = findChar(scan, last + k + 1, what[k])) {
    const char32_t* candidate = hit - k;
    if (std::equal(what.begin(), what.end(), candidate)) {
      return static_cast<std::size_t>(candidate - text.data());
    }
    scan = hit + 1;
  }
  return TextView::npos;
}

}  // namespace

Int16 searchFrom(TextView text, TextView what, Int16 from) {
  if (from.value() < 1) throw Failure::invalidArgument();
  std::size_t start = from.index();
  if (start >= text.size()) return 0;
  std::size_t at = findFrom(text, what, start);
  if (at == TextView::npos) return 0;
  return Int16::fromSize(at + 1);
}

TextView left(TextView text, Int16 count) {
  if (count.value() < 0) throw Failure::invalidArgument();
  return text.substr(0, static_cast<std::size_t>(count.value()));
}

TextView right(TextView text, Int16 count) {
  if (count.value() < 0) throw Failure::invalidArgument();
  std::size_t n = std::min(text.size(), static_cast<std::size_t>(count.value()));
  return text.substr(text.size() - n);
}

TextView mid(TextView text, Int16 start) {
  if (start.value() < 1) throw Failure::invalidArgument();
  if (start.index() >= text.size()) return {};
  return text.substr(start.index());
}

TextView mid(TextView text, Int16 start, Int16 count) {
  if (start.value() < 1 || count.value() < 0) throw Failure::invalidArgument();
  if (start.index() >= text.size()) return {};
  return text.substr(start.index(), static_cast<std::size_t>(count.value()));
}

TextView trim(TextView text) {
  std::size_t first = text.find_first_not_of(kBlank);
  if (first == TextView::npos) return {};
  std::size_t last = text.find_last_not_of(kBlank);
  return text.substr(first, last - first + 1);
}

}  // namespace tagwright
