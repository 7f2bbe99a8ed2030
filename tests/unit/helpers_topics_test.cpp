// SPDX-License-Identifier: GPL-3.0-or-later

// Whatever has a meaning in the language has a help text.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "base/errors.h"
#include "builtins/keywords.h"
#include "builtins/registry.h"
#include "eval/user_func.h"
#include "frontend/operators.h"
#include "frontend/symbol_table.h"

namespace vorpen {
namespace {

namespace fs = std::filesystem;

const fs::path folder = fs::path(VORPEN_SOURCE_FOLDER) / "helpers" / "help";

std::vector<std::string> words(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> found;
    for (std::string word; in >> word;) found.push_back(word);
    return found;
}

/// The words behind the headings "topic:" and "see:" of each file.
std::multimap<std::string, std::string> headings(const std::string& heading) {
    std::multimap<std::string, std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.path().extension() != ".txt") continue;
        std::ifstream in(entry.path());
        for (std::string line; std::getline(in, line);)
            if (line.starts_with(heading))
                for (const auto& word : words(line.substr(heading.size()))) found.emplace(word, entry.path());
    }
    return found;
}

const std::multimap<std::string, std::string>& topics() {
    static const auto all = headings("topic:");
    return all;
}

TEST(HelpTopics, EachBuiltInFunctionHasOne) {
    for (const BuiltinInfo& row : allBuiltins())
        EXPECT_TRUE(topics().contains(std::string(row.name))) << row.name;
}

TEST(HelpTopics, EachKeywordHasOne) {
    const auto names = words(listKeywords());
    EXPECT_EQ(names.size(), 16u);
    for (const auto& name : names) EXPECT_TRUE(topics().contains(name)) << name;
}

TEST(HelpTopics, EachConstantHasOne) {
    UserFunctionTable functions;
    const auto names = SymbolTable(functions).listNames("consts");
    EXPECT_EQ(names.size(), 31u);
    for (const auto& name : names) EXPECT_TRUE(topics().contains(name)) << name;
}

/// All texts of up to three characters that the scanner takes as one sign.
std::set<std::string> operatorSigns() {
    constexpr std::string_view characters = "+-*/^<>=&|~%?@_.!";
    std::set<std::string> signs;
    const auto tryOne = [&](const std::string& text) {
        try {
            const ScannedOperator sign = readOperatorSign(text + " ");
            const bool hasMeaning = sign.kind == TOK_OP || sign.kind == TOK_UNARY || sign.kind == TOK_ASSIGN;
            if (sign.length == text.size() && hasMeaning) signs.insert(text);
        } catch (const SyntaxError&) {
        }
    };
    for (const char a : characters) {
        tryOne({a});
        for (const char b : characters) {
            tryOne({a, b});
            for (const char c : characters) tryOne({a, b, c});
        }
    }
    return signs;
}

TEST(HelpTopics, EachOperatorHasOne) {
    const std::set<std::string> signs = operatorSigns();
    EXPECT_GE(signs.size(), 40u);
    for (const auto& sign : signs) EXPECT_TRUE(topics().contains(sign)) << sign;
    for (const char* word : {"mod", "vec", "and", "or", "And", "Or", "xor", "bitand", "bitor"})
        EXPECT_TRUE(topics().contains(word)) << word;
    for (const char* sign :
         {",", ";", ":", "::", "/.", ":=", "::=", ",=", ";=", ";;", ";!", ";?", "\\", "'", "\"", "[]"})
        EXPECT_TRUE(topics().contains(sign)) << sign;
}

TEST(HelpTopics, ANameStandsInOneFileOnly) {
    for (const auto& [name, file] : topics()) EXPECT_EQ(topics().count(name), 1u) << name << " in " << file;
}

TEST(HelpTopics, SeeAlsoNamesTopics) {
    for (const auto& [name, file] : headings("see:"))
        EXPECT_TRUE(topics().contains(name)) << name << " in " << file;
}

}  // namespace
}  // namespace vorpen
