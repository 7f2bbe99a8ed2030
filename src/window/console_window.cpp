// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/console_window.h"

#include <QtGui/QCloseEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>

#include "base/interrupt.h"
#include "console/console_commands.h"
#include "engine/completion.h"
#include "engine/launch.h"
#include "eval/run_state.h"
#include "window/about_dialog.h"
#include "window/desktop.h"
#include "window/encoding.h"
#include "window/menu_bar.h"

namespace vorpen {
namespace {

/// The name of a menu's item, and behind a tab the key that does the same.
QString menuText(std::string_view item) {
    QString text = toQString(item);
    const qsizetype blanks = text.indexOf("  ");
    if (blanks < 0) return text;
    return text.left(blanks) + '\t' + text.mid(blanks).trimmed();
}

}  // namespace

ConsoleWindow::ConsoleWindow(Desktop& desktop, const Calc* running)
    : desktop_(desktop), isSecondary_(running != nullptr), host_(*this) {
    setWindowTitle(plainTitle());
    // The window closes when the menu that said so has done its work.
    client_ = new ConsoleWidget(this, {.close =
                                           [this] {
                                               QMetaObject::invokeMethod(
                                                   this, [this] { close(); }, Qt::QueuedConnection);
                                           },
                                       .about = [this] { showAbout(); },
                                       .launch = [this] { desktop_.openConsole(this); },
                                       .interrupt = [this] { interrupt(); },
                                       .takeFocus = [this](bool toTop) { return takeFocus(toTop); }});
    setCentralWidget(client_);
    makeMenus();
    resize(windowWidth, windowHeight);
    const ScreenPlace place = isSecondary_ ? secondaryPlace : primaryPlace;
    move(place.x, place.y);
    const auto openConsole = [this](Calc& calc) {
        joinEngine(calc);
        return true;
    };
    calc_ = running ? launchSecondary(host_, *running, openConsole) : launchPrimary(host_, openConsole);
}

void ConsoleWindow::joinEngine(Calc& calc) {
    console_ =
        std::make_unique<GuiClass>(calc.console(), calc.history(), *client_, host_, desktop_.turns(),
                                   [this](const std::string& line, char mode) { runInput(line, mode); });
    console_->setCompleter(
        [&calc](std::string_view line, std::size_t caret) { return completionAt(calc, line, caret); });
    client_->setConsole(console_.get());
    calc.events().setTypist([this](std::string_view text) { console_->typeText(text); });
    calc.events().setRunner([this](const std::function<void()>& call) { runForEvent(call); });
    debugger_ = std::make_unique<DebuggerWindow>(this, [this] { console_->showOutput(); });
    calc.debugger().setView(debugger_.get());
    calc.paths().setObserver([this, &calc] { showDirectories(calc.paths()); });
    showDirectories(calc.paths());
}

ConsoleWindow::~ConsoleWindow() {
    // The engine's end may still print and ask.
    if (calc_) calc_->paths().setObserver({});
    calc_.reset();
    client_->setConsole(nullptr);
}

QString ConsoleWindow::plainTitle() const { return isSecondary_ ? "secondary Vorpen" : "Vorpen 5a"; }

void ConsoleWindow::makeMenus() {
    setMenuBar(new MenuBar(this, *client_));
    QMenu* menu = nullptr;
    std::string_view heading;
    for (const MenuRow& row : consoleMenu()) {
        if (row.menu != heading) menu = menuBar()->addMenu(toQString(row.menu));
        heading = row.menu;
        QAction* item = menu->addAction(menuText(row.item));
        item->setData(row.id);
        QObject::connect(item, &QAction::triggered, this, [this, id = row.id] { console_->choose(id); });
    }
}

void ConsoleWindow::showDirectories(const Dir& paths) {
    const auto& recent = paths.recent();
    client_->showDirectories({recent.begin(), recent.end()}, paths.current());
}

// ---- running

void ConsoleWindow::runInput(const std::string& line, char mode) {
    if (mustClose_ || desktop_.isLeaving()) return;
    mustEndRun_ = false;
    desktop_.beginRun(*this);
    forgetInterrupt();
    calc_->beginInput(line, mode);
    calc_->run();
    desktop_.endRun();
}

void ConsoleWindow::runForEvent(const std::function<void()>& call) {
    // While a script waits, its events are a part of its run.
    if (console_->isRunning()) return call();
    struct Run {
        explicit Run(ConsoleWindow& window) : desktop(window.desktop_) { desktop.beginRun(window); }
        ~Run() { desktop.endRun(); }
        Run(const Run&) = delete;
        Run& operator=(const Run&) = delete;
        Desktop& desktop;
    };
    mustEndRun_ = false;
    const Run run(*this);
    forgetInterrupt();
    console_->runAside(call);
}

void ConsoleWindow::interrupt() {
    mustEndRun_ = true;
    runState().interrupt();
}

/// Other programs keep the keyboard when they have it, and so does another
/// console: its user has gone on there while a line ran here.
bool ConsoleWindow::takeFocus(bool toTop) {
    if (toTop) raise();
    const QWidget* active = QApplication::activeWindow();
    if (active != this && (toTop || (active && !dynamic_cast<const ConsoleWindow*>(active)))) activateWindow();
    return true;
}

void ConsoleWindow::runScript(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return;
    const auto quoted = [](const std::string& text) {
        const char quote = text.find('"') == std::string::npos ? '"' : '\'';
        return quote + text + quote;
    };
    console_->typeText("cd " + quoted(slash == 0 ? "/" : path.substr(0, slash)));
    console_->typeText("use " + quoted(path));
}

void ConsoleWindow::showBusy() {
    const double share = runState().loopShare();
    const QString progress = share < 0 ? QString() : QString(" %1 %").arg(static_cast<int>(share * 100));
    setWindowTitle(plainTitle() + " - busy" + progress + ", Escape aborts");
    if (!std::exchange(isShownBusy_, true)) client_->setCursor(Qt::WaitCursor);
}

void ConsoleWindow::endBusy() {
    if (!std::exchange(isShownBusy_, false)) return;
    setWindowTitle(plainTitle());
    client_->setCursor(Qt::ArrowCursor);
}

void ConsoleWindow::showAbout() {
    runAboutDialog(this);
    console_->setFocus();
}

// ---- events

void ConsoleWindow::closeEvent(QCloseEvent* event) {
    if (console_->isLineNext()) {
        // On a machine that was slow for a moment, closing comes with the keys
        // before it: their lines still run.
        event->ignore();
        QMetaObject::invokeMethod(this, [this] { close(); }, Qt::QueuedConnection);
        return;
    }
    // With the primary one the program ends, whatever runs elsewhere.
    const bool mustWait = isSecondary_ ? console_->isRunning() : desktop_.runningConsole() != nullptr;
    if (!mustWait) {
        event->accept();
        desktop_.closed(*this);
        return;
    }
    event->ignore();
    mustClose_ = true;
    if (isSecondary_)
        interrupt();
    else
        desktop_.interruptAll();
}

void ConsoleWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || !isActiveWindow() || !isComplete()) return;
    calc_->makeCurrent();
    client_->setFocus();
}

}  // namespace vorpen
