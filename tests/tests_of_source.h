// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// With --source=NAME a test program runs the tests that stand in that file,
// which is how CTest calls it: a process for each file, with one program to
// link.

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <string_view>

namespace vorpen::tests {

inline bool endsWithFile(std::string_view path, std::string_view name) {
    return path.ends_with(name) && (path.size() == name.size() || path[path.size() - name.size() - 1] == '/');
}

/// A filter that selects the tests of one source file; empty when it has none.
inline std::string filterForSource(std::string_view name) {
    std::string filter;
    const auto& all = *testing::UnitTest::GetInstance();
    for (int s = 0; s < all.total_test_suite_count(); ++s) {
        const auto& suite = *all.GetTestSuite(s);
        for (int t = 0; t < suite.total_test_count(); ++t) {
            const auto& test = *suite.GetTestInfo(t);
            if (endsWithFile(test.file(), name))
                filter += std::string(filter.empty() ? "" : ":") + suite.name() + "." + test.name();
        }
    }
    return filter;
}

/// Runs the tests that the command line asks for; answers the exit status.
inline int runTests(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    constexpr std::string_view option = "--source=";
    if (argc > 1 && std::string_view(argv[1]).starts_with(option)) {
        const std::string filter = filterForSource(std::string_view(argv[1]).substr(option.size()));
        if (filter.empty()) {
            std::fprintf(stderr, "no tests in %s\n", argv[1] + option.size());
            return 1;
        }
        testing::GTEST_FLAG(filter) = filter;
    }
    return RUN_ALL_TESTS();
}

}  // namespace vorpen::tests
