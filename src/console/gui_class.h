// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The console of one engine, as a person sees and uses it: the text, the input
// line below it, the mouse, the scroll bar, the commands of menus and buttons.
// It takes pixels, key codes and numbers of commands, and draws through
// ConsoleView, so it runs without a window; a window is a thin thing around
// it.
//
// A line that is typed is shown at once and runs a moment later, when the
// window hands back the command that was posted for it. While something runs,
// the editor is closed: keys are kept and come to it when the run is over,
// Escape asks for its end, and other input that would start something is
// dropped. What runs may itself ask for a character or a line; then the keys go
// there. Other consoles are closed too while the run computes, and open while
// it waits.

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/host.h"
#include "console/candidates.h"
#include "console/command_line.h"
#include "console/console_commands.h"
#include "console/console_layout.h"
#include "console/console_selection.h"
#include "console/console_text.h"

namespace vorpen {

struct ScrollBarState {
    std::int64_t maximum = 0;  ///< of the range, which begins at 0
    int page = 1;
    std::int64_t position = 0;
    bool operator==(const ScrollBarState&) const = default;
};

/// What the console asks of the window that shows it. What is drawn stays
/// until it is drawn over. Coordinates are pixels of the client area.
class ConsoleView : public LineSurface {
public:
    /// The metrics of the font at a size.
    virtual CellMetrics setFontSize(int pixels) = 0;
    /// Fills with the background.
    virtual void erase(const Rectangle& area) = 0;
    /// Draws a marked-up line over a colour.
    virtual void drawLine(int x, int y, std::string_view markedUp, Colour background) = 0;
    /// Moves what is drawn in an area down by so many pixels, and erases what
    /// that exposes. False when the whole has to be drawn instead.
    virtual bool scroll(const Rectangle& area, int pixels) = 0;
    virtual void setScrollBar(const ScrollBarState& state) = 0;
    /// Asks for onPaint.
    virtual void invalidate() = 0;
    virtual void showCaret(const Rectangle& place) = 0;
    virtual void hideCaret() = 0;
    /// Gives the window the keyboard's focus, and brings it to the top if that
    /// is wanted; false when it is refused.
    virtual bool takeFocus(bool toTop) = 0;
    /// Sends a command that comes back through `command` when the present
    /// event has been served.
    virtual void post(int command) = 0;
    virtual void clearClipboard() = 0;
    virtual void closeWindow() = 0;
    virtual void showAbout() = 0;
    virtual void launchSecondary() = 0;
    /// Asks what runs to end.
    virtual void interrupt() = 0;
};

/// What the consoles of a program share.
struct ConsoleTurns {
    /// Something computes and lets no more than the window system have a
    /// moment: no console may start anything.
    bool isComputing = false;
};

class GuiClass {
public:
    static constexpr double initialFontSize = 20;
    static constexpr Colour backgroundColour = 0xFFFFFF, selectionColour = 0x96FDFD;

    /// Runs a piece of input: a typed line '>', or the clipboard 'c'.
    using InputRunner = std::function<void(const std::string& line, char mode)>;

    /// Lends everything.
    GuiClass(ConsoleText& text, CommandHistory& history, ConsoleView& view, Host& host,
             const ConsoleTurns& turns, InputRunner runInput);
    GuiClass(const GuiClass&) = delete;
    GuiClass& operator=(const GuiClass&) = delete;

    void setCompleter(Completer completer) { completer_ = std::move(completer); }

    // ---- What the window hears.

    /// The size of the client area.
    void resize(int width, int height);
    void onPaint();
    /// A key; any code is in order.
    void onKey(KeyKind kind, int key, bool control = false, int repeat = 1);
    void onLDown(int x, int y);
    void onMouseMove(int x, int y);
    void onLUp();
    void onLDouble();
    void onVScroll(ScrollAction action, std::int64_t track = 0);
    /// By whole lines, upward for positive ones.
    void onWheel(int lines);
    /// The number of a command from a menu, a key, a button or `post`.
    void command(int id);
    /// The same for what somebody picked: a line that was typed before it and is
    /// still to run comes first.
    void choose(int id);
    /// Completes the word before the caret; of several the choice is printed.
    void completeLine();
    /// A directory was chosen in the box.
    void chooseDirectory(const std::string& directory);

    /// Makes the input line ready for typing; failure is told in the console.
    void setFocus();

    /// Feeds a text as typed characters and a carriage return. What the user
    /// was typing comes back when it has run.
    void typeText(std::string_view text);
    /// Takes a text into the input line, as from the clipboard.
    void paste(std::string_view text);

    /// Runs what no line asked for, such as a function that answers an event.
    /// The editor keeps what is typed in it, and is closed for so long.
    void runAside(const std::function<void()>& call);

    // ---- What a running program asks for. The function serves one event, and
    // answers false when no more can come.

    std::optional<std::string> readLine(const std::function<bool()>& serveEvent);
    std::optional<int> readCharacter(const std::function<bool()>& serveEvent);
    /// Shows what has been printed since the last repaint.
    void showOutput();
    /// Gives the editor the keys that came while something ran.
    void giveKeptKeys();

    // ---- What there is.

    [[nodiscard]] const ScrollState& scrollState() const { return scroll_; }
    [[nodiscard]] const ConsoleSelection& selection() const { return selection_; }
    [[nodiscard]] const CommandLine& line() const { return line_; }
    [[nodiscard]] double fontSize() const { return fontSize_; }
    /// The y below the last line of text.
    [[nodiscard]] int textEnd() const { return textEnd_; }
    [[nodiscard]] Rectangle caretPlace() const;
    /// Whether a word at a place can be clicked for help.
    [[nodiscard]] bool isHot(int x, int y) const;
    /// A piece of input of this console runs.
    [[nodiscard]] bool isRunning() const { return isRunning_; }
    /// Nothing can be started: a line is on its way, or something runs.
    [[nodiscard]] bool isBusy() const { return isRunning_ || linePosted_ || turns_.isComputing; }
    /// A line that was typed is about to run, and nothing stands in its way.
    [[nodiscard]] bool isLineNext() const { return linePosted_ && !isRunning_ && !turns_.isComputing; }
    /// What runs reads keys itself.
    [[nodiscard]] bool isReading() const { return reading_ != Reading::nothing; }

private:
    struct Key {
        KeyKind kind;
        int key;
        bool control;
        int repeat;
    };
    enum class Reading { nothing, line, character };
    class ShiftedSurface;

    [[nodiscard]] bool editorIsOpen() const {
        return reading_ == Reading::line ? !turns_.isComputing : !isBusy();
    }
    void deliverKey(KeyKind kind, int key, bool control, int repeat);
    void finishLine();
    void pressEnter() { deliverKey(KeyKind::character, '\r', false, 1); }
    void typeLine(std::string_view text);

    void runLine(char mode);
    void fitConsole();
    void setFontSize(double size);
    void placeCaretByMouse(int x);
    [[nodiscard]] bool isOnInputLine(int y) const;

    int repaint(bool scrollToEnd);
    RowRange scrollBy(std::int64_t n);
    void drawRow(std::int64_t row);
    void placeInputLine();
    void redrawPrompt();
    void redrawLine();
    void updateScrollBar();
    void showEnd();
    [[nodiscard]] std::int64_t totalLines() const;
    [[nodiscard]] int shownColumns() const;
    [[nodiscard]] std::pair<std::int64_t, std::size_t> printed() const;

    ConsoleText& text_;
    ConsoleView& view_;
    Host& host_;
    const ConsoleTurns& turns_;
    InputRunner runInput_;
    Completer completer_;
    CommandLine line_;
    ScrollState scroll_;
    ConsoleSelection selection_;
    double fontSize_ = initialFontSize;
    int clientWidth_ = 0, clientHeight_ = 0;  ///< as they are used
    int fullHeight_ = 0;
    int textEnd_ = 1;
    int lineShift_ = 0;  ///< columns of a long line that are out of sight on the left
    bool pressedHotWord_ = false;
    bool leftIsDown_ = false;

    bool isRunning_ = false;
    bool linePosted_ = false;
    bool postWasDropped_ = false;  ///< its command came while another console computed
    std::deque<Key> keptKeys_;
    std::deque<std::string> keptLines_;    ///< typed by menus of figures
    std::optional<std::string> setAside_;  ///< what the user was typing
    Reading reading_ = Reading::nothing;
    std::optional<std::string> readLine_;
    std::optional<int> readCharacter_;
    std::pair<std::int64_t, std::size_t> shown_{-1, 0};  ///< what was printed at the last repaint
};

}  // namespace vorpen
