// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/screen.h"

#include "base/encoding.h"
#include "console/terminal_text.h"

namespace vorpen {

void Screen::showLine(const std::string& line) {
    const std::string text = form(line);
    if (text.starts_with(shown_)) {
        output_.writeLine(std::string_view(text).substr(shown_.size()));
    } else {
        output_.writeLine("");
        output_.writeLine(text);
    }
    shown_.clear();
}

void Screen::showUnfinished(const std::string& line) {
    const std::string text = form(line);
    if (text.starts_with(shown_)) {
        output_.write(std::string_view(text).substr(shown_.size()));
    } else {
        output_.write("\n" + text);
    }
    shown_ = text;
}

std::string Screen::form(const std::string& line) const {
    return text_ == Text::markedUp ? toUtf8(line) : terminalText(line, text_ == Text::coloured);
}

}  // namespace vorpen
