// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The screen that figures open their windows on. It has to be made behind the
// application and to go before it; when it goes, all figures close.

#include <QtCore/QPointer>
#include <QtWidgets/QWidget>
#include <functional>

#include "plot/figure_view.h"

namespace vorpen {

class QtFigureDesktop final : public FigureDesktop {
public:
    /// Makes itself the desktop of figureList().
    QtFigureDesktop();
    ~QtFigureDesktop() override;
    QtFigureDesktop(const QtFigureDesktop&) = delete;
    QtFigureDesktop& operator=(const QtFigureDesktop&) = delete;

    /// The window of the primary console, with which figures go.
    void setConsole(QWidget* console) { console_ = console; }
    /// Who tells over which console a figure opens; null for the primary one.
    void setPlacer(std::function<QWidget*()> placer) { placer_ = std::move(placer); }
    /// Who tells, when a figure opens, how to make the engine that opens it the
    /// current one again.
    void setOpener(std::function<std::function<void()>()> opener) { opener_ = std::move(opener); }

    std::unique_ptr<FigureView> openWindow(Figure& figure, const std::string& title) override;
    [[nodiscard]] int screenWidth() const override;
    [[nodiscard]] int screenHeight() const override;
    [[nodiscard]] PixelRect consolePlace() const override;

private:
    void putOverConsole(QWidget& figure) const;

    QPointer<QWidget> console_;
    std::function<QWidget*()> placer_;
    std::function<std::function<void()>()> opener_;
};

}  // namespace vorpen
