// SPDX-License-Identifier: GPL-3.0-or-later

// Pictures in figures, read from files that are written here.

#include <gtest/gtest.h>

#include <random>

#include "unit/engine_support.h"

namespace vorpen {
namespace {

using testing::TypedEngine;

std::string number(std::uint32_t value, int bytes) {
    std::string text;
    for (int k = 0; k < bytes; ++k) text += static_cast<char>(value >> 8 * k);
    return text;
}

/// Three by two pixels of 24 bits: red, green, blue above white, black, grey.
std::string picture() {
    const std::string red{"\x00\x00\xFF", 3}, green{"\x00\xFF\x00", 3}, blue{"\xFF\x00\x00", 3},
        white{"\xFF\xFF\xFF", 3}, black(3, '\0'), grey{"\x80\x80\x80", 3}, filler(3, '\0');
    return "BM" + number(78, 4) + number(0, 4) + number(54, 4) + number(40, 4) + number(3, 4) + number(2, 4) +
           number(1, 2) + number(24, 2) + std::string(24, '\0') + white + black + grey + filler + red +
           green + blue + filler;
}

class Pictures : public ::testing::Test {
protected:
    Pictures() {
        engine.folder.write("flag.bmp", picture());
        engine.type("figure;");
    }
    std::string type(const std::string& line) { return engine.type(line); }
    TypedEngine engine;
};

TEST_F(Pictures, AreLoadedAsItems) {
    EXPECT_EQ(type("loadBitmap(\"flag\")"), "1 3 2");
    EXPECT_EQ(type("loadBitmap(\"flag.bmp\")"), "2 3 2");
    EXPECT_EQ(type("axis([])"), "0 1 0 1");
}

TEST_F(Pictures, GiveTheFrameAUnitForAPixel) {
    EXPECT_EQ(type("loadBitmap(\"flag\", 1)"), "1 3 2");
    EXPECT_EQ(type("axis([])"), "0 3 -2 0");
    EXPECT_EQ(figureList().find(1)->currentFrame().plotArea(), wholeBox);
}

TEST_F(Pictures, HaveColoursWithRedHigh) {
    type("loadBitmap(\"flag\");");
    EXPECT_EQ(type("getpixel(1,[0,0])"), "16711680");
    EXPECT_EQ(type("getpixel(1,[1,0])"), "65280");
    EXPECT_EQ(type("getpixel(1,[2,0])"), "255");
    EXPECT_EQ(type("getpixel(1,[0,1])"), "16777215");
    EXPECT_EQ(type("getpixel(1,[2,1])"), "8421504");
    for (const char* place : {"[3,0]", "[0,2]", "[-1,0]", "[1e300,0]", "[0,-inf]"})
        EXPECT_EQ(type(std::string("getpixel(1,") + place + ")"), "in getpixel: no such pixel in the bitmap");
}

TEST_F(Pictures, AreCut) {
    type("loadBitmap(\"flag\");");
    EXPECT_EQ(type("snipImage(1,[1,0,2,1])"), "2");
    EXPECT_EQ(type("getpixel(2,[0,0])"), "65280");
    EXPECT_EQ(type("getpixel(2,[1,0])"), "255");
    EXPECT_EQ(type("snipImage(1,[2,1,100,100],[5,6])"), "3");
    const auto* part = figureList().find(1)->frame(0).findItem<MyBitmap>(3);
    ASSERT_NE(part, nullptr);
    EXPECT_EQ(part->picture.width, 1);
    EXPECT_EQ(part->x, 5);
    EXPECT_EQ(part->y, 6);
    EXPECT_EQ(type("snipImage(1,[0,0,1,1],1)"), "4");
    EXPECT_TRUE(figureList().find(1)->frame(0).findItem<MyBitmap>(4)->transparent);
}

TEST_F(Pictures, CutsThatCannotBe) {
    type("loadBitmap(\"flag\");");
    for (const char* part : {"[0,0,0,1]", "[3,0,1,1]", "[0,0,-1,1]", "[0,0,1]", "[nan,nan,nan,nan]",
                             "[1e300,0,1e300,1]", "[-1e300,0,1,1]", "[]"})
        EXPECT_EQ(type(std::string("snipImage(1,") + part + ")"), "in snipImage: invalid parameters") << part;
    EXPECT_EQ(type("snipImage(1,[0,0,1,1],[1,2,3])"), "in snipImage: third argument must have 1 or 2 values");
    EXPECT_EQ(type("snipImage(1,[0,0,1,1],[])"), "in snipImage: third argument must have 1 or 2 values");
}

TEST_F(Pictures, AFileCutAnywhereIsRefused) {
    const std::string whole = picture();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        engine.folder.write("cut.bmp", whole.substr(0, length));
        ASSERT_EQ(type("loadBitmap(\"cut\")"), "in loadBitmap: bitmap failed to load") << length;
    }
}

TEST_F(Pictures, AnyDamagedByteIsRefusedOrRead) {
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        std::string bytes = picture();
        for (int k = 0; k < 3; ++k) bytes[random() % 60] = static_cast<char>(random());
        engine.folder.write("bad.bmp", bytes);
        const std::string shown = type("loadBitmap(\"bad\");");
        EXPECT_TRUE(shown.empty() || shown == "in loadBitmap: bitmap failed to load") << shown;
    }
    EXPECT_EQ(type("print \"fig\""), "1");
}

TEST_F(Pictures, AFolderIsNone) {
    EXPECT_EQ(type("loadBitmap(\".\")"), "in loadBitmap: bitmap failed to load");
}

}  // namespace
}  // namespace vorpen
