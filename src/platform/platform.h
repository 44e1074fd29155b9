#ifndef TAGWRIGHT_PLATFORM_PLATFORM_H_
#define TAGWRIGHT_PLATFORM_PLATFORM_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/int16.h"
#include "platform/text.h"
#include "tagwright/export.h"
#include "tagwright/plain_types.h"

namespace tagwright {

// A local date and time, as the rewrite names its temporary files by it.
struct LocalTime {
  int month = 1;  // 1..12
  int day = 1;    // 1..31
  int hour = 0;   // 0..23
  int minute = 0;
  int second = 0;
};

// Pseudo-random values in [0, 1), from a generator seeded once.
class RandomGenerator {
 public:
  virtual ~RandomGenerator() = default;
  virtual double next() = 0;
};

// Everything the component asks of the operating system. Only the POSIX
// implementation includes system headers; tests replace it with a fake that
// keeps files in memory and can fail any call.
//
// Paths are physical paths in the component's own language ("\" separates
// folders, "C:" stands for the host's root); the implementation maps them.
// Every operation that can fail throws a Failure whose kind tells the cause.
class Platform {
 public:
  virtual ~Platform() = default;

  // Sequential text files by number. Numbers belong to the calling thread.
  virtual Int16 nextFreeFileNumber() = 0;
  // Fails for anything but a plain file (links followed): a device or a FIFO
  // could block, never end, or be replaced by a rewrite.
  virtual void openForInput(Int16 fileNumber, TextView path) = 0;
  // Creates the file, which must not exist yet: a file of that name fails
  // with Failure::Kind::kFileExists and is left as it is, so that two
  // writers that chose one name never write into one file.
  virtual void openForOutput(Int16 fileNumber, TextView path) = 0;
  // Appends whole lines to `bytes`, each followed by CR LF in place of its
  // line end, until `bytes` holds at least `untilSize` bytes or nothing is
  // left. A line end is CR or CR LF; a lone LF stays in the line; a last
  // line without a line end gets CR LF too. Lines come in bulk so that a
  // chunk costs one call, not one per line.
  // With LineEnds::kAny a lone LF ends a line too. In either mode the
  // offsets in `bytes` of the CR and LF bytes that the file does not hold
  // are appended to `addedLineEnds` (see LineReader::readLines).
  virtual void readLines(Int16 fileNumber, std::string& bytes, std::size_t untilSize,
                         LineEnds lineEnds, std::vector<std::size_t>& addedLineEnds) = 0;
  // True when nothing is left to read: at once on an empty file, and right
  // after the last line has been read, whether or not it had a line end.
  virtual bool endOfFile(Int16 fileNumber) = 0;
  // The length in bytes of the open file, as it was when opened.
  virtual std::uint64_t fileSize(Int16 fileNumber) = 0;
  // Writes `bytes` exactly, adding nothing.
  virtual void writeBytes(Int16 fileNumber, std::string_view bytes) = 0;
  // Hands what was written to the system, without waiting for the disk; a
  // host that syncs a whole file system afterwards (the batch host) makes it
  // durable that way.
  virtual void flushFile(Int16 fileNumber) = 0;
  // Makes what was written durable: flushed and synced to the disk.
  virtual void syncFile(Int16 fileNumber) = 0;
  // Closes the file and frees the number; a write that fails then throws.
  virtual void closeFile(Int16 fileNumber) = 0;
  // Closes every file of the calling thread, ignoring failures.
  virtual void closeAllFiles() = 0;

  // Names. A pattern's last component may hold "*" (any run of characters)
  // and "?" (one character); "*.*" means every name. A search by a pattern
  // with wildcards passes over hidden names (beginning with "."), a search by
  // an exact name does not. Only plain files are ever seen, never folders.
  virtual bool firstMatchingFile(TextView pattern) = 0;
  // Deletes every file that matches; fails at the first one that cannot go.
  virtual void deleteMatchingFiles(TextView pattern) = 0;
  // Deletes the plain file of exactly this name: "*" and "?" are characters
  // of the name here. A name that is missing or no plain file is left alone;
  // fails when the file cannot go.
  virtual void deleteNamedFile(TextView path) = 0;
  // Fails if `from` is missing or `to` exists.
  virtual void renameFile(TextView from, TextView to) = 0;
  // Renames `from` to `to`, replacing a file `to` in one step.
  virtual void replaceFile(TextView from, TextView to) = 0;
  // Gives the file `from` the second name `to`. Returns false, changing
  // nothing, where the file system has no hard links; throws on other failures.
  virtual bool linkFile(TextView from, TextView to) = 0;
  // Makes the renames and links of the folder that holds `path` durable.
  virtual void syncFolderOf(TextView path) = 0;
  // Gives `to` the permission bits of `from`, and its owner and group where
  // the process may set them.
  virtual void copyAttributes(TextView from, TextView to) = 0;
  // The physical path of the file that `path` names after following
  // symbolic links, or `path` itself when it is no link.
  virtual Text resolveLinks(TextView path) = 0;
  // `path` with "." and ".." resolved and every symbolic link along it that
  // exists followed; the part that does not exist yet is kept by its names.
  virtual Text followLinksAlong(TextView path) = 0;
  // The names, without their folder, of the plain files that match
  // `pattern`, in ascending order of their bytes. A folder that does not
  // exist lists nothing; one that cannot be read throws.
  virtual std::vector<Text> listMatchingFiles(TextView pattern) = 0;
  // Waits for the exclusive advisory lock of the plain file that `path`
  // names (links followed), which every process that asks for it shares, and
  // holds it until the handle is destroyed. When a rewrite puts a new file
  // under the name while this waits, the lock is taken on the new file: it
  // always belongs to what the name holds. Returns null, having waited for
  // nothing, when `path` names no plain file or its file system cannot lock;
  // never throws.
  virtual std::unique_ptr<FileLock> lockFile(TextView path) = 0;

  // A hint that the `size` bytes at `data`, fresh memory, are about to be
  // filled from start to end, so that the system may back them with large
  // pages and take fewer faults. It changes no result and never fails.
  virtual void adviseLargeBuffer(void* data, std::size_t size) = 0;

  // The local date and time now, less `daysAgo` days.
  virtual LocalTime localTime(int daysAgo) = 0;
  // A pseudo-random generator seeded from the system timer.
  virtual std::unique_ptr<RandomGenerator> seededRandom() = 0;

  // The whole text of the settings file, or nothing when it is missing or
  // cannot be read.
  virtual std::optional<std::string> readSettingsFile() = 0;
};

// The platform of this process: POSIX files, the system clock and the
// settings file named by TAGWRIGHT_SETTINGS or /etc/tagwright/settings.conf.
// Hosts reach it as Tagwright::systemPlatform().
Platform& systemPlatform();

// The same platform with the settings read from `settingsFile` instead,
// for hosts that give each instance a settings file of its own.
std::unique_ptr<Platform> systemPlatformWithSettings(std::string settingsFile);

// The system's platform, except that the document `documentPath` (a
// physical or host path) is read from the open `descriptor`, once, chunk by
// chunk as a file is; nothing on disk of that name is opened for input.
// Hosts reach it as Tagwright::streamingPlatform().
std::unique_ptr<Platform> systemPlatformStreaming(const std::string& documentPath, int descriptor);

}  // namespace tagwright

#endif  // TAGWRIGHT_PLATFORM_PLATFORM_H_
