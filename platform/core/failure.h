#pragma once

#include <exception>
#include <string>

namespace orvelin {

/// What an operation of the platform could not do, in French, for the user and for standard error.
struct Failure {
  std::string action;  ///< "Impossible de créer le fichier"
  std::string path;    ///< bytes of the file name concerned; empty when there is none
  std::string reason;  ///< "espace insuffisant"

  /// The failure as one sentence on one line.
  std::string text() const;
};

/// The system's reason for an `errno` value, in French whatever the locale.
std::string systemReason(int error);

/// Tells on standard error, in one line, of a failure that the program passes over.
void report(const Failure& failure);

/// Thrown where nil is used in place of an object; carries what made it nil.
class NilObjectException : public std::exception {
 public:
  explicit NilObjectException(const Failure& failure) : text_(failure.text()) {}
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  std::string text_;
};

}  // namespace orvelin
