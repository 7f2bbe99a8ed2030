// SPDX-License-Identifier: GPL-3.0-or-later
// Strings as the language has them: arrays of codes of 32 bits, each with
// memory of its own.
#include <charconv>
#include <cstdint>
#include <string>

#include "../timed.h"

using Codes = std::vector<std::int32_t>;

int main() {
    const int n = 100000;  // check: 1000
    Numbers v = fractions(n);
    for (double& number : v) number *= 1000;
    std::string words;
    for (long k = 0; k < n; ++k) words += (k > 0 ? " word" : "word") + std::to_string(k * 7919 % 10007);
    Codes text(words.begin(), words.end());
    std::vector<Codes> pieces;
    timed("split", 7, [&] {
        std::vector<Codes> found;
        for (std::size_t first = 0; first < text.size();) {
            if (text[first] == ' ') {
                ++first;
                continue;
            }
            std::size_t last = first;
            while (last < text.size() && text[last] != ' ') ++last;
            found.emplace_back(text.begin() + static_cast<std::ptrdiff_t>(first),
                               text.begin() + static_cast<std::ptrdiff_t>(last));
            first = last;
        }
        pieces = std::move(found);
    });
    result("split", static_cast<double>(pieces.size()));
    timed("join", 7, [&] {
        std::size_t total = pieces.size() - 1;
        for (const Codes& piece : pieces) total += piece.size();
        Codes joined(total);
        auto to = joined.begin();
        for (const Codes& piece : pieces) {
            if (to != joined.begin()) *to++ = ' ';
            to = std::copy(piece.begin(), piece.end(), to);
        }
        text = std::move(joined);
    });
    result("join", static_cast<double>(text.size()));
    std::size_t length = 0;
    timed("str", 7, [&] {
        length = 0;
        for (const double number : v) {
            char digits[40];
            const char* const last = std::to_chars(digits, digits + 40, number, std::chars_format::general, 9).ptr;
            const Codes codes(static_cast<const char*>(digits), last);
            use(codes);
            length += codes.size();
        }
    });
    result("str", static_cast<double>(length));
}
