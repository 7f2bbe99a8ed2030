// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/session.h"

#include <algorithm>
#include <fstream>
#include <new>

#include "base/counted_string.h"
#include "base/encoding.h"
#include "base/replace_file.h"
#include "values/mathmatrix.h"
#include "values/serial_form.h"

namespace vorpen {
namespace {

constexpr std::string_view exitTitle = "vorpen exit";

std::string sessionFile(const std::string& directory) { return toUtf8(directory + "/vorpen_env.bin"); }

bool isLarge(const SymbolTable::Globals::value_type& global) { return global.second->size() >= largeMatrix; }

/// What the reader would take for damage must not stand in the way of the
/// variables behind it.
bool canBeRead(const std::string& name, const Value& value) {
    return name.size() <= static_cast<std::size_t>(storedLengthLimit) && canBeStored(value);
}

enum class Found { variable, endRecord, damage };

Found readVariable(std::istream& in, SymbolTable& symbols) {
    const auto name = readCountedString(in);
    if (!name) return Found::damage;
    if (name->empty()) return Found::endRecord;
    auto value = readValue(in);
    if (!value) return Found::damage;
    if (!*value) return Found::variable;
    if ((*value)->valueType() == INTEGER_VAL) *value = std::make_unique<DoubleValue>(asInt(**value));
    symbols.adoptGlobal(*name, std::move(*value));
    return Found::variable;
}

Found readVariables(std::istream& in, SymbolTable& symbols) {
    try {
        Found found;
        do found = readVariable(in, symbols);
        while (found == Found::variable);
        return found;
    } catch (const std::bad_alloc&) {
        return Found::damage;
    }
}

}  // namespace

void saveSession(const std::string& directory, const SymbolTable& symbols, Host& host) {
    const auto& globals = symbols.globals();
    if (std::ranges::any_of(globals, isLarge) &&
        !host.ask(exitTitle, "Large matrices will not be saved: ok to exit?", true))
        return;
    bool begun = false;
    const auto write = [&](std::ostream& out) {
        begun = true;
        for (const auto& global : globals) {
            const auto& [name, value] = global;
            if (isLarge(global) || !canBeRead(name, *value)) continue;
            writeCountedString(out, name);
            writeValue(out, *value);
        }
        writeCountedString(out, {});
    };
    for (const auto& [name, value] : globals)
        if (!canBeRead(name, *value))
            host.messageBox(exitTitle, "'" + name.substr(0, 40) + "' is nested too deeply to be saved");
    if (!replaceFile(sessionFile(directory), write, Durability::synced) && begun)
        host.messageBox(exitTitle, "the session could not be saved; the former one is kept");
}

void loadSession(const std::string& directory, SymbolTable& symbols, Host& host) {
    std::ifstream in(sessionFile(directory), std::ios::binary);
    if (!in) return;
    if (readVariables(in, symbols) == Found::damage)
        host.messageBox("vorpen startup", "problem loading previous session");
}

}  // namespace vorpen
