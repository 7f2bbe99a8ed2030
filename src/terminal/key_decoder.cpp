// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/key_decoder.h"

#include <algorithm>
#include <utility>

#include "base/encoding.h"

namespace vorpen {
namespace {

constexpr char escape = '\x1b';
constexpr std::string_view pasteEnd = "\x1b[201~";
constexpr int pasteStart = 200;

/// No sequence of a key is longer; what is longer is no sequence.
constexpr std::size_t longestSequence = 32;

struct FinalKey {
    char final;
    int code;
};
constexpr FinalKey finalKeys[] = {{'A', keyUp},   {'B', keyDown}, {'C', keyRight},
                                  {'D', keyLeft}, {'H', keyHome}, {'F', keyEnd}};

struct NumberedKey {
    int number, code;
};
constexpr NumberedKey numberedKeys[] = {{1, keyHome}, {7, keyHome}, {4, keyEnd}, {8, keyEnd},
                                        {3, keyDelete}, {15, keyF5}, {20, keyF9}};

TerminalKey keyDownOf(int code, bool control) {
    TerminalKey key;
    key.message = KeyKind::down;
    key.code = code;
    key.control = control;
    return key;
}

/// A character as the editor knows it.
TerminalKey characterOf(int code) {
    TerminalKey key;
    key.code = code;
    switch (code) {
        case '\n': key.code = '\r'; break;
        case 127: key.code = '\b'; break;
        case '\b':
        case '\t':
        case '\r':
        case escape: break;
        default: key.control = code < ' '; break;
    }
    return key;
}

struct Parameters {
    int first = 0, second = 0;
};

Parameters readParameters(std::string_view text) {
    Parameters result;
    int* value = &result.first;
    for (const char c : text) {
        if (c == ';' && value == &result.first)
            value = &result.second;
        else if (c == ';')
            break;
        else if (c >= '0' && c <= '9')
            *value = std::min(*value * 10 + (c - '0'), 9999);
    }
    return result;
}

/// xterm counts the modifiers from 1: Shift 1, Alt 2, Control 4.
bool hasControl(int modifiers) { return modifiers > 0 && ((modifiers - 1) & 4) != 0; }

std::optional<TerminalKey> keyOfSequence(std::string_view parameters, char final) {
    const Parameters values = readParameters(parameters);
    const bool control = hasControl(values.second);
    for (const auto& key : finalKeys)
        if (key.final == final) return keyDownOf(key.code, control);
    if (final != '~') return std::nullopt;
    for (const auto& key : numberedKeys)
        if (key.number == values.first) return keyDownOf(key.code, control);
    return std::nullopt;
}

std::size_t characterLength(unsigned char first) {
    if (first >= 0xC2 && first < 0xE0) return 2;
    if (first >= 0xE0 && first < 0xF0) return 3;
    if (first >= 0xF0 && first < 0xF5) return 4;
    return 1;
}

bool isBetween(char c, char first, char last) { return c >= first && c <= last; }

}  // namespace

void KeyDecoder::feed(std::string_view bytes) {
    if (start_ == bytes_.size() && !isPasting_) {
        bytes_.clear();
        start_ = 0;
    }
    bytes_ += bytes;
}

void KeyDecoder::drop(std::size_t count) { start_ += count; }

std::string KeyDecoder::takeRest() {
    std::string left = isPasting_ ? "\x1b[200~" : "";
    left += rest();
    bytes_.clear();
    start_ = searched_ = 0;
    isPasting_ = false;
    return left;
}

std::optional<TerminalKey> KeyDecoder::next(bool isEnd) {
    while (start_ < bytes_.size()) {
        if (isPasting_) return nextPasted(isEnd);
        const std::size_t before = start_;
        auto key = rest()[0] == escape ? nextSequence(isEnd) : nextCharacter(isEnd);
        if (key || start_ == before) return key;
    }
    return std::nullopt;
}

/// Answers nothing when more has to come, and also when it dropped something.
std::optional<TerminalKey> KeyDecoder::nextSequence(bool isEnd) {
    const std::string_view text = rest();
    const auto escapeKey = [this] {
        drop(1);
        return characterOf(escape);
    };
    if (text.size() == 1) return isEnd ? std::optional(escapeKey()) : std::nullopt;
    if (text[1] == 'O') {
        if (text.size() == 2) return isEnd ? std::optional(escapeKey()) : std::nullopt;
        auto key = keyOfSequence({}, text[2]);
        if (!key) return escapeKey();
        drop(3);
        return key;
    }
    if (text[1] != '[') return escapeKey();
    std::size_t at = 2;
    while (at < text.size() && at < longestSequence && isBetween(text[at], ' ', '?')) ++at;
    if (at == text.size()) {
        if (isEnd) drop(at);
        return std::nullopt;
    }
    const char final = text[at];
    // The console of Linux sends function keys with a second bracket.
    if (final == '[' && at == 2) {
        if (text.size() == 3 && !isEnd) return std::nullopt;
        drop(std::min<std::size_t>(text.size(), 4));
        return std::nullopt;
    }
    const std::string_view parameters = text.substr(2, at - 2);
    const bool isSequence = isBetween(final, '@', '~');
    drop(isSequence ? at + 1 : at);
    if (!isSequence) return std::nullopt;
    if (final == '~' && readParameters(parameters).first == pasteStart) {
        isPasting_ = true;
        searched_ = 0;
        return next(isEnd);
    }
    return keyOfSequence(parameters, final);
}

std::optional<TerminalKey> KeyDecoder::nextPasted(bool isEnd) {
    const std::string_view text = rest();
    const std::size_t end = text.find(pasteEnd, searched_);
    if (end == std::string_view::npos && !isEnd) {
        // The mark may have come in part.
        searched_ = text.size() - std::min(text.size(), pasteEnd.size() - 1);
        return std::nullopt;
    }
    TerminalKey key;
    key.kind = TerminalKey::Kind::paste;
    key.text = text.substr(0, end);
    isPasting_ = false;
    searched_ = 0;
    drop(end == std::string_view::npos ? text.size() : end + pasteEnd.size());
    return key;
}

std::optional<TerminalKey> KeyDecoder::nextCharacter(bool isEnd) {
    const std::string_view text = rest();
    std::size_t length = characterLength(static_cast<unsigned char>(text[0]));
    if (length > text.size() && !isEnd) {
        std::size_t have = 1;
        while (have < text.size() && (static_cast<unsigned char>(text[have]) & 0xC0) == 0x80) ++have;
        if (have == text.size()) return std::nullopt;
    }
    if (length > text.size() || !isValidUtf8(text.substr(0, length))) length = 1;
    const std::string code = fromUtf8(text.substr(0, length));
    drop(length);
    // A byte order mark is no character.
    if (code.empty()) return std::nullopt;
    return characterOf(static_cast<unsigned char>(code[0]));
}

}  // namespace vorpen
