// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A file read in one piece. Looking at the characters of a large file in
// memory is several times faster than taking them out of a stream.

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vorpen {

/// The bytes of a file.
struct FileText {
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;
    [[nodiscard]] std::string_view text() const { return {bytes.get(), size}; }
};

/// Nothing when there is no such file, or when it is a directory or cannot be
/// read.
/// @throws std::bad_alloc
[[nodiscard]] std::optional<FileText> readWholeFile(const std::string& path);

}  // namespace vorpen
