// SPDX-License-Identifier: GPL-3.0-or-later
#include "transcript.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace vorpen {
namespace {

constexpr double defaultTolerance = 1e-6;

bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

std::string foldBlanks(std::string_view line) {
    std::string folded;
    for (const char c : line) {
        if (!isBlank(c))
            folded += c;
        else if (!folded.empty() && folded.back() != ' ')
            folded += ' ';
    }
    if (folded.ends_with(' ')) folded.pop_back();
    return folded;
}

/// A line cut into numbers and the text between them, "#" for each number.
struct NumbersAndText {
    std::vector<double> numbers;
    std::string text;
};

NumbersAndText separateNumbers(const std::string& line) {
    static const std::regex number(R"([-+]?(?:\d+\.?\d*|\.\d+)(?:e[-+]?\d+)?|[-+]?\b(?:inf|nan)\b)");
    NumbersAndText result;
    auto next = line.cbegin();
    for (std::sregex_iterator i(line.begin(), line.end(), number), end; i != end; ++i) {
        result.numbers.push_back(std::strtod(i->str().c_str(), nullptr));
        result.text.append(next, (*i)[0].first);
        result.text += '#';
        next = (*i)[0].second;
    }
    result.text.append(next, line.cend());
    result.text = foldBlanks(result.text);
    return result;
}

bool isClose(double a, double b, double tolerance) {
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    if (a == b) return true;
    if (std::isinf(a) || std::isinf(b)) return false;
    // Next to zero a relative error says nothing.
    const double absolute = 1e-6 * tolerance;
    const double distance = std::fabs(a - b);
    return distance <= tolerance * std::max(std::fabs(a), std::fabs(b)) || distance <= absolute;
}

bool numbersMatch(const std::string& expected, const std::string& shown, double tolerance) {
    const auto a = separateNumbers(expected), b = separateNumbers(shown);
    return a.text == b.text &&
           std::equal(a.numbers.begin(), a.numbers.end(), b.numbers.begin(), b.numbers.end(),
                      [&](double x, double y) { return isClose(x, y, tolerance); });
}

bool lineMatches(const std::string& expected, const std::string& shown) {
    if (expected.size() > 1 && expected.front() == '/' && expected.back() == '/')
        return std::regex_match(shown, std::regex(expected.substr(1, expected.size() - 2)));
    const std::size_t blank = expected.find(' ');
    if (expected.starts_with('~') && blank != std::string::npos) {
        const double tolerance = blank == 1 ? defaultTolerance : std::strtod(expected.c_str() + 1, nullptr);
        return numbersMatch(expected.substr(blank + 1), shown, tolerance);
    }
    return expected == shown;
}

using LineIterator = std::vector<std::string>::const_iterator;

bool rangesMatch(LineIterator expected, LineIterator expectedEnd, LineIterator shown, LineIterator shownEnd) {
    if (expected == expectedEnd) return shown == shownEnd;
    if (*expected == "*") {
        for (auto rest = shown;; ++rest) {
            if (rangesMatch(expected + 1, expectedEnd, rest, shownEnd)) return true;
            if (rest == shownEnd) return false;
        }
    }
    return shown != shownEnd && lineMatches(*expected, *shown) &&
           rangesMatch(expected + 1, expectedEnd, shown + 1, shownEnd);
}

/// The text between an opening word and "]", without the blanks around it.
std::optional<std::string> nameInBrackets(const std::string& line, std::string_view opening) {
    if (!line.starts_with(opening) || !line.ends_with(']')) return std::nullopt;
    return foldBlanks(std::string_view(line).substr(opening.size(), line.size() - opening.size() - 1));
}

class TranscriptReader {
public:
    explicit TranscriptReader(const std::string& path) : path_(path) {}

    std::vector<Transcript> read() {
        std::ifstream in(path_, std::ios::binary);
        if (!in) throw std::runtime_error(path_ + ": cannot be read");
        for (std::string line; std::getline(in, line);) {
            ++lineNumber_;
            takeLine(line);
        }
        if (file_) fail("a file is not closed by [end]");
        return std::move(cases_);
    }

private:
    [[noreturn]] void fail(const std::string& what) const {
        throw std::runtime_error(path_ + ":" + std::to_string(lineNumber_) + ": " + what);
    }

    void takeLine(const std::string& line) {
        if (file_) {
            if (line == "[end]")
                file_ = nullptr;
            else
                *file_ += line + "\n";
        } else if (line.starts_with("=== ")) {
            beginCase(line.substr(4));
        } else if (cases_.empty()) {
            if (!isRemark(line)) fail("text before the first case");
        } else {
            takeLineOfCase(line, cases_.back());
        }
    }

    void beginCase(const std::string& title) {
        constexpr std::string_view mark = "[markup]";
        Transcript& added = cases_.emplace_back();
        added.name = foldBlanks(title);
        added.markup = added.name.ends_with(mark);
        if (added.markup) added.name = foldBlanks(added.name.substr(0, added.name.size() - mark.size()));
    }

    void takeLineOfCase(const std::string& line, Transcript& current) {
        if (const auto name = nameInBrackets(line, "[file ")) {
            file_ = &current.files[*name];
        } else if (const auto result = nameInBrackets(line, "[expect file ")) {
            file_ = &current.expectedFiles[*result];
        } else if (line.starts_with("> ") || line == ">") {
            current.steps.push_back({line.substr(std::min<std::size_t>(2, line.size())), {}});
        } else if (!current.steps.empty()) {
            current.steps.back().expected.push_back(line);
        } else if (!isRemark(line)) {
            fail("expected text before the first typed line");
        }
    }

    static bool isRemark(const std::string& line) {
        return line.starts_with('#') || foldBlanks(line).empty();
    }

    std::string path_;
    int lineNumber_ = 0;
    std::vector<Transcript> cases_;
    std::string* file_ = nullptr;  ///< the text that lines are added to, up to [end]
};

}  // namespace

std::vector<Transcript> readTranscripts(const std::string& path) { return TranscriptReader(path).read(); }

std::vector<std::string> foldLines(const std::vector<std::string>& lines) {
    std::vector<std::string> folded;
    for (const auto& line : lines)
        if (std::string text = foldBlanks(line); !text.empty()) folded.push_back(std::move(text));
    return folded;
}

bool linesMatch(const std::vector<std::string>& expected, const std::vector<std::string>& shown) {
    const auto a = foldLines(expected), b = foldLines(shown);
    return rangesMatch(a.begin(), a.end(), b.begin(), b.end());
}

std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

}  // namespace vorpen
