// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/string_bodies.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <vector>

#include "base/number_text.h"
#include "base/output.h"
#include "builtins/arguments.h"
#include "builtins/engine_context.h"
#include "display/string_form.h"
#include "values/key_text.h"

namespace vorpen::builtin {
namespace {

/// What a number shows when no precision is given.
constexpr int defaultPrecision = 9;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// White space of the C locale.
bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

std::string_view withoutBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == text.npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// Rows of text as a character matrix, filled with blanks to the longest.
template <class T>
void storeRows(const std::vector<std::string>& rows, JMatrix<T>& out) {
    std::size_t width = 0;
    for (const auto& row : rows) width = std::max(width, row.size());
    const std::int64_t count = static_cast<std::int64_t>(rows.size());
    shapeResult(out, count, static_cast<std::int64_t>(width));
    out.setMark(FORM_STRING);
    for (std::int64_t r = 0; r < count; ++r)
        for (std::size_t c = 0; c < width; ++c)
            out.data()[static_cast<std::int64_t>(c) * count + r] =
                c < rows[r].size() ? static_cast<signed char>(rows[r][c]) : ' ';
}

std::vector<std::string> textRows(const Value& v, int precision) {
    if (v.form() != FORM_3D) return stringForm(v, precision, 0, 0, 0);
    return numberRows(v, precision, 0, 0, 0);
}

/// The character that a separator or delimiter is.
char oneCharacter(const FuncArgument& argument, std::string_view fault) {
    const Value& v = argumentValue(argument);
    Require(v.size() == 1, fault);
    return static_cast<char>(v.intValue());
}

/// Collects the pieces of a text as the string items of a list.
class Pieces {
public:
    void add(std::string_view piece) { pieces_.push_back(piece); }
    void storeIn(ListValue& out) const {
        const auto count = static_cast<std::int64_t>(pieces_.size());
        ListValue list;
        list.setSizeShapeMark(count, count > 0 ? 1 : 0, FORM_TEXT);
        for (std::int64_t i = 0; i < count; ++i) {
            auto item = std::make_unique<IntValue>();
            item->assignString(pieces_[i]);
            list.data()[i].set(std::move(item));
        }
        out.adopt(std::move(list));
    }

private:
    std::vector<std::string_view> pieces_;
};

Pieces splitAtSpace(std::string_view text) {
    Pieces pieces;
    for (std::size_t i = 0; i < text.size();) {
        if (isSpace(text[i])) {
            ++i;
            continue;
        }
        std::size_t end = i + 1;
        while (end < text.size() && !isSpace(text[end])) ++end;
        pieces.add(text.substr(i, end - i));
        i = end;
    }
    return pieces;
}

/// A separator at the start of a field stands for an empty piece; one behind a
/// field only ends it.
Pieces splitAtSeparator(std::string_view text, char separator, std::optional<char> delimiter) {
    Pieces pieces;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t end = i;
        for (bool quoted = false; end < text.size() && (quoted || text[end] != separator); ++end)
            if (delimiter && text[end] == *delimiter) quoted = !quoted;
        pieces.add(text.substr(i, end - i));
        i = end + 1;
    }
    return pieces;
}

/// Appends the elements of a numeric value, truncated to integers. Most are the
/// few codes of a word, for which a call of the library's copy is a detour.
void appendTruncated(const Value& v, int*& to) {
    if (v.valueType() == INTEGER_VAL)
        for (const int code : asInt(v).items()) *to++ = code;
    else
        to = std::ranges::transform(asDouble(v).items(), to, truncateToInt).out;
}

/// The elements of many values, one behind the other. Each value is looked at
/// once only, since to fetch it is most of the work for a word; so the room is
/// guessed, and grows where the guess was too low.
class JoinedCodes {
public:
    explicit JoinedCodes(std::int64_t expected) {
        codes_.setSize(std::clamp<std::int64_t>(expected, 0, maxElements));
        to_ = codes_.data();
    }
    void append(const Value& v) {
        if (const std::int64_t needed = used() + v.size(); needed > codes_.size()) grow(needed);
        appendTruncated(v, to_);
    }
    /// The result with a mark.
    IntValue finish(int mark) {
        const std::int64_t count = used();
        codes_.resize(count);
        codes_.setSizeShapeMark(count, count > 0 ? 1 : 0, mark);
        return std::move(codes_);
    }

private:
    [[nodiscard]] std::int64_t used() const { return to_ - codes_.data(); }
    void grow(std::int64_t needed) {
        const std::int64_t before = used();
        codes_.resize(std::max(needed, std::min(2 * before, maxElements)));
        to_ = codes_.data() + before;
    }
    IntValue codes_;
    int* to_;
};

/// About how many elements the items have, from a few of them.
std::int64_t guessedElements(const ListValue& list) {
    constexpr int looks = 64;
    const int step = std::max(list.size() / looks, 1);
    std::int64_t seen = 0, elements = 0;
    for (int i = 0; i < list.size(); i += step, ++seen) elements += list[i].itemSize();
    return seen > 0 ? elements * list.size() / seen * 17 / 16 : 0;
}

/// The form of a row of truncated elements: keys do not survive truncation,
/// planes do not survive in a row.
int truncatedForm(const Value& v) { return v.form() == FORM_KEY ? int{FORM_NUMERIC} : partMark(v); }

/// For each length of a matched prefix, the length of the longest proper
/// prefix of the pattern that ends it. Source: D. E. Knuth, J. H. Morris, V.
/// R. Pratt, Fast pattern matching in strings, SIAM J. Comput. 6 (1977).
std::vector<int> borderLengths(const DoubleValue& pattern) {
    std::vector<int> border(pattern.size(), 0);
    for (int i = 1, k = 0; i < pattern.size(); ++i) {
        while (k > 0 && pattern[i] != pattern[k]) k = border[k - 1];
        if (pattern[i] == pattern[k]) ++k;
        border[i] = k;
    }
    return border;
}

/// Positions from 1 of all occurrences, overlapping ones included.
std::vector<int> occurrences(const DoubleValue& text, const DoubleValue& pattern) {
    std::vector<int> found;
    if (pattern.isEmpty()) return found;
    const std::vector<int> border = borderLengths(pattern);
    for (int i = 0, k = 0; i < text.size(); ++i) {
        while (k > 0 && text[i] != pattern[k]) k = border[k - 1];
        if (text[i] == pattern[k]) ++k;
        if (k == pattern.size()) {
            found.push_back(i - k + 2);
            k = border[k - 1];
        }
    }
    return found;
}

/// A number to be written in binary digits, truncated.
std::uint64_t binaryArgument(double x) {
    Require(!(x <= -1), "negative numbers are not handled, sorry", "tobinary");
    // The digits of a double above 2^63 are more than any use has for them.
    Require(x < 9223372036854775808.0, "integer overflow", "binary");
    return static_cast<std::uint64_t>(x);
}

/// A row of digits of a matrix, ended by its least significant digit.
void writeDigits(std::uint64_t number, double* lastDigit, std::int64_t stride, std::int64_t count) {
    for (std::int64_t k = 0; k < count; ++k, number >>= 1) *(lastDigit - k * stride) = static_cast<double>(number & 1);
}

int numberOfDigits(const DoubleValue& digits, std::int64_t first, std::int64_t stride, std::int64_t count) {
    std::int64_t number = 0;
    for (std::int64_t k = 0; k < count; ++k) {
        const double digit = digits.data()[first + k * stride];
        Require(digit == 0 || digit == 1, "invalid binary digit", "unbinary");
        number = 2 * number + static_cast<int>(digit);
        Require(number <= INT32_MAX, "integer overflow");
    }
    return static_cast<int>(number);
}

int integerOfBase(const std::string& text, int base) {
    constexpr std::string_view fault = "invalid stoi argument";
    Require(base >= 2 && base <= 36, fault);
    char* end = nullptr;
    errno = 0;
    const long number = std::strtol(text.c_str(), &end, base);
    Require(end != text.c_str(), fault);
    Require(errno == 0 && number >= INT32_MIN && number <= INT32_MAX, "stoi argument out of range");
    return static_cast<int>(number);
}

double decimalNumber(std::string_view text) {
    std::string_view number = withoutBlanks(text);
    if (number.front() == '+') number.remove_prefix(1);
    double x = 0;
    const auto [end, fault] = std::from_chars(number.data(), number.data() + number.size(), x);
    Require(fault != std::errc::result_out_of_range, "stod argument out of range");
    Require(fault == std::errc{}, "invalid stod argument");
    return x;
}

}  // namespace

void toText(const Value& v, const DoubleValue* precision, Value& result) {
    DoubleValue& out = doubleResult(result, "str");
    Require(!precision || precision->isScalar(), "non-scalar precision", "str");
    const int digits = precision ? truncateToInt((*precision)[0]) : defaultPrecision;
    if (v.isScalar() && v.form() <= FORM_BOOL && v.valueType() == DOUBLE_VAL) {
        std::string text;
        appendDoubleText(text, asDouble(v)[0], digits);
        out.assignString(text += ' ');
        return;
    }
    const std::vector<std::string> rows = textRows(v, digits);
    if (rows.size() == 1)
        out.assignString(rows[0]);
    else
        storeRows(rows, out);
}

bool holdsNumber(std::string_view text) {
    text = withoutBlanks(text);
    std::size_t i = 0;
    const auto skipDigits = [&] {
        const std::size_t first = i;
        while (i < text.size() && isDigit(text[i])) ++i;
        return i - first;
    };
    const auto skipSign = [&] {
        if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
    };
    skipSign();
    std::size_t digits = skipDigits();
    if (i < text.size() && text[i] == '.') {
        ++i;
        digits += skipDigits();
    }
    if (digits == 0) return false;
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        ++i;
        skipSign();
        if (skipDigits() == 0) return false;
    }
    return i == text.size();
}

int isNumber(const Value& text) {
    Require(text.isString() && text.isNumericKind(), "isnum called for a non-string");
    return holdsNumber(text.text());
}

void toNumber(const Value& text, const DoubleValue* base, Value& result) {
    DoubleValue& out = doubleResult(result, "str2num");
    constexpr std::string_view fault = "str2num called on non-number string";
    Require(text.isString(), fault);
    const std::string s = text.text();
    if (base) {
        out.assignDouble(integerOfBase(s, truncateToInt(scalarArgument(*base))));
    } else {
        Require(holdsNumber(s), fault);
        out.assignDouble(decimalNumber(s));
    }
}

void split(std::span<FuncArgument> arguments, ExtraOutputs, Value& result) {
    const Value& v = argumentValue(arguments[0]);
    Require(v.isEmpty() || (v.isString() && v.isNumericKind()), "argument must be a string", "split");
    const std::string text = v.text();
    auto& out = static_cast<ListValue&>(result);
    if (arguments.size() == 1) return splitAtSpace(text).storeIn(out);
    const char separator = oneCharacter(arguments[1], "only single-character separator allowed");
    std::optional<char> delimiter;
    if (arguments.size() > 2) delimiter = oneCharacter(arguments[2], "only single-character delimiter allowed");
    splitAtSeparator(text, separator, delimiter).storeIn(out);
}

void join(std::span<FuncArgument> arguments, ExtraOutputs, Value& result) {
    const Value& v = argumentValue(arguments[0]);
    Require(v.valueType() == LIST_VAL, "argument must be a list", "join");
    const auto& list = static_cast<const ListValue&>(v);
    const Value* between = arguments.size() > 1 ? &argumentValue(arguments[1]) : nullptr;
    Require(!between || between->valueType() <= DOUBLE_VAL, "invalid argument type");
    const std::int64_t separators = between ? std::int64_t{between->size()} * list.size() : 0;
    JoinedCodes codes(guessedElements(list) + separators);
    for (int i = 0; i < list.size(); ++i) {
        const Value* const item = list[i].get();
        Require(item != nullptr, "invalid argument");
        Require(item->isNumericKind(), "join not yet implemented for nested lists");
        Require(item->valueType() <= DOUBLE_VAL, "invalid argument type");
        if (i > 0 && between) codes.append(*between);
        codes.append(*item);
    }
    asInt(result).adopt(codes.finish(list.isEmpty() ? int{FORM_NUMERIC} : truncatedForm(*list[0].get())));
}

void pad(std::span<FuncArgument> arguments, ExtraOutputs, Value& result) {
    const Value& v = argumentValue(arguments[0]);
    Require(v.isNumericKind(), "invalid argument");
    Require(v.valueType() <= DOUBLE_VAL, "invalid argument type");
    Require(v.isVector(), "pad does not take matrix input", "pad");
    const std::int64_t length = countOf(scalarArgument(argumentValue(arguments[1])));
    Require(length >= 0, "size must be non-negative", "pad");
    int fill = v.isString() ? ' ' : 0;
    if (arguments.size() > 2) fill = truncateToInt(scalarArgument(argumentValue(arguments[2])));
    const bool inFront = arguments.size() > 3 && scalarArgument(argumentValue(arguments[3])) < 1;

    IntValue elements, out;
    shapeVector(elements, v.size(), isColumn(v));
    int* to = elements.data();
    appendTruncated(v, to);
    shapeVector(out, length, isColumn(v));
    out.setMark(truncatedForm(v));
    const std::int64_t kept = std::min<std::int64_t>(length, v.size());
    const std::int64_t first = inFront ? length - kept : 0;
    std::ranges::fill(out.items(), fill);
    std::copy_n(elements.data(), kept, out.data() + first);
    asInt(result).adopt(std::move(out));
}

void trim(const Value& text, IntValue& out) {
    Require(text.isEmpty() || text.isString(), "argument must be a string", "trim");
    Require(text.isVector(), "trim does not take matrix input", "trim");
    out.assignString(withoutBlanks(text.text()));
}

void findText(const Value& text, const DoubleValue* part, Value& result) {
    DoubleValue& out = doubleResult(result, "strfind");
    Require(part != nullptr, "strfind/findstr requires two arguments");
    DoubleValue scratch;
    const std::vector<int> found = occurrences(asDoubles(text, scratch), *part);
    if (found.empty()) return makeEmpty(out);
    shapeResult(out, 1, static_cast<std::int64_t>(found.size()));
    std::ranges::copy(found, out.data());
}

void evaluate(const Value& text, DoubleValue& out) {
    Require(text.isString(), "requires a string argyment", "eval");
    Require(engineContext().evaluateText != nullptr, "eval is not available yet");
    // The argument may be the result itself.
    const std::string source = text.text();
    engineContext().evaluateText(source, out);
}

void binaryDigits(const Value& n, const DoubleValue* width, Value& result) {
    DoubleValue& out = doubleResult(result, "binary");
    Require(n.isVector(), "requires scalar or vector argument", "binary");
    DoubleValue scratch, digits;
    const DoubleValue& numbers = asDoubles(n, scratch);
    const std::int64_t wanted = width ? countOf(scalarArgument(*width)) : 0;
    Require(wanted >= 0 || numbers.size() <= 1, "reverse option not available for matrix");
    std::int64_t count = 1;
    for (const double x : numbers.items())
        count = std::max<std::int64_t>(count, std::bit_width(binaryArgument(x)));
    count = wanted < 0 ? -wanted : std::max(count, wanted);
    const std::int64_t rows = numbers.size();
    shapeResult(digits, rows, rows > 0 ? count : 0);
    for (std::int64_t r = 0; r < rows; ++r)
        writeDigits(binaryArgument(numbers.data()[r]), digits.data() + (count - 1) * rows + r, rows, count);
    if (wanted < 0) std::ranges::reverse(digits.items());
    out.adopt(std::move(digits));
}

void fromBinaryDigits(const Value& v, IntValue& out) {
    DoubleValue scratch;
    const DoubleValue& digits = asDoubles(v, scratch);
    if (digits.isEmpty()) return makeEmpty(out);
    if (digits.isVector()) return out.assignInt(numberOfDigits(digits, 0, 1, digits.size()));
    const int rows = digits.nrow();
    shapeVector(out, rows, true);
    for (int r = 0; r < rows; ++r) out[r] = numberOfDigits(digits, r, rows, digits.ncol());
}

void packKey(const Value& text, DoubleValue& out) {
    if (!text.isString()) output().print("zipKey called on non-string", true, PrintMode::markup);
    const double key = zipKey(text.text());
    out.assignDouble(key);
    out.setMark(FORM_KEY);
}

void unpackKey(const Value& v, IntValue& out) {
    DoubleValue scratch;
    const DoubleValue& keys = asDoubles(v, scratch);
    std::vector<std::string> rows;
    for (const double key : keys.items()) rows.push_back(unzipKey(key));
    if (rows.size() <= 1)
        out.assignString(rows.empty() ? std::string() : rows[0]);
    else
        storeRows(rows, out);
}

}  // namespace vorpen::builtin
