// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Tables of numbers as text. The lines of a table are its rows; blanks, tabs
// and commas separate the numbers of a row. A line that does not begin with a
// number is a comment, wherever it stands. Behind the numbers of a row there
// may be other things, which are dropped.
//
// A number is what the stream extraction of the standard library takes for
// one: an optional sign, digits with an optional point, an optional exponent.
// An exponent without digits spoils the number, one beyond the range of a
// double as well; a number that is too small is 0.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vorpen {

/// The numbers of a table row after row.
struct NumberTable {
    std::vector<double> numbers;
    std::int64_t columns = 0;
    [[nodiscard]] std::int64_t rows() const {
        return columns > 0 ? static_cast<std::int64_t>(numbers.size()) / columns : 0;
    }
};

/// Reads a table. The first row decides how many columns there are.
/// @throws RuntimeError attributed to "load" when there are fewer columns than
/// wanted, and when a row has fewer than the first; `shownName` is the name of
/// the file in that message.
[[nodiscard]] NumberTable readTable(std::string_view text, std::int64_t wantedColumns,
                                    std::string_view shownName);

/// Reads numbers from the first line that begins with one, over all ends of
/// lines, until something else stands.
[[nodiscard]] std::vector<double> readNumbers(std::string_view text);

}  // namespace vorpen
