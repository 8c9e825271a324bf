#include "builder/orderfile.h"

#include <cstddef>
#include <string>

#include "builder/generatestring.h"
#include "platform/core/background.h"
#include "platform/core/devicesync.h"
#include "platform/core/text.h"

namespace orvelin {

void writeOrderFile(const FolderItem& orderFile, const DigiItems& tabItem, DeviceSync& device) {
  const std::string lineEnd = Chr(13) + Chr(10);
  const auto tabs = [](int count) { return GenerateString(Chr(9), count); };
  const Ref<BinaryStream> stream = orderFile.CreateBinaryFile("text");
  const auto line = [&](const std::string& text) { stream->Write(text + lineEnd); };

  // The uneven spaces in the values are part of the format.
  line("; DigiFilm.txt");
  line(";");
  line("[Main]");
  line("DEALER" + tabs(2) + "= 213452");
  line("ENVELOPE" + tabs(1) + "= 105282");
  line("");
  line("SYSTEMID" + tabs(1) + "=  1067324");
  line("SOFTWAREID" + tabs(1) + "= 2.8.12");
  line("LANGUAGE" + tabs(1) + "= FR");
  line("CD_SN" + tabs(2) + "=    202");
  line("SOURCEMEDIA" + tabs(1) + "= SD");
  line("SOURCEMEDIASIZE" + tabs(1) + "= 62");
  line("SELECTIONTYPE" + tabs(1) + "= REORDER" + tabs(3) + ";Was USER");
  line(tabs(2) + "    ");
  line("[Product]");

  const std::size_t count = tabItem.size();
  for (std::size_t i = 0; i < count; ++i) {
    stream->Flush();  // if the build is killed, all placed pictures but the last have a record
    stream->Write(tabItem[i]->BuildData());  // also places the picture
    line("");
    line("");
    device.start();
    RuntimeBackgroundTask();
  }

  line("");
  line(";");
  line("; end of digifilm.txt");
  line(";");
  line("");
  line("");
  stream->Close();
}

}  // namespace orvelin
