// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/about_dialog.h"

#include <QtWidgets/QApplication>
#include <QtWidgets/QDialog>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QVBoxLayout>

namespace vorpen {
namespace {

/// A name that is reserved for examples, until the documentation has a place
/// on the web.
constexpr const char* documentationPage = "https://vorpen.example/documentation";

}  // namespace

void runAboutDialog(QWidget* parent) {
    QDialog dialog(parent);
    dialog.setWindowTitle("About Vorpen");
    auto* picture = new QLabel;
    picture->setPixmap(QApplication::windowIcon().pixmap(64));
    auto* lines = new QVBoxLayout;
    const QString version = "Vorpen 5a, version " + QApplication::applicationVersion();
    for (const QString& text :
         {version, QString("Enter 'help' for further information, or see"), QString(documentationPage),
          QString::fromUtf8("Copyright © 2026 the developers of Vorpen")}) {
        auto* line = new QLabel(text);
        line->setTextInteractionFlags(Qt::TextSelectableByMouse);
        lines->addWidget(line);
    }
    auto* top = new QHBoxLayout;
    top->addWidget(picture, 0, Qt::AlignTop);
    top->addLayout(lines);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    auto* all = new QVBoxLayout(&dialog);
    all->addLayout(top);
    all->addWidget(buttons);
    all->setSizeConstraint(QLayout::SetFixedSize);
    dialog.exec();
}

}  // namespace vorpen
