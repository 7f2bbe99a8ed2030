// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The window of one engine: menus around the client area. It joins the console
// (console/gui_class.h), the engine and its host.

#include <QtWidgets/QMainWindow>
#include <memory>
#include <string>

#include "console/gui_class.h"
#include "engine/calc.h"
#include "window/console_widget.h"
#include "window/debugger_window.h"
#include "window/window_host.h"

namespace vorpen {

class Desktop;

class ConsoleWindow final : public QMainWindow {
public:
    /// Makes an engine of its own: a secondary one beside a running one, or
    /// the primary one without.
    ConsoleWindow(Desktop& desktop, const Calc* running);
    ~ConsoleWindow() override;

    /// False when the engine could not be made; the window is of no use then.
    [[nodiscard]] bool isComplete() const { return calc_ != nullptr; }
    [[nodiscard]] Calc& calc() const { return *calc_; }
    [[nodiscard]] GuiClass& console() { return *console_; }
    [[nodiscard]] ConsoleWidget& client() { return *client_; }
    [[nodiscard]] Desktop& desktop() { return desktop_; }
    [[nodiscard]] bool isSecondary() const { return isSecondary_; }

    /// Changes to the directory of a script and runs it, as if both had been
    /// typed.
    void runScript(const std::string& path);

    /// The window is to close when what runs in it has ended.
    [[nodiscard]] bool mustClose() const { return mustClose_; }
    /// What runs in it is to end.
    [[nodiscard]] bool mustEndRun() const { return mustEndRun_; }

    /// Shows that something computes, until the run ends.
    void showBusy();
    void endBusy();

    void showAbout();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void makeMenus();
    void joinEngine(Calc& calc);
    void runInput(const std::string& line, char mode);
    /// Runs a function that answers an event of a figure.
    void runForEvent(const std::function<void()>& call);
    void interrupt();
    bool takeFocus(bool toTop);
    void showDirectories(const Dir& paths);
    [[nodiscard]] QString plainTitle() const;

    Desktop& desktop_;
    const bool isSecondary_;
    WindowHost host_;
    ConsoleWidget* client_;
    std::unique_ptr<DebuggerWindow> debugger_;
    std::unique_ptr<Calc> calc_;
    std::unique_ptr<GuiClass> console_;
    bool mustClose_ = false;
    bool mustEndRun_ = false;
    bool isShownBusy_ = false;
};

}  // namespace vorpen
