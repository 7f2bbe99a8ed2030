// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/line_editor.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>

#include "base/encoding.h"
#include "terminal/terminal_host.h"
#include "terminal/terminal_mode.h"

namespace vorpen {
namespace {

constexpr int controlC = 3, controlD = 4, controlL = 12, controlZ = 26, controlSpace = 0;

/// How long the bytes of one key may be on their way; a person is slower.
constexpr int keyMilliseconds = 40;

bool isOneLine(std::string_view text) {
    const std::size_t end = text.find_last_not_of("\r\n");
    return end == std::string_view::npos || text.substr(0, end + 1).find_first_of("\r\n") == std::string_view::npos;
}

bool isNamePart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

/// Whether the terminal folds rows that have become too long for it; the others
/// cut them off. Most fold; those that do not can be told by what they set.
bool terminalFolds() {
    const auto holds = [](const char* name, std::string_view start) {
        const char* text = std::getenv(name);
        return text && std::string_view(text).starts_with(start);
    };
    if (holds("TMUX", "")) return true;
    return !holds("XTERM_VERSION", "") && !holds("TERM", "screen") && !holds("TERM", "linux");
}

/// While it lives, a change of the terminal's size and the end of a stop end
/// the wait for keys, and only there.
class SizeEndsWait {
public:
    SizeEndsWait() {
        sigset_t blocked;
        sigemptyset(&blocked);
        for (const int signal : signals_) sigaddset(&blocked, signal);
        sigprocmask(SIG_BLOCK, &blocked, &blockedBefore_);
        struct sigaction action {};
        action.sa_handler = [](int) {};
        for (std::size_t i = 0; i < signals_.size(); ++i) sigaction(signals_[i], &action, &before_[i]);
    }
    SizeEndsWait(const SizeEndsWait&) = delete;
    SizeEndsWait& operator=(const SizeEndsWait&) = delete;
    ~SizeEndsWait() {
        for (std::size_t i = 0; i < signals_.size(); ++i) sigaction(signals_[i], &before_[i], nullptr);
        sigprocmask(SIG_SETMASK, &blockedBefore_, nullptr);
    }

private:
    static constexpr std::array signals_ = {SIGWINCH, SIGCONT};
    sigset_t blockedBefore_{};
    std::array<struct sigaction, signals_.size()> before_{};
};

}  // namespace

LineEditor::End LineEditor::read() {
    const SignalsEndWait guard(input_);
    const SizeEndsWait sizeGuard;
    std::optional<End> end;
    do {
        mustStop_ = false;
        {
            const TerminalMode mode(STDIN_FILENO, TerminalMode::Kind::editing);
            noteSize();
            row_.show(line_);
            while (!end && !mustStop_) end = takeKeys();
        }
        if (mustStop_) stop();
    } while (!end);
    input_.giveBack(decoder_.takeRest());
    return *end;
}

/// Waits for keys and takes all that have come, then shows the line.
std::optional<LineEditor::End> LineEditor::takeKeys() {
    const bool waits = !decoder_.isUnfinished();
    const auto bytes = waits ? input_.readSome() : input_.readSome(keyMilliseconds);
    if (!bytes) {
        if (input_.interrupted() && !SignalsEndWait::mustLeave()) {
            // The size has changed, or the program goes on after a stop.
            const int before = columns_;
            noteSize();
            if (columns_ < before && terminalFolds())
                row_.eraseFolded(columns_);
            else
                row_.erase();
            row_.show(line_);
            return std::nullopt;
        }
        finishRow();
        return End::input;
    }
    const bool isEnd = bytes->empty();
    decoder_.feed(*bytes);
    while (const auto key = decoder_.next(isEnd && !decoder_.isPasting())) {
        if (const auto end = takeKey(*key)) return end;
        if (mustStop_) return std::nullopt;
    }
    row_.show(line_);
    return std::nullopt;
}

std::optional<LineEditor::End> LineEditor::takeKey(const TerminalKey& key) {
    if (key.kind == TerminalKey::Kind::paste) return takePaste(key);
    if (completes(key)) {
        completeLine();
        return std::nullopt;
    }
    if (key.control && key.message == KeyKind::character) {
        switch (key.code) {
            case controlC: finishRow(); return End::dropped;
            case controlL: clearScreen(); return std::nullopt;
            case controlZ: mustStop_ = true; return std::nullopt;
            case controlD:
                if (line_.line().empty()) {
                    finishRow();
                    return End::input;
                }
                line_.setControl(false);
                line_.onKey(KeyKind::down, keyDelete);
                return std::nullopt;
            default: break;
        }
    }
    line_.setControl(key.control);
    if (line_.onKey(key.message, key.code) != CommandLine::finished) return std::nullopt;
    finishRow();
    return End::line;
}

/// A line without a prompt answers a program, which shows it itself.
void LineEditor::finishRow() {
    if (line_.promptVisible())
        row_.finish(line_);
    else
        row_.erase();
}

std::optional<LineEditor::End> LineEditor::takePaste(const TerminalKey& key) {
    if (isOneLine(key.text)) {
        line_.paste(fromUtf8(key.text));
        return std::nullopt;
    }
    pasted_ = key.text;
    row_.erase();
    return End::paste;
}

// ---- completion

/// Tab completes behind a letter; at any other place, and where text streams
/// in, it is the editor's own.
bool LineEditor::completes(const TerminalKey& key) const {
    if (!completer_ || key.message != KeyKind::character) return false;
    if (key.code == controlSpace && key.control) return true;
    const int caret = line_.caret();
    return key.code == '\t' && caret > 0 && isNamePart(line_.line()[caret - 1]) && !decoder_.isUnfinished();
}

void LineEditor::completeLine() {
    const std::vector<std::string> candidates = complete(line_, completer_);
    if (candidates.empty()) return;
    row_.erase();
    std::string text;
    for (const std::string& row : candidateRows(candidates, columns_)) text += row + "\n";
    output_.write(toUtf8(text));
}

// ---- the screen

void LineEditor::clearScreen() {
    output_.write("\x1b[H\x1b[2J");
    row_.forget();
}

void LineEditor::stop() {
    row_.finish(line_);
    kill(0, SIGTSTP);
}

void LineEditor::noteSize() {
    columns_ = terminalSize(STDOUT_FILENO).columns;
    row_.setColumns(columns_);
}

}  // namespace vorpen
