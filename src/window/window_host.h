// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The host of an engine with a console window: boxes and questions are
// windows, and characters and lines are typed into the console.

#include <optional>
#include <string>

#include "base/host.h"

class QWidget;

namespace vorpen {

class ConsoleWindow;

class WindowHost final : public Host {
public:
    /// The window may still be on its way: it is used when something is asked.
    explicit WindowHost(ConsoleWindow& window) : window_(window) {}

    void messageBox(std::string_view title, std::string_view text) override;
    bool ask(std::string_view title, std::string_view text, bool safe) override;
    std::optional<std::string> clipboardText() override;
    void setClipboardText(std::string_view text) override;
    std::optional<std::string> chooseFolder(std::string_view title, std::string_view start) override;
    void pumpEvents() override;
    bool waitForEvent() override;
    std::optional<int> readCharacter() override;
    std::optional<std::string> readLine() override;
    std::string programDirectory() override;
    std::string shareDirectory() override;

private:
    [[nodiscard]] QWidget* owner() const;

    ConsoleWindow& window_;
    std::optional<std::string> programDirectory_;
};

}  // namespace vorpen
