// A bitmap of two colours, one bit a pixel: a square of the pattern is eight pixels wide and so one byte of a line.
#include "tools/qvdesk/sample_picture.h"

#include "layout/bytes.h"

namespace qvdesk {
namespace {

constexpr std::uint32_t kSquare = 8;  // pixels
constexpr std::uint32_t kFileHeader = 14;
constexpr std::uint32_t kBitmapHeader = 40;
constexpr std::uint32_t kPalette = 2 * 4;
constexpr std::uint32_t kPixels = kFileHeader + kBitmapHeader + kPalette;  // where they begin
constexpr std::uint32_t kLineUnit = 4;                                     // lines are filled up to a multiple of it
constexpr std::uint32_t kWhite = 0xFFFFFF;

/// The file, less its pixels.
std::vector<std::uint8_t> MakeBitmap(std::uint32_t width, std::uint32_t height, std::uint32_t line,
                                     std::uint32_t colour) {
  const std::uint32_t size = kPixels + line * height;
  std::vector<std::uint8_t> file(size);
  const auto put = [&](std::size_t offset, std::size_t bytes, std::uint32_t value) {
    qv::layout::StoreNumber(&file[offset], bytes, value);
  };
  file[0] = 'B';
  file[1] = 'M';
  put(2, 4, size);
  put(10, 4, kPixels);
  put(kFileHeader, 4, kBitmapHeader);
  put(kFileHeader + 4, 4, width);
  put(kFileHeader + 8, 4, height);
  put(kFileHeader + 12, 2, 1);  // planes
  put(kFileHeader + 14, 2, 1);  // bits a pixel
  put(kFileHeader + kBitmapHeader, 4, kWhite);
  put(kFileHeader + kBitmapHeader + 4, 4, colour);
  return file;
}

}  // namespace

std::vector<std::uint8_t> MakeSamplePicture(Dice& dice) {
  const std::uint32_t squares = 5 + dice.Roll(3);
  const std::uint32_t side = squares * kSquare;
  const std::uint32_t line = (squares + kLineUnit - 1) / kLineUnit * kLineUnit;
  const std::uint32_t colour = dice.Roll(0xC0) << 16 | dice.Roll(0xC0) << 8 | dice.Roll(0xC0);
  std::vector<std::uint8_t> file = MakeBitmap(side, side, line, colour);
  for (std::uint32_t row = 0; row < squares; ++row) {
    for (std::uint32_t column = 0; column <= squares / 2; ++column) {
      const std::uint8_t pixels = dice.OneIn(2) ? 0xFF : 0;
      for (std::uint32_t y = row * kSquare; y < (row + 1) * kSquare; ++y) {
        file[kPixels + y * line + column] = file[kPixels + y * line + squares - 1 - column] = pixels;
      }
    }
  }
  return file;
}

}  // namespace qvdesk
