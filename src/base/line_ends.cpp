// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/line_ends.h"

namespace vorpen {

std::string withClipboardLineEnds(std::string_view text) {
    std::string lines;
    lines.reserve(text.size() + text.size() / 16);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r' && text[i] != '\n') {
            lines += text[i];
            continue;
        }
        lines += "\r\n";
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
    }
    return lines;
}

}  // namespace vorpen
