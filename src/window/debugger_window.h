// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The window of the debugger: names and values in two columns, the source
// around the stop beside them, and three buttons. Enter steps, Escape closes.
//
// While it waits for a button, it alone is served; all other windows are
// painted and do nothing else, since a statement is in the middle of what they
// would change. Only a console may be told to close: it raises the interrupt,
// and the wait is over.

#include <QtCore/QRect>
#include <QtWidgets/QWidget>
#include <functional>
#include <memory>
#include <optional>

#include "engine/debugger.h"

class QEventLoop;

namespace vorpen {

class DebuggerWindow final : public DebuggerView {
public:
    /// The window of the console that it stands beside; may be null. It must
    /// live longer. `showOutput` brings what has been printed so far on view.
    explicit DebuggerWindow(QWidget* console, std::function<void()> showOutput = {});
    ~DebuggerWindow() override;
    DebuggerWindow(const DebuggerWindow&) = delete;
    DebuggerWindow& operator=(const DebuggerWindow&) = delete;

    bool open() override;
    void show(const DebuggerPage& page) override;
    DebuggerCommand waitForCommand() override;
    void hide() override;
    void destroy() override;

    /// The window while there is one.
    [[nodiscard]] QWidget* widget() const;

private:
    class Pane;

    void command(DebuggerCommand command);
    [[nodiscard]] QRect firstPlace() const;

    QWidget* console_;
    std::function<void()> showOutput_;
    std::unique_ptr<Pane> pane_;
    QRect lastPlace_;  ///< of a window that was closed
    QEventLoop* wait_ = nullptr;
    std::optional<DebuggerCommand> answer_;
};

}  // namespace vorpen
