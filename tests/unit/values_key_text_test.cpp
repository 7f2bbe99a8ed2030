// SPDX-License-Identifier: GPL-3.0-or-later
#include "values/key_text.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

#include "base/output.h"

namespace vorpen {
namespace {

std::uint64_t bitsOf(std::string_view text) { return std::bit_cast<std::uint64_t>(zipKey(text)); }

class RecordedOutput final : public Output {
public:
    RecordedOutput() { setOutput(this); }
    ~RecordedOutput() override { setOutput(nullptr); }
    void print(std::string_view text, bool ownLine, PrintMode) override {
        said += text;
        ownLines += ownLine;
    }
    std::string said;
    int ownLines = 0;
};

TEST(KeyText, TheFirstCharacterIsTheLowestDigit) {
    EXPECT_EQ(bitsOf("cd"), (2 + 3 * 26) * 4u + 0);
    EXPECT_EQ(bitsOf("aB"), (0 + 27 * 64) * 4u + 1);
    EXPECT_EQ(bitsOf("B2"), (27 + 54 * 64) * 4u + 2);
    EXPECT_EQ(bitsOf("!~"), (1 + 94 * 94) * 4u + 3);
    EXPECT_EQ(bitsOf(""), 0u);
}

TEST(KeyText, TheHighestClassOfACharacterCounts) {
    EXPECT_EQ(bitsOf("abc") & 3, 0u);
    EXPECT_EQ(bitsOf("a.c") & 3, 1u);
    EXPECT_EQ(bitsOf("a-7") & 3, 2u);
    EXPECT_EQ(bitsOf("a-7+") & 3, 3u);
}

TEST(KeyText, KeysComeBackWhole) {
    for (const char* text : {"cd", "abcdefghijklm", "zzzzzzzzzzzzz", "Hello", "._-:,()[]'", "\"x\"", "x1.5-2",
                             "Z9Z9Z9Z9Z9", "!@#$%^&*}", "}}}}}}}}}"}) {
        EXPECT_EQ(unzipKey(zipKey(text)), text);
    }
}

TEST(KeyText, CharactersOfDigitZeroAtTheEndAreLost) {
    EXPECT_EQ(unzipKey(zipKey("ba")), "b");
    EXPECT_EQ(unzipKey(zipKey("a")), "");
    EXPECT_EQ(unzipKey(0.0), "");
}

TEST(KeyText, CharactersBeyondTheBaseCarryIntoTheNext) { EXPECT_EQ(unzipKey(zipKey("~!")), " \""); }

TEST(KeyText, PunctuationThatDigitsHaveNoRoomForBecomesZ) { EXPECT_EQ(unzipKey(zipKey("a,1")), "aZ1"); }

TEST(KeyText, ALongerKeyIsToldAndPackedAllTheSame) {
    RecordedOutput output;
    EXPECT_EQ(unzipKey(zipKey("abcdefghijklm")), "abcdefghijklm");
    EXPECT_EQ(output.said, "");
    const std::uint64_t wrapped = bitsOf("abcdefghijklmn");
    EXPECT_EQ(output.said, "key too long");
    EXPECT_EQ(output.ownLines, 1);
    std::uint64_t power = 1, sum = 0;
    for (std::uint64_t digit = 0; digit < 14; ++digit, power *= 26) sum += digit * power;
    EXPECT_EQ(wrapped, sum * 4);
    for (const char* text : {"ABCDEFGHIJK", "1234567890a", "!!!!!!!!!!"}) {
        output.said.clear();
        (void)zipKey(text);
        EXPECT_EQ(output.said, "key too long") << text;
    }
}

TEST(KeyText, AnyTextAndAnyBitsAreTaken) {
    const std::string text("\x80\xFF\0\x7F", 4);
    EXPECT_EQ(bitsOf(text) & 3, 3u);
    for (std::uint64_t bits = 1; bits != 0; bits <<= 1) {
        const std::string key = unzipKey(std::bit_cast<double>(~bits));
        EXPECT_GT(key.size(), 0u);
        EXPECT_LE(key.size(), 14u);
    }
}

}  // namespace
}  // namespace vorpen
