// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The host of a program without windows. Message boxes go to standard error.
// A question is put to the user only when someone sits at the terminal;
// otherwise it is answered so that nothing is lost. Characters and lines that
// a running program asks for come from the same standard input as the typed
// lines.

#include <array>
#include <csignal>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/host.h"
#include "terminal/activity_line.h"
#include "terminal/terminal_mode.h"
#include "terminal/text_input.h"
#include "terminal/text_output.h"

namespace vorpen {

class TerminalHost final : public Host {
public:
    /// Lends the streams; `home` is the directory given on the command line.
    TerminalHost(TextOutput& output, TextInput& input, std::optional<std::string> home);
    TerminalHost(const TerminalHost&) = delete;
    TerminalHost& operator=(const TerminalHost&) = delete;
    ~TerminalHost() override { input_.setBeforeWait({}); }

    /// Shows what the console holds of an unfinished line; called before the
    /// program waits for the user.
    void setShowUnfinished(std::function<void()> show) { showUnfinished_ = std::move(show); }

    /// Where lines of a running program are typed at a terminal; without one
    /// they come from the input as it is.
    void setLineReader(std::function<std::optional<std::string>()> read) { readTypedLine_ = std::move(read); }
    /// The row that has to go while something else is written; lent.
    void setActivityLine(ActivityLine* line) { activity_ = line; }
    /// What `clipboardText` answers, in UTF-8: a terminal pastes by itself.
    void setPastedText(std::string_view utf8);

    std::optional<std::string> clipboardText() override { return pasted_; }
    void messageBox(std::string_view title, std::string_view text) override;
    bool ask(std::string_view title, std::string_view text, bool safe) override;
    /// The code from 0 to 255.
    std::optional<int> readCharacter() override;
    std::optional<std::string> readLine() override;
    void sleepMilliseconds(double milliseconds, bool serveEvents) override;
    std::string programDirectory() override;
    std::string shareDirectory() override;
    int runCommand(const std::string& command) override;
    int runProgram(const std::string& path, const std::vector<std::string>& arguments,
                   const ProgramSettings& settings) override;

private:
    void beforeWait();
    void waitForEnter();
    std::optional<std::string> read(TerminalMode::Kind kind, std::optional<std::string> (TextInput::*readNext)());

    TextOutput& output_;
    TextInput& input_;
    std::optional<std::string> home_;
    std::optional<std::string> programDirectory_;
    std::function<void()> showUnfinished_;
    std::function<std::optional<std::string>()> readTypedLine_;
    ActivityLine* activity_ = nullptr;
    std::optional<std::string> pasted_;
};

/// While it lives, a signal that ends a program (Control+C, a hang-up, a
/// request to terminate) only ends the wait for input.
class SignalsEndWait {
public:
    explicit SignalsEndWait(TextInput& input);
    SignalsEndWait(const SignalsEndWait&) = delete;
    SignalsEndWait& operator=(const SignalsEndWait&) = delete;
    ~SignalsEndWait();

    /// True once a hang-up or a request to terminate has arrived.
    [[nodiscard]] static bool mustLeave();
    /// From now on nobody is asked anything.
    static void noteLeaving();

private:
    static constexpr std::array signals_ = {SIGINT, SIGHUP, SIGTERM};

    TextInput& input_;
    sigset_t blockedBefore_{};
    std::array<struct sigaction, signals_.size()> actionsBefore_{};
};

}  // namespace vorpen
