// SPDX-License-Identifier: GPL-3.0-or-later

// Plot commands with arguments that nobody should give: each call ends, with a
// message or without, and every figure can be written as well-formed text.

#include <gtest/gtest.h>

#include <random>

#include "unit/engine_support.h"

namespace vorpen {
namespace {

using testing::TypedEngine;

/// What is wrong with the elements of a text: empty when each is closed in its
/// order and no character is one that XML has not.
std::string faultOf(const std::string& svg) {
    std::vector<std::string> open;
    for (std::size_t at = svg.find("?>") + 2; at < svg.size(); ++at) {
        const auto code = static_cast<unsigned char>(svg[at]);
        if (code < 0x20 && code != '\n' && code != '\t' && code != '\r') return "control character";
        if (svg[at] == '&' && svg.find(';', at) > at + 5) return "bare &";
        if (svg[at] != '<') continue;
        const std::size_t end = svg.find('>', at);
        if (end == std::string::npos) return "tag without end";
        const std::string tag = svg.substr(at + 1, end - at - 1);
        const std::string name = tag.substr(0, tag.find_first_of(" \n"));
        if (name.starts_with('/')) {
            if (open.empty() || open.back() != name.substr(1)) return "stray " + name;
            open.pop_back();
        } else if (!tag.ends_with('/')) {
            open.push_back(name);
        }
        at = end;
    }
    return open.empty() ? "" : "open " + open.back();
}

/// Of all figures; an empty text when all is well.
std::string faultOfFigures() {
    for (const auto& figure : figureList().figures()) {
        std::string svg;
        figure->writeSvg(svg);
        if (const std::string fault = faultOf(svg); !fault.empty()) return fault;
    }
    return "";
}

TEST(FaultOfAFile, IsFound) {
    EXPECT_EQ(faultOf("<?xml?><a><b/></a>"), "");
    EXPECT_EQ(faultOf("<?xml?><a><b></a>"), "stray /a");
    EXPECT_EQ(faultOf("<?xml?><a>"), "open a");
    EXPECT_EQ(faultOf("<?xml?><a>x & y</a>"), "bare &");
    EXPECT_EQ(faultOf("<?xml?><a>\x01</a>"), "control character");
}

const std::vector<std::string> oddValues = {
    "[]",          "0",
    "-1",          "3",
    "129",         "nan",
    "inf",         "-inf",
    "1e300",       "-1e300",
    "5e-324",      "1:3",
    "[1,nan,inf]", "[nan,nan]",
    "[0,1e300]",   "[0,5e-324]",
    "[5,5]",       "[1;2]",
    "[1,2;3,4]",   "[-1,-2,-3]",
    "[0,1,0,1]",   "[1,0,1,0]",
    "zeros(3,4)",  "1e6:2e6:1e12",
    "\"\"",        "\"r\"",
    "\"#\"",       "\"^^##--99999999999\"",
    "\"{\"",       "\"}}{r \"",
    "\"\\{\\\"",   "\"on\"",
    "\"full\"",    "\"{;\\a_{^{\"",
    "sin",
};

const std::vector<std::string> commands = {
    "plot",     "loglog",      "semilogx", "semilogy",  "fill",         "qplot",  "fplot",
    "errbar",   "barchart",    "circle",   "axis",      "subplot",      "wipe",   "figpos",
    "figure",   "grid",        "close",    "title",     "xlabel",       "ylabel", "text",
    "replot",   "replot_move", "set",      "dragable",  "createButton", "menu",   "getmouse",
    "setmouse", "useColour",   "getpixel", "snipImage", "getclick",
};

class BadInput : public ::testing::Test {
protected:
    void call(const std::string& line) {
        engine.type(line);
        ASSERT_EQ(faultOfFigures(), "") << line;
    }
    TypedEngine engine;
};

TEST_F(BadInput, OneArgument) {
    for (const std::string& command : commands)
        for (const std::string& a : oddValues) ASSERT_NO_FATAL_FAILURE(call(command + "(" + a + ");"));
}

TEST_F(BadInput, TwoArguments) {
    for (const std::string& command : commands)
        for (const std::string& a : oddValues)
            for (std::size_t k = a.size() % 3; k < oddValues.size(); k += 3)
                ASSERT_NO_FATAL_FAILURE(call(command + "(" + a + "," + oddValues[k] + ");"));
}

/// Calls in a random order, on figures that hold what earlier calls left.
TEST_F(BadInput, AnyCallsOneAfterTheOther) {
    std::mt19937 random(20);
    const auto oneOf = [&random](const std::vector<std::string>& list) {
        return list[random() % list.size()];
    };
    for (int round = 0; round < 3000; ++round) {
        std::string line = oneOf(commands) + "(" + oneOf(oddValues);
        for (unsigned more = random() % 4; more > 0; --more) line += "," + oneOf(oddValues);
        engine.type(line + ");");
        if (round % 40 == 0) {
            ASSERT_NO_FATAL_FAILURE(call("figure(" + std::to_string(round % 5) + ");"));
        }
        if (round % 97 == 0) {
            ASSERT_NO_FATAL_FAILURE(call(round % 2 ? "fix;" : "unfix;"));
        }
        if (round % 500 == 0) {
            ASSERT_NO_FATAL_FAILURE(call("close(0);"));
        }
    }
}

TEST_F(BadInput, StylesOfAnyBytes) {
    std::mt19937 random(3);
    for (int round = 0; round < 1000; ++round) {
        std::string style;
        for (unsigned k = random() % 12; k > 0; --k) {
            const char c = static_cast<char>(random() % 255 + 1);
            style += c == '"' || c == '\n' || c == '\r' ? '#' : c;
        }
        ASSERT_NO_FATAL_FAILURE(call("plot(1:3,1:3,\"" + toUtf8(style) + "\");"));
    }
}

TEST_F(BadInput, RangesThatNeedAMillionTicks) {
    for (const char* limits : {"[1e15,1e15+2,0,1]", "[0,1,1e16,1e16+4]", "[1,1+4e-16,0,1]",
                               "[-1e-300,1e-300,-1,1]", "[1e9,1e9+1e-6,0,1]", "[-1e307,8e307,0,1]"}) {
        ASSERT_NO_FATAL_FAILURE(call(std::string("plot(1:3,1:3); axis(") + limits + ");"));
        std::string svg;
        figureList().requireFigure().writeSvg(svg);
        EXPECT_LT(svg.size(), 100000u) << limits;
    }
}

}  // namespace
}  // namespace vorpen
