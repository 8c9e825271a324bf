#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/core/file.h"

namespace orvelin {

/// A buffered stream of bytes over a file that is open either for reading or for writing; the
/// destructor closes it. At the end of the file, reads return the bytes that are left, or the
/// number zero. That is no failure. The first failed read or write is logged; nothing is written
/// after it.
class BinaryStream {
 public:
  enum class Use { Reading, Writing };
  /// Takes over the open file; `path` is used for log messages only.
  BinaryStream(File file, std::string path, Use use);
  BinaryStream(const BinaryStream&) = delete;
  BinaryStream& operator=(const BinaryStream&) = delete;
  ~BinaryStream();

  /// The byte order of numbers: little-endian if true, else big-endian.
  void LittleEndian(bool littleEndian) { littleEndian_ = littleEndian; }
  /// Size of the file in bytes when it was opened.
  std::int64_t Length() const { return file_.size(); }

  /// Reads `count` bytes, or as many as the file has left; none if `count` is negative. Reads no
  /// more from the file than that; the typed reads below read ahead.
  std::string Read(std::int64_t count);

  /// Reads a length byte, then that many bytes.
  std::string ReadPString();
  double ReadDouble();
  std::int32_t ReadLong();

  void Write(std::string_view bytes);
  /// Writes a length byte and the text, cut after 255 bytes.
  void WritePString(std::string_view text);
  void WriteDouble(double number);
  void WriteLong(std::int32_t number);
  /// Writes buffered bytes to the file.
  void Flush();
  /// Whether a read or write has failed.
  bool failed() const { return failed_; }
  /// Writes buffered bytes and closes the file. Nothing can be read or written after that.
  void Close();

 private:
  /// Reads like Read, but through the buffer.
  std::string take(std::size_t count);
  std::size_t readSome(char* bytes, std::size_t count);
  void writeThrough(std::string_view bytes);
  void logFirstFailure(const char* action);
  std::uint64_t readNumber(std::size_t width);
  void writeNumber(std::uint64_t number, std::size_t width);

  File file_;
  std::string path_;
  Use use_;
  std::string readAhead_;
  std::size_t taken_ = 0;  // bytes of readAhead_ that are consumed
  std::string unwritten_;
  bool littleEndian_ = true;
  bool ended_ = false;
  bool failed_ = false;
};

}  // namespace orvelin
