#include "services/scan_meta_tags.h"

#include "files/read_next_chunk.h"

namespace tagwright {
namespace {

constexpr TextView kTagStart = U"<meta name=\"";
constexpr TextView kContentAfterName = U"\" content=\"";
constexpr TextView kNameAttribute = U"name=\"";
constexpr TextView kContentAttribute = U"content=\"";
constexpr TextView kQuote = U"\"";

// Counts down StartInstance, takes up to CountInstances tags, and collects
// their pairs with a separator behind each.
class MetaScan {
 public:
  MetaScan(const CallContext& call, TextView metaNameValue, TextView equals, Int16 fileNumber)
      : call_(call), metaNameValue_(metaNameValue), equals_(equals), fileNumber_(fileNumber) {}

  void run(Int16 startInstance, Int16 countInstances, Int16& matchCount, Text& collected) {
    Int16 skipRemaining = startInstance;
    Int16 countRemaining = countInstances;
    matchCount = 0;
    nextChunk();
    while (!chunkText_.empty() && countRemaining > 0) {
      lowerInto(chunkText_, chunkLower_);
      Int16 position = searchFrom(chunkLower_, kTagStart, 1);
      while (position > 0 && countRemaining > 0) {
        if (metaContentMatches(metaNameValue_, chunkLower_, position, closingMarker_)) {
          if (skipRemaining > 0) skipRemaining -= 1;
          if (skipRemaining == 0) {
            position = takeTag(position, collected);
            countRemaining -= 1;
            matchCount += 1;
          }
        }
        // Two past, not one: a tag right behind a taken tag's ">" is not seen.
        position = searchFrom(chunkLower_, kTagStart, position + 2);
      }
      nextChunk();
    }
    call_.platform.closeFile(fileNumber_);
  }

 private:
  void nextChunk() {
    readNextChunk(call_.platform, fileNumber_, call_.bufferLength, call_.lineEnds, chunk_);
    if (chunk_.addedLineEnds.empty()) {
      decodeInto(chunk_.bytes, chunkText_);
    } else {
      // Pairs are cut from these characters, so that they hold the
      // document's own line ends; the lower-cased copy reads CR LF.
      chunkText_.clear();
      appendChunkCharacters(chunk_, 0, chunk_.bytes.size(), chunkText_);
    }
  }

  // Appends the pair of the tag at `position` and the separator; returns the
  // position of the tag's closing marker.
  Int16 takeTag(Int16 position, Text& collected) {
    // metaContentMatches has seen the marker in this chunk.
    Int16 closePos = searchFrom(chunkLower_, closingMarker_, position + 1);
    tagText_.assign(mid(chunkText_, position, closePos - position));
    extractMetaPair(tagText_, equals_);
    collected.append(tagText_);
    collected.append(call_.resultSeparator);
    return closePos;
  }

  const CallContext& call_;
  const TextView metaNameValue_;
  const TextView equals_;
  const Int16 fileNumber_;
  Chunk chunk_;
  Text chunkText_;
  Text chunkLower_;
  Text closingMarker_;
  Text tagText_;
};

}  // namespace

Text scanMetaTags(const CallContext& call, TextView MetaNameValue, Int16 StartInstance,
                  Int16 CountInstances, Int16 fileNumber, Int16& matchCount,
                  TextView ResultEqualsChars, Text& resultText) {
  resultText.clear();
  Text collected;
  try {
    MetaScan(call, MetaNameValue, ResultEqualsChars, fileNumber)
        .run(StartInstance, CountInstances, matchCount, collected);
  } catch (const Failure& failure) {
    call.platform.closeAllFiles();
    return fromUtf8(failure.description()) + U".";
  } catch (...) {
    call.platform.closeAllFiles();
    throw;
  }
  // The last cut: one character, whatever the separator's length.
  if (!collected.empty()) {
    collected.pop_back();
    resultText = std::move(collected);
  }
  return {};
}

bool metaContentMatches(TextView MetaNameValue, TextView chunkLower, Int16 position,
                        Text& closingMarker) {
  closingMarker = U">";
  // The pattern is not anchored to the "<meta name=" in front of it, so the
  // test is one on the end of the name: "author" also finds "page-author".
  TextView wantedName = MetaNameValue == U"*" ? TextView() : MetaNameValue;
  Text pattern;
  pattern.reserve(wantedName.size() + kContentAfterName.size());
  pattern.append(wantedName).append(kContentAfterName);
  Int16 patternPos = searchFrom(chunkLower, pattern, position);
  if (patternPos == 0) return false;
  Int16 closePos = searchFrom(chunkLower, closingMarker, position);
  return closePos > 0 && patternPos < closePos;
}

void extractMetaPair(Text& tagText, TextView ResultEqualsChars) {
  const Text tagLower = lower(tagText);
  Int16 nameStart = searchFrom(tagLower, kNameAttribute, 1) + lengthOf(kNameAttribute);
  Int16 nameEnd = searchFrom(tagLower, kQuote, nameStart);
  Text pair(mid(tagText, nameStart, nameEnd - nameStart));
  pair.append(ResultEqualsChars);
  Int16 contentStart =
      searchFrom(tagLower, kContentAttribute, nameEnd) + lengthOf(kContentAttribute);
  Int16 contentEnd = searchFrom(tagLower, kQuote, contentStart);
  if (contentEnd > 0) {
    pair.append(mid(tagText, contentStart, contentEnd - contentStart));
  } else {
    // A ">" inside the content value ended the tag before its closing quote.
    pair.clear();
  }
  tagText = std::move(pair);
}

}  // namespace tagwright
