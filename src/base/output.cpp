// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/output.h"

namespace vorpen {
namespace {

class NoOutput final : public Output {
    void print(std::string_view, bool, PrintMode) override {}
};

Output* current = nullptr;

}  // namespace

Output& output() {
    static NoOutput none;
    return current ? *current : none;
}

void setOutput(Output* output) { current = output; }

}  // namespace vorpen
