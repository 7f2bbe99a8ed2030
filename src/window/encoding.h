// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Text inside the program is one byte a character; the window library's is
// Unicode.

#include <QtCore/QString>
#include <string>
#include <string_view>

namespace vorpen {

[[nodiscard]] QString toQString(std::string_view bytes);
/// A character that has no byte becomes "?".
[[nodiscard]] std::string fromQString(const QString& text);

}  // namespace vorpen
