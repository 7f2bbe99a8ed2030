// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// An engine with figures in windows, on the platform without a screen: a test
// types into the one and sends events to the others.

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "console/terminal_text.h"
#include "engine/calc.h"
#include "plot/figure_list.h"
#include "plot/interaction.h"
#include "terminal/typed_session.h"
#include "unit/engine_support.h"
#include "window/figure_desktop.h"
#include "window/figure_window.h"

namespace vorpen::test {

/// A host that serves the events of windows.
class PumpingHost final : public Host {
public:
    explicit PumpingHost(std::string directory) : directory_(std::move(directory)) {}

    std::vector<std::string> boxes;
    /// What the user does, each when events are served the next time.
    std::deque<std::function<void()>> user;

    void messageBox(std::string_view, std::string_view text) override { boxes.emplace_back(text); }
    void pumpEvents() override { (void)waitForEvent(); }
    bool waitForEvent() override {
        const bool isAnyone = !user.empty();
        if (isAnyone) {
            const auto next = std::move(user.front());
            user.pop_front();
            next();
        }
        QCoreApplication::processEvents();
        return isAnyone;
    }
    std::string startDirectory() override { return directory_; }
    std::string programDirectory() override { return directory_; }

private:
    std::string directory_;
};

class FigureSession : public ::testing::Test {
protected:
    FigureSession() : host(folder.path()), calc(host, true), session_(calc, false, [this](const auto& line) {
                          shown_ += (shown_.empty() ? "" : " | ") + terminalText(line, false);
                      }) {
        calc.events().setTypist([this](std::string_view text) { typed.emplace_back(text); });
    }
    ~FigureSession() override {
        figureList().reset();
        interaction().reset();
        settle();
    }

    /// What the console shows for a line.
    std::string type(const std::string& line) {
        shown_.clear();
        session_.typeLine(line);
        session_.finishOutput();
        const std::size_t first = shown_.find_first_not_of(' ');
        return first == std::string::npos ? ""
                                          : shown_.substr(first, shown_.find_last_not_of(' ') - first + 1);
    }
    /// Lets windows answer, and go that are closed.
    static void settle() {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }

    static Figure& figure(int number = 1) { return *figureList().find(number); }
    static FigureWindow& window(int number = 1) {
        return *dynamic_cast<FigureWindowView&>(*figure(number).view()).window();
    }
    static QWidget& canvas(FigureWindow& shown) {
        return *shown.findChild<QWidget*>("client", Qt::FindDirectChildrenOnly);
    }
    static QWidget& canvas(int number = 1) { return canvas(window(number)); }
    static QImage picture(int number = 1) { return canvas(number).grab().toImage(); }

    // ---- What the user does in a window ----

    static void mouse(QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::MouseButtons held,
                      int number = 1) {
        QWidget& target = canvas(number);
        QMouseEvent event(type, at, target.mapToGlobal(at), button, held, Qt::NoModifier);
        QCoreApplication::sendEvent(&target, &event);
    }
    static void press(QPoint at, int number = 1) {
        mouse(QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton, number);
    }
    static void release(QPoint at, int number = 1) {
        mouse(QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton, number);
    }
    static void move(QPoint at, int number = 1) {
        mouse(QEvent::MouseMove, at, Qt::NoButton, Qt::NoButton, number);
    }
    static void drag(QPoint at, int number = 1) {
        mouse(QEvent::MouseMove, at, Qt::NoButton, Qt::LeftButton, number);
    }
    static void key(int code, const QString& text = {}) {
        QKeyEvent event(QEvent::KeyPress, code, Qt::NoModifier, text);
        QCoreApplication::sendEvent(&canvas(), &event);
    }
    static void keyUp(int code) {
        QKeyEvent event(QEvent::KeyRelease, code, Qt::NoModifier);
        QCoreApplication::sendEvent(&canvas(), &event);
    }

    vorpen::testing::TemporaryFolder folder;
    PumpingHost host;
    QtFigureDesktop desktop;
    Calc calc;
    std::vector<std::string> typed;  ///< commands of menus

private:
    std::string shown_;
    TypedSession session_;
};

}  // namespace vorpen::test
