// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/figure_desktop.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QThread>
#include <QtGui/QScreen>
#include <QtGui/QWindow>
#include <QtWidgets/QApplication>

#include "plot/figure_list.h"
#include "window/encoding.h"
#include "window/figure_window.h"

namespace vorpen {
namespace {

/// How long a new window is waited for. A script that plots and computes on
/// serves no events, so its window would otherwise stay empty until the end.
constexpr int millisecondsToAppear = 250;

QRect availableScreen() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? screen->availableGeometry()
                             : QRect(0, 0, defaultScreenWidth, defaultScreenHeight);
}

void waitUntilVisible(const QPointer<FigureWindow>& window) {
    const QDeadlineTimer end(millisecondsToAppear);
    const auto isVisible = [&] { return window->windowHandle() && window->windowHandle()->isExposed(); };
    while (window && !isVisible() && !end.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        QThread::msleep(1);
    }
}

}  // namespace

QtFigureDesktop::QtFigureDesktop() { figureList().setDesktop(this); }

QtFigureDesktop::~QtFigureDesktop() {
    if (figureList().desktop() != this) return;
    figureList().closeFigure(0);
    figureList().setDesktop(nullptr);
}

/// A figure of a secondary console lies over that one, and stays when it goes.
void QtFigureDesktop::putOverConsole(QWidget& figure) const {
    const QWidget* const over = placer_ ? placer_() : nullptr;
    if (over == nullptr || over == console_ || over->windowHandle() == nullptr) return;
    figure.winId();
    figure.windowHandle()->setTransientParent(over->windowHandle());
}

std::unique_ptr<FigureView> QtFigureDesktop::openWindow(Figure& figure, const std::string& title) {
    if (qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr) return nullptr;
    try {
        auto view = std::make_unique<FigureWindowView>(figure, toQString(title), console_);
        if (opener_) view->window()->setEngine(opener_());
        putOverConsole(*view->window());
        view->window()->show();
        waitUntilVisible(view->window());
        return view;
    } catch (...) {
        // No memory for it.
        return nullptr;
    }
}

int QtFigureDesktop::screenWidth() const { return availableScreen().width(); }
int QtFigureDesktop::screenHeight() const { return availableScreen().height(); }

PixelRect QtFigureDesktop::consolePlace() const {
    const QRect screen = availableScreen();
    const QRect place = console_ ? console_->frameGeometry() : screen;
    const QPoint corner = place.topLeft() - screen.topLeft();
    return {corner.x(), corner.y(), corner.x() + place.width(), corner.y() + place.height()};
}

}  // namespace vorpen
