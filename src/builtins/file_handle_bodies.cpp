// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/file_handle_bodies.h"

#include "base/output.h"
#include "builtins/arguments.h"
#include "builtins/engine_context.h"
#include "builtins/text_of_files.h"
#include "files/file_handles.h"

namespace vorpen::builtin {
namespace {

int handleOf(const Value& id) { return truncateToInt(scalarArgument(id)); }

/// The full name; the messages about it are those of the opening.
std::string fullNameToOpen(const std::string& name, const std::string& extension) {
    try {
        return engineContext().directories().fullName(name, false, extension);
    } catch (const RuntimeError& error) {
        raiseRuntimeError(error.message, "fopen");
    }
}

void tellMissingFile(const std::string& path) {
    output().print(path, true, PrintMode::verbatim);
    output().print("fopen: file not found or can't be opened", true, PrintMode::markup);
}

void readBytes(int id, std::int64_t count, DoubleValue& out) {
    makeEmpty(out);
    out.setNrow(1);  // grows as a row
    fileHandles().readBytes(id, count, [&out](std::span<const char> bytes) {
        const int held = out.size();
        out.resize(std::int64_t{held} + static_cast<std::int64_t>(bytes.size()));
        for (std::size_t i = 0; i < bytes.size(); ++i)
            out[held + static_cast<int>(i)] = static_cast<signed char>(bytes[i]);
    });
    out.setNrow(out.isEmpty() ? 0 : 1);
}

std::string bytesOf(const DoubleValue& value) {
    std::string bytes(static_cast<std::size_t>(value.size()), '\0');
    for (int i = 0; i < value.size(); ++i) bytes[i] = static_cast<char>(truncateToInt(value[i]));
    return bytes;
}

std::string lineOf(const DoubleValue* value) {
    std::string text = value ? textOfRows(*value) : std::string();
    if (text.ends_with('\\'))
        text.pop_back();
    else
        text += '\n';
    return text;
}

}  // namespace

void openFile(const Value& name, const DoubleValue* modeText, Value& out) {
    Require(name.isString(), "the file name must be a string", "fopen");
    Require(!modeText || modeText->isString(), "the mode argument must be a string", "fopen");
    FileHandles& files = fileHandles();
    const int slot = files.freeSlot();
    const OpenMode mode = modeText ? OpenMode::parse(modeText->text()) : OpenMode();
    const std::string path = fullNameToOpen(name.text(), mode.extension);
    Require(!mode.readsAndWrites, "ambiguous read/write mode string", "fopen");
    if (files.open(slot, path, mode) || (mode.write && !mode.append)) return out.assignDouble(slot);
    if (mode.failureIsError || !mode.failureIsQuiet) tellMissingFile(path);
    Require(!mode.failureIsError, path, "fopen");
    makeEmpty(out);
}

int closeFile(int id) {
    fileHandles().close(id);
    return 0;
}

int endOfFile(int id) { return fileHandles().atEnd(id) ? 1 : 0; }

void readFile(const Value& idValue, const DoubleValue* count, Value& out) {
    const int id = handleOf(idValue);
    FileHandles& files = fileHandles();
    files.requireReadable(id);
    if (files.atEnd(id)) return makeEmpty(out);
    if (files.isBinary(id)) {
        const std::int64_t wanted = count ? countOf(scalarArgument(*count)) : 1;
        return readBytes(id, wanted, doubleResult(out, "fread"));
    }
    if (const auto line = files.readLine(id))
        out.assignString(*line);
    else
        makeEmpty(out);
}

void writeFile(const Value& idValue, const DoubleValue* value, Value& out) {
    const int id = handleOf(idValue);
    FileHandles& files = fileHandles();
    files.requireWritable(id);
    std::string bytes;
    if (files.isBinary(id)) {
        Require(value != nullptr, "missing value to write");
        bytes = bytesOf(*value);
    } else {
        bytes = lineOf(value);
    }
    out.assignDouble(static_cast<double>(files.write(id, bytes)));
}

void runSystemCommand(const Value& command, IntValue& out) {
    Require(command.isString() && command.isNumericKind(), "the command must be a string", "sysCommand");
    const std::string text = command.text();
    Require(text.find('\0') == text.npos, "the command must not hold a character of code 0", "sysCommand");
    out.assignInt(0);
    fileHandles().flush();
    engineContext().surroundings().runCommand(text);
    out.assignInt(1);
}

}  // namespace vorpen::builtin
