#include "photos/unfinished.h"

#include <cstddef>
#include <string_view>

#include "platform/core/background.h"

namespace orvelin {

namespace {

/// Whether the name is a number with at least `minDigits` digits, followed by `suffix`.
bool isNumbered(std::string_view name, std::size_t minDigits, std::string_view suffix) {
  const auto end = name.find_first_not_of("0123456789");
  return end != std::string_view::npos && end >= minDigits && name.substr(end) == suffix;
}

}  // namespace

bool isUnfinished(const FolderItem& file) {
  if (!isNumbered(file.targetName(), 3, ".jpg")) return false;
  const Ref<FolderItem> folder = file.Parent();
  return isNumbered(folder->Name(), 1, "k6230") && folder->Parent()->Name() == "dcim" &&
         file.RegularFile();
}

void deleteUnfinished(const FolderItem& root) {
  const Ref<FolderItem> dcim = root.Child("dcim");
  // Item() resolves symlinks. Skip those that lead elsewhere.
  const auto isIn = [](const FolderItem& entry, const FolderItem& folder) {
    return entry.Parent()->Path() == folder.Path();
  };
  const int folders = dcim->Directory() ? dcim->Count() : 0;
  for (int i = 1; i <= folders; ++i) {
    const Ref<FolderItem> folder = dcim->Item(i);
    const int files = folder->Directory() && isIn(*folder, *dcim) ? folder->Count() : 0;
    for (int j = 1; j <= files; ++j) {
      const Ref<FolderItem> file = folder->Item(j);
      if (isIn(*file, *folder) && isUnfinished(*file)) file->Delete();
      RuntimeBackgroundTask();
    }
  }
}

}  // namespace orvelin
