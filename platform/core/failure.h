#pragma once

#include <exception>
#include <string>

namespace orvelin {

/// An operation that failed, in French, for the user and the log.
struct Failure {
  std::string action;    ///< "Impossible de créer le fichier"
  std::string path;      ///< the file's path as bytes; empty if no file is concerned
  std::string reason;    ///< "espace insuffisant"
  std::string advice{};  ///< a sentence on what the user can do; may be empty

  /// A failure with the reason and the advice for an `errno` value.
  static Failure ofSystem(const std::string& action, const std::string& path, int error);
  /// Action, path and reason as one sentence on one line.
  std::string text() const;
};

/// Logs an ignored failure to stderr, on one line. Logs equal lines once: in a read-only folder
/// every picture fails with the same one.
void report(const Failure& failure);
void report(const std::string& sentence);
/// Forgets the logged lines, at the start of a build.
void forgetReports();

/// Thrown when nil is used as an object; carries the reason of the nil.
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
