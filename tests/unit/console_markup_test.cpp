// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/markup.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "base/encoding.h"
#include "console/terminal_text.h"

namespace vorpen {

void PrintTo(const TextRun& run, std::ostream* out) {
    char text[64];
    std::snprintf(text, sizeof text, "{%u, 0x%06X, '%c', %d}", run.end, run.colour, run.code, run.rise);
    *out << text;
}

namespace {

constexpr Colour red = 0x0000AA, brown = 0x123456;

struct Decoded {
    std::string text;
    std::vector<TextRun> runs;
};

Decoded decoded(std::string_view text, Colour colour = brown) {
    Decoded result;
    result.text = decode(text, colour, result.runs);
    return result;
}

using Runs = std::vector<TextRun>;

// ---- Which braces are marks --------------------------------------------------

TEST(MarkupStart, CodesAlone) {
    for (const char* text : {":", ";", ".", "*", "=", "/", "$", "^", "_", "-"})
        EXPECT_TRUE(isMarkupStart(text, 0)) << text;
    for (const char* text : {"", " ", "r", "1", "{", "}", "\\"}) EXPECT_FALSE(isMarkupStart(text, 0)) << text;
}

TEST(MarkupStart, ALetterNeedsABlankOrACodeBehindIt) {
    for (const char* text : {"r ", "r:", "r;", "r*", "R-"}) EXPECT_TRUE(isMarkupStart(text, 0)) << text;
    for (const char* text : {"rx", "r1", "r}", "1 ", "\xE9 "}) EXPECT_FALSE(isMarkupStart(text, 0)) << text;
    EXPECT_FALSE(isMarkupStart(std::string_view("r\0", 2), 0));
    EXPECT_FALSE(isMarkupStart(std::string_view("\0\0", 2), 0));
    EXPECT_FALSE(isMarkupStart("r ", 2));
}

TEST(NextBrace, IsTheMarkBeforeItIfThereIsOne) {
    EXPECT_EQ(findNextBrace("ab{c}", 0), 2u);
    EXPECT_EQ(findNextBrace("ab{c}", 3), 4u);
    EXPECT_EQ(findNextBrace("x_{1}", 0), 1u);
    EXPECT_EQ(findNextBrace("x^{1}", 0), 1u);
    EXPECT_EQ(findNextBrace("x\\}", 0), 1u);
    EXPECT_EQ(findNextBrace("x_1", 0), std::string_view::npos);
    EXPECT_EQ(findNextBrace("{", 7), std::string_view::npos);
}

// ---- Decoding ------------------------------------------------------------------

TEST(Decode, PlainTextIsOneRun) {
    EXPECT_EQ(decoded("plain").text, "plain");
    EXPECT_EQ(decoded("plain").runs, (Runs{{5, brown, '.', 0}}));
    EXPECT_EQ(decoded("").runs, (Runs{{0, brown, '.', 0}}));
}

TEST(Decode, ColourInBraces) {
    EXPECT_EQ(decoded("{r error}").text, "error");
    EXPECT_EQ(decoded("{r error}").runs, (Runs{{5, red, ' ', 0}}));
}

TEST(Decode, ColourAndCodeTogetherAreBothRestored) {
    EXPECT_EQ(decoded("{r*a} b").runs, (Runs{{1, red, '*', 0}, {3, brown, '.', 0}}));
}

TEST(Decode, ColourAloneRestoresTheColourAlone) {
    EXPECT_EQ(decoded("{*a{r b}c}").runs, (Runs{{1, 0, '*', 0}, {2, red, ' ', 0}, {3, brown, ' ', 0}}));
}

TEST(Decode, ACodeWithoutALetterIsBlack) {
    EXPECT_EQ(decoded("{*bold} plain", 0).text, "bold plain");
    EXPECT_EQ(decoded("{*bold} plain", 0).runs, (Runs{{4, 0, '*', 0}, {10, 0, '.', 0}}));
}

TEST(Decode, ACodeWithoutALetterTakesTheLastLetterClosedOrNot) {
    EXPECT_EQ(decoded("{r a} {*b}").runs, (Runs{{1, red, ' ', 0}, {2, brown, ' ', 0}, {3, red, '*', 0}}));
    EXPECT_EQ(decoded("{r a{*b}").runs, (Runs{{1, red, ' ', 0}, {2, red, '*', 0}}));
}

TEST(Decode, ALetterWithoutARowIsBlack) {
    EXPECT_EQ(decoded("{O x} y").runs[0], (TextRun{1, 0, ' ', 0}));
    EXPECT_EQ(decoded("{O x").runs, (Runs{{1, 0, ' ', 0}}));
}

TEST(Decode, SubscriptsAndSuperscripts) {
    EXPECT_EQ(decoded("x_{1}^{2}").text, "x12");
    EXPECT_EQ(decoded("x_{1}^{2}").runs, (Runs{{1, brown, '.', 0}, {2, brown, '_', -3}, {3, brown, '^', 2}}));
    EXPECT_EQ(decoded("x_1 and y^2").text, "x_1 and y^2");
    EXPECT_EQ(decoded("{^up} {_down}").runs[0], (TextRun{2, 0, '^', 2}));
}

TEST(Decode, AMarkBeforeAClosingBraceOpensToo) {
    EXPECT_EQ(decoded("a_}b").text, "ab");
    EXPECT_EQ(decoded("a_}b").runs, (Runs{{1, brown, '.', 0}, {2, brown, '_', -3}}));
    EXPECT_EQ(decoded("a^}b").runs[1], (TextRun{2, brown, '^', 2}));
    EXPECT_EQ(decoded("ab\\}c").text, "a}c");
}

TEST(Decode, BracesThatAreNoMarkupStay) {
    EXPECT_EQ(decoded("{word} x").text, "{word} x");
    EXPECT_EQ(decoded("{x{r a}}").text, "{xa}");
    EXPECT_EQ(decoded("{x{r a}}").runs, (Runs{{2, brown, '.', 0}, {3, red, ' ', 0}, {4, brown, ' ', 0}}));
}

TEST(Decode, ASurplusBraceVanishesAndRestoresBoth) {
    EXPECT_EQ(decoded("a}").text, "a");
    EXPECT_EQ(decoded("{r a}}b").runs, (Runs{{1, red, ' ', 0}, {2, brown, '.', 0}}));
}

TEST(Decode, OneSpecialCharacterInFront) {
    EXPECT_EQ(decoded("{b 3.5").text, "3.5");
    EXPECT_EQ(decoded("{b 3.5").runs, (Runs{{3, 0x640000, ' ', 0}}));
    EXPECT_EQ(decoded("{*all").runs, (Runs{{3, brown, '*', 0}}));
    EXPECT_EQ(decoded("{*").runs, (Runs{{0, brown, '*', 0}}));
    EXPECT_EQ(decoded("{^all").runs[0], (TextRun{3, 0, '^', 2}));
    EXPECT_EQ(decoded("{r:all").runs, (Runs{{3, red, ':', 0}}));
    for (const char* text : {"_", "}", "{", "\\", "_x", "^x", "}x", "{xy", "{1", "\\x"}) {
        EXPECT_EQ(decoded(text).text, text);
        EXPECT_EQ(decoded(text).runs,
                  (Runs{{static_cast<std::uint32_t>(std::string(text).size()), brown, '.', 0}}));
    }
}

TEST(Decode, VerbatimEndsTheDecoding) {
    EXPECT_EQ(decoded("{:a{b}c").text, "a{b}c");
    EXPECT_EQ(decoded("ab{:c}d").text, "abc}d");
    EXPECT_EQ(decoded("ab{:c}d").runs, (Runs{{2, brown, '.', 0}, {5, 0, ':', 0}}));
    EXPECT_EQ(decoded("{:abc").runs, (Runs{{3, brown, '.', 0}}));
    EXPECT_EQ(decoded("{r:a}_{b").text, "a}_{b");
}

TEST(Decode, ADoubledBackslashWritesABrace) {
    EXPECT_EQ(decoded("ab\\\\{c").text, "ab{c");
    EXPECT_EQ(decoded("ab\\{c").text, "a{c");
    EXPECT_EQ(decoded("a\\\\}b").text, "a}b");
    EXPECT_EQ(decoded("a}\\{b").text, "a{b");
    EXPECT_EQ(decoded("\\{x").text, "{x");
    EXPECT_EQ(decoded("\\{x").runs, (Runs{{2, brown, '.', 0}}));
}

TEST(Decode, ABraceWrittenAtTheEndBelongsToNoRun) {
    EXPECT_EQ(decoded("ab\\\\{").text, "ab{");
    EXPECT_EQ(decoded("ab\\\\{").runs, Runs{});
}

// ---- Symbols ----------------------------------------------------------------------

TEST(DecodeSymbols, LettersAndNames) {
    const Decoded result = decoded("{;\\a \\leq b", 0);
    EXPECT_EQ(result.text, "a \xA3 b");
    EXPECT_EQ(result.runs, (Runs{{1, 0, '$', 0}, {2, 0, ';', 0}, {3, 0, '$', 0}, {5, 0, ';', 0}}));
    EXPECT_EQ(decoded("{;\\a+\\b").text, "a+b");
}

TEST(DecodeSymbols, EveryNameGivesItsCode) {
    EXPECT_EQ(symbolNames.size(), 33u);
    for (const auto& [name, code] : symbolNames) {
        const Decoded result = decoded("{;\\" + std::string(name));
        EXPECT_EQ(result.text, std::string{static_cast<char>(code)});
        EXPECT_EQ(result.runs[0].code, '$');
    }
}

TEST(DecodeSymbols, WhatIsNoNameStaysLiteral) {
    for (const char* text :
         {"x \\leqs y", "\\leq_", "\\ab", "\\abc", "\\a1", "\\velocity", "\\v_x", "\\8x", "\\0+"}) {
        EXPECT_EQ(decoded(std::string("{;") + text).text, text);
    }
}

TEST(DecodeSymbols, VectorsAreBold) {
    EXPECT_EQ(decoded("{;\\vE+1").text, "E+1");
    EXPECT_EQ(decoded("{;\\vE+1").runs, (Runs{{1, 0, '*', 0}, {3, 0, ';', 0}}));
    EXPECT_EQ(decoded("{;\\v").runs[0].code, '$');
}

TEST(DecodeSymbols, SignsBelowTheBracketAreSymbols) {
    EXPECT_EQ(decoded("{;\\\"+").runs[0].code, '$');
    EXPECT_EQ(decoded("{;\\\"+").text, "\"+");
    EXPECT_EQ(decoded("{;\\(+").text, "\\(+");
    EXPECT_EQ(decoded("{;\\@+").text, "\\@+");
    EXPECT_EQ(decoded("{;\\[+").text, "[+");
}

TEST(DecodeSymbols, ADoubledBackslashPrintsOneAndSwallowsTheRest) {
    EXPECT_EQ(decoded("{;a\\\\lost\\b").text, "a\\b");
    EXPECT_EQ(decoded("{;a\\\\lost").text, "a\\");
    EXPECT_EQ(decoded("{;a\\").text, "a\\");
}

TEST(DecodeSymbols, InfinityRaisesItselfAndTheRestOfItsChunk) {
    const Decoded result = decoded("{;a\\inf b\\a c{r d}", 0);
    EXPECT_EQ(result.text, "a\xA5 ba cd");
    EXPECT_EQ(result.runs, (Runs{{1, 0, ';', 0},
                                 {2, 0, '$', 1},
                                 {4, 0, ';', 1},
                                 {5, 0, '$', 1},
                                 {7, 0, ';', 1},
                                 {8, red, ' ', 0}}));
}

TEST(DecodeSymbols, WorkInsideOtherMarksUntilTheEndOfTheString) {
    const Decoded result = decoded("{;x^{\\a}}\\b", 0);
    EXPECT_EQ(result.text, "xab");
    EXPECT_EQ(result.runs[1], (TextRun{2, 0, '$', 2}));
    EXPECT_EQ(decoded("{;a}\\b").text, "ab");
}

TEST(DecodeSymbols, NotInAStringWithoutAnythingElse) {
    EXPECT_EQ(decoded("{;abc").text, "abc");
    EXPECT_EQ(decoded("{;abc").runs, (Runs{{3, brown, '.', 0}}));
}

TEST(DecodeSymbols, TheSymbolCodeKeepsTheBytes) {
    EXPECT_EQ(decoded("{$c}^{2}", 0).runs, (Runs{{1, 0, '$', 0}, {2, 0, '^', 2}}));
    EXPECT_EQ(decoded("{$n }", 0).runs, (Runs{{2, 0, '$', 0}}));
}

TEST(Decode, RunsAreAppended) {
    Runs runs{{9, 1, 'x', 7}};
    EXPECT_EQ(decode("ab", 0, runs), "ab");
    EXPECT_EQ(runs, (Runs{{9, 1, 'x', 7}, {2, 0, '.', 0}}));
}

// ---- Measuring --------------------------------------------------------------------

TEST(StripMarkup, PlainTextAndLoneMarks) {
    for (const char* text : {"", "plain", "_", "{", "}", "x_1"}) EXPECT_EQ(stripMarkup(text), text);
    EXPECT_EQ(stripMarkup("{:a{b}c"), "a{b}c");
}

TEST(StripMarkup, OpenersAndClosersDoNotCount) {
    EXPECT_EQ(stripMarkup("{b 3.5"), "3.5");
    EXPECT_EQ(stripMarkup("{r*x}y"), "xy");
    EXPECT_EQ(stripMarkup("{word"), "{word");
    EXPECT_EQ(stripMarkup("ab\\{c"), "a{c");
}

TEST(StripMarkup, TextBetweenTwoOpenersCountsTwice) {
    EXPECT_EQ(stripMarkup("{k 1,  {k 2"), "1,   {k 2");
    EXPECT_EQ(stripMarkup("ab{:c}"), "ab{:c}");
}

TEST(StripMarkup, ALengthIsThatOfTheText) {
    for (const char* text :
         {"", "a", "{b 1,  {b 22,  {r abc", "x_{1}^{2}", "\\\\{", "{_{a", "}}{{", "{r_}x{*"}) {
        EXPECT_EQ(strippedLength(text), stripMarkup(text).size()) << text;
    }
}

// ---- Tables -------------------------------------------------------------------------

class ColourTableTest : public testing::Test {
protected:
    void TearDown() override { colourTable().reset(); }
};

TEST_F(ColourTableTest, InitialRows) {
    const std::pair<char, Colour> rows[] = {
        {'a', 0x0A0A0A}, {'b', 0x640000}, {'B', 0x820000}, {'c', 0xDCFFFF}, {'C', 0xDFFFFF}, {'d', 0x000064},
        {'e', 0x008CFF}, {'f', 0xDFFFFF}, {'x', 0x2FB4F1}, {'g', 0x006400}, {'G', 0x90EE90}, {'i', 0x82004B},
        {'j', 0x6BA800}, {'k', 0x000000}, {'K', 0x0A0A0A}, {'l', 0x00F7FF}, {'m', 0xAA00AA}, {'v', 0xEE82EE},
        {'y', 0xC8FFFF}, {'n', 0xC88CFF}, {'p', 0x8780A0}, {'q', 0xD4FF7F}, {'Q', 0xFFFF00}, {'r', 0x0000AA},
        {'t', 0x8B952B}, {'w', 0xFFFFFF}, {'z', 0xA81400}};
    for (const auto& [letter, colour] : rows) {
        EXPECT_TRUE(colourTable().has(letter)) << letter;
        EXPECT_EQ(colourTable().colourOf(letter), colour) << letter;
    }
}

TEST_F(ColourTableTest, CapitalsWithoutARowAreBrightened) {
    EXPECT_EQ(colourTable().colourOf('R'), 0x0000FFu);
    EXPECT_EQ(colourTable().colourOf('D'), 0x000096u);
    EXPECT_EQ(colourTable().colourOf('M'), 0xFFFFFFu);  // green takes the value of the new blue
    EXPECT_EQ(colourTable().colourOf('J'), 0xA0A000u);
    EXPECT_EQ(colourTable().colourOf('I'), 0xC3C370u);
}

TEST_F(ColourTableTest, OtherCharactersHaveNoRow) {
    for (const char letter : {'o', 'O', 'h', 'H', 's', 'S', 'u', 'U', '1', ' ', '\0', '\xE9'}) {
        EXPECT_FALSE(colourTable().has(letter)) << letter;
        EXPECT_EQ(colourTable().colourOf(letter), 0u);
    }
}

TEST_F(ColourTableTest, CanBeChangedAndReset) {
    colourTable().set('u', 0x112233);
    colourTable().set('r', 0x445566);
    EXPECT_EQ(decoded("{u x}").runs[0].colour, 0x112233u);
    EXPECT_EQ(decoded("{r x}").runs[0].colour, 0x445566u);
    colourTable().reset();
    EXPECT_FALSE(colourTable().has('u'));
    EXPECT_EQ(colourTable().colourOf('r'), red);
}

// ---- The terminal -------------------------------------------------------------------

TEST(TerminalText, PlainDecodedUtf8) {
    EXPECT_EQ(terminalText("{r error} in {*bold}", false), "error in bold");
    EXPECT_EQ(terminalText("x_{1}^{2}", false), "x12");
    EXPECT_EQ(terminalText("caf\xE9", false), "café");
    EXPECT_EQ(terminalText("{b π", false), "π");
    EXPECT_EQ(terminalText("ab\\\\{", false), "ab{");
}

TEST(TerminalText, SymbolsBecomeUnicode) {
    EXPECT_EQ(terminalText("{$c}^{2}", false), "χ2");
    EXPECT_EQ(terminalText("{;x \\leq y", false), "x ≤ y");
    EXPECT_EQ(terminalText("{;\\a+\\b", false), "α+β");
    EXPECT_EQ(terminalText("{;\\inf", false), "∞");
}

TEST(TerminalText, Utf8IsNotCutByAStyle) { EXPECT_EQ(terminalText("{;\\v\xC3\xA9+", false), "é+"); }

TEST(TerminalText, StylesOnATerminal) {
    EXPECT_EQ(terminalText("plain", true), "plain");
    EXPECT_EQ(terminalText("{k 5", true), "5");
    EXPECT_EQ(terminalText("a{*b}c", true), "a\x1b[1mb\x1b[0mc");
    EXPECT_EQ(terminalText("{/b}", true), "\x1b[3mb\x1b[0m");
    EXPECT_EQ(terminalText("{=b}", true), "\x1b[4mb\x1b[0m");
    const std::string bold = terminalText("{r*b}", true);
    EXPECT_EQ(bold.rfind("\x1b[1;38;5;", 0), 0u);
    EXPECT_EQ(bold.substr(bold.size() - 5), "b\x1b[0m");
}

TEST(TerminalText, ControlCodesDoNotReachATerminal) {
    EXPECT_EQ(terminalText("a\tb\nc", true), "a\tb\nc");
    EXPECT_EQ(terminalText(std::string("\x1b[2J\0\x7F", 6), true), "␛[2J␀␡");
    EXPECT_EQ(terminalText("\x90 \xC2\x9B", true), "\uFFFD \uFFFD");
    EXPECT_EQ(terminalText("\x1b[2J", false), "\x1b[2J");
}

/// Contrast of a palette entry of the colour cube against a grey of a
/// luminance (W3C, Web Content Accessibility Guidelines 2.1, 2018).
double contrast(int entry, double background) {
    const int cube = entry - 16;
    const double weights[] = {0.2126, 0.7152, 0.0722};
    const int levels[] = {cube / 36, cube / 6 % 6, cube % 6};
    double y = 0;
    for (int k = 0; k < 3; ++k) {
        const double c = (levels[k] ? 55 + 40 * levels[k] : 0) / 255.0;
        y += weights[k] * (c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4));
    }
    return (std::max(y, background) + 0.05) / (std::min(y, background) + 0.05);
}

TEST(TerminalText, EveryColourIsReadableOnBlackAndOnWhite) {
    for (char letter = 'A'; letter <= 'z'; ++letter) {
        if (!colourTable().has(letter)) continue;
        const std::string text = terminalText(std::string("{") + letter + " x", true);
        int entry = 0;
        if (std::sscanf(text.c_str(), "\x1b[38;5;%dm", &entry) != 1) {
            EXPECT_EQ(text, "x");
            EXPECT_LE(colourTable().colourOf(letter) & 0xFF, 0x20u) << letter;
            continue;
        }
        EXPECT_GE(contrast(entry, 0), 3) << letter << entry;
        EXPECT_GE(contrast(entry, 1), 3) << letter << entry;
    }
}

TEST(TerminalText, HuesStayApart) {
    const auto entry = [](const char* line) { return terminalText(line, true); };
    EXPECT_NE(entry("{r x"), entry("{b x"));
    EXPECT_NE(entry("{b x"), entry("{g x"));
    EXPECT_NE(entry("{g x"), entry("{r x"));
    EXPECT_NE(entry("{m x"), entry("{r x"));
}

// ---- Anything that comes in ---------------------------------------------------------

void expectSound(std::string_view text) {
    const Decoded result = decoded(text);
    std::uint32_t last = 0;
    for (const TextRun& run : result.runs) {
        EXPECT_GE(run.end, last);
        EXPECT_LE(run.end, result.text.size());
        last = run.end;
    }
    EXPECT_EQ(strippedLength(text), stripMarkup(text).size());
    EXPECT_TRUE(isValidUtf8(terminalText(text, false)));
    EXPECT_TRUE(isValidUtf8(terminalText(text, true)));
}

TEST(AnyText, EveryShortStringOfMarkCharactersIsTaken) {
    const std::string_view characters = "{}_^\\;:r* v";
    for (std::size_t length = 0; length <= 5; ++length) {
        std::vector<std::size_t> digits(length, 0);
        for (bool more = true; more && !testing::Test::HasFailure();) {
            std::string text;
            for (const std::size_t digit : digits) text += characters[digit];
            expectSound(text);
            more = false;
            for (std::size_t& digit : digits) {
                digit = (digit + 1) % characters.size();
                if (digit != 0) {
                    more = true;
                    break;
                }
            }
        }
    }
}

TEST(AnyText, RandomBytesAreTaken) {
    unsigned state = 12345;
    const std::string_view characters("{}_^\\;:$*r linf\0\x80\xC3\xA9\xFF", 20);
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        const unsigned length = round % 40;
        for (unsigned k = 0; k < length; ++k) {
            state = state * 1664525u + 1013904223u;
            text += characters[(state >> 16) % characters.size()];
        }
        expectSound(text);
    }
}

TEST(AnyText, AMegabyteOfOnePieceIsTaken) {
    for (const std::string_view piece :
         {"{", "}", "{*", "{r ", "\\{", "_{", "{;\\", "\\a", "{r*a}", "\xC3\xA9{*\xE9}", "{;\\inf x"}) {
        std::string text;
        while (text.size() < 1000000) text += piece;
        EXPECT_TRUE(isValidUtf8(terminalText(text, true))) << piece;
        EXPECT_TRUE(isValidUtf8(terminalText("{;" + text, true))) << piece;
        EXPECT_GT(strippedLength(std::string(1000000, 'a') + text), 0u) << piece;
    }
}

}  // namespace
}  // namespace vorpen
