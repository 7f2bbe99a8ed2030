// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/completion.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>

#include "base/encoding.h"
#include "builtins/keywords.h"
#include "builtins/registry.h"
#include "engine/calc.h"

namespace vorpen {
namespace {

using Names = std::set<std::string, std::less<>>;

constexpr std::array<std::string_view, 13> fileCommands = {
    "use",  "cd",       "dir",       "load",   "save",     "qload",     "qsave",
    "readtext", "writetext", "fopen", "dispfile", "print", "loadBitmap"};

/// Those that take their file without quotes too.
constexpr std::array<std::string_view, 3> wordCommands = {"use", "cd", "dir"};

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isNamePart(char c) { return isLetter(c) || (c >= '0' && c <= '9'); }

std::size_t startOfName(std::string_view text) {
    std::size_t start = text.size();
    while (start > 0 && isNamePart(text[start - 1])) --start;
    // A number in front multiplies: in 2pi the name is pi.
    while (start < text.size() && !isLetter(text[start])) ++start;
    return start;
}

/// The place of the quote that is open at the end of a text. One behind a name
/// or a bracket transposes and opens nothing.
std::size_t openQuote(std::string_view text) {
    std::size_t open = std::string_view::npos;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (open != std::string_view::npos) {
            if (c == text[open]) open = std::string_view::npos;
        } else if (c == '"' ||
                   (c == '\'' && (i == 0 || (!isNamePart(text[i - 1]) && text[i - 1] != ')' && text[i - 1] != ']')))) {
            open = i;
        }
    }
    return open;
}

template <std::size_t count>
bool isOneOf(const std::array<std::string_view, count>& words, std::string_view word) {
    return std::ranges::find(words, word) != words.end();
}

/// The words in front of a place, of the statement that it belongs to.
bool hasFileCommand(std::string_view before) {
    const std::size_t end = before.rfind(';');
    if (end != std::string_view::npos) before.remove_prefix(end + 1);
    for (std::size_t i = 0; i < before.size();) {
        std::size_t stop = i;
        while (stop < before.size() && isNamePart(before[stop])) ++stop;
        if (isOneOf(fileCommands, before.substr(i, stop - i))) return true;
        i = std::max(stop, i + 1);
    }
    return false;
}

/// Where a file's name begins at the end of a text, or npos.
std::size_t startOfPath(std::string_view text) {
    if (const std::size_t quote = openQuote(text); quote != std::string_view::npos)
        return hasFileCommand(text.substr(0, quote)) ? quote + 1 : std::string_view::npos;
    const std::size_t statement = text.rfind(';') + 1;
    const std::size_t word = text.find_first_not_of(' ', statement);
    if (word == std::string_view::npos) return word;
    const std::size_t end = text.find(' ', word);
    if (end == std::string_view::npos || !isOneOf(wordCommands, text.substr(word, end - word)))
        return std::string_view::npos;
    return text.find_last_of(' ') + 1;
}

void addPaths(const std::string& directory, std::string_view typedDirectory, std::string_view prefix, Names& names) {
    namespace fs = std::filesystem;
    std::error_code fault;
    for (fs::directory_iterator at(toUtf8(directory), fault), end; !fault && at != end; at.increment(fault)) {
        const std::string name = fromUtf8(at->path().filename().string());
        if (!name.starts_with(prefix) || (prefix.empty() && name.starts_with('.'))) continue;
        std::error_code unknownKind;
        names.insert(std::string(typedDirectory) + name + (at->is_directory(unknownKind) ? "/" : ""));
    }
}

Names pathsFor(Calc& calc, std::string_view typed) {
    Names names;
    const std::size_t slash = typed.rfind('/');
    const std::string_view directory = typed.substr(0, slash == std::string_view::npos ? 0 : slash + 1);
    const std::string base = directory.starts_with('/') ? std::string(directory)
                                                        : calc.paths().current() + "/" + std::string(directory);
    addPaths(base, directory, typed.substr(directory.size()), names);
    return names;
}

void addKnownNames(Calc& calc, std::string_view prefix, Names& names) {
    const auto add = [&](std::string_view name) {
        if (name.starts_with(prefix)) names.emplace(name);
    };
    for (const auto& entry : calc.symbols().globals()) add(entry.first);
    for (const auto& name : calc.symbols().listNames("consts")) add(name);
    for (const auto& entry : calc.functions().functions()) add(entry.first);
    for (const BuiltinInfo& row : allBuiltins())
        if (isLetter(row.name[0])) add(row.name);
    const std::string keywords = listKeywords();
    for (std::size_t i = 0; i < keywords.size();) {
        const std::size_t end = std::min(keywords.find_first_of(" \n", i), keywords.size());
        if (end > i && isLetter(keywords[i])) add(std::string_view(keywords).substr(i, end - i));
        i = end + 1;
    }
    constexpr std::string_view scriptEnding = ".vrp";
    Names scripts;
    for (const std::string& folder : {calc.host().programDirectory(), calc.host().shareDirectory()})
        if (!folder.empty()) addPaths(folder + "/resource", "", prefix, scripts);
    for (const std::string& script : scripts)
        if (script.ends_with(scriptEnding)) names.insert(script.substr(0, script.size() - scriptEnding.size()));
}

}  // namespace

Completion completionAt(Calc& calc, std::string_view line, std::size_t caret) {
    const std::string_view text = line.substr(0, caret);
    Completion result;
    Names names;
    if (const std::size_t path = startOfPath(text); path != std::string_view::npos) {
        result.start = path;
        names = pathsFor(calc, text.substr(path));
    } else if (openQuote(text) == std::string_view::npos) {
        result.start = startOfName(text);
        if (result.start < text.size()) addKnownNames(calc, text.substr(result.start), names);
    }
    result.candidates.assign(names.begin(), names.end());
    return result;
}

}  // namespace vorpen
