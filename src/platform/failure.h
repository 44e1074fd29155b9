#ifndef TAGWRIGHT_PLATFORM_FAILURE_H_
#define TAGWRIGHT_PLATFORM_FAILURE_H_

#include <exception>
#include <string_view>

namespace tagwright {

// A failure raised inside the component. Numbered failures (60000 upward)
// mean something only inside the routine that raises and catches them; every
// other kind is a platform failure with a description of its own, to which
// the callers add ".".
class Failure : public std::exception {
 public:
  enum class Kind {
    kNumbered,
    kOverflow,
    kInvalidArgument,
    kFileNotFound,
    kPathNotFound,
    kPermissionDenied,
    kDiskFull,
    kFileExists,
    kDeviceIo,
    kTooManyFiles,
    kOutsideSiteRoot,
    kFileAccess,
  };

  static Failure numbered(int number) { return Failure(Kind::kNumbered, number); }
  static Failure overflow() { return Failure(Kind::kOverflow, 0); }
  static Failure invalidArgument() { return Failure(Kind::kInvalidArgument, 0); }
  // Maps an errno value of a file operation to its kind.
  static Failure fromErrno(int error);

  explicit Failure(Kind kind, int number = 0) : kind_(kind), number_(number) {}

  Kind kind() const { return kind_; }
  // REQUIRES: kind() == Kind::kNumbered.
  int number() const { return number_; }
  bool isNumbered(int number) const { return kind_ == Kind::kNumbered && number_ == number; }
  // The platform's description of the failure, without a final ".".
  std::string_view description() const;
  const char* what() const noexcept override;

 private:
  Kind kind_;
  int number_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_PLATFORM_FAILURE_H_
