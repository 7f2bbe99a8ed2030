// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/console_commands.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

namespace vorpen {
namespace {

TEST(ConsoleCommands, eachNumberHasOneAction) {
    std::set<int> seen;
    for (const CommandRow& row : commandRows()) {
        EXPECT_TRUE(seen.insert(row.id).second) << row.id;
        EXPECT_EQ(&commandRow(row.id), &row);
    }
    const std::set<int> expected = {104, 106, 107, 116, 120, 201, 202, 203, 204, 210, 211,
                                    213, 214, 215, 217, 220, 221, 230, 231, 232, 301, 304};
    EXPECT_EQ(seen, expected);
}

TEST(ConsoleCommands, aNumberThatIsNoneDoesNothing) {
    for (const int id : {-1, 0, 103, 205, 302, 100000})
        EXPECT_EQ(commandRow(id).action, CommandAction::nothing) << id;
}

TEST(ConsoleCommands, someTypeALine) {
    const std::map<int, std::string> lines = {{202, "cd ?"},        {203, "cd ?"}, {204, "cd ?"},
                                              {210, "clear reset"}, {230, "?"},    {232, "?func a"}};
    for (const CommandRow& row : commandRows()) {
        const auto line = lines.find(row.id);
        EXPECT_EQ(row.action == CommandAction::typeText, line != lines.end()) << row.id;
        if (line != lines.end()) {
            EXPECT_EQ(row.text, line->second);
        }
    }
}

TEST(ConsoleCommands, eightStepsOfZoomAreAFactorOfTwo) {
    const double in = commandRow(COMMAND_ZOOM_IN).factor, out = commandRow(COMMAND_ZOOM_OUT).factor;
    EXPECT_NEAR(in * in * in * in * in * in * in * in, 2, 1e-13);
    EXPECT_NEAR(in * out, 1, 1e-15);
}

TEST(ConsoleCommands, theMenusStandInOrder) {
    const std::vector<std::pair<std::string, int>> expected = {
        {"&File", 202}, {"&File", 203}, {"&File", 204}, {"&File", 201}, {"&Run", 210},
        {"&Run", 211},  {"&Run", 213},  {"&Run", 214},  {"&Run", 215},  {"&Run", 217},
        {"&View", 220}, {"&View", 221}, {"&Help", 230}, {"&Help", 232}, {"&Help", 231}};
    std::vector<std::pair<std::string, int>> found;
    for (const MenuRow& row : consoleMenu()) {
        found.emplace_back(row.menu, row.id);
        EXPECT_NE(row.item.find('&'), std::string_view::npos);
        EXPECT_NE(&commandRow(row.id), &commandRow(0));
    }
    EXPECT_EQ(found, expected);
}

}  // namespace
}  // namespace vorpen
