#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/core/file.h"

namespace orvelin {

/// A stream of bytes over a file, opened either to read or to write; the destructor closes it. A
/// read past the end yields an empty text or zero and is no failure. The first read or write that
/// fails is logged; the file stays as it is then.
class BinaryStream {
 public:
  enum class Use { Reading, Writing };
  /// Takes the open file; `path` is for messages alone.
  BinaryStream(File file, std::string path, Use use);
  BinaryStream(const BinaryStream&) = delete;
  BinaryStream& operator=(const BinaryStream&) = delete;
  ~BinaryStream();

  /// The byte order of numbers; big-endian when false.
  void LittleEndian(bool littleEndian) { littleEndian_ = littleEndian; }
  /// Bytes in the file when it was opened.
  std::int64_t Length() const { return file_.size(); }

  /// Up to `count` bytes, fewer where the file has fewer left; none for a negative count. Takes no
  /// more from the file than that, while the typed reads read ahead.
  std::string Read(std::int64_t count);
  /// The next bytes, fewer where the file has fewer left, without moving on; good until the next
  /// call of anything else.
  std::string_view Peek(std::size_t count);
  /// A length byte, then that many bytes.
  std::string ReadPString();
  double ReadDouble();
  std::int32_t ReadLong();

  void Write(std::string_view bytes);
  /// Writes a length byte and the text, cut after 255 bytes.
  void WritePString(std::string_view text);
  void WriteDouble(double number);
  void WriteLong(std::int32_t number);
  /// Writes the buffer to the file.
  void Flush();
  /// Whether a read or write of the system has failed so far.
  bool failed() const { return failed_; }
  /// Writes the buffer and closes the file; nothing can be read or written afterwards.
  void Close();

 private:
  std::string take(std::size_t count);
  std::size_t readSome(char* bytes, std::size_t count);
  void reportOnce(const char* action);
  std::uint64_t readNumber(std::size_t width);
  void writeNumber(std::uint64_t number, std::size_t width);

  File file_;
  std::string path_;
  Use use_;
  std::string buffer_;
  std::size_t taken_ = 0;  // bytes of the buffer already read
  bool littleEndian_ = true;
  bool ended_ = false;
  bool failed_ = false;
};

}  // namespace orvelin
