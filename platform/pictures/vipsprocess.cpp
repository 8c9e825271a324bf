#include "platform/pictures/vipsprocess.h"

#include <malloc.h>
#include <vips/vips.h>

#include <algorithm>
#include <cstdlib>

namespace orvelin {

namespace {

constexpr const char* logDomain = "VIPS";

// NOLINTBEGIN(concurrency-mt-unsafe): no other thread runs yet.
void applyProcessSettings() {
  // By default libvips decodes large pictures to a temporary file.
  ::setenv("VIPS_DISC_THRESHOLD", "1000g", 1);
  // Each worker needs memory, which is limited.
  constexpr int maxWorkers = 8;
  vips_concurrency_set(std::min(vips_concurrency_get(), maxWorkers));
  // A cached operation would return the old picture of a file that has changed.
  vips_cache_set_max(0);
  // Rotating needs the whole picture in memory. Returning that memory to the system after each
  // picture would cost a tenth of the conversion time.
  ::mallopt(M_MMAP_THRESHOLD, 1 << 30);
  ::mallopt(M_TRIM_THRESHOLD, 128 << 20);
  const auto discard = [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {};
  g_log_set_handler(logDomain, G_LOG_LEVEL_WARNING, discard, nullptr);
}
// NOLINTEND(concurrency-mt-unsafe)

}  // namespace

bool startVips() {
  static const bool started = [] {
    if (VIPS_INIT("orvelin") != 0) return false;
    applyProcessSettings();
    return std::atexit(vips_shutdown) == 0;
  }();
  return started;
}

void warnOfDamage(const char* text) { g_log(logDomain, G_LOG_LEVEL_WARNING, "%s", text); }

// GLib calls the handler that was set last: this one, until it is removed.
DecoderWarnings::DecoderWarnings()
    : handler_(g_log_set_handler(
          logDomain, G_LOG_LEVEL_WARNING,
          [](const gchar*, GLogLevelFlags, const gchar* text, gpointer data) {
            auto& warnings = *static_cast<DecoderWarnings*>(data);
            const std::lock_guard lock(warnings.mutex_);
            warnings.texts_.insert(text);
          },
          this)) {}

DecoderWarnings::~DecoderWarnings() { g_log_remove_handler(logDomain, handler_); }

void DecoderWarnings::ignorePast() {
  const std::lock_guard lock(mutex_);
  ignored_ = texts_.size();
}

bool DecoderWarnings::any() const {
  const std::lock_guard lock(mutex_);
  return texts_.size() > ignored_;
}

}  // namespace orvelin
