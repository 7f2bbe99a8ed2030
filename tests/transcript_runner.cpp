// SPDX-License-Identifier: GPL-3.0-or-later

// Plays the transcripts of files against the engine, each in a process and a
// folder of its own, so that a session that crashes or hangs is one fault and
// the others are still played.
//
//     transcripts FILE...             all cases have to hold
//     transcripts --all-fail FILE...  in each case a fault has to be found
//
// The second form is for the test of this program itself.

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "base/encoding.h"
#include "console/terminal_text.h"
#include "engine/calc.h"
#include "terminal/typed_session.h"
#include "test_host.h"
#include "transcript.h"

namespace vorpen {
namespace {

namespace fs = std::filesystem;

// Far above what any case takes under the sanitizers on a busy machine.
constexpr unsigned secondsForCase = 60;

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (fs::temp_directory_path() / "transcript-XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
        path_ = fs::canonical(pattern);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    [[nodiscard]] const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const auto& line : lines) text += (text.empty() ? "" : " | ") + line;
    return text;
}

void report(const std::string& place, const std::vector<std::string>& expected,
            const std::vector<std::string>& shown) {
    std::printf("  %s\n    want: %s\n    got:  %s\n", place.c_str(), joined(foldLines(expected)).c_str(),
                joined(foldLines(shown)).c_str());
}

void writeFiles(const Transcript& transcript, const fs::path& folder) {
    for (const auto& [name, text] : transcript.files) {
        fs::create_directories((folder / name).parent_path());
        std::ofstream(folder / name, std::ios::binary) << text;
    }
}

std::vector<std::string> linesOfFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return {"<no such file>"};
    return splitLines({std::istreambuf_iterator<char>(in), {}});
}

/// Types the lines of a case; the number of those that showed something else
/// than expected.
int playSteps(const Transcript& transcript, const fs::path& folder) {
    TestHost host(folder.string());
    host.share = VORPEN_SHARE_DIRECTORY;
    Calc calc(host, true);
    std::vector<std::string> shown;
    TypedSession session(calc, false, [&](const std::string& line) {
        shown.push_back(transcript.markup ? toUtf8(line) : terminalText(line, false));
    });
    for (const auto& step : transcript.steps) host.typedLines.push_back(step.typed);
    int faults = 0;
    // A typed line can be taken by the program itself, when it asks for one.
    while (!host.typedLines.empty()) {
        const auto& step = transcript.steps[transcript.steps.size() - host.typedLines.size()];
        const std::string line = host.typedLines.front();
        host.typedLines.pop_front();
        shown.clear();
        session.typeLine(line);
        session.finishOutput();
        if (linesMatch(step.expected, shown)) continue;
        ++faults;
        report("> " + step.typed, step.expected, shown);
    }
    return faults;
}

int faultsOfFiles(const Transcript& transcript, const fs::path& folder) {
    int faults = 0;
    for (const auto& [name, text] : transcript.expectedFiles) {
        const auto found = linesOfFile(folder / name);
        if (linesMatch(splitLines(text), found)) continue;
        ++faults;
        report("file " + name, splitLines(text), found);
    }
    return faults;
}

/// Plays a case in this process and leaves it with 0 when it holds.
[[noreturn]] void playAndLeave(const Transcript& transcript, const fs::path& folder) {
    alarm(secondsForCase);
    int faults = 1;
    try {
        fs::current_path(folder);
        writeFiles(transcript, folder);
        faults = playSteps(transcript, folder) + faultsOfFiles(transcript, folder);
    } catch (const std::exception& fault) {
        std::printf("  an exception came out: %s\n", fault.what());
    }
    std::exit(faults == 0 ? 0 : 1);
}

bool holds(const Transcript& transcript) {
    const TemporaryFolder folder;
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) playAndLeave(transcript, folder.path());
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) < 0) throw std::runtime_error("no process for a case");
    if (WIFSIGNALED(status)) std::printf("  died of signal %d\n", WTERMSIG(status));
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

int playFiles(const std::vector<std::string>& paths, bool allFail) {
    int good = 0, bad = 0;
    for (const auto& path : paths)
        for (const auto& transcript : readTranscripts(path)) {
            const bool wanted = holds(transcript) != allFail;
            ++(wanted ? good : bad);
            if (!wanted)
                std::printf("%s %s\n", allFail ? "NO FAULT FOUND IN" : "FAIL", transcript.name.c_str());
        }
    std::printf("%d cases as wanted, %d not\n", good, bad);
    return bad == 0 && good > 0 ? 0 : 1;
}

}  // namespace
}  // namespace vorpen

int main(int count, char** words) {
    std::vector<std::string> paths(words + 1, words + count);
    const bool allFail = !paths.empty() && paths[0] == "--all-fail";
    if (allFail) paths.erase(paths.begin());
    try {
        return vorpen::playFiles(paths, allFail);
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "%s\n", fault.what());
        return 2;
    }
}
