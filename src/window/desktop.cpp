// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/desktop.h"

#include <sys/socket.h>
#include <unistd.h>

#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <algorithm>
#include <csignal>

#include "eval/run_state.h"
#include "window/console_window.h"

namespace vorpen {
namespace {

constexpr int endingSignals[] = {SIGTERM, SIGHUP, SIGINT};

/// The engine that is saved when the program is ended from outside.
Calc* engineToSave = nullptr;
int signalPipe = -1;

/// A program that does not answer in this time is left.
constexpr unsigned patienceSeconds = 5;

/// Runs in a signal handler while the program hangs in something that looks at
/// no flag. Saving there may fail; then the files of the former session stand,
/// since each takes its place by a rename, and the second alarm ends the
/// program.
void leaveAndSave(int) {
    signal(SIGALRM, SIG_DFL);
    alarm(patienceSeconds);
    if (engineToSave) engineToSave->saveForNextRun();
    _exit(128 + SIGTERM);
}

void onEndingSignal(int) {
    runState().interrupt();
    signal(SIGALRM, leaveAndSave);
    alarm(patienceSeconds);
    const char note = 1;
    [[maybe_unused]] const ssize_t written = write(signalPipe, &note, 1);
}

}  // namespace

Desktop::Desktop() { listenToSignals(); }

Desktop::~Desktop() {
    alarm(0);
    for (const int signal : endingSignals) std::signal(signal, SIG_DFL);
    signals_.reset();
    // The primary engine goes last, as it came first.
    while (!consoles_.empty()) {
        if (consoles_.size() == 1) engineToSave = nullptr;
        consoles_.pop_back();
    }
}

void Desktop::listenToSignals() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0) return;
    signalPipe = ends[1];
    signals_ = std::make_unique<QSocketNotifier>(ends[0], QSocketNotifier::Read);
    QObject::connect(signals_.get(), &QSocketNotifier::activated, this, [this, from = ends[0]] {
        char note;
        while (read(from, &note, 1) > 0) {
        }
        leave();
    });
    struct sigaction action {};
    action.sa_handler = onEndingSignal;
    action.sa_flags = SA_RESTART;
    for (const int signal : endingSignals) sigaction(signal, &action, nullptr);
}

ConsoleWindow& Desktop::openConsole() {
    const bool isSecondary = !consoles_.empty();
    consoles_.push_back(std::make_unique<ConsoleWindow>(*this, isSecondary));
    ConsoleWindow& window = *consoles_.back();
    if (!isSecondary) engineToSave = &window.calc();
    window.show();
    window.console().setFocus();
    return window;
}

// ---- running

void Desktop::beginRun(ConsoleWindow& console) { running_ = &console; }

void Desktop::endRun() {
    if (running_) running_->endBusy();
    running_ = nullptr;
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (run_.isRunning) return;
            if (isLeaving_) return leave();
            for (const auto& console : consoles_)
                if (console->mustClose()) {
                    console->close();
                    return;
                }
            for (const auto& console : consoles_) console->console().giveKeptKeys();
        },
        Qt::QueuedConnection);
}

void Desktop::serveWhileBusy() {
    if (isServing_ || !running_) return;
    isServing_ = true;
    running_->showBusy();
    running_->console().showOutput();
    QCoreApplication::instance()->installEventFilter(this);
    constexpr int longestMilliseconds = 20;
    QCoreApplication::processEvents(QEventLoop::AllEvents, longestMilliseconds);
    QCoreApplication::instance()->removeEventFilter(this);
    isServing_ = false;
}

/// What is let through while something computes; true for what is dropped.
bool Desktop::eventFilter(QObject* target, QEvent* event) {
    if (!target->isWidgetType()) return false;
    auto* const widget = static_cast<QWidget*>(target);
    switch (event->type()) {
        case QEvent::Close: {
            const bool isConsole = std::ranges::any_of(consoles_, [&](const auto& c) { return c.get() == target; });
            if (!isConsole && !qobject_cast<QMenu*>(widget)) {
                event->ignore();
                return true;
            }
            return false;
        }
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::ShortcutOverride:
        case QEvent::InputMethod: {
            // Keys of the console go to it, which keeps them.
            const bool isMenu = qobject_cast<QMenu*>(widget) || qobject_cast<QMenuBar*>(widget);
            const bool isConsole = dynamic_cast<ConsoleWidget*>(widget) || dynamic_cast<ConsoleWindow*>(widget);
            return !isMenu && !isConsole;
        }
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
            return !qobject_cast<QMenu*>(widget) && !qobject_cast<QMenuBar*>(widget) &&
                   !qobject_cast<QScrollBar*>(widget);
        case QEvent::ContextMenu:
        case QEvent::Drop: return true;
        default: return false;
    }
}

// ---- the end

void Desktop::closed(ConsoleWindow& console) {
    if (!console.isSecondary()) {
        for (const auto& other : consoles_) other->hide();
        QCoreApplication::quit();
        return;
    }
    // Not from within an event of its own.
    QMetaObject::invokeMethod(
        this,
        [this, gone = &console] { std::erase_if(consoles_, [gone](const auto& one) { return one.get() == gone; }); },
        Qt::QueuedConnection);
}

void Desktop::leave() {
    isLeaving_ = true;
    // What waits for an answer gets none.
    while (QWidget* box = QApplication::activeModalWidget()) {
        box->close();
        if (QApplication::activeModalWidget() == box) break;
    }
    if (run_.isRunning)
        runState().interrupt();
    else
        QCoreApplication::quit();
}

}  // namespace vorpen
