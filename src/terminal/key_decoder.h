// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// From the bytes of a terminal to keys. A terminal sends a character as UTF-8,
// a key that types nothing as an escape sequence (ECMA-48, Control Functions
// for Coded Character Sets, 1991, and what xterm made of it), and what is
// pasted between two marks. Bytes may come in any pieces, and any bytes may
// come: a sequence that means nothing here is dropped, a byte that is no UTF-8
// counts as a character of its own.

#include <optional>
#include <string>
#include <string_view>

#include "console/command_line.h"

namespace vorpen {

struct TerminalKey {
    enum class Kind { key, paste };

    Kind kind = Kind::key;
    KeyKind message = KeyKind::character;
    int code = 0;          ///< of a key: a Windows-1252 character, or a KeyCode
    bool control = false;  ///< the Control key is down
    std::string text;      ///< what was pasted, in UTF-8
};

class KeyDecoder {
public:
    void feed(std::string_view bytes);

    /// The next key, if its bytes have come. With `isEnd` an unfinished
    /// sequence is taken for what it is so far: the Escape key, for one.
    std::optional<TerminalKey> next(bool isEnd = false);

    /// True when something waits for its end.
    [[nodiscard]] bool isUnfinished() const { return start_ < bytes_.size() || isPasting_; }
    /// True when the end of what is pasted has not come.
    [[nodiscard]] bool isPasting() const { return isPasting_; }
    /// The bytes that no key was made of.
    std::string takeRest();

private:
    std::optional<TerminalKey> nextSequence(bool isEnd);
    std::optional<TerminalKey> nextPasted(bool isEnd);
    std::optional<TerminalKey> nextCharacter(bool isEnd);
    [[nodiscard]] std::string_view rest() const { return std::string_view(bytes_).substr(start_); }
    void drop(std::size_t count);

    std::string bytes_;
    std::size_t start_ = 0;
    std::size_t searched_ = 0;  ///< of what is pasted
    bool isPasting_ = false;
};

}  // namespace vorpen
