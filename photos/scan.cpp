#include "photos/scan.h"

#include <cstdint>

#include "photos/unfinished.h"
#include "platform/core/background.h"
#include "platform/core/descent.h"

namespace orvelin {

namespace {

class Walk {
 public:
  explicit Walk(ScanState& state) : state_(state) {}

  void folder(FolderItem& folder) {
    if (!descent_.enter(folder)) return;
    const int count = folder.Count();
    for (int i = 1; i <= count; ++i) {
      entry(folder.Item(i));
      RuntimeBackgroundTask();
    }
    descent_.leave();
  }

 private:
  void entry(const Ref<FolderItem>& entry) {
    if (entry->Directory())
      folder(*entry);
    else if (!isUnfinished(*entry) && ScanState::isOpenablePicture(entry))
      append(entry);
  }

  void append(const Ref<FolderItem>& picture) {
    const auto index = static_cast<std::int32_t>(state_.tabItem.size());
    state_.tabItem.push_back(makeRef<DigiItem>(picture, state_.outFol, index));
  }

  ScanState& state_;
  Descent descent_;
};

}  // namespace

void ScanState::BuildTab(const Ref<FolderItem>& folder) {
  FolderItem start(folder->Path());  // without the listing of an earlier build
  Walk(*this).folder(start);
}

bool ScanState::isOpenablePicture(const Ref<FolderItem>& f) {
  if (!f) return false;
  const Ref<Picture> picture = f->OpenAsPicture();
  return picture && picture->decodes();
}

}  // namespace orvelin
