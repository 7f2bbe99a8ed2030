// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The debugger of an engine. A breakpoint stops the run and shows the value of
// its statement, the locals of its function and the source around it; the user
// goes on, steps to the end of the next statement of a block, halts the run, or
// closes the debugger, after which the run passes all further breakpoints.
//
// This is its logic: what is shown, and what the answers mean. What shows it is
// a DebuggerView: a window of the desktop, a few lines at a terminal, a script
// in a test.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/host.h"
#include "eval/run_state.h"
#include "values/value.h"

namespace vorpen {

/// What the user answers to a stop.
enum class DebuggerCommand {
    close,    ///< no more stops in this run; the view is gone
    step,     ///< stop behind the next statement of a block
    proceed,  ///< go on to the next breakpoint
    halt,     ///< end the run
};

/// Lines of a source with the current one among them.
struct SourceExcerpt {
    std::vector<std::string> lines;
    int firstNumber = 1;  ///< of the first line
    int currentRow = -1;  ///< the line of the stop, from 0; -1 for none

    /// The lines, each ended by carriage return and line feed.
    [[nodiscard]] std::string text() const;
};

/// What a stop shows. Texts are in the program's encoding, without markup, and
/// have no line ends.
struct DebuggerPage {
    struct Row {
        std::string name, value;
    };
    std::string title;
    std::vector<Row> rows;
    SourceExcerpt source;  ///< no lines where there is none

    /// The names, and beside them the values, one line a row.
    [[nodiscard]] std::string names() const;
    [[nodiscard]] std::string values() const;
};

class DebuggerView {
public:
    virtual ~DebuggerView() = default;

    /// Makes what shows a stop, unless it is there; false when it cannot.
    virtual bool open() = 0;
    /// Shows a page, in front and ready for a command.
    virtual void show(const DebuggerPage& page) = 0;
    /// Waits for the user. A program that is told to end answers `close`.
    virtual DebuggerCommand waitForCommand() = 0;
    virtual void hide() = 0;
    /// Throws away what open() has made.
    virtual void destroy() = 0;

    /// Who hears of commands that come while nothing waits for one: what shows
    /// a step stays on view when the run has ended.
    void setIdleListener(std::function<void(DebuggerCommand)> listener) { idleListener_ = std::move(listener); }

protected:
    void reportIdleCommand(DebuggerCommand command) const {
        if (idleListener_) idleListener_(command);
    }

private:
    std::function<void(DebuggerCommand)> idleListener_;
};

class Debugger final : public BreakHandler {
public:
    explicit Debugger(Host& host) : host_(host) {}
    ~Debugger() override { setView(nullptr); }
    Debugger(const Debugger&) = delete;
    Debugger& operator=(const Debugger&) = delete;

    /// What shows the stops; lent. Without one each run says once that it goes
    /// on without stopping.
    void setView(DebuggerView* view);

    /// Breakpoints stop again.
    void beginRun();
    [[nodiscard]] bool isStepping() const { return stepping_; }
    [[nodiscard]] bool isWaiting() const { return isWaiting_; }

    /// Fails with "execution halted from debugger" when the user says so.
    void debugPause(int line, const Value* value, const UserFunc* function) override;

private:
    [[nodiscard]] bool openView();
    [[nodiscard]] DebuggerPage page(int line, const Value* value, const UserFunc* function) const;
    [[nodiscard]] DebuggerCommand ask();
    void act(DebuggerCommand command);
    void setStepping(bool on);

    Host& host_;
    DebuggerView* view_ = nullptr;
    bool breakpointsActive_ = true;
    bool stepping_ = false;
    bool isWaiting_ = false;
    bool hasSaidThatItGoesOn_ = false;
};

/// A value in a few words: a string as it stands; of an array of numbers the
/// shape, unless it is a scalar, and the first ten elements of its first row
/// with five significant digits; anything else as the console shows it.
/// Nothing for null.
[[nodiscard]] std::string summarise(const Value* value);

/// The lines of a script file from five before a line to ten behind it. A file
/// that cannot be read gives its name and "could not open file".
[[nodiscard]] SourceExcerpt showSource(const std::string& file, int line);

}  // namespace vorpen
