#ifndef TAGWRIGHT_SERVICES_SCAN_META_TAGS_H_
#define TAGWRIGHT_SERVICES_SCAN_META_TAGS_H_

#include "locate/query.h"
#include "platform/int16.h"
#include "platform/text.h"

namespace tagwright {

// The meta tag reader knows one written form of a tag, in the lower-cased
// chunk:  <meta name="NAME" content="CONTENT"  with exactly one blank between
// the attributes, both values in double quotes. There is no attribute
// parsing; a tag of any other form is passed over.

// Pulls the open document `fileNumber` through chunk by chunk and collects
// the pair of every meta tag that metaContentMatches accepts, from the
// StartInstance-th such tag on, at most CountInstances of them (both counters
// run across chunks), each pair followed by the call's separator, less the
// last character, into `resultText`; `matchCount` gets the number taken.
// Closes the document in every case.
//
// Returns the empty text on success (also when no tag matched), else the
// platform's description of the failure with "." behind it, after closing
// all files; `resultText` is then empty.
//   <meta name="Robots" content="none"> under "*", separator ";"  ->  "Robots$eq$none"
Text scanMetaTags(const CallContext& call, TextView MetaNameValue, Int16 StartInstance,
                  Int16 CountInstances, Int16 fileNumber, Int16& matchCount,
                  TextView ResultEqualsChars, Text& resultText);

// Decides whether the "<meta name=\"" at `position` in `chunkLower` is a tag
// whose name ends in MetaNameValue ("*" or empty: any name) and that has the
// content attribute right behind the name. True only when
// `NAME" content="` is found before the first ">" behind `position`, so the
// tag's ">" lies in this chunk. `closingMarker` becomes ">", the text that
// ends the tag.
//   <meta name="page-author" content="Staff">  under "author"  ->  true
//   <meta name="author">  ...  <meta name="x" content="y">     ->  false
bool metaContentMatches(TextView MetaNameValue, TextView chunkLower, Int16 position,
                        Text& closingMarker);

// Turns the text of an accepted tag, from its "<" up to but not including its
// ">", into its pair: name, ResultEqualsChars, content, as written in the
// document. Leaves the empty text when the tag ends inside the content value
// (a ">" within it).
//   <meta NAME="Robots" CONTENT="none"  with "$eq$"  ->  Robots$eq$none
void extractMetaPair(Text& tagText, TextView ResultEqualsChars);

}  // namespace tagwright

#endif  // TAGWRIGHT_SERVICES_SCAN_META_TAGS_H_
