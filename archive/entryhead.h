#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/core/binarystream.h"
#include "platform/core/date.h"

namespace orvelin {

// The folder archive: one file that holds a folder tree, numbers big-endian.
//
//   archive = entry                  usually a folder; what follows it is not read
//   entry   = folder | file
//   folder  = "[FOLDER]" head entry  as many entries as head says
//   file    = "[FILE]"   head byte   as many bytes as head says
//   head    = name modified created number
//
//   tags and name    a length byte, then that many bytes, without encoding
//   modified         a double: seconds since 1904-01-01 00:00:00 local time
//   created          likewise
//   number           a signed 32-bit integer
//
// A reader takes tags in any letter case. A tag that is neither of the two is an entry by itself.

inline constexpr std::string_view folderTag = "[FOLDER]";
inline constexpr std::string_view fileTag = "[FILE]";

/// What stands between an entry's tag and its contents.
struct EntryHead {
  std::string name;     ///< a single path component
  Date modified;        ///< kept in the archive, never applied to what is unpacked
  Date created;         ///< likewise
  std::int32_t number;  ///< of entries in a folder, of bytes in a file
};

/// Reads a head; what lies past the archive's end reads as an empty name and zeros.
EntryHead readHead(BinaryStream& archive);
void writeHead(BinaryStream& archive, const EntryHead& head);

}  // namespace orvelin
