// SPDX-License-Identifier: GPL-3.0-or-later

// Under a theme with light text on a dark ground everything can be read: what
// has the theme's colours, and what stands on the white of a figure.

#include <QtWidgets/QCheckBox>
#include <QtWidgets/QDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <algorithm>
#include <cstdlib>
#include <vector>

#include "window/console_window.h"
#include "window/debugger_window.h"
#include "window/desktop.h"
#include "window/figure_support.h"

namespace vorpen {
namespace {

constexpr QRgb white = qRgb(255, 255, 255);

QPalette darkPalette() {
    QPalette dark(QColor(49, 54, 59), QColor(42, 46, 50));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::BrightText})
        dark.setColor(role, QColor(252, 252, 252));
    dark.setColor(QPalette::Base, QColor(27, 30, 32));
    dark.setColor(QPalette::Highlight, QColor(61, 174, 233));
    return dark;
}

/// The theme is dark while this lives.
class DarkTheme {
public:
    DarkTheme() { QApplication::setPalette(darkPalette()); }
    ~DarkTheme() { QApplication::setPalette(usual_); }
    DarkTheme(const DarkTheme&) = delete;
    DarkTheme& operator=(const DarkTheme&) = delete;

private:
    QPalette usual_ = QApplication::palette();
};

/// The colour of the ground, which half of the pixels are not lighter than and
/// half not darker, and how many pixels are much lighter or darker.
struct Look {
    QColor ground;
    int ink = 0;
};

Look lookOf(const QImage& image) {
    std::vector<QColor> colours;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) colours.emplace_back(image.pixel(x, y));
    std::sort(colours.begin(), colours.end(),
              [](const QColor& a, const QColor& b) { return a.lightness() < b.lightness(); });
    // As much as the grey of a disabled text has on white.
    constexpr int readable = 100;
    Look look{colours.at(colours.size() / 2)};
    for (const QColor& colour : colours)
        look.ink += std::abs(colour.lightness() - look.ground.lightness()) >= readable;
    return look;
}

bool isDark(const QColor& colour) { return colour.lightness() < 110; }

constexpr int fewLetters = 15;  ///< pixels of the shortest text here

// ---- Figures -------------------------------------------------------------------------------

class DarkFigure : public test::FigureSession {
protected:
    /// A figure with one control of a kind in its middle.
    QImage controlOf(const std::string& kind) {
        type("close(0); plot([0,10],[0,10]); wipe; axis(\"off\"); createButton(\"text\",\"" + kind +
             "\",[2,8,3,1]);");
        settle();
        return canvas().grab(theControl()->geometry()).toImage();
    }
    static QWidget* theControl() {
        return canvas().findChild<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    }
};

TEST_F(DarkFigure, TheTextOfControlsCanBeRead) {
    const DarkTheme theme;
    for (const char* kind : {"b", "c", "e", "h", "r", "t"}) {
        const Look look = lookOf(controlOf(kind));
        EXPECT_GT(look.ground.lightness(), 200) << kind;
        EXPECT_GT(look.ink, fewLetters) << kind;
        for (const int state : {1, 2, 0}) {
            if (auto* const button = dynamic_cast<QAbstractButton*>(theControl())) button->click();
            EXPECT_GT(lookOf(canvas().grab(theControl()->geometry()).toImage()).ink, fewLetters)
                << kind << state;
        }
    }
}

TEST_F(DarkFigure, TheMarkOfABoxIsSeen) {
    const DarkTheme theme;
    const int off = lookOf(controlOf("c")).ink;
    dynamic_cast<QCheckBox&>(*theControl()).click();
    EXPECT_GT(lookOf(canvas().grab(theControl()->geometry()).toImage()).ink, off + 5);
}

TEST_F(DarkFigure, ControlsFollowAChangeOfTheTheme) {
    const QImage before = controlOf("c");
    EXPECT_EQ(theControl()->palette().color(QPalette::Button),
              QApplication::palette().color(QPalette::Button))
        << "a light theme is also that of controls";
    {
        const DarkTheme theme;
        settle();
        const QImage changed = canvas().grab(theControl()->geometry()).toImage();
        EXPECT_EQ(changed, controlOf("c")) << "as one that is made now";
        EXPECT_EQ(theControl()->palette().color(QPalette::Highlight),
                  darkPalette().color(QPalette::Highlight));
    }
    settle();
    EXPECT_EQ(canvas().grab(theControl()->geometry()).toImage(), before);
}

TEST_F(DarkFigure, FiguresAreWhiteAndTheirMenusOfTheTheme) {
    const DarkTheme theme;
    type("plot([0,1],[0,1]); menu(list(\"File\"),list(list(\"open->x=1\")));");
    settle();
    EXPECT_EQ(picture().pixel(2, 2), white);
    auto* const bar = window().findChild<QMenuBar*>();
    const Look look = lookOf(bar->grab().toImage());
    EXPECT_TRUE(isDark(look.ground));
    EXPECT_GT(look.ink, fewLetters);
    const Look menu = lookOf(bar->actions()[0]->menu()->grab().toImage());
    EXPECT_TRUE(isDark(menu.ground));
    EXPECT_GT(menu.ink, fewLetters);
}

// ---- The console and what it opens -----------------------------------------------------------

class DarkConsole : public ::testing::Test {
protected:
    DarkConsole() {
        desktop.openConsole();
        QApplication::processEvents();
    }
    ConsoleWindow& window() { return *desktop.consoles().front(); }
    /// Types a line and lets the program answer.
    void run(const std::string& line) {
        for (const char c : line + "\r") {
            QKeyEvent event(QEvent::KeyPress, c == '\r' ? Qt::Key_Return : Qt::Key_unknown, Qt::NoModifier,
                            QChar(c));
            QApplication::sendEvent(&window().client(), &event);
        }
        QApplication::processEvents();
    }
    /// What the box looks like that is opened meanwhile; it is then closed.
    std::vector<Look> looksOfBox(const std::function<void()>& open) {
        std::vector<Look> looks;
        QTimer::singleShot(50, &window(), [&] {
            QWidget* const box = QApplication::activeModalWidget();
            if (box == nullptr) return;
            for (QWidget* part : box->findChildren<QWidget*>()) {
                const auto* label = dynamic_cast<const QLabel*>(part);
                const bool hasText = label != nullptr && label->isVisible() && label->text().size() > 3;
                if (hasText || dynamic_cast<const QPushButton*>(part) != nullptr)
                    looks.push_back(
                        lookOf(box->grab(QRect(part->mapTo(box, QPoint()), part->size())).toImage()));
            }
            box->close();
        });
        open();
        return looks;
    }

    const DarkTheme theme;
    vorpen::testing::TemporaryFolder folder;
    Desktop desktop{folder.path()};
};

TEST_F(DarkConsole, TheConsoleIsWhiteAndTheRestOfTheTheme) {
    run("1+2");
    const QImage shown = window().client().grab().toImage();
    EXPECT_EQ(shown.pixel(400, 300), white);
    EXPECT_GT(lookOf(shown.copy(0, 25, 400, 100)).ink, fewLetters);
    for (QWidget* const part :
         {static_cast<QWidget*>(window().menuBar()), static_cast<QWidget*>(&window().client().execButton()),
          static_cast<QWidget*>(window().client().findChild<QComboBox*>())}) {
        const Look look = lookOf(part->grab().toImage());
        EXPECT_TRUE(isDark(look.ground)) << part->metaObject()->className();
        EXPECT_GT(look.ink, fewLetters) << part->metaObject()->className();
    }
    for (const QAction* menu : window().menuBar()->actions()) {
        const Look look = lookOf(menu->menu()->grab().toImage());
        EXPECT_TRUE(isDark(look.ground));
        EXPECT_GT(look.ink, fewLetters);
    }
}

TEST_F(DarkConsole, BoxesCanBeRead) {
    const auto about = looksOfBox([this] {
        for (const QAction* menu : window().menuBar()->actions())
            for (QAction* item : menu->menu()->actions())
                if (item->text().contains("About")) item->trigger();
    });
    EXPECT_EQ(about.size(), 5u) << "four lines and a button";
    const auto message = looksOfBox([this] { run("messageBox(\"A message\")"); });
    EXPECT_EQ(message.size(), 2u);
    for (const auto& looks : {about, message})
        for (const Look& look : looks) {
            EXPECT_TRUE(isDark(look.ground));
            EXPECT_GT(look.ink, fewLetters);
        }
}

TEST_F(DarkConsole, TheDebuggerCanBeRead) {
    DebuggerWindow debugger(nullptr, [] {});
    DebuggerPage page;
    page.title = "Breakpoint at line 2 in f";
    page.rows = {{"expr value", "3.1416"}, {"Locals:", ""}, {"r", "1"}};
    page.source.lines = {"function y=f(r)", "    y=pi r^2;!", "end"};
    page.source.currentRow = 1;
    ASSERT_TRUE(debugger.open());
    debugger.show(page);
    QApplication::processEvents();
    for (QWidget* const part : debugger.widget()->findChildren<QLabel*>()) {
        const QPoint place = part->mapTo(debugger.widget(), QPoint());
        const Look look = lookOf(debugger.widget()->grab(QRect(place, part->sizeHint())).toImage());
        EXPECT_TRUE(isDark(look.ground));
        EXPECT_GT(look.ink, fewLetters);
    }
    auto* const source = debugger.widget()->findChild<QPlainTextEdit*>();
    const QRect first = source->cursorRect();  // of the current line
    const auto line = [&](int offset) {
        const QRect place(0, first.top() + offset * first.height(), source->viewport()->width() / 2,
                          first.height());
        return lookOf(source->viewport()->grab(place).toImage());
    };
    EXPECT_EQ(line(0).ground, QColor(0xFD, 0xFD, 0x96));
    EXPECT_GT(line(0).ink, fewLetters);
    for (const int other : {-1, 1}) {
        EXPECT_TRUE(isDark(line(other).ground));
        EXPECT_GT(line(other).ink, fewLetters);
    }
    debugger.destroy();
}

}  // namespace
}  // namespace vorpen
