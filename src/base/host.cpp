// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/host.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <filesystem>
#include <thread>

#include "base/encoding.h"
#include "base/interrupt.h"

extern char** environ;

namespace vorpen {
namespace {

using Clock = std::chrono::steady_clock;

int statusOf(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : -1; }

int waitForStatus(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0)
        if (errno != EINTR) return -1;
    return statusOf(status);
}

/// Waits until the process ends or its time is over, in which case it is ended
/// with all that it has started.
int waitForStatus(pid_t process, double secondsAllowed) {
    using namespace std::chrono;
    const auto start = Clock::now();
    // The answer comes late by a tenth of the time that it took, at most.
    constexpr duration<double> shortestNap = microseconds(200), longestNap = milliseconds(10);
    for (;;) {
        int status = 0;
        const pid_t ended = waitpid(process, &status, WNOHANG);
        if (ended == process) return statusOf(status);
        if (ended < 0 && errno != EINTR) return -1;
        const duration<double> elapsed = Clock::now() - start;
        if (elapsed.count() >= secondsAllowed) break;
        std::this_thread::sleep_for(std::clamp(elapsed / 10, shortestNap, longestNap));
    }
    kill(-process, SIGKILL);
    waitForStatus(process);
    return -1;
}

/// While it lives, the keys that end a program end only the one that is waited
/// for.
class KeysEndOnlyTheOther {
public:
    KeysEndOnlyTheOther() {
        struct sigaction ignore {};
        ignore.sa_handler = SIG_IGN;
        for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &ignore, &before_[i]);
    }
    KeysEndOnlyTheOther(const KeysEndOnlyTheOther&) = delete;
    KeysEndOnlyTheOther& operator=(const KeysEndOnlyTheOther&) = delete;
    ~KeysEndOnlyTheOther() {
        for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &before_[i], nullptr);
    }

    static constexpr std::array signals = {SIGINT, SIGQUIT};

private:
    std::array<struct sigaction, signals.size()> before_{};
};

/// What this program ignores, a program that it starts shall not.
void setDefaultSignals(posix_spawnattr_t& attributes) {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : KeysEndOnlyTheOther::signals) sigaddset(&signals, signal);
    sigaddset(&signals, SIGXFSZ);
    posix_spawnattr_setsigdefault(&attributes, &signals);
}

/// What a process is given when it is started, freed with the object.
class SpawnPlan {
public:
    explicit SpawnPlan(const ProgramSettings& settings) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawnattr_init(&attributes_);
        open(STDIN_FILENO, O_RDONLY);
        if (settings.silent) {
            open(STDOUT_FILENO, O_WRONLY);
            open(STDERR_FILENO, O_WRONLY);
        }
        if (!settings.directory.empty())
            posix_spawn_file_actions_addchdir_np(&actions_, settings.directory.c_str());
        setDefaultSignals(attributes_);
        short flags = POSIX_SPAWN_SETSIGDEF;
        if (settings.secondsAllowed > 0) {
            // A group of its own, so that what it has started ends with it.
            flags |= POSIX_SPAWN_SETPGROUP;
            posix_spawnattr_setpgroup(&attributes_, 0);
        }
        posix_spawnattr_setflags(&attributes_, flags);
    }
    SpawnPlan(const SpawnPlan&) = delete;
    SpawnPlan& operator=(const SpawnPlan&) = delete;
    ~SpawnPlan() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }

    /// The process, or nothing when it could not be started.
    [[nodiscard]] std::optional<pid_t> start(const std::string& path,
                                             const std::vector<std::string>& arguments) {
        std::vector<char*> words{const_cast<char*>(path.c_str())};
        for (const auto& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
        words.push_back(nullptr);
        pid_t process = 0;
        if (posix_spawn(&process, path.c_str(), &actions_, &attributes_, words.data(), environ))
            return std::nullopt;
        return process;
    }

private:
    void open(int descriptor, int mode) {
        posix_spawn_file_actions_addopen(&actions_, descriptor, "/dev/null", mode, 0);
    }

    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

/// While it lives, what this process starts may write no more than so many
/// bytes into a file. The limit has to be there before the program begins, and
/// what a process starts inherits the limits that it has at that moment.
class FileSizeLimit {
public:
    explicit FileSizeLimit(std::int64_t bytes) {
        isSet_ = bytes > 0 && getrlimit(RLIMIT_FSIZE, &before_) == 0;
        if (!isSet_) return;
        rlimit lower = before_;
        lower.rlim_cur = std::min(lower.rlim_cur, static_cast<rlim_t>(bytes));
        isSet_ = setrlimit(RLIMIT_FSIZE, &lower) == 0;
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        if (isSet_) setrlimit(RLIMIT_FSIZE, &before_);
    }

private:
    rlimit before_{};
    bool isSet_;
};

std::optional<pid_t> startLimited(const std::string& path, const std::vector<std::string>& arguments,
                                  const ProgramSettings& settings) {
    const FileSizeLimit limit(settings.largestFile);
    return SpawnPlan(settings).start(path, arguments);
}

}  // namespace

bool Host::ask(std::string_view, std::string_view, bool safe) { return safe; }

std::optional<std::string> Host::clipboardText() { return std::nullopt; }

void Host::setClipboardText(std::string_view) {}

std::optional<std::string> Host::chooseFolder(std::string_view, std::string_view) { return std::nullopt; }

void Host::pumpEvents() {}

bool Host::waitForEvent() { return false; }

std::optional<int> Host::readCharacter() { return std::nullopt; }

std::optional<std::string> Host::readLine() { return std::nullopt; }

double Host::clockSeconds() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

std::tm Host::localTime() {
    const std::time_t now = std::time(nullptr);
    std::tm result{};
    localtime_r(&now, &result);
    return result;
}

void Host::sleepMilliseconds(double milliseconds, bool serveEvents) {
    const double end = clockSeconds() + milliseconds / 1000;
    // Slices short enough that a window stays alive while a script waits.
    constexpr double sliceSeconds = 0.01;
    for (double rest = milliseconds / 1000; rest > 0; rest = end - clockSeconds()) {
        checkInterrupt();
        if (serveEvents) pumpEvents();
        std::this_thread::sleep_for(std::chrono::duration<double>(rest < sliceSeconds ? rest : sliceSeconds));
    }
}

std::string Host::startDirectory() {
    std::error_code fault;
    const auto path = std::filesystem::current_path(fault);
    return fault ? "/" : path.string();
}

std::string Host::shareDirectory() { return {}; }

int Host::runCommand(const std::string& command) { return runProgram("/bin/sh", {"-c", toUtf8(command)}); }

std::vector<std::string> Host::helperDirectories() {
    const std::string own = executableDirectory();
    if (own.empty()) return {};
    return {own, std::filesystem::path(own).parent_path() / "libexec/vorpen"};
}

int Host::runProgram(const std::string& path, const std::vector<std::string>& arguments,
                     const ProgramSettings& settings) {
    const KeysEndOnlyTheOther guard;
    const std::optional<pid_t> process = startLimited(path, arguments, settings);
    if (!process) return -1;
    return settings.secondsAllowed > 0 ? waitForStatus(*process, settings.secondsAllowed)
                                       : waitForStatus(*process);
}

std::string executableDirectory() {
    std::array<char, PATH_MAX> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    const std::string_view text(path.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    const std::size_t slash = text.rfind('/');
    return slash == std::string_view::npos ? std::string() : std::string(text.substr(0, slash));
}

}  // namespace vorpen
