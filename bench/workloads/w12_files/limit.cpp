// SPDX-License-Identifier: GPL-3.0-or-later
// Plain calls of the system. A file is written anew beside the old one and takes
// its place, as ours is.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <memory>

#include "../timed.h"

int main() {
    const std::size_t n = 6000000;  // check: 1000
    Numbers x(n);
    for (std::size_t k = 0; k < n; ++k) x[k] = static_cast<double>(k) * 0.618033988749895;
    double column = 0;
    timed("load", 5, [&] {
        const int file = open("table.txt", O_RDONLY);
        struct stat facts {};
        fstat(file, &facts);
        const auto size = static_cast<std::size_t>(facts.st_size);
        const auto text = std::make_unique_for_overwrite<char[]>(size);
        if (read(file, text.get(), size) != facts.st_size) std::abort();
        close(file);
        Numbers numbers;
        numbers.reserve(size / 8);
        for (const char *at = text.get(), *const end = at + size; at != end;) {
            double number;
            const auto [next, failure] = std::from_chars(at, end, number);
            if (failure == std::errc{}) numbers.push_back(number);
            at = failure == std::errc{} ? next : at + 1;
        }
        const std::size_t rows = numbers.size() / 10;
        Numbers columns(numbers.size());
        for (std::size_t r = 0; r < rows; ++r)
            for (std::size_t c = 0; c < 10; ++c) columns[c * rows + r] = numbers[10 * r + c];
        column = 0;
        for (std::size_t r = 0; r < rows; ++r) column += columns[r];
    });
    result("load", column);
    Numbers back(n);
    for (int r = 0; r < 5; ++r) {
        timed("write", 1, [&] {
            const int file = open("limit.tmp", O_WRONLY | O_CREAT | O_TRUNC, 0666);
            if (write(file, x.data(), 8 * n) != static_cast<ssize_t>(8 * n)) std::abort();
            close(file);
            std::rename("limit.tmp", "limit.bin");
        });
        timed("read", 1, [&] {
            const int file = open("limit.bin", O_RDONLY);
            if (read(file, back.data(), 8 * n) != static_cast<ssize_t>(8 * n)) std::abort();
            close(file);
        });
    }
    result("read", back[n - 3]);
}
