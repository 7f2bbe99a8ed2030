// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Standard output, collected in memory and written in large pieces. The
// stream classes of the standard library are left aside because they take
// longer to set up than a short calculation takes in all.

#include <string>
#include <string_view>

namespace vorpen {

class TextOutput {
public:
    /// Writes to an open file, which stays open. When `lineByLine` is set each
    /// complete line goes out at once.
    explicit TextOutput(int file, bool lineByLine) : file_(file), lineByLine_(lineByLine) {}
    TextOutput(const TextOutput&) = delete;
    TextOutput& operator=(const TextOutput&) = delete;
    ~TextOutput() { flush(); }

    void write(std::string_view text);
    /// The text and a line feed.
    void writeLine(std::string_view text);
    void flush();

    /// True once something could not be written; from then on all is dropped.
    [[nodiscard]] bool failed() const { return failed_; }

private:
    int file_;
    bool lineByLine_;
    bool failed_ = false;
    std::string pending_;
};

}  // namespace vorpen
