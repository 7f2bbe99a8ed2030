// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The window of one figure. Under the menus, if it has any, lies the client
// area, which shows a picture (painter_surface.h) and holds the controls. What
// the user does there goes on as pixels and key codes to interaction().
//
// A figure may be closed at any moment, also by a function of the user's that
// answers an event of this very window. The figure then owns nothing of the
// window but a view of it (FigureWindowView), and when that goes the window
// hides, forgets the figure and deletes itself when its events are over.

#include <QtCore/QElapsedTimer>
#include <QtCore/QPointer>
#include <QtWidgets/QWidget>
#include <functional>
#include <vector>

#include "plot/figure.h"
#include "window/figure_controls.h"
#include "window/painter_surface.h"

class QMenuBar;

namespace vorpen {

/// Limits how often a window is painted at once, without waiting for the event
/// loop: what a script draws appears while it runs, but a script that draws
/// item after item does not spend its time on painting.
class PaintBudget {
public:
    /// Whether the window may be painted now.
    bool take();

private:
    static constexpr double most = 20, perSecond = 60;
    double left_ = most;
    QElapsedTimer clock_;
};

class FigureWindow final : public QWidget {
public:
    /// A window with the usual place and size, over `owner` if there is one. It
    /// draws nothing itself: `picture` is what it shows.
    FigureWindow(Figure& figure, PainterSurface& picture, const QString& title, QWidget* owner);
    ~FigureWindow() override;

    /// How its engine becomes the current one, as it does with the figure.
    void setEngine(std::function<void()> makeCurrent) { makeEngineCurrent_ = std::move(makeCurrent); }
    /// The figure is gone.
    void leaveFigure();

    [[nodiscard]] QSize clientSize() const;
    /// Shows what has been drawn, soon or at once.
    void showDrawn();
    /// All of the figure is about to be drawn, so nothing is shown before that
    /// is done.
    void expectAllFrames();
    /// Shows at once what has been drawn.
    void showNow();
    void setScreenPlace(const PixelRect& place);
    [[nodiscard]] PixelRect screenPlace() const;
    void setMenus(const std::vector<Menu>& menus);
    /// Shows the window over others. The keyboard stays where it is.
    void bringToTop();
    [[nodiscard]] FigureControls& controls() { return controls_; }

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    class Canvas;

    /// What has been drawn since this was asked last.
    [[nodiscard]] QRect takeDrawn();
    void layOut();
    /// Of the menus, and of what is left free for the client area to begin with
    /// a whole dot.
    [[nodiscard]] int heightAbove() const;
    /// Gives the picture the size and the resolution of the client area, and
    /// draws the figure again if they have changed.
    void fitPicture();
    void paintCanvas(QPaintEvent& event);
    void mousePressed(const QMouseEvent& event);
    void mouseReleased(const QMouseEvent& event);
    void mouseDoubleClicked(const QMouseEvent& event);
    void mouseMoved(const QMouseEvent& event);
    bool keyPressed(const QKeyEvent& event);
    /// Passes an event on. Nothing is thrown from here.
    void deliver(const std::function<void()>& event);
    /// Whether the figure is one of the list, as it is from its making to its end.
    [[nodiscard]] bool isListed() const;
    void makeCurrent();
    [[nodiscard]] PlotableButton* itemOf(int controlId) const;

    Figure* figure_;
    PainterSurface* picture_;
    Canvas* canvas_;
    QPointer<QMenuBar> menus_;
    FigureControls controls_;
    PaintBudget budget_;
    std::function<void()> makeEngineCurrent_;
    QElapsedTimer sinceRaised_;
    QRect undrawn_;         ///< of the client area, drawn and not shown
    int framesToCome_ = 0;  ///< until all of the figure has been drawn
    int delivering_ = 0;    ///< events that are being answered
};

/// The window as its figure has it. It works without one, too: the window may
/// be destroyed with its owner or with the program.
class FigureWindowView final : public FigureView {
public:
    FigureWindowView(Figure& figure, const QString& title, QWidget* owner);
    ~FigureWindowView() override;

    [[nodiscard]] FigureWindow* window() const { return window_; }

    [[nodiscard]] PixelRect client() const override;
    DrawingSurface& surface() override { return picture_; }
    void present(const PixelRect& changed) override;
    void erase() override;
    void bringToTop() override;
    [[nodiscard]] PixelRect screenPlace() const override;
    void setScreenPlace(const PixelRect& place) override;
    void dispatchWaiting() override;
    void showControl(const PlotableButton& button, const PixelRect& place) override;
    void removeControl(int controlId) override;
    void setMenus(const std::vector<Menu>& menus) override;

private:
    PainterSurface picture_;
    QPointer<FigureWindow> window_;
};

}  // namespace vorpen
