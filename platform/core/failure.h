#pragma once

#include <exception>
#include <string>

namespace orvelin {

/// Describes a failed operation in French, for the user and the log.
struct Failure {
  std::string action;    ///< "Impossible de créer le fichier"
  std::string path;      ///< of the file, as bytes; may be empty
  std::string reason;    ///< "espace insuffisant"
  std::string advice{};  ///< a sentence on what the user can do; may be empty

  /// A failure with the reason and the advice for an `errno` value.
  static Failure ofSystem(const std::string& action, const std::string& path, int error);
  /// Action, path and reason as one sentence on one line.
  std::string text() const;
};

/// Logs a failure to stderr, on one line. Logs equal lines only once: in a read-only folder every
/// picture gives the same one.
void report(const Failure& failure);
void report(const std::string& sentence);
/// Forgets which lines were logged, so that the next build logs them again.
void forgetReports();

/// Thrown when nil is used as an object, with the reason of the nil; also if the picture process
/// can't be started, or if the device of the destination fails.
class NilObjectException : public std::exception {
 public:
  explicit NilObjectException(const Failure& failure)
      : text_(failure.text()), advice_(failure.advice) {}
  const char* what() const noexcept override { return text_.c_str(); }
  const std::string& advice() const { return advice_; }

 private:
  std::string text_;
  std::string advice_;
};

}  // namespace orvelin
