// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The host of the tests: answers from a script and records what it was asked.

#include <algorithm>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/encoding.h"
#include "base/host.h"

namespace vorpen {

class TestHost final : public Host {
public:
    struct Box {
        std::string title, text;
        bool operator==(const Box&) const = default;
    };

    explicit TestHost(std::string directory) : directory_(std::move(directory)) {}

    // What the program asked for, in order.
    std::vector<Box> boxes;
    std::vector<Box> questions;

    // What it is answered. An exhausted list of answers stands for a user who
    // is not there.
    std::deque<bool> answers;
    std::deque<std::string> typedLines;  ///< in UTF-8
    std::optional<std::string> clipboard;
    std::deque<std::string> folders;
    std::string share;  ///< the directory of what comes with the program

    /// Where helper programs are looked for beside the directory.
    std::vector<std::string> helperPlaces;
    /// Cuts the time that programs are allowed to this many seconds.
    double secondsForPrograms = 1e9;
    std::deque<std::function<void()>> events;  ///< of windows, served one at a time

    void messageBox(std::string_view title, std::string_view text) override {
        boxes.push_back({std::string(title), std::string(text)});
    }

    bool ask(std::string_view title, std::string_view text, bool safe) override {
        questions.push_back({std::string(title), std::string(text)});
        return take(answers).value_or(safe);
    }

    std::optional<std::string> clipboardText() override { return clipboard; }
    void setClipboardText(std::string_view text) override { clipboard = text; }

    std::optional<std::string> chooseFolder(std::string_view title, std::string_view start) override {
        questions.push_back({std::string(title), std::string(start)});
        return take(folders);
    }

    bool waitForEvent() override {
        const auto event = take(events);
        if (event) (*event)();
        return event.has_value();
    }
    void pumpEvents() override { (void)waitForEvent(); }

    std::optional<int> readCharacter() override {
        if (typedLines.empty()) return std::nullopt;
        std::string line = fromUtf8(typedLines.front());
        if (line.empty()) {
            typedLines.pop_front();
            return '\n';
        }
        const int code = static_cast<unsigned char>(line[0]);
        typedLines.front() = toUtf8(std::string_view(line).substr(1));
        return code;
    }

    std::optional<std::string> readLine() override {
        auto line = take(typedLines);
        return line ? std::optional(fromUtf8(*line)) : std::nullopt;
    }

    /// Time passes without anyone waiting for it.
    void sleepMilliseconds(double milliseconds, bool serveEvents) override {
        if (serveEvents) pumpEvents();
        slept_ += milliseconds / 1000;
    }
    double clockSeconds() override { return Host::clockSeconds() + slept_; }

    std::vector<std::string> helperDirectories() override { return helperPlaces; }

    int runProgram(const std::string& path, const std::vector<std::string>& arguments,
                   const ProgramSettings& settings) override {
        ProgramSettings shorter = settings;
        shorter.secondsAllowed = std::min(shorter.secondsAllowed, secondsForPrograms);
        return Host::runProgram(path, arguments, shorter);
    }

    std::string startDirectory() override { return directory_; }
    std::string programDirectory() override { return directory_; }
    std::string shareDirectory() override { return share; }

private:
    template <class T>
    static std::optional<T> take(std::deque<T>& list) {
        if (list.empty()) return std::nullopt;
        T first = std::move(list.front());
        list.pop_front();
        return first;
    }

    std::string directory_;
    double slept_ = 0;
};

}  // namespace vorpen
