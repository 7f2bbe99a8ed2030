// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/resource_functions.h"

#include <algorithm>
#include <utility>

#include "base/errors.h"
#include "base/output.h"
#include "files/dir.h"
#include "frontend/function_declaration.h"
#include "frontend/input.h"
#include "frontend/scanner.h"
#include "frontend/symbol_table.h"

namespace vorpen {
namespace {

constexpr std::string_view folderName = "resource";
constexpr std::string_view extension = ".vrp";

[[noreturn]] void fail(std::string message) { throw SyntaxError{std::move(message)}; }

void printLine(std::string_view text) { output().print(text, true, PrintMode::markup); }

bool isResource(const UserFunc& function) { return function.desc().has(FUNCTION_RESOURCE); }

bool isCalled(const UserFunctionTable& table, const UserFunc& function) {
    return std::ranges::any_of(table.functions(),
                               [&](const auto& entry) { return entry.second->uses(function.token()); });
}

std::vector<std::string> namesOf(const UserFunctionTable& table, auto&& condition) {
    std::vector<std::string> names;
    for (const auto& [name, function] : table.functions())
        if (condition(*function)) names.push_back(name);
    return names;
}

}  // namespace

bool hasLostItsBody(const UserFunc& function) {
    return isResource(function) && !function.hasBody() && !function.isPending();
}

void ResourceFunctions::addDirectory(std::string_view directory) {
    if (!directory.empty()) folders_.push_back(joinPath(directory, folderName, systemSeparator));
}

std::optional<std::string> ResourceFunctions::findFile(std::string_view name) const {
    // A name is a word of the language, never a path that leads elsewhere.
    if (name.empty() || !std::ranges::all_of(name, isNameCharacter)) return std::nullopt;
    for (const std::string& folder : folders_) {
        std::string path = joinPath(folder, name, systemSeparator).append(extension);
        if (Dir::fileKind(path) == FileKind::file) return path;
    }
    return std::nullopt;
}

std::vector<ResourceFunctions::Head> ResourceFunctions::readHeads(InputSource& file,
                                                                  const std::string& path) {
    std::vector<Head> heads;
    try {
        while (const auto line = file.scanForFunction()) {
            Head head;
            head.line = file.currentLine();
            const auto statements = splitStatements(scanLine(line->text, file), false);
            (void)parseHead(statements.front(), DefinitionMode::function, head.desc);
            head.desc.flags |= FUNCTION_RESOURCE;
            // A comment ahead of the function before is none of this one.
            const int former = heads.empty() ? 0 : heads.back().source.line;
            const int comment = line->commentStartLine > former ? line->commentStartLine : -1;
            head.source = {path, line->lineNumber, comment, false};
            heads.push_back(std::move(head));
        }
    } catch (...) {
        input_.noteFailure(file.lineNumber(), file.currentLine());
        throw;
    }
    return heads;
}

bool ResourceFunctions::isKnown(const FunctionDesc& desc, const std::string& wanted) const {
    const UserFunc* present = symbols_.functions().find(desc.name);
    if (!present || hasLostItsBody(*present)) return false;
    if (!isResource(*present)) fail("name clash with resource function " + desc.name);
    if (sameSignature(present->desc(), desc)) return true;
    fail(desc.name == wanted ? "does not match existing declaration" : "vorpen resource defs do not match");
}

void ResourceFunctions::define(std::vector<Head> heads, const std::string& wanted) {
    std::vector<std::string> defined;
    for (Head& head : heads) {
        const std::string name = head.desc.name;
        try {
            if (isKnown(head.desc, wanted)) continue;
            defineFunction(symbols_, std::move(head.desc), head.source);
        } catch (...) {
            for (const auto& former : defined) symbols_.functions().remove(former);
            input_.noteFailure(head.source.line, std::move(head.line));
            throw;
        }
        defined.push_back(name);
    }
}

bool ResourceFunctions::load(const std::string& name) {
    if (missing_.contains(name)) return false;
    const std::optional<std::string> path = findFile(name);
    if (!path) {
        missing_.insert(name);
        return false;
    }
    std::optional<InputSource> file = InputSource::openFile(*path);
    if (!file) fail("could not open resource file '" + name + std::string(extension) + "'");
    try {
        std::vector<Head> heads = readHeads(*file, *path);
        if (std::ranges::none_of(heads, [&](const Head& head) { return head.desc.name == name; })) {
            missing_.insert(name);
            return false;
        }
        define(std::move(heads), name);
    } catch (...) {
        printLine("in file " + std::string(fileNameOf(*path)));
        throw;
    }
    return true;
}

void ResourceFunctions::dropIncomplete() {
    UserFunctionTable& table = symbols_.functions();
    const auto isUseless = [&](const UserFunc& function) {
        return isResource(function) && !function.hasBody() && !isCalled(table, function);
    };
    // What is removed may leave others without a body.
    for (auto names = namesOf(table, isUseless); !names.empty(); names = namesOf(table, isUseless))
        for (const auto& name : names) table.remove(name);
}

void ResourceFunctions::removeAll() {
    UserFunctionTable& table = symbols_.functions();
    const auto names = namesOf(table, isResource);
    for (const auto& name : names) {
        table.remove(name);
        printLine(name + " removed");
    }
    printLine(std::to_string(names.size()) + " functions removed");
}

std::string ResourceFunctions::list() const {
    const auto append = [&](std::string& text, bool quick) {
        for (const auto& [name, function] : symbols_.functions().functions())
            if (isResource(*function) && function->isQuick() == quick) text += "   " + name;
    };
    std::string text = "Resources:\n--Quick functions:\n";
    append(text, true);
    text += "\n--User Functions:\n";
    append(text, false);
    return text;
}

}  // namespace vorpen
