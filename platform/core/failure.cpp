#include "platform/core/failure.h"

#include <cerrno>
#include <iostream>
#include <set>

namespace orvelin {

namespace {

std::set<std::string> logged;

}

std::string Failure::text() const {
  std::string text = action;
  if (!path.empty()) text += " «\u00A0" + path + "\u00A0»";
  text += "\u00A0: " + reason + ".";
  // A file name may contain line breaks.
  for (char& c : text)
    if (static_cast<unsigned char>(c) < ' ') c = '?';
  return text;
}

Failure Failure::ofSystem(const std::string& action, const std::string& path, int error) {
  static constexpr const char* chooseAnother =
      "Recommencez en choisissant un dossier dans lequel vous pouvez écrire.";
  static constexpr const char* makeRoom =
      "Libérez de la place sur ce disque, ou recommencez sur un autre.";
  static constexpr const char* plugIn =
      "Vérifiez que la clé ou le disque est bien branché, puis recommencez.";
  static constexpr const char* plugInOrReplace =
      "Vérifiez que la clé ou le disque est bien branché, puis recommencez\u00A0; si le message "
      "revient, prenez-en un autre.";
  static constexpr const char* rename =
      "Renommez ou déplacez l’élément qui gêne, ou choisissez un autre dossier.";
  static constexpr const char* closeOthers =
      "Fermez d’autres programmes ouverts, puis recommencez.";
  static constexpr struct {
    int error;
    const char* reason;
    const char* advice;
  } known[] = {
      {ENOENT, "cet emplacement n’existe pas, ou plus", plugIn},
      {EACCES, "accès refusé", chooseAnother},
      {EPERM, "opération non permise", chooseAnother},
      {EROFS, "disque en lecture seule", chooseAnother},
      {ENOSPC, "espace insuffisant", makeRoom},
      {EDQUOT, "quota de disque dépassé", makeRoom},
      {EFBIG, "fichier trop grand pour ce disque", ""},
      {EEXIST, "un autre élément porte déjà ce nom", rename},
      {EISDIR, "un dossier porte ce nom", rename},
      {ENOTDIR, "un fichier tient la place d’un dossier", rename},
      {ENAMETOOLONG, "nom trop long", "Recommencez dans un dossier au chemin plus court."},
      {ELOOP, "alias en boucle", ""},
      {EIO, "le disque ne répond pas correctement", plugInOrReplace},
      {ESTALE, "le fichier a changé entre-temps", ""},
      {ENXIO, "le périphérique n’est plus là", plugIn},
      {ETIMEDOUT, "le disque ne répond pas correctement", plugInOrReplace},
      {ENOTCONN, "le périphérique n’est plus là", plugIn},
      {ENODEV, "le périphérique n’est plus là", plugIn},
      {EINTR, "l’opération a été interrompue", "Recommencez."},
      {EINVAL, "ce n’est pas un fichier ordinaire", rename},
      {EMFILE, "trop de fichiers ouverts", closeOthers},
      {ENFILE, "trop de fichiers ouverts", closeOthers},
      {ENOMEM, "mémoire insuffisante", closeOthers},
      {EAGAIN, "trop de programmes ouverts", closeOthers},
  };
  for (const auto& row : known)
    if (row.error == error) return {action, path, row.reason, row.advice};
  return {action, path, "erreur " + std::to_string(error) + " du système"};
}

void report(const std::string& sentence) {
  if (logged.insert(sentence).second) std::cerr << "Orvelin\u00A0: " + sentence + "\n";
}

void report(const Failure& failure) { report(failure.text()); }

void forgetReports() { logged.clear(); }

}  // namespace orvelin
