// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// One level deeper in the statement compiler, as long as it lives.

#include "frontend/statement_compiler.h"

namespace vorpen {

class StatementCompiler::Deeper {
public:
    explicit Deeper(StatementCompiler& compiler, bool loop = false) : compiler_(compiler), loop_(loop) {
        if (compiler.depth_ >= maxBlockDepth) failToCompile("blocks nested too deeply");
        ++compiler_.depth_;
        if (loop_) ++compiler_.loopDepth_;
    }
    ~Deeper() {
        --compiler_.depth_;
        if (loop_) --compiler_.loopDepth_;
    }
    Deeper(const Deeper&) = delete;
    Deeper& operator=(const Deeper&) = delete;

private:
    StatementCompiler& compiler_;
    bool loop_;
};

}  // namespace vorpen
