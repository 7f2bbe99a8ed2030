// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The line that the user types, under the text of the console: a prompt with
// the number of the command, the line with its caret, and the recall of former
// lines. It takes key codes and works on strings and columns. Whoever shows it,
// a window or a terminal, hands the keys in and draws what `drawPrompt` and
// `drawLine` say; so every rule of it can be tested without either.
//
// Keys come as a window system sends them: a key going down, and the character
// that it types. A key that types nothing (an arrow) has only the former, and a
// character needs only the latter. The Control key is no part of a message, so
// it is told before with `setControl`.
//
// Columns count from the left edge. The prompt begins at column 0 and the line
// one blank behind it, at `promptColumns`.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "console/command_history.h"
#include "console/markup.h"

namespace vorpen {

enum class KeyKind { down, character };

/// Codes of keys that go down.
enum KeyCode : int { keyEnd = 35, keyHome, keyLeft, keyUp, keyRight, keyDown, keyDelete = 46, keyF5 = 116, keyF9 = 120 };

/// Commands of the console window that keys of the line stand for.
enum class LineCommand { paste = 106, copy = 107, f5 = 116, runClipboard = 120 };

/// The metrics of the font, in pixels; on a terminal all are 1.
struct CellMetrics {
    int charWidth = 1;
    int lineHeight = 1;
};

struct Rectangle {
    int x, y, width, height;
    bool operator==(const Rectangle&) const = default;
};

/// Where the line is drawn.
class LineSurface {
public:
    virtual ~LineSurface() = default;
    /// Erases everything from a height down.
    virtual void eraseBelow(int y) = 0;
    virtual void drawText(int x, int y, std::string_view text, Colour colour) = 0;
};

/// A stretch of text in one colour, at an offset in it.
struct ColouredPiece {
    std::size_t offset;
    std::size_t length;
    Colour colour;
    bool operator==(const ColouredPiece&) const = default;
};

inline constexpr Colour promptColour = 0x006400;
inline constexpr Colour lineColour = 0x640000;
inline constexpr Colour delimitedColour = 0x008200;  ///< quoted text, and brackets
inline constexpr Colour matchColour = 0x0000AA;      ///< the bracket that matches

/// Cuts a text at quotes and round brackets: what they enclose, and they
/// themselves, have a colour of their own. From a quote to the same quote,
/// from a round bracket to the next one of either kind; one that is never
/// closed colours the rest.
[[nodiscard]] std::vector<ColouredPiece> colourPieces(std::string_view text, Colour plain);

/// The position of the bracket that matches the one at `position`; `count`
/// becomes the number of opening brackets that were met. -1 where there is
/// none, and the negative of the place where the brackets do not fit each
/// other. Quotes are not considered.
int matchBracket(std::string_view line, int position, int& count);

class CommandLine {
public:
    /// What `onKey` answers for a line that is finished.
    static constexpr int finished = 2;

    /// Recalls from a history that someone else keeps, and adds to it.
    explicit CommandLine(CommandHistory& history) : history_(history) {}
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// Hears of the keys that stand for commands of the window.
    void setCommandSink(std::function<void(LineCommand)> sink) { commandSink_ = std::move(sink); }

    /// Whether the Control key is down.
    void setControl(bool down) { control_ = down; }
    /// Takes a key. Answers `finished` when the line is finished; it stays
    /// until it is taken. Any key code is in order.
    int onKey(KeyKind kind, int key, int repeat = 1);
    /// Inserts text at the caret. Line ends in it are dropped, unless the text
    /// begins with one.
    void paste(std::string_view text);

    [[nodiscard]] const std::string& line() const { return line_; }
    /// The caret's column in the line.
    [[nodiscard]] int caret() const { return caret_; }
    /// Replaces the line; the caret goes to its end.
    void setLine(std::string_view text);
    /// The line, which is empty afterwards.
    std::string takeLine();
    /// Moves the caret to a column, as near as the line allows.
    void setCaret(int column);
    /// What the console shows of the finished line, marked up.
    [[nodiscard]] std::string takeEchoLine() const;

    [[nodiscard]] int commandNumber() const { return commandNumber_; }
    /// To be called when a line has run.
    void countCommand() { ++commandNumber_; }
    /// Without a prompt the line begins at column 0.
    void setPromptVisible(bool visible) { promptVisible_ = visible; }
    [[nodiscard]] bool promptVisible() const { return promptVisible_; }
    [[nodiscard]] int promptColumns() const { return promptVisible_ ? promptColumns_ : 0; }
    [[nodiscard]] const std::string& prompt() const { return prompt_; }
    /// The prompt for the present number.
    void updatePrompt();

    void setFont(CellMetrics metrics) { metrics_ = metrics; }
    void setPaneTop(int y) { paneTop_ = y; }
    /// The height of the line below the top of the pane.
    void setLineY(int y) { lineY_ = y; }
    [[nodiscard]] int lineY() const { return lineY_; }
    /// Moves the line up where it would lie below the bottom of the client area.
    void keepAbove(int clientBottom);

    /// Erases from the line down and draws the prompt.
    void drawPrompt(LineSurface& surface);
    /// Draws the line, with one blank behind it over a character that was
    /// deleted, and the bracket that matches the one before the caret.
    void drawLine(LineSurface& surface) const;
    [[nodiscard]] Rectangle caretBox() const;
    /// The position in the line of the bracket to be lit up, or -1.
    [[nodiscard]] int litBracket() const;

    [[nodiscard]] KeyKind lastMessage() const { return lastMessage_; }
    [[nodiscard]] int lastKey() const { return lastKey_; }

private:
    void takeCharacter(int key);
    void takeControlCharacter(int key);
    void insert(char c);
    void wrapRightSide();
    void moveLeft();
    void moveRight();
    void recallOlder();
    void showRecalled(const std::string& answer);
    void command(LineCommand what) const {
        if (commandSink_) commandSink_(what);
    }
    [[nodiscard]] int length() const { return static_cast<int>(line_.size()); }
    [[nodiscard]] int xOfColumn(int column) const { return column * metrics_.charWidth + 1; }
    [[nodiscard]] int y() const { return paneTop_ + lineY_; }

    CommandHistory& history_;
    std::function<void(LineCommand)> commandSink_;
    std::string line_;
    std::string prompt_ = "1>";
    int promptColumns_ = 3;
    int lineY_ = 0;
    int paneTop_ = 24;
    int caret_ = 0;
    CellMetrics metrics_;
    int commandNumber_ = 1;
    bool promptVisible_ = true;
    bool control_ = false;
    KeyKind lastMessage_ = KeyKind::character;
    int lastKey_ = 0;
};

}  // namespace vorpen
