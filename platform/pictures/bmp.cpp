#include "platform/pictures/bmp.h"

#include <QIODevice>
#include <QImage>
#include <QImageReader>
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>
#include <vips/vips8>

#include "platform/pictures/colours.h"
#include "platform/pictures/vipsprocess.h"

namespace orvelin {

using vips::VImage;

namespace {

/// Adapts a PictureFile to Qt.
class Device : public QIODevice {
 public:
  explicit Device(PictureFile& file) : file_(file) {
    open(ReadOnly | Unbuffered);  // reads no more than the reader asks for
  }
  qint64 size() const override { return static_cast<qint64>(file_.size()); }
  bool seek(qint64 to) override { return to <= size() && QIODevice::seek(to); }
  /// Whether a read went past the end of the file.
  bool isCut() const { return cut_; }

 protected:
  qint64 readData(char* data, qint64 count) override {
    const std::size_t got =
        file_.read(static_cast<std::uint64_t>(pos()), data, static_cast<std::size_t>(count));
    if (got < static_cast<std::size_t>(count)) cut_ = true;
    return static_cast<qint64>(got);
  }
  qint64 writeData(const char*, qint64) override { return -1; }

 private:
  PictureFile& file_;
  bool cut_ = false;
};

}  // namespace

PictureVerdict verdictOnBMP(PictureFile& bmp) {
  Device device(bmp);
  const QSize size = QImageReader(&device, "bmp").size();
  if (size.isEmpty()) return PictureVerdict::Unreadable;
  // Four bytes per pixel each: Qt's image, ours, and free memory that the allocator keeps.
  const auto memory = std::uint64_t{12} * static_cast<std::uint64_t>(size.width()) *
                      static_cast<std::uint64_t>(size.height());
  return bmp.size() + memory > maxPictureBytes ? PictureVerdict::TooLarge : PictureVerdict::Good;
}

VImage decodeBMP(PictureFile& bmp) {
  QImageReader::setAllocationLimit(maxPictureBytes >> 20);
  Device device(bmp);
  QImageReader reader(&device, "bmp");
  QImage image(reader.size(), reader.imageFormat());
  image.fill(0);  // the reader leaves missing lines untouched
  if (!reader.read(&image)) throw vips::VError(reader.errorString().toStdString());
  if (device.isCut()) warnOfDamage("the BMP file is cut");
  const auto width = static_cast<std::size_t>(image.width());
  std::vector<std::uint32_t> pixels(width * static_cast<std::size_t>(image.height()));
  for (int y = 0; y < image.height(); ++y) {
    // Qt would convert the whole image in threads, with system calls that are forbidden here.
    const QImage line = image.copy(0, y, image.width(), 1).convertToFormat(QImage::Format_RGBA8888);
    std::memcpy(&pixels[width * static_cast<std::size_t>(y)], line.constBits(), 4 * width);
  }
  // If all pixels are transparent, the program that wrote the file did not use the fourth byte.
  const auto opacity = [](std::uint32_t pixel) { return pixel >> 24; };
  if (std::ranges::none_of(pixels, opacity))
    for (std::uint32_t& pixel : pixels) pixel |= 0xFF000000;
  return fromRGBA(std::move(pixels), image.width(), image.height());
}

}  // namespace orvelin
