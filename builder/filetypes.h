#pragma once

#include <string>

#include "platform/core/ref.h"

namespace orvelin {

/// The type of a created file, on systems with type and creator codes. Linux has none, so nothing
/// reads these.
struct FileType {
  std::string Name;
  std::string Extensions;
  std::string MacType;
  std::string MacCreator;
};

/// The program's file types, set from start-up to the end of the program.
struct FileTypes {
  static Ref<FileType> pText;
  static Ref<FileType> pNile;

  static void install();
  static void release();
};

}  // namespace orvelin
