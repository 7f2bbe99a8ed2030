// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/host.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

extern char** environ;

namespace vorpen {
namespace {

int waitForStatus(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0)
        if (errno != EINTR) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
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
        if (serveEvents) pumpEvents();
        std::this_thread::sleep_for(std::chrono::duration<double>(rest < sliceSeconds ? rest : sliceSeconds));
    }
}

std::string Host::startDirectory() {
    std::error_code fault;
    const auto path = std::filesystem::current_path(fault);
    return fault ? "/" : path.string();
}

int Host::runCommand(const std::string& command) { return runProgram("/bin/sh", {"-c", command}); }

int Host::runProgram(const std::string& path, const std::vector<std::string>& arguments) {
    std::vector<char*> words{const_cast<char*>(path.c_str())};
    for (const auto& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    pid_t process = 0;
    const int fault = posix_spawn(&process, path.c_str(), &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return fault ? -1 : waitForStatus(process);
}

}  // namespace vorpen
