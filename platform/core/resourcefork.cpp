#include "platform/core/resourcefork.h"

#include "platform/core/bundle.h"
#include "platform/core/folderitem.h"

namespace orvelin {

std::string ResourceFork::GetResource(const std::string& type, int id) const {
  const auto path = bundleFolder() / "Contents/Resources" / type / std::to_string(id);
  const Ref<BinaryStream> stream = FolderItem(path.string()).OpenAsBinaryFile();
  return stream ? stream->Read(stream->Length()) : std::string();
}

Ref<ResourceFork> applicationResourceFork() { return makeRef<ResourceFork>(); }

}  // namespace orvelin
