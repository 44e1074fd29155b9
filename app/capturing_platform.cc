#include "capturing_platform.h"

#include "platform/text.h"

namespace tagwright {
namespace {

// The component's name of a host path, byte for byte: the platform writes
// each raw-byte character back as its byte.
Text nameOfHostPath(const std::string& path) {
  Text name;
  for (char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    name.push_back(byte < 0x80 ? byte : kRawByteBase + byte);
  }
  return name;
}

}  // namespace

void CapturingPlatform::openForOutput(Int16 fileNumber, TextView) {
  failed_ = !captured_.clear();
  // The number stays taken in the wrapped platform, which hands out the
  // numbers, by the capture's own file opened for input: it exists already,
  // and output files are only ever made new. Nothing reads from it there.
  base_.openForInput(fileNumber, nameOfHostPath(captured_.path()));
  capturedNumber_ = fileNumber;
}

void CapturingPlatform::writeBytes(Int16 fileNumber, std::string_view bytes) {
  if (isCaptured(fileNumber)) {
    if (!captured_.append(bytes)) failed_ = true;
  } else {
    base_.writeBytes(fileNumber, bytes);
  }
}

void CapturingPlatform::syncFile(Int16 fileNumber) {
  if (!isCaptured(fileNumber)) base_.syncFile(fileNumber);
}

void CapturingPlatform::flushFile(Int16 fileNumber) {
  if (!isCaptured(fileNumber)) base_.flushFile(fileNumber);
}

void CapturingPlatform::closeFile(Int16 fileNumber) {
  if (isCaptured(fileNumber)) capturedNumber_.reset();
  base_.closeFile(fileNumber);
}

void CapturingPlatform::closeAllFiles() {
  capturedNumber_.reset();
  base_.closeAllFiles();
}

}  // namespace tagwright
