#ifndef TAGWRIGHT_SHELL_SETTINGS_READ_SETTING_H_
#define TAGWRIGHT_SHELL_SETTINGS_READ_SETTING_H_

#include "platform/platform.h"
#include "platform/text.h"

namespace tagwright {

// The text of the administrator's setting `settingName`, or the empty text.
// The store is the text that `platform.readSettingsFile()` gives, read as
// "Name=text" lines:
//   - the name is everything in front of the first "=", blanks included, and
//     is compared without regard to ASCII case; the text is everything
//     behind it up to the line end, not trimmed, less a CR right before the
//     line end;
//   - lines that begin with "#" and lines without "=" are passed over;
//   - a name given twice counts with its last line.
// Never fails: a missing or unreadable file, a missing name and a text of
// 1023 characters or more all read as the empty text, so a caller cannot
// tell them from a setting that holds the empty text.
//   readSetting(platform, U"BufferLengthCharacters")  // "4096" for the line
//                                                     // "bufferlengthcharacters=4096"
Text readSetting(Platform& platform, TextView settingName);

}  // namespace tagwright

#endif  // TAGWRIGHT_SHELL_SETTINGS_READ_SETTING_H_
