// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/console_widget.h"

#include <QtGui/QClipboard>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QFrame>
#include <QtWidgets/QToolTip>
#include <algorithm>
#include <cmath>

#include "plot/interaction.h"
#include "window/encoding.h"

namespace vorpen {
namespace {

QRect toQRect(const Rectangle& r) { return {r.x, r.y, r.width, r.height}; }

/// Keys that type nothing, as the editor knows them.
int editorKey(int key) {
    switch (key) {
        case Qt::Key_End: return keyEnd;
        case Qt::Key_Home: return keyHome;
        case Qt::Key_Left: return keyLeft;
        case Qt::Key_Right: return keyRight;
        case Qt::Key_Up: return keyUp;
        case Qt::Key_Down: return keyDown;
        case Qt::Key_Delete: return keyDelete;
        case Qt::Key_F5: return keyF5;
        case Qt::Key_F9: return keyF9;
        default: return 0;
    }
}

/// The character that a key types whatever the keyboard's layout; 0 for none.
int fixedCharacter(int key, bool control) {
    switch (key) {
        case Qt::Key_Return:
        case Qt::Key_Enter: return control ? '\n' : '\r';
        case Qt::Key_Backspace: return '\b';
        case Qt::Key_Tab:
        case Qt::Key_Backtab: return '\t';
        case Qt::Key_Escape: return 27;
        default: break;
    }
    if (!control) return 0;
    if (key >= Qt::Key_A && key <= Qt::Key_Z) return key - Qt::Key_A + 1;
    if (key == Qt::Key_BracketRight) return 29;
    return 0;
}

/// What fits into the box, with the end of a long path.
QString shortened(const QString& path, int characters) {
    if (path.size() <= characters) return path;
    return QChar(0x2026) + path.right(std::max(characters - 1, 1));
}

constexpr int wheelStep = 120;  // what window systems call one step
constexpr int linesPerStep = 3;

}  // namespace

void DirectoryBox::hidePopup() {
    QComboBox::hidePopup();
    if (afterClosing_) afterClosing_();
}

ConsoleWidget::ConsoleWidget(QWidget* parent, ConsoleActions actions)
    : QWidget(parent), actions_(std::move(actions)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_InputMethodEnabled);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    makeStrip();
    makeScrollBar();
    QObject::connect(&blinking_, &QTimer::timeout, this, [this] { blink(); });
}

void ConsoleWidget::makeStrip() {
    auto* strip = new QFrame(this);
    strip->setObjectName("strip");
    strip->setAutoFillBackground(true);
    strip->setGeometry(0, 0, width(), stripHeight);
    strip->setFocusPolicy(Qt::NoFocus);

    directories_ = new DirectoryBox(strip);
    QFont face;
    face.setFamilies({"Courier New", "Liberation Mono", "monospace"});
    face.setStyleHint(QFont::TypeWriter);
    face.setBold(true);
    face.setPointSize(10);
    directories_->setFont(face);
    // With its list closed the box is as high as the strip.
    directories_->setGeometry(directoryBoxPlace.x, directoryBoxPlace.y, directoryBoxPlace.width, stripHeight);
    directories_->setFocusPolicy(Qt::NoFocus);
    directories_->setAfterClosing([this] {
        if (console_) console_->setFocus();
    });
    QObject::connect(directories_, &QComboBox::activated, this, [this](int index) {
        // It shows the new one when that has become the current one.
        directories_->setCurrentIndex(currentDirectory_);
        console_->chooseDirectory(fromQString(directories_->itemData(index).toString()));
    });

    const auto button = [&](const char* text, const Rectangle& place, int id) {
        auto* made = new QPushButton(text, strip);
        made->setGeometry(toQRect(place));
        made->setFocusPolicy(Qt::NoFocus);
        QObject::connect(made, &QPushButton::clicked, this, [this, id] { console_->choose(id); });
        return made;
    };
    exec_ = button("Exec", execButtonPlace, COMMAND_EXEC_BUTTON);
    again_ = button("Again", againButtonPlace, COMMAND_AGAIN_BUTTON);
    exec_->setToolTip("Run the text on the clipboard (F9)");
    again_->setToolTip("Run the last line again");
}

void ConsoleWidget::makeScrollBar() {
    scrollBar_ = new QScrollBar(Qt::Vertical, this);
    scrollBar_->setFocusPolicy(Qt::NoFocus);
    scrollBar_->setCursor(Qt::ArrowCursor);
    QObject::connect(scrollBar_, &QAbstractSlider::actionTriggered, this, [this](int action) {
        switch (action) {
            case QAbstractSlider::SliderSingleStepSub: console_->onVScroll(ScrollAction::lineUp); break;
            case QAbstractSlider::SliderSingleStepAdd: console_->onVScroll(ScrollAction::lineDown); break;
            case QAbstractSlider::SliderMove:
                console_->onVScroll(ScrollAction::thumbTrack, scrollBar_->sliderPosition());
                break;
            default: scrollTo(scrollBar_->sliderPosition()); break;
        }
    });
}

void ConsoleWidget::setConsole(GuiClass* console) {
    console_ = console;
    if (console_) console_->resize(textWidth(), height());
}

void ConsoleWidget::showDirectories(const std::vector<std::string>& recent, const std::string& current) {
    const int characters =
        boxCharacters(QFontMetrics(directories_->font()).horizontalAdvance(QLatin1String(boxSampleText)));
    directories_->clear();
    for (const std::string& path : recent) {
        const QString shown = toQString(path);
        directories_->addItem(shortened(shown, characters), shown);
        directories_->setItemData(directories_->count() - 1, shown, Qt::ToolTipRole);
        if (path == current) directories_->setCurrentIndex(directories_->count() - 1);
    }
    currentDirectory_ = directories_->currentIndex();
    directories_->setToolTip(toQString(current));
}

// ---- drawing

/// The picture has the size of the client area, in pixels of the screen.
void ConsoleWidget::fitPicture() {
    const qreal ratio = devicePixelRatioF();
    const QSize wanted = (QSizeF(size()) * ratio).toSize().expandedTo({1, 1});
    if (picture_.size() == wanted && picture_.devicePixelRatio() == ratio) return;
    picture_ = QPixmap(wanted);
    picture_.setDevicePixelRatio(ratio);
    picture_.fill(Qt::white);
    mustDraw_ = true;
}

void ConsoleWidget::redraw(const QRect& area) { update(area); }

void ConsoleWidget::eraseBelow(int y) { erase({0, y, textWidth(), std::max(height() - y, 0)}); }

void ConsoleWidget::erase(const Rectangle& area) {
    fitPicture();
    QPainter(&picture_).fillRect(toQRect(area), Qt::white);
    redraw(toQRect(area));
}

void ConsoleWidget::drawText(int x, int y, std::string_view text, Colour colour) {
    fitPicture();
    QPainter painter(&picture_);
    painter_.drawPlain(painter, x, y, text, colour, textWidth());
    redraw({0, y, textWidth(), painter_.metrics().lineHeight});
}

void ConsoleWidget::drawLine(int x, int y, std::string_view markedUp, Colour background) {
    fitPicture();
    QPainter painter(&picture_);
    painter_.drawMarkedUp(painter, x, y, markedUp, background, textWidth());
    const int height = painter_.metrics().lineHeight;
    // Raised and lowered text reaches beyond its line.
    redraw({0, y - height / 2, textWidth(), 2 * height});
}

bool ConsoleWidget::scroll(const Rectangle& area, int pixels) {
    fitPicture();
    const qreal ratio = picture_.devicePixelRatio();
    const qreal exact = pixels * ratio;
    const auto steps = static_cast<int>(std::lround(exact));
    if (mustDraw_ || exact != steps || area.y * ratio != std::round(area.y * ratio)) return false;
    const QRectF scaled(area.x * ratio, area.y * ratio, area.width * ratio, area.height * ratio);
    picture_.scroll(0, steps, scaled.toRect());
    const int exposed = std::min(std::abs(pixels), area.height);
    erase({area.x, pixels > 0 ? area.y : area.y + area.height - exposed, area.width, exposed});
    redraw(toQRect(area));
    return true;
}

void ConsoleWidget::invalidate() {
    mustDraw_ = true;
    update();
}

void ConsoleWidget::paintEvent(QPaintEvent* event) {
    fitPicture();
    if (std::exchange(mustDraw_, false) && console_) console_->onPaint();
    QPainter painter(this);
    painter.drawPixmap(0, 0, picture_);
    if (caret_ && caretIsLit_ && caret_->intersects(event->rect())) painter.fillRect(*caret_, Qt::black);
}

void ConsoleWidget::resizeEvent(QResizeEvent*) {
    if (auto* strip = findChild<QFrame*>("strip", Qt::FindDirectChildrenOnly))
        strip->resize(width(), stripHeight);
    const int barWidth = scrollBar_->sizeHint().width();
    scrollBar_->setGeometry(std::max(width() - barWidth, 0), stripHeight, barWidth,
                            std::max(height() - stripHeight, 0));
    if (console_) console_->resize(textWidth(), height());
}

CellMetrics ConsoleWidget::setFontSize(int pixels) {
    painter_.setSize(pixels);
    return painter_.metrics();
}

// ---- caret

void ConsoleWidget::showCaret(const Rectangle& place) {
    const QRect box(place.x, place.y + 1, std::max(place.width, 1), std::max(place.height, 1));
    if (caret_) update(*caret_);
    caret_ = box;
    caretIsLit_ = true;
    const int period = QApplication::cursorFlashTime();
    if (period > 0 && hasFocus()) blinking_.start(period / 2);
    update(box);
    updateMicroFocus();
}

void ConsoleWidget::hideCaret() {
    blinking_.stop();
    if (caret_) update(*caret_);
    caret_.reset();
}

void ConsoleWidget::blink() {
    caretIsLit_ = !caretIsLit_;
    if (caret_) update(*caret_);
}

// ---- scroll bar and focus

void ConsoleWidget::setScrollBar(const ScrollBarState& state) {
    constexpr std::int64_t most = std::numeric_limits<int>::max() / 2;
    const std::int64_t last = std::max<std::int64_t>(state.maximum - state.page, 0);
    const QSignalBlocker quiet(scrollBar_);
    scrollBar_->setRange(0,
                         static_cast<int>(std::clamp<std::int64_t>(std::max(last, state.position), 0, most)));
    scrollBar_->setPageStep(state.page);
    scrollBar_->setValue(static_cast<int>(std::clamp<std::int64_t>(state.position, 0, most)));
}

/// Scrolls to where the thumb would be put.
void ConsoleWidget::scrollTo(std::int64_t position) {
    const std::int64_t last = scrollBar_->maximum();
    console_->onVScroll(ScrollAction::thumbPosition, std::clamp<std::int64_t>(position, 0, last));
}

bool ConsoleWidget::takeFocus(bool toTop) {
    setFocus(Qt::OtherFocusReason);
    return actions_.takeFocus(toTop);
}

void ConsoleWidget::post(int command) {
    QMetaObject::invokeMethod(
        this, [this, command] { console_->command(command); }, Qt::QueuedConnection);
}

void ConsoleWidget::clearClipboard() { QGuiApplication::clipboard()->clear(); }

void ConsoleWidget::focusInEvent(QFocusEvent*) {
    if (caret_) showCaret({caret_->x(), caret_->y() - 1, caret_->width(), caret_->height()});
}

void ConsoleWidget::focusOutEvent(QFocusEvent*) {
    // A caret that stands still is where typing would go.
    blinking_.stop();
    caretIsLit_ = true;
    if (caret_) update(*caret_);
}

// ---- keys

void ConsoleWidget::type(const QString& text, bool control) {
    for (const char c : fromQString(text))
        console_->onKey(KeyKind::character, static_cast<unsigned char>(c), control);
}

/// Keys that mean something to the window and not to the editor.
bool ConsoleWidget::keyOfWindow(QKeyEvent* event) {
    const bool control = event->modifiers() & Qt::ControlModifier;
    const ScrollState& state = console_->scrollState();
    switch (event->key()) {
        case Qt::Key_PageUp: scrollTo(state.position - std::max(state.rows - 1, 1)); return true;
        case Qt::Key_PageDown: scrollTo(state.position + std::max(state.rows - 1, 1)); return true;
        case Qt::Key_F6: directories_->showPopup(); return true;
        case Qt::Key_Space:
            if (control) console_->completeLine();
            return control;
        case Qt::Key_Insert:
            if (control) console_->command(COMMAND_COPY);
            if (event->modifiers() & Qt::ShiftModifier) console_->command(COMMAND_PASTE);
            return true;
        case Qt::Key_Pause:
        case Qt::Key_Cancel: console_->command(COMMAND_ABORT); return true;
        case Qt::Key_Plus:
        case Qt::Key_Equal:
            if (control) console_->command(COMMAND_ZOOM_IN);
            return control;
        case Qt::Key_Minus:
            if (control) console_->command(COMMAND_ZOOM_OUT);
            return control;
        default: return false;
    }
}

void ConsoleWidget::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    if (event->modifiers() & Qt::AltModifier) {
        if (key == Qt::Key_Question || key == Qt::Key_Slash)
            console_->command(COMMAND_ABOUT_KEY);
        else
            event->ignore();
        return;
    }
    const bool control = event->modifiers() & Qt::ControlModifier;
    if (keyOfWindow(event)) return;
    if (const int code = editorKey(key)) {
        console_->onKey(KeyKind::down, code, control);
        return;
    }
    if (const int code = fixedCharacter(key, control)) {
        console_->onKey(KeyKind::character, code, control);
        return;
    }
    const QString text = event->text();
    // Some keyboards have a key of its own for a new line.
    if (text == "\n" && !control) {
        console_->onKey(KeyKind::character, '\r');
        return;
    }
    if (text.isEmpty() || !text[0].isPrint()) {
        event->ignore();
        return;
    }
    type(text, control);
}

void ConsoleWidget::inputMethodEvent(QInputMethodEvent* event) {
    type(event->commitString());
    event->accept();
}

QVariant ConsoleWidget::inputMethodQuery(Qt::InputMethodQuery query) const {
    if (query == Qt::ImEnabled) return true;
    if (query == Qt::ImCursorRectangle && caret_) return *caret_;
    return QWidget::inputMethodQuery(query);
}

// ---- mouse

void ConsoleWidget::mousePressEvent(QMouseEvent* event) {
    const QPoint at = event->position().toPoint();
    if (event->button() == Qt::LeftButton) {
        console_->onLDown(at.x(), at.y());
        // A script that waits for a click takes one in the console too.
        ++interaction().mouse.leftPresses;
    } else if (event->button() == Qt::MiddleButton) {
        const QString text = QGuiApplication::clipboard()->text(QClipboard::Selection);
        if (!text.isEmpty()) console_->paste(fromQString(text));
    }
}

void ConsoleWidget::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) console_->onLUp();
}

void ConsoleWidget::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) console_->onLDouble();
}

void ConsoleWidget::mouseMoveEvent(QMouseEvent* event) {
    const QPoint at = event->position().toPoint();
    if (event->buttons() & Qt::LeftButton)
        console_->onMouseMove(at.x(), at.y());
    else
        setCursor(console_->isHot(at.x(), at.y()) ? Qt::PointingHandCursor : Qt::ArrowCursor);
}

void ConsoleWidget::wheelEvent(QWheelEvent* event) {
    const bool zooms = event->modifiers() & Qt::ControlModifier;
    const int unit = zooms ? wheelStep : wheelStep / linesPerStep;
    wheelRest_ += event->angleDelta().y();
    const int steps = wheelRest_ / unit;
    wheelRest_ -= steps * unit;
    if (!zooms) {
        console_->onWheel(steps);
    } else {
        for (int i = 0; i < std::min(std::abs(steps), 100); ++i)
            console_->command(steps > 0 ? COMMAND_ZOOM_IN : COMMAND_ZOOM_OUT);
    }
    event->accept();
}

}  // namespace vorpen
