#include "platform/core/resourcefork.h"

#include "platform/core/bundle.h"
#include "platform/core/folderitem.h"

namespace orvelin {

std::string ResourceFork::GetResource(const std::string& type, int id) const {
  const FolderItem file(bundleResource(type) / std::to_string(id));
  const Ref<BinaryStream> stream = file.OpenAsBinaryFile();
  if (stream) return stream->Read(stream->Length());
  report(stream.why());
  return "";
}

Ref<ResourceFork> applicationResourceFork() { return makeRef<ResourceFork>(); }

}  // namespace orvelin
