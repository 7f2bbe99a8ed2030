// SPDX-License-Identifier: GPL-3.0-or-later

// The debugger's window, driven as a user drives it: a script runs into a
// breakpoint, and while the window waits, keys and clicks come.

#include "window/debugger_window.h"

#include <gtest/gtest.h>

#include <QtWidgets/QtWidgets>
#include <cstdlib>
#include <deque>
#include <functional>
#include <map>

#include "base/interrupt.h"
#include "eval/run_state.h"
#include "unit/engine_support.h"

namespace vorpen {
namespace {

using testing::TypedEngine;

class DebuggerWindowTest : public ::testing::Test {
protected:
    DebuggerWindowTest() {
        engine.calc.debugger().setView(&window);
        QObject::connect(&clock, &QTimer::timeout, &clock, [this] { actNext(); });
        clock.start(1);
        engine.folder.write("s.vrp",
                            "function y=area(r)\n"
                            "    k=[1,2,3];\n"
                            "    y=pi r^2;!\n"
                            "    y=2*y;\n"
                            "end\n"
                            "s=area(1);\n"
                            "t=s;\n"
                            "s=area(2);\n"
                            "'end';;\n");
    }
    ~DebuggerWindowTest() override {
        engine.calc.debugger().setView(nullptr);
        forgetInterrupt();
    }

    /// What the user does at the stops to come, one act a stop.
    std::deque<std::function<void()>> acts;
    std::vector<std::string> titles;  ///< at each of them

    /// Types a line inside the program's event loop.
    std::string run(const std::string& line = "use s") {
        std::string shown;
        QTimer::singleShot(0, &clock, [&] {
            shown = engine.type(line);
            QCoreApplication::exit();
        });
        QCoreApplication::exec();
        EXPECT_TRUE(acts.empty()) << "it did not stop so often";
        acts.clear();
        return shown;
    }

    void key(int code) {
        QKeyEvent press(QEvent::KeyPress, code, Qt::NoModifier);
        QWidget* target = window.widget()->focusWidget();
        QCoreApplication::sendEvent(target ? target : window.widget(), &press);
    }
    void click(const QString& text) {
        for (auto* button : window.widget()->findChildren<QPushButton*>())
            if (button->text() == text) return button->click();
        ADD_FAILURE() << "no button " << text.toStdString();
    }
    std::function<void()> pressing(const QString& text) {
        return [this, text] { click(text); };
    }
    [[nodiscard]] QPlainTextEdit& source() const { return *window.widget()->findChild<QPlainTextEdit*>(); }
    [[nodiscard]] QString label(int index) const {
        return window.widget()->findChildren<QLabel*>().at(index)->text();
    }

    TypedEngine engine;
    int shows = 0;  ///< of what has been printed
    DebuggerWindow window{nullptr, [this] { ++shows; }};

    QTimer clock;

private:
    void actNext() {
        if (!engine.calc.debugger().isWaiting()) return;
        titles.push_back(window.widget()->windowTitle().toStdString());
        if (acts.empty()) {
            ADD_FAILURE() << "a stop that nobody expected: " << titles.back();
            return window.widget()->close(), void();
        }
        const auto act = acts.front();
        acts.pop_front();
        act();
    }
};

using Titles = std::vector<std::string>;

TEST_F(DebuggerWindowTest, ShowsValuesLocalsAndTheSource) {
    acts = {[&] {
                EXPECT_EQ(label(0), "expr value\nLocals:\nr\nk\ny");
                EXPECT_EQ(label(1), "3.1416\n\n1\n(1x3) 1 2 3\n3.1416");
                EXPECT_TRUE(source().isVisible());
                EXPECT_TRUE(source().isReadOnly());
                EXPECT_EQ(source().document()->firstBlock().text(), "function y=area(r)");
                EXPECT_EQ(source().document()->lastBlock().previous().text(), "'end';;");
                ASSERT_EQ(source().extraSelections().size(), 2);
                EXPECT_EQ(source().extraSelections().back().cursor.selectedText(), "    y=pi r^2;!");
                click("Cont");
            },
            pressing("Cont")};
    EXPECT_EQ(run(), "end");
    EXPECT_EQ(titles, (Titles{"Breakpoint at line 3 in area", "Breakpoint at line 3 in area"}));
    EXPECT_EQ(shows, 2);
    EXPECT_FALSE(window.widget()->isVisible());
}

TEST_F(DebuggerWindowTest, StepsByButtonAndByEnter) {
    acts = {pressing("Step"), pressing("Step"),
            [&] {
                source().setFocus();
                key(Qt::Key_Return);
            },
            [&] {
                EXPECT_EQ(label(0), "expr value");
                EXPECT_EQ(label(1), "6.2832");
                EXPECT_FALSE(source().isVisible());
                key(Qt::Key_Enter);
            },
            pressing("Cont"), pressing("Cont")};
    EXPECT_EQ(run(), "end");
    EXPECT_EQ(titles, (Titles{"Breakpoint at line 3 in area", "Stepping at line 3", "Stepping at line 4",
                              "Stepping at line 6", "Stepping at line 7", "Breakpoint at line 3 in area"}));
}

TEST_F(DebuggerWindowTest, HaltEndsTheRun) {
    acts = {pressing("Halt")};
    EXPECT_EQ(run(), "in area; | execution halted from debugger");
    EXPECT_FALSE(window.widget()->isVisible());
}

TEST_F(DebuggerWindowTest, ClosingLetsTheScriptFinishAndTheNextOneStopsAgain) {
    QPointer<QWidget> closed;
    acts = {[&] {
        closed = window.widget();
        closed->close();
    }};
    EXPECT_EQ(run(), "end");
    EXPECT_EQ(window.widget(), nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(closed.isNull());
    acts = {[&] { key(Qt::Key_Escape); }};
    EXPECT_EQ(run(), "end");
    EXPECT_EQ(titles.size(), 2u);
}

TEST_F(DebuggerWindowTest, OpensBesideTheConsoleInTheSizeOfItsFont) {
    QWidget console;
    console.setGeometry(20, 30, 400, 200);
    console.show();
    QCoreApplication::processEvents();
    DebuggerWindow opened(&console, {});
    ASSERT_TRUE(opened.open());
    const QRect room = console.screen()->availableGeometry(), place = opened.widget()->geometry();
    const QFontMetricsF cell(opened.widget()->font());
    const auto columns = [&](double units) { return units / 4 * cell.averageCharWidth(); };
    const auto lines = [&](double units) { return units / 8 * cell.height(); };
    ASSERT_LT(lines(300), room.height());
    EXPECT_NEAR(place.width(), columns(380), 1);
    EXPECT_NEAR(place.height(), lines(300), 1);
    EXPECT_NEAR(place.top(), 30 + lines(15), 1);
    EXPECT_NEAR(place.left(), std::min<double>(20 + columns(400), room.right() + 1 - place.width()), 1)
        << "no further than the screen";
    EXPECT_EQ(opened.widget()->windowTitle(), "Breakpoint");
    EXPECT_FALSE(opened.widget()->isVisible());
}

TEST_F(DebuggerWindowTest, ButtonsStayAtTheBottomRight) {
    acts = {[&] {
                QWidget& pane = *window.widget();
                std::map<QString, QPushButton*> buttons;
                for (auto* button : pane.findChildren<QPushButton*>()) buttons[button->text()] = button;
                ASSERT_EQ(buttons.size(), 3u);
                for (const QSize size : {pane.size(), QSize(500, 300), QSize(900, 700)}) {
                    pane.resize(size);
                    QCoreApplication::processEvents();
                    int right = pane.width();
                    for (const char* name : {"Cont", "Step", "Halt"}) {
                        const QRect place = buttons.at(name)->geometry();
                        EXPECT_EQ(place.size(), QSize(64, 26)) << name;
                        EXPECT_EQ(place.right() + 1, right - 8) << name;
                        EXPECT_EQ(place.bottom() + 1, pane.height() - 8) << name;
                        right = place.left();
                    }
                }
                click("Cont");
            },
            pressing("Cont")};
    run();
}

TEST_F(DebuggerWindowTest, OpensWhereItWasClosed) {
    acts = {[&] {
        window.widget()->setGeometry(40, 50, 500, 300);
        window.widget()->close();
    }};
    run();
    acts = {[&] {
        EXPECT_EQ(window.widget()->geometry(), QRect(40, 50, 500, 300));
        window.widget()->close();
    }};
    run();
}

TEST_F(DebuggerWindowTest, AnInterruptEndsTheWaitAndTheRun) {
    acts = {[&] {
        runState().interrupt();
        clock.stop();
    }};
    EXPECT_EQ(run(), "in area; | interrupted");
    EXPECT_EQ(window.widget(), nullptr);
}

TEST_F(DebuggerWindowTest, TheEndOfTheProgramEndsTheWait) {
    acts = {[] { QCoreApplication::exit(); }};
    EXPECT_EQ(run(), "end");
    EXPECT_EQ(window.widget(), nullptr);
}

/// Counts what reaches it.
class OtherWindow final : public QWidget {
public:
    int keys = 0, presses = 0, paints = 0;

protected:
    void keyPressEvent(QKeyEvent*) override { ++keys; }
    void mousePressEvent(QMouseEvent*) override { ++presses; }
    void paintEvent(QPaintEvent*) override { ++paints; }
};

TEST_F(DebuggerWindowTest, OtherWindowsAreOnlyPainted) {
    OtherWindow other;
    other.show();
    acts = {[&] {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, "a");
        QCoreApplication::sendEvent(&other, &press);
        QMouseEvent button(QEvent::MouseButtonPress, QPointF(5, 5), QPointF(5, 5), Qt::LeftButton, Qt::LeftButton,
                           Qt::NoModifier);
        QCoreApplication::sendEvent(&other, &button);
        EXPECT_EQ(other.keys + other.presses, 0);
        other.paints = 0;
        QPaintEvent paint(QRect(0, 0, 5, 5));
        QCoreApplication::sendEvent(&other, &paint);
        EXPECT_EQ(other.paints, 1);
        window.widget()->close();
    }};
    run();
    QKeyEvent press(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, "a");
    QCoreApplication::sendEvent(&other, &press);
    EXPECT_EQ(other.keys, 1);
}

TEST_F(DebuggerWindowTest, AWindowThatStaysOnViewAfterTheRunStillHears) {
    const std::string script = "p=1;! q=2; r=3;";
    acts = {pressing("Step"), pressing("Step"), pressing("Step"), pressing("Step")};
    run(script);
    EXPECT_TRUE(window.widget()->isVisible());
    click("Halt");
    click("Cont");
    EXPECT_FALSE(window.widget()->isVisible());
    titles.clear();
    run("x=1; y=2");
    EXPECT_EQ(titles, Titles{});

    acts = {pressing("Step"), pressing("Step"), pressing("Step"), pressing("Step")};
    run(script);
    window.widget()->close();
    EXPECT_EQ(window.widget(), nullptr);
    titles.clear();
    run("x=1; y=2");
    EXPECT_EQ(titles, Titles{});
}

TEST_F(DebuggerWindowTest, ALongSourceAndTenLocalsHaveRoom) {
    std::string script = "function y=busy(first)\n";
    const char* names[] = {"second", "third", "name", "matrix", "angles", "total", "values", "mean"};
    const char* values[] = {"1/3", "1e100", "'a string of some length'", "[1,2;3,4]", "1:100", "[]", "rand(1,20)", "2.5"};
    for (int i = 0; i < 8; ++i) script += std::string("    ") + names[i] + "=" + values[i] + ";\n";
    script += "    # the line below is longer than others, so that the text has to be scrolled to the right to be read\n";
    script += "    y=first+second+third+mean+sum(angles)+first+second+third+mean+first+second+third+mean;!\n";
    for (int i = 0; i < 40; ++i) script += "    total=total+" + std::to_string(i) + ";\n";
    script += "end\nbusy(7);\n";
    engine.folder.write("long.vrp", script);
    acts = {[&] {
        EXPECT_EQ(source().document()->blockCount(), 17);  // and an empty one
        const QSize size = window.widget()->size();
        EXPECT_GE(size.width(), 380);
        EXPECT_GE(size.height(), 300);
        const QImage picture = window.widget()->grab().toImage();
        // The current line is marked in its own colour.
        int marked = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) marked += picture.pixel(x, y) == qRgb(0xFD, 0xFD, 0x96);
        EXPECT_GT(marked, 1000);
        if (const char* path = std::getenv("VORPEN_PICTURES"))
            picture.save(QString(path) + "/debugger_window.png");
        click("Cont");
    }};
    run("use long");
}

}  // namespace
}  // namespace vorpen
