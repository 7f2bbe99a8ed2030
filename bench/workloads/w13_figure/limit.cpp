// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdlib>
#include <string>

#include "../timed.h"

/// A number of at most three digits.
char* digits(char* at, int n) {
    if (n >= 100) *at++ = static_cast<char>('0' + n / 100);
    if (n >= 10) *at++ = static_cast<char>('0' + n / 10 % 10);
    *at++ = static_cast<char>('0' + n % 10);
    return at;
}

void write(const char* name, const std::string& text) {
    std::FILE* const file = std::fopen(name, "wb");
    if (!file || std::fwrite(text.data(), 1, text.size(), file) != text.size()) std::abort();
    std::fclose(file);
}

int main() {
    const std::size_t n = 100000;     // check: 100
    const std::size_t texts = 20000;  // check: 100
    Numbers x(n), y(n);
    for (std::size_t k = 0; k < n; ++k) {
        x[k] = static_cast<double>(k) * 100 / static_cast<double>(n - 1);
        y[k] = std::sin(x[k]) * std::exp(-x[k] / 50);
    }
    const std::string head = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"570\" height=\"406\" fill=\"none\">\n";
    timed("svg", 7, [&] {
        double low = y[0], high = y[0];
        for (const double value : y) {
            low = value < low ? value : low;
            high = value > high ? value : high;
        }
        std::string text = head + "<polyline stroke=\"black\" points=\"\n";
        const std::size_t start = text.size();
        text.resize(start + 9 * n);
        char* at = text.data() + start;
        for (std::size_t k = 0; k < n; ++k) {
            at = digits(at, static_cast<int>(57 + x[k] * 4.8));
            *at++ = ' ';
            at = digits(at, static_cast<int>(345 - (y[k] - low) / (high - low) * 337));
            *at++ = ',';
            *at++ = ' ';
        }
        text.resize(static_cast<std::size_t>(at - text.data()));
        write("limit.svg", text + "\n\"/>\n</svg>\n");
    });
    timed("texts", 3, [&] {
        std::string text = head;
        for (std::size_t k = 1; k <= texts; ++k) {
            text += "<text x=\"" + std::to_string(57 + 484 * k / texts) + "\" y=\"176\">a</text>\n";
        }
        write("limit.svg", text + "</svg>\n");
    });
}
