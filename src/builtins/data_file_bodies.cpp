// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/data_file_bodies.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <vector>

#include "base/encoding.h"
#include "base/output.h"
#include "base/replace_file.h"
#include "builtins/arguments.h"
#include "builtins/engine_context.h"
#include "builtins/text_of_files.h"
#include "files/text_table.h"
#include "files/whole_file.h"
#include "values/serial_form.h"

namespace vorpen::builtin {
namespace {

constexpr std::string_view valueExtension = "jmt", textExtension = "txt", scriptExtension = "vrp";

std::string nameArgument(const FuncArgument& argument, std::string_view context) {
    const Value& name = argumentValue(argument);
    Require(name.isString() && name.valueType() <= DOUBLE_VAL, "the file name must be a string", context);
    return name.text();
}

std::string pathOf(const std::string& name, bool mustExist, std::string_view extension) {
    return engineContext().directories().fullName(name, mustExist, extension);
}

/// A file that is there, but is a directory or not for this user to read, is
/// told like one that cannot be opened.
FileText readExisting(const std::string& name, std::string_view extension) {
    auto text = readWholeFile(pathOf(name, true, extension));
    Require(text.has_value(), "could not open input file");
    return std::move(*text);
}

/// Writes a file as a whole; `cannotOpen` is told when there can be none, and
/// `cannotWrite` when there was no room for all of it.
void writeWholeFile(const std::string& path, const std::function<void(std::ostream&)>& write,
                    std::string_view cannotOpen, std::string_view cannotWrite, std::string_view context) {
    bool begun = false;
    const bool done = replaceFile(toUtf8(path), [&](std::ostream& out) {
        begun = true;
        write(out);
    });
    Require(done || begun, cannotOpen, context);
    Require(done, cannotWrite, context);
}

/// The lines of a text without their ends, a line feed or a carriage return and
/// line feed.
std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t feed = text.find('\n');
        std::string_view line = text.substr(0, feed);
        if (feed != text.npos && line.ends_with('\r')) line.remove_suffix(1);
        lines.push_back(line);
        text.remove_prefix(feed == text.npos ? text.size() : feed + 1);
    }
    return lines;
}

/// A square of this many rows and columns of doubles, twice, stays in the
/// first-level cache while it is turned.
constexpr std::int64_t turnedAtOnce = 32;

/// The table as the elements of a matrix lie, column after column.
void storeColumns(const NumberTable& table, double* out) {
    const std::int64_t rows = table.rows(), columns = table.columns;
    for (std::int64_t r0 = 0; r0 < rows; r0 += turnedAtOnce) {
        const std::int64_t rEnd = std::min(rows, r0 + turnedAtOnce);
        for (std::int64_t c0 = 0; c0 < columns; c0 += turnedAtOnce) {
            const std::int64_t cEnd = std::min(columns, c0 + turnedAtOnce);
            for (std::int64_t c = c0; c < cEnd; ++c)
                for (std::int64_t r = r0; r < rEnd; ++r) out[c * rows + r] = table.numbers[r * columns + c];
        }
    }
}

DoubleValue wholeTable(const NumberTable& table) {
    DoubleValue matrix;
    shapeResult(matrix, table.rows(), table.columns);
    storeColumns(table, matrix.data());
    return matrix;
}

DoubleValue columnOf(const NumberTable& table, std::int64_t c) {
    DoubleValue column;
    shapeResult(column, table.rows(), 1);
    for (std::int64_t r = 0; r < table.rows(); ++r) column.data()[r] = table.numbers[r * table.columns + c];
    return column;
}

/// Hands a finished result over, without a copy where the kinds agree.
void deliver(DoubleValue&& result, Value& out) {
    if (out.valueType() == DOUBLE_VAL)
        asDouble(out).adopt(std::move(result));
    else
        out.assign(result);
}

}  // namespace

void saveValue(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    const std::string path = pathOf(nameArgument(arguments[0], "qsave"), false, valueExtension);
    const Value& value = argumentValue(arguments[1]);
    Require(canBeStored(value), "the lists are nested too deeply", "qsave");
    writeWholeFile(path, [&](std::ostream& stream) { writeValue(stream, value); },
                   "could not open output file", "could not write the whole value", {});
    out.assignInt(1);
}

void loadValue(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    const std::string path = pathOf(nameArgument(arguments[0], "qload"), true, valueExtension);
    std::ifstream stream(toUtf8(path), std::ios::binary);
    Require(stream && Dir::fileKind(path) != FileKind::directory, "could not open input file");
    auto value = readValue(stream);
    Require(value.has_value(), "could not read value");
    if (!*value) return makeEmpty(out);
    Value& read = **value;
    if (read.valueType() != out.valueType()) {
        out.assign(read);
        return;
    }
    switch (read.valueType()) {
        case INTEGER_VAL: return asInt(out).adopt(std::move(asInt(read)));
        case DOUBLE_VAL: return asDouble(out).adopt(std::move(asDouble(read)));
        case COMPLEX_VAL: return asComplex(out).adopt(std::move(asComplex(read)));
        case LIST_VAL: return static_cast<ListValue&>(out).adopt(std::move(static_cast<ListValue&>(read)));
    }
}

std::optional<ValueType> typeOfStoredValue(const std::string& name) {
    try {
        const std::string path = pathOf(name, true, valueExtension);
        if (Dir::fileKind(path) == FileKind::directory) return std::nullopt;
        std::ifstream stream(toUtf8(path), std::ios::binary);
        return readValueType(stream);
    } catch (const RuntimeError&) {
        return std::nullopt;  // told when the call runs
    }
}

void loadTable(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out) {
    const std::string name = nameArgument(arguments[0], "load");
    const FileText file = readExisting(name, textExtension);
    const std::size_t further = extraOutputs ? extraOutputs->size() : 0;
    if (arguments.size() > 1) {
        Require(further == 0, "too many output arguments", "load");
        const std::vector<double> numbers = readNumbers(file.text());
        DoubleValue column;
        shapeResult(column, static_cast<std::int64_t>(numbers.size()), 1);
        std::copy(numbers.begin(), numbers.end(), column.data());
        return deliver(std::move(column), out);
    }
    const NumberTable table = readTable(file.text(), static_cast<std::int64_t>(further) + 1, name);
    if (further == 0) return deliver(wholeTable(table), out);
    // All are made before any is stored, so that a failure leaves the targets.
    std::vector<DoubleValue> columns;
    for (std::size_t c = 0; c <= further; ++c)
        columns.push_back(columnOf(table, static_cast<std::int64_t>(c)));
    deliver(std::move(columns[0]), out);
    for (std::size_t c = 1; c <= further; ++c) deliver(std::move(columns[c]), *(*extraOutputs)[c - 1]);
}

void saveTable(std::span<FuncArgument>, ExtraOutputs, Value&) {
    raiseRuntimeError(
        "built-in version of save is not yet implemented; sorry! (Maybe try savecsv or fwrite)");
}

void readLines(std::span<FuncArgument> arguments, ExtraOutputs, Value& result) {
    const FileText file = readExisting(nameArgument(arguments[0], "readtext"), textExtension);
    const std::vector<std::string_view> lines = linesOf(file.text());
    ListValue list;
    const int count = dimensionOf(static_cast<std::int64_t>(lines.size()));
    list.setSizeShapeMark(count, count, FORM_TEXT);
    for (int i = 0; i < count; ++i) {
        auto item = std::make_unique<IntValue>();
        item->assignString(lines[i]);
        list[i].set(std::move(item));
    }
    static_cast<ListValue&>(result).adopt(std::move(list));
}

void writeLines(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    const std::string name = nameArgument(arguments[0], "writetext");
    const std::string path = pathOf(name, false, textExtension);
    const std::vector<std::string> lines = linesInFile(argumentValue(arguments[1]));
    const auto write = [&lines](std::ostream& stream) {
        for (const std::string& line : lines) stream.write(line.data(), std::ssize(line)).put('\n');
    };
    writeWholeFile(path, write, "cannot open " + name, "cannot write " + name, "writetext");
    out.assignInt(static_cast<int>(lines.size()));
}

void showFile(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    const Value& nameValue = argumentValue(arguments[0]);
    Require(nameValue.isString() && !nameValue.isEmpty(), "invalid file name");
    const std::int64_t most =
        arguments.size() > 1 ? countOf(scalarArgument(argumentValue(arguments[1]))) : INT64_MAX;
    const std::string name = nameValue.text();
    const FileText file = readExisting(name, scriptExtension);
    const std::string script = isValidUtf8(file.text()) ? fromUtf8(file.text()) : std::string(file.text());
    const std::string head = "----" + name + "----------";
    output().print("{*" + head + "} ", true, PrintMode::markup);
    std::int64_t shown = 0;
    for (const std::string_view line : linesOf(script)) {
        if (shown++ >= most) break;
        output().print(line, true, PrintMode::verbatim);
    }
    output().print("{*" + std::string(head.size(), '-') + "}", true, PrintMode::markup);
    makeEmpty(out);
}

}  // namespace vorpen::builtin
