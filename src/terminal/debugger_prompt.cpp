// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/debugger_prompt.h"

#include <algorithm>
#include <string>

#include "base/output.h"

namespace vorpen {
namespace {

constexpr std::string_view question = "c continue, s or Enter step, h halt, q close: ";

/// Behind the numbers of all lines of an excerpt their texts begin in one
/// column; the current one has a mark in front.
void writeSource(const SourceExcerpt& source) {
    const int lastNumber = source.firstNumber + static_cast<int>(source.lines.size()) - 1;
    const std::size_t width = std::to_string(lastNumber).size();
    const bool isNumbered = source.currentRow >= 0;
    for (int row = 0; row < static_cast<int>(source.lines.size()); ++row) {
        std::string text = row == source.currentRow ? "> " : "  ";
        if (isNumbered) {
            const std::string number = std::to_string(source.firstNumber + row);
            text += std::string(width - number.size(), ' ') + number + "  ";
        }
        output().print(text + source.lines[static_cast<std::size_t>(row)], true, PrintMode::verbatim);
    }
}

}  // namespace

std::optional<DebuggerCommand> debuggerCommandOf(std::string_view answer) {
    const std::size_t start = answer.find_first_not_of(" \t\r");
    if (start == answer.npos) return DebuggerCommand::step;
    switch (answer[start]) {
        case 'c':
        case 'C': return DebuggerCommand::proceed;
        case 's':
        case 'S': return DebuggerCommand::step;
        case 'h':
        case 'H': return DebuggerCommand::halt;
        case 'q':
        case 'Q': return DebuggerCommand::close;
        default: return std::nullopt;
    }
}

void DebuggerPrompt::show(const DebuggerPage& page) {
    output().print(page.title, true, PrintMode::verbatim);
    std::size_t width = 0;
    for (const DebuggerPage::Row& row : page.rows) width = std::max(width, row.name.size());
    for (const DebuggerPage::Row& row : page.rows) {
        const std::string gap = row.value.empty() ? "" : std::string(width - row.name.size() + 2, ' ');
        output().print("  " + row.name + gap + row.value, true, PrintMode::verbatim);
    }
    writeSource(page.source);
}

DebuggerCommand DebuggerPrompt::waitForCommand() {
    for (;;) {
        output().print(question, true, PrintMode::verbatim);
        const std::optional<std::string> answer = host_.readLine();
        if (!answer) return DebuggerCommand::close;
        if (const auto command = debuggerCommandOf(*answer)) return *command;
    }
}

}  // namespace vorpen
