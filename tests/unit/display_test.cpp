// SPDX-License-Identifier: GPL-3.0-or-later
#include "display/display.h"

#include <gtest/gtest.h>

#include <limits>

#include "base/errors.h"
#include "console/console_text.h"
#include "console/terminal_text.h"
#include "display/string_form.h"
#include "values/key_text.h"
#include "values/list_value.h"
#include "values/mathmatrix.h"

namespace vorpen {
namespace {

using Lines = std::vector<std::string>;

/// A matrix given row by row.
template <class V, class T>
V matrix(int rows, std::initializer_list<T> elements, int mark = 0) {
    V value;
    const int columns = static_cast<int>(elements.size()) / rows;
    value.setSizeShapeMark(static_cast<int>(elements.size()), rows, mark);
    int k = 0;
    for (const T& element : elements) {
        value[(k % columns) * rows + k / columns] = element;
        ++k;
    }
    return value;
}

DoubleValue doubles(int rows, std::initializer_list<double> elements, int mark = 0) {
    return matrix<DoubleValue>(rows, elements, mark);
}
IntValue ints(int rows, std::initializer_list<int> elements, int mark = 0) {
    return matrix<IntValue>(rows, elements, mark);
}
ComplexValue complexes(int rows, std::initializer_list<std::complex<double>> elements) {
    return matrix<ComplexValue>(rows, elements, FORM_COMPLEX);
}
IntValue text(std::string_view characters) {
    IntValue value;
    value.assignString(characters);
    return value;
}
/// 1 to n with a number of rows.
IntValue counted(int n, int rows) {
    IntValue value;
    value.setSizeShapeMark(n, rows, 0);
    for (int k = 0; k < n; ++k) value[k] = k + 1;
    return value;
}

/// A list of copies, row by row.
ListValue list(int rows, const std::vector<const Value*>& items) {
    ListValue value;
    const int columns = static_cast<int>(items.size()) / rows;
    value.setSizeShapeMark(static_cast<int>(items.size()), rows, FORM_TEXT);
    for (std::size_t k = 0; k < items.size(); ++k) {
        const std::size_t at = (k % columns) * rows + k / columns;
        if (items[k]) value.data()[at].set(newValueCopy(*items[k]));
    }
    return value;
}

class DisplayTest : public testing::Test {
protected:
    DisplayTest() {
        console_.setLineListener([this](const std::string& line) { finished.push_back(line); });
        setConsole(&console_);
    }
    ~DisplayTest() override { setConsole(nullptr); }

    /// The marked-up lines of a value shown as an expression statement does.
    Lines shown(const Value& value, bool wide = false, bool exact = true) {
        finished.clear();
        Display(value, true, wide, exact);
        console_.endLine();
        return finished;
    }
    /// The same as it is read, without the blanks at the ends.
    Lines read(const Value& value) {
        Lines lines;
        for (const std::string& line : shown(value)) {
            std::string plain = terminalText(line, false);
            plain.erase(plain.find_last_not_of(' ') + 1);
            lines.push_back(plain);
        }
        return lines;
    }

    ConsoleText console_;
    Lines finished;
};

// ---- Rows of text ---------------------------------------------------------------------

TEST(StringForm, EmptyValues) {
    EXPECT_EQ(stringForm(DoubleValue(), 9, 0, 0, 0), (Lines{"[]"}));
    EXPECT_EQ(stringForm(text(""), 9, 0, 0, 0), (Lines{"''"}));
    EXPECT_EQ(stringForm(ListValue(), 9, 0, 0, 0), (Lines{"[]"}));
}

TEST(StringForm, NumbersInColumns) {
    EXPECT_EQ(stringForm(doubles(1, {5}), 9, 0, 0, 0), (Lines{"5 "}));
    EXPECT_EQ(stringForm(doubles(2, {1, 2.5, -3, 10}), 9, 0, 0, 0), (Lines{" 1 2.5 ", "-3  10 "}));
    EXPECT_EQ(stringForm(ints(2, {1, 100, 20, 3}), 0, 0, 0, 0), (Lines{" 1 100 ", "20   3 "}));
    EXPECT_EQ(stringForm(complexes(1, {{1, 2}, {0, -1}}), 9, 0, 0, 0), (Lines{"1+2i -1i "}));
    EXPECT_EQ(stringForm(ints(1, {1, 0}, FORM_BOOL), 9, 0, 0, 0), (Lines{"1 0 "}));
}

TEST(StringForm, ThePrecisionIsThatOfTheNumbers) {
    EXPECT_EQ(stringForm(doubles(1, {1.0 / 3, 2e10}), 5, 0, 0, 0), (Lines{"0.33333 2e10 "}));
    EXPECT_EQ(stringForm(doubles(1, {1.0 / 3}), 9, 0, 0, 0), (Lines{"0.333333333 "}));
}

TEST(StringForm, RowsAreCutBeforeTheLast) {
    const IntValue column = counted(10, 10);
    EXPECT_EQ(stringForm(column, 9, 0, 3, 0), (Lines{" 1 ", " 2 ", " 3 ", "10 "}));
    EXPECT_EQ(stringForm(column, 9, 0, 8, 0).size(), 9u);
    EXPECT_EQ(stringForm(column, 9, 0, 9, 0).size(), 10u);  // one row alone is not left out
    EXPECT_EQ(stringForm(column, 9, 0, 10, 0).size(), 10u);
    EXPECT_EQ(stringForm(column, 9, 0, 20, 0).size(), 10u);
}

TEST(StringForm, TheWidthIsThatOfTheRowsShown) {
    EXPECT_EQ(stringForm(ints(5, {1, 2, 3000, 4, 5}), 9, 0, 2, 0), (Lines{"1 ", "2 ", "5 "}));
}

TEST(StringForm, ColumnsAreCutLikeRowsButWithoutTheLast) {
    const IntValue row = counted(9, 1);
    EXPECT_EQ(stringForm(row, 9, 0, 0, 3), (Lines{"1 2 3 "}));
    EXPECT_EQ(stringForm(row, 9, 0, 0, 8), (Lines{"1 2 3 4 5 6 7 8 9 "}));
}

TEST(StringForm, AHundredColumnsAreTheMostUnderALimit) {
    IntValue row;
    row.setSizeShapeMark(101, 1, 0);
    std::fill(row.items().begin(), row.items().end(), 7);
    EXPECT_EQ(stringForm(row, 9, 0, 0, 100)[0].size(), 200u);
    EXPECT_EQ(stringForm(row, 9, 0, 0, 500)[0].size(), 200u);
    EXPECT_EQ(stringForm(row, 9, 0, 0, 0)[0].size(), 202u);
}

TEST(StringForm, CountedColumnsAreBoldAndKeepTheirWidth) {
    EXPECT_EQ(stringForm(counted(12, 1), 9, 5, 0, 0), (Lines{"1 2 3 4 5 {*6} 7 8 9 10 {*11} 12 "}));
    EXPECT_EQ(stringForm(ints(2, {1, 2, 3, 1, 2, 30}), 9, 2, 0, 0), (Lines{"1 2  {*3} ", "1 2 {*30} "}));
}

TEST(StringForm, Strings) {
    EXPECT_EQ(stringForm(text("abc"), 0, 0, 0, 0), (Lines{"abc"}));
    EXPECT_EQ(stringForm(ints(2, {'a', 'b', 'c', 'd'}, FORM_STRING), 0, 0, 0, 0), (Lines{"ab", "cd"}));
    EXPECT_EQ(stringForm(doubles(1, {97.9, 98.2, 65536 + 99}, FORM_STRING), 0, 0, 0, 0), (Lines{"abc"}));
    EXPECT_EQ(stringForm(ints(1, {-23, 'x'}, FORM_STRING), 0, 0, 0, 0), (Lines{"\xE9x"}));
    EXPECT_EQ(
        stringForm(doubles(1, {std::numeric_limits<double>::quiet_NaN()}, FORM_STRING), 0, 0, 0, 0)[0].size(),
        1u);
    EXPECT_EQ(stringForm(counted(200, 1), 0, 0, 0, 100)[0].find("101"), std::string::npos);
    IntValue longText = text(std::string(500, 'x'));
    EXPECT_EQ(stringForm(longText, 0, 0, 0, 100)[0].size(), 500u);
}

TEST(StringForm, KeysGiveARowAnElement) {
    EXPECT_EQ(stringForm(doubles(1, {zipKey("cd"), zipKey("Hello")}, FORM_KEY), 0, 0, 0, 0),
              (Lines{"{*cd", "{*Hello"}));
    EXPECT_EQ(stringForm(doubles(3, {zipKey("b"), zipKey("c"), zipKey("d")}, FORM_KEY), 0, 0, 1, 0),
              (Lines{"{*b", "{*d"}));
}

TEST(StringForm, OtherForms) {
    EXPECT_EQ(stringForm(doubles(2, {1, 2, 3, 4}, 2 << 4 | FORM_3D), 9, 0, 0, 0), (Lines{"", ""}));
    const DoubleValue five = doubles(1, {5});
    EXPECT_THROW((void)stringForm(list(1, {&five}), 9, 0, 0, 0), RuntimeError);
    try {
        (void)stringForm(doubles(1, {5}, FORM_TEXT), 9, 0, 0, 0);
        FAIL();
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.message, "stringForm not implemented for LIST_VAL");
    }
}

// ---- Scalars and colours ----------------------------------------------------------------

TEST_F(DisplayTest, EmptyValuesInTheirColour) {
    EXPECT_EQ(shown(DoubleValue()), (Lines{"{b []"}));
    EXPECT_EQ(shown(IntValue()), (Lines{"{k []"}));
    EXPECT_EQ(shown(text("")), (Lines{"{m ''"}));
}

TEST_F(DisplayTest, TheColourTellsFormAndKind) {
    EXPECT_EQ(shown(doubles(1, {5})), (Lines{"{b 5"}));
    EXPECT_EQ(shown(ints(1, {5})), (Lines{"{k 5"}));
    EXPECT_EQ(shown(doubles(1, {1}, FORM_BOOL)), (Lines{"{O 1"}));
    EXPECT_EQ(shown(ints(1, {1}, FORM_BOOL)), (Lines{"{g 1"}));
    EXPECT_EQ(shown(doubles(1, {97}, FORM_STRING)), (Lines{"{r a"}));
    EXPECT_EQ(shown(ints(1, {97}, FORM_STRING)), (Lines{"{m a"}));
    EXPECT_EQ(shown(complexes(1, {{1, -2.5}})), (Lines{"{B 1-2.5i"}));
    EXPECT_EQ(shown(ints(1, {5}, FORM_COMPLEX)), (Lines{"{a 5"}));
    EXPECT_EQ(shown(doubles(1, {zipKey("cd")}, FORM_KEY)), (Lines{"{g {*cd"}));
}

TEST_F(DisplayTest, AScalarDoubleHasItsClosedFormBesideIt) {
    EXPECT_EQ(shown(doubles(1, {0.5})), (Lines{"{b 0.5       = (1/2)"}));
    EXPECT_EQ(shown(doubles(1, {std::sqrt(2.0)})), (Lines{"{b 1.41421356       = sqrt 2"}));
    EXPECT_EQ(shown(doubles(1, {-2})), (Lines{"{b -2"}));
    EXPECT_EQ(shown(doubles(1, {0.5}), false, false), (Lines{"{b 0.5"}));
}

TEST_F(DisplayTest, NoOtherValueHasAClosedForm) {
    EXPECT_EQ(shown(complexes(1, {{0.5, 0}})), (Lines{"{B 0.5"}));
    EXPECT_EQ(shown(doubles(1, {0.5, 0.25})), (Lines{"{b 0.5 0.25 "}));
    EXPECT_EQ(shown(doubles(1, {std::numeric_limits<double>::infinity()})), (Lines{"{b inf"}));
    EXPECT_EQ(shown(doubles(1, {-std::numeric_limits<double>::quiet_NaN()})), (Lines{"{b nan"}));
}

// ---- Matrices -----------------------------------------------------------------------------

TEST_F(DisplayTest, DigitsFollowTheColumns) {
    EXPECT_EQ(shown(doubles(1, {1.0 / 3, 1, 1})), (Lines{"{b 0.333333333 1 1 "}));
    EXPECT_EQ(shown(doubles(1, {1.0 / 3, 1, 1, 1})), (Lines{"{b 0.33333 1 1 1 "}));
    EXPECT_EQ(shown(doubles(2, {1.0 / 3, 1})), (Lines{"{b 0.333333333 ", "{b           1 "}));
}

TEST_F(DisplayTest, FromTenColumnsOnEveryFifthStandsOut) {
    EXPECT_EQ(shown(counted(9, 1)), (Lines{"{k 1 2 3 4 5 6 7 8 9 "}));
    EXPECT_EQ(shown(counted(10, 1)), (Lines{"{k 1 2 3 4 5 {*6} 7 8 9 10 "}));
    EXPECT_EQ(shown(counted(12, 1)), (Lines{"{k 1 2 3 4 5 {*6} 7 8 9 10 {*11} 12 "}));
}

TEST_F(DisplayTest, FromTenRowsOnEveryFifthBeginsBold) {
    EXPECT_EQ(shown(counted(9, 9))[4], "{k 5 ");
    const Lines lines = shown(counted(11, 11));
    EXPECT_EQ(lines[3], "{k  4 ");
    EXPECT_EQ(lines[4], "{k {* 5} ");
    EXPECT_EQ(lines[5], "{k  6 ");
    EXPECT_EQ(lines[9], "{k {*10} ");
    EXPECT_EQ(shown(counted(20, 10))[4], "{k {* 5} 15 ");
}

TEST_F(DisplayTest, UpTo24RowsAreAllShown) {
    EXPECT_EQ(shown(counted(24, 24)).size(), 24u);
    EXPECT_EQ(finished.back(), "{k 24 ");
}

TEST_F(DisplayTest, From25RowsOnTheMiddleIsCut) {
    const Lines lines = shown(counted(25, 25));
    ASSERT_EQ(lines.size(), 22u);
    EXPECT_EQ(lines[18], "{k 19 ");
    EXPECT_EQ(lines[19], "...");
    EXPECT_EQ(lines[20], "25 ");
    EXPECT_EQ(lines[21], "(20 rows of 25 shown)");
}

TEST_F(DisplayTest, TheWideLimitIsHigher) {
    EXPECT_EQ(shown(counted(155, 155), true).size(), 155u);
    const Lines lines = shown(counted(156, 156), true);
    ASSERT_EQ(lines.size(), 153u);
    EXPECT_EQ(lines[149], "{k {*150} ");
    EXPECT_EQ(lines[152], "(151 rows of 156 shown)");
}

TEST_F(DisplayTest, AHundredColumnsAreShownAndNothingOfTheRest) {
    const Lines lines = read(counted(120, 1));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find(" 100"), std::string::npos);
    EXPECT_EQ(lines[0].find(" 101"), std::string::npos);
}

TEST_F(DisplayTest, ALargeMatrixConvertsOnlyWhatIsShown) {
    DoubleValue large;
    large.setSizeShapeMark(4000000, 2000, 0);
    std::fill(large.items().begin(), large.items().end(), 1.0 / 3);
    const Lines lines = shown(large);
    EXPECT_EQ(lines.size(), 22u);
    EXPECT_EQ(lines.back(), "(20 rows of 2000 shown)");
}

TEST_F(DisplayTest, StringsAreShownWholeAndTheirMarkupIsLeftToTheReader) {
    EXPECT_EQ(shown(text(std::string(300, 'x'))), (Lines{"{m " + std::string(300, 'x')}));
    EXPECT_EQ(shown(text("{r error}")), (Lines{"{m {r error}"}));
    EXPECT_EQ(read(text("{r error}")), (Lines{"error"}));
    EXPECT_EQ(shown(ints(2, {'a', 'b', 'c', 'd'}, FORM_STRING)), (Lines{"{m ab", "{m cd"}));
}

TEST_F(DisplayTest, ManyRowsOfCharactersAreCutToo) {
    IntValue letters;
    letters.setSizeShapeMark(60, 30, FORM_STRING);
    std::fill(letters.items().begin(), letters.items().end(), 'x');
    const Lines lines = shown(letters);
    ASSERT_EQ(lines.size(), 22u);
    EXPECT_EQ(lines[20], "xx");
    EXPECT_EQ(lines[21], "(20 rows of 30 shown)");
}

TEST_F(DisplayTest, KeysAreCountedByElements) {
    DoubleValue keys;
    keys.setSizeShapeMark(30, 1, FORM_KEY);
    std::fill(keys.items().begin(), keys.items().end(), zipKey("cd"));
    const Lines lines = shown(keys);
    ASSERT_EQ(lines.size(), 22u);
    EXPECT_EQ(lines[0], "{g {*cd");
    EXPECT_EQ(lines[21], "(20 rows of 30 shown)");
}

TEST_F(DisplayTest, PlanesStandSideBySide) {
    EXPECT_EQ(shown(doubles(2, {1, 2, 5, 6, 3, 4, 7, 8}, 2 << 4 | FORM_3D)),
              (Lines{"{b 1 2 5 6 ", "{b 3 4 7 8 "}));
    EXPECT_EQ(shown(doubles(1, {0.5}, 1 << 4 | FORM_3D)), (Lines{"{b 0.5"}));
    DoubleValue tall;
    tall.setSizeShapeMark(60, 30, 2 << 4 | FORM_3D);
    std::fill(tall.items().begin(), tall.items().end(), 0.0);
    EXPECT_EQ(shown(tall).size(), 22u);
    EXPECT_EQ(tall.mark(), 2 << 4 | FORM_3D);
}

TEST_F(DisplayTest, AnUnknownFormIsAWarning) {
    EXPECT_EQ(shown(doubles(1, {5}, 5)), (Lines{"{r warning: Display: failed to show a value}"}));
    EXPECT_EQ(shown(doubles(1, {5}, FORM_TEXT)), (Lines{"{r warning: Display: failed to show a value}"}));
    EXPECT_EQ(shown(doubles(1, {5}, -1)).size(), 1u);
    EXPECT_EQ(shown(doubles(1, {5}, INT32_MAX)).size(), 1u);
}

// ---- On one line, with names ------------------------------------------------------------------

TEST_F(DisplayTest, WithoutANewLineARowFollowsTheLast) {
    console_.print("v: ", false, PrintMode::markup);
    Display(counted(4, 2), false, false, true);
    EXPECT_EQ(finished, (Lines{"v: {k 1 3 ", "{k 2 4 "}));
}

TEST_F(DisplayTest, NamedScalarsFollowEachOther) {
    displayNamed(doubles(1, {1}), "x");
    displayNamed(doubles(1, {2}), "y");
    EXPECT_EQ(console_.currentText(), "x={b 1 y={b 2 ");
    EXPECT_EQ(terminalText(console_.currentText(), false), "x=1 y=2 ");
    EXPECT_EQ(finished, Lines{});
}

TEST_F(DisplayTest, ANamedMatrixStandsBelowItsName) {
    displayNamed(doubles(2, {1, 2, 3, 4}), "x");
    EXPECT_EQ(finished, (Lines{"x=", "{b 1 2 ", "{b 3 4 "}));
    console_.endLine();
    displayNamed(doubles(1, {0.5}), "");
    EXPECT_EQ(finished.back(), "{b 0.5       = (1/2)");
}

// ---- Lists -------------------------------------------------------------------------------------

TEST_F(DisplayTest, ShortItemsStandOnOneLine) {
    const DoubleValue one = doubles(1, {1}), half = doubles(1, {0.5});
    const IntValue ab = text("ab");
    EXPECT_EQ(shown(list(1, {&one, &one, &one})), (Lines{"{*[}", "{b 1,  {b 1,  {b 1", "{*]}"}));
    EXPECT_EQ(shown(list(1, {&ab, &one})), (Lines{"{*[}", "{m ab,  {b 1", "{*]}"}));
    EXPECT_EQ(shown(list(1, {&half})), (Lines{"{*[}", "{b 0.5       = (1/2)", "{*]}"}));
}

TEST_F(DisplayTest, AColumnHasSemicolons) {
    const IntValue one = ints(1, {1}), two = ints(1, {2});
    EXPECT_EQ(shown(list(2, {&one, &two})), (Lines{"{*[}", "{k 1;  {k 2", "{*]}"}));
}

TEST_F(DisplayTest, SeveralRowsAreShownRowByRow) {
    const IntValue one = ints(1, {1}), two = ints(1, {2}), three = ints(1, {3}), four = ints(1, {4});
    EXPECT_EQ(shown(list(2, {&one, &two, &three, &four})),
              (Lines{"{*[}", "{k 1,  {k 2", "---next row---", "{k 3,  {k 4", "{*]}"}));
}

TEST_F(DisplayTest, EmptyItemsAreShownAsTheyAreAlone) {
    const DoubleValue none, five = doubles(1, {5});
    const IntValue noText = text("");
    EXPECT_EQ(read(list(1, {&none, &noText, &five})), (Lines{"[", "[], '', 5", "]"}));
    EXPECT_EQ(read(list(1, {nullptr, &five})), (Lines{"[", "[], 5", "]"}));
    EXPECT_EQ(shown(ListValue()), (Lines{"{b []"}));
}

TEST_F(DisplayTest, ALongItemGivesEachALineOfItsOwn) {
    const IntValue longText = text("abcdefghijklmnopqrstuvwx"), five = ints(1, {5});
    EXPECT_EQ(shown(list(1, {&longText, &five})),
              (Lines{"{*[}", "{m abcdefghijklmnopqrstuvwx", "{k 5", "{*]}"}));
    const IntValue shorter = text("abcdefghijklmnopqrstuvw");
    EXPECT_EQ(shown(list(1, {&shorter, &five})),
              (Lines{"{*[}", "{m abcdefghijklmnopqrstuvw,  {k 5", "{*]}"}));
}

TEST_F(DisplayTest, AnItemOfSeveralRowsBeginsALine) {
    const IntValue one = ints(1, {1}), column = ints(2, {2, 3});
    EXPECT_EQ(shown(list(1, {&one, &column, &one})),
              (Lines{"{*[}", "{k 1", "{k 2 ", "{k 3 ", "{k 1", "{*]}"}));
}

TEST_F(DisplayTest, ItemsThatDoNotFitStartALine) {
    const IntValue word = text("abcdefghijklmnopqrstuv");
    EXPECT_EQ(shown(list(1, {&word, &word, &word, &word})),
              (Lines{"{*[}", "{m abcdefghijklmnopqrstuv,  {m abcdefghijklmnopqrstuv",
                     "{m abcdefghijklmnopqrstuv,  {m abcdefghijklmnopqrstuv", "{*]}"}));
}

TEST_F(DisplayTest, ALongListIsCut) {
    std::vector<const Value*> items;
    const IntValue one = ints(1, {1});
    items.assign(24, &one);
    const auto ones = [](const Lines& lines, std::size_t end) {
        std::size_t count = 0;
        for (std::size_t k = 0; k < end; ++k) count += std::count(lines[k].begin(), lines[k].end(), '1');
        return count;
    };
    Lines lines = read(list(1, items));
    EXPECT_EQ(ones(lines, lines.size()), 24u);
    items.assign(30, &one);
    lines = read(list(1, items));
    EXPECT_EQ(lines[lines.size() - 3], "...");
    EXPECT_EQ(lines[lines.size() - 2], "(19 items of 30 shown)");
    EXPECT_EQ(lines.back(), "]");
    EXPECT_EQ(ones(lines, lines.size() - 3), 19u);
}

TEST_F(DisplayTest, AColumnOfManyItemsHasNoNoteOnRows) {
    const IntValue one = ints(1, {1});
    const Lines lines = read(list(30, std::vector<const Value*>(30, &one)));
    EXPECT_EQ(lines[lines.size() - 2], "(19 items of 30 shown)");
    EXPECT_EQ(lines[lines.size() - 3], "...");
    EXPECT_EQ(lines.size(), 6u);  // eleven items on one line, eight on the next
}

TEST_F(DisplayTest, ListsInListsAreIndented) {
    const IntValue one = ints(1, {1}), two = ints(1, {2});
    const ListValue inner = list(1, {&one, &two});
    EXPECT_EQ(shown(list(1, {&one, &inner, &two})),
              (Lines{"{*[}", "{k 1", "{* [}", "{k 1,  {k 2", "{* ]}", "{k 2", "{*]}"}));
}

TEST_F(DisplayTest, TheConsoleIsLeftAsItWas) {
    const IntValue one = ints(1, {1});
    console_.setAlignment({7, '|'});
    (void)shown(list(1, {&one}));
    EXPECT_EQ(console_.alignment().tabWidth, 7);
    EXPECT_EQ(console_.alignment().separator, '|');
    ListValue wrong = list(1, {&one});
    wrong.setMark(0);
    EXPECT_THROW(shown(list(1, {&wrong})), RuntimeError);
    EXPECT_EQ(console_.alignment().tabWidth, 7);
}

TEST_F(DisplayTest, AListWithoutTheFormOfOneIsAnInternalFailure) {
    const IntValue one = ints(1, {1});
    ListValue wrong = list(1, {&one});
    wrong.setMark(0);
    try {
        (void)shown(wrong);
        FAIL();
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.message, "in Display: v is a LIST_VAL but not a JMAT_LIST");
    }
}

TEST_F(DisplayTest, VeryDeepListsAreCutShort) {
    auto nested = std::make_unique<ListValue>(list(1, {nullptr}));
    for (int depth = 0; depth < 1500; ++depth) {
        auto outer = std::make_unique<ListValue>();
        outer->setSizeShapeMark(1, 1, FORM_TEXT);
        outer->data()[0].set(std::move(nested));
        nested = std::move(outer);
    }
    Lines lines = read(*nested);
    std::erase(lines, "");
    EXPECT_EQ(lines.size(), 2001u);
    EXPECT_EQ(lines[1000], "...");
}

}  // namespace
}  // namespace vorpen
