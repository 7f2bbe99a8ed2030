// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/terminal_host.h"

#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "base/encoding.h"

namespace vorpen {
namespace {

constexpr std::string_view systemDirectories[] = {"/usr", "/opt", "/bin", "/sbin", "/lib", "/snap", "/nix"};

bool isBelow(std::string_view path, std::string_view directory) {
    return path.starts_with(directory) && (path.size() == directory.size() || path[directory.size()] == '/');
}

bool isSystemDirectory(std::string_view path) {
    for (const auto directory : systemDirectories)
        if (isBelow(path, directory)) return true;
    return false;
}

std::string environmentText(const char* name) {
    const char* text = std::getenv(name);
    return text ? text : "";
}

void writeToStandardError(const std::string& text) {
    TextOutput error(STDERR_FILENO, false);
    error.write(text);
}

/// Reads single key strokes while it lives, without showing them.
class KeyByKey {
public:
    KeyByKey() {
        isTerminal_ = tcgetattr(STDIN_FILENO, &before_) == 0;
        if (!isTerminal_) return;
        termios raw = before_;
        raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        raw.c_iflag &= ~static_cast<tcflag_t>(ICRNL);
        raw.c_cc[VMIN] = 1;
        raw.c_cc[VTIME] = 0;
        tcsetattr(STDIN_FILENO, TCSADRAIN, &raw);
    }
    KeyByKey(const KeyByKey&) = delete;
    KeyByKey& operator=(const KeyByKey&) = delete;
    ~KeyByKey() {
        if (isTerminal_) tcsetattr(STDIN_FILENO, TCSADRAIN, &before_);
    }

private:
    bool isTerminal_;
    termios before_{};
};

std::optional<bool> meaningOfAnswer(std::string answer) {
    for (char& c : answer) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    if (answer == "y" || answer == "yes" || answer == "ok") return true;
    if (answer == "n" || answer == "no" || answer == "cancel") return false;
    return std::nullopt;
}

volatile std::sig_atomic_t leavingSignalArrived = 0;

void onSignal(int signal) {
    if (signal != SIGINT) leavingSignalArrived = 1;
}

}  // namespace

std::string chooseProgramDirectory(const ProgramPlaces& places) {
    if (places.home) return *places.home;
    if (!places.executableDirectory.empty() && places.executableDirectoryWritable &&
        !isSystemDirectory(places.executableDirectory))
        return places.executableDirectory;
    // A relative directory is no valid setting and is to be ignored (XDG Base
    // directories, version 0.8).
    if (places.userData.starts_with('/')) return places.userData + "/vorpen";
    if (places.userHome.starts_with('/')) return places.userHome + "/.local/share/vorpen";
    return places.startDirectory;
}

TerminalHost::TerminalHost(TextOutput& output, TextInput& input, std::optional<std::string> home)
    : output_(output), input_(input), home_(std::move(home)) {
    input_.setBeforeWait([this] { beforeWait(); });
}

void TerminalHost::beforeWait() {
    if (showUnfinished_) showUnfinished_();
    output_.flush();
}

void TerminalHost::messageBox(std::string_view title, std::string_view text) {
    output_.flush();
    writeToStandardError(toUtf8(std::string(title) + ": " + std::string(text) + "\n"));
}

bool TerminalHost::ask(std::string_view title, std::string_view text, bool safe) {
    if (!isatty(STDIN_FILENO) || !isatty(STDERR_FILENO) || SignalsEndWait::mustLeave()) {
        messageBox(title, text);
        return safe;
    }
    const SignalsEndWait guard(input_);
    for (;;) {
        beforeWait();
        writeToStandardError(toUtf8(std::string(title) + ": " + std::string(text) + " [y/n] "));
        const auto answer = input_.readLine();
        if (!answer) return safe;
        if (const auto meaning = meaningOfAnswer(*answer)) return *meaning;
    }
}

std::optional<int> TerminalHost::readCharacter() {
    const SignalsEndWait guard(input_);
    const KeyByKey keys;
    const auto character = input_.readCharacter();
    if (!character) return std::nullopt;
    const std::string code = fromUtf8(*character);
    return code.empty() ? 0 : static_cast<unsigned char>(code[0]);
}

std::optional<std::string> TerminalHost::readLine() {
    const SignalsEndWait guard(input_);
    const auto line = input_.readLine();
    if (!line) return std::nullopt;
    return fromUtf8(*line);
}

void TerminalHost::sleepMilliseconds(double milliseconds, bool serveEvents) {
    beforeWait();
    Host::sleepMilliseconds(milliseconds, serveEvents);
}

std::string TerminalHost::programDirectory() {
    if (!programDirectory_) {
        ProgramPlaces places;
        places.home = home_;
        places.executableDirectory = executableDirectory();
        places.executableDirectoryWritable = access(places.executableDirectory.c_str(), W_OK) == 0;
        places.userData = environmentText("XDG_DATA_HOME");
        places.userHome = environmentText("HOME");
        places.startDirectory = startDirectory();
        programDirectory_ = chooseProgramDirectory(places);
        std::error_code ignored;  // where it cannot be made, saving will say so
        std::filesystem::create_directories(*programDirectory_, ignored);
    }
    return *programDirectory_;
}

std::string TerminalHost::shareDirectory() {
    const std::string directory = executableDirectory();
    return directory.empty() ? std::string() : directory + "/../share/vorpen";
}

int TerminalHost::runCommand(const std::string& command) {
    beforeWait();
    return Host::runCommand(command);
}

int TerminalHost::runProgram(const std::string& path, const std::vector<std::string>& arguments,
                             const ProgramSettings& settings) {
    beforeWait();
    return Host::runProgram(path, arguments, settings);
}

SignalsEndWait::SignalsEndWait(TextInput& input) : input_(input) {
    sigset_t blocked;
    sigemptyset(&blocked);
    for (const int signal : signals_) sigaddset(&blocked, signal);
    sigprocmask(SIG_BLOCK, &blocked, &blockedBefore_);
    struct sigaction action {};
    action.sa_handler = onSignal;
    for (std::size_t i = 0; i < signals_.size(); ++i) sigaction(signals_[i], &action, &actionsBefore_[i]);
    input_.setBlockedDuringWait(&blockedBefore_);
}

SignalsEndWait::~SignalsEndWait() {
    input_.setBlockedDuringWait(nullptr);
    // A signal that is still waiting arrives here, while it does no harm.
    sigprocmask(SIG_SETMASK, &blockedBefore_, nullptr);
    for (std::size_t i = 0; i < signals_.size(); ++i) sigaction(signals_[i], &actionsBefore_[i], nullptr);
}

bool SignalsEndWait::mustLeave() { return leavingSignalArrived != 0; }

}  // namespace vorpen
