// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/helper_programs.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <vector>

#include "base/encoding.h"
#include "base/errors.h"

namespace vorpen {
namespace {

#ifdef _WIN32
constexpr std::string_view programEnding = ".exe";
#else
constexpr std::string_view programEnding;
#endif

const std::string helpProgram = "VorpenHelp";
const std::string helpResult = "vorpenhelp.txt";
const std::string propertyProgram = "lookup";
const std::string propertyResult = "property_result.txt";

constexpr std::string_view noResult = "vorpen can't find the database result";

/// What fits into an array that is shown or computed with; more lines of text
/// than this come from a helper gone wrong.
constexpr std::int64_t largestTable = 6003000;

std::string inDirectory(const std::string& directory, const std::string& name) {
    return (std::filesystem::path(directory) / name).string();
}

bool isProgram(const std::string& path) {
    struct stat facts {};
    return stat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode) && access(path.c_str(), X_OK) == 0;
}

/// The first of the directories for helpers that holds the program, as a path
/// that is good from any directory: the helper is started in another one.
std::optional<std::string> findHelper(Host& host, const std::string& program) {
    std::vector<std::string> places{host.programDirectory()};
    for (auto& place : host.helperDirectories()) places.push_back(std::move(place));
    for (const auto& place : places) {
        const std::string path = inDirectory(place, program + std::string(programEnding));
        std::error_code fault;
        if (isProgram(path)) return std::filesystem::absolute(path, fault).string();
    }
    return std::nullopt;
}

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) close(number_);
    }
    [[nodiscard]] int number() const { return number_; }

private:
    int number_;
};

struct ResultText {
    std::string text;
    bool isCut = false;
};

/// The file of a helper, no more than `limit` bytes of it. Nothing when it is
/// not there or no plain file: a pipe would be waited for.
std::optional<ResultText> readResult(const std::string& path, std::size_t limit) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat facts {};
    if (file.number() < 0 || fstat(file.number(), &facts) != 0 || !S_ISREG(facts.st_mode))
        return std::nullopt;
    ResultText result;
    // One byte more tells whether there is more.
    const auto wanted = std::min<std::uintmax_t>(static_cast<std::uintmax_t>(facts.st_size), limit + 1);
    result.text.resize(static_cast<std::size_t>(wanted));
    std::size_t have = 0;
    while (have < result.text.size()) {
        const ssize_t n = read(file.number(), result.text.data() + have, result.text.size() - have);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        have += static_cast<std::size_t>(n);
    }
    result.isCut = have > limit;
    result.text.resize(std::min(have, limit));
    return result;
}

/// The lines of a text one after the other, without their ends.
class LineReader {
public:
    explicit LineReader(std::string_view text) : rest_(text) {}

    [[nodiscard]] bool atEnd() const { return rest_.empty(); }
    [[nodiscard]] std::string_view rest() const { return rest_; }
    std::string_view next() {
        const std::size_t feed = rest_.find('\n');
        std::string_view line = rest_.substr(0, feed);
        rest_.remove_prefix(feed == rest_.npos ? rest_.size() : feed + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        return line;
    }

private:
    std::string_view rest_;
};

/// Takes the number that a text begins with, behind blanks and line ends.
std::optional<double> takeNumber(std::string_view& text) {
    const std::size_t start = text.find_first_not_of(" \t\r\n,");
    if (start == text.npos) return std::nullopt;
    const char* first = text.data() + start;
    if (*first == '+') ++first;
    double number = 0;
    const auto [behind, fault] = std::from_chars(first, text.data() + text.size(), number);
    if (fault != std::errc()) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(behind - text.data()));
    return number;
}

/// The count on a line of its own, no more than a file can hold; 0 for
/// anything that is no count.
std::int64_t readCount(LineReader& lines) {
    std::string_view line = lines.next();
    const double count = takeNumber(line).value_or(0);
    return count >= 1 ? static_cast<std::int64_t>(std::min(count, static_cast<double>(largestHelperFile)))
                      : 0;
}

void requireRoom(std::int64_t rows, std::int64_t columns) {
    Require(rows * columns <= largestTable, "the database result is too large");
}

/// As many lines as were announced or found, as rows of a character matrix.
void readTextTable(LineReader lines, DoubleValue& result) {
    const std::int64_t announced = readCount(lines);
    std::vector<std::string_view> rows;
    std::size_t width = 0;
    while (static_cast<std::int64_t>(rows.size()) < announced && !lines.atEnd()) {
        rows.push_back(lines.next());
        width = std::max(width, rows.back().size());
    }
    const auto count = static_cast<std::int64_t>(rows.size()), columns = static_cast<std::int64_t>(width);
    requireRoom(count, columns);
    result.setSizeShapeMark(count * columns, static_cast<int>(count), FORM_STRING);
    for (std::int64_t row = 0; row < count; ++row)
        for (std::int64_t column = 0; column < columns; ++column) {
            const std::string_view text = rows[row];
            const char c = column < static_cast<std::int64_t>(text.size()) ? text[column] : ' ';
            result[static_cast<int>(column * count + row)] = static_cast<signed char>(c);
        }
}

/// As many pairs as were announced or found, in two columns.
void readPairTable(LineReader lines, DoubleValue& result) {
    const std::int64_t announced = readCount(lines);
    std::vector<double> numbers;
    std::string_view rest = lines.rest();
    while (static_cast<std::int64_t>(numbers.size()) < 2 * announced) {
        const auto number = takeNumber(rest);
        if (!number) break;
        numbers.push_back(*number);
    }
    const auto count = static_cast<std::int64_t>(numbers.size() / 2);
    requireRoom(count, 2);
    result.setSizeShapeMark(2 * count, static_cast<int>(count), FORM_NUMERIC);
    for (int row = 0; row < count; ++row) {
        result[row] = numbers[2 * row];
        result[static_cast<int>(count) + row] = numbers[2 * row + 1];
    }
}

void readPropertyResult(std::string_view text, DoubleValue& result) {
    LineReader lines(text);
    lines.next();  // the helper's own remark
    std::string_view rest = lines.rest();
    if (!rest.starts_with('\\')) {
        const auto number = takeNumber(rest);
        Require(number.has_value(), noResult);
        result.assignDouble(*number);
        return;
    }
    const std::string_view line = lines.next().substr(1);
    const std::string_view word = line.substr(0, line.find_first_of(" \t"));
    word == "table" ? readTextTable(lines, result) : readPairTable(lines, result);
}

std::string inEngineEncoding(std::string text) { return isValidUtf8(text) ? fromUtf8(text) : text; }

}  // namespace

int spawnHelper(Host& host, const std::string& program, const std::string& argument,
                const std::optional<std::string>& second) {
    const std::optional<std::string> path = findHelper(host, program);
    if (!path) return -1;
    std::vector<std::string> arguments{toUtf8(argument)};
    if (second) arguments.push_back(toUtf8(*second));
    ProgramSettings settings;
    settings.directory = host.programDirectory();
    settings.secondsAllowed = secondsForHelper;
    settings.largestFile = largestHelperFile;
    settings.silent = true;
    return host.runProgram(*path, arguments, settings);
}

std::string callHelp(Host& host, const std::string& name, bool detailed) {
    const std::string path = inDirectory(host.programDirectory(), helpResult);
    unlink(path.c_str());
    const auto second = detailed ? std::optional<std::string>("\?\?") : std::nullopt;
    if (spawnHelper(host, helpProgram, name, second) != 0) return "\n (further help unavailable)";
    std::optional<ResultText> result = readResult(path, longestHelpText);
    if (!result) return {};
    const std::string text = inEngineEncoding(std::move(result->text));
    std::string answer;
    for (LineReader lines(text); !lines.atEnd();) (answer += '\n') += lines.next();
    if (result->isCut) answer += "\n (the rest of the help text is too long to be shown)";
    return answer;
}

void lookupProperty(Host& host, const std::string& query, DoubleValue& result) {
    const std::string path = inDirectory(host.programDirectory(), propertyResult);
    unlink(path.c_str());
    Require(spawnHelper(host, propertyProgram, query) == 0, "problem with database lookup");
    std::optional<ResultText> text = readResult(path, static_cast<std::size_t>(largestHelperFile));
    Require(text.has_value(), noResult);
    readPropertyResult(inEngineEncoding(std::move(text->text)), result);
}

}  // namespace vorpen
