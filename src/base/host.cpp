// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/host.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include "base/encoding.h"
#include "base/interrupt.h"

extern char** environ;

namespace vorpen {
namespace {

int waitForStatus(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0)
        if (errno != EINTR) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
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
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
}

}  // namespace

bool Host::ask(std::string_view, std::string_view, bool safe) { return safe; }

std::optional<std::string> Host::clipboardText() { return std::nullopt; }

void Host::setClipboardText(std::string_view) {}

std::optional<std::string> Host::chooseFolder(std::string_view, std::string_view) { return std::nullopt; }

void Host::pumpEvents() {}

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

int Host::runProgram(const std::string& path, const std::vector<std::string>& arguments) {
    std::vector<char*> words{const_cast<char*>(path.c_str())};
    for (const auto& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    setDefaultSignals(attributes);
    const KeysEndOnlyTheOther guard;
    pid_t process = 0;
    const int fault = posix_spawn(&process, path.c_str(), &actions, &attributes, words.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return fault ? -1 : waitForStatus(process);
}

}  // namespace vorpen
