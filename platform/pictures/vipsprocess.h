#pragma once

#include <cstddef>
#include <mutex>
#include <set>
#include <string>

namespace orvelin {

/// Starts libvips, with its settings for the whole process, on the first call; it stops when the
/// program ends. Returns false if it can't start.
bool startVips();

/// Warns as a decoder of libvips does.
void warnOfDamage(const char* text);

/// Collects the warnings of libvips while it exists; nothing else sees them.
///
/// Decoders warn of damage that they pass over: the one for GIF on opening, the one for JPEG when
/// its image is freed, the others while they decode. Other warnings on opening have cost no pixel,
/// such as that of an unknown tag or of a profile that doesn't fit. They are repeated during
/// decoding, so a text that is new then means damage. Texts are only compared: libvips translates
/// them.
class DecoderWarnings {
 public:
  DecoderWarnings();
  DecoderWarnings(const DecoderWarnings&) = delete;
  DecoderWarnings& operator=(const DecoderWarnings&) = delete;
  ~DecoderWarnings();

  /// Passes over the texts so far.
  void ignorePast();
  /// Whether there are texts that were not passed over.
  bool any() const;

 private:
  mutable std::mutex mutex_;  // libvips warns from its workers
  std::set<std::string> texts_;
  std::size_t ignored_ = 0;
  unsigned handler_;
};

}  // namespace orvelin
