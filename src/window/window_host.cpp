// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/window_host.h"

#include <QtCore/QDir>
#include <QtCore/QMimeData>
#include <QtGui/QClipboard>
#include <QtWidgets/QApplication>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>

#include "base/interrupt.h"
#include "base/line_ends.h"
#include "base/program_directory.h"
#include "window/console_window.h"
#include "window/desktop.h"
#include "window/encoding.h"

namespace vorpen {
namespace {

/// A longer text is no message, and takes long to lay out.
constexpr std::size_t longestMessage = 4000;

QString messageText(std::string_view text) {
    const bool isLong = text.size() > longestMessage;
    return toQString(text.substr(0, longestMessage)) + (isLong ? QString(QChar(0x2026)) : QString());
}

/// The box of the window library still counts folders as selected that a path
/// went through while it was typed; then the path is what is meant.
QString chosenFolder(const QFileDialog& box) {
    if (const auto* field = box.findChild<QLineEdit*>("fileNameEdit")) {
        const QString typed = QDir::cleanPath(box.directory().absoluteFilePath(field->text()));
        if (!field->text().isEmpty() && QFileInfo(typed).isDir()) return typed;
    }
    return box.selectedFiles().value(0);
}

}  // namespace

/// What has been printed is seen before something is asked.
QWidget* WindowHost::owner() const {
    if (!window_.isVisible()) return nullptr;
    window_.console().showOutput();
    return &window_;
}

void WindowHost::messageBox(std::string_view title, std::string_view text) {
    if (window_.desktop().isLeaving()) return;
    QMessageBox box(QMessageBox::NoIcon, toQString(title), messageText(text), QMessageBox::Ok, owner());
    box.setTextFormat(Qt::PlainText);
    box.exec();
}

bool WindowHost::ask(std::string_view title, std::string_view text, bool safe) {
    if (window_.desktop().isLeaving()) return safe;
    QMessageBox box(QMessageBox::Question, toQString(title), messageText(text),
                    QMessageBox::Ok | QMessageBox::Cancel, owner());
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(safe ? QMessageBox::Ok : QMessageBox::Cancel);
    const int answer = box.exec();
    // Nobody answered: the program is being ended.
    if (window_.desktop().isLeaving()) return safe;
    return answer == QMessageBox::Ok;
}

std::optional<std::string> WindowHost::clipboardText() {
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    if (!data || !data->hasText()) return std::nullopt;
    return withClipboardLineEnds(fromQString(data->text()));
}

void WindowHost::setClipboardText(std::string_view text) {
    QGuiApplication::clipboard()->setText(toQString(text));
}

std::optional<std::string> WindowHost::chooseFolder(std::string_view title, std::string_view start) {
    QFileDialog box(owner(), toQString(title), toQString(start));
    box.setFileMode(QFileDialog::Directory);
    // Who looks for a folder shall not remove one by a slip of the hand.
    box.setOptions(QFileDialog::ShowDirsOnly | QFileDialog::ReadOnly);
    if (box.exec() != QDialog::Accepted || window_.desktop().isLeaving()) return std::nullopt;
    const QString chosen = chosenFolder(box);
    return chosen.isEmpty() ? std::nullopt : std::optional(fromQString(chosen));
}

void WindowHost::pumpEvents() {
    window_.console().showOutput();
    QCoreApplication::processEvents();
    window_.desktop().noteEventsServed();
}

bool WindowHost::waitForEvent() {
    if (isInterrupted()) return false;
    window_.console().showOutput();
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    window_.desktop().noteEventsServed();
    return !isInterrupted();
}

std::optional<int> WindowHost::readCharacter() {
    return window_.console().readCharacter([this] { return waitForEvent(); });
}

std::optional<std::string> WindowHost::readLine() {
    return window_.console().readLine([this] { return waitForEvent(); });
}

std::string WindowHost::programDirectory() {
    if (!programDirectory_)
        programDirectory_ = makeProgramDirectory(window_.desktop().home(), startDirectory());
    return *programDirectory_;
}

std::string WindowHost::shareDirectory() { return installedShareDirectory(); }

}  // namespace vorpen
