#include "locate/transforms/apply_string_function.h"

#include "locate/transforms/strip_markup.h"
#include "platform/numeric.h"

namespace tagwright {
namespace {

// Any fault of form in the four fields. It never leaves this file: the
// routine turns it into its own result text.
constexpr int kIllegalFormat = 60000;

[[noreturn]] void illegalFormat() { throw Failure::numbered(kIllegalFormat); }

// The trimmed text between two commas at `afterComma` and `beforeComma`.
TextView fieldBetween(TextView text, Int16 afterComma, Int16 beforeComma) {
  return trim(mid(text, afterComma + 1, beforeComma - afterComma - 1));
}

Text pieceOf(TextView StringFunction, TextView foundText) {
  // Markup goes first, so every position below counts in the plain text.
  const Text plainText = stripMarkup(foundText);
  Text workingCopy = plainText;
  Int16 occurrence = 0;
  Int16 length = 0;

  const TextView comma = U",";
  Int16 firstComma = searchFrom(StringFunction, comma, 1);
  if (firstComma == 0) illegalFormat();
  TextView occurrenceField = trim(left(StringFunction, firstComma - 1));
  if (occurrenceField.empty()) illegalFormat();

  // Quotes do not protect a comma: a comma always ends fields 1 to 3.
  Int16 secondComma = searchFrom(StringFunction, comma, firstComma + 1);
  if (secondComma == 0) illegalFormat();
  TextView searchField = fieldBetween(StringFunction, firstComma, secondComma);
  if (searchField.empty()) illegalFormat();

  Text searchText;
  if (searchField.front() == U'"') {
    // Quoted: compared as written. The last character goes whatever it is, so
    // a lone quote asks for a negative length, which is no fault of form but
    // an invalid argument.
    searchText = mid(searchField, 2, lengthOf(searchField) - 2);
  } else {
    searchText = lower(searchField);
    lowerInto(plainText, workingCopy);
  }

  Int16 thirdComma = searchFrom(StringFunction, comma, secondComma + 1);
  if (thirdComma == 0) illegalFormat();
  TextView offsetField = fieldBetween(StringFunction, secondComma, thirdComma);
  if (offsetField.empty()) illegalFormat();
  // Field 4 runs to the end, further commas included.
  TextView lengthField = trim(mid(StringFunction, thirdComma + 1));
  if (lengthField.empty()) illegalFormat();

  if (isNumeric(occurrenceField)) occurrence = toInt16(occurrenceField);
  if (occurrence < 1) illegalFormat();
  if (!isNumeric(offsetField)) illegalFormat();
  Int16 offset = toInt16(offsetField);
  if (isNumeric(lengthField)) length = toInt16(lengthField);
  if (length < 1) illegalFormat();

  // Each search starts one past the last hit, so occurrences may overlap.
  Int16 position = searchFrom(workingCopy, searchText, 1);
  while (position > 0 && occurrence > 1) {
    position = searchFrom(workingCopy, searchText, position + 1);
    occurrence -= 1;
  }
  if (position == 0 || offset + position < 1) return {};
  return Text(mid(plainText, position + offset, length));
}

}  // namespace

Text applyStringFunction(TextView StringFunction, TextView foundText) {
  try {
    return pieceOf(StringFunction, foundText);
  } catch (const Failure& failure) {
    if (failure.isNumbered(kIllegalFormat)) {
      return U"ERROR: Illegal String function format :" + Text(StringFunction);
    }
    return U"ERROR: Unexpected error while executing String function.";
  } catch (...) {
    return U"ERROR: Unexpected error while executing String function.";
  }
}

}  // namespace tagwright
