#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/core/binarystream.h"
#include "platform/core/date.h"

namespace orvelin {

// The folder archive: one file that contains a folder tree. Numbers are big-endian.
//
//   archive = entry                    usually a folder; the rest of the file is ignored
//   entry   = folder | file
//   folder  = "[FOLDER]" head entry*   `number` entries
//   file    = "[FILE]"   head byte*    `number` bytes
//   head    = name modified created number
//
//   tags, name          a length byte, then that many bytes in no particular encoding
//   modified, created   a double: seconds since 1904-01-01 00:00:00 in local time
//   number              a signed 32-bit integer
//
// Tags are read in any letter case. An unknown tag counts as an entry, and has no head.

inline constexpr std::string_view folderTag = "[FOLDER]";
inline constexpr std::string_view fileTag = "[FILE]";

/// The part of an entry between its tag and its contents.
struct EntryHead {
  std::string name;     ///< a file name without a path
  Date modified;        ///< stored when packing, ignored when unpacking
  Date created;         ///< stored when packing, ignored when unpacking
  std::int32_t number;  ///< entries in the folder, or bytes in the file
};

/// Reads a head. Past the end of the archive, names are empty and numbers zero.
EntryHead readHead(BinaryStream& archive);
void writeHead(BinaryStream& archive, const EntryHead& head);

}  // namespace orvelin
