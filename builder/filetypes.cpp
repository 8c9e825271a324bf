#include "builder/filetypes.h"

namespace orvelin {

Ref<FileType> FileTypes::pText;
Ref<FileType> FileTypes::pNile;

void FileTypes::install() {
  pText = makeRef<FileType>(FileType{"text", "", "TEXT", "text"});
  pNile = makeRef<FileType>(FileType{"nile", "", "", ""});  // without type and creator
}

void FileTypes::release() {
  pText = nullptr;
  pNile = nullptr;
}

}  // namespace orvelin
