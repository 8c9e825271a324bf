#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvelin {

/// The names of a folder's entries at one moment, hidden ones included, in ascending byte order.
class Listing {
 public:
  /// Lists the folder. A failure is logged and leaves the entries read before it.
  explicit Listing(std::string folder);

  const std::vector<std::string>& names() const { return names_; }
  /// Whether the folder is sure to have the same entries now, by its change time. False after a
  /// listing that failed, and where the change is too recent for the next one to show.
  bool isCurrent() const;

 private:
  // Seconds and nanoseconds since 1970.
  using Time = std::pair<std::int64_t, std::uint32_t>;
  std::optional<Time> changeTime() const;

  std::string folder_;
  std::optional<Time> changed_;
  std::vector<std::string> names_;
};

}  // namespace orvelin
