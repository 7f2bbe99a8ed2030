// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/text_table.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include "base/errors.h"

namespace vorpen {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// White space other than the end of a line.
bool isSeparator(char c) { return c == ' ' || c == ',' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

bool holdsExponent(const char* first, const char* last) {
    for (; first != last; ++first)
        if (*first == 'e' || *first == 'E') return true;
    return false;
}

/// A place in a text, with the steps of reading a table.
class TableReader {
public:
    explicit TableReader(std::string_view text) : at_(text.data()), end_(text.data() + text.size()) {}

    [[nodiscard]] bool atEnd() const { return at_ == end_; }

    void skipSeparators() {
        while (at_ != end_ && isSeparator(*at_)) ++at_;
    }

    void skipWhiteSpace() {
        while (at_ != end_ && (isSeparator(*at_) || *at_ == '\n')) ++at_;
    }

    void skipLine() {
        const void* feed = std::memchr(at_, '\n', static_cast<std::size_t>(end_ - at_));
        at_ = feed ? static_cast<const char*>(feed) + 1 : end_;
    }

    /// Goes to the next line that begins with a number; false at the end.
    bool findRow() {
        for (; !atEnd(); skipLine()) {
            skipSeparators();
            if (beginsNumber()) return true;
            if (atEnd()) return false;
        }
        return false;
    }

    /// Reads a number that stands here; false, at the same place, when none
    /// does.
    bool readNumber(double& x) {
        const char* first = at_;
        if (first != end_ && *first == '+') ++first;
        const char* digits = first;
        if (digits == at_ && digits != end_ && *digits == '-') ++digits;
        if (digits == end_ || !(isDigit(*digits) || *digits == '.')) return false;
        const auto [last, failure] = std::from_chars(first, end_, x);
        if (failure == std::errc::invalid_argument) return false;
        const bool cutExponent =
            last != end_ && (*last == 'e' || *last == 'E') && !holdsExponent(first, last);
        if (cutExponent) return false;
        if (failure == std::errc::result_out_of_range) {
            x = std::strtod(std::string(first, last).c_str(), nullptr);
            if (std::isinf(x)) return false;
        }
        at_ = last;
        return true;
    }

    [[nodiscard]] std::size_t bytesTo(const TableReader& later) const {
        return static_cast<std::size_t>(later.at_ - at_);
    }
    [[nodiscard]] std::size_t bytesLeft() const { return static_cast<std::size_t>(end_ - at_); }

private:
    [[nodiscard]] bool beginsNumber() const {
        if (atEnd()) return false;
        const char second = end_ - at_ > 1 ? at_[1] : '\0';
        return isDigit(*at_) || ((*at_ == '.' || *at_ == '-') && isDigit(second)) ||
               (*at_ == '-' && second == '.');
    }

    const char* at_;
    const char* end_;
};

/// Reads numbers to the end of the row.
void readFirstRow(TableReader& reader, std::vector<double>& numbers) {
    for (double x; reader.readNumber(x); reader.skipSeparators()) numbers.push_back(x);
}

/// Room for all rows if they are about as long as the first one, so that the
/// numbers seldom have to move.
void reserveLike(std::vector<double>& numbers, std::size_t bytesOfRow, std::size_t bytesLeft) {
    const double rows = 1.05 * static_cast<double>(bytesLeft) / static_cast<double>(bytesOfRow + 1) + 16;
    // A number and its separator take two bytes at least.
    const double most = static_cast<double>(bytesLeft) / 2 + 1;
    const double wanted = std::fmin(rows * static_cast<double>(numbers.size()), most);
    numbers.reserve(numbers.size() + static_cast<std::size_t>(wanted));
}

}  // namespace

NumberTable readTable(std::string_view text, std::int64_t wantedColumns, std::string_view shownName) {
    TableReader reader(text);
    NumberTable table;
    if (reader.findRow()) {
        const TableReader start = reader;
        readFirstRow(reader, table.numbers);
        reader.skipLine();
        reserveLike(table.numbers, start.bytesTo(reader), reader.bytesLeft());
    }
    const std::size_t columns = table.numbers.size();
    table.columns = static_cast<std::int64_t>(columns);
    Require(columns > 0 && table.columns >= wantedColumns, "not enough number columns in the file", "load");
    for (std::int64_t row = 2; reader.findRow(); ++row) {
        for (std::size_t c = 0; c < columns; ++c) {
            reader.skipSeparators();
            double x;
            if (!reader.readNumber(x)) [[unlikely]]
                raiseRuntimeError(
                    std::string(shownName) + " has inconsistent format at line " + std::to_string(row),
                    "load");
            table.numbers.push_back(x);
        }
        reader.skipLine();
    }
    Require(table.numbers.size() % columns == 0, "irregularity in the table of data in the file", "load");
    return table;
}

std::vector<double> readNumbers(std::string_view text) {
    TableReader reader(text);
    std::vector<double> numbers;
    if (!reader.findRow()) return numbers;
    for (double x; reader.readNumber(x); reader.skipWhiteSpace()) numbers.push_back(x);
    return numbers;
}

}  // namespace vorpen
