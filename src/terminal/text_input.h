// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Standard input as lines and single characters, both from one buffer, so
// that a program may read the rest of a line that another read began.

#include <csignal>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

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

    /// Some bytes, whatever comes; nothing at the end of the input. With a
    /// limit of the wait, in milliseconds, none when nothing came in time.
    std::optional<std::string> readSome(int milliseconds = -1);
    /// Puts bytes back that were read too early.
    void giveBack(std::string_view bytes) { buffer_.insert(next_, bytes); }

    /// True when the last read ended because a signal arrived, and not at the
    /// end of the input.
    [[nodiscard]] bool interrupted() const { return interrupted_; }

private:
    bool fill();
    enum class Wait { ready, late, interrupted };
    [[nodiscard]] Wait waitUntilReady(int milliseconds = -1) const;

    int file_;
    std::function<void()> beforeWait_;
    const sigset_t* blockedDuringWait_ = nullptr;
    std::string buffer_;
    std::size_t next_ = 0;
    bool interrupted_ = false;
};

}  // namespace vorpen
