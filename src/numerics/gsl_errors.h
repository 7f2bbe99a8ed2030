// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What becomes of the errors that GSL reports. Left alone, GSL ends the
// program at the first domain error. With our handler an error becomes a
// warning on the console, "math error: " and GSL's words for it, and the
// computation goes on with what GSL answers, usually a NaN.

namespace vorpen {

/// Makes GSL report its errors as warnings. Cheap after the first call; every
/// operation that calls GSL does so first.
void installGslErrorHandler();

/// Silences the warnings while it lives. A method does this when a function of
/// the user's has failed inside GSL: the user sees that failure, and what GSL
/// makes of it says nothing more. Guards may nest.
class NoGslWarnings {
public:
    NoGslWarnings();
    ~NoGslWarnings();
    NoGslWarnings(const NoGslWarnings&) = delete;
    NoGslWarnings& operator=(const NoGslWarnings&) = delete;
};

}  // namespace vorpen
