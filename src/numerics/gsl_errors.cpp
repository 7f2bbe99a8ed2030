// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/gsl_errors.h"

#include <gsl/gsl_errno.h>

#include <string>

#include "base/output.h"

namespace vorpen {
namespace {

/// How many guards silence the warnings.
int silenced = 0;

void mathErrorHandler(const char* /*reason*/, const char* /*file*/, int /*line*/, int code) {
    if (silenced > 0) return;
    try {
        output().print(std::string("math error: ") + gsl_strerror(code), true, PrintMode::markup);
    } catch (...) {
        // The caller is C code, through which nothing may be thrown; a warning
        // that cannot be shown is dropped.
    }
}

}  // namespace

void installGslErrorHandler() {
    static const bool installed = [] {
        gsl_set_error_handler(mathErrorHandler);
        return true;
    }();
    static_cast<void>(installed);
}

NoGslWarnings::NoGslWarnings() { ++silenced; }

NoGslWarnings::~NoGslWarnings() { --silenced; }

}  // namespace vorpen
