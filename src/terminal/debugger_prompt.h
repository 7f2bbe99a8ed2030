// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The debugger at a terminal: a stop is written as a few lines of the console,
// and the answer is typed.

#include <optional>
#include <string_view>

#include "base/host.h"
#include "engine/debugger.h"

namespace vorpen {

class DebuggerPrompt final : public DebuggerView {
public:
    /// Lends the host, which reads what is typed.
    explicit DebuggerPrompt(Host& host) : host_(host) {}

    bool open() override { return true; }
    void show(const DebuggerPage& page) override;
    /// Asks until the answer means something. An empty line steps; the end of
    /// the input closes the debugger.
    DebuggerCommand waitForCommand() override;
    void hide() override {}
    void destroy() override {}

private:
    Host& host_;
};

/// The command that an answer begins with; nothing when it is none.
[[nodiscard]] std::optional<DebuggerCommand> debuggerCommandOf(std::string_view answer);

}  // namespace vorpen
