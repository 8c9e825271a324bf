#include "platform/core/binarystream.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "platform/core/failure.h"

namespace orvelin {

namespace {

constexpr std::size_t bufferSize = 1 << 16;
constexpr const char* cannotWrite = "Impossible d’écrire tout le fichier";

}  // namespace

BinaryStream::BinaryStream(File file, std::string path, Use use)
    : file_(std::move(file)), path_(std::move(path)), use_(use) {}

BinaryStream::~BinaryStream() { Close(); }

std::string BinaryStream::Read(std::int64_t count) {
  const auto wanted = static_cast<std::size_t>(std::max<std::int64_t>(count, 0));
  std::string bytes = readAhead_.substr(taken_, wanted);
  taken_ += bytes.size();
  std::size_t got = bytes.size();
  if (got == wanted || ended_) return bytes;
  // A wrong length must not allocate more memory than the file can fill.
  const bool large = wanted > bufferSize;
  bytes.resize(large ? std::min(wanted, got + static_cast<std::size_t>(file_.size())) : wanted);
  while (got < bytes.size()) {
    const std::size_t more = readSome(bytes.data() + got, bytes.size() - got);
    if (more == 0) break;
    got += more;
  }
  bytes.resize(got);
  return bytes;
}

std::string BinaryStream::ReadPString() { return take(readNumber(1)); }

double BinaryStream::ReadDouble() { return std::bit_cast<double>(readNumber(8)); }

std::int32_t BinaryStream::ReadLong() {
  return std::bit_cast<std::int32_t>(static_cast<std::uint32_t>(readNumber(4)));
}

void BinaryStream::Write(std::string_view bytes) {
  if (unwritten_.size() + bytes.size() > bufferSize) Flush();
  if (bytes.size() < bufferSize)
    unwritten_ += bytes;
  else
    writeThrough(bytes);
}

void BinaryStream::WritePString(std::string_view text) {
  text = text.substr(0, 255);
  writeNumber(text.size(), 1);
  Write(text);
}

void BinaryStream::WriteDouble(double number) {
  writeNumber(std::bit_cast<std::uint64_t>(number), 8);
}

void BinaryStream::WriteLong(std::int32_t number) {
  writeNumber(std::bit_cast<std::uint32_t>(number), 4);
}

void BinaryStream::Flush() {
  writeThrough(unwritten_);
  unwritten_.clear();
}

void BinaryStream::Close() {
  if (!file_.isOpen()) return;
  Flush();
  if (!file_.close() && use_ == Use::Writing) logFirstFailure(cannotWrite);
  readAhead_.clear();
  taken_ = 0;
}

std::string BinaryStream::take(std::size_t count) {
  if (readAhead_.size() - taken_ < count && !ended_) {
    readAhead_.erase(0, taken_);
    taken_ = 0;
    std::size_t held = readAhead_.size();
    readAhead_.resize(held + bufferSize);
    while (held < count) {
      const std::size_t more = readSome(readAhead_.data() + held, readAhead_.size() - held);
      if (more == 0) break;
      held += more;
    }
    readAhead_.resize(held);
  }
  std::string bytes = readAhead_.substr(taken_, count);
  taken_ += bytes.size();
  return bytes;
}

std::size_t BinaryStream::readSome(char* bytes, std::size_t count) {
  const std::size_t got = file_.isOpen() ? file_.readSome(bytes, count) : 0;
  if (file_.error()) logFirstFailure("Impossible de lire");
  if (got == 0 && count > 0) ended_ = true;
  return got;
}

void BinaryStream::writeThrough(std::string_view bytes) {
  if (!failed_ && !file_.write(bytes)) logFirstFailure(cannotWrite);
}

void BinaryStream::logFirstFailure(const char* action) {
  if (!failed_) report(Failure::ofSystem(action, path_, file_.error()));
  failed_ = true;
}

std::uint64_t BinaryStream::readNumber(std::size_t width) {
  std::string bytes = take(width);
  if (bytes.size() < width) return 0;
  if (littleEndian_) std::ranges::reverse(bytes);
  std::uint64_t number = 0;
  for (const char byte : bytes) number = number << 8 | static_cast<unsigned char>(byte);
  return number;
}

void BinaryStream::writeNumber(std::uint64_t number, std::size_t width) {
  std::string bytes(width, '\0');
  for (char& byte : bytes) {
    byte = static_cast<char>(number & 0xff);
    number >>= 8;
  }
  if (!littleEndian_) std::ranges::reverse(bytes);
  Write(bytes);
}

}  // namespace orvelin
