#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvelin {

/// The names of a folder's entries, hidden ones included, in ascending byte order.
class Listing {
 public:
  /// Lists the folder. Logs a failure and keeps the names read before it.
  explicit Listing(std::filesystem::path folder);

  const std::vector<std::string>& names() const { return names_; }
  /// Whether the folder has certainly not changed: its ctime is the same. False if listing failed,
  /// or if the last change is so recent that another one may have the same ctime.
  bool isCurrent() const;

 private:
  // Seconds and nanoseconds since 1970.
  using Time = std::pair<std::int64_t, std::uint32_t>;
  std::optional<Time> changeTime() const;

  std::filesystem::path folder_;
  std::optional<Time> changed_;
  std::vector<std::string> names_;
};

}  // namespace orvelin
