// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/gui_class.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace vorpen {
namespace {

constexpr int escapeKey = 27;

/// Outside of these sizes nothing can be read, or nothing fits.
constexpr double smallestFont = 4, largestFont = 400;

/// Fewer columns than this are no reason to wrap: nothing could be read.
constexpr int leastWrapWidth = 20;

/// A key that got stuck while something runs must not fill the memory.
constexpr std::size_t mostKeptKeys = 100000, mostKeptLines = 1000;

/// A name as a word of a line. Most stand as they are; marks that end a word or
/// begin a comment need quotes.
std::string asWord(const std::string& name) {
    if (name.find_first_of(";#") == std::string::npos) return name;
    const char quote = name.find('"') == std::string::npos ? '"' : '\'';
    return quote + name + quote;
}

int asInt(std::int64_t value) {
    return static_cast<int>(
        std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

}  // namespace

/// Draws the input line so that its caret is in sight: what would stand left
/// of it is left out.
class GuiClass::ShiftedSurface final : public LineSurface {
public:
    ShiftedSurface(LineSurface& surface, int left, int shift, int charWidth)
        : surface_(surface), left_(left), shift_(shift), charWidth_(charWidth) {}

    void eraseBelow(int y) override { surface_.eraseBelow(y); }
    void drawText(int x, int y, std::string_view text, Colour colour) override {
        const std::int64_t shifted = std::int64_t{x} - std::int64_t{shift_} * charWidth_;
        const std::int64_t hidden = shifted < left_ ? (left_ - shifted + charWidth_ - 1) / charWidth_ : 0;
        if (hidden >= static_cast<std::int64_t>(text.size())) return;
        surface_.drawText(asInt(shifted + hidden * charWidth_), y,
                          text.substr(static_cast<std::size_t>(hidden)), colour);
    }

private:
    LineSurface& surface_;
    int left_, shift_, charWidth_;
};

GuiClass::GuiClass(ConsoleText& text, CommandHistory& history, ConsoleView& view, Host& host,
                   const ConsoleTurns& turns, InputRunner runInput)
    : text_(text), view_(view), host_(host), turns_(turns), runInput_(std::move(runInput)), line_(history) {
    line_.setCommandSink([this](LineCommand what) { command(static_cast<int>(what)); });
    line_.setPaneTop(stripHeight);
    line_.updatePrompt();
    setFontSize(initialFontSize);
}

// ---- size and font

void GuiClass::setFontSize(double size) {
    if (!(size >= smallestFont && size <= largestFont)) return;
    fontSize_ = size;
    const CellMetrics metrics = view_.setFontSize(static_cast<int>(size + 0.5));
    scroll_.charWidth = std::max(metrics.charWidth, 1);
    scroll_.lineHeight = std::max(metrics.lineHeight, 1);
    line_.setFont({scroll_.charWidth, scroll_.lineHeight});
    resize(clientWidth_, fullHeight_);
}

void GuiClass::resize(int width, int height) {
    const bool showedEnd = scroll_.position >= scroll_.endPosition(scroll_.lineCount);
    clientWidth_ = width;
    fullHeight_ = height;
    clientHeight_ = usableHeight(height, scroll_.lineHeight);
    scroll_.resize(clientWidth_, clientHeight_);
    fitConsole();
    if (showedEnd) scroll_.position = scroll_.endPosition(totalLines());
    view_.invalidate();
}

/// The width of the text is that of the pane, once there is one.
void GuiClass::fitConsole() {
    if (clientWidth_ > 0) text_.setWrapWidth(std::max(scroll_.columns(), leastWrapWidth));
}

// ---- painting

std::int64_t GuiClass::totalLines() const {
    return text_.currentLine() + (text_.currentText().empty() ? 0 : 1);
}

std::pair<std::int64_t, std::size_t> GuiClass::printed() const {
    return {text_.currentLine(), text_.currentText().size()};
}

void GuiClass::updateScrollBar() { view_.setScrollBar({scroll_.lineCount, scroll_.rows, scroll_.position}); }

void GuiClass::drawRow(std::int64_t row) {
    const std::int64_t line = scroll_.position + row;
    const std::string& text = text_.getLine(line);
    if (text.empty()) return;
    const Colour background = selection_.isHighlighted(line) ? selectionColour : backgroundColour;
    view_.drawLine(1, asInt(stripHeight + scroll_.yOfRow(row)), text, background);
}

/// Draws the text and answers the y below its last line.
int GuiClass::repaint(bool scrollToEnd) {
    const std::int64_t total = totalLines();
    if (scrollToEnd) scroll_.position = scroll_.endPosition(total);
    scroll_.lineCount = total;
    updateScrollBar();
    view_.erase({0, stripHeight, clientWidth_, std::max(fullHeight_ - stripHeight, 0)});
    // A row beyond those that fit is left out: the input line would cut it.
    const std::int64_t rows = std::max<std::int64_t>(total - scroll_.position, 0);
    for (std::int64_t row = 0; row < std::min<std::int64_t>(rows, scroll_.rows); ++row) drawRow(row);
    shown_ = printed();
    return asInt(scroll_.yOfRow(std::min<std::int64_t>(rows, scroll_.rows + 1)));
}

void GuiClass::placeInputLine() {
    line_.setLineY(textEnd_);
    line_.keepAbove(clientHeight_);
}

void GuiClass::onPaint() {
    textEnd_ = repaint(false);
    placeInputLine();
    redrawPrompt();
    redrawLine();
}

void GuiClass::redrawPrompt() {
    if (line_.promptVisible())
        line_.drawPrompt(view_);
    else
        view_.eraseBelow(stripHeight + line_.lineY());
}

/// Columns of the input line that can be seen at once, with the caret.
int GuiClass::shownColumns() const { return std::max(scroll_.columns() - line_.promptColumns() - 1, 1); }

void GuiClass::redrawLine() {
    if (isBusy() && !isReading()) {
        view_.hideCaret();
        return;
    }
    const int former = lineShift_;
    lineShift_ = std::clamp(lineShift_, std::max(line_.caret() - shownColumns(), 0), line_.caret());
    if (lineShift_ != former) redrawPrompt();
    const int left = line_.promptColumns() * scroll_.charWidth + 1;
    view_.erase({left, stripHeight + line_.lineY(), std::max(clientWidth_ - left, 0), scroll_.lineHeight});
    ShiftedSurface surface(view_, left, lineShift_, scroll_.charWidth);
    line_.drawLine(surface);
    view_.showCaret(caretPlace());
}

Rectangle GuiClass::caretPlace() const {
    Rectangle place = line_.caretBox();
    place.x -= lineShift_ * scroll_.charWidth;
    return place;
}

void GuiClass::showEnd() {
    textEnd_ = repaint(true);
    placeInputLine();
}

void GuiClass::showOutput() {
    if (shown_ == printed()) return;
    showEnd();
    redrawPrompt();
    redrawLine();
}

// ---- scrolling

/// Moves the text down by lines; answers the rows that came into sight.
RowRange GuiClass::scrollBy(std::int64_t n) {
    const int pixels = asInt(n * scroll_.lineHeight);
    scroll_.position -= n;
    updateScrollBar();
    const int top = scroll_.rect.y, bottom = scroll_.rect.y + scroll_.rect.height;
    // Below the last whole row there is nothing, before and after; the input
    // line, which reaches into the pane there, does not move.
    const int belowRows = asInt(stripHeight + scroll_.yOfRow(scroll_.rows));
    view_.eraseBelow(belowRows);
    if (!view_.scroll(scroll_.rect, pixels)) return {0, scroll_.rows + 1};
    view_.eraseBelow(belowRows);
    return pixels > 0 ? exposedRows(scroll_, top, top + pixels)
                      : exposedRows(scroll_, bottom + pixels, bottom);
}

void GuiClass::onVScroll(ScrollAction action, std::int64_t track) {
    const std::int64_t delta = scrollDelta(scroll_, action, track);
    const std::int64_t wanted = scroll_.position - delta;
    if (delta == 0 || wanted < 0 || wanted >= scroll_.lineCount) {
        view_.invalidate();
        return;
    }
    if (std::abs(delta) >= scroll_.rows) {
        scroll_.position = wanted;
        updateScrollBar();
        view_.invalidate();
        return;
    }
    const RowRange exposed = scrollBy(delta);
    // The input line has to follow a text that ends in sight.
    const bool endsInSight =
        scroll_.endPosition(totalLines()) <= scroll_.position || textEnd_ <= scroll_.rect.height;
    if (exposed.count() != 1 || endsInSight) {
        view_.invalidate();
        return;
    }
    drawRow(exposed.first);
    redrawPrompt();
    redrawLine();
}

void GuiClass::onWheel(int lines) {
    for (int i = 0; i < std::min(std::abs(lines), 1000); ++i)
        onVScroll(lines > 0 ? ScrollAction::lineUp : ScrollAction::lineDown);
}

// ---- mouse

bool GuiClass::isOnInputLine(int y) const {
    const int top = stripHeight + line_.lineY();
    return y >= top && y <= top + scroll_.lineHeight;
}

void GuiClass::placeCaretByMouse(int x) {
    line_.setCaret(x / scroll_.charWidth - line_.promptColumns() + lineShift_);
    redrawLine();
}

void GuiClass::onLDown(int x, int y) {
    leftIsDown_ = true;
    pressedHotWord_ = false;
    if (!view_.takeFocus(true))
        text_.print("?bug: SetFocus failed in GuiClass::onLDown", true, PrintMode::markup);
    if (isOnInputLine(y)) {
        selection_.clearHotWord();
        placeCaretByMouse(x);
        return;
    }
    selection_.click(text_, scroll_.columnAt(x), scroll_.lineAt(y));
    pressedHotWord_ = !selection_.hotWord().empty();
    if (!pressedHotWord_) view_.invalidate();
}

void GuiClass::onMouseMove(int, int y) {
    if (leftIsDown_ && !pressedHotWord_ && selection_.dragTo(text_, scroll_.lineAt(y))) view_.invalidate();
}

void GuiClass::onLUp() {
    leftIsDown_ = false;
    if (selection_.hotWord().empty()) return;
    const std::string word = selection_.hotWord();
    // One press asks once.
    selection_.clearHotWord();
    if (isBusy()) return;
    deliverKey(KeyKind::character, escapeKey, false, 1);
    typeText("?" + word);
}

void GuiClass::onLDouble() {
    // The first press of a double click on a word has asked for help.
    if (pressedHotWord_ || selection_.selectedCommand().empty() || isBusy()) return;
    line_.setLine(selection_.selectedCommand());
    pressEnter();
}

bool GuiClass::isHot(int x, int y) const {
    return y >= stripHeight && wordAt(text_.getLine(scroll_.lineAt(y)), scroll_.columnAt(x)).style == '=';
}

// ---- keys

void GuiClass::onKey(KeyKind kind, int key, bool control, int repeat) {
    if (reading_ == Reading::character && !turns_.isComputing) {
        if (kind == KeyKind::character && !readCharacter_) readCharacter_ = key & 0xFF;
        return;
    }
    if (isRunning_ && !isReading() && key == escapeKey) {
        if (kind == KeyKind::character) view_.interrupt();
        return;
    }
    if (editorIsOpen())
        deliverKey(kind, key, control, repeat);
    else if (keptKeys_.size() < mostKeptKeys)
        keptKeys_.push_back({kind, key, control, repeat});
}

void GuiClass::deliverKey(KeyKind kind, int key, bool control, int repeat) {
    line_.setControl(control);
    if (line_.onKey(kind, key, repeat) == CommandLine::finished)
        finishLine();
    else if (editorIsOpen())
        redrawLine();
}

void GuiClass::finishLine() {
    view_.hideCaret();
    lineShift_ = 0;
    if (reading_ == Reading::line) {
        readLine_ = line_.takeLine();
        return;
    }
    text_.print(line_.takeEchoLine(), true, PrintMode::markup);
    linePosted_ = true;
    view_.post(COMMAND_EXECUTE);
}

void GuiClass::giveKeptKeys() {
    if (!turns_.isComputing && std::exchange(postWasDropped_, false)) view_.post(COMMAND_EXECUTE);
    while (!keptKeys_.empty() && editorIsOpen()) {
        const Key key = keptKeys_.front();
        keptKeys_.pop_front();
        deliverKey(key.kind, key.key, key.control, key.repeat);
    }
    while (!keptLines_.empty() && !isBusy()) {
        const std::string line = std::move(keptLines_.front());
        keptLines_.pop_front();
        typeLine(line);
    }
}

void GuiClass::typeText(std::string_view text) {
    if (!isBusy())
        typeLine(text);
    else if (keptLines_.size() < mostKeptLines)
        keptLines_.emplace_back(text);
}

void GuiClass::typeLine(std::string_view text) {
    if (!line_.line().empty()) setAside_ = line_.takeLine();
    for (const char c : text) deliverKey(KeyKind::character, static_cast<unsigned char>(c), false, 1);
    pressEnter();
}

void GuiClass::paste(std::string_view text) {
    if (!editorIsOpen()) return;
    line_.paste(text);
    redrawLine();
}

void GuiClass::completeLine() {
    if (!completer_ || !editorIsOpen() || isReading()) return;
    const std::vector<std::string> candidates = complete(line_, completer_);
    if (!candidates.empty()) {
        // What marks a row as verbatim counts when it is printed.
        constexpr int markColumns = 2;
        for (const std::string& row : candidateRows(candidates, text_.wrapWidth() - markColumns))
            text_.print(row, true, PrintMode::verbatim);
        showEnd();
        redrawPrompt();
    }
    redrawLine();
}

// ---- commands

void GuiClass::command(int id) {
    const CommandRow& row = commandRow(id);
    switch (row.action) {
        case CommandAction::nothing: break;
        case CommandAction::typeText:
            if (!isBusy()) typeText(row.text);
            break;
        case CommandAction::paste:
            if (const auto text = host_.clipboardText()) paste(*text);
            break;
        case CommandAction::copy:
            if (const std::string copied = selection_.copySelection(text_); !copied.empty())
                host_.setClipboardText(copied);
            break;
        case CommandAction::execute:
            if (isRunning_ || turns_.isComputing) {
                postWasDropped_ = linePosted_;
                break;
            }
            // From the menu it is what Enter does; from Enter itself, the run.
            if (linePosted_)
                runLine('>');
            else
                pressEnter();
            break;
        case CommandAction::runClipboard: runLine('c'); break;
        case CommandAction::execClipboard:
            if (host_.clipboardText()) runLine('c');
            setFocus();
            break;
        case CommandAction::again:
            if (isBusy()) break;
            deliverKey(KeyKind::down, keyUp, false, 1);
            pressEnter();
            setFocus();
            break;
        case CommandAction::clearClipboard: view_.clearClipboard(); break;
        case CommandAction::abort:
            if (isRunning_) view_.interrupt();
            break;
        case CommandAction::zoom: setFontSize(fontSize_ * row.factor); break;
        case CommandAction::close: view_.closeWindow(); break;
        case CommandAction::launch:
            if (!isBusy()) view_.launchSecondary();
            break;
        case CommandAction::about:
            if (!isBusy()) view_.showAbout();
            break;
    }
}

void GuiClass::choose(int id) {
    if (isLineNext())
        view_.post(id);
    else
        command(id);
}

void GuiClass::chooseDirectory(const std::string& directory) {
    if (!isBusy()) typeText("cd " + asWord(directory));
    setFocus();
}

void GuiClass::setFocus() {
    if (!view_.takeFocus(false)) text_.print("?bug: GuiClass::setFocus failed", true, PrintMode::markup);
}

// ---- running

void GuiClass::runLine(char mode) {
    if (isRunning_ || turns_.isComputing || (linePosted_ && mode != '>')) return;
    linePosted_ = false;
    const std::string line = line_.takeLine();
    lineShift_ = 0;
    view_.hideCaret();
    line_.setPromptVisible(false);
    fitConsole();
    isRunning_ = true;
    runInput_(line, mode);
    isRunning_ = false;
    line_.setPromptVisible(true);
    line_.takeLine();
    line_.countCommand();
    if (setAside_) line_.setLine(*std::exchange(setAside_, std::nullopt));
    showEnd();
    redrawPrompt();
    redrawLine();
    setFocus();
    giveKeptKeys();
}

void GuiClass::runAside(const std::function<void()>& call) {
    if (isRunning_) return call();
    struct Aside {
        explicit Aside(GuiClass& console) : console(console) { console.isRunning_ = true; }
        ~Aside() {
            console.isRunning_ = false;
            console.showOutput();
            // The caret may have been hidden.
            console.redrawLine();
        }
        Aside(const Aside&) = delete;
        Aside& operator=(const Aside&) = delete;
        GuiClass& console;
    };
    const Aside aside(*this);
    call();
}

std::optional<std::string> GuiClass::readLine(const std::function<bool()>& serveEvent) {
    line_.takeLine();
    lineShift_ = 0;
    readLine_.reset();
    reading_ = Reading::line;
    line_.setPromptVisible(false);
    showEnd();
    redrawPrompt();
    redrawLine();
    giveKeptKeys();
    while (!readLine_ && serveEvent()) {
    }
    reading_ = Reading::nothing;
    line_.takeLine();
    view_.hideCaret();
    return std::exchange(readLine_, std::nullopt);
}

std::optional<int> GuiClass::readCharacter(const std::function<bool()>& serveEvent) {
    readCharacter_.reset();
    reading_ = Reading::character;
    line_.takeLine();
    showEnd();
    redrawPrompt();
    redrawLine();
    while (!keptKeys_.empty() && !readCharacter_) {
        const Key key = keptKeys_.front();
        keptKeys_.pop_front();
        onKey(key.kind, key.key, key.control);
    }
    while (!readCharacter_ && serveEvent()) {
    }
    reading_ = Reading::nothing;
    view_.hideCaret();
    return std::exchange(readCharacter_, std::nullopt);
}

}  // namespace vorpen
