// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The client area of a console's window: the strip with the directory box and
// two buttons, the text, and the scroll bar. Text is drawn into a picture, from
// which the window is painted; so what was drawn stays, as the console expects.
// Its colours are its own and do not follow the desktop's.

#include <QtCore/QTimer>
#include <QtGui/QPixmap>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QWidget>
#include <functional>
#include <optional>

#include "console/gui_class.h"
#include "window/console_painter.h"

namespace vorpen {

/// What the client area leaves to its window.
struct ConsoleActions {
    std::function<void()> close, about, launch, interrupt;
    std::function<bool(bool toTop)> takeFocus;
};

/// The box of directories: when its list closes, the keyboard goes back to the
/// console.
class DirectoryBox final : public QComboBox {
public:
    using QComboBox::QComboBox;
    void setAfterClosing(std::function<void()> call) { afterClosing_ = std::move(call); }
    void hidePopup() override;

private:
    std::function<void()> afterClosing_;
};

class ConsoleWidget final : public QWidget, public ConsoleView {
public:
    ConsoleWidget(QWidget* parent, ConsoleActions actions);

    /// The console that is shown; it must come before the first event. Lent.
    void setConsole(GuiClass* console);

    /// What the directory box lists, and what it shows.
    void showDirectories(const std::vector<std::string>& recent, const std::string& current);

    [[nodiscard]] DirectoryBox& directoryBox() { return *directories_; }
    [[nodiscard]] QScrollBar& scrollBar() { return *scrollBar_; }
    [[nodiscard]] QPushButton& execButton() { return *exec_; }
    [[nodiscard]] QPushButton& againButton() { return *again_; }

    // ConsoleView
    void eraseBelow(int y) override;
    void drawText(int x, int y, std::string_view text, Colour colour) override;
    CellMetrics setFontSize(int pixels) override;
    void erase(const Rectangle& area) override;
    void drawLine(int x, int y, std::string_view markedUp, Colour background) override;
    bool scroll(const Rectangle& area, int pixels) override;
    void setScrollBar(const ScrollBarState& state) override;
    void invalidate() override;
    void showCaret(const Rectangle& place) override;
    void hideCaret() override;
    bool takeFocus(bool toTop) override;
    void post(int command) override;
    void clearClipboard() override;
    void closeWindow() override { actions_.close(); }
    void showAbout() override { actions_.about(); }
    void launchSecondary() override { actions_.launch(); }
    void interrupt() override { actions_.interrupt(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    [[nodiscard]] QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    /// Tab is typed.
    bool focusNextPrevChild(bool) override { return false; }

private:
    void makeStrip();
    void makeScrollBar();
    void scrollTo(std::int64_t position);
    [[nodiscard]] int textWidth() const { return scrollBar_->x(); }
    void fitPicture();
    void redraw(const QRect& area);
    void type(const QString& text, bool control = false);
    bool keyOfWindow(QKeyEvent* event);
    void blink();

    ConsoleActions actions_;
    GuiClass* console_ = nullptr;
    ConsolePainter painter_;
    QPixmap picture_;
    bool mustDraw_ = true;  ///< the picture is out of date
    std::optional<QRect> caret_;
    bool caretIsLit_ = true;
    QTimer blinking_;
    DirectoryBox* directories_ = nullptr;
    int currentDirectory_ = -1;  ///< its place in the box
    QPushButton* exec_ = nullptr;
    QPushButton* again_ = nullptr;
    QScrollBar* scrollBar_ = nullptr;
    int wheelRest_ = 0;  ///< of the turn that made no whole step yet
};

}  // namespace vorpen
