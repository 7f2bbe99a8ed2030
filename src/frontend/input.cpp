// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/input.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "base/encoding.h"
#include "base/errors.h"
#include "files/dir.h"
#include "frontend/token.h"

namespace vorpen {
namespace {

constexpr std::string_view blanks = " \t";
constexpr std::size_t none = std::string_view::npos;

/// Columns of one step of indentation, and of a tab.
constexpr int indentWidth = 4;

/// Scripts that use each other in a circle would go on until memory ends;
/// nobody nests this many on purpose.
constexpr std::size_t nestedScriptLimit = 100;

std::string_view withoutLeadingBlanks(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text;
}

std::string_view withoutTrailingBlanks(std::string_view text) {
    const std::size_t last = text.find_last_not_of(blanks);
    return text.substr(0, last == none ? 0 : last + 1);
}

/// A line that is only slightly off a step belongs to that step.
int indentLevelOf(std::string_view line) {
    int width = 0;
    for (char c : line) {
        if (c == ' ') {
            ++width;
        } else if (c == '\t') {
            width = (width / indentWidth + 1) * indentWidth;
        } else {
            break;
        }
    }
    return (width + 2) / indentWidth;
}

/// What a `use` line asks for: the name, and where on the line something else
/// goes on (the line's length when nothing does).
struct UseCommand {
    std::string name;
    std::size_t rest;
};

UseCommand parseUse(std::string_view line) {
    std::size_t at = std::min(line.find_first_not_of(blanks, line.find("use ") + 4), line.size());
    const bool quoted = at < line.size() && (line[at] == '\'' || line[at] == '"');
    std::string_view name;
    if (quoted) {
        const std::size_t end = line.find(line[at], at + 1);
        if (end == none) throw PlainFailure{"missing closing inverted comma after 'use'"};
        name = line.substr(at + 1, end - at - 1);
        at = end + 1;
    } else {
        const std::size_t end = std::min(line.find_first_of(";#", at), line.size());
        name = withoutTrailingBlanks(line.substr(at, end - at));
        at = end;
    }
    const std::size_t end = line.find_first_of(";#", at);
    return {std::string(name), end != none && line[end] == ';' ? end + 1 : line.size()};
}

}  // namespace

std::optional<std::string> readScript(const std::string& path) {
    const std::filesystem::path file(toUtf8(path));
    std::error_code failure;
    if (!std::filesystem::is_regular_file(file, failure)) return std::nullopt;
    std::ifstream stream(file, std::ios::binary);
    if (!stream) return std::nullopt;
    std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    return isValidUtf8(text) ? fromUtf8(text) : text;
}

InputSource::InputSource(std::string text, SourceMode mode)
    : mode_(mode), lineNumber_(mode == SourceMode::typed ? -1 : 0) {
    while (!text.empty() && text.back() == '\n') text.pop_back();
    text_ = std::make_shared<const std::string>(std::move(text));
}

std::optional<InputSource> InputSource::openFile(const std::string& path) {
    std::optional<std::string> text = readScript(path);
    if (!text) return std::nullopt;
    InputSource source(std::move(*text), SourceMode::file);
    source.name_ = path;
    return source;
}

bool InputSource::atEnd() const { return position_ >= text_->size(); }

std::string InputSource::currentLine() const { return text_->substr(lineStart_, lineEnd_ - lineStart_); }

std::optional<std::string_view> InputSource::readRawLine() {
    if (atEnd()) return std::nullopt;
    const std::string_view text = *text_;
    const std::size_t start = position_;
    if (!insideLine_) {
        ++lineNumber_;
        lineStart_ = start;
    }
    if (isFile()) {
        lineEnd_ = std::min(text.find('\n', start), text.size());
        position_ = lineEnd_ + 1;
        if (lineEnd_ > start && text[lineEnd_ - 1] == '\r') --lineEnd_;
    } else {
        lineEnd_ = std::min(text.find('\r', start), text.size());
        position_ = lineEnd_ + 1;
        if (position_ < text.size() && text[position_] == '\n') ++position_;
    }
    const std::string_view line = text.substr(start, lineEnd_ - start);
    if (line.find('\n') != none) throw PlainFailure{"unexpected newline found when reading input"};
    return line;
}

void InputSource::skipComment(std::string_view line) {
    const bool isMarker = line.size() > 1 && line[1] == '#';
    if (!isMarker) return;
    if (line.substr(2).starts_with("end_input")) {
        if (isFile()) position_ = text_->size();
        return;
    }
    commentStartLine_ = lineNumber_;
    while (const auto next = readRawLine())
        if (withoutLeadingBlanks(*next).starts_with("##")) return;
}

/// The next line that holds something. At the end the place stays at the line
/// given last, which is the one that a message should show.
InputSource::Fetched InputSource::fetch(std::string_view& line) {
    const int lastNumber = lineNumber_;
    const std::size_t lastStart = lineStart_;
    const std::size_t lastEnd = lineEnd_;
    while (const auto raw = readRawLine()) {
        const std::string_view content = withoutLeadingBlanks(*raw);
        if (content.empty()) {
            insideLine_ = false;
        } else if (content[0] == '#') {
            insideLine_ = false;
            skipComment(content);
        } else {
            line = *raw;
            return Fetched::line;
        }
    }
    lineNumber_ = lastNumber;
    lineStart_ = lastStart;
    lineEnd_ = lastEnd;
    return Fetched::end;
}

void InputSource::applyIndentation(std::string_view line, bool raw, std::string& out) {
    const bool counts = !raw && mode_ != SourceMode::typed && !insideLine_;
    insideLine_ = false;
    const int level = counts ? indentLevelOf(line) : indentLevel_;
    const char brace = level > indentLevel_ ? '{' : '}';
    out.assign(static_cast<std::size_t>(std::abs(level - indentLevel_)), brace);
    out += withoutLeadingBlanks(line);
    indentLevel_ = level;
}

bool InputSource::closeBlocks(std::string& line) {
    if (mode_ == SourceMode::typed || openBlocks_ == 0) return false;
    line.assign(static_cast<std::size_t>(openBlocks_), '}');
    openBlocks_ = 0;
    indentLevel_ = 0;
    return true;
}

bool InputSource::getLine(std::string& line, bool throwAtEnd, bool raw) {
    std::string_view text;
    if (fetch(text) == Fetched::line) {
        applyIndentation(text, raw, line);
        return true;
    }
    if (!raw && closeBlocks(line)) return true;
    if (throwAtEnd) throw OperatorFailure{'e'};
    line.clear();
    return false;
}

std::optional<InputSource::FunctionLine> InputSource::scanForFunction() {
    constexpr std::string_view keyword = "function";
    std::string_view line;
    while (fetch(line) == Fetched::line) {
        const std::string_view content = withoutLeadingBlanks(line);
        indentLevel_ = indentLevelOf(line);
        insideLine_ = false;
        const bool isWord = content.size() == keyword.size() ||
                            (content.size() > keyword.size() && !isNameCharacter(content[keyword.size()]));
        if (content.starts_with(keyword) && isWord)
            return FunctionLine{std::string(content), lineNumber_, commentStartLine_};
    }
    return std::nullopt;
}

void InputSource::seekLine(int n) {
    while (lineNumber_ < n - 1 && readRawLine()) {
    }
    insideLine_ = false;
    indentLevel_ = atEnd() ? 0 : indentLevelOf(std::string_view(*text_).substr(position_));
}

void UserInput::beginText(std::string text, char kind) {
    noted_.reset();
    const bool typed = kind == '>';
    if (!typed || !current_.isInteractive()) stack_.push_back(std::move(current_));
    current_ = InputSource(std::move(text), typed ? SourceMode::typed : SourceMode::text);
}

void UserInput::beginFile(const std::string& name) {
    const std::string line = current_.isFile() ? "line " + std::to_string(current_.lineNumber()) + ": " : "";
    if (stack_.size() >= nestedScriptLimit) failToUse(line + "too many nested scripts");
    const auto failure = [&](const char* what) {
        const char* extension = name.find('.') == none ? ".vrp'" : "'";
        return line + "could not " + what + " script file '" + name + extension;
    };
    const std::optional<std::string> path = paths_.findScript(name);
    if (!path) failToUse(failure("find"));
    std::optional<InputSource> source = InputSource::openFile(*path);
    if (!source) failToUse(failure("open"));
    if (!current_.isFile()) current_.name_ = paths_.current();
    stack_.push_back(std::move(current_));
    current_ = std::move(*source);
    paths_.setCurrent(directoryOf(*path, systemSeparator));
}

void UserInput::failToUse(std::string message) {
    unwind();
    throw PlainFailure{std::move(message)};
}

/// Back to the source that used this one, and to its directory.
void UserInput::leaveSource() {
    current_ = std::move(stack_.back());
    stack_.pop_back();
    if (current_.isFile()) {
        paths_.setCurrent(directoryOf(current_.name_, systemSeparator));
    } else if (!current_.name_.empty()) {
        paths_.setCurrent(current_.name_);
    }
}

void UserInput::unwind() {
    while (!stack_.empty()) leaveSource();
}

void UserInput::abandon() {
    const Place place = noted_.value_or(Place{current_.lineNumber(), current_.currentLine()});
    noted_.reset();
    errorLine_ = place.line;
    errorText_ = place.text;
    unwind();
    current_ = InputSource();
}

void UserInput::beginUse(std::string_view line) {
    const UseCommand command = parseUse(line);
    const auto left = static_cast<std::ptrdiff_t>(line.size() - command.rest);
    if (left > 0 && !current_.isFile()) {
        current_.position_ = current_.lineEnd_ - static_cast<std::size_t>(left);
        current_.insideLine_ = true;
    } else {
        current_.insideLine_ = false;
    }
    beginFile(command.name);
}

bool UserInput::getLine(std::string& line, bool throwAtEnd, bool raw) {
    for (;;) {
        std::string_view text;
        if (current_.fetch(text) == InputSource::Fetched::line) {
            // The line of an unfinished statement is never a command.
            if (!raw && withoutLeadingBlanks(text).starts_with("use ")) {
                beginUse(text);
                continue;
            }
            current_.applyIndentation(text, raw, line);
            return true;
        }
        if (!raw && current_.closeBlocks(line)) return true;
        if (raw || stack_.empty()) break;
        leaveSource();
    }
    if (throwAtEnd) throw OperatorFailure{'e'};
    line.clear();
    return false;
}

}  // namespace vorpen
