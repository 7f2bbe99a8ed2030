// SPDX-License-Identifier: GPL-3.0-or-later

// Events of figures as a script sees them: user functions with fixed names are
// called when a mouse moves or a key goes down, also while a script waits. In
// the frame 0 to 10 of each test, pixels are 57 to 541 and 345 to 8.

#include "engine/event_functions.h"

#include <gtest/gtest.h>

#include "unit/engine_support.h"

namespace vorpen {
namespace {

using testing::TypedEngine;

/// The pixel of the place (5, 5).
constexpr Pixel middle{299, 176};

class Events : public ::testing::Test {
protected:
    Events() { engine.type("figure(1); axis([0,10,0,10]); log=[];"); }
    std::string type(const std::string& line) { return engine.type(line); }
    [[nodiscard]] std::string lastBox() const {
        return engine.host.boxes.empty() ? "" : engine.host.boxes.back().text;
    }
    Figure& figure() { return *figureList().find(1); }
    /// An event that comes while a script waits.
    void later(std::function<void()> event) { engine.host.events.push_back(std::move(event)); }

    TypedEngine engine;
    Interaction& events = interaction();
};

TEST_F(Events, AFunctionGetsAsManyInputsAsItTakes) {
    type("onLDown(xy) := 100 + round(xy[1])");
    events.leftPress(middle);
    EXPECT_EQ(type("getmouse(\"f\")"), "105");
    type("onRDown(xy,id) := 10 round(xy[2]) + id + 1");
    events.rightPress();
    EXPECT_EQ(type("getmouse(11)"), "51");
    type("onLUp := 3");
    type("function y=onLDouble()\n");
    events.leftRelease();
    events.doubleClick();
    EXPECT_EQ(engine.host.boxes.size(), 0u);
}

TEST_F(Events, EachFunctionGetsThePlaceAndItsSecondArgument) {
    ASSERT_EQ(type("text(5,5,\"here\",\"\")"), "1");
    ASSERT_EQ(type("createButton(\"go\",\"c\",[1,1])"), "2");
    events.mouseMove(middle, false);
    struct Row {
        std::string function;
        std::function<void()> happens;
        std::string second;
    };
    const std::vector<Row> rows = {
        {"onKeyDown", [&] { events.keyDown(37); }, "0"},
        {"onKeyDown", [&] { events.character('A'); }, "0"},
        {"onLDown", [&] { events.leftPress(middle); }, "0"},
        {"onDrag", [&] { events.mouseMove(middle, true); }, "0"},
        {"onLUp", [&] { events.leftRelease(); }, "0"},
        {"onLDouble", [&] { events.doubleClick(); }, "0"},
        {"onRDown", [&] { events.rightPress(); }, "0"},
        {"onRUp", [&] { events.rightRelease(); }, "0"},
        {"onMove", [&] { events.mouseMove(middle, false); }, "0"},
        {"onButton", [&] { events.controlPressed(figure(), 1, 1); }, "2 1"},
        {"onDragable",
         [&] {
             type("dragable(1);");
             events.leftPress(middle);
         },
         "1"},
        {"onDragable", [&] { events.mouseMove(middle, true); }, "1"},
    };
    for (const auto& [function, happens, second] : rows) {
        SCOPED_TRACE(function);
        for (const auto& [inputs, kept, expected] :
             {std::tuple<std::string, std::string, std::string>{"p", "round(p)", "5 5"},
              {"p,j", "[round(p),j]", "5 5 " + second}}) {
            type("clear " + function);
            type("log=0;");
            ASSERT_EQ(
                type("function y=" + function + "(" + inputs + "); global log; log=" + kept + "; y=8; end"),
                "");
            happens();
            EXPECT_EQ(type("log"), expected);
            EXPECT_EQ(type("getmouse(\"f\")"), "8");
        }
        // Looked up when it happens: without it nothing is called.
        type("clear " + function);
        type("log=0;");
        happens();
        EXPECT_EQ(type("log"), "0");
    }
    EXPECT_TRUE(engine.host.boxes.empty()) << lastBox();
}

TEST_F(Events, EachEntryOfTheRecordHasANumberAndALetter) {
    const std::string letters = " xylrcXYDimfFk";
    for (int entry = 1; entry < MouseState::entryCount; ++entry) events.mouse[entry] = 100 + entry;
    type("setmouse(110);");
    for (int entry = 1; entry < MouseState::entryCount; ++entry) {
        const std::string expected = std::to_string(100 + entry);
        EXPECT_EQ(type("getmouse(" + std::to_string(entry) + ")"), expected);
        EXPECT_EQ(type("getmouse(\"" + letters.substr(static_cast<std::size_t>(entry), 1) + "\")"), expected);
    }
    EXPECT_EQ(type("getmouse([5,0,5])"), "105 0 0");
    EXPECT_EQ(type("getmouse"), "101 102");
}

TEST_F(Events, TheFrameUnderTheMouseIsPartOfTheRecord) {
    type("subplot(2,1,1); axis([0,10,0,10]); subplot(2,1,2); axis([0,100,0,100]);");
    for (const int frame : {0, 1}) {
        events.mouseMove(figure().frame(frame).pixel(frame ? 50 : 5, frame ? 50 : 5), false);
        EXPECT_EQ(type("getmouse(\"F\")"), std::to_string(frame));
        EXPECT_EQ(type("round(getmouse)"), frame ? "50 50" : "5 5");
    }
}

TEST_F(Events, WithoutAFunctionTheRecordIsKept) {
    events.mouseMove(middle, false);
    EXPECT_EQ(type("round(getmouse())"), "5 5");
    events.leftPress({57, 345});
    EXPECT_EQ(type("abs(round(getmouse(\"xylcXY\")))"), "0 0 1 1 0 0");
    EXPECT_EQ(type("getmouse([0,5])"), "0 0");
    events.doubleClick();
    EXPECT_EQ(type("getmouse(\"D\")"), "1");
    events.leftRelease();
    events.rightPress();
    EXPECT_EQ(type("getmouse(\"lDr\")"), "0 0 1");
    events.rightRelease();
    EXPECT_EQ(type("getmouse(\"r\")"), "0");
}

TEST_F(Events, MovesGoToTheirFunctions) {
    type("onMove(xy) := 1");
    type("onDrag(xy) := 2");
    events.mouseMove(middle, false);
    EXPECT_EQ(type("getmouse(11)"), "1");
    events.leftPress(middle);
    events.mouseMove({300, 100}, true);
    EXPECT_EQ(type("getmouse(11)"), "2");
}

TEST_F(Events, AnItemIsDraggedWithinItsRegion) {
    type("text(5,5,\"here\",\"\");");
    type("dragable(1,[4,6,4,6]);");
    type("onDragable(xy,id) := 1000 + id");
    events.leftPress(middle);
    EXPECT_EQ(type("getmouse(\"if\")"), "1 1001");
    events.mouseMove({541, 8}, true);
    EXPECT_EQ(figure().frame(0).item(1).x, 6);
    EXPECT_EQ(figure().frame(0).item(1).y, 6);
    events.mouseMove({57, 345}, true);
    EXPECT_EQ(figure().frame(0).item(1).x, 4);
    EXPECT_EQ(figure().frame(0).item(1).y, 4);
    events.leftRelease();
    events.leftPress({100, 100});
    EXPECT_EQ(type("getmouse(\"i\")"), "0");
}

TEST_F(Events, LimitsOfADragAreThoseOfXBeforeThoseOfY) {
    type("text(5,5,\"here\",\"\"); dragable(1,[4,8,3,6]);");
    const Plotable& item = figure().frame(0).item(1);
    events.leftPress(middle);
    events.mouseMove({541, 8}, true);
    EXPECT_EQ(std::pair(item.x, item.y), std::pair(8.0, 6.0));
    events.mouseMove({57, 345}, true);
    EXPECT_EQ(std::pair(item.x, item.y), std::pair(4.0, 3.0));
    // Without limits it is free in the frame.
    type("dragable(1);");
    events.mouseMove({2000, -2000}, true);
    EXPECT_EQ(std::pair(item.x, item.y), std::pair(10.0, 10.0));
    events.mouseMove({-2000, 2000}, true);
    EXPECT_EQ(std::pair(item.x, item.y), std::pair(0.0, 0.0));
}

TEST_F(Events, AWipedFrameHasNothingToDrag) {
    type("text(5,5,\"here\",\"\"); dragable(1);");
    type("wipe;");
    events.leftPress(middle);
    EXPECT_EQ(type("getmouse(\"i\")"), "0");
}

TEST_F(Events, AFailingFunctionOfMovesIsSwitchedOff) {
    type("onMove(xy) := error(\"no\")");
    events.mouseMove(middle, false);
    EXPECT_EQ(lastBox(), "onMove --> no disabled");
    events.mouseMove(middle, false);
    EXPECT_EQ(engine.host.boxes.size(), 1u);
    type("onLDown(xy) := 7");
    events.leftPress(middle);
    EXPECT_EQ(type("getmouse(11)"), "7");
    // Defined anew it is called again.
    type("onMove(xy) := 8");
    events.leftRelease();
    events.mouseMove(middle, false);
    EXPECT_EQ(type("getmouse(11)"), "8");
}

TEST_F(Events, OfFailingFunctionsTheFrequentOnesStop) {
    type("k=text(5,5,\"here\",\"\"); b=createButton(\"go\",\"b\",[1,1]);");
    struct Row {
        std::string function;
        std::function<void()> happens;
        bool stops;
    };
    const std::vector<Row> rows = {
        {"onMove", [&] { events.mouseMove(middle, false); }, true},
        {"onDrag", [&] { events.mouseMove(middle, true); }, true},
        {"onDragable",
         [&] {
             type("dragable(k);");
             events.leftPress(middle);
         },
         true},
        {"onKeyDown", [&] { events.keyDown(37); }, false},
        {"onLDown", [&] { events.leftPress(middle); }, false},
        {"onLUp", [&] { events.leftRelease(); }, false},
        {"onLDouble", [&] { events.doubleClick(); }, false},
        {"onRDown", [&] { events.rightPress(); }, false},
        {"onRUp", [&] { events.rightRelease(); }, false},
        {"onButton", [&] { events.controlPressed(figure(), 1, 0); }, false},
    };
    for (const auto& [function, happens, stops] : rows) {
        SCOPED_TRACE(function);
        engine.host.boxes.clear();
        type(function + "(xy) := error(\"no\")");
        happens();
        happens();
        EXPECT_EQ(engine.host.boxes.size(), stops ? 1u : 2u);
        for (const TestHost::Box& box : engine.host.boxes) EXPECT_EQ(box.text, function + " --> no disabled");
        // Defined anew it is called again.
        type(function + "(xy) := 8");
        events.mouse[MOUSE_RESULT] = 0;
        happens();
        EXPECT_EQ(events.mouse[MOUSE_RESULT], 8);
        type("clear " + function);
    }
}

TEST_F(Events, FunctionsThatCannotBeCalled) {
    type("onLDown(a,b,c) := 1");
    events.leftPress(middle);
    EXPECT_EQ(lastBox(), "onLDown --> too many parameters for a mouse function disabled");
    type("onRDown(^a) := 1");
    events.rightPress();
    EXPECT_EQ(lastBox(), "onRDown --> a mouse function takes no parameter by reference disabled");
}

TEST_F(Events, KeysBelowLettersComeOnce) {
    type("count=0;");
    type("onKeyDown(xy) := getmouse(\"k\")");
    events.keyDown('A');
    EXPECT_EQ(type("getmouse(\"kf\")"), "65 0");
    events.character('a');
    EXPECT_EQ(type("getmouse(\"kf\")"), "97 97");
    events.keyDown(37);
    EXPECT_EQ(type("getmouse(\"kf\")"), "37 37");
    events.keyUp();
    EXPECT_EQ(type("getmouse(\"k\")"), "0");
}

TEST_F(Events, AControlTellsItsIdAndState) {
    const std::string id = type("createButton(\"go\",\"c\",[1,1])");
    type("onButton(xy,v) := 10 v[1] + v[2]");
    events.controlPressed(figure(), 1, 1);
    EXPECT_EQ(type("getmouse(\"cf\")"), "1 " + std::to_string(10 * std::stoi(id) + 1));
    events.controlPressed(figure(), 99, 1);
}

TEST_F(Events, AnItemOfAMenuIsTyped) {
    type("menu(list(\"File\"), list(list(\"open->x=1\",\"save\")));");
    std::string typed;
    engine.calc.events().setTypist([&typed](std::string_view text) { typed = text; });
    events.menuChosen(figure(), 0);
    EXPECT_EQ(typed, "x=1");
    events.menuChosen(figure(), 1);
    EXPECT_EQ(typed, "save");
    events.menuChosen(figure(), 2);
    EXPECT_EQ(typed, "save");
    // New menus take the place of all former ones.
    type("menu(list(\"One\"), list(list(\"a->y=2\")));");
    events.menuChosen(figure(), 0);
    EXPECT_EQ(typed, "y=2");
    typed.clear();
    events.menuChosen(figure(), 1);
    EXPECT_EQ(typed, "");
    engine.calc.events().setTypist({});
    events.menuChosen(figure(), 0);
}

// ---- while a script waits

TEST_F(Events, AFunctionRunsWhileAScriptWaits) {
    type("seen=0;");
    type("function y=onLDown(xy); global seen; seen=xy[1]; y=1;");
    later([this] { events.leftPress(middle); });
    EXPECT_EQ(type("pause(1); round(seen)"), "5");
}

TEST_F(Events, AReturnInItsFunctionLeavesTheScriptGoing) {
    type("onLDown(xy) := 1");
    later([this] { events.leftPress(middle); });
    EXPECT_EQ(type("n=0; for k=1:3; {pause(1); n+=1;}; n"), "3");
}

TEST_F(Events, AFunctionIsNotEnteredAgain) {
    type("onLDown(xy) := pause(1)");
    later([this] { events.leftPress(middle); });
    later([this] { events.leftPress(middle); });
    type("pause(1);");
    EXPECT_EQ(lastBox(), "onLDown --> recursion not allowed in mouse function disabled");
}

TEST_F(Events, AFunctionInACallIsNotEnteredByAnEvent) {
    type("onLDown(xy) := pause(1)");
    later([this] { events.leftPress(middle); });
    type("onLDown([1,2]);");
    EXPECT_EQ(lastBox(), "onLDown --> recursion not allowed in mouse function disabled");
}

TEST_F(Events, AskingForTheMouseServesEvents) {
    later([this] { events.mouseMove(middle, false); });
    EXPECT_EQ(type("round(getmouse)"), "5 5");
    later([this] { events.keyDown(66); });
    EXPECT_EQ(type("getkeyb"), "66");
}

TEST_F(Events, WaitingForAClick) {
    later([this] { events.mouseMove(middle, false); });
    later([this] { events.rightPress(); });
    later([this] { events.leftPress({57, 345}); });
    later([this] { events.mouseMove(middle, true); });
    EXPECT_EQ(type("abs(round(getclick(1)))"), "0 0");
    EXPECT_EQ(engine.host.events.size(), 1u);
}

TEST_F(Events, AClickAnywhereTellsWhereTheMouseIs) {
    later([this] { events.mouseMove({57, 345}, false); });
    later([this] { events.leftPress(middle); });
    EXPECT_EQ(type("round(getclick(0))"), "5 5");
    // Other answers wait for nothing.
    later([this] { events.leftPress(middle); });
    for (const char* line : {"getclick", "getclick()", "getclick([])", "getclick(-1)"})
        EXPECT_EQ(type(line), "[]") << line;
    EXPECT_EQ(engine.host.events.size(), 1u);
}

TEST_F(Events, WhatWaitsServesEvents) {
    type("onLDown(xy) := 8");
    for (const char* line :
         {"pause(1);", "wait(1);", "getkeyb;", "getmouse;", "getclick(1);", "getclick(0);", "update;"}) {
        events.mouse[MOUSE_RESULT] = 0;
        later([this] { events.leftPress(middle); });
        type(line);
        EXPECT_EQ(events.mouse[MOUSE_RESULT], 8) << line;
        EXPECT_TRUE(engine.host.events.empty()) << line;
        engine.host.events.clear();
    }
}

TEST_F(Events, AFigureThatIsClosedWhileAClickIsWaitedFor) {
    later([] { figureList().closeFigure(1); });
    later([this] { events.leftPress(middle); });
    EXPECT_EQ(type("getclick(1)"), "in getclick: no figure open for mouse click");
}

TEST_F(Events, AFunctionMayCloseItsFigure) {
    type("onLDown(xy) := close(1)");
    events.leftPress(middle);
    EXPECT_EQ(type("axis([])"), "in axis: there is no open figure");
    type("figure(1);");
    later([this] { events.leftPress(middle); });
    EXPECT_EQ(type("update"), "1");
}

TEST_F(Events, TheFigureOfAnEventStaysCurrent) {
    type("onLDown(xy) := figure(5)");
    events.leftPress(middle);
    EXPECT_EQ(type("figure(-1)"), "1");
    EXPECT_NE(figureList().find(5), nullptr);
}

TEST_F(Events, AFailureWithoutAMessageReachesTheScriptThatWaits) {
    type("onLDown(xy) := ones(1e12)");
    later([this] { events.leftPress(middle); });
    EXPECT_EQ(type("pause(1); 7"), "in onLDown; | error during mouse function");
}

TEST(EventsOfEngines, TheNextEngineStartsAnew) {
    {
        TypedEngine first;
        first.type("figure(1); setmouse(9); onMove(xy) := 1");
        interaction().mouseMove(middle, false);
    }
    interaction().mouseMove(middle, false);
    TypedEngine second;
    EXPECT_EQ(second.type("getmouse(10)"), "0");
    EXPECT_EQ(second.type("getmouse(11)"), "0");
    EXPECT_EQ(second.type("figure"), "1");
}

}  // namespace
}  // namespace vorpen
