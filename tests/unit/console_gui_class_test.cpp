// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/gui_class.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "test_host.h"

namespace vorpen {
namespace {

/// A window on paper: rows of 20 pixels and columns of 10 for the font at its
/// first size. It keeps what is drawn by its height.
class PaperView final : public ConsoleView {
public:
    struct Text {
        std::string text;
        Colour background = 0;
    };
    std::map<int, Text> lines;         ///< of the pane, by y
    std::map<int, std::string> typed;  ///< of the input line, by x
    int inputY = -1;
    int drawnLines = 0, invalidations = 0, fontSize = 0, closed = 0, abouts = 0, launches = 0, interrupts = 0;
    int focused = 0, raised = 0, cleared = 0;
    bool focusIsRefused = false, canScroll = true;
    ScrollBarState bar;
    std::optional<Rectangle> caret;
    std::vector<int> posted;

    void eraseBelow(int y) override {
        inputY = y;
        typed.clear();
        std::erase_if(lines, [y](const auto& line) { return line.first >= y; });
    }
    void drawText(int x, int y, std::string_view text, Colour) override {
        EXPECT_EQ(y, inputY);
        typed[x] = text;
    }
    CellMetrics setFontSize(int pixels) override {
        fontSize = pixels;
        return {pixels / 2, pixels};
    }
    void erase(const Rectangle& area) override {
        std::erase_if(lines, [&](const auto& line) {
            return line.first >= area.y && line.first < area.y + area.height;
        });
        if (area.y == inputY) std::erase_if(typed, [&](const auto& piece) { return piece.first >= area.x; });
    }
    void drawLine(int, int y, std::string_view markedUp, Colour background) override {
        ++drawnLines;
        lines[y] = {std::string(markedUp), background};
    }
    bool scroll(const Rectangle& area, int pixels) override {
        if (!canScroll) return false;
        std::map<int, Text> moved;
        for (const auto& [y, text] : lines) {
            const int to = y + pixels;
            if (to >= area.y && to < area.y + area.height) moved[to] = text;
        }
        lines = moved;
        return true;
    }
    void setScrollBar(const ScrollBarState& state) override { bar = state; }
    void invalidate() override { ++invalidations; }
    void showCaret(const Rectangle& place) override { caret = place; }
    void hideCaret() override { caret.reset(); }
    bool takeFocus(bool toTop) override {
        ++focused;
        raised += toTop;
        return !focusIsRefused;
    }
    void post(int command) override { posted.push_back(command); }
    void clearClipboard() override { ++cleared; }
    void closeWindow() override { ++closed; }
    void showAbout() override { ++abouts; }
    void launchSecondary() override { ++launches; }
    void interrupt() override { ++interrupts; }

    [[nodiscard]] std::string inputLine() const {
        std::string line;
        for (const auto& [x, text] : typed) line += text;
        return line;
    }
    [[nodiscard]] std::vector<std::string> shown() const {
        std::vector<std::string> texts;
        for (const auto& [y, line] : lines) texts.push_back(line.text);
        return texts;
    }
};

using Strings = std::vector<std::string>;

class GuiClassTest : public testing::Test {
protected:
    // Seven rows of 20 pixels, 40 columns of 10.
    GuiClassTest() {
        gui.resize(401, 24 + 7 * 20 + 20 + 6);
        gui.onPaint();
    }

    void print(int lines) {
        for (int i = 0; i < lines; ++i)
            text.print("line " + std::to_string(text.currentLine()), true, PrintMode::markup);
    }
    void type(std::string_view typed) {
        for (const char c : typed) gui.onKey(KeyKind::character, static_cast<unsigned char>(c));
    }
    /// Hands back what was posted, as a window does.
    void servePosts() {
        while (!view.posted.empty()) {
            const int command = view.posted.front();
            view.posted.erase(view.posted.begin());
            gui.command(command);
        }
    }
    void enter(std::string_view line) {
        type(line);
        type("\r");
        servePosts();
    }
    void clickLine(int row, int column = 0) {
        gui.onLDown(1 + 10 * column, 24 + 20 * row + 5);
        gui.onLUp();
    }

    ConsoleText text;
    CommandHistory history;
    PaperView view;
    TestHost host{"/nowhere"};
    ConsoleTurns turns;
    std::vector<std::pair<std::string, char>> runs;
    std::function<void(const std::string&)> during;
    GuiClass gui{text, history, view, host, turns, [this](const std::string& line, char mode) {
                     runs.emplace_back(line, mode);
                     if (during) during(line);
                 }};
};

using Runs = std::vector<std::pair<std::string, char>>;

// ---- painting

TEST_F(GuiClassTest, anEmptyConsoleIsAPrompt) {
    EXPECT_TRUE(view.lines.empty());
    EXPECT_EQ(gui.textEnd(), 1);
    EXPECT_EQ(view.inputY, 25);
    EXPECT_EQ(view.typed[1], "1>");
    ASSERT_TRUE(view.caret);
    EXPECT_EQ(*view.caret, (Rectangle{31, 25, 2, 18}));
    EXPECT_EQ(view.bar, (ScrollBarState{0, 7, 0}));
}

TEST_F(GuiClassTest, linesStandBelowEachOtherAndTheInputLineFollows) {
    print(3);
    gui.onPaint();
    EXPECT_EQ(view.shown(), (Strings{"line 0", "line 1", "line 2"}));
    EXPECT_EQ(view.lines.begin()->first, 25);
    EXPECT_EQ(view.lines.rbegin()->first, 65);
    EXPECT_EQ(gui.textEnd(), 61);
    EXPECT_EQ(view.inputY, 85);
}

TEST_F(GuiClassTest, anUnfinishedLineCounts) {
    print(1);
    text.print("x", false, PrintMode::markup);
    gui.onPaint();
    EXPECT_EQ(view.shown(), (Strings{"line 0", "x"}));
    EXPECT_EQ(view.bar.maximum, 2);
}

TEST_F(GuiClassTest, aRunScrollsToTheEnd) {
    during = [this](const std::string&) { print(20); };
    enter("x");
    EXPECT_EQ(view.bar, (ScrollBarState{21, 7, 14}));
    EXPECT_EQ(view.shown().front(), "line 14");
    EXPECT_EQ(view.shown().back(), "line 20");
    EXPECT_EQ(view.shown().size(), 7u);
    // The input line stands directly below.
    EXPECT_EQ(view.inputY, 24 + 141);
}

TEST_F(GuiClassTest, whatIsOverwrittenIsBlank) {
    print(400);
    gui.onPaint();
    gui.onVScroll(ScrollAction::thumbPosition, 0);
    gui.onPaint();
    EXPECT_EQ(view.bar, (ScrollBarState{400, 7, 0}));
    EXPECT_TRUE(view.lines.empty());
}

TEST_F(GuiClassTest, aChangeOfSizeKeepsTheEndInSight) {
    print(20);
    gui.resize(401, 24 + 7 * 20 + 20 + 6);
    EXPECT_EQ(gui.scrollState().position, 13);
    gui.resize(401, 24 + 3 * 20 + 20 + 6);
    EXPECT_EQ(gui.scrollState().rows, 3);
    EXPECT_EQ(gui.scrollState().position, 17);
    EXPECT_EQ(text.wrapWidth(), 40);
    gui.resize(301, 300);
    EXPECT_EQ(text.wrapWidth(), 30);
    EXPECT_GT(view.invalidations, 0);
}

TEST_F(GuiClassTest, aWindowOfOnePixelIsHarmless) {
    print(30);
    for (const int size : {1, 0, -3, 25, 45}) {
        gui.resize(size, size);
        gui.onPaint();
        enter("1");
        gui.onLDown(0, 0);
        gui.onMouseMove(-100, 1000);
        gui.onLUp();
        for (int action = 0; action <= 8; ++action) gui.onVScroll(static_cast<ScrollAction>(action), 3);
    }
    EXPECT_GE(text.wrapWidth(), 20) << "wrapped to nothing";
}

// ---- scrolling

class ScrollingTest : public GuiClassTest {
protected:
    ScrollingTest() {
        print(30);
        gui.resize(401, 24 + 7 * 20 + 20 + 6);
        gui.onPaint();
        gui.onVScroll(ScrollAction::thumbPosition, 10);
        gui.onPaint();
        view.drawnLines = view.invalidations = 0;
    }
};

TEST_F(ScrollingTest, oneLineUpDrawsOneLine) {
    gui.onVScroll(ScrollAction::lineUp);
    EXPECT_EQ(gui.scrollState().position, 9);
    EXPECT_EQ(view.drawnLines, 1);
    EXPECT_EQ(view.invalidations, 0);
    EXPECT_EQ(view.lines.begin()->second.text, "line 9");
    EXPECT_EQ(view.bar.position, 9);
}

TEST_F(ScrollingTest, oneLineDownDrawsOneLine) {
    gui.onVScroll(ScrollAction::lineDown);
    EXPECT_EQ(gui.scrollState().position, 11);
    EXPECT_EQ(view.drawnLines, 1);
    EXPECT_EQ(view.lines.rbegin()->second.text, "line 17");
    EXPECT_EQ(view.shown().size(), 7u);
}

TEST_F(ScrollingTest, severalLinesAreAllDrawn) {
    gui.onVScroll(ScrollAction::thumbTrack, 13);
    EXPECT_EQ(gui.scrollState().position, 13);
    EXPECT_EQ(view.invalidations, 1);
    gui.onPaint();
    EXPECT_EQ(view.shown().front(), "line 13");
}

TEST_F(ScrollingTest, aPageOrMoreIsDrawnAnew) {
    gui.onVScroll(ScrollAction::thumbPosition, 25);
    EXPECT_EQ(gui.scrollState().position, 25);
    EXPECT_EQ(view.invalidations, 1);
    gui.onPaint();
    EXPECT_EQ(view.shown().size(), 5u);
    // The input line follows a text that ends in sight.
    EXPECT_EQ(gui.textEnd(), 101);
}

TEST_F(ScrollingTest, beyondTheEndsNothingMoves) {
    gui.onVScroll(ScrollAction::thumbPosition, -1);
    EXPECT_EQ(gui.scrollState().position, 10);
    gui.onVScroll(ScrollAction::thumbPosition, 30);
    EXPECT_EQ(gui.scrollState().position, 10);
    EXPECT_EQ(view.invalidations, 2);
    gui.onVScroll(ScrollAction::pageUp);
    EXPECT_EQ(gui.scrollState().position, 10);
    EXPECT_EQ(view.invalidations, 3);
}

TEST_F(ScrollingTest, theEndsOfTheBarAreAsFarAwayAsTheTextIs) {
    // From 10: as far down again as the top is away.
    gui.onVScroll(ScrollAction::top);
    EXPECT_EQ(gui.scrollState().position, 20);
    EXPECT_EQ(view.invalidations, 1);
    // As far up as the bottom, 10 lines further, is away.
    gui.onVScroll(ScrollAction::bottom);
    EXPECT_EQ(gui.scrollState().position, 10);
    EXPECT_EQ(view.invalidations, 2);
    // Now it would be above the first line.
    gui.onVScroll(ScrollAction::bottom);
    EXPECT_EQ(gui.scrollState().position, 10);
    EXPECT_EQ(view.invalidations, 3);
}

TEST_F(ScrollingTest, otherActionsDrawAnewWithoutMoving) {
    for (const auto action : {ScrollAction::pageUp, ScrollAction::pageDown, ScrollAction::end}) {
        view.invalidations = 0;
        gui.onVScroll(action, 25);
        EXPECT_EQ(gui.scrollState().position, 10);
        EXPECT_EQ(view.invalidations, 1);
    }
}

TEST_F(ScrollingTest, theLastLineCanComeToTheTop) {
    gui.onVScroll(ScrollAction::thumbPosition, 29);
    EXPECT_EQ(gui.scrollState().position, 29);
    gui.onVScroll(ScrollAction::lineDown);
    EXPECT_EQ(gui.scrollState().position, 29);
}

TEST_F(ScrollingTest, theWheelGoesByLines) {
    gui.onWheel(3);
    EXPECT_EQ(gui.scrollState().position, 7);
    gui.onWheel(-2);
    EXPECT_EQ(gui.scrollState().position, 9);
}

TEST_F(ScrollingTest, aPictureThatCannotBeMovedIsDrawnAnew) {
    view.canScroll = false;
    gui.onVScroll(ScrollAction::lineUp);
    EXPECT_EQ(gui.scrollState().position, 9);
    EXPECT_EQ(view.invalidations, 1);
}

// ---- mouse

TEST_F(GuiClassTest, aClickHighlightsItsLine) {
    print(3);
    gui.onPaint();
    gui.onLDown(5, 24 + 25);
    EXPECT_EQ(view.raised, 1);
    gui.onPaint();
    EXPECT_EQ(view.lines[25].background, GuiClass::backgroundColour);
    EXPECT_EQ(view.lines[45].background, GuiClass::selectionColour);
    gui.onMouseMove(5, 24 + 45);
    gui.onLUp();
    gui.onMouseMove(5, 24 + 5);
    gui.onPaint();
    EXPECT_EQ(view.lines[25].background, GuiClass::backgroundColour);
    EXPECT_EQ(view.lines[65].background, GuiClass::selectionColour);
}

TEST_F(GuiClassTest, aClickInTheInputLineMovesItsCaret) {
    print(2);
    type("abcdef");
    gui.onPaint();
    gui.onLDown(1 + 10 * 5, view.inputY + 3);
    EXPECT_EQ(gui.line().caret(), 2);
    gui.onLDown(1, view.inputY);
    EXPECT_EQ(gui.line().caret(), 0);
    gui.onLDown(390, view.inputY + 20);
    EXPECT_EQ(gui.line().caret(), 6);
    EXPECT_EQ(gui.selection().lastLine(), 0);
}

TEST_F(GuiClassTest, anUnderlinedWordAsksForHelp) {
    text.print("see {=plot} now", true, PrintMode::markup);
    type("half a line");
    gui.onPaint();
    EXPECT_TRUE(gui.isHot(1 + 50, 30));
    EXPECT_FALSE(gui.isHot(1 + 100, 30));
    clickLine(0, 5);
    servePosts();
    EXPECT_EQ(runs, (Runs{{"?plot", '>'}}));
    // A further release of the button asks nothing.
    gui.onLUp();
    EXPECT_TRUE(view.posted.empty());
}

TEST_F(GuiClassTest, aPressInTheInputLineForgetsTheWord) {
    text.print("see {=plot} now", true, PrintMode::markup);
    gui.onPaint();
    gui.onLDown(1 + 50, 30);
    ASSERT_EQ(gui.selection().hotWord(), "plot");
    gui.onLDown(50, view.inputY + 3);
    EXPECT_EQ(gui.selection().hotWord(), "");
    gui.onLUp();
    servePosts();
    EXPECT_TRUE(runs.empty());
}

TEST_F(GuiClassTest, aClickBehindTheTextClearsTheSelection) {
    print(2);
    gui.onPaint();
    clickLine(0);
    EXPECT_EQ(gui.selection().selectedCommand(), "line 0");
    gui.onPaint();
    ASSERT_EQ(view.lines[25].background, GuiClass::selectionColour);
    clickLine(5);
    gui.onPaint();
    EXPECT_EQ(view.lines[25].background, GuiClass::backgroundColour);
    EXPECT_EQ(gui.selection().selectedCommand(), "");
    gui.command(COMMAND_COPY);
    EXPECT_EQ(host.clipboard, std::nullopt);
}

TEST_F(GuiClassTest, aDoubleClickRunsACommandAgain) {
    enter("x=3");
    clickLine(0);
    gui.onLDouble();
    servePosts();
    EXPECT_EQ(runs, (Runs{{"x=3", '>'}, {"x=3", '>'}}));
    EXPECT_EQ(text.getLine(1), "{g 2> {b:x=3");
    EXPECT_EQ(history.entries().back(), "x=3");
}

TEST_F(GuiClassTest, aDoubleClickOnNothingRunsNothing) {
    gui.onLDouble();
    print(1);
    clickLine(4);
    gui.onLDouble();
    servePosts();
    EXPECT_TRUE(runs.empty());
}

TEST_F(GuiClassTest, refusedFocusIsTold) {
    view.focusIsRefused = true;
    gui.onLDown(5, 30);
    EXPECT_EQ(text.getLine(0), "?bug: SetFocus failed in GuiClass::onLDown");
    gui.setFocus();
    EXPECT_EQ(text.getLine(1), "?bug: GuiClass::setFocus failed");
}

// ---- typing and running

TEST_F(GuiClassTest, aTypedLineIsShownAndRuns) {
    type("1+2");
    EXPECT_EQ(view.inputLine(), "1>1+2 ");
    type("\r");
    EXPECT_EQ(text.getLine(0), "{g 1> {b:1+2");
    EXPECT_TRUE(runs.empty()) << "it runs when the event has been served";
    EXPECT_FALSE(view.caret);
    ASSERT_EQ(view.posted, (std::vector<int>{211}));
    servePosts();
    EXPECT_EQ(runs, (Runs{{"1+2", '>'}}));
    EXPECT_EQ(gui.line().commandNumber(), 2);
    EXPECT_EQ(view.typed[1], "2>");
    EXPECT_TRUE(view.caret);
    EXPECT_GT(view.focused, 0);
}

TEST_F(GuiClassTest, anEmptyLineIsACommandToo) {
    enter("");
    EXPECT_EQ(runs, (Runs{{"", '>'}}));
    EXPECT_EQ(text.getLine(0), "{g 1> {b:");
    EXPECT_EQ(gui.line().commandNumber(), 2);
}

TEST_F(GuiClassTest, keysBehindEnterWaitForTheRun) {
    type("a\rb\rc");
    EXPECT_EQ(view.posted.size(), 1u);
    servePosts();
    EXPECT_EQ(runs, (Runs{{"a", '>'}, {"b", '>'}}));
    EXPECT_EQ(gui.line().line(), "c");
}

TEST_F(GuiClassTest, keysOfARunAreKeptAndEscapeAsksForItsEnd) {
    during = [this](const std::string& line) {
        if (line != "long") return;
        EXPECT_TRUE(gui.isRunning());
        EXPECT_FALSE(view.caret);
        type("next");
        gui.onKey(KeyKind::character, 27);
        gui.command(COMMAND_ABORT);
        gui.command(COMMAND_CHOOSE_FOLDER);
        gui.command(COMMAND_F9);
        gui.command(COMMAND_ABOUT);
        gui.command(COMMAND_LAUNCH);
        gui.onLDouble();
        EXPECT_EQ(gui.line().line(), "");
    };
    enter("long");
    EXPECT_EQ(view.interrupts, 2);
    EXPECT_EQ(view.abouts + view.launches, 0);
    EXPECT_EQ(runs.size(), 1u);
    EXPECT_EQ(gui.line().line(), "next");
}

TEST_F(GuiClassTest, withoutARunAbortDoesNothing) {
    gui.command(COMMAND_ABORT);
    type("abc\x1b");
    EXPECT_EQ(view.interrupts, 0);
    EXPECT_EQ(gui.line().line(), "");
}

TEST_F(GuiClassTest, outputOfARunIsShownWhenItWaits) {
    during = [this](const std::string&) {
        text.print("so far", true, PrintMode::markup);
        const int before = view.drawnLines;
        gui.showOutput();
        EXPECT_EQ(view.shown(), (Strings{"{g 1> {b:x", "so far"}));
        EXPECT_EQ(view.inputLine(), "");
        const int drawn = view.drawnLines;
        EXPECT_GT(drawn, before);
        gui.showOutput();
        EXPECT_EQ(view.drawnLines, drawn);
    };
    enter("x");
}

TEST_F(GuiClassTest, whatRunsAsideLeavesTheEditorAsItWas) {
    type("half a l");
    gui.runAside([&] {
        EXPECT_TRUE(gui.isRunning());
        text.print("from an event", true, PrintMode::markup);
        gui.showOutput();
        EXPECT_FALSE(view.caret);
        type("ine");
    });
    EXPECT_TRUE(view.caret) << "nothing was printed since, and the caret is back";
    EXPECT_EQ(view.inputLine(), "1>half a l ");
    gui.giveKeptKeys();
    EXPECT_EQ(gui.line().line(), "half a line");
}

TEST_F(GuiClassTest, whileAnotherConsoleComputesNothingStarts) {
    turns.isComputing = true;
    type("1+1\r");
    gui.command(COMMAND_CHOOSE_FOLDER);
    gui.command(COMMAND_AGAIN_BUTTON);
    gui.chooseDirectory("/tmp");
    gui.typeText("menu of a figure");
    EXPECT_TRUE(view.posted.empty());
    EXPECT_EQ(gui.line().line(), "");
    turns.isComputing = false;
    gui.giveKeptKeys();
    servePosts();
    EXPECT_EQ(runs, (Runs{{"1+1", '>'}, {"menu of a figure", '>'}}));
}

TEST_F(GuiClassTest, aPostThatComesWhileAnotherConsoleComputesIsNotLost) {
    type("1+1\r");
    turns.isComputing = true;
    servePosts();
    EXPECT_TRUE(runs.empty());
    turns.isComputing = false;
    gui.giveKeptKeys();
    servePosts();
    EXPECT_EQ(runs, (Runs{{"1+1", '>'}}));
}

TEST_F(GuiClassTest, aLongLineScrollsWithItsCaret) {
    type(std::string(100, 'x') + "END");
    ASSERT_TRUE(view.caret);
    EXPECT_LE(view.caret->x + view.caret->width, 401);
    EXPECT_TRUE(view.inputLine().ends_with("END "));
    gui.onKey(KeyKind::down, keyHome);
    EXPECT_EQ(view.caret->x, 31);
    EXPECT_EQ(view.typed[1], "1>");
    gui.onKey(KeyKind::down, keyEnd);
    gui.onLDown(view.caret->x, view.inputY);
    EXPECT_EQ(gui.line().caret(), 103);
}

TEST_F(GuiClassTest, tenMegabytesPastedAreHarmless) {
    for (const std::string& pasted : {std::string(10 << 20, 'x'), std::string(1 << 20, '(')}) {
        gui.paste(pasted);
        gui.onPaint();
        EXPECT_EQ(gui.line().line().size(), pasted.size());
        EXPECT_LE(view.caret->x, 401);
        type("\x1b");
        EXPECT_EQ(gui.line().line(), "");
    }
}

TEST_F(GuiClassTest, anyKeyCodeIsHarmless) {
    for (int code = -300; code < 1000; ++code)
        for (const bool control : {false, true})
            for (const auto kind : {KeyKind::down, KeyKind::character}) {
                gui.onKey(kind, code, control);
                servePosts();
            }
}

// ---- commands

TEST_F(GuiClassTest, itemsTypeTheirLines) {
    for (const auto& [id, line] : std::map<int, std::string>{{202, "cd ?"},
                                                             {203, "cd ?"},
                                                             {204, "cd ?"},
                                                             {210, "clear reset"},
                                                             {230, "?"},
                                                             {232, "?func a"}}) {
        runs.clear();
        gui.command(id);
        EXPECT_EQ(text.getLine(text.currentLine() - 1),
                  "{g " + std::to_string(gui.line().commandNumber()) + "> {b:" + line);
        servePosts();
        EXPECT_EQ(runs, (Runs{{line, '>'}})) << id;
    }
    EXPECT_EQ(history.entries().back(), "?func a");
}

TEST_F(GuiClassTest, whatTheUserWasTypingComesBack) {
    type("half a l");
    gui.command(COMMAND_CHOOSE_FOLDER);
    servePosts();
    EXPECT_EQ(runs, (Runs{{"cd ?", '>'}}));
    EXPECT_EQ(gui.line().line(), "half a l");
    EXPECT_EQ(view.inputLine(), "2>half a l ");
}

TEST_F(GuiClassTest, executeFromTheMenuIsEnter) {
    type("1+1");
    gui.command(COMMAND_EXECUTE);
    servePosts();
    EXPECT_EQ(runs, (Runs{{"1+1", '>'}}));
    EXPECT_EQ(text.getLine(0), "{g 1> {b:1+1");
}

TEST_F(GuiClassTest, theClipboardRuns) {
    host.clipboard = "x=1\r\ny=2\r\n";
    for (const int id : {COMMAND_F9, COMMAND_RUN_CLIPBOARD, COMMAND_EXEC_BUTTON}) {
        runs.clear();
        const int number = gui.line().commandNumber();
        gui.command(id);
        EXPECT_EQ(runs, (Runs{{"", 'c'}}));
        EXPECT_EQ(gui.line().commandNumber(), number + 1);
    }
    host.clipboard.reset();
    runs.clear();
    view.focused = 0;
    gui.command(COMMAND_EXEC_BUTTON);
    EXPECT_TRUE(runs.empty());
    EXPECT_EQ(view.focused, 1) << "the keyboard is back in the window all the same";
    gui.onKey(KeyKind::down, keyF9);
    EXPECT_EQ(runs, (Runs{{"", 'c'}}));
}

TEST_F(GuiClassTest, theClipboardRunsInsteadOfWhatWasTyped) {
    host.clipboard = "x=1\r\n";
    type("half a line");
    gui.command(COMMAND_RUN_CLIPBOARD);
    EXPECT_EQ(runs.at(0).second, 'c');
    EXPECT_EQ(gui.line().line(), "");
    EXPECT_EQ(gui.line().caret(), 0);
    EXPECT_EQ(view.inputLine(), "2> ");
    EXPECT_EQ(text.currentLine(), 0) << "nothing of it is shown";
}

TEST_F(GuiClassTest, againRunsTheLastLine) {
    enter("x=3");
    gui.command(COMMAND_AGAIN_BUTTON);
    servePosts();
    EXPECT_EQ(runs, (Runs{{"x=3", '>'}, {"x=3", '>'}}));
}

TEST_F(GuiClassTest, copyAndPaste) {
    gui.command(COMMAND_COPY);
    EXPECT_EQ(host.clipboard, std::nullopt);
    enter("x=3");
    clickLine(0);
    gui.onKey(KeyKind::character, 3, true);
    EXPECT_EQ(host.clipboard, "x=3\r\n");
    gui.onKey(KeyKind::character, 22, true);
    EXPECT_EQ(gui.line().line(), "x=3");
    EXPECT_EQ(view.inputLine(), "2>x=3 ");
    host.clipboard.reset();
    gui.command(COMMAND_PASTE);
    EXPECT_EQ(gui.line().line(), "x=3");
}

TEST_F(GuiClassTest, zoomKeepsItsFractions) {
    EXPECT_EQ(view.fontSize, 20);
    view.invalidations = 0;
    gui.command(COMMAND_ZOOM_IN);
    EXPECT_GT(view.invalidations, 0);
    EXPECT_EQ(gui.caretPlace().height, 20) << "the input line's font is that of the text";
    EXPECT_EQ(view.fontSize, 22);
    EXPECT_DOUBLE_EQ(gui.fontSize(), 20 * zoomInFactor);
    EXPECT_EQ(gui.scrollState().lineHeight, 22);
    EXPECT_EQ(gui.scrollState().rows, 6);
    for (int i = 0; i < 7; ++i) gui.command(COMMAND_ZOOM_IN);
    EXPECT_EQ(view.fontSize, 40);
    for (int i = 0; i < 8; ++i) gui.command(COMMAND_ZOOM_OUT);
    EXPECT_EQ(view.fontSize, 20);
    for (int i = 0; i < 1000; ++i) gui.command(COMMAND_ZOOM_OUT);
    EXPECT_GE(view.fontSize, 4);
    for (int i = 0; i < 1000; ++i) gui.command(COMMAND_ZOOM_IN);
    EXPECT_LE(view.fontSize, 400);
}

TEST_F(GuiClassTest, whatIsPickedComesBehindALineThatIsToRun) {
    gui.choose(COMMAND_LAUNCH);
    EXPECT_EQ(view.launches, 1);
    during = [this](const std::string& line) { EXPECT_EQ(view.launches, line == "a" ? 1 : 2); };
    type("a\r");
    gui.choose(COMMAND_LAUNCH);
    gui.choose(COMMAND_EXECUTE);
    EXPECT_EQ(view.launches, 1);
    servePosts();
    EXPECT_EQ(view.launches, 2);
    EXPECT_EQ(runs.at(0), (std::pair<std::string, char>("a", '>')));
    // The second Enter finds the line that is empty again.
    EXPECT_EQ(runs.size(), 2u);
    // While something runs a pick is dropped as ever.
    during = [this](const std::string&) { gui.choose(COMMAND_LAUNCH); };
    enter("b");
    EXPECT_EQ(view.launches, 2);
}

TEST_F(GuiClassTest, theOtherCommandsGoToTheWindow) {
    gui.command(COMMAND_EXIT);
    gui.command(COMMAND_ABOUT);
    gui.command(COMMAND_ABOUT_KEY);
    gui.command(COMMAND_LAUNCH);
    gui.command(COMMAND_CLEAR_CLIPBOARD);
    gui.command(COMMAND_F5);
    gui.command(4711);
    EXPECT_EQ(view.closed, 1);
    EXPECT_EQ(view.abouts, 2);
    EXPECT_EQ(view.launches, 1);
    EXPECT_EQ(view.cleared, 1);
    EXPECT_TRUE(runs.empty());
}

TEST_F(GuiClassTest, aDirectoryOfTheBoxIsChangedTo) {
    view.focused = 0;
    gui.chooseDirectory("/tmp/a b");
    EXPECT_EQ(view.focused, 1);
    servePosts();
    EXPECT_EQ(runs, (Runs{{"cd /tmp/a b", '>'}}));
}

TEST_F(GuiClassTest, aDirectoryWithMarksOfTheLanguageIsQuoted) {
    for (const char* directory : {"/tmp/a;b", "/tmp/a#b", "/tmp/a\";b", "/tmp/it's"}) {
        gui.chooseDirectory(directory);
        servePosts();
    }
    EXPECT_EQ(runs, (Runs{{"cd \"/tmp/a;b\"", '>'},
                          {"cd \"/tmp/a#b\"", '>'},
                          {"cd '/tmp/a\";b'", '>'},
                          {"cd /tmp/it's", '>'}}));
}

// ---- what a running program reads

TEST_F(GuiClassTest, aProgramReadsALine) {
    std::optional<std::string> read;
    during = [&](const std::string&) {
        int events = 0;
        read = gui.readLine([&] {
            EXPECT_TRUE(gui.isReading());
            EXPECT_TRUE(view.caret);
            EXPECT_EQ(view.caret->x, 1 + 10 * (events % 5));
            type(std::string(1, "abcd\r"[events++]));
            return events < 10;
        });
        EXPECT_FALSE(view.caret);
    };
    enter("getline");
    EXPECT_EQ(read, "abcd");
    EXPECT_EQ(gui.line().line(), "");
    EXPECT_EQ(runs.size(), 1u);
    EXPECT_EQ(view.typed[1], "2>");
}

TEST_F(GuiClassTest, escapeClearsALineThatAProgramReads) {
    during = [&](const std::string&) {
        type("typed before ");
        EXPECT_EQ(gui.readLine([&] {
            type("the\x1bline\r");
            return true;
        }),
                  "line");
    };
    enter("x");
    EXPECT_EQ(view.interrupts, 0);
}

TEST_F(GuiClassTest, aLineThatIsNeverFinishedIsNone) {
    during = [&](const std::string&) {
        EXPECT_EQ(gui.readLine([&] {
            type("abc");
            return false;
        }),
                  std::nullopt);
        EXPECT_FALSE(gui.isReading());
    };
    enter("x");
    EXPECT_EQ(gui.line().line(), "");
}

TEST_F(GuiClassTest, aProgramReadsACharacter) {
    during = [&](const std::string&) {
        EXPECT_EQ(gui.readCharacter([&] {
            gui.onKey(KeyKind::down, keyUp);
            type("\x1b!");
            return true;
        }),
                  27);
        EXPECT_EQ(gui.readCharacter([] { return false; }), std::nullopt);
        type("\xE9");
        EXPECT_EQ(gui.readCharacter([] { return true; }), 0xE9) << "a kept key";
    };
    enter("x");
    EXPECT_EQ(view.interrupts, 0);
}

// ---- completion

TEST_F(GuiClassTest, aWordIsCompletedAsFarAsItIsSure) {
    std::vector<std::pair<std::string, std::size_t>> asked;
    gui.setCompleter([&](std::string_view line, std::size_t caret) -> Completion {
        asked.emplace_back(line, caret);
        return {2, {"alpha", "alphabet"}};
    });
    type("2*al+1");
    for (int i = 0; i < 2; ++i) gui.onKey(KeyKind::down, keyLeft);
    gui.completeLine();
    EXPECT_EQ(asked.back(), (std::pair<std::string, std::size_t>("2*al+1", 4)));
    EXPECT_EQ(gui.line().line(), "2*alpha+1");
    EXPECT_EQ(gui.line().caret(), 7);
    EXPECT_EQ(text.currentLine(), 0);
    // Then there is a choice, which is shown above the line.
    gui.completeLine();
    EXPECT_EQ(view.shown(), (Strings{"alpha     alphabet"}));
    EXPECT_EQ(gui.line().line(), "2*alpha+1");
    EXPECT_EQ(view.inputLine(), "1>2*alpha+1 ");
    EXPECT_TRUE(view.caret);
    // The former lines begin with what stands there now.
    EXPECT_NE(gui.line().lastKey(), keyUp);
}

TEST_F(GuiClassTest, nothingIsCompletedWhereNothingFitsOrSomethingRuns) {
    gui.completeLine();
    int asked = 0;
    gui.setCompleter([&](std::string_view, std::size_t) -> Completion {
        ++asked;
        return {};
    });
    type("x");
    gui.completeLine();
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(gui.line().line(), "x");
    during = [&](const std::string&) {
        gui.completeLine();
        gui.readLine([&] {
            gui.completeLine();
            return false;
        });
    };
    enter("");
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(text.currentLine(), 1);
}

TEST(Candidates, standInColumns) {
    EXPECT_EQ(candidateRows({"a", "bbb", "cc", "d"}, 10), (Strings{"a    bbb", "cc   d"}));
    EXPECT_EQ(candidateRows({"long", "longer"}, 3), (Strings{"long", "longer"}));
    EXPECT_EQ(candidateRows({}, 10), Strings{});
    const Strings many = candidateRows(Strings(250, "x"), 0);
    EXPECT_EQ(many.size(), 201u);
    EXPECT_EQ(many.back(), "(50 more)");
}

}  // namespace
}  // namespace vorpen
