#pragma once

#include <string>

#include "platform/core/ref.h"

namespace orvelin {

/// What files of one kind are stamped with on a system that keeps such codes.
struct FileType {
  std::string Name;
  std::string Extensions;
  std::string MacType;
  std::string MacCreator;
};

/// The program's file types, there from start-up to the end.
struct FileTypes {
  static Ref<FileType> pText;
  static Ref<FileType> pNile;

  static void install();
  static void release();
};

}  // namespace orvelin
