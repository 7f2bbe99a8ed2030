// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/typed_session.h"

#include "base/encoding.h"
#include "console/console_text.h"
#include "files/dir.h"

namespace vorpen {

TypedSession::TypedSession(Calc& calc, bool echo, LineSink sink) : calc_(calc), echo_(echo) {
    ConsoleText& console = calc_.console();
    for (std::int64_t n = 0; n < console.currentLine(); ++n) sink(console.getLine(n));
    console.setLineListener(std::move(sink));
}

TypedSession::~TypedSession() { calc_.console().setLineListener({}); }

bool TypedSession::typeLine(std::string_view utf8) {
    const std::string line = fromUtf8(utf8);
    calc_.history().add(line);
    return runLine(line);
}

bool TypedSession::runScript(const std::string& path) {
    std::string name = path;
    const std::size_t slash = path.rfind('/');
    if (slash != std::string::npos) {
        const std::string directory = calc_.paths().fullName(slash == 0 ? "/" : path.substr(0, slash));
        if (Dir::fileKind(directory) == FileKind::directory) {
            calc_.paths().setCurrent(directory);
            name = path.substr(slash + 1);
        }
    }
    const char quote = name.find('"') == std::string::npos ? '"' : '\'';
    return runLine("use " + (quote + name) + quote);
}

void TypedSession::finishOutput() { calc_.console().endLine(); }

bool TypedSession::runLine(const std::string& line) {
    finishOutput();
    if (echo_) calc_.console().print(echoLine(nextNumber_, line), true, PrintMode::markup);
    ++nextNumber_;
    calc_.beginInput(line, '>');
    return calc_.run();
}

bool TypedSession::runClipboard() {
    finishOutput();
    ++nextNumber_;
    calc_.beginInput({}, 'c');
    return calc_.run();
}

std::string echoLine(int number, std::string_view text) {
    return "{g " + std::to_string(number) + "> {b:" + std::string(text);
}

}  // namespace vorpen
