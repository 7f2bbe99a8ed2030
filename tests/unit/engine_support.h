// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// An engine that a test types into, with a folder of its own.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "console/terminal_text.h"
#include "engine/calc.h"
#include "plot/figure_list.h"
#include "terminal/typed_session.h"
#include "test_host.h"

namespace vorpen::testing {

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = std::filesystem::temp_directory_path() / "vorpen-test-XXXXXX";
        path_ = std::filesystem::canonical(mkdtemp(name.data()));
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] std::string path() const { return path_.string(); }
    void write(const std::string& name, const std::string& bytes) const {
        std::ofstream(path_ / name, std::ios::binary) << bytes;
    }

private:
    std::filesystem::path path_;
};

class TypedEngine {
public:
    TypedEngine()
        : host(folder.path()), calc(host, true), session_(calc, false, [this](const std::string& line) {
              shown_ += (shown_.empty() ? "" : " | ") + terminalText(line, false);
          }) {}

    /// What the console shows for a line, blanks at the ends dropped; lines
    /// are parted by " | ".
    std::string type(const std::string& line) {
        shown_.clear();
        session_.typeLine(line);
        session_.finishOutput();
        const std::size_t first = shown_.find_first_not_of(' ');
        return first == std::string::npos ? ""
                                          : shown_.substr(first, shown_.find_last_not_of(' ') - first + 1);
    }

    TemporaryFolder folder;
    TestHost host;
    Calc calc;

private:
    std::string shown_;
    TypedSession session_;
};

}  // namespace vorpen::testing
