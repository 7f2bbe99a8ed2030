// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/errors.h"

namespace vorpen {
namespace {

std::string codeSentence(char code) {
    switch (code) {
        case ')': return "missing closing bracket";
        case 'B': return "index out of bounds";
        default: return std::string("incompatible sizes at operator ") + code;
    }
}

}  // namespace

RuntimeError::RuntimeError(std::string_view text, std::string_view context) {
    const std::string body = text.size() == 1 ? codeSentence(text[0]) : std::string(text);
    message = context.empty() ? body : "in " + std::string(context) + ": " + body;
}

std::string operatorFailureText(char code) {
    switch (code) {
        case '(': return "out of bounds error";
        case 'R': return "invalid matrix power";
        case ']': return "value requested from an empty array";
        default: return std::string("incompatible objects at operator ") + code;
    }
}

void raiseRuntimeError(std::string_view message, std::string_view context) {
    throw RuntimeError(message, context);
}

}  // namespace vorpen
