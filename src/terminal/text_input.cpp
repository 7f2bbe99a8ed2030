// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/text_input.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace vorpen {
namespace {

constexpr std::size_t readBytes = std::size_t{1} << 16;

/// How many bytes a character has by its first byte, in UTF-8.
std::size_t characterLength(unsigned char first) {
    if (first >= 0xC2 && first < 0xE0) return 2;
    if (first >= 0xE0 && first < 0xF0) return 3;
    if (first >= 0xF0 && first < 0xF5) return 4;
    return 1;
}

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

}  // namespace

TextInput::Wait TextInput::waitUntilReady(int milliseconds) const {
    pollfd wanted{file_, POLLIN, 0};
    const timespec limit{milliseconds / 1000, milliseconds % 1000 * 1000000L};
    const int ready = ppoll(&wanted, 1, milliseconds < 0 ? nullptr : &limit, blockedDuringWait_);
    if (ready < 0 && errno == EINTR) return Wait::interrupted;
    return ready == 0 ? Wait::late : Wait::ready;
}

bool TextInput::fill() {
    if (beforeWait_) beforeWait_();
    interrupted_ = waitUntilReady() == Wait::interrupted;
    if (interrupted_) return false;
    buffer_.erase(0, next_);
    next_ = 0;
    const std::size_t held = buffer_.size();
    buffer_.resize(held + readBytes);
    const ssize_t got = ::read(file_, buffer_.data() + held, readBytes);
    interrupted_ = got < 0 && errno == EINTR;
    buffer_.resize(held + (got > 0 ? static_cast<std::size_t>(got) : 0));
    return got > 0;
}

std::optional<std::string> TextInput::readLine() {
    std::size_t searched = 0;
    for (;;) {
        const std::size_t end = buffer_.find('\n', next_ + searched);
        if (end != std::string::npos) {
            std::string line = buffer_.substr(next_, end - next_);
            if (line.ends_with('\r')) line.pop_back();
            next_ = end + 1;
            return line;
        }
        searched = buffer_.size() - next_;
        if (fill()) continue;
        if (interrupted_ || searched == 0) return std::nullopt;
        std::string line = buffer_.substr(next_);
        next_ = buffer_.size();
        return line;
    }
}

std::optional<std::string> TextInput::readSome(int milliseconds) {
    if (next_ == buffer_.size()) {
        if (milliseconds >= 0 && waitUntilReady(milliseconds) == Wait::late) return std::string();
        if (!fill()) return std::nullopt;
    }
    std::string bytes = buffer_.substr(next_);
    next_ = buffer_.size();
    return bytes;
}

std::optional<std::string> TextInput::readCharacter() {
    if (next_ == buffer_.size() && !fill()) return std::nullopt;
    const std::size_t wanted = characterLength(static_cast<unsigned char>(buffer_[next_]));
    std::size_t length = 1;
    while (length < wanted && (next_ + length < buffer_.size() || fill()) &&
           isContinuation(buffer_[next_ + length]))
        ++length;
    std::string character = buffer_.substr(next_, length);
    next_ += length;
    return character;
}

}  // namespace vorpen
