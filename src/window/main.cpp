// SPDX-License-Identifier: GPL-3.0-or-later

// vorpen: the calculator in a window. Where there can be no window, or its
// input comes from elsewhere, the terminal program takes over with the same
// arguments.

#include <sys/stat.h>
#include <unistd.h>

#include <QtGui/QFontInfo>
#include <QtWidgets/QApplication>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "base/encoding.h"
#include "base/freed_memory.h"
#include "base/host.h"
#include "window/console_window.h"
#include "window/desktop.h"
#include "window/figure_desktop.h"
#include "window/icon.h"

namespace vorpen {
namespace {

char** theArguments = nullptr;

/// Does not return unless that program cannot be started.
void handOverToTerminal() {
    std::string path = executableDirectory() + "/vorpen-cli";
    theArguments[0] = path.data();
    execv(path.c_str(), theArguments);
    std::perror(path.c_str());
}

bool isSet(const char* name) {
    const char* text = std::getenv(name);
    return text && *text;
}

/// Platforms of the window library that need no screen are asked for by name.
bool hasDisplay() { return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("QT_QPA_PLATFORM"); }

/// A launcher gives a program an empty input, a user at a shell a terminal.
bool inputIsForTerminal() {
    struct stat facts {};
    return fstat(STDIN_FILENO, &facts) == 0 && (S_ISFIFO(facts.st_mode) || S_ISREG(facts.st_mode));
}

bool isForTerminal(int count) {
    if (!hasDisplay() || inputIsForTerminal() || count > 2) return true;
    return count == 2 && theArguments[1][0] == '-';
}

/// The window library ends the program when it finds no screen; what it says
/// before that is of interest only when the terminal program cannot help.
void onMessageAtStart(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtFatalMsg) {
        handOverToTerminal();
        std::fprintf(stderr, "vorpen: %s\n", text.toUtf8().constData());
    }
}

QtMessageHandler usualHandler = nullptr;

/// On some platforms the window library says that its display is lost and ends
/// the program in the same breath.
void onMessage(QtMsgType type, const QMessageLogContext& place, const QString& text) {
    if (text.contains("connection broke")) Desktop::saveNow();
    usualHandler(type, place, text);
}

int run(int count, char** words) {
    usualHandler = qInstallMessageHandler(onMessageAtStart);
    QApplication application(count, words);
    qInstallMessageHandler(onMessage);
    // What stands in for a missing font has no name.
    if (QFontInfo(QApplication::font()).family().isEmpty())
        std::fputs("vorpen: no font was found; text may be shown as boxes\n", stderr);
    QApplication::setApplicationName("vorpen");
    QApplication::setApplicationVersion(VORPEN_VERSION);
    QApplication::setDesktopFileName("vorpen");
    QApplication::setWindowIcon(programIcon());
    QApplication::setQuitOnLastWindowClosed(false);
    Desktop desktop;
    QtFigureDesktop figures;
    figures.setOpener([&desktop] { return desktop.returnToRun(); });
    figures.setPlacer([&desktop] { return desktop.runningConsole(); });
    ConsoleWindow* const window = desktop.openConsole();
    if (!window) return EXIT_FAILURE;
    figures.setConsole(window);
    if (count == 2) {
        std::error_code fault;
        window->runScript(fromUtf8(std::filesystem::absolute(words[1], fault).string()));
    }
    return QApplication::exec();
}

}  // namespace
}  // namespace vorpen

int main(int count, char** words) {
    vorpen::theArguments = words;
    if (vorpen::isForTerminal(count)) {
        vorpen::handOverToTerminal();
        return EXIT_FAILURE;
    }
    vorpen::keepFreedMemory();
    return vorpen::run(count, words);
}
