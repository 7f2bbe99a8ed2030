// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The user functions that answer the events of figures: onLDown, onMove,
// onKeyDown and the others. An event may come while a script waits; the state
// of the statements that wait is put back when its function has ended.

#include <functional>

#include "base/host.h"
#include "eval/user_func.h"
#include "plot/interaction.h"

namespace vorpen {

class EventFunctions final : public EventTarget {
public:
    EventFunctions(UserFunctionTable& functions, Host& host) : functions_(functions), host_(host) {}

    /// Who types the command of a menu's item into the console, with Enter;
    /// without one such commands are dropped.
    void setTypist(std::function<void(std::string_view)> typist) { typist_ = std::move(typist); }

    /// Who calls a function for an event, so that it is a run like that of a
    /// typed line: it has to call what it is given, once. Without one functions
    /// are called directly.
    using Runner = std::function<void(const std::function<void()>& call)>;
    void setRunner(Runner runner) { runner_ = std::move(runner); }

    [[nodiscard]] bool hasFunction(std::string_view name) const override { return functions_.find(name); }
    /// Gives a function as many of its two inputs as it takes. Fails with
    /// "recursion not allowed in mouse function", and for a function that
    /// cannot be called with them.
    double callFunction(std::string_view name, std::array<double, 2> place,
                        std::span<const double> second) override;
    [[nodiscard]] bool isEnabled(std::string_view name) const override;
    void disable(std::string_view name) override;
    void messageBox(std::string_view text) override { host_.messageBox("", text); }
    void print(std::string_view text) override;
    void typeCommand(std::string_view text) override {
        if (typist_) typist_(text);
    }

private:
    [[nodiscard]] bool* flagOf(std::string_view name) const;

    UserFunctionTable& functions_;
    Host& host_;
    std::function<void(std::string_view)> typist_;
    Runner runner_;
};

}  // namespace vorpen
