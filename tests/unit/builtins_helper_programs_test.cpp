// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/helper_programs.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/resource.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "base/errors.h"
#include "builtins/engine_context.h"
#include "builtins/help_bodies.h"
#include "test_host.h"

namespace vorpen {
namespace {

namespace fs = std::filesystem;

constexpr const char* unavailable = "\n (further help unavailable)";

class HelperPrograms : public testing::Test {
protected:
    HelperPrograms() {
        std::string pattern = (fs::temp_directory_path() / "helpers-XXXXXX").string();
        folder = fs::canonical(mkdtemp(pattern.data()));
        host.emplace(folder.string());
    }
    ~HelperPrograms() override { fs::remove_all(folder); }

    void script(const fs::path& path, const std::string& commands) {
        fs::create_directories(path.parent_path());
        std::ofstream(path) << "#!/bin/sh\n" << commands << "\n";
        fs::permissions(path, fs::perms::owner_all);
    }
    void helpIs(const std::string& commands) { script(folder / "VorpenHelp", commands); }
    void lookupIs(const std::string& commands) { script(folder / "lookup", commands); }
    void file(const std::string& name, const std::string& text) { std::ofstream(folder / name) << text; }

    std::string help(const std::string& name, bool detailed = false) {
        return callHelp(*host, name, detailed);
    }

    /// What a look-up gives: "rows x columns, form: elements", or its message.
    std::string property(const std::string& query) {
        DoubleValue result;
        try {
            lookupProperty(*host, query, result);
        } catch (const RuntimeError& error) {
            return error.message;
        }
        std::string text = std::to_string(result.nrow()) + " x " + std::to_string(result.ncol()) + ", " +
                           std::to_string(result.form()) + ":";
        for (int i = 0; i < result.size(); ++i) {
            std::string item;
            result.stringItem(item, i, 9);
            text += " " + item;
        }
        return text;
    }
    std::string propertyFrom(const std::string& answer) {
        lookupIs("cat > property_result.txt <<'END'\n" + answer + "\nEND");
        return property("a_b");
    }

    fs::path folder;
    std::optional<TestHost> host;
};

// ---- the help program

TEST_F(HelperPrograms, TheTextIsAddedLineByLine) {
    helpIs("printf 'one\\n\\n  two\\r\\nthree' > vorpenhelp.txt");
    EXPECT_EQ(help("x"), "\none\n\n  two\nthree");
}

TEST_F(HelperPrograms, ArgumentsReachTheProgramAsTheyAre) {
    helpIs("printf '%s|' $# \"$@\" > vorpenhelp.txt");
    EXPECT_EQ(help("sin"), "\n1|sin|");
    EXPECT_EQ(help("sin", true), "\n2|sin|\?\?|");
    EXPECT_EQ(help("$(touch bad); `touch bad` 'a b' * |"), "\n1|$(touch bad); `touch bad` 'a b' * ||");
    EXPECT_FALSE(fs::exists(folder / "bad"));
}

TEST_F(HelperPrograms, TextIsTranslatedBothWays) {
    helpIs("printf '%s \\303\\251' \"$1\" > vorpenhelp.txt");
    EXPECT_EQ(help("\xE4"), "\n\xE4 \xE9");
    helpIs("printf 'bytes \\351' > vorpenhelp.txt");
    EXPECT_EQ(help("x"), "\nbytes \xE9");
}

TEST_F(HelperPrograms, WithoutAProgramTheNoteSaysSo) {
    EXPECT_EQ(help("x"), unavailable);
    file("VorpenHelp", "not executable");
    EXPECT_EQ(help("x"), unavailable);
    fs::remove(folder / "VorpenHelp");
    fs::create_directory(folder / "VorpenHelp");
    EXPECT_EQ(help("x"), unavailable);
}

TEST_F(HelperPrograms, AFailingProgramCountsForNothing) {
    helpIs("echo text > vorpenhelp.txt; exit 3");
    EXPECT_EQ(help("x"), unavailable);
    helpIs("echo text > vorpenhelp.txt; kill -SEGV $$");
    EXPECT_EQ(help("x"), unavailable);
}

TEST_F(HelperPrograms, AnOldAnswerIsNotReadAgain) {
    file("vorpenhelp.txt", "old");
    helpIs("exit 1");
    EXPECT_EQ(help("x"), unavailable);
    file("vorpenhelp.txt", "old");
    helpIs("exit 0");
    EXPECT_EQ(help("x"), "");
}

TEST_F(HelperPrograms, AnEmptyAnswerAddsNothing) {
    helpIs(": > vorpenhelp.txt");
    EXPECT_EQ(help("x"), "");
}

/// The letter by which the system tells the state of a process.
std::string stateOf(pid_t process) {
    std::string state = "gone";
    if (std::ifstream status("/proc/" + std::to_string(process) + "/stat"); status)
        status >> state >> state >> state;
    return state;
}

/// A process that has ended may stay in the table until its parent asks.
bool hasEnded(const std::string& state) { return state == "gone" || state == "Z" || state == "X"; }

TEST_F(HelperPrograms, AHangingProgramIsEndedWithWhatItHasStarted) {
    host->secondsForPrograms = 0.3;
    helpIs("echo $$ > pid; sleep 1000 & echo $! > child; wait");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(help("x"), unavailable);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    for (const char* name : {"pid", "child"}) {
        pid_t process = 0;
        std::ifstream(folder / name) >> process;
        ASSERT_GT(process, 1);
        // What is killed needs a moment to end.
        constexpr auto patience = std::chrono::seconds(10);
        std::string state = stateOf(process);
        for (const auto from = std::chrono::steady_clock::now();
             !hasEnded(state) && std::chrono::steady_clock::now() - from < patience; state = stateOf(process))
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_TRUE(hasEnded(state)) << name << " " << state;
    }
}

TEST_F(HelperPrograms, AGigabyteIsNeitherWrittenNorRead) {
    helpIs("head -c 1000000000 /dev/zero > vorpenhelp.txt");
    EXPECT_EQ(help("x"), unavailable);
    EXPECT_LE(fs::file_size(folder / "vorpenhelp.txt"), static_cast<std::uintmax_t>(largestHelperFile));
    lookupIs("head -c 1000000000 /dev/zero > property_result.txt; exit 0");
    EXPECT_EQ(property("a"), "vorpen can't find the database result");
}

TEST_F(HelperPrograms, TheLimitsOfAHelperAreNotThoseOfTheProgram) {
    rlimit before{}, after{};
    getrlimit(RLIMIT_FSIZE, &before);
    helpIs("ulimit -f > vorpenhelp.txt");
    EXPECT_NE(help("x"), "\nunlimited");
    getrlimit(RLIMIT_FSIZE, &after);
    EXPECT_EQ(before.rlim_cur, after.rlim_cur);
}

TEST_F(HelperPrograms, ALongTextIsCut) {
    helpIs("yes 'a line of text' | head -c 1000000 > vorpenhelp.txt");
    const std::string text = help("x");
    EXPECT_LT(text.size(), longestHelpText + 200);
    EXPECT_TRUE(text.ends_with("\n (the rest of the help text is too long to be shown)"));
}

TEST_F(HelperPrograms, StandardOutputOfAHelperIsNotShown) {
    helpIs("yes | head -c 1000000; yes | head -c 1000000 >&2; read line && exit 1; echo ok > vorpenhelp.txt");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(help("x"), "\nok");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(HelperPrograms, AnAnswerThatIsNoPlainFileIsNotWaitedFor) {
    helpIs("mkfifo vorpenhelp.txt");
    EXPECT_EQ(help("x"), "");
    fs::remove(folder / "vorpenhelp.txt");
    helpIs("mkdir vorpenhelp.txt");
    EXPECT_EQ(help("x"), "");
    lookupIs("ln -s /dev/zero property_result.txt");
    EXPECT_EQ(property("a"), "vorpen can't find the database result");
}

TEST_F(HelperPrograms, TheProgramsDirectoryComesFirst) {
    const fs::path first = folder / "first", second = folder / "second";
    host->helperPlaces = {first.string(), second.string()};
    script(second / "VorpenHelp", "echo second > vorpenhelp.txt");
    EXPECT_EQ(help("x"), "\nsecond");
    script(first / "VorpenHelp", "echo first > vorpenhelp.txt");
    EXPECT_EQ(help("x"), "\nfirst");
    helpIs("echo own > vorpenhelp.txt");
    EXPECT_EQ(help("x"), "\nown");
    // The answer stands in the program's directory, wherever the helper is.
    EXPECT_TRUE(fs::exists(folder / "vorpenhelp.txt"));
    EXPECT_FALSE(fs::exists(first / "vorpenhelp.txt"));
}

TEST_F(HelperPrograms, TheStatusOfASpawn) {
    EXPECT_EQ(spawnHelper(*host, "none", "a"), -1);
    script(folder / "three", "exit 3");
    EXPECT_EQ(spawnHelper(*host, "three", "a"), 3);
    script(folder / "well", "[ $# = 2 ]");
    EXPECT_EQ(spawnHelper(*host, "well", "a", "b"), 0);
    EXPECT_EQ(spawnHelper(*host, "well", "a"), 1);
}

// ---- the property program

TEST_F(HelperPrograms, ANumber) {
    EXPECT_EQ(propertyFrom("remark\n7870"), "1 x 1, 0: 7870");
    EXPECT_EQ(propertyFrom("\\remark\n  -1.5e-3 and more"), "1 x 1, 0: -0.0015");
    EXPECT_EQ(propertyFrom("remark\n+2"), "1 x 1, 0: 2");
}

TEST_F(HelperPrograms, PairsInTwoColumns) {
    EXPECT_EQ(propertyFrom("remark\n\\pairs of numbers\n3\n1 10\n2 20\n3 30"), "3 x 2, 0: 1 2 3 10 20 30");
    EXPECT_EQ(propertyFrom("remark\n\\data\n1\n1 10\n2 20"), "1 x 2, 0: 1 10");
    EXPECT_EQ(propertyFrom("remark\n\\data\n0"), "0 x 0, 0:");
}

TEST_F(HelperPrograms, LinesOfText) {
    EXPECT_EQ(propertyFrom("remark\n\\table of text\n2\nab\nc"), "2 x 2, 2: 97 99 98 32");
    EXPECT_EQ(propertyFrom("remark\n\\table\n1\nH2O\nmore"), "1 x 3, 2: 72 50 79");
    EXPECT_EQ(propertyFrom("remark\n\\tables\n1\n5 6"), "1 x 2, 0: 5 6");
}

TEST_F(HelperPrograms, CountsAreNotTrusted) {
    EXPECT_EQ(propertyFrom("remark\n\\data\n1000000000\n1 10\n2"), "1 x 2, 0: 1 10");
    EXPECT_EQ(propertyFrom("remark\n\\data\n1e300\n1 10"), "1 x 2, 0: 1 10");
    EXPECT_EQ(propertyFrom("remark\n\\data\n-5\n1 10"), "0 x 0, 0:");
    EXPECT_EQ(propertyFrom("remark\n\\data\nmany\n1 10"), "0 x 0, 0:");
    EXPECT_EQ(propertyFrom("remark\n\\data\n3\n1 10\nx y\n2 20"), "1 x 2, 0: 1 10");
    EXPECT_EQ(propertyFrom("remark\n\\table\n99\nab"), "1 x 2, 2: 97 98");
    EXPECT_EQ(propertyFrom("remark\n\\table"), "0 x 0, 2:");
}

TEST_F(HelperPrograms, ATableThatNoArrayHoldsIsRefused) {
    lookupIs(
        "{ printf 'r\\n\\\\table\\n10000\\n'; head -c 100000 /dev/zero | tr '\\0' x; echo; yes a | head -n "
        "10000; } "
        "> property_result.txt");
    EXPECT_EQ(property("a"), "the database result is too large");
}

TEST_F(HelperPrograms, WhatCannotBeRead) {
    EXPECT_EQ(property("a"), "problem with database lookup");
    lookupIs("exit 1");
    EXPECT_EQ(property("a"), "problem with database lookup");
    lookupIs("exit 0");
    file("property_result.txt", "old\n1\n");
    EXPECT_EQ(property("a"), "vorpen can't find the database result");
    EXPECT_EQ(propertyFrom("remark"), "vorpen can't find the database result");
    EXPECT_EQ(propertyFrom("remark\nno number"), "vorpen can't find the database result");
}

// ---- the built-in function

class PropertyFunction : public HelperPrograms {
protected:
    PropertyFunction() {
        engineContext().host = &*host;
        lookupIs("printf 'r\\n\\\\table\\n1\\n%s|%s' $# \"$1\" > property_result.txt");
    }
    ~PropertyFunction() override { engineContext() = EngineContext{}; }

    std::string asked(std::vector<std::string> texts, std::optional<double> number = std::nullopt) {
        std::vector<IntValue> values(texts.size());
        DoubleValue last;
        std::vector<FuncArgument> arguments(texts.size() + (number ? 1 : 0));
        for (std::size_t i = 0; i < texts.size(); ++i) {
            values[i].assignString(texts[i]);
            arguments[i].value = &values[i];
        }
        if (number) {
            last.assignDouble(*number);
            arguments.back().value = &last;
        }
        DoubleValue out;
        builtin::property(arguments, nullptr, out);
        return out.text();
    }
};

TEST_F(PropertyFunction, NamesKeysAndNumbersMakeOneWord) {
    EXPECT_EQ(asked({"iron", "density"}), "1|iron_density");
    EXPECT_EQ(asked({"carbon dioxide", "melting point"}), "1|carbon_dioxide_melting_point");
    EXPECT_EQ(asked({"water", "density"}, 50), "1|water_density_50");
    EXPECT_EQ(asked({"water", "density"}, -0.25), "1|water_density_-0.25");
    EXPECT_EQ(asked({"water", "density", "50"}), "1|water_density_50");
}

TEST_F(PropertyFunction, AFormulaIsAskedInAnotherWay) {
    EXPECT_EQ(asked({"carbon dioxide", "formula"}), "1|formula carbon_dioxide");
    EXPECT_EQ(asked({"water", "formula"}, 1), "1|water_formula_1");
}

}  // namespace
}  // namespace vorpen
