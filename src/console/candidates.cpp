// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/candidates.h"

#include <algorithm>

namespace vorpen {
namespace {

/// More are of no use to who has to choose.
constexpr std::size_t mostWords = 200;

std::string commonPrefix(const std::vector<std::string>& words) {
    std::string prefix = words.front();
    for (const std::string& word : words) {
        const auto differs = std::mismatch(prefix.begin(), prefix.end(), word.begin(), word.end());
        prefix.erase(differs.first, prefix.end());
    }
    return prefix;
}

}  // namespace

std::vector<std::string> complete(CommandLine& line, const Completer& completer) {
    const auto caret = static_cast<std::size_t>(line.caret());
    Completion found = completer(line.line(), caret);
    if (found.candidates.empty()) return {};
    const std::string text = commonPrefix(found.candidates);
    const std::size_t typed = caret - found.start;
    if (text.size() > typed) {
        line.paste(std::string_view(text).substr(typed));
        return {};
    }
    if (found.candidates.size() == 1) return {};
    return std::move(found.candidates);
}

std::vector<std::string> candidateRows(const std::vector<std::string>& words, int columns) {
    const std::size_t shown = std::min(words.size(), mostWords);
    std::size_t width = 1;
    for (std::size_t i = 0; i < shown; ++i) width = std::max(width, words[i].size() + 2);
    const std::size_t perRow =
        std::max<std::size_t>(1, static_cast<std::size_t>(std::max(columns, 0)) / width);
    std::vector<std::string> rows;
    for (std::size_t i = 0; i < shown; ++i) {
        if (i % perRow == 0)
            rows.emplace_back();
        else
            rows.back().append(width - words[i - 1].size(), ' ');
        rows.back() += words[i];
    }
    if (shown < words.size()) rows.push_back("(" + std::to_string(words.size() - shown) + " more)");
    return rows;
}

}  // namespace vorpen
