// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/markup.h"

#include <algorithm>

#include "base/errors.h"

namespace vorpen {
namespace {

constexpr std::size_t none = std::string_view::npos;
constexpr std::string_view markCharacters = "{}_^\\";
constexpr std::string_view styleCodes = ".*=/$^_-";

bool isStyleCode(char c) { return styleCodes.find(c) != none; }
bool isLower(char c) { return c >= 'a' && c <= 'z'; }
bool isLetter(char c) { return isLower(c) || (c >= 'A' && c <= 'Z'); }
bool isNameCharacter(char c) { return isLetter(c) || (c >= '0' && c <= '9') || c == '_'; }

int riseOf(char code) { return code == '^' ? 2 : code == '_' ? -3 : 0; }

/// The characters from one place up to another; none when they cross.
std::string_view between(std::string_view text, std::size_t from, std::size_t to) {
    return to > from ? text.substr(from, to - from) : std::string_view();
}

// ---- Openers ----------------------------------------------------------------

/// What stands behind an opening brace: a code alone, or a colour letter and a
/// code.
struct Opener {
    char letter = 0;  ///< 0 without a colour letter
    char code;
    std::size_t length;  ///< with the brace
};

/// Reads the opener whose brace stands at a place; it has passed isMarkupStart.
Opener readOpener(std::string_view text, std::size_t brace) {
    const char first = text[brace + 1];
    if (first == ':' || first == ';' || isStyleCode(first)) return {0, first, 2};
    return {first, text[brace + 2], 3};
}

// ---- Symbol names -------------------------------------------------------------

unsigned char symbolCode(std::string_view name) {
    const auto row = std::find_if(symbolNames.begin(), symbolNames.end(),
                                  [name](const SymbolName& symbol) { return symbol.name == name; });
    return row == symbolNames.end() ? 0 : row->code;
}

constexpr unsigned char infinityCode = 0xA5;

/// How the text behind a backslash begins.
struct SymbolPart {
    char style = 0;          ///< `$` a symbol, `*` a bold letter, 0 plain text
    char glyph = 0;          ///< the one character in that style
    std::size_t length = 0;  ///< of what it stands for
};

SymbolPart classifyPart(std::string_view part) {
    constexpr SymbolPart literal;
    if (part.empty()) return literal;
    const SymbolPart letter{'$', part[0], 1};
    if (part.size() == 1) return letter;
    if (part[0] == 'v') {
        const bool isWord = part.size() > 2 && isNameCharacter(part[2]);
        return isWord ? literal : SymbolPart{'*', part[1], 2};
    }
    if (isNameCharacter(part[1])) {
        const unsigned char code = part.size() < 3 ? 0 : symbolCode(part.substr(0, 3));
        if (code == 0 || (part.size() > 3 && isNameCharacter(part[3]))) return literal;
        return {'$', static_cast<char>(code), 3};
    }
    const auto first = static_cast<unsigned char>(part[0]);
    return first >= 'A' || first < '(' ? letter : literal;
}

// ---- The decoder --------------------------------------------------------------

class RichTextDecoder {
public:
    RichTextDecoder(std::string_view input, Colour defaultColour, std::vector<TextRun>& runs)
        : input_(input), defaultColour_(defaultColour), currentColour_(defaultColour), runs_(runs) {}

    std::string decode();

private:
    void addRun(std::size_t end, Colour colour, char code, int rise) {
        runs_.push_back({static_cast<std::uint32_t>(end), colour, code, rise});
    }
    std::string plain(std::string_view text) {
        addRun(text.size(), defaultColour_, '.', 0);
        return std::string(text);
    }
    std::string decodeLeadingMark();
    void emitTo(std::size_t end);
    void emitSymbols(std::string_view chunk);
    std::size_t escapedBrace(std::size_t at);
    std::size_t raisedText(std::size_t at);
    std::size_t openingBrace(std::size_t at);
    std::size_t closingBrace(std::size_t at);

    std::string_view input_;
    const Colour defaultColour_;
    Colour currentColour_;
    char currentCode_ = '.';
    bool symbolMode_ = false;
    char lastColourLetter_ = 0;
    std::size_t chunkStart_ = 0;  ///< of the input that is not emitted yet
    /// What each open brace changed: `n` nothing, the brace is text; `f` the
    /// code; `c` the colour; `b` both; `:` nothing.
    std::string closers_;
    std::string output_;
    std::vector<TextRun>& runs_;
};

/// A string whose only special character stands in front. An opener there has
/// no end and styles the whole.
std::string RichTextDecoder::decodeLeadingMark() {
    if (input_[0] != '{') return plain(input_);
    if (input_[1] == ':' || input_[1] == ';') return plain(input_.substr(2));
    if (!isMarkupStart(input_, 1)) return plain(input_);
    const Opener opener = readOpener(input_, 0);
    const Colour colour = opener.letter ? colourTable().colourOf(opener.letter) : defaultColour_;
    addRun(input_.size() - opener.length, colour, opener.code, riseOf(opener.code));
    return std::string(input_.substr(opener.length));
}

void RichTextDecoder::emitTo(std::size_t end) {
    const std::string_view chunk = between(input_, chunkStart_, end);
    if (chunk.empty()) return;
    if (symbolMode_ && currentCode_ != ':' && chunk.find('\\') != none) {
        emitSymbols(chunk);
        return;
    }
    output_ += chunk;
    addRun(output_.size(), currentColour_, currentCode_, riseOf(currentCode_));
}

void RichTextDecoder::emitSymbols(std::string_view chunk) {
    int rise = riseOf(currentCode_);
    std::size_t backslash = chunk.find('\\');
    if (backslash > 0) {
        output_ += chunk.substr(0, backslash);
        addRun(output_.size(), currentColour_, currentCode_, rise);
    }
    while (backslash != none) {
        const std::size_t start = backslash + 1;
        backslash = chunk.find('\\', start);
        const std::string_view part = between(chunk, start, std::min(backslash, chunk.size()));
        const SymbolPart symbol = classifyPart(part);
        if (symbol.style) {
            if (symbol.length == 3 && static_cast<unsigned char>(symbol.glyph) == infinityCode) ++rise;
            output_ += symbol.glyph;
            addRun(output_.size(), currentColour_, symbol.style, rise);
        } else {
            output_ += '\\';
        }
        output_ += part.substr(symbol.length);
        addRun(output_.size(), currentColour_, currentCode_, rise);
        // A doubled backslash swallows the text up to the next one.
        if (part.empty() && backslash != none) backslash = chunk.find('\\', backslash + 1);
    }
}

// The next four handle one character each and answer where the search goes on.

std::size_t RichTextDecoder::escapedBrace(std::size_t at) {
    // The character before the backslash goes too, so that a doubled backslash
    // is the way to write a brace.
    output_ += between(input_, chunkStart_, std::max<std::size_t>(at, 1) - 1);
    output_ += input_[at + 1];
    chunkStart_ = at + 2;
    return chunkStart_;
}

std::size_t RichTextDecoder::raisedText(std::size_t at) {
    emitTo(at);
    currentCode_ = input_[at];
    chunkStart_ = at + 2;
    closers_ += 'f';
    return chunkStart_;
}

std::size_t RichTextDecoder::openingBrace(std::size_t at) {
    if (!isMarkupStart(input_, at + 1)) {
        closers_ += 'n';
        return at + 1;
    }
    emitTo(at);
    const Opener opener = readOpener(input_, at);
    if (opener.letter) lastColourLetter_ = opener.letter;
    currentCode_ = opener.code;
    // Also without a letter of its own: the last letter counts, closed or not.
    currentColour_ = colourTable().colourOf(lastColourLetter_);
    chunkStart_ = at + opener.length;
    if (opener.code == ':') return none;
    if (opener.code == ';') {
        symbolMode_ = true;
        closers_ += ':';
    } else if (opener.letter) {
        closers_ += opener.code == ' ' ? 'c' : 'b';
    } else {
        closers_ += 'f';
    }
    return at + 1;
}

std::size_t RichTextDecoder::closingBrace(std::size_t at) {
    const char kind = closers_.empty() ? 'b' : closers_.back();
    if (!closers_.empty()) closers_.pop_back();
    if (kind == 'n') return at + 1;
    emitTo(at);
    chunkStart_ = at + 1;
    if (kind == 'c' || kind == 'b') currentColour_ = defaultColour_;
    if (kind == 'f' || kind == 'b') currentCode_ = '.';
    return chunkStart_;
}

std::string RichTextDecoder::decode() {
    const std::size_t last = input_.find_last_of(markCharacters);
    if (last == none || input_.size() == 1) return plain(input_);
    if (last == 0 && input_[0] != '\\') return decodeLeadingMark();
    output_.reserve(input_.size());
    std::size_t from = 0;
    while (from != none) {
        const std::size_t at = findNextBrace(input_, from);
        if (at == none) break;
        switch (input_[at]) {
            case '\\': from = escapedBrace(at); break;
            case '_':
            case '^': from = raisedText(at); break;
            case '{': from = openingBrace(at); break;
            case '}': from = closingBrace(at); break;
            default: raiseRuntimeError("something wrong with text decoding");
        }
    }
    emitTo(input_.size());
    return std::move(output_);
}

// ---- Measuring ------------------------------------------------------------------

/// Walks over a line and hands on the pieces that count as its text.
template <class Emit>
void visitStripped(std::string_view text, Emit emit) {
    std::size_t at = findNextBrace(text, 0);
    if (at == none || (at == 0 && text.size() == 1)) return emit(text);
    if (at == 0 && text[1] == ':') return emit(text.substr(2));
    std::size_t chunkStart = 0;
    while (at != none) {
        std::size_t from = at + 1;
        if (at > 0 && text[at - 1] == '\\') {
            emit(between(text, chunkStart, std::max<std::size_t>(at, 2) - 2));
            emit(text.substr(at, 1));
            chunkStart = at + 1;
            from = at + 2;
        } else if (text[at] == '}') {
            emit(between(text, chunkStart, at));
            chunkStart = at + 1;
        } else if (isMarkupStart(text, at + 1)) {
            emit(between(text, chunkStart, at));
            const Opener opener = readOpener(text, at);
            // From the old start, not from the brace.
            chunkStart += opener.length;
            if (opener.code == ':') break;
        }
        at = findNextBrace(text, from);
        // The mark before a brace has had its turn.
        if (at != none) at = std::max(at, from);
    }
    emit(between(text, chunkStart, text.size()));
}

// ---- Tables -----------------------------------------------------------------------

struct ColourRow {
    char letter;
    Colour colour;
};

// clang-format off
constexpr ColourRow initialColours[] = {
    {'a', 0x0A0A0A}, {'b', 0x640000}, {'B', 0x820000}, {'c', 0xDCFFFF}, {'C', 0xDFFFFF},
    {'d', 0x000064}, {'e', 0x008CFF}, {'f', 0xDFFFFF}, {'x', 0x2FB4F1}, {'g', 0x006400},
    {'G', 0x90EE90}, {'i', 0x82004B}, {'j', 0x6BA800}, {'k', 0x000000}, {'K', 0x0A0A0A},
    {'l', 0x00F7FF}, {'m', 0xAA00AA}, {'v', 0xEE82EE}, {'y', 0xC8FFFF}, {'n', 0xC88CFF},
    {'p', 0x8780A0}, {'q', 0xD4FF7F}, {'Q', 0xFFFF00}, {'r', 0x0000AA}, {'t', 0x8B952B},
    {'w', 0xFFFFFF}, {'z', 0xA81400},
};
// clang-format on

/// The colour of a capital without a row of its own: red and blue half as
/// strong again, and green as the new blue.
Colour brightened(Colour colour) {
    const auto stronger = [](Colour component) { return std::min<Colour>(3 * component / 2, 255); };
    const Colour red = stronger(colour & 0xFF), blue = stronger(colour >> 16 & 0xFF);
    return blue << 16 | blue << 8 | red;
}

}  // namespace

std::string decode(std::string_view text, Colour defaultColour, std::vector<TextRun>& runs) {
    return RichTextDecoder(text, defaultColour, runs).decode();
}

bool isMarkupStart(std::string_view text, std::size_t position) {
    if (position >= text.size()) return false;
    const char first = text[position];
    if (first == ':' || first == ';' || isStyleCode(first)) return true;
    if (position + 1 >= text.size() || !isLetter(first)) return false;
    const char second = text[position + 1];
    return second == ' ' || second == ':' || second == ';' || isStyleCode(second);
}

std::size_t findNextBrace(std::string_view text, std::size_t from) {
    const auto begin = text.begin() + static_cast<std::ptrdiff_t>(std::min(from, text.size()));
    const auto brace = std::find_if(begin, text.end(), [](char c) { return c == '{' || c == '}'; });
    if (brace == text.end()) return none;
    const auto at = static_cast<std::size_t>(brace - text.begin());
    const bool marked = at > 0 && (text[at - 1] == '_' || text[at - 1] == '^' || text[at - 1] == '\\');
    return marked ? at - 1 : at;
}

std::string stripMarkup(std::string_view text) {
    std::string visible;
    visitStripped(text, [&visible](std::string_view piece) { visible += piece; });
    return visible;
}

std::size_t strippedLength(std::string_view text) {
    std::size_t length = 0;
    visitStripped(text, [&length](std::string_view piece) { length += piece.size(); });
    return length;
}

bool holdsMarkup(std::string_view text) { return text.find_first_of(markCharacters) != none; }

void ColourTable::reset() {
    present_.reset();
    colours_.fill(0);
    for (const auto& [letter, colour] : initialColours) set(letter, colour);
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        const char capital = static_cast<char>(letter - 'a' + 'A');
        if (has(letter) && !has(capital)) set(capital, brightened(colourOf(letter)));
    }
}

ColourTable& colourTable() {
    static ColourTable table;
    return table;
}

}  // namespace vorpen
