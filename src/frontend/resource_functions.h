// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Functions that are read when they are first named. A folder "resource" holds
// scripts, each named after the function that it defines; further functions in
// the file are its helpers. What they define acts like a built-in function: a
// name that nobody has defined is looked for there, once.
//
// Only the heads are read at that moment, so that the line that named the
// function can be compiled; the bodies follow when the whole input has been
// compiled. Files may therefore name each other in a circle. A folder named
// first hides the same name in a later one.
//
// A file that fails leaves nothing of itself behind: its functions go, and
// what was read from the folder and calls them is read anew when it is named
// again.

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "eval/user_func.h"

namespace vorpen {

class InputSource;
class LexInput;
class SymbolTable;

class ResourceFunctions {
public:
    /// `input` is told where a file failed.
    ResourceFunctions(SymbolTable& symbols, LexInput& input) : symbols_(symbols), input_(input) {}

    /// Looks into the folder "resource" of this directory, after those of the
    /// directories added before. An empty name adds nothing.
    void addDirectory(std::string_view directory);

    /// To be called before an input is compiled: names that had no file may
    /// have one now. Within an input each name is looked for once, as most are
    /// those of built-in functions and come again and again.
    void beginInput() { missing_.clear(); }

    /// Makes a function of a resource file known, with all others of its file;
    /// their bodies wait. False when no file defines it.
    /// @throws SyntaxError for a file that cannot be read or understood, and
    /// for a helper whose name is taken: "name clash with resource function "
    /// and the name, or "vorpen resource defs do not match".
    bool load(const std::string& name);

    /// After an input that failed: forgets functions without a body that
    /// nothing calls. One that something calls waits for its next naming, since
    /// its removal would take the body of what the user has defined with it.
    void dropIncomplete();

    /// Removes all functions that came from resource files and prints their
    /// names and their count. They are looked for again when they are named.
    void removeAll();

    /// The functions that have been read, quick ones first, as a text.
    [[nodiscard]] std::string list() const;

private:
    struct Head {
        FunctionDesc desc;
        FunctionSource source;
        std::string line;
    };

    [[nodiscard]] std::optional<std::string> findFile(std::string_view name) const;
    [[nodiscard]] std::vector<Head> readHeads(InputSource& file, const std::string& path);
    [[nodiscard]] bool isKnown(const FunctionDesc& desc, const std::string& wanted) const;
    void define(std::vector<Head> heads, const std::string& wanted);

    SymbolTable& symbols_;
    LexInput& input_;
    std::vector<std::string> folders_;
    std::set<std::string, std::less<>> missing_;
};

/// True for a function of a resource file that has neither a body nor a chance
/// to get one: what it called or read was cleared. Reading it again mends it.
[[nodiscard]] bool hasLostItsBody(const UserFunc& function);

}  // namespace vorpen
