#include "platform/pictures/picturefile.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace orvelin {

PictureFile::PictureFile(Descriptor file) : file_(std::move(file)) {
  const off_t end = ::lseek(file_.get(), 0, SEEK_END);
  if (end < 0)
    error_ = errno;
  else
    size_ = static_cast<std::uint64_t>(end);
}

std::string_view PictureFile::some(std::uint64_t at) {
  // Small steps at the beginning: the scan often needs only the first few kilobytes.
  constexpr std::size_t beginning = 64 << 10, smallStep = 16 << 10, step = 64 << 10;
  if (at >= size_) return {};
  if (at < windowAt_ || at - windowAt_ >= window_.size())
    fillWindow(at, at < beginning ? smallStep : step);
  return std::string_view(window_).substr(at - windowAt_);
}

std::size_t PictureFile::read(std::uint64_t at, char* bytes, std::size_t count) {
  std::size_t done = 0;
  while (done < count) {
    const std::size_t got = some(at + done).copy(bytes + done, count - done);
    if (got == 0) break;
    done += got;
  }
  return done;
}

int PictureFile::byteAt(std::uint64_t at) {
  const std::string_view bytes = some(at);
  return bytes.empty() ? 0 : static_cast<unsigned char>(bytes[0]);
}

bool PictureFile::readWhole() {
  fillWindow(0, size_);
  whole_ = error_ == 0;
  return whole_;
}

void PictureFile::fillWindow(std::uint64_t at, std::size_t count) {
  window_.resize(std::min(count, size_ - at));
  windowAt_ = at;
  std::size_t done = 0;
  while (error_ == 0 && done < window_.size()) {
    const ssize_t got =
        ::pread(file_.get(), &window_[done], window_.size() - done, static_cast<off_t>(at + done));
    if (got > 0)
      done += static_cast<std::size_t>(got);
    else if (got == 0)
      error_ = ESTALE;
    else if (errno != EINTR)
      error_ = errno;
  }
  window_.resize(done);
}

vips::VSource PictureFile::source() {
  if (whole_) return vips::VSource::new_from_memory(window_.data(), window_.size());
  sourceAt_ = 0;
  VipsSourceCustom* const custom = vips_source_custom_new();
  g_signal_connect(custom, "read", G_CALLBACK(&PictureFile::onRead), this);
  g_signal_connect(custom, "seek", G_CALLBACK(&PictureFile::onSeek), this);
  return vips::VSource(VIPS_SOURCE(custom));
}

gint64 PictureFile::onRead(VipsSourceCustom*, void* bytes, gint64 count, PictureFile* self) {
  const std::size_t got =
      self->read(self->sourceAt_, static_cast<char*>(bytes), static_cast<std::size_t>(count));
  self->sourceAt_ += got;
  return static_cast<gint64>(got);
}

gint64 PictureFile::onSeek(VipsSourceCustom*, gint64 offset, int whence, PictureFile* self) {
  if (whence == SEEK_CUR) offset += static_cast<gint64>(self->sourceAt_);
  if (whence == SEEK_END) offset += static_cast<gint64>(self->size_);
  if (offset < 0 || static_cast<std::uint64_t>(offset) > self->size_) return -1;
  self->sourceAt_ = static_cast<std::uint64_t>(offset);
  return offset;
}

}  // namespace orvelin
