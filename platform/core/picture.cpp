#include "platform/core/picture.h"

#include "platform/core/failure.h"
#include "platform/core/pictureprocess.h"

namespace orvelin {

namespace {

/// The reason for a verdict other than `Good`, in French.
const char* reasonFor(PictureVerdict verdict) {
  switch (verdict) {
    case PictureVerdict::Suspect:
      return "sa lecture a donné des avertissements";
    case PictureVerdict::NoPicture:
      return "ce n’est pas une image connue";
    case PictureVerdict::TooLarge:
      return "trop grande";
    case PictureVerdict::TooManyScans:
      return "trop longue à décoder";
    case PictureVerdict::UnknownColours:
      return "ses couleurs sont d’un type inconnu";
    case PictureVerdict::CameraRaw:
      return "c’est le fichier brut d’un appareil photo";
    case PictureVerdict::Crashed:
      return "le décodeur s’est arrêté";
    case PictureVerdict::Stalled:
    case PictureVerdict::OverTime:
      return "trop long";
    default:
      return "illisible";
  }
}

Failure failureFor(const PictureAnswer& answer, const char* action,
                   const std::filesystem::path& path) {
  if (answer.verdict == PictureVerdict::NotRead)
    return Failure::ofSystem("Impossible de lire", path, answer.error);
  return {action, path, reasonFor(answer.verdict)};
}

}  // namespace

Ref<Picture> Picture::read(File file, const std::filesystem::path& path) {
  static std::uint32_t lastNumber = 0;
  const std::uint32_t number = ++lastNumber;
  const PictureAnswer answer = askPictureProcess({PictureOperation::Inspect, number}, file);
  if (answer.succeeded()) return makeRef<Picture>(std::move(file), path, number);
  Failure failure = failureFor(answer, "Image ignorée", path);
  if (answer.verdict != PictureVerdict::NoPicture) report(failure);
  return failure;
}

bool Picture::decodes() const {
  const PictureAnswer answer = askPictureProcess({PictureOperation::Decode, number_}, file_);
  if (!answer.succeeded()) report(failureFor(answer, "Image ignorée", path_));
  return answer.succeeded();
}

bool Picture::encodeAsJPEG(File& jpeg) const {
  const PictureAnswer answer = askPictureProcess({PictureOperation::Encode, number_}, file_, &jpeg);
  if (answer.verdict == PictureVerdict::Suspect)
    report(failureFor(answer, "Image à vérifier", path_));
  else if (!answer.succeeded())
    report(failureFor(answer, "Impossible de convertir l’image", path_));
  return answer.succeeded();
}

}  // namespace orvelin
