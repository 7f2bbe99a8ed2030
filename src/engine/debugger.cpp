// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/debugger.h"

#include <algorithm>
#include <cstdint>

#include "base/errors.h"
#include "base/interrupt.h"
#include "base/number_text.h"
#include "console/console_text.h"
#include "console/markup.h"
#include "display/display.h"
#include "eval/user_func.h"
#include "frontend/input.h"
#include "values/mathmatrix.h"

namespace vorpen {
namespace {

// ---- values

constexpr int elementsShown = 10;
constexpr int digitsShown = 5;

/// What fits a line beside the names; who wants all of a string displays it.
constexpr std::size_t longestValue = 250;

/// A value on the console that is used while this lives, and that nobody else
/// reads.
class ScratchConsole {
public:
    ScratchConsole() : before_(console()) {
        setConsole(&text_);
        text_.setWrapWidth(longestValue);
    }
    ~ScratchConsole() { setConsole(&before_); }
    ScratchConsole(const ScratchConsole&) = delete;
    ScratchConsole& operator=(const ScratchConsole&) = delete;

    /// All lines in one, without markup and what sets columns apart.
    [[nodiscard]] std::string plainText() const {
        constexpr Colour anyColour = 0;
        std::string result;
        for (std::int64_t n = 0; n <= text_.currentLine(); ++n) {
            std::vector<TextRun> runs;
            const std::string line = decode(text_.getLine(n), anyColour, runs);
            result += ' ' + line;
        }
        const auto areBlanks = [](char a, char b) { return a == ' ' && b == ' '; };
        result.erase(std::unique(result.begin(), result.end(), areBlanks), result.end());
        const std::size_t first = result.find_first_not_of(' ');
        return first == result.npos ? "" : result.substr(first, result.find_last_not_of(' ') + 1 - first);
    }

private:
    ConsoleText& before_;
    ConsoleText text_;
};

std::string displayedText(const Value& value) {
    const ScratchConsole scratch;
    Display(value, false, false, false);
    return scratch.plainText();
}

std::string numbersText(const Value& value) {
    const int nrow = value.nrow(), ncol = value.isEmpty() || nrow == 0 ? 0 : value.size() / nrow;
    std::string text;
    if (value.size() != 1) text = "(" + std::to_string(nrow) + "x" + std::to_string(ncol) + ")";
    for (int column = 0; column < std::min(ncol, elementsShown); ++column) {
        if (!text.empty()) text += ' ';
        const int place = column * nrow;
        const double x = value.valueType() == INTEGER_VAL ? asInt(value)[place] : asDouble(value)[place];
        appendDoubleText(text, x, digitsShown);
    }
    return ncol > elementsShown ? text + " ..." : text;
}

/// As one line of limited length, since the names stand beside it.
std::string oneLine(std::string text) {
    std::ranges::replace_if(text, [](unsigned char c) { return c < ' '; }, ' ');
    if (text.size() > longestValue) text.replace(longestValue, text.npos, "...");
    return text;
}

// ---- source

constexpr int linesBefore = 5, linesBehind = 10;

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const bool isCut = end > start && text[end - 1] == '\r';
        lines.push_back(text.substr(start, end - start - (isCut ? 1 : 0)));
        start = end + 1;
    }
    return lines;
}

/// What was typed has no file and its lines no numbers.
SourceExcerpt typedSource(const std::string& text) {
    SourceExcerpt excerpt;
    std::string withLineFeeds = text;
    std::ranges::replace(withLineFeeds, '\r', '\n');
    excerpt.lines = linesOf(withLineFeeds);
    std::erase(excerpt.lines, std::string());
    return excerpt;
}

SourceExcerpt sourceOf(const UserFunc& function, int line) {
    const FunctionSource& source = function.source();
    return source.typed ? typedSource(source.text) : showSource(source.text, line);
}

}  // namespace

// ---- what is shown

std::string summarise(const Value* value) {
    if (!value) return {};
    if (value->isString() && value->isNumericKind()) return value->text();
    const bool areNumbers = value->valueType() == INTEGER_VAL || value->valueType() == DOUBLE_VAL;
    return areNumbers && value->form() != FORM_KEY ? numbersText(*value) : displayedText(*value);
}

SourceExcerpt showSource(const std::string& file, int line) {
    SourceExcerpt excerpt;
    const std::optional<std::string> text = readScript(file);
    if (!text) {
        excerpt.lines = {file + "could not open file"};
        return excerpt;
    }
    std::vector<std::string> all = linesOf(*text);
    const auto count = static_cast<std::int64_t>(all.size());
    const std::int64_t first = std::clamp<std::int64_t>(std::int64_t{line} - linesBefore, 1, count + 1);
    const std::int64_t last = std::clamp<std::int64_t>(std::int64_t{line} + linesBehind, 0, count);
    excerpt.firstNumber = static_cast<int>(first);
    for (std::int64_t number = first; number <= last; ++number)
        excerpt.lines.push_back(std::move(all[static_cast<std::size_t>(number - 1)]));
    if (line >= first && line <= last) excerpt.currentRow = static_cast<int>(line - first);
    return excerpt;
}

std::string SourceExcerpt::text() const {
    std::string result;
    for (const std::string& line : lines) result += line + "\r\n";
    return result;
}

std::string DebuggerPage::names() const {
    std::string result;
    for (const Row& row : rows) result += (&row == rows.data() ? "" : "\n") + row.name;
    return result;
}

std::string DebuggerPage::values() const {
    std::string result;
    for (const Row& row : rows) result += (&row == rows.data() ? "" : "\n") + row.value;
    return result;
}

DebuggerPage Debugger::page(int line, const Value* value, const UserFunc* function) const {
    DebuggerPage page;
    page.title = (stepping_ ? "Stepping" : "Breakpoint") + (" at line " + std::to_string(line));
    page.rows.push_back({"expr value", oneLine(summarise(value))});
    if (!function) return page;
    page.title += " in " + function->name();
    page.rows.push_back({"Locals:", ""});
    for (const UserFunc::Local& local : function->locals())
        page.rows.push_back({local.name, oneLine(summarise(local.value.get()))});
    page.source = sourceOf(*function, line);
    return page;
}

// ---- a stop

void Debugger::setView(DebuggerView* view) {
    if (view_) view_->setIdleListener({});
    view_ = view;
    if (view_) view_->setIdleListener([this](DebuggerCommand command) {
        if (command == DebuggerCommand::halt) return;  // nothing runs
        act(command);
        if (!stepping_ && command != DebuggerCommand::close) view_->hide();
    });
}

void Debugger::beginRun() {
    breakpointsActive_ = true;
    hasSaidThatItGoesOn_ = false;
}

/// Statements look at the state of the run, which is that of another engine
/// while this one is not current.
void Debugger::setStepping(bool on) {
    stepping_ = on;
    if (runState().breakHandler == this) runState().debugStepping = on;
}

bool Debugger::openView() {
    if (view_ && view_->open()) return true;
    // A loop may have come here a million times.
    if (!std::exchange(hasSaidThatItGoesOn_, true))
        host_.messageBox("Warning!", "Could not create the debugger window");
    return false;
}

DebuggerCommand Debugger::ask() {
    struct Waiting {
        explicit Waiting(bool& flag) : flag_(flag) { flag_ = true; }
        ~Waiting() { flag_ = false; }
        bool& flag_;
    } const waiting(isWaiting_);
    return view_->waitForCommand();
}

void Debugger::act(DebuggerCommand command) {
    switch (command) {
        case DebuggerCommand::step: setStepping(true); break;
        case DebuggerCommand::proceed: setStepping(false); break;
        case DebuggerCommand::close:
            setStepping(false);
            breakpointsActive_ = false;
            view_->destroy();
            break;
        case DebuggerCommand::halt: break;
    }
}

void Debugger::debugPause(int line, const Value* value, const UserFunc* function) {
    checkInterrupt();
    if (!breakpointsActive_ || isWaiting_ || !openView()) return;
    view_->show(page(line, value, function));
    const DebuggerCommand command = ask();
    act(command);
    if (!stepping_ && command != DebuggerCommand::close) view_->hide();
    checkInterrupt();
    if (command == DebuggerCommand::halt) raiseRuntimeError("execution halted from debugger");
}

}  // namespace vorpen
