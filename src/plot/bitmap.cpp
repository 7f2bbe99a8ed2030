// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/bitmap.h"

#include <algorithm>
#include <array>
#include <bit>

#include "base/little_endian.h"

namespace vorpen {
namespace {

constexpr std::size_t fileHeaderSize = 14;
constexpr std::int64_t maxPixels = std::int64_t{1} << 26;

/// The layout of a BMP file: Microsoft, "Bitmap Storage" in the documentation
/// of the Windows graphics device interface (structures BITMAPFILEHEADER,
/// BITMAPCOREHEADER and BITMAPINFOHEADER).
class BmpReader {
public:
    explicit BmpReader(std::string_view bytes) : bytes_(bytes) {}

    std::optional<Bitmap> read();

private:
    static constexpr std::uint32_t coreHeaderSize = 12, infoHeaderSize = 40;
    static constexpr std::uint32_t plain = 0, withMasks = 3;

    template <class T>
    [[nodiscard]] T field(std::size_t at) const {
        return at + sizeof(T) <= bytes_.size() ? fromLittleEndian<T>(bytes_.data() + at) : T{};
    }
    [[nodiscard]] Colour blueGreenRed(std::size_t at) const {
        return field<std::uint8_t>(at + 2) | field<std::uint8_t>(at + 1) << 8 | field<std::uint8_t>(at) << 16;
    }
    bool readHeader();
    void readPalette();
    [[nodiscard]] Colour pixel(std::size_t row, std::int64_t x) const;
    /// The part of a pixel under a mask, spread to 8 bits.
    [[nodiscard]] static Colour component(std::uint32_t pixel, std::uint32_t mask);

    std::string_view bytes_;
    std::int64_t width_ = 0, height_ = 0;
    bool topDown_ = false;
    int bits_ = 0;
    std::uint32_t headerSize_ = 0;
    std::array<std::uint32_t, 3> masks_{};  ///< of red, green, blue
    std::vector<Colour> palette_;
};

bool BmpReader::readHeader() {
    headerSize_ = field<std::uint32_t>(fileHeaderSize);
    std::uint32_t compression = plain;
    if (headerSize_ == coreHeaderSize) {
        width_ = field<std::uint16_t>(18);
        height_ = field<std::uint16_t>(20);
        bits_ = field<std::uint16_t>(24);
    } else if (headerSize_ >= infoHeaderSize) {
        width_ = field<std::int32_t>(18);
        height_ = field<std::int32_t>(22);
        bits_ = field<std::uint16_t>(28);
        compression = field<std::uint32_t>(30);
    } else {
        return false;
    }
    topDown_ = height_ < 0;
    if (topDown_) height_ = -height_;
    if (width_ < 1 || height_ < 1 || width_ > maxPixels / height_) return false;
    if (bits_ == 16) masks_ = {0x7C00, 0x03E0, 0x001F};
    if (bits_ == 32) masks_ = {0xFF0000, 0x00FF00, 0x0000FF};
    if (compression == withMasks && (bits_ == 16 || bits_ == 32)) {
        for (std::size_t k = 0; k < 3; ++k) masks_[k] = field<std::uint32_t>(54 + 4 * k);
    } else if (compression != plain) {
        return false;
    }
    return bits_ == 1 || bits_ == 4 || bits_ == 8 || bits_ == 16 || bits_ == 24 || bits_ == 32;
}

void BmpReader::readPalette() {
    if (bits_ > 8) return;
    const std::size_t entry = headerSize_ == coreHeaderSize ? 3 : 4;
    palette_.resize(std::size_t{1} << bits_);
    for (std::size_t k = 0; k < palette_.size(); ++k)
        palette_[k] = blueGreenRed(fileHeaderSize + headerSize_ + k * entry);
}

Colour BmpReader::component(std::uint32_t pixel, std::uint32_t mask) {
    if (mask == 0) return 0;
    const int shift = std::countr_zero(mask);
    return static_cast<Colour>(std::uint64_t{(pixel & mask) >> shift} * 255 / (mask >> shift));
}

Colour BmpReader::pixel(std::size_t row, std::int64_t x) const {
    const auto at = static_cast<std::size_t>(x);
    if (bits_ <= 8) {
        const std::size_t bit = at * static_cast<std::size_t>(bits_);
        const int shift = 8 - bits_ - static_cast<int>(bit % 8);
        const unsigned index = field<std::uint8_t>(row + bit / 8) >> shift & ((1u << bits_) - 1);
        return palette_[index];
    }
    if (bits_ == 24) return blueGreenRed(row + at * 3);
    const std::uint32_t value =
        bits_ == 16 ? field<std::uint16_t>(row + at * 2) : field<std::uint32_t>(row + at * 4);
    return component(value, masks_[0]) | component(value, masks_[1]) << 8 | component(value, masks_[2]) << 16;
}

std::optional<Bitmap> BmpReader::read() {
    if (!bytes_.starts_with("BM") || !readHeader()) return std::nullopt;
    const std::size_t start = field<std::uint32_t>(10);
    // Rows fill whole words of 32 bits.
    const auto rowSize = static_cast<std::size_t>((width_ * bits_ + 31) / 32 * 4);
    const auto rows = static_cast<std::size_t>(height_);
    if (start > bytes_.size() || (bytes_.size() - start) / rowSize < rows) return std::nullopt;
    readPalette();
    Bitmap picture{static_cast<int>(width_), static_cast<int>(height_), {}};
    picture.pixels.reserve(rows * static_cast<std::size_t>(width_));
    for (std::size_t y = 0; y < rows; ++y) {
        const std::size_t row = start + rowSize * (topDown_ ? y : rows - 1 - y);
        for (std::int64_t x = 0; x < width_; ++x) picture.pixels.push_back(pixel(row, x));
    }
    return picture;
}

}  // namespace

Bitmap Bitmap::cut(int left, int top, int cutWidth, int cutHeight) const {
    const auto limited = [](std::int64_t x, int size) {
        return static_cast<int>(std::clamp<std::int64_t>(x, 0, size));
    };
    const int right = limited(std::int64_t{left} + cutWidth, width);
    const int bottom = limited(std::int64_t{top} + cutHeight, height);
    left = limited(left, width);
    top = limited(top, height);
    Bitmap part;
    if (right <= left || bottom <= top) return part;
    part.width = right - left;
    part.height = bottom - top;
    for (int y = top; y < bottom; ++y)
        for (int x = left; x < right; ++x) part.pixels.push_back(at(x, y));
    return part;
}

std::optional<Bitmap> decodeBmp(std::string_view bytes) { return BmpReader(bytes).read(); }

}  // namespace vorpen
