// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// All text that the program shows is a plain byte string that may carry marks:
// `{r text}` is red, `{*text}` bold, `x_{1}` has a subscript, `{;\alpha}` names
// a symbol. This header turns such a string into its plain text and a list of
// styled runs. It knows no window: the desktop, the figures and the terminal
// each draw the runs in their own way.
//
// Marks are never an error. What cannot be understood as a mark is shown as it
// stands, a surplus brace vanishes, and an open mark styles the rest.

#include <array>
#include <bitset>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vorpen {

/// A colour as 0x00BBGGRR.
using Colour = std::uint32_t;

/// One stretch of decoded text in one style. It starts where the run before it
/// ended. Text behind the last run belongs to none.
struct TextRun {
    std::uint32_t end;  ///< offset in the decoded text, exclusive
    Colour colour;
    char code;          ///< the style: one of ". */=$^_-:;"
    std::int32_t rise;  ///< upward shift in eighths of the font size

    bool operator==(const TextRun&) const = default;
};

/// Decodes a marked-up string: returns the plain text and appends its runs.
/// Some runs may be empty.
std::string decode(std::string_view text, Colour defaultColour, std::vector<TextRun>& runs);

/// True when the character at a position can follow `{` as the start of a mark.
[[nodiscard]] bool isMarkupStart(std::string_view text, std::size_t position);

/// The first brace at or after a position, or the `_`, `^` or `\` just before
/// it; npos when there is no brace.
[[nodiscard]] std::size_t findNextBrace(std::string_view text, std::size_t from);

/// The text of a line as its width is measured for column alignment. Text
/// between two marks counts twice; columns stay columns, since the surplus is
/// a multiple of their width.
[[nodiscard]] std::string stripMarkup(std::string_view text);

/// The length of `stripMarkup(text)`, without building it.
[[nodiscard]] std::size_t strippedLength(std::string_view text);

/// True when a text holds one of the five characters that marks are made of.
[[nodiscard]] bool holdsMarkup(std::string_view text);

/// The colours behind colour letters. Users may add to it while the program
/// runs; there is one table for the program.
class ColourTable {
public:
    ColourTable() { reset(); }

    /// Whether a letter has a row.
    [[nodiscard]] bool has(char letter) const { return present_[row(letter)]; }
    /// The colour of a letter, 0 (black) without a row.
    [[nodiscard]] Colour colourOf(char letter) const { return colours_[row(letter)]; }
    void set(char letter, Colour colour) {
        present_[row(letter)] = true;
        colours_[row(letter)] = colour;
    }
    /// Back to the rows that the program starts with.
    void reset();

private:
    static std::size_t row(char letter) { return static_cast<unsigned char>(letter); }
    std::array<Colour, 256> colours_{};
    std::bitset<256> present_;
};

ColourTable& colourTable();

/// A name of three letters and its code in the Symbol encoding.
struct SymbolName {
    std::string_view name;
    unsigned char code;
};

// clang-format off
inline constexpr std::array<SymbolName, 33> symbolNames = {{
    {"leq", 0xA3}, {"geq", 0xB3}, {"neq", 0xB9}, {"prp", 0xB5}, {"eqv", 0xBA}, {"apr", 0xBB},
    {"dot", 0xB7}, {"tms", 0xB4}, {"div", 0xB8}, {"opl", 0xC5}, {"clb", 0xA7}, {"dmd", 0xA8},
    {"hrt", 0xA9}, {"spd", 0xAA}, {"lra", 0xAB}, {"lfa", 0xAC}, {"upa", 0xAD}, {"pom", 0xB1},
    {"rta", 0xAE}, {"dna", 0xAF}, {"lab", 0xE1}, {"rab", 0xF1}, {"sum", 0xE5}, {"prd", 0xD5},
    {"sqt", 0xD6}, {"int", 0xF2}, {"otm", 0xC4}, {"ell", 0xBC}, {"nab", 0xD1}, {"inf", 0xA5},
    {"deg", 0xB0}, {"par", 0xB6}, {"crt", 0xD3},
}};
// clang-format on

}  // namespace vorpen
