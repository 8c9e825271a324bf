#pragma once

#include <cstddef>
#include <mutex>
#include <set>
#include <string>

namespace orvelin {

/// Initializes libvips and its settings for this process, on the first call; it is shut down at
/// exit. Returns false on failure.
bool startVips();

/// Logs a warning as libvips does.
void warnOfDamage(const char* text);

/// Collects the warnings that libvips logs while this object exists. They are not printed.
///
/// They show whether a picture is damaged. The loaders of GIF and BMP warn of damage when they open
/// the file, that of JPEG when its image is freed, the others while they decode. On opening, all
/// but those of GIF and BMP only warn of metadata, such as an unknown tag, and repeat these
/// warnings while they decode. So call `ignorePast` after opening: a new text then means damage.
/// Texts are compared but not parsed, because libvips translates them.
class DecoderWarnings {
 public:
  DecoderWarnings();
  DecoderWarnings(const DecoderWarnings&) = delete;
  DecoderWarnings& operator=(const DecoderWarnings&) = delete;
  ~DecoderWarnings();

  /// Ignores the warnings so far, and later ones with the same texts.
  void ignorePast();
  /// Whether there are warnings that are not ignored.
  bool any() const;

 private:
  mutable std::mutex mutex_;  // libvips logs from its worker threads
  std::set<std::string> texts_;
  std::size_t ignored_ = 0;
  unsigned handler_;
};

}  // namespace orvelin
