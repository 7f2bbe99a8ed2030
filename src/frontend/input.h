// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Where lines come from. Typed lines, pasted text and script files all reach
// the scanner through one interface, one line a call. Comments, blank lines
// and `use` are dealt with here, so that whoever asks for a line never knows
// where one source ended and the next began. Indentation is turned into braces
// here too: the rest of the front end knows only "{" and "}".
//
// A script is read into memory when it is opened. Sources nest by `use`, and a
// source that ends gives way to the one that used it. The end of a script
// closes the blocks that were opened in it; as only the scanner can tell a
// brace that opens a block from one inside a string, it reports them.

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorpen {

class Dir;

class LexInput {
public:
    virtual ~LexInput() = default;

    /// Gives the next line that is not empty; false at the end. With
    /// throwAtEnd the end is OperatorFailure{'e'} instead. A raw line belongs
    /// to a statement that began on an earlier one: its indentation means
    /// nothing, and it never comes from another source than the one that the
    /// statement began in, so the end of that source is the end.
    virtual bool getLine(std::string& line, bool throwAtEnd, bool raw) = 0;

    /// True for typed input.
    [[nodiscard]] virtual bool isInteractive() const = 0;

    /// The number of the line last given; 0 for a typed line.
    [[nodiscard]] virtual int lineNumber() const = 0;

    /// The file's name; empty for text.
    virtual void sourceName(std::string& out) const = 0;

    /// The first line of the last block comment, or -1.
    [[nodiscard]] virtual int commentStartLine() const = 0;

    /// The scanner's report that the line last given leaves a block open, or
    /// closes one that an earlier line opened.
    virtual void noteBlockOpened() {}
    virtual void noteBlockClosed() {}

    /// The report of a failure in a file that is read on behalf of this input:
    /// the line that a message should show, instead of this input's own.
    virtual void noteFailure([[maybe_unused]] int line, [[maybe_unused]] std::string text) {}
};

/// The text of a script file, in the program's encoding: UTF-8 is translated,
/// any other text is taken as it stands. Nothing when it cannot be read.
[[nodiscard]] std::optional<std::string> readScript(const std::string& path);

enum class SourceMode { typed = 0, text = 1, file = 2 };

/// One text or script file.
class InputSource final : public LexInput {
public:
    InputSource() = default;
    /// Typed text has line number 0, other text begins with line 1.
    InputSource(std::string text, SourceMode mode);

    /// A source that reads a script, or nothing when it cannot be read.
    [[nodiscard]] static std::optional<InputSource> openFile(const std::string& path);

    bool getLine(std::string& line, bool throwAtEnd, bool raw) override;
    [[nodiscard]] bool isInteractive() const override { return mode_ == SourceMode::typed; }
    [[nodiscard]] int lineNumber() const override { return lineNumber_; }
    void sourceName(std::string& out) const override { out = isFile() ? name_ : std::string(); }
    [[nodiscard]] int commentStartLine() const override { return commentStartLine_; }
    void noteBlockOpened() override { ++openBlocks_; }
    void noteBlockClosed() override {
        if (openBlocks_ > 0) --openBlocks_;
    }

    struct FunctionLine {
        std::string text;
        int lineNumber;
        int commentStartLine;
    };
    /// Reads up to the next line that begins with the word `function`.
    [[nodiscard]] std::optional<FunctionLine> scanForFunction();

    /// Goes to line n, which is then the next one to be given. Its indentation
    /// is the base from which further lines are judged.
    void seekLine(int n);

    /// The whole line that was read last, as it stands in the source.
    [[nodiscard]] std::string currentLine() const;

    [[nodiscard]] bool isFile() const { return mode_ == SourceMode::file; }
    [[nodiscard]] bool atEnd() const;

private:
    friend class UserInput;

    enum class Fetched { line, comment, end };

    [[nodiscard]] std::optional<std::string_view> readRawLine();
    [[nodiscard]] Fetched fetch(std::string_view& line);
    void skipComment(std::string_view line);
    void applyIndentation(std::string_view line, bool raw, std::string& out);
    [[nodiscard]] bool closeBlocks(std::string& line);

    /// Shared, so that a source that uses itself is no copy of itself.
    std::shared_ptr<const std::string> text_ = std::make_shared<const std::string>();
    SourceMode mode_ = SourceMode::typed;
    int lineNumber_ = 0;
    std::size_t lineStart_ = 0;
    std::size_t lineEnd_ = 0;
    std::size_t position_ = 0;
    /// The file; for a text the working directory when it was left.
    std::string name_;
    int indentLevel_ = 0;
    int commentStartLine_ = -1;
    int openBlocks_ = 0;
    /// The rest of a line behind `use name;` is read as a line, but it does
    /// not start one.
    bool insideLine_ = false;
};

/// The stack of sources of an engine.
class UserInput final : public LexInput {
public:
    explicit UserInput(Dir& paths) : paths_(paths) {}

    /// Takes text as the next input. Kind '>' is a typed line, any other kind
    /// text that was not typed, such as the clipboard's.
    void beginText(std::string text, char kind);

    /// Goes on with a script until it ends: the operation `use`.
    /// @throws PlainFailure when it cannot be found or opened, or when scripts
    /// are nested too deep. All sources but the first are then gone.
    void beginFile(const std::string& name);

    /// After a failure: keeps its place in errorLine and errorText and drops
    /// all sources.
    void abandon();

    [[nodiscard]] int errorLine() const { return errorLine_; }
    [[nodiscard]] const std::string& errorText() const { return errorText_; }

    bool getLine(std::string& line, bool throwAtEnd, bool raw) override;
    [[nodiscard]] bool isInteractive() const override { return current_.isInteractive(); }
    [[nodiscard]] int lineNumber() const override { return current_.lineNumber(); }
    void sourceName(std::string& out) const override { current_.sourceName(out); }
    [[nodiscard]] int commentStartLine() const override { return current_.commentStartLine(); }
    void noteBlockOpened() override { current_.noteBlockOpened(); }
    void noteBlockClosed() override { current_.noteBlockClosed(); }
    void noteFailure(int line, std::string text) override { noted_ = {line, std::move(text)}; }

private:
    struct Place {
        int line;
        std::string text;
    };

    void beginUse(std::string_view line);
    void leaveSource();
    [[noreturn]] void failToUse(std::string message);
    void unwind();

    Dir& paths_;
    InputSource current_;
    std::vector<InputSource> stack_;
    int errorLine_ = 0;
    std::string errorText_;
    std::optional<Place> noted_;  ///< where a file failed that was read on behalf of this input
};

}  // namespace vorpen
