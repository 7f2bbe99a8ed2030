// SPDX-License-Identifier: GPL-3.0-or-later
#include "values/key_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

#include "base/output.h"

namespace vorpen {
namespace {

struct KeyClass {
    std::uint64_t base;
    std::size_t longest;
    std::string_view extras;  ///< the characters with the digits from 52 on
};

// clang-format off
constexpr std::string_view punctuation = "., \"'()[]-_:";
constexpr std::array<KeyClass, 4> keyClasses = {{
    {26, 13, ""},              // lower case letters
    {64, 10, punctuation},     // letters and punctuation
    {64, 10, "0123456789.-"},  // letters and digits
    {94,  9, ""},              // any character from the blank on
}};
// clang-format on

constexpr std::uint64_t firstExtraDigit = 52;

bool isLower(char c) { return c >= 'a' && c <= 'z'; }
bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }

unsigned classOf(char c) {
    if (isLower(c)) return 0;
    if (isUpper(c) || punctuation.find(c) != std::string_view::npos) return 1;
    return c >= '0' && c <= '9' ? 2 : 3;
}

std::uint64_t digitOf(char c, unsigned keyClass) {
    if (keyClass == 3) return static_cast<std::uint64_t>(static_cast<signed char>(c)) - ' ';
    if (isLower(c)) return c - 'a';
    if (isUpper(c)) return c - 'A' + 26;
    // A character that the class has no digit for becomes "Z".
    const std::size_t place = keyClasses[keyClass].extras.find(c);
    return place == std::string_view::npos ? firstExtraDigit - 1 : firstExtraDigit + place;
}

char characterOf(std::uint64_t digit, unsigned keyClass) {
    if (keyClass == 3) return static_cast<char>(' ' + digit);
    if (digit < 26) return static_cast<char>('a' + digit);
    if (digit < firstExtraDigit) return static_cast<char>('A' + digit - 26);
    return keyClasses[keyClass].extras[digit - firstExtraDigit];
}

}  // namespace

double zipKey(std::string_view text) {
    unsigned keyClass = 0;
    for (const char c : text) keyClass = std::max(keyClass, classOf(c));
    const auto [base, longest, extras] = keyClasses[keyClass];
    if (text.size() > longest) output().print("key too long", true, PrintMode::markup);
    std::uint64_t packed = 0;
    for (std::size_t k = text.size(); k-- > 0;) packed = packed * base + digitOf(text[k], keyClass);
    return std::bit_cast<double>(packed * 4 + keyClass);
}

std::string unzipKey(double key) {
    const auto bits = std::bit_cast<std::uint64_t>(key);
    const unsigned keyClass = bits & 3;
    std::string text;
    for (std::uint64_t rest = bits >> 2; rest != 0; rest /= keyClasses[keyClass].base) {
        text += characterOf(rest % keyClasses[keyClass].base, keyClass);
    }
    return text;
}

}  // namespace vorpen
