// SPDX-License-Identifier: GPL-3.0-or-later
// Strings are arrays of 32-bit codes, each with a block of its own, as they are
// in the language.
#include <charconv>
#include <cstdint>
#include <string>
#include <vector>

using Codes = std::vector<std::int32_t>;

int main() {
    std::string start = "word0";
    for (long k = 1; k < 100000; ++k) start += " word" + std::to_string(k * 7919 % 10007);
    Codes text(start.begin(), start.end());
    std::size_t n = 0;
    for (int k = 0; k < 10; ++k) {
        std::vector<Codes> words;
        for (std::size_t i = 0; i < text.size();) {
            std::size_t end = i;
            while (end < text.size() && text[end] != ' ') ++end;
            words.emplace_back(text.begin() + i, text.begin() + end);
            i = end + 1;
        }
        Codes joined;
        joined.reserve(text.size());
        for (const Codes& word : words) {
            if (!joined.empty()) joined.push_back(' ');
            joined.insert(joined.end(), word.begin(), word.end());
        }
        text = std::move(joined);
        for (int j = 1; j <= 100000; ++j) {
            char buffer[32];
            const auto end =
                std::to_chars(buffer, buffer + sizeof buffer, 0.618033988749895 * j, std::chars_format::general, 9);
            n += Codes(buffer, end.ptr).size();
        }
    }
    return n == 0;
}
