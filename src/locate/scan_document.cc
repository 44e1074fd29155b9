#include "locate/scan_document.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files/read_next_chunk.h"
#include "locate/chunk_filter.h"
#include "locate/element_types.h"
#include "locate/part_positions.h"
#include "locate/result_text.h"
#include "locate/transforms/apply_span_function.h"
#include "locate/transforms/apply_string_function.h"
#include "locate/transforms/strip_markup.h"
#include "rewrite/rewrite_transaction.h"

namespace tagwright {
namespace {

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
               TextView newContent, ScanState& state)
      : call_(call),
        query_(query),
        fileNumber_(fileNumber),
        writeMode_(writeMode),
        newContent_(newContent),
        state_(state),
        type_(elementTypeFor(query.ElementName)),
        outerMarkup_(isOuterMarkup(query)),
        innerText_(query.ContentType == U"innertext"),
        transformsText_(innerText_ || !query.SpanFunction.empty() || !query.StringFunction.empty()),
        filter_(query, type_) {
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
    state_.results->noteRead(chunk_.bytes.size());
  }

  // Makes chunkLower_ the lower-cased characters of the chunk read last,
  // which is all the search needs; the characters in their own case are
  // decoded a stretch at a time, where a rewrite or a function asks for them.
  void decodeChunk() { decodeLoweredInto(chunk_.bytes, chunkLower_, chunkOffsets_); }

  // Appends Mid(chunk text, start, count) to `out`.
  void appendChunkText(Text& out, Int16 start, std::optional<Int16> count = std::nullopt) {
    if (start.value() < 1 || (count && count->value() < 0)) throw Failure::invalidArgument();
    const std::size_t from = start.index();
    const std::size_t size = chunkLower_.size();
    if (from >= size) return;
    const std::size_t end =
        count ? from + std::min(static_cast<std::size_t>(count->value()), size - from) : size;
    if (chunk_.addedLineEnds.empty()) {
      appendDecoded(chunkBytes(from, end), out);
    } else {
      appendChunkCharacters(chunk_, chunkOffsets_[from], chunkOffsets_[end], out);
    }
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
    appendDocumentBytes(chunk_, chunkOffsets_[start], chunkOffsets_[end], documentBytes_);
    // The last character the document holds: an added line end holds none.
    const std::vector<std::size_t>& added = chunk_.addedLineEnds;
    auto isAdded = [&](std::size_t index) {
      return std::binary_search(added.begin(), added.end(), std::size_t{chunkOffsets_[index]});
    };
    std::size_t last = end - 1;
    while (last > start && isAdded(last)) --last;
    const std::size_t lastBytes = isAdded(last) ? 0 : chunkOffsets_[last + 1] - chunkOffsets_[last];
    state_.results->appendBytes(documentBytes_, lastBytes);
  }

  // The routines that look at line ends themselves see the plain CR and LF.
  Text& withPlainLineEnds(Text& text) {
    if (call_.lineEnds == LineEnds::kAny) plainLineEnds(text);
    return text;
  }

  // The bytes of the chunk's characters from index `start` up to `end`.
  std::string_view chunkBytes(std::size_t start, std::size_t end) const {
    const std::uint32_t from = chunkOffsets_[start];
    return std::string_view(chunk_.bytes).substr(from, chunkOffsets_[end] - from);
  }

  void takeInstance(Int16& contentStart, Int16& matchesFound);
  void reportPart(std::size_t resultsBefore, const TextPosition& start, Int16 closePos);

  const CallContext& call_;
  const Query& query_;
  const Int16 fileNumber_;
  const bool writeMode_;
  const TextView newContent_;
  ScanState& state_;
  const ElementType type_;
  const bool outerMarkup_;
  const bool innerText_;
  const bool transformsText_;
  ChunkFilter filter_;
  bool instancesNearby_ = false;
  std::optional<PartPositions> positions_;

  Int16 startRemaining_;
  Int16 countRemaining_;
  Int16 copyFrom_;
  Chunk chunk_;
  std::vector<std::uint32_t> chunkOffsets_;
  Text chunkLower_;
  Text foundText_;
  Text replacementText_;
  Text outputText_;
  std::string documentBytes_;
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
    outputText_.clear();
    copyFrom_ = 1;
    decodeChunk();
    Int16 contentStart = searchFrom(chunkLower_, type_.openMarker, 1);
    while (contentStart > 0 && countRemaining_ > 0) {
      foundText_.clear();
      bool isInstance = type_.matcher != nullptr &&
                        type_.matcher(query_, chunkLower_, contentStart, state_.closeMarker);
      if (isInstance) {
        instancesNearby_ = true;
        if (startRemaining_ > 0) startRemaining_ -= 1;
        if (startRemaining_ == 0) takeInstance(contentStart, matchesFound);
      }
      // Two past, not one: what lies right behind an instance is not seen.
      contentStart = searchFrom(chunkLower_, type_.openMarker, contentStart + 2);
    }
    if (writeMode_) {  // W7
      appendChunkText(outputText_, copyFrom_);
      state_.rewrite->write(outputText_);
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

void DocumentScan::takeInstance(Int16& contentStart, Int16& matchesFound) {
  if (writeMode_) {  // W3, before the close search may move on to another chunk.
    appendChunkText(outputText_, copyFrom_, contentStart - copyFrom_);
    copyFrom_ = contentStart;
  }
  const std::size_t resultsBefore = state_.results->text().size();
  TextPosition partStart;
  if (positions_) partStart = positions_->at(chunkOffsets_[contentStart.index()]);
  const Text& closeMarker = state_.closeMarker;
  Int16 closePos = searchFrom(chunkLower_, closeMarker, contentStart);
  while (closePos == 0 && !chunk_.empty()) {
    appendChunkText(foundText_, contentStart);
    contentStart = 1;
    nextChunk();
    decodeChunk();
    closePos = searchFrom(chunkLower_, closeMarker, 1);
  }
  if (closePos == 0) throw Failure::numbered(60003);
  if (outerMarkup_) closePos += lengthOf(closeMarker);

  // An instance whose close marker stands right at contentStart has no
  // content: no text, no separator, nothing replaced, and contentStart stays.
  if (closePos > contentStart || !foundText_.empty()) {
    if (writeMode_) copyFrom_ = closePos;            // W4
    if (writeMode_) replacementText_ = newContent_;  // W5
    if (!foundText_.empty() || transformsText_) {
      appendChunkText(foundText_, contentStart, closePos - contentStart);
      if (!query_.SpanFunction.empty()) {
        foundText_ =
            applySpanFunction(matchesFound, query_.SpanFunction, foundText_, query_.ContentType,
                              newContent_, replacementText_, writeMode_, call_.resultSeparator);
      } else if (!query_.StringFunction.empty()) {
        foundText_ = applyStringFunction(query_.StringFunction, withPlainLineEnds(foundText_));
      }
      if (innerText_) foundText_ = stripMarkup(withPlainLineEnds(foundText_));
      if (!trim(foundText_).empty()) state_.results->append(foundText_);
    } else {
      // Text taken as it stands within one chunk is copied as it was read.
      const std::size_t start = contentStart.index();
      const std::size_t end = std::min(closePos.index(), chunkLower_.size());
      const std::string_view found = chunkBytes(start, end);
      if (found.find_first_not_of(' ') != std::string_view::npos) appendFoundBytes(start, end);
    }
    if (positions_) reportPart(resultsBefore, partStart, closePos);
    // A span function puts a separator behind each span itself.
    if (query_.SpanFunction.empty()) state_.results->append(call_.resultSeparator);
    if (writeMode_) outputText_.append(replacementText_);  // W6
    contentStart = closePos;
  } else if (positions_) {
    reportPart(resultsBefore, partStart, closePos);
  }
  countRemaining_ -= 1;
  if (query_.SpanFunction.empty()) matchesFound += 1;
}

void DocumentScan::reportPart(std::size_t resultsBefore, const TextPosition& start,
                              Int16 closePos) {
  FoundPart part;
  part.text = state_.results->text().substr(resultsBefore);
  if (!query_.SpanFunction.empty()) {
    const std::string separator = toUtf8(call_.resultSeparator);
    if (part.text.ends_with(separator)) part.text.resize(part.text.size() - separator.size());
  }
  part.start = start;
  part.end = positions_->at(chunkOffsets_[std::min(closePos.index(), chunkLower_.size())]);
  (*call_.partObserver)(part);
}

}  // namespace

Text scanDocument(const CallContext& call, std::string& scanResult, const Query& query,
                  Int16 fileNumber, bool writeMode, TextView NewContent, Int16& MatchesFound) {
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
