#include "photos/scan.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "platform/core/background.h"
#include "platform/core/file.h"

namespace orvelin {

namespace {

// More than any path has levels: who is deeper follows aliases that lead to others, endlessly.
constexpr std::size_t deepest = 4096;

/// One walk; `within_` are the folders from the first one down to the one being walked.
class Walk {
 public:
  Walk(const Ref<FolderItem>& outFol, DigiItems& tabItem) : outFol_(outFol), tabItem_(tabItem) {}

  void folder(FolderItem& folder) {
    const auto identity = folder.identity();
    if (within_.size() > deepest) return;
    if (std::find(within_.begin(), within_.end(), identity) != within_.end()) return;
    within_.push_back(identity);
    const int count = folder.Count();
    for (int i = 1; i <= count; ++i) {
      entry(folder.Item(i));
      RuntimeBackgroundTask();
    }
    within_.pop_back();
  }

 private:
  void entry(const Ref<FolderItem>& entry) {
    if (entry->Directory())
      folder(*entry);
    else if (!WholeFile::isLeftover(entry->Name()) && isOpenablePicture(entry))
      tabItem_.push_back(
          makeRef<DigiItem>(entry, outFol_, static_cast<std::int32_t>(tabItem_.size())));
  }

  const Ref<FolderItem>& outFol_;
  DigiItems& tabItem_;
  std::vector<FolderItem::Identity> within_;
};

}  // namespace

void BuildTab(const Ref<FolderItem>& folder, const Ref<FolderItem>& outFol, DigiItems& tabItem) {
  Walk(outFol, tabItem).folder(*folder);
}

bool isOpenablePicture(const Ref<FolderItem>& f) {
  if (!f) return false;
  const Ref<Picture> picture = f->OpenAsPicture();
  return picture && picture->decodes();
}

}  // namespace orvelin
