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

}  // namespace
}  // namespace vorpen
