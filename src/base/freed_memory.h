// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What happens to memory that is given back. A fresh page costs more than the
// arithmetic on its numbers, and most commands work with a few blocks of a
// megabyte or so that live for the command alone. The C library hands such
// blocks back to the system and asks for them anew, until it has seen larger
// ones come and go. A plot of 1e5 points takes two and a half times as long that way.

namespace vorpen {

/// From the start on, keeps freed memory as the C library does once it has
/// learnt: blocks below 32 MiB are taken again, and only what lies free above
/// 64 MiB at the end of the heap goes back at once. To be called first in a
/// program.
void keepFreedMemory();

}  // namespace vorpen
