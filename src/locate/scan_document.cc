#include "locate/scan_document.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files/read_next_chunk.h"
#include "locate/chunk_filter.h"
#include "locate/chunk_text.h"
#include "locate/element_types.h"
#include "locate/matchers/named_element_bytes.h"
#include "locate/part_positions.h"
#include "locate/result_text.h"
#include "locate/transforms/apply_span_function.h"
#include "locate/transforms/apply_string_function.h"
#include "locate/transforms/strip_markup.h"
#include "platform/utf8.h"
#include "rewrite/rewrite_transaction.h"

namespace tagwright {
namespace {

// The bytes the last character of `utf8` takes, as the text model decodes
// it: a well-formed sequence, else one raw byte.
std::size_t lastCharacterBytes(std::string_view utf8) {
  if (utf8.empty()) return 0;
  std::size_t start = utf8.size() - 1;
  while (start > 0 && utf8.size() - start < 4 &&
         (static_cast<unsigned char>(utf8[start]) & 0xC0) == 0x80) {
    --start;
  }
  char32_t ignored;
  if (decodeSequence(utf8, start, ignored) == utf8.size() - start) return utf8.size() - start;
  return 1;
}

// The values of one scan that its failure texts are made of.
struct ScanState {
  std::optional<ResultText> results;
  Text closeMarker;
  std::optional<RewriteTransaction> rewrite;
};

Text failureText(const Failure& failure, const ScanState& state) {
  if (failure.kind() != Failure::Kind::kNumbered) {
    return fromUtf8(failure.description()) + U".";
  }
  switch (failure.number()) {
    case 60002:
      return U"Cannot open output file to write new content.";
    case 60003:
      // Raised only once the results are set up.
      return U"Found '" + fromUtf8(state.results->text()) + U"'" +
             U"--> Missing element end tag '" + state.closeMarker + U"'.";
    case 60010:
      return U"Cannot delete old backup file' " + state.rewrite->backupName() + U"'.";
    case 60011:
      return U"Cannot rename existing file '" + state.rewrite->documentName() + U"'.";
    case 60012:
      return U"Cannot rename output file '" + state.rewrite->tempName() + U"'.";
    default:
      return fromUtf8(failure.description()) + U".";
  }
}

class DocumentScan {
 public:
  DocumentScan(const CallContext& call, const Query& query, Int16 fileNumber, bool writeMode,
               std::string_view newContent, ScanState& state)
      : call_(call),
        query_(query),
        fileNumber_(fileNumber),
        writeMode_(writeMode),
        newContent_(newContent),
        // Only a span function works on the new content's characters; else it
        // goes out as the bytes it came in.
        newContentText_(query.SpanFunction.empty() ? Text() : fromUtf8(newContent)),
        state_(state),
        type_(elementTypeFor(query.ElementName)),
        outerMarkup_(isOuterMarkup(query)),
        innerText_(query.ContentType == U"innertext"),
        transformsText_(innerText_ || !query.SpanFunction.empty() || !query.StringFunction.empty()),
        filter_(query, type_),
        bytePaths_(call.bytePaths && !writeMode && query.SpanFunction.empty() &&
                   query.StringFunction.empty() && NamedElementOnBytes::serves(query)),
        namedOnBytes_(query) {
    if (call.partObserver != nullptr) positions_.emplace(chunk_, call.lineEnds);
  }

  void run(Int16& matchesFound);

 private:
  // Reads the next chunk as bytes. A rewrite must not take a failed read for
  // the end of the document, so in write mode it is the failure.
  void nextChunk() {
    std::optional<Failure> readFailure;
    if (positions_) positions_->leaveChunk();
    readNextChunk(call_.platform, fileNumber_, call_.bufferLength, call_.lineEnds, chunk_,
                  writeMode_ ? &readFailure : nullptr);
    if (readFailure) throw *readFailure;
    countedTo_ = counted_ = 0;
    state_.results->noteRead(chunk_.bytes.size());
  }

  // Decodes the chunk read last to the lower-cased characters the search
  // needs, as far as a position can reach unless the read is held to whole
  // chunks; the characters in their own case are decoded a stretch at a
  // time, where a function or inner text asks for them.
  void decodeChunk() { lowered_.decode(chunk_.bytes, chunk_.characters, !call_.bytePaths); }

  // The characters of Mid(chunk text, start, count), as indices.
  std::pair<std::size_t, std::size_t> chunkStretch(Int16 start, std::optional<Int16> count) const {
    if (start.value() < 1 || (count && count->value() < 0)) throw Failure::invalidArgument();
    const std::size_t size = lowered_.characters();
    const std::size_t from = std::min(start.index(), size);
    const std::size_t end =
        count ? from + std::min(static_cast<std::size_t>(count->value()), size - from) : size;
    return {from, end};
  }

  // Appends the characters of Mid(chunk text, start, count) to `out`.
  void appendChunkText(Text& out, Int16 start, std::optional<Int16> count = std::nullopt) {
    const auto [from, end] = chunkStretch(start, count);
    if (from == end) return;
    if (chunk_.addedLineEnds.empty()) {
      appendDecoded(chunkBytes(from, end), out);
    } else {
      appendChunkCharacters(chunk_, lowered_.offset(from), lowered_.offset(end), out);
    }
  }

  // Appends Mid(chunk text, start, count) to `out` as the document holds it,
  // which is what its characters encode to.
  void appendChunkBytes(std::string& out, Int16 start, std::optional<Int16> count = std::nullopt) {
    const auto [from, end] = chunkStretch(start, count);
    appendDocumentBytes(chunk_, lowered_.offset(from), lowered_.offset(end), out);
  }

  // Writes the chunk read last from the character at `start` on, as the
  // document holds it.
  void writeChunkFrom(Int16 start) {
    const std::size_t from = lowered_.offset(chunkStretch(start, std::nullopt).first);
    if (chunk_.addedLineEnds.empty()) {
      state_.rewrite->write(std::string_view(chunk_.bytes).substr(from));
      return;
    }
    documentBytes_.clear();
    appendDocumentBytes(chunk_, from, chunk_.bytes.size(), documentBytes_);
    state_.rewrite->write(documentBytes_);
  }

  // Writes the chunk read last, whole, as the document holds it.
  void writeChunk() {
    if (chunk_.addedLineEnds.empty()) {
      state_.rewrite->write(chunk_.bytes);
      return;
    }
    documentBytes_.clear();
    appendDocumentBytes(chunk_, 0, chunk_.bytes.size(), documentBytes_);
    state_.rewrite->write(documentBytes_);
  }

  // Appends the chunk's characters from index `start` up to `end` to the
  // results, as the document holds them.
  void appendFoundBytes(std::size_t start, std::size_t end) {
    if (chunk_.addedLineEnds.empty()) {
      state_.results->appendBytes(chunkBytes(start, end), chunkBytes(end - 1, end).size());
      return;
    }
    documentBytes_.clear();
    appendDocumentBytes(chunk_, lowered_.offset(start), lowered_.offset(end), documentBytes_);
    // The last character the document holds: an added line end holds none.
    const std::vector<std::size_t>& added = chunk_.addedLineEnds;
    auto isAdded = [&](std::size_t index) {
      return std::binary_search(added.begin(), added.end(), lowered_.offset(index));
    };
    std::size_t last = end - 1;
    while (last > start && isAdded(last)) --last;
    const std::size_t lastBytes =
        isAdded(last) ? 0 : lowered_.offset(last + 1) - lowered_.offset(last);
    state_.results->appendBytes(documentBytes_, lastBytes);
  }

  // The routines that look at line ends themselves see the plain CR and LF.
  Text& withPlainLineEnds(Text& text) {
    if (call_.lineEnds == LineEnds::kAny) plainLineEnds(text);
    return text;
  }

  // The bytes of the chunk's characters from index `start` up to `end`.
  std::string_view chunkBytes(std::size_t start, std::size_t end) const {
    const std::size_t from = lowered_.offset(start);
    return std::string_view(chunk_.bytes).substr(from, lowered_.offset(end) - from);
  }

  void takeInstance(Int16& contentStart, Int16& matchesFound);
  Int16 closeAcrossChunks(Int16& contentStart, Int16 closePos);
  void finishInstance(Int16& contentStart, Int16 closePos, Int16& matchesFound);
  void scanCharacters(Int16 from, Int16& matchesFound);
  void scanBytes(Int16& matchesFound);
  void checkPosition(std::size_t at, std::size_t plus);
  void takeInstanceOnBytes(std::size_t& contentStart, std::size_t tagEnd, bool selfClosing,
                           Int16& matchesFound);
  void keepFound(std::size_t from, std::size_t to);
  void beginPart(std::size_t startOffset);
  void reportPart(std::size_t endOffset);

  const CallContext& call_;
  const Query& query_;
  const Int16 fileNumber_;
  const bool writeMode_;
  const std::string_view newContent_;
  const Text newContentText_;
  ScanState& state_;
  const ElementType type_;
  const bool outerMarkup_;
  const bool innerText_;
  const bool transformsText_;
  ChunkFilter filter_;
  // Whether the request may search and cut on the bytes of its chunks.
  const bool bytePaths_;
  NamedElementOnBytes namedOnBytes_;
  bool instancesNearby_ = false;
  // Where the chunk's bytes lie in the document, when the host asks where
  // each part stands; the part being taken and where its text begins.
  std::optional<PartPositions> positions_;
  FoundPart part_;
  std::size_t partResultsFrom_ = 0;

  Int16 startRemaining_;
  Int16 countRemaining_;
  Int16 copyFrom_;
  Chunk chunk_;
  LoweredChunk lowered_;
  Text foundText_;
  // Whether the instance being taken began in an earlier chunk.
  bool spanned_ = false;
  Text replacementText_;
  // What a rewrite writes of the chunk ahead of the next instance, as the
  // document holds it.
  std::string outputBytes_;
  std::string documentBytes_;
  // The byte path's instance text: the chunk's bytes for "innertext", the
  // document's otherwise; scratch texts for stripMarkupBytes. On the
  // character path, the document's bytes of an instance that began in an
  // earlier chunk, when no function or inner text needs its characters.
  std::string foundBytes_;
  std::string cleanedBytes_;
  std::string strippedBytes_;
  // The characters of the chunk's bytes up to countedTo_, for the
  // positions of a chunk too long for all of them to fit 16 bits.
  std::size_t countedTo_ = 0;
  std::size_t counted_ = 0;
};

void DocumentScan::run(Int16& matchesFound) {
  matchesFound = 0;
  state_.results.emplace(call_.platform, call_.platform.fileSize(fileNumber_));
  startRemaining_ = query_.StartInstance;
  countRemaining_ = query_.CountInstances;
  if (writeMode_) {  // W1
    state_.rewrite.emplace(call_.platform, query_.DocumentName);
    state_.rewrite->begin();
  }
  nextChunk();
  while (!chunk_.empty() && countRemaining_ >= 1) {
    // Most chunks of a search for a rare part hold no instance at all; they
    // are told on the bytes, and a rewrite copies them out as they came.
    // Behind a chunk that held one, the next likely does too, and the test
    // would only come before its decoding.
    if (!instancesNearby_ && !filter_.mayHoldInstance(chunk_)) {
      if (writeMode_) writeChunk();  // W2
      nextChunk();
      continue;
    }
    instancesNearby_ = false;
    outputBytes_.clear();
    copyFrom_ = 1;
    if (bytePaths_) {
      scanBytes(matchesFound);
      nextChunk();
      continue;
    }
    decodeChunk();
    scanCharacters(1, matchesFound);
    if (writeMode_) {  // W7
      state_.rewrite->write(outputBytes_);
      writeChunkFrom(copyFrom_);
    }
    nextChunk();
  }
  if (writeMode_) {  // W8: what is left goes out unsearched.
    while (!chunk_.empty()) {
      writeChunk();
      nextChunk();
    }
  }
  call_.platform.closeFile(fileNumber_);
  if (writeMode_) state_.rewrite->commit();  // W9
}

// The candidate loop on the decoded chunk, from the search at `from`.
void DocumentScan::scanCharacters(Int16 from, Int16& matchesFound) {
  Int16 contentStart = lowered_.view().search(type_.openMarker, from);
  while (contentStart > 0 && countRemaining_ > 0) {
    foundText_.clear();
    bool isInstance = type_.matcher != nullptr &&
                      type_.matcher(query_, lowered_.view(), contentStart, state_.closeMarker);
    if (isInstance) {
      instancesNearby_ = true;
      if (startRemaining_ > 0) startRemaining_ -= 1;
      if (startRemaining_ == 0) takeInstance(contentStart, matchesFound);
    }
    // Two past, not one: what lies right behind an instance is not seen.
    contentStart = lowered_.view().search(type_.openMarker, contentStart + 2);
  }
}

// The candidate loop on the bytes of the chunk read last. Where the
// character path sums or finds a position, the same position is checked
// against the 16-bit limit; a chunk short enough needs no check at all.
void DocumentScan::scanBytes(Int16& matchesFound) {
  constexpr std::size_t npos = std::string_view::npos;
  const TextView marker = type_.openMarker;
  const std::size_t nameLength = query_.ElementName.size();
  auto nextCandidate = [&](std::size_t from) {
    const std::size_t at = findLowered(chunk_.bytes, marker, from);
    if (at != npos) checkPosition(at, 0);
    return at;
  };
  std::size_t contentStart = nextCandidate(0);
  while (contentStart != npos && countRemaining_ > 0) {
    checkPosition(contentStart, nameLength + 1);  // the character behind the name
    std::size_t tagEnd = npos;
    bool selfClosing = false;
    const bool isInstance =
        namedOnBytes_.match(chunk_.bytes, contentStart, contentStart, tagEnd, selfClosing);
    if (tagEnd != npos) {
      checkPosition(tagEnd, 0);
      if (!selfClosing && !outerMarkup_) checkPosition(tagEnd, 1);
    }
    if (isInstance) {
      instancesNearby_ = true;
      if (startRemaining_ > 0) startRemaining_ -= 1;
      if (startRemaining_ == 0)
        takeInstanceOnBytes(contentStart, tagEnd, selfClosing, matchesFound);
    }
    checkPosition(contentStart, 2);
    contentStart = nextCandidate(charactersFrom(chunk_.bytes, contentStart, 2));
  }
}

// Throws the overflow where the character path would: when the position of
// the character at byte `at`, plus `plus`, leaves 16 bits.
void DocumentScan::checkPosition(std::size_t at, std::size_t plus) {
  constexpr std::size_t kLast = 32767;
  // A position is at most one more than the characters, and than the bytes, in front.
  if (chunk_.characters + 1 + plus <= kLast || at + 1 + plus <= kLast) return;
  if (at < countedTo_) countedTo_ = counted_ = 0;
  counted_ += decodedLength(std::string_view(chunk_.bytes).substr(countedTo_, at - countedTo_));
  countedTo_ = at;
  if (counted_ + 1 + plus > kLast) throw Failure::overflow();
}

// takeInstance and finishInstance on bytes: the stretch is cut from the
// chunk as read, and counted in characters nowhere.
void DocumentScan::takeInstanceOnBytes(std::size_t& contentStart, std::size_t tagEnd,
                                       bool selfClosing, Int16& matchesFound) {
  constexpr std::size_t npos = std::string_view::npos;
  if (positions_) beginPart(contentStart);
  std::size_t closePos = contentStart;  // a self-closing tag is found where it stands
  bool spanned = false;
  if (!selfClosing) {
    Text& closeMarker = state_.closeMarker;
    closeMarker.assign(U"</").append(query_.ElementName).append(U">");
    closePos = findLowered(chunk_.bytes, closeMarker, contentStart);
    if (closePos == npos) foundBytes_.clear();
    while (closePos == npos && !chunk_.empty()) {
      keepFound(contentStart, chunk_.bytes.size());
      spanned = true;
      contentStart = 0;
      nextChunk();
      closePos = findLowered(chunk_.bytes, closeMarker, 0);
    }
    if (closePos == npos) throw Failure::numbered(60003);
    checkPosition(closePos, 0);
    if (outerMarkup_) {
      checkPosition(closePos, closeMarker.size());
      closePos = charactersFrom(chunk_.bytes, closePos, closeMarker.size());
    }
  } else if (outerMarkup_) {
    checkPosition(tagEnd, 1);
    closePos = tagEnd + 1;
  }
  if (closePos > contentStart || spanned) {
    std::string_view found =
        std::string_view(chunk_.bytes).substr(contentStart, closePos - contentStart);
    if (innerText_) {
      if (spanned) found = foundBytes_.append(found);
      // The chunk's added line ends are plain CR and LF bytes, as stripMarkup must see them.
      if (stripMarkupBytes(found, cleanedBytes_, strippedBytes_)) {
        if (strippedBytes_.find_first_not_of(' ') != std::string::npos) {
          state_.results->appendBytes(strippedBytes_, lastCharacterBytes(strippedBytes_));
        }
      } else {
        foundText_.clear();
        appendDecoded(found, foundText_);
        foundText_ = stripMarkup(foundText_);
        if (!trim(foundText_).empty()) state_.results->append(foundText_);
      }
    } else {
      // Over chunks the text holds a line end, and is never blank.
      if (!spanned && chunk_.addedLineEnds.empty()) {
        if (found.find_first_not_of(' ') != std::string_view::npos) {
          state_.results->appendBytes(found, lastCharacterBytes(found));
        }
      } else if (spanned || found.find_first_not_of(' ') != std::string_view::npos) {
        if (!spanned) foundBytes_.clear();
        keepFound(contentStart, closePos);
        state_.results->appendBytes(foundBytes_, lastCharacterBytes(foundBytes_));
      }
    }
    if (positions_) reportPart(closePos);
    state_.results->append(call_.resultSeparator);
    contentStart = closePos;
  } else if (positions_) {
    reportPart(closePos);
  }
  countRemaining_ -= 1;
  matchesFound += 1;
}

// Keeps bytes[from, to) of the chunk for the instance: as read for
// "innertext", as the document holds them otherwise.
void DocumentScan::keepFound(std::size_t from, std::size_t to) {
  if (innerText_) {
    foundBytes_.append(std::string_view(chunk_.bytes).substr(from, to - from));
  } else {
    appendDocumentBytes(chunk_, from, to, foundBytes_);
  }
}

void DocumentScan::takeInstance(Int16& contentStart, Int16& matchesFound) {
  if (writeMode_) {  // W3, before the close search may move on to another chunk.
    appendChunkBytes(outputBytes_, copyFrom_, contentStart - copyFrom_);
    copyFrom_ = contentStart;
  }
  if (positions_) beginPart(lowered_.offset(contentStart.index()));
  spanned_ = false;
  foundBytes_.clear();
  Int16 closePos = lowered_.view().search(state_.closeMarker, contentStart);
  finishInstance(contentStart, closeAcrossChunks(contentStart, closePos), matchesFound);
}

// Pulls chunks until the close marker turns up, from the search that gave
// `closePos` in the chunk read last; returns where it stands.
Int16 DocumentScan::closeAcrossChunks(Int16& contentStart, Int16 closePos) {
  const Text& closeMarker = state_.closeMarker;
  while (closePos == 0 && !chunk_.empty()) {
    // The instance is kept in characters only where they are needed: an
    // instance as long as the chunk costs its bytes.
    if (transformsText_ || !call_.bytePaths) {
      appendChunkText(foundText_, contentStart);
    } else {
      spanned_ = spanned_ || contentStart.index() < lowered_.characters();
      appendChunkBytes(foundBytes_, contentStart);
    }
    contentStart = 1;
    nextChunk();
    decodeChunk();
    closePos = lowered_.view().search(closeMarker, 1);
  }
  if (closePos == 0) throw Failure::numbered(60003);
  return closePos;
}

void DocumentScan::finishInstance(Int16& contentStart, Int16 closePos, Int16& matchesFound) {
  if (outerMarkup_) closePos += lengthOf(state_.closeMarker);

  // An instance whose close marker stands right at contentStart has no
  // content: no text, no separator, nothing replaced, and contentStart stays.
  if (closePos > contentStart || !foundText_.empty() || spanned_) {
    if (writeMode_) copyFrom_ = closePos;                                                // W4
    if (writeMode_ && !query_.SpanFunction.empty()) replacementText_ = newContentText_;  // W5
    if (!foundText_.empty() || transformsText_) {
      appendChunkText(foundText_, contentStart, closePos - contentStart);
      if (!query_.SpanFunction.empty()) {
        foundText_ =
            applySpanFunction(matchesFound, query_.SpanFunction, foundText_, query_.ContentType,
                              newContentText_, replacementText_, writeMode_, call_.resultSeparator);
      } else if (!query_.StringFunction.empty()) {
        foundText_ = applyStringFunction(query_.StringFunction, withPlainLineEnds(foundText_));
      }
      if (innerText_) foundText_ = stripMarkup(withPlainLineEnds(foundText_));
      if (!trim(foundText_).empty()) state_.results->append(foundText_);
    } else if (spanned_) {
      // Over chunks the text holds a line end, and is never blank.
      appendChunkBytes(foundBytes_, contentStart, closePos - contentStart);
      state_.results->appendBytes(foundBytes_, lastCharacterBytes(foundBytes_));
    } else {
      // Text taken as it stands within one chunk is copied as it was read.
      const std::size_t start = contentStart.index();
      const std::size_t end = std::min(closePos.index(), lowered_.characters());
      const std::string_view found = chunkBytes(start, end);
      if (found.find_first_not_of(' ') != std::string_view::npos) appendFoundBytes(start, end);
    }
    if (positions_) reportPart(lowered_.offset(std::min(closePos.index(), lowered_.characters())));
    // A span function puts a separator behind each span itself.
    if (query_.SpanFunction.empty()) state_.results->append(call_.resultSeparator);
    if (writeMode_ && !query_.SpanFunction.empty()) {  // W6
      appendEncoded(replacementText_, outputBytes_);
    }
    if (writeMode_ && query_.SpanFunction.empty()) {
      // A new content as long as a document is written, not copied into the chunk's text.
      state_.rewrite->write(outputBytes_);
      outputBytes_.clear();
      state_.rewrite->write(newContent_);
    }
    contentStart = closePos;
  } else if (positions_) {
    reportPart(lowered_.offset(contentStart.index()));
  }
  countRemaining_ -= 1;
  if (query_.SpanFunction.empty()) matchesFound += 1;
}

// The part taken next begins at byte `startOffset` of the chunk read last.
void DocumentScan::beginPart(std::size_t startOffset) {
  part_.start = positions_->at(startOffset);
  partResultsFrom_ = state_.results->text().size();
}

// The part ends at byte `endOffset` of the chunk read last; its text is what
// the results gained since it began, less the separator a span function put.
void DocumentScan::reportPart(std::size_t endOffset) {
  part_.end = positions_->at(endOffset);
  part_.text = state_.results->text().substr(partResultsFrom_);
  if (!query_.SpanFunction.empty()) {
    const std::string separator = toUtf8(call_.resultSeparator);
    if (part_.text.ends_with(separator)) part_.text.resize(part_.text.size() - separator.size());
  }
  (*call_.partObserver)(part_);
}

}  // namespace

Text scanDocument(const CallContext& call, std::string& scanResult, const Query& query,
                  Int16 fileNumber, bool writeMode, std::string_view NewContent,
                  Int16& MatchesFound) {
  scanResult.clear();
  ScanState state;
  try {
    DocumentScan(call, query, fileNumber, writeMode, NewContent, state).run(MatchesFound);
  } catch (const Failure& failure) {
    call.platform.closeAllFiles();
    Text text = failureText(failure, state);
    if (state.rewrite) state.rewrite->abandon();  // W10
    return text;
  } catch (...) {
    call.platform.closeAllFiles();
    if (state.rewrite) state.rewrite->abandon();
    throw;
  }
  scanResult = state.results->takeWithoutLastCharacter();
  return {};
}

}  // namespace tagwright
