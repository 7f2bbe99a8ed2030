// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/counted_string.h"

#include <algorithm>

#include "base/little_endian.h"

namespace vorpen {

std::optional<std::string> readCountedString(std::istream& in) {
    std::int32_t length = 0;
    if (!readLittleEndian(in, length)) return std::nullopt;
    if (length < 0 || length > storedLengthLimit) return std::string();
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    if (!in.read(text.data(), static_cast<std::streamsize>(text.size()))) return std::nullopt;
    text.resize(std::min(text.find('\0'), text.size()));
    return text;
}

void writeCountedString(std::ostream& out, std::string_view text) {
    writeLittleEndian(out, static_cast<std::int32_t>(text.size()));
    out.write(text.data(), static_cast<std::streamsize>(text.size())).put('\0');
}

}  // namespace vorpen
