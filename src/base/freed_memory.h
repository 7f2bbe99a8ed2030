// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What happens to memory that is given back. A fresh page costs more than the
// arithmetic on its numbers, and most commands work with a few blocks of a
// megabyte or so that live for the command alone. The C library hands such
// blocks back to the system and asks for them anew, until it has seen larger
// ones come and go: a plot of 1e5 points takes two and a half times as long.

namespace vorpen {

/// From the start on, keeps freed memory as the C library does once it has
/// learnt: blocks below 4 MiB are taken again, and only what lies free above
/// 64 MiB at the end of the heap goes back at once. Larger blocks come from the
/// system and go back to it: those of arrays begin with a huge page, and the
/// heap would have holes between them that nothing fits. To be called first in
/// a program.
void keepFreedMemory();

}  // namespace vorpen
