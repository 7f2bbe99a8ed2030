// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/text_output.h"

#include <unistd.h>

#include <cerrno>

namespace vorpen {
namespace {

// Large enough that the cost of a system call does not show.
constexpr std::size_t pieceBytes = std::size_t{1} << 16;

}  // namespace

void TextOutput::write(std::string_view text) {
    pending_ += text;
    if (pending_.size() >= pieceBytes) flush();
}

void TextOutput::writeLine(std::string_view text) {
    pending_ += text;
    pending_ += '\n';
    if (lineByLine_ || pending_.size() >= pieceBytes) flush();
}

void TextOutput::flush() {
    const char* next = pending_.data();
    std::size_t rest = failed_ ? 0 : pending_.size();
    while (rest > 0) {
        const ssize_t written = ::write(file_, next, rest);
        if (written >= 0) {
            next += written;
            rest -= static_cast<std::size_t>(written);
        } else if (errno != EINTR) {
            failed_ = true;
            break;
        }
    }
    pending_.clear();
}

}  // namespace vorpen
