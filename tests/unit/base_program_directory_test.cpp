// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/program_directory.h"

#include <gtest/gtest.h>

#include "base/line_ends.h"

namespace vorpen {
namespace {

ProgramPlaces allPlaces() {
    ProgramPlaces places;
    places.home = "/given";
    places.executableDirectory = "/home/ada/vorpen/build/bin";
    places.executableDirectoryWritable = true;
    places.userData = "/home/ada/data";
    places.userHome = "/home/ada";
    places.startDirectory = "/tmp";
    return places;
}

TEST(ProgramDirectory, GivenOneComesFirst) { EXPECT_EQ(chooseProgramDirectory(allPlaces()), "/given"); }

TEST(ProgramDirectory, ThenThatOfTheExecutable) {
    auto places = allPlaces();
    places.home.reset();
    EXPECT_EQ(chooseProgramDirectory(places), "/home/ada/vorpen/build/bin");
}

TEST(ProgramDirectory, UnlessItCannotBeWritten) {
    auto places = allPlaces();
    places.home.reset();
    places.executableDirectoryWritable = false;
    EXPECT_EQ(chooseProgramDirectory(places), "/home/ada/data/vorpen");
}

TEST(ProgramDirectory, UnlessItBelongsToTheSystem) {
    auto places = allPlaces();
    places.home.reset();
    for (const char* directory : {"/usr/bin", "/usr/local/bin", "/opt/vorpen/bin", "/bin", "/usr"}) {
        places.executableDirectory = directory;
        EXPECT_EQ(chooseProgramDirectory(places), "/home/ada/data/vorpen") << directory;
    }
    places.executableDirectory = "/usrs/ada";
    EXPECT_EQ(chooseProgramDirectory(places), "/usrs/ada");
}

TEST(ProgramDirectory, UserDataHasADefault) {
    auto places = allPlaces();
    places.home.reset();
    places.executableDirectory.clear();
    places.userData.clear();
    EXPECT_EQ(chooseProgramDirectory(places), "/home/ada/.local/share/vorpen");
    places.userData = "relative";
    EXPECT_EQ(chooseProgramDirectory(places), "/home/ada/.local/share/vorpen");
    places.userHome.clear();
    EXPECT_EQ(chooseProgramDirectory(places), "/tmp");
}

TEST(ClipboardLineEnds, EveryLineEndBecomesTwoCharacters) {
    EXPECT_EQ(withClipboardLineEnds("a\nb\r\nc\rd"), "a\r\nb\r\nc\r\nd");
    EXPECT_EQ(withClipboardLineEnds("\n\n"), "\r\n\r\n");
    EXPECT_EQ(withClipboardLineEnds(""), "");
}

}  // namespace
}  // namespace vorpen
