// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The text of an array as rows. Numbers are set in columns: each text is
// padded on its left to the width of its column and has one blank behind it,
// so that numbers of one column end in one place. Only the rows and columns
// that are asked for are converted, which keeps the display of a large array
// fast; a long array is shown by its first rows and its last.

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "values/value.h"

namespace vorpen {

/// The rows of a value. With maxRows and maxCols 0 all are wanted. Where rows
/// are left out, one more entry holds the last row; a single row is never left
/// out. With maxCols no more than 100 columns are made. A string gives the
/// characters of its rows, a key array one row an element, an empty value "[]"
/// or "''", a 3-D array empty rows; a list fails. `groupEvery` marks columns
/// to count by, see joinRow.
[[nodiscard]] std::vector<std::string> stringForm(const Value& value, int precision, int groupEvery,
                                                  int maxRows, int maxCols);

/// The rows of a value read as a matrix of numbers, whatever its form; planes
/// of a 3-D array stand side by side. The limits are those of stringForm.
[[nodiscard]] std::vector<std::string> numberRows(const Value& value, int precision, int groupEvery,
                                                  int maxRows, int maxCols);

/// One row out of element texts and column widths. With groupEvery above 0
/// every such column after the first is set in bold, so that columns can be
/// counted; its marks do not count as width.
[[nodiscard]] std::string joinRow(std::span<const std::string_view> texts, std::span<const int> widths,
                                  int groupEvery);

/// How many rows a value has when it is shown: one an element for keys.
[[nodiscard]] inline int displayRows(const Value& value) {
    return value.form() == FORM_KEY ? value.size() : value.nrow();
}

}  // namespace vorpen
