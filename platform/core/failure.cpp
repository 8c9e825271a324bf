#include "platform/core/failure.h"

#include <cerrno>
#include <iostream>
#include <iterator>

namespace orvelin {

std::string Failure::text() const {
  std::string text = action;
  if (!path.empty()) text += " « " + path + " »";
  text += " : " + reason + ".";
  // A file name may hold line breaks; the sentence stays on its line.
  for (char& c : text)
    if (static_cast<unsigned char>(c) < ' ') c = '?';
  return text;
}

std::string systemReason(int error) {
  static constexpr struct {
    int error;
    const char* reason;
  } reasons[] = {
      {ENOENT, "l'élément n'existe pas"},
      {EACCES, "accès refusé"},
      {EPERM, "opération non permise"},
      {ENOSPC, "espace insuffisant"},
      {EDQUOT, "quota de disque dépassé"},
      {EFBIG, "fichier trop grand pour ce disque"},
      {EROFS, "disque en lecture seule"},
      {EEXIST, "un autre élément porte déjà ce nom"},
      {EISDIR, "un dossier porte ce nom"},
      {ENOTDIR, "un élément du chemin n'est pas un dossier"},
      {ENAMETOOLONG, "nom trop long"},
      {ELOOP, "alias en boucle"},
      {EIO, "le disque ne répond pas correctement"},
      {ENXIO, "le périphérique n'est plus là"},
      {ENODEV, "le périphérique n'est plus là"},
      {EINVAL, "ce n'est pas un fichier ordinaire"},
      {EMFILE, "trop de fichiers ouverts"},
      {ENFILE, "trop de fichiers ouverts"},
      {ENOMEM, "mémoire insuffisante"},
  };
  for (const auto& known : reasons)
    if (known.error == error) return known.reason;
  return "erreur " + std::to_string(error) + " du système";
}

void report(const Failure& failure) { std::cerr << "Orvelin : " + failure.text() + "\n"; }

}  // namespace orvelin
