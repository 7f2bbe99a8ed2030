// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The program with windows: its consoles, of which the first is the primary
// one, and what they share. There is one run at a time, in whatever console.
// While it computes, the window system is served now and then, so that windows
// are painted and Escape is heard; what would start something else waits.
//
// Whoever wants the program to end while something runs raises the interrupt.
// The run unwinds, with all that waits inside it, and then windows close.

#include <QtCore/QObject>
#include <memory>
#include <string>
#include <vector>

#include "console/gui_class.h"

class QSocketNotifier;

namespace vorpen {

class ConsoleWindow;

class Desktop final : public QObject {
public:
    Desktop();
    ~Desktop() override;

    /// Opens a console with an engine of its own; the first one is the
    /// primary.
    ConsoleWindow& openConsole();
    [[nodiscard]] ConsoleWindow* primary() const { return consoles_.empty() ? nullptr : consoles_.front().get(); }
    [[nodiscard]] const std::vector<std::unique_ptr<ConsoleWindow>>& consoles() const { return consoles_; }

    [[nodiscard]] ConsoleRun& run() { return run_; }
    /// Called by a console around each run.
    void beginRun(ConsoleWindow& console);
    void endRun();
    [[nodiscard]] ConsoleWindow* runningConsole() const { return running_; }

    /// Lets waiting events of the window system through while something
    /// computes: painting, and what asks for an end.
    void serveWhileBusy();

    /// A console was closed. The end of the primary one is that of the program.
    void closed(ConsoleWindow& console);
    /// Ends the program without asking anyone, the session saved.
    void leave();
    [[nodiscard]] bool isLeaving() const { return isLeaving_; }

protected:
    bool eventFilter(QObject* target, QEvent* event) override;

private:
    void listenToSignals();

    std::vector<std::unique_ptr<ConsoleWindow>> consoles_;
    ConsoleRun run_;
    ConsoleWindow* running_ = nullptr;
    bool isServing_ = false;
    bool isLeaving_ = false;
    std::unique_ptr<QSocketNotifier> signals_;
};

}  // namespace vorpen
