// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/console_window.h"

#include <QtGui/QClipboard>
#include <QtGui/QWindow>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QApplication>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "console/markup.h"
#include "plot/figure_list.h"
#include "plot/interaction.h"
#include "window/desktop.h"
#include "window/encoding.h"
#include "window/figure_desktop.h"
#include "window/figure_window.h"
#include "window/icon.h"

namespace vorpen {
namespace {

namespace fs = std::filesystem;

fs::path newFolder() {
    std::string name = (fs::temp_directory_path() / "vorpen-window-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no folder");
    return name;
}

class ConsoleWindowTest : public testing::Test {
protected:
    ~ConsoleWindowTest() override {
        QGuiApplication::clipboard()->clear();
        desktop.reset();
        fs::remove_all(folder);
    }

    ConsoleWindow& window() { return *desktop->consoles().front(); }
    ConsoleWidget& client() { return window().client(); }
    ConsoleText& text() { return window().calc().console(); }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString& typed = {},
               QWidget* target = nullptr) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, typed);
        QApplication::sendEvent(target ? target : &client(), &event);
    }
    void typeInto(QWidget* target, const std::string& keys) {
        for (const char c : keys) {
            if (c == '\n')
                press(Qt::Key_Return, Qt::NoModifier, "\r", target);
            else
                press(Qt::Key_unknown, Qt::NoModifier, QString(QChar(c)), target);
        }
    }
    void type(const std::string& keys) { typeInto(&client(), keys); }
    /// Types and lets the program answer.
    void run(const std::string& line) {
        type(line + "\n");
        QApplication::processEvents();
    }
    /// Does something while the program waits.
    template <class Do>
    void later(Do act, int milliseconds = 20) {
        QTimer::singleShot(milliseconds, &window(), act);
    }

    std::vector<std::string> lines() {
        std::vector<std::string> plain;
        const std::int64_t last = text().currentLine() + (text().currentText().empty() ? 0 : 1);
        for (std::int64_t n = 0; n < last; ++n) {
            std::vector<TextRun> runs;
            plain.push_back(decode(text().getLine(n), 0, runs));
        }
        return plain;
    }
    std::string lastLine() {
        const auto all = lines();
        return all.empty() ? "" : all.back();
    }
    std::string typed() { return window().console().line().line(); }

    QImage picture() {
        QApplication::processEvents();
        return client().grab().toImage().convertToFormat(QImage::Format_RGB32);
    }
    /// Pixels of a colour in the row of the pane.
    int inkInRow(int row, QRgb colour) {
        const QImage image = picture();
        const ScrollState& state = window().console().scrollState();
        const int top = stripHeight + static_cast<int>(state.yOfRow(row));
        int count = 0;
        for (int y = top; y < top + state.lineHeight; ++y)
            for (int x = 0; x < state.rect.width; ++x) count += image.pixel(x, y) == colour;
        return count;
    }

    void mouse(QEvent::Type type, QPointF at, Qt::MouseButton button = Qt::LeftButton,
               Qt::MouseButtons held = Qt::LeftButton) {
        QMouseEvent event(type, at, client().mapToGlobal(at), button, held, Qt::NoModifier);
        QApplication::sendEvent(&client(), &event);
    }
    QPointF placeOf(int row, int column = 0) {
        const ScrollState& state = window().console().scrollState();
        return {2.0 + column * state.charWidth, stripHeight + state.yOfRow(row) + state.lineHeight / 2.0};
    }
    void click(int row, int column = 0) {
        mouse(QEvent::MouseButtonPress, placeOf(row, column));
        mouse(QEvent::MouseButtonRelease, placeOf(row, column), Qt::LeftButton, Qt::NoButton);
    }
    void wheel(int delta, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QWheelEvent event(QPointF(100, 100), client().mapToGlobal(QPointF(100, 100)), {}, {0, delta},
                          Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&client(), &event);
    }
    QAction* menuItem(int id) {
        for (QAction* menu : window().menuBar()->actions())
            for (QAction* item : menu->menu()->actions())
                if (item->data() == id) return item;
        return nullptr;
    }
    void choose(int id) {
        ASSERT_NE(menuItem(id), nullptr) << id;
        menuItem(id)->trigger();
        QApplication::processEvents();
    }
    /// Presses a button of the box that is open, and tells its text.
    QString answerBox(QMessageBox::StandardButton answer) {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box) return "no box";
        const QString said = box->windowTitle() + ": " + box->text();
        box->button(answer)->click();
        return said;
    }

    fs::path folder = newFolder();
    std::unique_ptr<Desktop> desktop = [this] {
        auto made = std::make_unique<Desktop>(folder.string());
        made->openConsole();
        QApplication::processEvents();
        return made;
    }();
};

using Lines = std::vector<std::string>;
/// More than fit into the pane.
constexpr const char* manyLines = "for k=1:60 { disp(k); }";
constexpr QRgb green = 0xFF006400, blue = 0xFF000064, black = 0xFF000000, selected = 0xFFFDFD96;

TEST_F(ConsoleWindowTest, aLineIsTypedAndAnswered) {
    EXPECT_EQ(window().windowTitle(), "Vorpen 5a");
    EXPECT_EQ(window().size(), QSize(840, 600));
    run("1+2");
    run("r=3; pi r^2");
    EXPECT_EQ(lines(), (Lines{"1> 1+2", "3", "2> r=3; pi r^2", "28.2743339       = (9pi)"}));
    EXPECT_GT(inkInRow(0, green), 5) << "the prompt of the echo";
    EXPECT_GT(inkInRow(1, black), 5) << "the answer";
    EXPECT_GT(inkInRow(4, green), 5) << "the next prompt";
    EXPECT_EQ(inkInRow(6, black), 0);
}

TEST_F(ConsoleWindowTest, theCaretIsSeen) {
    type("x");
    const QImage image = picture();
    const Rectangle caret = window().console().caretPlace();
    EXPECT_EQ(image.pixel(caret.x, caret.y + caret.height / 2), black);
    EXPECT_EQ(image.pixel(caret.x + caret.width + 2, caret.y + caret.height / 2), 0xFFFFFFFF);
}

TEST_F(ConsoleWindowTest, itsColoursAreItsOwnOnADarkDesktop) {
    const QPalette usual = QApplication::palette();
    QApplication::setPalette(QPalette(Qt::black));
    run("1+2");
    const QImage image = picture();
    QApplication::setPalette(usual);
    EXPECT_EQ(image.pixel(400, 300), 0xFFFFFFFF);
    EXPECT_NE(image.pixel(600, 10), 0xFFFFFFFF) << "the strip is the desktop's";
}

TEST_F(ConsoleWindowTest, columnsStandUnderEachOther) {
    run("disp(\"iiiiiiiiiiiiiiiiiiii|\")");
    run("disp(\"{*WWWWWWWWWWWWWWWWWWWW}|\")");
    const QImage image = picture();
    const ScrollState& state = window().console().scrollState();
    const auto barOf = [&](int row) {
        int first = -1;
        const int from = 1 + 20 * state.charWidth;
        for (int x = from; x < from + state.charWidth && first < 0; ++x)
            if (image.pixel(x, stripHeight + static_cast<int>(state.yOfRow(row)) + state.lineHeight / 2) !=
                0xFFFFFFFF)
                first = x;
        return first;
    };
    EXPECT_GT(barOf(1), 0);
    EXPECT_EQ(barOf(1), barOf(4));
}

TEST_F(ConsoleWindowTest, formerLinesAreRecalled) {
    run("x=1;");
    run("y=2;");
    press(Qt::Key_Up);
    EXPECT_EQ(typed(), "y=2;");
    press(Qt::Key_Up);
    EXPECT_EQ(typed(), "x=1;");
    press(Qt::Key_Down);
    EXPECT_EQ(typed(), "y=2;");
    press(Qt::Key_Escape, Qt::NoModifier, "\x1b");
    type("x");
    press(Qt::Key_Up);
    EXPECT_EQ(typed(), "x=1;");
}

TEST_F(ConsoleWindowTest, keysEdit) {
    type("abd");
    press(Qt::Key_Left);
    type("c");
    press(Qt::Key_Home);
    press(Qt::Key_Delete, Qt::NoModifier, "\x7f");
    press(Qt::Key_End);
    press(Qt::Key_Backspace, Qt::NoModifier, "\b");
    EXPECT_EQ(typed(), "bc");
    press(Qt::Key_Tab, Qt::NoModifier, "\t");
    EXPECT_EQ(typed(), "bc  ");
    press(Qt::Key_Escape, Qt::NoModifier, "\x1b");
    type("a=b+c");
    press(Qt::Key_B, Qt::ControlModifier, "\x02");
    EXPECT_EQ(typed(), "a=(b+c)");
    press(Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(window().console().line().caret(), 6);
    press(Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(window().console().line().caret(), 2);
    press(Qt::Key_Right);
    EXPECT_EQ(window().console().line().caret(), 3);
    press(Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(window().console().line().caret(), 6);
    press(Qt::Key_Escape, Qt::NoModifier, "\x1b");
    EXPECT_EQ(typed(), "");
    type("b+c");
    press(Qt::Key_BracketRight, Qt::ControlModifier, "\x1d");
    EXPECT_EQ(typed(), "(b+c)");
}

TEST_F(ConsoleWindowTest, namesAreCompleted) {
    run("marginOfError=1;");
    run("marginOfSafety=2;");
    type("3*marg");
    press(Qt::Key_Space, Qt::ControlModifier, QString(QChar(0)));
    EXPECT_EQ(typed(), "3*marginOf");
    press(Qt::Key_Space, Qt::ControlModifier, " ");
    EXPECT_EQ(lastLine(), "marginOfError   marginOfSafety");
    EXPECT_EQ(typed(), "3*marginOf");
    type("S");
    press(Qt::Key_Space, Qt::ControlModifier);
    run("");
    EXPECT_EQ(lastLine(), "6");
}

TEST_F(ConsoleWindowTest, composedTextIsTyped) {
    QInputMethodEvent event;
    event.setCommitString(QString::fromUtf8("µé"));
    QApplication::sendEvent(&client(), &event);
    EXPECT_EQ(typed(), "\xB5\xE9");
}

TEST_F(ConsoleWindowTest, anyKeyIsHarmless) {
    for (int key = 0; key < 0x2000; key += 7)
        for (const auto modifiers : {Qt::NoModifier, Qt::ControlModifier, Qt::ShiftModifier})
            press(Qt::Key(key < 0x1000 ? key : 0x01000000 + key - 0x1000), modifiers, QString(QChar(key)));
    press(Qt::Key_unknown, Qt::NoModifier, QString::fromUtf8("中文"));
    QApplication::processEvents();
    if (QWidget* popup = QApplication::activePopupWidget()) popup->close();
    press(Qt::Key_Escape, Qt::NoModifier, "\x1b");
    run("1+1");
    EXPECT_EQ(lastLine(), "2");
}

TEST_F(ConsoleWindowTest, aSelectionIsSeenAndCopied) {
    run("x=3");
    click(0);
    EXPECT_GT(inkInRow(0, selected), 100);
    EXPECT_EQ(inkInRow(1, selected), 0);
    mouse(QEvent::MouseButtonPress, placeOf(0));
    mouse(QEvent::MouseMove, placeOf(1), Qt::NoButton);
    mouse(QEvent::MouseButtonRelease, placeOf(1), Qt::LeftButton, Qt::NoButton);
    EXPECT_GT(inkInRow(1, selected), 10);
    press(Qt::Key_C, Qt::ControlModifier, "\x03");
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "x=3\r\n3\r\n");
    press(Qt::Key_V, Qt::ControlModifier, "\x16");
    EXPECT_EQ(typed(), "x=33");
}

TEST_F(ConsoleWindowTest, aDoubleClickRunsALineAgain) {
    run("x=3");
    click(0);
    mouse(QEvent::MouseButtonDblClick, placeOf(0));
    mouse(QEvent::MouseButtonRelease, placeOf(0), Qt::LeftButton, Qt::NoButton);
    QApplication::processEvents();
    EXPECT_EQ(lines(), (Lines{"1> x=3", "3", "2> x=3", "3"}));
}

TEST_F(ConsoleWindowTest, anUnderlinedWordAsksForHelp) {
    run("disp(\"see {=pi} now\");");
    click(1, 4);
    QApplication::processEvents();
    EXPECT_EQ(lines()[2], "2> ?pi");
    EXPECT_NE(lines()[3].find("constant"), std::string::npos);
}

TEST_F(ConsoleWindowTest, theWheelScrollsAndZooms) {
    run(manyLines);
    const ScrollState& state = window().console().scrollState();
    const auto end = state.position;
    ASSERT_GT(end, 10);
    EXPECT_EQ(client().scrollBar().value(), end);
    wheel(120);
    EXPECT_EQ(state.position, end - 3);
    wheel(-120);
    EXPECT_EQ(state.position, end);
    wheel(40);
    EXPECT_EQ(state.position, end - 1) << "a fine wheel";
    const int before = state.lineHeight;
    wheel(120, Qt::ControlModifier);
    EXPECT_GT(state.lineHeight, before);
    wheel(-120, Qt::ControlModifier);
    EXPECT_EQ(state.lineHeight, before);
    press(Qt::Key_PageUp);
    press(Qt::Key_PageUp);
    EXPECT_LT(state.position, end - 30);
}

TEST_F(ConsoleWindowTest, eachPartOfTheScrollBarScrolls) {
    run(manyLines);
    const ScrollState& state = window().console().scrollState();
    QScrollBar& bar = client().scrollBar();
    const auto end = state.position;
    const auto after = [&](QAbstractSlider::SliderAction action) {
        bar.triggerAction(action);
        picture();
        EXPECT_EQ(bar.value(), state.position);
        return state.position;
    };
    EXPECT_EQ(bar.pageStep(), state.rows);
    EXPECT_EQ(bar.maximum() + bar.pageStep(), state.lineCount);
    EXPECT_EQ(after(QAbstractSlider::SliderSingleStepSub), end - 1);
    EXPECT_EQ(after(QAbstractSlider::SliderSingleStepAdd), end);
    EXPECT_EQ(after(QAbstractSlider::SliderPageStepSub), end - state.rows);
    EXPECT_EQ(after(QAbstractSlider::SliderPageStepAdd), end);
    EXPECT_EQ(after(QAbstractSlider::SliderToMinimum), 0);
    EXPECT_EQ(text().getLine(0), "{g 1> {b:" + std::string(manyLines));
    EXPECT_GT(inkInRow(0, green), 5);
    EXPECT_EQ(after(QAbstractSlider::SliderToMaximum), end);
    bar.setSliderPosition(7);
    EXPECT_EQ(after(QAbstractSlider::SliderMove), 7);
}

TEST_F(ConsoleWindowTest, whatScrollsIsWhatIsDrawn) {
    run(manyLines);
    ASSERT_GT(window().console().scrollState().position, 30);
    client().scrollBar().triggerAction(QAbstractSlider::SliderPageStepSub);
    picture();
    for (int i = 0; i < 4; ++i) client().scrollBar().triggerAction(QAbstractSlider::SliderSingleStepSub);
    client().scrollBar().triggerAction(QAbstractSlider::SliderSingleStepAdd);
    const QImage moved = picture();
    window().console().onVScroll(ScrollAction::end);
    EXPECT_TRUE(moved == picture());
}

TEST_F(ConsoleWindowTest, aTinyWindowComesBack) {
    run(manyLines);
    client().resize(1, 1);
    picture();
    run("2+2");
    client().resize(800, 500);
    EXPECT_EQ(lastLine(), "4");
    EXPECT_EQ(text().wrapWidth(), window().console().scrollState().columns());
    EXPECT_GT(inkInRow(0, blue), 0);
}

TEST_F(ConsoleWindowTest, tenMegabytesPastedAreHarmless) {
    QGuiApplication::clipboard()->setText(QString(10 << 20, 'x'));
    press(Qt::Key_V, Qt::ControlModifier, "\x16");
    picture();
    EXPECT_EQ(typed().size(), std::size_t{10} << 20);
    press(Qt::Key_Escape, Qt::NoModifier, "\x1b");
    run("1");
    EXPECT_EQ(lastLine(), "1");
}

TEST_F(ConsoleWindowTest, menusStandAsTheyAreTold) {
    using Items = std::vector<std::pair<std::string, int>>;
    std::vector<std::pair<std::string, Items>> menus;
    for (const QAction* menu : window().menuBar()->actions()) {
        menus.push_back({menu->text().toStdString(), {}});
        for (const QAction* item : menu->menu()->actions()) {
            EXPECT_TRUE(item->isEnabled());
            menus.back().second.emplace_back(item->text().toStdString(), item->data().toInt());
        }
    }
    // Behind a tab stands the key that does the same.
    EXPECT_EQ(
        menus,
        (std::vector<std::pair<std::string, Items>>{
            {"&File", {{"&Restore", 202}, {"&Save", 203}, {"&cd ?", 204}, {"E&xit\tAlt-F4", 201}}},
            {"&Run",
             {{"&Reset", 210},
              {"&E&xecute\t<ret>", 211},
              {"&Abort", 213},
              {"&Run clipboard\tF9", 214},
              {"&Clear clipboard", 215},
              {"&Launch vorpen", 217}}},
            {"&View", {{"Zoom &in\t<<", 220}, {"Zoom &out\t>>", 221}}},
            {"&Help", {{"&Basic help\t??", 230}, {"&Functions\t?func", 232}, {"&About vorpen", 231}}}}));
}

TEST_F(ConsoleWindowTest, menusRunTheirCommands) {
    run("x=3;");
    choose(COMMAND_BASIC_HELP);
    EXPECT_EQ(lines()[1], "2> ?");
    choose(COMMAND_RESET);
    EXPECT_EQ(lines().end()[-1].substr(0, 15), "3> clear reset");
    run("x");
    EXPECT_NE(lastLine(), "3");
    choose(COMMAND_FUNCTIONS);
    bool asked = false;
    for (const auto& line : lines()) asked |= line == "5> ?func a";
    EXPECT_TRUE(asked);
    const int height = window().console().scrollState().lineHeight;
    choose(COMMAND_ZOOM_IN);
    EXPECT_GT(window().console().scrollState().lineHeight, height);
    choose(COMMAND_ZOOM_OUT);
    EXPECT_EQ(window().console().scrollState().lineHeight, height);
    choose(COMMAND_ABORT);
    type("7*6");
    choose(COMMAND_EXECUTE);
    EXPECT_EQ(lastLine(), "42");
    QGuiApplication::clipboard()->setText("a=5;;\nb=6;;\n");
    choose(COMMAND_RUN_CLIPBOARD);
    EXPECT_EQ(lastLine(), "6");
    choose(COMMAND_CLEAR_CLIPBOARD);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "");
}

TEST_F(ConsoleWindowTest, aMenuBarWithoutAnOpenMenuKeepsNoKeys) {
    QMenuBar* bar = window().menuBar();
    bar->setFocus();
    ASSERT_EQ(window().focusWidget(), bar);
    typeInto(bar, "2*");
    EXPECT_EQ(window().focusWidget(), &client());
    type("21\n");
    QApplication::processEvents();
    EXPECT_EQ(lastLine(), "42");
    // A menu in use has them.
    bar->setFocus();
    bar->setActiveAction(bar->actions().front());
    bar->actions().front()->menu()->close();
    bar->setActiveAction(bar->actions().front());
    press(Qt::Key_Right, Qt::NoModifier, {}, bar);
    EXPECT_EQ(bar->activeAction(), bar->actions()[1]);
    press(Qt::Key_Escape, Qt::NoModifier, "\x1b", bar);
    EXPECT_EQ(bar->activeAction(), nullptr);
    EXPECT_EQ(window().focusWidget(), &client());
}

TEST_F(ConsoleWindowTest, foldersAreChosenFromThreeItems) {
    for (const int id : {COMMAND_RESTORE, COMMAND_SAVE, COMMAND_CHOOSE_FOLDER}) {
        QString title;
        bool canRemoveFolders = true;
        later(
            [&] {
                auto* box = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
                ASSERT_NE(box, nullptr);
                title = box->windowTitle();
                canRemoveFolders = !box->testOption(QFileDialog::ReadOnly);
                box->close();
            },
            300);
        choose(id);
        EXPECT_NE(lines().end()[-2].find("> cd ?"), std::string::npos) << id;
        EXPECT_EQ(lastLine(), window().calc().paths().current()) << "nothing was chosen";
        EXPECT_EQ(title, "cd ...");
        EXPECT_FALSE(canRemoveFolders);
    }
}

TEST_F(ConsoleWindowTest, exitClosesTheWindowAndEndsTheProgram) {
    later([&] { menuItem(COMMAND_EXIT)->trigger(); });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_FALSE(window().isVisible());
}

TEST_F(ConsoleWindowTest, aboutTellsWhatTheProgramIs) {
    QStringList told, buttons;
    int pictures = 0;
    QApplication::setWindowIcon(programIcon());
    later([&] {
        const QWidget* box = QApplication::activeModalWidget();
        for (const QLabel* line : box->findChildren<QLabel*>()) {
            told << line->text();
            pictures += !line->pixmap().isNull();
        }
        for (const auto* button : box->findChildren<QPushButton*>()) buttons << button->text().remove('&');
        QApplication::activeModalWidget()->close();
    });
    choose(COMMAND_ABOUT);
    QApplication::setWindowIcon({});
    EXPECT_TRUE(told.contains("Enter 'help' for further information, or see"));
    EXPECT_EQ(told.filter("Vorpen 5a").size(), 1);
    EXPECT_EQ(told.filter("https://").size(), 1) << "the page of the documentation";
    EXPECT_EQ(told.filter("Copyright").size(), 1);
    EXPECT_EQ(buttons, QStringList{"OK"});
    EXPECT_EQ(pictures, 1);
}

TEST_F(ConsoleWindowTest, keysAskWhatTheProgramIs) {
    // It ends by its button, and by the key that closes a box.
    for (const auto& [key, text, end] :
         {std::tuple{Qt::Key_Slash, "/", Qt::Key_Return}, {Qt::Key_Question, "?", Qt::Key_Escape}}) {
        QStringList told;
        later([&, answer = end] {
            QWidget* box = QApplication::activeModalWidget();
            ASSERT_NE(box, nullptr);
            told << box->windowTitle();
            press(answer, Qt::NoModifier, {}, box);
        });
        press(key, Qt::AltModifier, text);
        EXPECT_EQ(told, QStringList{"About Vorpen"}) << text;
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        EXPECT_EQ(typed(), "");
    }
    EXPECT_TRUE(lines().empty());
}

TEST_F(ConsoleWindowTest, functionKeysOfTheInputLine) {
    QGuiApplication::clipboard()->setText("q=4;;");
    type("half a line");
    press(Qt::Key_F5);
    EXPECT_EQ(typed(), "half a line");
    EXPECT_TRUE(lines().empty());
    // What was typed gives way to the clipboard.
    press(Qt::Key_F9);
    QApplication::processEvents();
    EXPECT_EQ(lines(), Lines{"4"});
    EXPECT_EQ(typed(), "");
    EXPECT_EQ(window().console().line().commandNumber(), 2);
    // Nothing on it is an empty input.
    QGuiApplication::clipboard()->clear();
    press(Qt::Key_F9);
    QApplication::processEvents();
    EXPECT_EQ(lines(), Lines{"4"});
    EXPECT_EQ(window().console().line().commandNumber(), 3);
}

TEST_F(ConsoleWindowTest, theButtonsOfTheStrip) {
    EXPECT_EQ(client().execButton().geometry(), QRect(392, 1, 70, 22));
    EXPECT_EQ(client().againButton().geometry(), QRect(462, 1, 70, 22));
    EXPECT_EQ(client().execButton().text(), "Exec");
    EXPECT_EQ(client().againButton().text(), "Again");
    // Without a text on the clipboard the keyboard comes back, and that is all.
    QGuiApplication::clipboard()->clear();
    client().clearFocus();
    client().execButton().click();
    QApplication::processEvents();
    EXPECT_TRUE(client().hasFocus());
    EXPECT_TRUE(lines().empty());
    QGuiApplication::clipboard()->setText("q=4;;");
    client().execButton().click();
    QApplication::processEvents();
    EXPECT_EQ(lastLine(), "4");
    EXPECT_TRUE(client().hasFocus());
    run("1+1");
    client().againButton().click();
    QApplication::processEvents();
    EXPECT_EQ(lines().end()[-2], "3> 1+1");
    EXPECT_EQ(lastLine(), "2");
}

TEST_F(ConsoleWindowTest, theStripIsAsWideAsTheWindow) {
    const auto* strip = client().findChild<QFrame*>("strip");
    for (const int width : {840, 600, 1000}) {
        client().resize(width, 500);
        EXPECT_EQ(strip->geometry(), QRect(0, 0, width, 24));
    }
    const QRect box = client().directoryBox().geometry();
    EXPECT_EQ(box.topLeft(), QPoint(81, 0));
    EXPECT_EQ(box.width(), 310);
    const QFont& face = client().directoryBox().font();
    EXPECT_TRUE(face.bold());
    EXPECT_EQ(face.pointSize(), 10);
    EXPECT_EQ(face.families().front(), "Courier New");
}

TEST_F(ConsoleWindowTest, theDirectoryBoxGivesTheKeyboardBack) {
    run("cd " + folder.string());
    DirectoryBox& box = client().directoryBox();
    box.showPopup();
    client().clearFocus();
    box.hidePopup();
    EXPECT_TRUE(client().hasFocus()) << "closed without a choice";
    EXPECT_EQ(lines().size(), 2u);
    client().clearFocus();
    emit box.activated(box.currentIndex());
    EXPECT_TRUE(client().hasFocus());
    QApplication::processEvents();
    EXPECT_EQ(lines().end()[-2], "2> cd " + folder.string());
    type("x");
    const Rectangle caret = window().console().caretPlace();
    EXPECT_EQ(picture().pixel(caret.x, caret.y + caret.height / 2), black) << "the caret is seen";
}

TEST_F(ConsoleWindowTest, theDirectoryBoxFollowsAndLeads) {
    const fs::path inside = folder / "a b";
    fs::create_directory(inside);
    run("cd " + folder.string());
    DirectoryBox& box = client().directoryBox();
    EXPECT_EQ(box.currentData().toString().toStdString(), folder.string());
    run("cd " + inside.string());
    EXPECT_EQ(box.currentData().toString().toStdString(), inside.string());
    const int former = box.findData(toQString(folder.string()));
    ASSERT_GE(former, 0);
    box.setCurrentIndex(former);
    emit box.activated(former);
    QApplication::processEvents();
    EXPECT_EQ(window().calc().paths().current(), folder.string());
    EXPECT_EQ(lastLine(), folder.string());
    // What cannot be had is not shown as if it were.
    fs::remove(inside);
    const int gone = box.findData(toQString(inside.string()));
    ASSERT_GE(gone, 0);
    box.setCurrentIndex(gone);
    emit box.activated(gone);
    QApplication::processEvents();
    EXPECT_NE(lastLine(), folder.string());
    EXPECT_EQ(box.currentData().toString().toStdString(), folder.string());
}

// ---- a running program and the user

TEST_F(ConsoleWindowTest, aProgramReadsALine) {
    later([&] {
        EXPECT_EQ(lines().back(), "your name");
        type("Ada\n");
    });
    run("s=getline(\"your name\");");
    EXPECT_EQ(lines(), (Lines{"1> s=getline(\"your name\");", "your name", "Ada"}));
    run("s");
    EXPECT_EQ(lastLine(), "Ada");
}

TEST_F(ConsoleWindowTest, aProgramReadsACharacter) {
    later([&] { type("q"); });
    run("k=getch;");
    run("k");
    EXPECT_EQ(lastLine(), "113");
    // It is shown as it stands.
    later([&] { type("{"); });
    run("k=getch;");
    EXPECT_EQ(lastLine(), "{");
    run("k");
    EXPECT_EQ(lastLine(), "123");
}

TEST_F(ConsoleWindowTest, aMessageWaitsForItsButton) {
    QString said;
    later([&] { said = answerBox(QMessageBox::Ok); }, 100);
    run("messageBox(\"<b>it</b> is done\")");
    EXPECT_EQ(said, ": <b>it</b> is done");
    EXPECT_EQ(lastLine(), "1");
}

TEST_F(ConsoleWindowTest, keysOfARunAreTypedBehindIt) {
    later([&] { type("2+2\n3+"); });
    run("pause(100);");
    QApplication::processEvents();
    EXPECT_EQ(lastLine(), "4");
    EXPECT_EQ(typed(), "3+");
}

TEST_F(ConsoleWindowTest, escapeEndsAPause) {
    later([&] { press(Qt::Key_Escape, Qt::NoModifier, "\x1b"); });
    run("pause(100000)");
    EXPECT_EQ(lastLine(), "interrupted");
    run("1+1");
    EXPECT_EQ(lastLine(), "2");
}

TEST_F(ConsoleWindowTest, abortEndsAnEndlessLoop) {
    later(
        [&] {
            EXPECT_TRUE(window().windowTitle().contains("busy"));
            EXPECT_EQ(client().cursor().shape(), Qt::WaitCursor);
            menuItem(COMMAND_ABORT)->trigger();
        },
        400);
    run("i=0; while 1 { i=i+1; }");
    EXPECT_EQ(lastLine(), "interrupted");
    EXPECT_EQ(window().windowTitle(), "Vorpen 5a");
    EXPECT_EQ(client().cursor().shape(), Qt::ArrowCursor);
}

TEST_F(ConsoleWindowTest, aWaitForAClickTakesOneInTheConsole) {
    interaction().mouse[MOUSE_X] = 3;
    interaction().mouse[MOUSE_Y] = 4;
    later([&] { click(3); });
    run("getclick(0)");
    EXPECT_EQ(lines().size(), 2u);
    EXPECT_EQ(lastLine(), "3 4 ") << "the mouse's last place in a figure";
    later([&] { press(Qt::Key_Escape, Qt::NoModifier, "\x1b"); });
    run("getclick(0)");
    run("1");
    EXPECT_EQ(lastLine(), "1");
}

TEST_F(ConsoleWindowTest, aScriptRunsInItsDirectory) {
    const fs::path script = folder / "it's.vrp";
    std::ofstream(script) << "z=11;;\n";
    window().runScript(script.string());
    QApplication::processEvents();
    QApplication::processEvents();
    EXPECT_EQ(window().calc().paths().current(), folder.string());
    EXPECT_EQ(lastLine(), "11");
    EXPECT_EQ(lines()[0], "1> cd \"" + folder.string() + "\"");
}

// ---- the end

TEST_F(ConsoleWindowTest, closingSavesTheSession) {
    run("kept=17;");
    later([&] { window().close(); });
    EXPECT_EQ(QApplication::exec(), 0);
    desktop.reset();
    desktop = std::make_unique<Desktop>(folder.string());
    desktop->openConsole();
    run("kept");
    EXPECT_EQ(lastLine(), "17");
    press(Qt::Key_Up);
    press(Qt::Key_Up);
    EXPECT_EQ(typed(), "kept=17;");
}

TEST_F(ConsoleWindowTest, closingWhileSomethingRunsEndsItFirst) {
    for (const char* line : {"pause(100000)", "s=getline(\"?\")", "k=getch", "getclick(0)", "while 1 { }"}) {
        SCOPED_TRACE(line);
        later([&] { type(std::string("v=1; ") + line + "\n"); }, 0);
        later([&] { window().close(); }, 300);
        EXPECT_EQ(QApplication::exec(), 0);
        EXPECT_FALSE(window().isVisible());
        desktop.reset();
        EXPECT_TRUE(fs::exists(folder / "vorpen_env.bin"));
        fs::remove(folder / "vorpen_env.bin");
        desktop = std::make_unique<Desktop>(folder.string());
        desktop->openConsole();
    }
}

TEST_F(ConsoleWindowTest, aRequestToEndClosesBoxesAndSaves) {
    later([&] { type("v=1; messageBox(\"nobody is there\")\n"); }, 0);
    later([&] { raise(SIGTERM); }, 200);
    EXPECT_EQ(QApplication::exec(), 0);
    desktop.reset();
    EXPECT_TRUE(fs::exists(folder / "vorpen_env.bin"));
}

TEST_F(ConsoleWindowTest, largeMatricesAreAskedFor) {
    run("big=zeros(100,101);");
    later([&] { window().close(); });
    EXPECT_EQ(QApplication::exec(), 0);
    QString said;
    QTimer::singleShot(100, [&] { said = answerBox(QMessageBox::Cancel); });
    desktop.reset();
    EXPECT_EQ(said, "vorpen exit: Large matrices will not be saved: ok to exit?");
    EXPECT_FALSE(fs::exists(folder / "vorpen_env.bin"));
}

TEST_F(ConsoleWindowTest, aRequestToEndAnswersTheLastQuestionAndSaves) {
    run("big=zeros(100,101); v=1;");
    later([&] { window().close(); });
    EXPECT_EQ(QApplication::exec(), 0);
    bool wasAsked = false;
    QTimer::singleShot(100, [&] {
        wasAsked = QApplication::activeModalWidget() != nullptr;
        raise(SIGTERM);
    });
    desktop.reset();
    EXPECT_TRUE(wasAsked);
    EXPECT_TRUE(fs::exists(folder / "vorpen_env.bin"));
}

// ---- two consoles

TEST_F(ConsoleWindowTest, aSecondConsoleIsIndependent) {
    run("x=1;");
    choose(COMMAND_LAUNCH);
    ASSERT_EQ(desktop->consoles().size(), 2u);
    ConsoleWindow& second = *desktop->consoles().back();
    EXPECT_EQ(second.windowTitle(), "secondary Vorpen");
    EXPECT_EQ(window().pos(), QPoint(100, 30));
    EXPECT_EQ(second.pos(), QPoint(120, 50));
    EXPECT_EQ(second.size(), QSize(840, 600));
    typeInto(&second.client(), "x=2\n");
    QApplication::processEvents();
    run("x");
    EXPECT_EQ(lastLine(), "1");
    second.close();
    QApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
    ASSERT_EQ(desktop->consoles().size(), 1u);
    run("x+1");
    EXPECT_EQ(lastLine(), "2");
}

TEST_F(ConsoleWindowTest, theOneWithTheKeyboardIsCurrent) {
    choose(COMMAND_LAUNCH);
    ConsoleWindow& second = *desktop->consoles().back();
    for (ConsoleWindow* const chosen : {&second, &window(), &second, &window()}) {
        chosen->activateWindow();
        QApplication::processEvents();
        ASSERT_TRUE(chosen->isActiveWindow());
        EXPECT_EQ(Calc::current(), &chosen->calc());
        EXPECT_EQ(&console(), &chosen->calc().console());
        EXPECT_TRUE(chosen->client().hasFocus());
    }
}

TEST_F(ConsoleWindowTest, aLineThatEndsLeavesTheKeyboardToTheOther) {
    choose(COMMAND_LAUNCH);
    ConsoleWindow& second = *desktop->consoles().back();
    for (ConsoleWindow* const chosen : {&window(), &second}) {
        second.activateWindow();
        later([&] { chosen->activateWindow(); }, 50);
        typeInto(&second.client(), "pause(150); x=2;\n");
        QApplication::processEvents();
        QApplication::processEvents();
        EXPECT_TRUE(chosen->isActiveWindow());
        EXPECT_EQ(Calc::current(), &chosen->calc());
    }
}

TEST_F(ConsoleWindowTest, aDebuggerGoesWithItsConsole) {
    choose(COMMAND_LAUNCH);
    ConsoleWindow& second = *desktop->consoles().back();
    const auto debuggers = [] {
        QList<QWidget*> found;
        for (QWidget* one : QApplication::topLevelWidgets())
            if (one->isVisible() && one->windowTitle().contains(" at line ")) found << one;
        return found;
    };
    // It stays on view behind a run that ends in steps.
    QTimer steps;
    QObject::connect(&steps, &QTimer::timeout, [&] {
        if (!second.calc().debugger().isWaiting()) return;
        for (auto* button : debuggers().front()->findChildren<QPushButton*>())
            if (button->text() == "Step") button->click();
    });
    steps.start(5);
    typeInto(&second.client(), "p=1;! q=2;\n");
    QApplication::processEvents();
    steps.stop();
    ASSERT_EQ(debuggers().size(), 1);
    EXPECT_TRUE(debuggers().front()->windowTitle().startsWith("Stepping"));
    second.close();
    QApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
    EXPECT_EQ(desktop->consoles().size(), 1u);
    EXPECT_TRUE(debuggers().empty());
}

TEST_F(ConsoleWindowTest, oneConsoleRunsWhileAnotherWaits) {
    choose(COMMAND_LAUNCH);
    ConsoleWindow& second = *desktop->consoles().back();
    later([&] { typeInto(&second.client(), "y=6*7\n"); });
    run("pause(300); z=1");
    EXPECT_NE(second.calc().console().getLine(1).find("42"), std::string::npos);
    EXPECT_EQ(lastLine(), "1");
}

TEST_F(ConsoleWindowTest, aFigureBelongsToTheConsoleThatOpenedIt) {
    QtFigureDesktop figures;
    figures.setConsole(&window());
    figures.setOpener([this] { return desktop->returnToRun(); });
    figures.setPlacer([this] { return desktop->runningConsole(); });
    const auto pressOn = [](int number) {
        auto& view = dynamic_cast<FigureWindowView&>(*figureList().find(number)->view());
        auto* canvas = view.window()->findChild<QWidget*>("client");
        const QPointF at(100, 100);
        QMouseEvent event(QEvent::MouseButtonPress, at, canvas->mapToGlobal(at), Qt::LeftButton, Qt::LeftButton,
                          Qt::NoModifier);
        QApplication::sendEvent(canvas, &event);
        return interaction().mouse[MOUSE_RESULT];
    };
    run("onLDown(xy) := 1");
    run("figure(1);");
    choose(COMMAND_LAUNCH);
    ConsoleWindow& second = *desktop->consoles().back();
    typeInto(&second.client(), "onLDown(xy) := 2\n");
    QApplication::processEvents();
    typeInto(&second.client(), "figure(2);\n");
    QApplication::processEvents();
    EXPECT_EQ(pressOn(1), 1);
    EXPECT_EQ(pressOn(2), 2);
    EXPECT_EQ(pressOn(1), 1);
    // It lies over it, too.
    const auto isOver = [](int number) {
        auto& view = dynamic_cast<FigureWindowView&>(*figureList().find(number)->view());
        return view.window()->windowHandle()->transientParent();
    };
    EXPECT_EQ(isOver(1), window().windowHandle());
    EXPECT_EQ(isOver(2), second.windowHandle());
    // Without its console it is one of those that remain.
    second.close();
    QApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
    EXPECT_EQ(pressOn(2), 1);
    EXPECT_EQ(isOver(2), window().windowHandle());
    EXPECT_TRUE(dynamic_cast<FigureWindowView&>(*figureList().find(2)->view()).window()->isVisible());
}

TEST_F(ConsoleWindowTest, ofTheKeysThatAFigureGetsLaterABoxStopsTheRest) {
    QtFigureDesktop figures;
    figures.setConsole(&window());
    run("onKeyDown(p) := messageBox('key')");
    run("figure(1);");
    auto& view = dynamic_cast<FigureWindowView&>(*figureList().find(1)->view());
    auto* canvas = view.window()->findChild<QWidget*>("client");
    const QPointF at(100, 100);
    const auto press = [&](QEvent::Type type, Qt::MouseButtons held) {
        QMouseEvent event(type, at, canvas->mapToGlobal(at), Qt::LeftButton, held, Qt::NoModifier);
        QApplication::sendEvent(canvas, &event);
    };
    press(QEvent::MouseButtonPress, Qt::LeftButton);
    bool wasBusy = false;
    later(
        [&] {
            wasBusy = desktop->turns().isComputing;
            typeInto(canvas, "abcd");
            press(QEvent::MouseButtonRelease, Qt::NoButton);
            menuItem(COMMAND_ABORT)->trigger();
        },
        400);
    int boxes = 0;
    QTimer answers;
    QObject::connect(&answers, &QTimer::timeout, [&] { boxes += answerBox(QMessageBox::Ok) != "no box"; });
    answers.start(100);
    run("while 1 { }");
    QApplication::processEvents();
    EXPECT_TRUE(wasBusy);
    EXPECT_EQ(boxes, 1);
    // What was held down is not held for ever.
    EXPECT_EQ(interaction().mouse[MOUSE_LEFT], 0);
}

TEST_F(ConsoleWindowTest, closingThePrimaryEndsWhatRunsInTheOther) {
    choose(COMMAND_LAUNCH);
    ConsoleWindow& second = *desktop->consoles().back();
    later([&] { typeInto(&second.client(), "pause(100000)\n"); }, 0);
    later([&] { type("pause(100000)\n"); }, 100);
    later([&] { window().close(); }, 300);
    EXPECT_EQ(QApplication::exec(), 0);
}

TEST_F(ConsoleWindowTest, theEndOfSeveralRunsLeavesTheLastQuestionOpen) {
    run("big=zeros(100,101);");
    choose(COMMAND_LAUNCH);
    ConsoleWindow& second = *desktop->consoles().back();
    later([&] { typeInto(&second.client(), "pause(100000)\n"); }, 0);
    later([&] { type("pause(100000)\n"); }, 100);
    later([&] { window().close(); }, 300);
    EXPECT_EQ(QApplication::exec(), 0);
    QString said;
    QTimer::singleShot(100, [&] { said = answerBox(QMessageBox::Ok); });
    desktop.reset();
    EXPECT_EQ(said, "vorpen exit: Large matrices will not be saved: ok to exit?");
    EXPECT_TRUE(fs::exists(folder / "vorpen_env.bin"));
}

}  // namespace
}  // namespace vorpen
