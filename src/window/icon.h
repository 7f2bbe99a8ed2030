// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The icon of the program's windows. Its pictures are bytes in the program, so
// that it is there wherever the program is.

#include <QtGui/QIcon>
#include <span>

namespace vorpen {

/// PNG files of one picture in several sizes.
extern const std::span<const std::span<const unsigned char>> iconPictures;

[[nodiscard]] QIcon programIcon();

}  // namespace vorpen
