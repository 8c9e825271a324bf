#include "photos/scan.h"

#include <cstdint>

#include "photos/unfinished.h"
#include "platform/core/background.h"
#include "platform/core/descent.h"

namespace orvelin {

namespace {

class Walk {
 public:
  Walk(const Ref<FolderItem>& outFol, DigiItems& tabItem) : outFol_(outFol), tabItem_(tabItem) {}

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
    else if (!isUnfinished(*entry) && isOpenablePicture(entry))
      tabItem_.push_back(
          makeRef<DigiItem>(entry, outFol_, static_cast<std::int32_t>(tabItem_.size())));
  }

  const Ref<FolderItem>& outFol_;
  DigiItems& tabItem_;
  Descent descent_;
};

}  // namespace

void BuildTab(const Ref<FolderItem>& folder, const Ref<FolderItem>& outFol, DigiItems& tabItem) {
  FolderItem start(folder->Path());  // not the listing of an earlier build
  Walk(outFol, tabItem).folder(start);
}

bool isOpenablePicture(const Ref<FolderItem>& f) {
  if (!f) return false;
  const Ref<Picture> picture = f->OpenAsPicture();
  return picture && picture->decodes();
}

}  // namespace orvelin
