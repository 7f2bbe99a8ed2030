// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/encoding.h"

#include <gtest/gtest.h>

#include <set>

namespace vorpen {
namespace {

std::string allBytes() {
    std::string bytes;
    for (int code = 0; code < 256; ++code) bytes += static_cast<char>(code);
    return bytes;
}

TEST(Windows1252, AsciiIsItselfBothWays) {
    const std::string text = allBytes().substr(0, 128);
    EXPECT_EQ(fromUtf8(text), text);
    EXPECT_EQ(toUtf8(text), text);
    EXPECT_EQ(fromUtf8(""), "");
    EXPECT_EQ(toUtf8(""), "");
}

TEST(Windows1252, LettersAndSignsAreTranslated) {
    EXPECT_EQ(fromUtf8("é°µ"), "\xE9\xB0\xB5");
    EXPECT_EQ(fromUtf8("€…™Ÿ"), "\x80\x85\x99\x9F");
    EXPECT_EQ(toUtf8("caf\xE9 5\x80"), "café 5€");
}

TEST(Windows1252, ACharacterWithoutAByteBecomesAQuestionMark) {
    EXPECT_EQ(fromUtf8("aπb≤c"), "a?b?c");
    EXPECT_EQ(fromUtf8("\U0001F600"), "?");
    EXPECT_EQ(fromUtf8("x\uFEFFy"), "x?y");
}

TEST(Windows1252, AByteOrderMarkInFrontIsNoText) { EXPECT_EQ(fromUtf8("\uFEFFx=3"), "x=3"); }

TEST(Windows1252, BytesThatAreNoUtf8AreKept) {
    EXPECT_EQ(fromUtf8("caf\xE9"), "caf\xE9");
    EXPECT_EQ(fromUtf8("\xC3"), "\xC3");
    EXPECT_EQ(fromUtf8("\xE2\x89 é"), "\xE2\x89 \xE9");
}

TEST(Windows1252, EveryByteSurvivesTheWayOutAndBack) {
    for (const char byte : allBytes()) EXPECT_EQ(fromUtf8(toUtf8(std::string{byte})), std::string{byte});
}

TEST(Windows1252, ARunThatIsUtf8PassesUnchanged) {
    EXPECT_EQ(toUtf8("π=3"), "π=3");
    EXPECT_EQ(toUtf8("\xC3\xA9 \xE9"), "é é");
}

TEST(Windows1252, ARunThatIsOnlyPartlyUtf8IsTranslatedByteByByte) {
    EXPECT_EQ(toUtf8("\xE9\xC3\xA9"), "éÃ©");
}

TEST(Utf8, ValidSequences) {
    EXPECT_TRUE(isValidUtf8(""));
    EXPECT_TRUE(isValidUtf8(std::string_view("a\0b", 3)));
    EXPECT_TRUE(isValidUtf8("é≤\U0001F600\U0010FFFF"));
}

TEST(Utf8, MalformedSequences) {
    for (const char* bytes : {"\x80", "\xC3", "\xE2\x89", "\xF0\x9F\x98", "\xC3(", "\xFF", "a\xE9z"}) {
        EXPECT_FALSE(isValidUtf8(bytes)) << bytes;
    }
    for (const char* overlong : {"\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF"}) {
        EXPECT_FALSE(isValidUtf8(overlong)) << overlong;
    }
    EXPECT_FALSE(isValidUtf8("\xED\xA0\x80"));      // a surrogate
    EXPECT_FALSE(isValidUtf8("\xF4\x90\x80\x80"));  // above U+10FFFF
}

TEST(Utf8, CodePointsAreWrittenInOneToFourBytes) {
    std::string out;
    for (const char32_t codePoint : {U'a', U'é', U'≤', U'\U0001F600'}) appendUtf8(out, codePoint);
    EXPECT_EQ(out, "aé≤\U0001F600");
    out.clear();
    appendUtf8(out, 0xD800);
    appendUtf8(out, 0x110000);
    EXPECT_EQ(out, "\uFFFD\uFFFD");
}

TEST(SymbolEncoding, GreekLettersStandOnTheLatinOnes) {
    EXPECT_EQ(symbolToUtf8("abgdezhqiklmnxoprstufcyw"), "αβγδεζηθικλμνξοπρστυφχψω");
    EXPECT_EQ(symbolToUtf8("ABGDEZHQIKLMNXOPRSTUFCYW"), "ΑΒΓΔΕΖΗΘΙΚΛΜΝΞΟΠΡΣΤΥΦΧΨΩ");
    EXPECT_EQ(symbolToUtf8("VJjv\xA1"), "ςϑϕϖϒ");
}

TEST(SymbolEncoding, DigitsAndSomePunctuationAreTheirOwn) {
    EXPECT_EQ(symbolToUtf8("0123456789 !#%&()+,./:;<=>?[]_{|}"), "0123456789 !#%&()+,./:;<=>?[]_{|}");
}

TEST(SymbolEncoding, MathematicalSigns) {
    EXPECT_EQ(symbolToUtf8("\x22\x24\x27\x2A\x2D\x40\x5C\x5E\x7E"), "∀∃∋∗−≅∴⊥∼");
    EXPECT_EQ(symbolToUtf8("\xA3\xB3\xB9\xB5\xBA\xBB\xB7\xB4\xB8"), "≤≥≠∝≡≈•×÷");
    EXPECT_EQ(symbolToUtf8("\xC5\xA7\xA8\xA9\xAA\xAB\xAC\xAD\xB1"), "⊕♣♦♥♠↔←↑±");
    EXPECT_EQ(symbolToUtf8("\xAE\xAF\xE1\xF1\xE5\xD5\xD6\xF2\xC4"), "→↓⟨⟩∑∏√∫⊗");
    EXPECT_EQ(symbolToUtf8("\xBC\xD1\xA5\xB0\xB6\xD3"), "…∇∞°∂©");
    EXPECT_EQ(symbolToUtf8("\xC0\xC6\xC7\xC8\xCC\xCE\xD8\xD9\xDA\xDB\xE0\xFE"), "ℵ∅∩∪⊂∈¬∧∨⇔◊⎭");
}

TEST(SymbolEncoding, EveryCodeGivesOneCharacter) {
    for (const char code : allBytes()) EXPECT_TRUE(isValidUtf8(symbolToUtf8(std::string{code})));
    EXPECT_EQ(symbolToUnicode('\t'), U'\t');
    for (const unsigned char code : {0x7F, 0x80, 0x9F, 0xF0, 0xFF}) EXPECT_EQ(symbolToUnicode(code), 0xFFFDu);
    // Only the trade signs, which the font has with and without serifs, appear twice.
    std::set<char32_t> signs;
    int repeated = 0;
    for (int code = 0x20; code < 0xFF; ++code) {
        const char32_t sign = symbolToUnicode(static_cast<unsigned char>(code));
        if (sign != 0xFFFD && !signs.insert(sign).second) ++repeated;
    }
    EXPECT_EQ(repeated, 3);
}

}  // namespace
}  // namespace vorpen
