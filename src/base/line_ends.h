// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace vorpen {

/// The text with each line end, whatever it was, as carriage return and line
/// feed: the form in which text from a clipboard reaches the engine.
[[nodiscard]] std::string withClipboardLineEnds(std::string_view text);

}  // namespace vorpen
