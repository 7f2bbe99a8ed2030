// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/launch.h"

#include <exception>

namespace vorpen {
namespace {

constexpr std::string_view boxTitle = "info";

template <class Make>
std::unique_ptr<Calc> launch(Host& host, std::string_view failure, const OpenConsole& openConsole, Make make) {
    try {
        std::unique_ptr<Calc> calc = make();
        if (!openConsole || openConsole(*calc)) return calc;
    } catch (const std::exception&) {
        // out of memory; the box says it all the same
    }
    host.messageBox(boxTitle, failure);
    return nullptr;
}

}  // namespace

std::unique_ptr<Calc> launchPrimary(Host& host, const OpenConsole& openConsole) {
    return launch(host, "PrimaryVorpen: calc failed at setup", openConsole,
                  [&] { return std::make_unique<Calc>(host); });
}

std::unique_ptr<Calc> launchSecondary(Host& host, const Calc& running, const OpenConsole& openConsole) {
    return launch(host, "launch of secondary Vorpen failed", openConsole,
                  [&] { return std::make_unique<Calc>(host, running); });
}

}  // namespace vorpen
