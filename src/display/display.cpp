// SPDX-License-Identifier: GPL-3.0-or-later
#include "display/display.h"

#include <algorithm>
#include <string>
#include <vector>

#include "base/errors.h"
#include "console/console_text.h"
#include "display/string_form.h"
#include "numerics/exact_form.h"
#include "values/list_value.h"
#include "values/mathmatrix.h"

namespace vorpen {
namespace {

/// A value with this many rows is cut, so that it does not push everything
/// else out of sight.
constexpr int rowLimit = 25;
constexpr int wideRowLimit = 156;
/// By how much a cut value stays below the limit.
constexpr int rowsCut = 6;

constexpr int scalarPrecision = 9;
/// Matrices of more columns get fewer digits, so that a row fits the line.
constexpr int mostPreciseColumns = 3;
constexpr int matrixPrecision = 5;
constexpr int mostColumns = 100;

/// From this many columns or rows on, every fifth stands out.
constexpr int countedFrom = 10;
constexpr int countedGroup = 5;

/// A list whose items all have fewer elements is set on one line.
constexpr int longItem = 24;
/// Room for the separator and the blanks between items.
constexpr int itemGap = 3;

/// Lists within lists are followed so far; nothing deeper was made to be read,
/// and each level takes room on the program's stack.
constexpr int mostNested = 1000;

struct Manner {
    bool newLine;
    bool wide;
    bool exact;
    int listDepth = 0;
};

/// Puts an alignment into the console for as long as it lives.
class AlignmentScope {
public:
    explicit AlignmentScope(ColumnAlignment alignment) : saved_(console().alignment()) {
        console().setAlignment(alignment);
    }
    ~AlignmentScope() { console().setAlignment(saved_); }
    AlignmentScope(const AlignmentScope&) = delete;
    AlignmentScope& operator=(const AlignmentScope&) = delete;

private:
    ColumnAlignment saved_;
};

/// One letter for each mark, doubles before integers.
char colourLetter(const Value& value, int mark) {
    constexpr std::string_view letters = "bkOgrmBagggg";
    const int isInteger = value.valueType() == INTEGER_VAL ? 1 : 0;
    const int last = static_cast<int>(letters.size()) - 1;
    return letters[mark < 0 || mark > last ? last : std::min(2 * mark + isInteger, last)];
}

int shownOf(int count, bool wide) {
    const int limit = wide ? wideRowLimit : rowLimit;
    return count < limit ? count : limit - rowsCut;
}

void writeLine(const std::string& text) { console().print(text, true, PrintMode::markup); }

void writeRows(const std::vector<std::string>& rows, std::size_t count, char colour, bool newLine) {
    for (std::size_t r = 0; r < std::min(count, rows.size()); ++r)
        writeRow(rows[r], colour, newLine || r > 0);
}

void writeCutNote(const std::string& lastRow, int shown, int total) {
    writeLine("...\n" + lastRow + "\n(" + std::to_string(shown + 1) + " rows of " + std::to_string(total) +
              " shown)");
}

/// Sets the first number of a row in bold.
std::string withBoldStart(const std::string& row) {
    const std::size_t end =
        std::min(row.find(' ', std::min(row.find_first_not_of(' '), row.size())), row.size());
    return "{*" + row.substr(0, end) + "}" + row.substr(end);
}

void showScalar(const Value& value, char colour, const Manner& manner) {
    std::string text;
    value.stringItem(text, 0, scalarPrecision);
    if (manner.exact && value.valueType() == DOUBLE_VAL) {
        const std::string exact = closedFormText(asDouble(value)[0], defaultFormTolerance);
        if (!exact.empty() && exact[0] != ' ') text += "       = " + exact;
    }
    writeRow(text, colour, manner.newLine);
}

void showNumbers(const Value& value, int mark, const Manner& manner) {
    const char colour = colourLetter(value, mark);
    if (value.isScalar()) return showScalar(value, colour, manner);
    const int columns = value.ncol(), total = value.nrow(), shown = shownOf(total, manner.wide);
    const int precision = columns > mostPreciseColumns ? matrixPrecision : scalarPrecision;
    std::vector<std::string> rows =
        numberRows(value, precision, columns >= countedFrom ? countedGroup : 0, shown, mostColumns);
    if (total >= countedFrom) {
        for (int r = countedGroup - 1; r < shown; r += countedGroup) rows[r] = withBoldStart(rows[r]);
    }
    writeRows(rows, shown, colour, manner.newLine);
    if (shown < total) writeCutNote(rows.back(), shown, total);
}

void showText(const Value& value, const Manner& manner) {
    const int total = displayRows(value), shown = shownOf(total, manner.wide);
    const std::vector<std::string> rows = stringForm(value, 0, 0, shown, 0);
    writeRows(rows, shown, colourLetter(value, value.mark()), manner.newLine);
    if (shown < total) writeCutNote(rows.back(), shown, total);
}

void show(const Value& value, const Manner& manner);

void showItems(const ListValue& list, int shown, int listDepth) {
    int width = 0;
    for (const ListItem& item : list.items()) width = std::max(width, item.itemSize());
    const int rows = list.nrow(), columns = list.ncol();
    const bool ownLines = width >= longItem;
    const AlignmentScope scope(ownLines ? ColumnAlignment{0, ' '}
                                        : ColumnAlignment{width + itemGap, columns == 1 ? ';' : ','});
    for (int k = 0; k < shown; ++k) {
        // Row by row, while the items lie column after column.
        const int row = k / columns, column = k % columns;
        if (column == 0 && row > 0 && columns > 1) writeLine("---next row---");
        const Value* item = list[column * rows + row].get();
        if (!item) {
            writeRow("[]", 'b', ownLines);
            continue;
        }
        if (item->nrow() > 1) console().endLine();
        show(*item, {ownLines, false, true, listDepth + 1});
    }
}

void showList(const ListValue& list, const Manner& manner) {
    if (manner.listDepth >= mostNested) return writeLine("...");
    const std::string indent(manner.listDepth, ' ');
    writeLine("{*" + indent + "[}");
    const int shown = list.ncol() > 0 ? shownOf(list.size(), manner.wide) : 0;
    showItems(list, shown, manner.listDepth);
    if (shown < list.size()) {
        writeLine("...\n(" + std::to_string(shown) + " items of " + std::to_string(list.size()) + " shown)");
    }
    writeLine("{*" + indent + "]}");
}

void show(const Value& value, const Manner& manner) {
    if (value.isEmpty()) {
        writeRow(stringForm(value, 0, 0, 0, 0)[0], colourLetter(value, value.mark()), manner.newLine);
        return;
    }
    if (value.valueType() == LIST_VAL) {
        Require(value.form() == FORM_TEXT, "v is a LIST_VAL but not a JMAT_LIST", "Display");
        return showList(static_cast<const ListValue&>(value), manner);
    }
    switch (value.form()) {
        case FORM_NUMERIC:
        case FORM_BOOL:
        case FORM_COMPLEX: return showNumbers(value, value.mark(), manner);
        case FORM_STRING:
        case FORM_KEY: return showText(value, manner);
        // The planes stand side by side, as the plain matrix that they are in memory.
        case FORM_3D: return showNumbers(value, FORM_NUMERIC, {true, manner.wide, false, manner.listDepth});
        default: writeLine("{r warning: Display: failed to show a value}");
    }
}

}  // namespace

void writeRow(std::string_view text, char colourLetter, bool newLine) {
    std::string row{'{', colourLetter, ' '};
    row += text;
    console().print(row, newLine, PrintMode::markup);
}

void Display(const Value& value, bool startOnNewLine, bool wide, bool showExact) {
    show(value, {startOnNewLine, wide, showExact});
}

void displayNamed(const Value& value, std::string_view name) {
    if (name.empty()) return Display(value, true, false, true);
    console().print(name, false, PrintMode::markup);
    console().print("=", false, PrintMode::markup);
    Display(value, value.nrow() >= 2, false, true);
    console().print(" ", false, PrintMode::markup);
}

}  // namespace vorpen
