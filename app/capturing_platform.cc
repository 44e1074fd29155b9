#include "capturing_platform.h"

namespace tagwright {

void CapturingPlatform::openForOutput(Int16 fileNumber, TextView) {
  // The number stays taken in the wrapped platform, which hands out the
  // numbers, by a file that swallows what nobody writes to it.
  base_.openForOutput(fileNumber, U"\\dev\\null");
  capturedNumber_ = fileNumber;
  failed_ = !captured_.clear();
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
