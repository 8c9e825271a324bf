#include "builder/driver.h"

#include "archive/gonfleur.h"
#include "builder/orderfile.h"
#include "photos/unfinished.h"
#include "platform/core/devicesync.h"
#include "platform/core/resourcefork.h"

namespace orvelin {

namespace {

void writeResource(int id, const FolderItem& target) {
  const Ref<BinaryStream> file = target.CreateBinaryFile("nile");
  file->Write(applicationResourceFork()->GetResource("PCFI", id));
  file->Close();
}

}  // namespace

bool buildDigiFilm(BuildState& state) {
  if (!state.inFol || !state.outFol) return false;

  forgetReports();
  state.tabItem.clear();
  state.outFol = state.outFol->Child("DIGIFILM");
  state.outFol->CreateAsFolder();
  DeviceSync device(*state.outFol);

  state.BuildTab(state.inFol);
  const Ref<FolderItem> orderFile = state.outFol->Child("digifilm.txt");
  writeOrderFile(*orderFile, state.tabItem, device);

  state.outFol->Child("misc")->CreateAsFolder();
  writeResource(128, *state.outFol->Child("misc")->Child("favorite.mrk"));
  writeResource(129, *state.outFol->Child("autorun.inf"));

  GonfleurClass().Gonfler(state.GetResource("datafile"), state.outFol);
  deleteUnfinished(*state.outFol);
  device.finish(*orderFile);
  return true;
}

}  // namespace orvelin
