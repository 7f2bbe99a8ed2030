// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/options.h"

#include <gtest/gtest.h>

namespace vorpen {
namespace {

std::string faultOf(const std::vector<std::string_view>& words) { return parseOptions(words).fault; }

TEST(TerminalOptions, NoneIsAllOff) {
    const Options o = parseOptions({});
    EXPECT_EQ(o.fault, "");
    EXPECT_TRUE(o.lines.empty());
    EXPECT_FALSE(o.script || o.home || o.session || o.echo || o.markup || o.version || o.help);
}

TEST(TerminalOptions, LinesKeepTheirOrder) {
    const Options o = parseOptions({"-e", "x=1", "-e", "x+1"});
    EXPECT_EQ(o.lines, (std::vector<std::string>{"x=1", "x+1"}));
}

TEST(TerminalOptions, LineMayLookLikeAnOption) {
    EXPECT_EQ(parseOptions({"-e", "--echo"}).lines, std::vector<std::string>{"--echo"});
    EXPECT_EQ(parseOptions({"-e", ""}).lines, std::vector<std::string>{""});
}

TEST(TerminalOptions, FlagsAndScript) {
    const Options o = parseOptions({"--echo", "demo.vrp", "--markup"});
    EXPECT_TRUE(o.echo);
    EXPECT_TRUE(o.markup);
    EXPECT_EQ(o.script, "demo.vrp");
}

TEST(TerminalOptions, HomeInOneWordOrTwo) {
    EXPECT_EQ(parseOptions({"--home", "/tmp/a"}).home, "/tmp/a");
    EXPECT_EQ(parseOptions({"--home=/tmp/a=b"}).home, "/tmp/a=b");
}

TEST(TerminalOptions, LastSessionOptionHolds) {
    EXPECT_EQ(parseOptions({"--session"}).session, true);
    EXPECT_EQ(parseOptions({"--session", "--no-session"}).session, false);
}

TEST(TerminalOptions, BehindTwoDashesStandsAName) {
    const Options o = parseOptions({"--", "--echo"});
    EXPECT_FALSE(o.echo);
    EXPECT_EQ(o.script, "--echo");
}

TEST(TerminalOptions, WrongOnes) {
    EXPECT_EQ(faultOf({"--wrong"}), "unknown option '--wrong'");
    EXPECT_EQ(faultOf({"-x"}), "unknown option '-x'");
    EXPECT_EQ(faultOf({"--homes=x"}), "unknown option '--homes=x'");
    EXPECT_EQ(faultOf({"--echo=1"}), "unknown option '--echo=1'");
    EXPECT_EQ(faultOf({"-e"}), "the option -e needs a value");
    EXPECT_EQ(faultOf({"--echo", "--home"}), "the option --home needs a value");
    EXPECT_EQ(faultOf({"a.vrp", "b.vrp"}), "more than one script: 'b.vrp'");
}

}  // namespace
}  // namespace vorpen
