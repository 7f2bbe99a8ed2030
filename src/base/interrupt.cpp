// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/interrupt.h"

#include "base/errors.h"

namespace vorpen {
namespace {

void (*service)() = nullptr;

}  // namespace

void setService(void (*serve)()) { service = serve; }

void serveIfAsked() {
    constexpr auto served = static_cast<unsigned char>(~attentionService);
    const unsigned before = attention.fetch_and(served, std::memory_order_relaxed);
    if ((before & attentionService) != 0 && service) service();
}

void raiseInterrupted() { raiseRuntimeError("interrupted"); }

void attend() {
    serveIfAsked();
    if (isInterrupted()) raiseInterrupted();
}

}  // namespace vorpen
