// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The program with windows: its consoles, of which the first is the primary
// one, and what they share. What runs in a console computes, or waits for the
// user. While it waits, all windows are as they always are, and another console
// may run something of its own; the first goes on when that has ended. While
// it computes, the window system gets a moment now and then, in which windows
// are painted and Escape is heard, and whatever would start something waits or
// is dropped.
//
// Whoever wants the program or a window to end while something runs raises the
// interrupt. The run unwinds, with all that waits inside it, and then windows
// close.

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtWidgets/QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "console/gui_class.h"
#include "window/service_clock.h"

class QSocketNotifier;

namespace vorpen {

class ConsoleWindow;

class Desktop final : public QObject {
public:
    /// `home` is the program's directory; without one it is chosen.
    explicit Desktop(std::optional<std::string> home = std::nullopt);
    ~Desktop() override;

    [[nodiscard]] const std::optional<std::string>& home() const { return home_; }

    /// Opens a console with an engine of its own; the first one is the primary,
    /// a further one has the directories of the one it is opened from. Null,
    /// after a message box, when there can be none.
    ConsoleWindow* openConsole(const ConsoleWindow* from = nullptr);
    [[nodiscard]] const std::vector<std::unique_ptr<ConsoleWindow>>& consoles() const { return consoles_; }

    [[nodiscard]] const ConsoleTurns& turns() const { return turns_; }
    /// Called by a console around each run. Runs may be inside each other.
    void beginRun(ConsoleWindow& console);
    void endRun();
    /// The console whose run computes or waits now, null when nothing runs.
    [[nodiscard]] ConsoleWindow* runningConsole() const {
        return running_.empty() ? nullptr : running_.back();
    }

    /// What makes the engine that runs now the current one again, as long as
    /// its console is there.
    [[nodiscard]] std::function<void()> returnToRun() const;

    /// Called when a run that waits has let all events through.
    void noteEventsServed() { sinceServed_.start(); }
    /// Gives the window system its moment while something computes.
    void serveWhileBusy();

    /// A console was closed. The end of the primary one is that of the program.
    void closed(ConsoleWindow& console);
    /// Ends all that runs.
    void interruptAll();
    /// Ends the program without asking anyone, the session saved.
    void leave();
    [[nodiscard]] bool isLeaving() const { return isLeaving_; }
    /// Saves the session where the program cannot come to its end.
    static void saveNow();

protected:
    bool eventFilter(QObject* target, QEvent* event) override;

private:
    /// What the user did in a figure while that could not be heard.
    struct KeptEvent {
        QPointer<QWidget> target;
        std::unique_ptr<QEvent> event;
    };

    void listenToSignals();
    void handOverFigures(const ConsoleWindow& console);
    void afterRun();
    void keep(QWidget& target, const QEvent& event);
    /// Gives kept events to the window system again, in their order.
    void giveKeptEvents();
    static void giveLater(KeptEvent kept);
    [[nodiscard]] bool isHeldBack(QWidget& target, QEvent& event);
    [[nodiscard]] bool comesBehindLine(QWidget& target, QEvent& event);

    std::optional<std::string> home_;
    std::vector<std::unique_ptr<ConsoleWindow>> consoles_;
    ConsoleTurns turns_;
    std::vector<ConsoleWindow*> running_;  ///< the innermost last
    QElapsedTimer sinceServed_;
    std::vector<KeptEvent> kept_;
    bool isLeaving_ = false;
    bool mustEndAll_ = false;
    std::unique_ptr<QSocketNotifier> signals_;
    ServiceClock clock_;
};

}  // namespace vorpen
