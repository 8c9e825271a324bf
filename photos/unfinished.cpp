#include "photos/unfinished.h"

#include <cstddef>
#include <string_view>

#include "platform/core/background.h"
#include "platform/core/file.h"

namespace orvelin {

namespace {

/// Whether the name is a number of at least that many digits, then `ending`.
bool isNumbered(std::string_view name, std::size_t digits, std::string_view ending) {
  const auto end = name.find_first_not_of("0123456789");
  return end != std::string_view::npos && end >= digits && name.substr(end) == ending;
}

}  // namespace

bool isUnfinished(const FolderItem& file) {
  const std::string name = file.Name();
  if (!isNumbered(WholeFile::targetOf(name), 3, ".jpg")) return false;
  const Ref<FolderItem> folder = file.Parent();
  return isNumbered(folder->Name(), 1, "k6230") && folder->Parent()->Name() == "dcim" &&
         file.RegularFile();
}

void deleteUnfinished(const FolderItem& root) {
  const Ref<FolderItem> dcim = root.Child("dcim");
  // An alias gives its target, which lies elsewhere: nothing there is ours.
  const auto liesIn = [](const FolderItem& entry, const FolderItem& folder) {
    return entry.Parent()->Path() == folder.Path();
  };
  const int folders = dcim->Directory() ? dcim->Count() : 0;
  for (int i = 1; i <= folders; ++i) {
    const Ref<FolderItem> folder = dcim->Item(i);
    const int files = folder->Directory() && liesIn(*folder, *dcim) ? folder->Count() : 0;
    for (int j = 1; j <= files; ++j) {
      const Ref<FolderItem> file = folder->Item(j);
      if (liesIn(*file, *folder) && isUnfinished(*file)) file->Delete();
      RuntimeBackgroundTask();
    }
  }
}

}  // namespace orvelin
