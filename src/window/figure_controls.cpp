// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/figure_controls.h"

#include <QtWidgets/QApplication>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QRadioButton>
#include <algorithm>

#include "window/encoding.h"

namespace vorpen {
namespace {

/// No widget is larger or further away; a system counts its places in 16 bits.
constexpr int farthest = 32767;
constexpr int largestPointSize = 500;

/// A box that is off, on, and neither, in this order.
class ThreeStateBox final : public QCheckBox {
public:
    using QCheckBox::QCheckBox;

protected:
    void nextCheckState() override {
        switch (checkState()) {
            case Qt::Unchecked: return setCheckState(Qt::Checked);
            case Qt::Checked: return setCheckState(Qt::PartiallyChecked);
            case Qt::PartiallyChecked: return setCheckState(Qt::Unchecked);
        }
    }
};

/// One of a group. A click turns it on and never off, also when it is alone.
class RadioButton final : public QRadioButton {
public:
    using QRadioButton::QRadioButton;

protected:
    void nextCheckState() override { setChecked(true); }
};

/// 0 off, 1 on, 2 neither. What cannot be on is off.
int stateOf(const QWidget& widget) {
    if (const auto* box = dynamic_cast<const ThreeStateBox*>(&widget))
        return box->checkState() == Qt::PartiallyChecked ? 2 : box->isChecked() ? 1 : 0;
    const auto* button = dynamic_cast<const QAbstractButton*>(&widget);
    return button != nullptr && button->isChecked() ? 1 : 0;
}

void setState(QWidget& widget, int state) {
    if (auto* box = dynamic_cast<ThreeStateBox*>(&widget))
        box->setCheckState(state == 2 ? Qt::PartiallyChecked : state == 1 ? Qt::Checked : Qt::Unchecked);
    else if (auto* button = dynamic_cast<QAbstractButton*>(&widget))
        button->setChecked(state == 1);
}

void setText(QWidget& widget, const QString& text) {
    if (auto* button = dynamic_cast<QAbstractButton*>(&widget)) {
        button->setText(text);
    } else if (auto* label = dynamic_cast<QLabel*>(&widget)) {
        label->setText(text);
    } else if (auto* edit = dynamic_cast<QLineEdit*>(&widget)) {
        // The same text again would move the caret.
        if (edit->text() != text) edit->setText(text);
    }
}

QFont controlFont(int points) {
    QFont font;
    font.setFamilies({"Courier New", "Liberation Mono", "monospace"});
    font.setBold(true);
    font.setPointSize(std::clamp(points, 1, largestPointSize));
    return font;
}

/// The colours of controls on white: none of their own, so that they have those
/// of the theme, unless its text is made for a dark ground.
QPalette paletteOnWhite() {
    const QPalette theme = QApplication::palette();
    if (theme.color(QPalette::WindowText).lightness() <= theme.color(QPalette::Window).lightness()) return {};
    QPalette light(QColor(0xEF, 0xEF, 0xEF));
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        for (const auto role : {QPalette::Highlight, QPalette::HighlightedText})
            light.setColor(group, role, theme.color(group, role));
    return light;
}

QRect visibleRect(const PixelRect& r) {
    const auto near = [](int x) { return std::clamp(x, -farthest, farthest); };
    const auto length = [](int from, int to) {
        return static_cast<int>(std::clamp<std::int64_t>(std::int64_t{to} - from, 0, farthest));
    };
    return {near(r.left), near(r.top), length(r.left, r.right), length(r.top, r.bottom)};
}

}  // namespace

FigureControls::FigureControls(QWidget& parent, Listener listener)
    : parent_(parent), listener_(std::move(listener)) {
    followTheme();
}

void FigureControls::followTheme() { parent_.setPalette(paletteOnWhite()); }

QWidget* FigureControls::find(int id) const {
    const auto found = controls_.find(id);
    return found == controls_.end() ? nullptr : found->second.widget;
}

void FigureControls::press(int id) {
    const auto pressed = controls_.find(id);
    if (pressed == controls_.end()) return;
    const int state = stateOf(*pressed->second.widget);
    // The others of its group went off.
    if (pressed->second.kind == ControlKind::RadioButton)
        for (const auto& [other, control] : controls_)
            if (other != id && control.kind == ControlKind::RadioButton)
                listener_.stateChanged(other, stateOf(*control.widget));
    // A copy: the figure may close, and all this with it, in the call.
    const auto tell = listener_.pressed;
    tell(id, state);
}

QWidget* FigureControls::make(const PlotableButton& button) {
    const int id = button.controlId;
    const auto clickable = [this, id](QAbstractButton* made) -> QWidget* {
        QObject::connect(made, &QAbstractButton::clicked, made, [this, id] { press(id); });
        return made;
    };
    switch (button.control) {
        case ControlKind::CheckBox: return clickable(new QCheckBox(&parent_));
        case ControlKind::RadioButton: return clickable(new RadioButton(&parent_));
        case ControlKind::ThreeState: return clickable(new ThreeStateBox(&parent_));
        case ControlKind::Label: return new QLabel(&parent_);
        case ControlKind::EditField: {
            auto* const edit = new QLineEdit(&parent_);
            QObject::connect(edit, &QLineEdit::textEdited, edit, [this, id](const QString& text) {
                listener_.textChanged(id, fromQString(text));
            });
            QObject::connect(edit, &QLineEdit::returnPressed, edit, [this, id] { press(id); });
            return edit;
        }
        case ControlKind::PushButton: break;
    }
    return clickable(new QPushButton(&parent_));
}

void FigureControls::show(const PlotableButton& button, const PixelRect& place) {
    QWidget* widget = find(button.controlId);
    if (widget == nullptr) {
        widget = make(button);
        controls_[button.controlId] = {widget, button.control};
        setState(*widget, button.state);
    }
    setText(*widget, toQString(button.text));
    widget->setFont(controlFont(button.style.width));
    widget->setGeometry(visibleRect(place));
    widget->show();
}

void FigureControls::remove(int id) {
    const auto found = controls_.find(id);
    if (found == controls_.end()) return;
    QWidget* const widget = found->second.widget;
    controls_.erase(found);
    widget->disconnect();
    widget->hide();
    widget->deleteLater();
}

void FigureControls::removeAll() {
    while (!controls_.empty()) remove(controls_.begin()->first);
}

}  // namespace vorpen
