// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/screen.h"

#include "base/encoding.h"

namespace vorpen {

void Screen::showLine(const std::string& line) {
    const std::string text = form(line);
    const ActivityLine::Pause pause(activity_);
    if (text.starts_with(shown_)) {
        output_.writeLine(std::string_view(text).substr(shown_.size()));
    } else {
        output_.writeLine("");
        output_.writeLine(text);
    }
    shown_.clear();
    if (activity_) activity_->setRowTaken(false);
}

void Screen::showUnfinished(const std::string& line) {
    const std::string text = form(line);
    const ActivityLine::Pause pause(activity_);
    if (activity_) activity_->setRowTaken(!text.empty());
    if (text.starts_with(shown_)) {
        output_.write(std::string_view(text).substr(shown_.size()));
    } else {
        output_.write("\n" + text);
    }
    shown_ = text;
}

std::string Screen::form(const std::string& line) const {
    return markedUp_ ? toUtf8(line) : terminalText(line, colours_);
}

}  // namespace vorpen
