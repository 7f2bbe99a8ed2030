// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/debugger_window.h"

#include <QtCore/QEventLoop>
#include <QtCore/QTimer>
#include <QtGui/QCloseEvent>
#include <QtGui/QGuiApplication>
#include <QtGui/QKeyEvent>
#include <QtGui/QScreen>
#include <QtGui/QTextBlock>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QVBoxLayout>
#include <algorithm>
#include <functional>

#include "base/interrupt.h"
#include "window/encoding.h"

namespace vorpen {
namespace {

/// The size and place of the window in units of its font: a quarter of the
/// mean width of a character by an eighth of a line's height.
constexpr QRect placeInUnits(400, 15, 380, 300);
constexpr int unitsInWidth = 4, unitsInHeight = 8;

constexpr QSize buttonSize(64, 26);
constexpr int gap = 8;

/// Of the window's width, what names and values get at first.
constexpr int sharesOfRows = 2, sharesOfSource = 3;
constexpr int widestScreen = 10000;

const QColor currentLineColour(0xFD, 0xFD, 0x96);

/// How often a wait looks for an interrupt, in milliseconds.
constexpr int interruptInterval = 50;

int unitsToPixels(int units, double pixels, int perCell) { return static_cast<int>(units * pixels / perCell + 0.5); }

QLabel* makeColumn() {
    auto* column = new QLabel;
    column->setTextFormat(Qt::PlainText);
    column->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    column->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return column;
}

bool isInput(QEvent::Type type) {
    switch (type) {
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::ShortcutOverride:
        case QEvent::Shortcut:
        case QEvent::InputMethod:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::Wheel:
        case QEvent::ContextMenu:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
        case QEvent::DragEnter:
        case QEvent::Drop:
        case QEvent::Close: return true;
        default: return false;
    }
}

/// Keeps what users do in other windows away while it lives.
class OthersWait final : public QObject {
public:
    explicit OthersWait(const QWidget& served) : served_(served) { QCoreApplication::instance()->installEventFilter(this); }

protected:
    bool eventFilter(QObject* target, QEvent* event) override {
        if (!isInput(event->type()) || target->isWindowType() || isServed(target)) return false;
        if (event->type() == QEvent::Close) {
            // A console's answer is the interrupt; the program's own wish to
            // close a window is not the user's.
            if (qobject_cast<QMainWindow*>(target) || !event->spontaneous()) return false;
            event->ignore();
        }
        return true;
    }

private:
    [[nodiscard]] bool isServed(const QObject* target) const {
        while (target && target != &served_) target = target->parent();
        return target != nullptr;
    }

    const QWidget& served_;
};

}  // namespace

// ---- what is in the window

class DebuggerWindow::Pane final : public QWidget {
public:
    explicit Pane(std::function<void(DebuggerCommand)> command) : command_(std::move(command)) {
        setWindowTitle("Breakpoint");
        setAttribute(Qt::WA_QuitOnClose, false);
        QFont face("Courier New");
        face.setFamilies({"Courier New", "Liberation Mono", "DejaVu Sans Mono", "monospace"});
        face.setStyleHint(QFont::Monospace);
        source_->setFont(face);
        source_->setReadOnly(true);
        source_->setLineWrapMode(QPlainTextEdit::NoWrap);

        auto* split = new QSplitter(Qt::Horizontal);
        split->addWidget(makeRows());
        split->addWidget(source_);
        split->setStretchFactor(0, sharesOfRows);
        split->setStretchFactor(1, sharesOfSource);
        // It scales what does not add up to its width.
        split->setSizes({sharesOfRows * widestScreen, sharesOfSource * widestScreen});
        split->setChildrenCollapsible(false);

        auto* all = new QVBoxLayout(this);
        all->setContentsMargins(gap, gap, gap, gap);
        all->addWidget(split, 1);
        all->addLayout(makeButtons());
    }

    void showPage(const DebuggerPage& page) {
        setWindowTitle(toQString(page.title));
        names_->setText(toQString(page.names()));
        values_->setText(toQString(page.values()));
        // The labels take part in the layout of an area that scrolls.
        rows_->adjustSize();
        source_->setPlainText(toQString(page.source.text()).replace("\r\n", "\n"));
        source_->setVisible(!page.source.lines.empty());
        markLine(page.source.currentRow);
        show();
        raise();
        activateWindow();
        step_->setFocus();
    }

protected:
    void keyPressEvent(QKeyEvent* event) override {
        switch (event->key()) {
            case Qt::Key_Return:
            case Qt::Key_Enter: command_(DebuggerCommand::step); break;
            case Qt::Key_Escape: command_(DebuggerCommand::close); break;
            default: QWidget::keyPressEvent(event);
        }
    }

    void closeEvent(QCloseEvent* event) override {
        // The debugger throws the window away.
        event->accept();
        command_(DebuggerCommand::close);
    }

private:
    QWidget* makeRows() {
        auto* columns = new QHBoxLayout(rows_);
        columns->setContentsMargins(gap, gap, gap, gap);
        columns->setSpacing(2 * gap);
        columns->addWidget(names_);
        columns->addWidget(values_, 1);
        auto* area = new QScrollArea;
        area->setWidget(rows_);
        area->setWidgetResizable(true);
        area->setFocusPolicy(Qt::NoFocus);
        return area;
    }

    QHBoxLayout* makeButtons() {
        auto* buttons = new QHBoxLayout;
        buttons->setSpacing(gap);
        buttons->addStretch(1);
        buttons->addWidget(makeButton("Halt", DebuggerCommand::halt));
        buttons->addWidget(step_ = makeButton("Step", DebuggerCommand::step));
        buttons->addWidget(makeButton("Cont", DebuggerCommand::proceed));
        return buttons;
    }

    QPushButton* makeButton(const QString& text, DebuggerCommand command) {
        auto* button = new QPushButton(text);
        // What a style takes for the least width is more than its text needs.
        const QSize needed(button->fontMetrics().horizontalAdvance(text) + 2 * gap,
                           button->minimumSizeHint().height());
        button->setFixedSize(buttonSize.expandedTo(needed));
        QObject::connect(button, &QPushButton::clicked, this, [this, command] { command_(command); });
        return button;
    }

    void markLine(int row) {
        QList<QTextEdit::ExtraSelection> marks;
        const QTextBlock block = source_->document()->findBlockByNumber(row);
        if (row >= 0 && block.isValid()) {
            QTextEdit::ExtraSelection mark;
            mark.cursor = QTextCursor(block);
            mark.format.setBackground(currentLineColour);
            mark.format.setForeground(Qt::black);
            mark.format.setProperty(QTextFormat::FullWidthSelection, true);
            marks.append(mark);
            // Of the whole block, so that its text gets the mark's colour, too.
            marks.append(mark);
            marks.back().cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
            source_->setTextCursor(mark.cursor);
            source_->centerCursor();
        }
        source_->setExtraSelections(marks);
    }

    std::function<void(DebuggerCommand)> command_;
    QWidget* rows_ = new QWidget;
    QLabel* names_ = makeColumn();
    QLabel* values_ = makeColumn();
    QPlainTextEdit* source_ = new QPlainTextEdit;
    QPushButton* step_ = nullptr;
};

// ---- the view

DebuggerWindow::DebuggerWindow(QWidget* console, std::function<void()> showOutput)
    : console_(console), showOutput_(std::move(showOutput)) {}

DebuggerWindow::~DebuggerWindow() = default;

QWidget* DebuggerWindow::widget() const { return pane_.get(); }

/// Beside the console, as far as the screen allows.
QRect DebuggerWindow::firstPlace() const {
    const QFontMetricsF metrics(pane_->font());
    const double width = metrics.averageCharWidth(), height = metrics.height();
    QRect place(unitsToPixels(placeInUnits.x(), width, unitsInWidth),
                unitsToPixels(placeInUnits.y(), height, unitsInHeight),
                unitsToPixels(placeInUnits.width(), width, unitsInWidth),
                unitsToPixels(placeInUnits.height(), height, unitsInHeight));
    if (console_) place.translate(console_->mapToGlobal(QPoint(0, 0)));
    const QScreen* screen = console_ ? console_->screen() : QGuiApplication::primaryScreen();
    if (!screen) return place;
    const QRect room = screen->availableGeometry();
    place.setSize(place.size().boundedTo(room.size()));
    place.moveLeft(std::clamp(place.left(), room.left(), room.right() + 1 - place.width()));
    place.moveTop(std::clamp(place.top(), room.top(), room.bottom() + 1 - place.height()));
    return place;
}

bool DebuggerWindow::open() {
    if (pane_) return true;
    pane_ = std::make_unique<Pane>([this](DebuggerCommand given) { command(given); });
    pane_->setGeometry(lastPlace_.isValid() ? lastPlace_ : firstPlace());
    return true;
}

void DebuggerWindow::show(const DebuggerPage& page) {
    if (showOutput_) showOutput_();
    pane_->showPage(page);
}

void DebuggerWindow::command(DebuggerCommand command) {
    if (!wait_) return reportIdleCommand(command);
    if (!answer_) answer_ = command;
    wait_->quit();
}

DebuggerCommand DebuggerWindow::waitForCommand() {
    QEventLoop loop;
    QTimer interrupt;
    QObject::connect(&interrupt, &QTimer::timeout, &loop, [&loop] {
        if (isInterrupted()) loop.quit();
    });
    interrupt.start(interruptInterval);
    answer_.reset();
    wait_ = &loop;
    {
        const OthersWait guard(*pane_);
        loop.exec();
    }
    wait_ = nullptr;
    // Without an answer the program is being ended.
    return answer_.value_or(DebuggerCommand::close);
}

void DebuggerWindow::hide() {
    if (pane_) pane_->hide();
}

void DebuggerWindow::destroy() {
    if (!pane_) return;
    lastPlace_ = pane_->geometry();
    pane_->hide();
    // It may be in the middle of an event of its own.
    pane_.release()->deleteLater();
}

}  // namespace vorpen
