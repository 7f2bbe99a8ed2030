// SPDX-License-Identifier: GPL-3.0-or-later

// What scripts show and ask of the user outside the console's text.

#include "builtins/console_bodies.h"

#include <gtest/gtest.h>

#include "test_host.h"
#include "unit/engine_support.h"

namespace vorpen {
namespace {

using testing::TypedEngine;

TEST(MessageBoxes, ShowCharactersAndAnswerTheButton) {
    TypedEngine engine;
    const auto boxOf = [&](const std::string& value) {
        engine.host.boxes.clear();
        EXPECT_EQ(engine.type("messageBox(" + value + ")"), "1") << value;
        return engine.host.boxes;
    };
    using Boxes = std::vector<TestHost::Box>;
    EXPECT_EQ(boxOf("'go on {?}'"), (Boxes{{"", "go on {?}"}}));
    // Numbers are codes of characters, row after row.
    EXPECT_EQ(boxOf("[72,105]"), (Boxes{{"", "Hi"}}));
    EXPECT_EQ(boxOf("['ab';'cd']"), (Boxes{{"", "abcd"}}));
    EXPECT_EQ(boxOf("[]"), (Boxes{{"", ""}}));
    EXPECT_EQ(boxOf("list(1)"), (Boxes{{"", "ListValue::toString not implemented yet"}}));
}

TEST(Characters, AreShownAsTheyAreTyped) {
    TypedEngine engine;
    const auto lineOf = [&](const std::string& key) {
        engine.host.typedLines = {key};
        engine.type("k=getch;");
        // The next output begins a line of its own.
        return engine.calc.console().getLine(engine.calc.console().currentLine() - 1);
    };
    EXPECT_EQ(lineOf("q"), "q");
    EXPECT_EQ(engine.type("k"), "113");
    for (const char special : std::string("{}_^\\")) {
        EXPECT_EQ(lineOf(std::string(1, special)), std::string("{:") + special);
        EXPECT_EQ(engine.type("k"), std::to_string(static_cast<int>(special)));
    }
}

}  // namespace
}  // namespace vorpen
