// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What can go wrong, as types. A failure is thrown by value, passes through
// everything between, and ends in one place: the engine turns it into a red
// line on the console. The type says what the engine may add to the text: a
// SyntaxError also shows the source line, the others do not. An
// OperatorFailure is one character, thrown by array code that knows nothing of
// messages; the engine has the sentence for it.

#include <string>
#include <string_view>

namespace vorpen {

/// A fault found while a line is read and compiled.
struct SyntaxError {
    std::string message;
};

/// A fault of a running computation. With a context the text reads
/// "in CONTEXT: MESSAGE". A message of one character is an operator code and
/// is replaced by its sentence, so that "B" means "index out of bounds".
struct RuntimeError {
    explicit RuntimeError(std::string_view message, std::string_view context = {});
    std::string message;
};

/// A compact fault of array code or of the input layer: the code of the
/// operator that could not be applied.
struct OperatorFailure {
    char code;
};

/// A fault whose text is shown as it stands: an internal fault, or a message
/// of the input layer.
struct PlainFailure {
    std::string message;
};

/// The sentence that the user sees for an operator failure that reached the
/// engine.
std::string operatorFailureText(char code);

[[noreturn]] void raiseRuntimeError(std::string_view message, std::string_view context = {});

/// Raises a RuntimeError with the message and context when the condition is
/// false.
inline void Require(bool condition, std::string_view message, std::string_view context = {}) {
    if (!condition) [[unlikely]] raiseRuntimeError(message, context);
}

}  // namespace vorpen
