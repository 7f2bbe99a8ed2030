// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/figure_window.h"

#include <QtCore/QCoreApplication>
#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>
#include <QtGui/QScreen>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <algorithm>
#include <cmath>
#include <utility>

#include "base/errors.h"
#include "base/output.h"
#include "plot/figure_list.h"
#include "plot/interaction.h"
#include "window/encoding.h"
#include "window/figure_keys.h"
#include "window/menu_bar.h"

namespace vorpen {
namespace {

constexpr QPoint startPlace{400, 10};
constexpr QSize startSize{defaultClient.right, defaultClient.bottom};

/// A window system keeps a dialog over its owner, so that whoever types into the
/// console still sees the figure; otherwise it is a window like any other.
constexpr Qt::WindowFlags figureFlags = Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                                        Qt::WindowMinMaxButtonsHint | Qt::WindowCloseButtonHint;

Pixel pixelOf(const QMouseEvent& event) {
    const QPoint at = event.position().toPoint();
    return {at.x(), at.y()};
}

/// Where places on the screen are counted from.
QPoint screenOrigin() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? screen->availableGeometry().topLeft() : QPoint();
}

}  // namespace

bool PaintBudget::take() {
    if (clock_.isValid()) left_ += static_cast<double>(clock_.restart()) * perSecond / 1000;
    if (!clock_.isValid()) clock_.start();
    left_ = std::min(left_, most);
    if (left_ < 1) return false;
    --left_;
    return true;
}

// ---- The client area -----------------------------------------------------------------

class FigureWindow::Canvas final : public QWidget {
public:
    explicit Canvas(FigureWindow& window) : QWidget(&window), window_(window) {
        setObjectName("client");
        setMouseTracking(true);
        setFocusPolicy(Qt::StrongFocus);
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

protected:
    void paintEvent(QPaintEvent* event) override { window_.paintCanvas(*event); }
    void mousePressEvent(QMouseEvent* event) override { window_.mousePressed(*event); }
    void mouseReleaseEvent(QMouseEvent* event) override { window_.mouseReleased(*event); }
    void mouseDoubleClickEvent(QMouseEvent* event) override { window_.mouseDoubleClicked(*event); }
    void mouseMoveEvent(QMouseEvent* event) override { window_.mouseMoved(*event); }
    void keyPressEvent(QKeyEvent* event) override {
        if (!window_.keyPressed(*event)) QWidget::keyPressEvent(event);
    }
    void keyReleaseEvent(QKeyEvent* event) override {
        // A key that is held down is released and pressed again by repetition.
        if (!event->isAutoRepeat()) interaction().keyUp();
    }
    void focusOutEvent(QFocusEvent* event) override {
        // Its release will be told to another window.
        interaction().keyUp();
        QWidget::focusOutEvent(event);
    }

private:
    FigureWindow& window_;
};

// ---- The window -------------------------------------------------------------------------

FigureWindow::FigureWindow(Figure& figure, PainterSurface& picture, const QString& title, QWidget* owner)
    : QWidget(owner, figureFlags),
      figure_(&figure),
      picture_(&picture),
      canvas_(new Canvas(*this)),
      controls_(*canvas_, {[this](int id, int state) {
                               deliver([=, this] { interaction().controlPressed(*figure_, id, state); });
                           },
                           [this](int id, int state) {
                               if (PlotableButton* item = itemOf(id)) item->state = state;
                           },
                           [this](int id, const std::string& text) {
                               if (PlotableButton* item = itemOf(id)) item->text = text;
                           }}) {
    setWindowTitle(title);
    // Whoever types into the console goes on typing while a script plots.
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);
    canvas_->setFocus();
    move(startPlace + screenOrigin());
    resize(startSize);
    layOut();
}

FigureWindow::~FigureWindow() = default;

void FigureWindow::leaveFigure() {
    controls_.removeAll();
    figure_ = nullptr;
    picture_ = nullptr;
    hide();
    deleteLater();
}

bool FigureWindow::isListed() const {
    return figure_ != nullptr && figureList().find(figure_->number()) == figure_;
}

void FigureWindow::makeCurrent() {
    if (!isListed()) return;
    figureList().setCurrentFigure(figure_);
    if (makeEngineCurrent_) makeEngineCurrent_();
}

PlotableButton* FigureWindow::itemOf(int controlId) const {
    if (figure_ == nullptr) return nullptr;
    const auto control = figure_->controls.find(controlId);
    if (control == figure_->controls.end()) return nullptr;
    const ItemId id = ItemId::of(control->second);
    if (id.frame < 0 || id.frame >= figure_->frameCount()) return nullptr;
    return figure_->frame(id.frame).findItem<PlotableButton>(id.item);
}

bool FigureWindow::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate) makeCurrent();
    // The screen may be finer than the one before.
    if (event->type() == QEvent::ScreenChangeInternal) layOut();
    if (event->type() == QEvent::ApplicationPaletteChange) controls_.followTheme();
    return QWidget::event(event);
}

void FigureWindow::closeEvent(QCloseEvent* event) {
    if (figure_ == nullptr) return event->accept();
    // A figure that is still being made is not to be closed.
    if (!isListed()) return event->ignore();
    event->accept();
    figureList().closeFigure(figure_->number());
}

// ---- Size and menus ---------------------------------------------------------------------

QSize FigureWindow::clientSize() const { return canvas_->size(); }

int FigureWindow::heightAbove() const {
    if (!menus_) return 0;
    const int menus = menus_->heightForWidth(width());
    // Resolutions are quarters, as a rule.
    constexpr int mostPixels = 4;
    for (int above = menus; above < menus + mostPixels; ++above)
        if (const double dots = above * devicePixelRatioF(); dots == std::floor(dots)) return above;
    return menus;
}

void FigureWindow::layOut() {
    const int above = heightAbove();
    if (menus_) menus_->setGeometry(0, 0, width(), above);
    canvas_->setGeometry(0, above, std::max(width(), 1), std::max(height() - above, 1));
    fitPicture();
}

void FigureWindow::fitPicture() {
    const double resolution = canvas_->devicePixelRatioF();
    if (picture_ == nullptr) return;
    if (picture_->size() == canvas_->size() && picture_->resolution() == resolution) return;
    picture_->resize(canvas_->width(), canvas_->height(), resolution);
    // The new picture has to be filled even while painting is held back.
    const bool wasPaused = std::exchange(figure_->paused, false);
    figure_->resized();
    figure_->paused = wasPaused;
}

void FigureWindow::resizeEvent(QResizeEvent*) { layOut(); }

void FigureWindow::setMenus(const std::vector<Menu>& menus) {
    const QSize client = clientSize();
    if (menus_) {
        // Its own item may be what is being answered.
        menus_->hide();
        menus_->deleteLater();
        menus_ = nullptr;
    }
    if (!menus.empty()) {
        menus_ = new MenuBar(this, *canvas_);
        for (const Menu& menu : menus) {
            QMenu* const shown = menus_->addMenu(toQString(menu.heading));
            for (const MenuItem& item : menu.items) {
                QAction* const action = shown->addAction(toQString(item.label));
                QObject::connect(action, &QAction::triggered, this, [this, index = item.commandIndex] {
                    deliver([=, this] { interaction().menuChosen(*figure_, index); });
                });
            }
        }
        menus_->show();
    }
    // The client area keeps its size.
    const int above = heightAbove();
    resize(client.width(), client.height() + above);
    layOut();
}

void FigureWindow::bringToTop() {
    if (!isVisible()) show();
    // Every plot command asks for it; the window system is asked now and then.
    constexpr qint64 shortTime = 200;
    if (sinceRaised_.isValid() && !sinceRaised_.hasExpired(shortTime)) return;
    raise();
    sinceRaised_.start();
}

void FigureWindow::setScreenPlace(const PixelRect& place) {
    // Larger than all screens together is of no use, and a picture takes memory.
    const QSize largest = screen()->virtualSize().expandedTo(startSize);
    const QSize wanted = QSize(place.width(), place.height()) - (frameGeometry().size() - size());
    resize(wanted.boundedTo(largest).expandedTo({1, 1}));
    move(QPoint(place.left, place.top) + screenOrigin());
    show();
}

PixelRect FigureWindow::screenPlace() const {
    const QRect place = frameGeometry().translated(-screenOrigin());
    return {place.left(), place.top(), place.left() + place.width(), place.top() + place.height()};
}

// ---- Painting ------------------------------------------------------------------------------

void FigureWindow::paintCanvas(QPaintEvent& event) {
    QPainter painter(canvas_);
    if (picture_ == nullptr) return painter.fillRect(event.rect(), Qt::white);
    // A screen that has got another resolution is seen here at the latest.
    if (picture_->resolution() != canvas_->devicePixelRatioF())
        QMetaObject::invokeMethod(
            this, [this] { fitPicture(); }, Qt::QueuedConnection);
    // Dot for dot.
    const QRect dots = picture_->dotsOf(event.rect());
    painter.scale(1 / picture_->resolution(), 1 / picture_->resolution());
    painter.drawImage(dots.topLeft(), picture_->image(), dots);
    if (event.rect().contains(undrawn_)) undrawn_ = {};
}

void FigureWindow::expectAllFrames() { framesToCome_ = figure_ != nullptr ? figure_->frameCount() : 0; }

QRect FigureWindow::takeDrawn() {
    const QRect drawn = picture_->takeChanged();
    // Where pixels have no whole number of dots, the window library rounds the
    // edges of what it shows.
    const bool isWhole = picture_->resolution() == std::floor(picture_->resolution());
    return isWhole || drawn.isEmpty() ? drawn : drawn.adjusted(-1, -1, 1, 1) & canvas_->rect();
}

void FigureWindow::showDrawn() {
    if (picture_ == nullptr) return;
    const QRect drawn = takeDrawn();
    undrawn_ |= drawn;
    canvas_->update(drawn);
    if (framesToCome_ > 0 && --framesToCome_ > 0) return;
    // What moves with the mouse is shown as a whole; what a script draws is
    // shown at once, but for a frame that has been emptied for a new plot.
    const bool isPartOfEvent = delivering_ > 0 && !interaction().isCalling();
    const bool isEmptied = figure_->currentFrame().itemCount() <= 1;
    if (!isPartOfEvent && !isEmptied && budget_.take()) showNow();
}

void FigureWindow::showNow() {
    if (picture_ != nullptr) undrawn_ |= takeDrawn();
    const QRect now = std::exchange(undrawn_, QRect());
    if (!now.isEmpty()) canvas_->repaint(now);
}

// ---- Events --------------------------------------------------------------------------------

void FigureWindow::deliver(const std::function<void()>& event) {
    if (figure_ == nullptr) return;
    const QPointer<FigureWindow> self = this;
    ++delivering_;
    try {
        event();
    } catch (const PlainFailure& failure) {
        output().print("{r " + failure.message + "}", true, PrintMode::markup);
    } catch (const RuntimeError& error) {
        output().print("{r " + error.message + "}", true, PrintMode::markup);
    } catch (...) {
        output().print("{r error during mouse function}", true, PrintMode::markup);
    }
    if (self) --delivering_;
}

void FigureWindow::mousePressed(const QMouseEvent& event) {
    const Pixel at = pixelOf(event);
    // The window system may tell of the focus later.
    makeCurrent();
    if (event.button() == Qt::LeftButton) {
        deliver([at] { interaction().leftPress(at); });
    } else if (event.button() == Qt::RightButton) {
        deliver([at] {
            interaction().mouse.pixel = at;
            interaction().rightPress();
        });
    }
}

void FigureWindow::mouseReleased(const QMouseEvent& event) {
    if (event.button() == Qt::LeftButton)
        deliver([] { interaction().leftRelease(); });
    else if (event.button() == Qt::RightButton)
        deliver([] { interaction().rightRelease(); });
    showNow();
}

void FigureWindow::mouseDoubleClicked(const QMouseEvent& event) {
    makeCurrent();
    if (event.button() == Qt::LeftButton)
        deliver([] { interaction().doubleClick(); });
    else
        mousePressed(event);
}

void FigureWindow::mouseMoved(const QMouseEvent& event) {
    if (!isListed()) return;
    // The mouse may be over a figure that is not the current one; it is for as
    // long as the move is answered, and no longer.
    Figure* const current = figureList().currentFigure();
    const int number = current != nullptr ? current->number() : 0;
    const bool isOther = current != nullptr && current != figure_;
    if (isOther) figureList().setCurrentFigure(figure_);
    const Pixel at = pixelOf(event);
    const bool leftDown = event.buttons().testFlag(Qt::LeftButton);
    deliver([=] { interaction().mouseMove(at, leftDown); });
    if (isOther) figureList().setCurrentFigure(figureList().find(number));
}

bool FigureWindow::keyPressed(const QKeyEvent& event) {
    // An edit field passes the keys on that end a line.
    const bool isForField = qobject_cast<QLineEdit*>(QApplication::focusWidget()) != nullptr;
    if (isForField || event.modifiers().testFlag(Qt::AltModifier)) return false;
    const FigureKey key = figureKey(event);
    if (key.code != 0) deliver([&] { interaction().keyDown(key.code); });
    for (const char c : key.characters)
        deliver([c] { interaction().character(static_cast<unsigned char>(c)); });
    return key.code != 0 || !key.characters.empty();
}

// ---- The view -----------------------------------------------------------------------------

FigureWindowView::FigureWindowView(Figure& figure, const QString& title, QWidget* owner) {
    picture_.resize(startSize.width(), startSize.height());
    window_ = new FigureWindow(figure, picture_, title, owner);
}

FigureWindowView::~FigureWindowView() {
    // Behind the end of the application there are no windows to hide.
    if (window_ && QCoreApplication::instance() != nullptr) window_->leaveFigure();
}

PixelRect FigureWindowView::client() const {
    if (!window_) return defaultClient;
    const QSize size = window_->clientSize();
    return {0, 0, size.width(), size.height()};
}

void FigureWindowView::present(const PixelRect&) {
    if (window_) window_->showDrawn();
}

void FigureWindowView::erase() {
    picture_.erase();
    if (window_) window_->expectAllFrames();
}

void FigureWindowView::bringToTop() {
    if (window_) window_->bringToTop();
}

PixelRect FigureWindowView::screenPlace() const { return window_ ? window_->screenPlace() : defaultClient; }

void FigureWindowView::setScreenPlace(const PixelRect& place) {
    if (window_) window_->setScreenPlace(place);
}

void FigureWindowView::dispatchWaiting() {
    if (window_) window_->showNow();
}

void FigureWindowView::showControl(const PlotableButton& button, const PixelRect& place) {
    if (window_) window_->controls().show(button, place);
}

void FigureWindowView::removeControl(int controlId) {
    if (window_) window_->controls().remove(controlId);
}

void FigureWindowView::setMenus(const std::vector<Menu>& menus) {
    if (window_) window_->setMenus(menus);
}

}  // namespace vorpen
