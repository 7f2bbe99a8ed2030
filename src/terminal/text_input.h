// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Standard input as lines and single characters, both from one buffer, so
// that a program may read the rest of a line that another read began.

#include <csignal>
#include <functional>
#include <optional>
#include <string>

namespace vorpen {

class TextInput {
public:
    /// Reads from an open file, which stays open.
    explicit TextInput(int file) : file_(file) {}

    /// Called before each wait for more.
    void setBeforeWait(std::function<void()> call) { beforeWait_ = std::move(call); }

    /// The signals that are blocked during a wait, null for those that are
    /// blocked anyway. One that is blocked now and not during the wait cannot
    /// slip through between the two.
    void setBlockedDuringWait(const sigset_t* signals) { blockedDuringWait_ = signals; }

    /// The next line without its end, a line feed or a carriage return and
    /// line feed; nothing at the end of the input.
    std::optional<std::string> readLine();

    /// The bytes of the next character, which are several for a character of
    /// UTF-8; nothing at the end of the input.
    std::optional<std::string> readCharacter();

    /// True when the last read ended because a signal arrived, and not at the
    /// end of the input.
    [[nodiscard]] bool interrupted() const { return interrupted_; }

private:
    bool fill();
    [[nodiscard]] bool waitsUntilReady() const;

    int file_;
    std::function<void()> beforeWait_;
    const sigset_t* blockedDuringWait_ = nullptr;
    std::string buffer_;
    std::size_t next_ = 0;
    bool interrupted_ = false;
};

}  // namespace vorpen
