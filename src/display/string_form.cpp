// SPDX-License-Identifier: GPL-3.0-or-later
#include "display/string_form.h"

#include <algorithm>

#include "base/errors.h"
#include "base/interrupt.h"
#include "values/key_text.h"
#include "values/mathmatrix.h"

namespace vorpen {
namespace {

/// Nobody reads a line of more columns.
constexpr int mostColumns = 100;

/// Rows of a column that are made before a look whether they are still wanted.
constexpr int rowsAtOnce = 4096;

/// How many of n are wanted under a limit, where 0 is none; a single one is
/// not left out.
int countWithin(int n, int limit) { return limit <= 0 || n - limit <= 1 ? n : limit; }

/// The rows to be built out of n: the first ones and, when some are left out,
/// the last.
std::vector<int> chosenRows(int n, int maxRows) {
    const int leading = countWithin(n, maxRows);
    std::vector<int> rows(leading);
    for (int r = 0; r < leading; ++r) rows[r] = r;
    if (leading < n) rows.push_back(n - 1);
    return rows;
}

/// The texts of many elements behind each other in one block.
class TextTable {
public:
    explicit TextTable(std::size_t count) { ends_.reserve(count); }
    void add(std::string_view text) {
        characters_ += text;
        ends_.push_back(characters_.size());
    }
    [[nodiscard]] std::string_view operator[](std::size_t k) const {
        const std::size_t start = k == 0 ? 0 : ends_[k - 1];
        return std::string_view(characters_).substr(start, ends_[k] - start);
    }

private:
    std::string characters_;
    std::vector<std::size_t> ends_;
};

char characterAt(const Value& value, std::size_t i) {
    switch (value.valueType()) {
        case INTEGER_VAL: return static_cast<char>(asInt(value).data()[i]);
        case DOUBLE_VAL: return static_cast<char>(truncateToInt(asDouble(value).data()[i]));
        default: return static_cast<char>(truncateToInt(asComplex(value).data()[i].real()));
    }
}

std::vector<std::string> stringRows(const Value& value, int maxRows) {
    std::vector<std::string> result;
    const std::size_t rows = value.nrow(), columns = value.ncol();
    for (const int r : chosenRows(value.nrow(), maxRows)) {
        std::string& row = result.emplace_back(columns, ' ');
        for (std::size_t c = 0; c < columns; ++c) row[c] = characterAt(value, c * rows + r);
    }
    return result;
}

/// The bits of a key array are doubles; a key form on another kind has none to show.
double keyAt(const Value& value, int i) {
    switch (value.valueType()) {
        case INTEGER_VAL: return asInt(value)[i];
        case DOUBLE_VAL: return asDouble(value)[i];
        default: return asComplex(value)[i].real();
    }
}

std::vector<std::string> keyRows(const Value& value, int maxRows) {
    std::vector<std::string> result;
    for (const int i : chosenRows(value.size(), maxRows)) result.push_back("{*" + unzipKey(keyAt(value, i)));
    return result;
}

}  // namespace

std::string joinRow(std::span<const std::string_view> texts, std::span<const int> widths, int groupEvery) {
    std::string row;
    for (std::size_t c = 0; c < texts.size(); ++c) {
        const bool setOff = groupEvery > 0 && c > 0 && c % groupEvery == 0;
        row.append(widths[c] - texts[c].size(), ' ');
        if (setOff) row += "{*";
        row += texts[c];
        if (setOff) row += '}';
        row += ' ';
    }
    return row;
}

std::vector<std::string> numberRows(const Value& value, int precision, int groupEvery, int maxRows,
                                    int maxCols) {
    const std::vector<int> rows = chosenRows(value.nrow(), maxRows);
    int columns = countWithin(value.ncol(), maxCols);
    if (maxCols > 0) columns = std::min(columns, mostColumns);

    // Column after column, as the elements lie in memory.
    TextTable texts(rows.size() * static_cast<std::size_t>(columns));
    std::vector<int> widths(columns, 0);
    std::string text;
    for (int c = 0; c < columns; ++c) {
        for (const int r : rows) {
            if (r % rowsAtOnce == 0) checkInterrupt();
            value.stringItem(text, c * value.nrow() + r, precision);
            texts.add(text);
            widths[c] = std::max(widths[c], static_cast<int>(text.size()));
        }
    }

    std::vector<std::string> result;
    result.reserve(rows.size());
    std::vector<std::string_view> rowTexts(columns);
    for (std::size_t r = 0; r < rows.size(); ++r) {
        for (int c = 0; c < columns; ++c) rowTexts[c] = texts[c * rows.size() + r];
        result.push_back(joinRow(rowTexts, widths, groupEvery));
    }
    return result;
}

std::vector<std::string> stringForm(const Value& value, int precision, int groupEvery, int maxRows,
                                    int maxCols) {
    if (value.isEmpty()) return {value.isString() ? "''" : "[]"};
    Require(value.isNumericKind() && value.form() != FORM_TEXT, "stringForm not implemented for LIST_VAL");
    switch (value.form()) {
        case FORM_NUMERIC:
        case FORM_BOOL:
        case FORM_COMPLEX: return numberRows(value, precision, groupEvery, maxRows, maxCols);
        case FORM_STRING: return stringRows(value, maxRows);
        case FORM_KEY: return keyRows(value, maxRows);
        default: return std::vector<std::string>(chosenRows(value.nrow(), maxRows).size());
    }
}

}  // namespace vorpen
