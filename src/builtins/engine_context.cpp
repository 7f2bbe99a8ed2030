// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/engine_context.h"

#include "base/errors.h"

namespace vorpen {
namespace {

EngineContext* current = nullptr;

EngineContext& ofNoEngine() {
    static EngineContext context;
    return context;
}

}  // namespace

Host& EngineContext::surroundings() const {
    if (!host) throw PlainFailure{"?bug: a built-in function was called without a host"};
    return *host;
}

Dir& EngineContext::directories() const {
    if (!paths) throw PlainFailure{"?bug: a built-in function was called without a path list"};
    return *paths;
}

EngineContext& engineContext() { return current ? *current : ofNoEngine(); }

void setEngineContext(EngineContext* context) {
    current = context;
    if (!context) ofNoEngine() = EngineContext{};
}

}  // namespace vorpen
