// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/text_of_files.h"

#include <iterator>

#include "base/errors.h"
#include "display/string_form.h"
#include "values/list_value.h"

namespace vorpen {
namespace {

constexpr int filePrecision = 9;

std::vector<std::string> linesOfArray(const Value& value) {
    if (value.isEmpty()) return {std::string()};
    return stringForm(value, filePrecision, 0, 0, 0);
}

}  // namespace

std::vector<std::string> linesInFile(const Value& value) {
    if (value.valueType() != LIST_VAL) return linesOfArray(value);
    std::vector<std::string> lines;
    for (const ListItem& item : static_cast<const ListValue&>(value).items()) {
        Require(!item.holdsList() || item.itemSize() == 0, "nested list: stringItem not yet implemented");
        std::vector<std::string> rows = item.get() ? linesOfArray(*item.get()) : std::vector{std::string()};
        lines.insert(lines.end(), std::move_iterator(rows.begin()), std::move_iterator(rows.end()));
    }
    return lines;
}

std::string textOfRows(const Value& value) {
    std::string text;
    for (const std::string& line : linesInFile(value)) text.append(line).append("\n");
    if (!text.empty()) text.pop_back();
    return text;
}

}  // namespace vorpen
