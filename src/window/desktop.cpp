// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/desktop.h"

#include <sys/socket.h>
#include <unistd.h>

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QSocketNotifier>
#include <QtGui/QWindow>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <utility>

#include "base/interrupt.h"
#include "eval/run_state.h"
#include "window/console_window.h"
#include "window/figure_window.h"

namespace vorpen {
namespace {

/// What was pressed before a box opened and is let go now is not held down for
/// ever.
bool isRelease(const QEvent& event) {
    return event.type() == QEvent::KeyRelease || event.type() == QEvent::MouseButtonRelease;
}

/// An open box keeps all else away from a window; also what was done just
/// before, or each key of a word would open a box of its own.
bool isBlocked(const QWidget& widget) {
    const QWidget* box = QApplication::activeModalWidget();
    return box && widget.window() != box;
}

bool isMenu(const QWidget& widget) {
    return qobject_cast<const QMenu*>(&widget) || qobject_cast<const QMenuBar*>(&widget);
}

bool isOfFigure(const QWidget& widget) { return dynamic_cast<const FigureWindow*>(widget.window()) != nullptr; }

/// What a figure's functions may hear of.
bool isDoneByUser(const QEvent& event) {
    switch (event.type()) {
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::Close: return true;
        default: return false;
    }
}

constexpr int endingSignals[] = {SIGTERM, SIGHUP, SIGINT};

Desktop* theDesktop = nullptr;
/// The engine that is saved when the program is ended from outside.
Calc* engineToSave = nullptr;
int signalSocket = -1;

/// A program that does not answer in this time is left.
constexpr unsigned patienceSeconds = 5;

/// Runs in a signal handler while the program hangs in something that looks at
/// no flag. Saving there may fail; then the files of the former session stand,
/// since each takes its place by a rename, and the second alarm ends the
/// program.
void leaveAndSave(int) {
    signal(SIGALRM, SIG_DFL);
    alarm(patienceSeconds);
    Desktop::saveNow();
    _exit(128 + SIGTERM);
}

void onEndingSignal(int) {
    runState().interrupt();
    signal(SIGALRM, leaveAndSave);
    alarm(patienceSeconds);
    const char note = 1;
    [[maybe_unused]] const ssize_t written = write(signalSocket, &note, 1);
}

}  // namespace

Desktop::Desktop(std::optional<std::string> home) : home_(std::move(home)) {
    theDesktop = this;
    sinceServed_.start();
    listenToSignals();
    setService([] { theDesktop->serveWhileBusy(); });
    QCoreApplication::instance()->installEventFilter(this);
    // The window library leaves the program at once when its display is lost.
    [[maybe_unused]] static const bool registered = std::atexit([] { saveNow(); }) == 0;
}

/// The primary engine goes last, as it came first, and saves by itself. It may
/// ask before it does, and be ended from outside then like any other wait.
Desktop::~Desktop() {
    alarm(0);
    while (consoles_.size() > 1) consoles_.pop_back();
    consoles_.clear();
    engineToSave = nullptr;
    alarm(0);
    for (const int signal : endingSignals) std::signal(signal, SIG_DFL);
    signals_.reset();
    setService(nullptr);
    theDesktop = nullptr;
}

void Desktop::saveNow() {
    if (theDesktop) theDesktop->isLeaving_ = true;
    if (Calc* calc = std::exchange(engineToSave, nullptr)) calc->saveForNextRun();
}

void Desktop::listenToSignals() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0) return;
    signalSocket = ends[1];
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

ConsoleWindow* Desktop::openConsole(const ConsoleWindow* from) {
    auto console = std::make_unique<ConsoleWindow>(*this, from ? &from->calc() : nullptr);
    if (!console->isComplete()) return nullptr;
    if (!from) engineToSave = &console->calc();
    console->show();
    console->client().setFocus();
    consoles_.push_back(std::move(console));
    return consoles_.back().get();
}

// ---- running

void Desktop::beginRun(ConsoleWindow& console) {
    running_.push_back(&console);
    sinceServed_.start();
    clock_.beginRun();
    // A run is begun by a posted event. What was posted behind that one would
    // not end the sleep of a run that waits.
    QCoreApplication::eventDispatcher()->wakeUp();
}

void Desktop::endRun() {
    clock_.endRun();
    running_.back()->endBusy();
    running_.pop_back();
    forgetInterrupt();
    // The wish to end the run around this one has ended this one first.
    if (running_.empty())
        mustEndAll_ = false;
    else if (mustEndAll_ || running_.back()->mustEndRun())
        runState().interrupt();
    QMetaObject::invokeMethod(
        this, [this] { afterRun(); }, Qt::QueuedConnection);
}

std::function<void()> Desktop::returnToRun() const {
    return [console = QPointer<ConsoleWindow>(runningConsole())] {
        if (console) console->calc().makeCurrent();
    };
}

void Desktop::afterRun() {
    if (turns_.isComputing) return;
    if (isLeaving_) {
        if (running_.empty()) QCoreApplication::quit();
        return;
    }
    for (const auto& console : consoles_)
        if (console->mustClose() && !console->console().isRunning()) {
            console->close();
            return;
        }
    for (const auto& console : consoles_) console->console().giveKeptKeys();
}

void Desktop::serveWhileBusy() {
    // A run that waits serves all events by itself; then none may be dropped.
    constexpr int recentlyMilliseconds = 200;
    if (turns_.isComputing || running_.empty() || sinceServed_.elapsed() < recentlyMilliseconds) return;
    turns_.isComputing = true;
    running_.back()->showBusy();
    running_.back()->console().showOutput();
    constexpr int longestMilliseconds = 20;
    QCoreApplication::processEvents(QEventLoop::AllEvents, longestMilliseconds);
    turns_.isComputing = false;
    giveKeptEvents();
}

/// Moves that follow each other are one, for the last place.
void Desktop::keep(QWidget& target, const QEvent& event) {
    constexpr std::size_t mostEvents = 1000;
    const bool isMove = event.type() == QEvent::MouseMove;
    if (isMove && !kept_.empty() && kept_.back().target == &target && kept_.back().event->type() == event.type())
        kept_.pop_back();
    if (kept_.size() < mostEvents) kept_.push_back({&target, std::unique_ptr<QEvent>(event.clone())});
}

void Desktop::giveKeptEvents() {
    for (KeptEvent& kept : std::exchange(kept_, {})) giveLater(std::move(kept));
}

void Desktop::giveLater(KeptEvent kept) {
    if (!kept.target) return;
    const auto give = [target = kept.target, event = std::shared_ptr<QEvent>(std::move(kept.event))] {
        if (event->type() == QEvent::Close)
            target->close();
        else if (isRelease(*event) || !isBlocked(*target))
            QCoreApplication::sendEvent(target, event.get());
    };
    QMetaObject::invokeMethod(kept.target, give, Qt::QueuedConnection);
}

bool Desktop::eventFilter(QObject* target, QEvent* event) {
    if (!target->isWidgetType()) return false;
    auto& widget = static_cast<QWidget&>(*target);
    return turns_.isComputing ? isHeldBack(widget, *event) : comesBehindLine(widget, *event);
}

/// True for what is done in a figure when a line that was typed before it has
/// not begun yet, as on a machine that is slow for a moment: it comes when the
/// line runs, which may wait for just that, or has run.
bool Desktop::comesBehindLine(QWidget& target, QEvent& event) {
    if (!isDoneByUser(event) || !isOfFigure(target) || isMenu(target)) return false;
    const auto isLineNext = [](const auto& console) { return console->console().isLineNext(); };
    if (std::none_of(consoles_.begin(), consoles_.end(), isLineNext)) return false;
    giveLater({&target, std::unique_ptr<QEvent>(event.clone())});
    // A press or a key that is ignored would go on to the parent.
    if (event.type() == QEvent::Close) event.ignore();
    return true;
}

/// True for an event that does not come through while something computes. Those
/// of figures come later, so that a button that is released then is not held
/// down for ever.
bool Desktop::isHeldBack(QWidget& target, QEvent& event) {
    const bool isKept = isOfFigure(target) && !isMenu(target);
    switch (event.type()) {
        case QEvent::Close:
            if (isMenu(target) || dynamic_cast<ConsoleWindow*>(&target)) return false;
            if (isKept) keep(target, event);
            event.ignore();
            return true;
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            if (isKept) keep(target, event);
            [[fallthrough]];
        case QEvent::ShortcutOverride:
        case QEvent::InputMethod:
            // The console keeps the keys.
            return !isMenu(target) && !dynamic_cast<ConsoleWidget*>(&target) &&
                   !dynamic_cast<ConsoleWindow*>(&target);
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
            if (isKept) keep(target, event);
            return !isMenu(target) && !qobject_cast<QScrollBar*>(&target);
        case QEvent::ContextMenu:
        case QEvent::Drop: return true;
        default: return false;
    }
}

// ---- the end

/// Figures stay when their console goes; from then on they lie over the primary
/// one. A window system is told so when a window is shown.
void Desktop::handOverFigures(const ConsoleWindow& console) {
    QWindow* const primary = consoles_.front()->windowHandle();
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (!dynamic_cast<FigureWindow*>(window) || !window->isVisible()) continue;
        if (window->windowHandle()->transientParent() != console.windowHandle()) continue;
        window->windowHandle()->setTransientParent(primary);
        window->hide();
        window->show();
    }
}

void Desktop::closed(ConsoleWindow& console) {
    if (!console.isSecondary()) {
        for (const auto& other : consoles_) other->hide();
        QCoreApplication::quit();
        return;
    }
    handOverFigures(console);
    // Not from within an event of its own.
    QMetaObject::invokeMethod(
        this,
        [this, gone = &console] {
            std::erase_if(consoles_, [gone](const auto& one) { return one.get() == gone; });
        },
        Qt::QueuedConnection);
}

void Desktop::interruptAll() {
    mustEndAll_ = true;
    runState().interrupt();
}

void Desktop::leave() {
    isLeaving_ = true;
    // What waits for an answer gets none.
    while (QWidget* box = QApplication::activeModalWidget()) {
        box->close();
        if (QApplication::activeModalWidget() == box) break;
    }
    if (running_.empty())
        QCoreApplication::quit();
    else
        interruptAll();
}

}  // namespace vorpen
