// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A picture in memory, and the reader of picture files in the BMP format.

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "console/markup.h"

namespace vorpen {

struct Bitmap {
    int width = 0, height = 0;
    std::vector<Colour> pixels;  ///< row after row from the top, 0x00BBGGRR

    [[nodiscard]] bool contains(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height; }
    /// The pixel must exist.
    [[nodiscard]] Colour at(int x, int y) const {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
    /// The part inside the picture of a rectangle, which may be empty.
    [[nodiscard]] Bitmap cut(int left, int top, int width, int height) const;
};

/// Reads an uncompressed BMP file of 1, 4, 8, 16, 24 or 32 bits a pixel;
/// nothing for any other content, a damaged file or one above 2^26 pixels.
[[nodiscard]] std::optional<Bitmap> decodeBmp(std::string_view bytes);

}  // namespace vorpen
