#pragma once

#include <exception>
#include <string>

namespace orvelin {

/// What an operation of the platform could not do, in French, for the user and for the log.
struct Failure {
  std::string action;    ///< "Impossible de créer le fichier"
  std::string path;      ///< bytes of the file name concerned; empty when there is none
  std::string reason;    ///< "espace insuffisant"
  std::string advice{};  ///< a sentence on what the user can do about it; empty when there is none

  /// A failure with the reason that an `errno` value stands for, in French whatever the locale.
  static Failure ofSystem(const std::string& action, const std::string& path, int error);
  /// The failure as one sentence on one line, without the advice.
  std::string text() const;
};

/// Logs to stderr, in one line, a failure that the program passes over. A line is logged once: a
/// folder that can't be written to fails for every picture with the same words.
void report(const Failure& failure);
void report(const std::string& sentence);
/// Starts the log of another build, in which every line counts as new.
void forgetReports();

/// Thrown where nil is used in place of an object; carries what made it nil.
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
