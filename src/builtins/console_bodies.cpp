// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/console_bodies.h"

#include <string>

#include "base/errors.h"
#include "base/interrupt.h"
#include "builtins/engine_context.h"
#include "console/console_text.h"

namespace vorpen::builtin {

double readCharacter() {
    const auto code = engineContext().surroundings().readCharacter();
    checkInterrupt();
    Require(code.has_value(), "end of input", "getch");
    if (*code == '\r' || *code == '\n')
        console().newLine();
    else
        console().print(std::string(1, static_cast<char>(*code)), false, PrintMode::verbatim);
    return *code;
}

void readLine(const Value& prompt, IntValue& out) {
    if (prompt.isString() && !prompt.isEmpty()) console().print(prompt.text(), true, PrintMode::markup);
    const auto line = engineContext().surroundings().readLine();
    checkInterrupt();
    Require(line.has_value(), "end of input", "getline");
    console().print(*line, true, PrintMode::markup);
    out.assignString(*line);
}

int showBox(const Value& text) {
    constexpr int okButton = 1;
    std::string shown;
    text.toString(shown);
    engineContext().surroundings().messageBox({}, shown);
    checkInterrupt();
    return okButton;
}

}  // namespace vorpen::builtin
