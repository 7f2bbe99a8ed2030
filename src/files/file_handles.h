// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The files that a program of the user has open, behind small numbers from 1.
// A slot that was given out stays valid as a number until the highest one is
// closed, also when its file could not be opened or is closed already; its use
// then tells that.

#include <array>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vorpen {

/// How a file is to be opened, as the mode text of the user says.
struct OpenMode {
    bool binary = false;
    bool write = false;           ///< also when appending
    bool readsAndWrites = false;  ///< no file is opened for both at once
    bool append = false;
    bool failureIsError = false;
    bool failureIsQuiet = false;
    std::string extension = "txt";  ///< for names without one

    /// The letters may stand anywhere before the first "."; behind it follows
    /// the extension, which may be empty.
    static OpenMode parse(std::string_view text);
};

class FileHandles {
public:
    static constexpr int mostOpen = 9;
    /// A longer line is most likely no text at all.
    static constexpr std::size_t longestLine = 6003000;

    /// The slot that the next file gets.
    /// @throws RuntimeError attributed to "fopen" when none is free.
    [[nodiscard]] int freeSlot() const;

    /// Opens a file in a free slot. When it cannot be opened the slot stays
    /// without a file, and the answer is false; only for plain writing does
    /// its number count as given out.
    bool open(int slot, const std::string& path, const OpenMode& mode);

    /// Closes one file, all of them for a number below 1.
    /// @throws RuntimeError when something that was written could not be
    /// stored; the file is closed all the same.
    void close(int id);

    /// Non-zero once a read has met the end.
    [[nodiscard]] bool atEnd(int id);

    [[nodiscard]] bool isBinary(int id) { return checked(id).binary; }

    /// Bytes as they arrive in pieces, at most so many of them; nothing is
    /// given when the end was met already.
    void readBytes(int id, std::int64_t count, const std::function<void(std::span<const char>)>& take);

    /// A line without its end, a line feed or a carriage return and line feed;
    /// nothing at the end of the file.
    [[nodiscard]] std::optional<std::string> readLine(int id);

    /// Answers how many bytes were taken.
    std::size_t write(int id, std::string_view bytes);

    /// Fails unless the slot has a file that is open for reading, or writing.
    void requireReadable(int id) { readable(id); }
    void requireWritable(int id) { writable(id); }

    /// Passes on what was written, so that other programs find it.
    void flush();

private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    struct Slot {
        std::unique_ptr<std::FILE, Closer> file;
        bool binary = false, write = false;
        bool isPipe = false;  ///< or anything else that is no plain file
    };

    Slot& checked(int id);
    Slot& readable(int id);
    Slot& writable(int id);
    static bool closes(Slot& slot);

    std::array<Slot, mostOpen + 1> slots_;  ///< the first is never used
    int fileCount_ = 1;                     ///< one more than the highest number given out
};

/// The open files of the program. They stay open from one input to the next.
[[nodiscard]] FileHandles& fileHandles();

}  // namespace vorpen
