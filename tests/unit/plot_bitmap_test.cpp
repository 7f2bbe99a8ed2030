// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/bitmap.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace vorpen {
namespace {

std::string number(std::uint32_t value, int bytes) {
    std::string text;
    for (int k = 0; k < bytes; ++k) text += static_cast<char>(value >> 8 * k);
    return text;
}

/// A file with a header of 40 bytes.
std::string bmp(int width, int height, int bits, const std::string& palette, const std::string& pixels,
                int compression = 0) {
    const auto start = static_cast<std::uint32_t>(54 + palette.size());
    return "BM" + number(0, 4) + number(0, 4) + number(start, 4) + number(40, 4) +
           number(static_cast<std::uint32_t>(width), 4) + number(static_cast<std::uint32_t>(height), 4) +
           number(1, 2) + number(static_cast<std::uint32_t>(bits), 2) +
           number(static_cast<std::uint32_t>(compression), 4) + std::string(20, '\0') + palette + pixels;
}

using Pixels = std::vector<Colour>;

TEST(Bmp, TwentyFourBitsFromTheBottom) {
    // two rows of one pixel, each filled to four bytes
    const auto picture = decodeBmp(bmp(1, 2, 24, "", "\x01\x02\x03X\x04\x05\x06X"));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width, 1);
    EXPECT_EQ(picture->height, 2);
    EXPECT_EQ(picture->pixels, (Pixels{0x040506, 0x010203}));
    EXPECT_EQ(decodeBmp(bmp(1, -2, 24, "", "\x01\x02\x03X\x04\x05\x06X"))->pixels,
              (Pixels{0x010203, 0x040506}));
}

TEST(Bmp, Palettes) {
    const std::string two = number(0x112233, 4) + number(0x445566, 4);
    EXPECT_EQ(decodeBmp(bmp(3, 1, 1, two, "\xA0XXX"))->pixels, (Pixels{0x665544, 0x332211, 0x665544}));
    std::string sixteen;
    for (std::uint32_t k = 0; k < 16; ++k) sixteen += number(k << 16, 4);
    EXPECT_EQ(decodeBmp(bmp(2, 1, 4, sixteen, "\x5FXXX"))->pixels, (Pixels{5, 15}));
    std::string all;
    for (std::uint32_t k = 0; k < 256; ++k) all += number(k << 16, 4);
    EXPECT_EQ(decodeBmp(bmp(1, 1, 8, all, "\xC8XXX"))->pixels, Pixels{200});
}

TEST(Bmp, SixteenAndThirtyTwoBits) {
    EXPECT_EQ(decodeBmp(bmp(2, 1, 16, "", number(0x7C00, 2) + number(0x001F, 2)))->pixels,
              (Pixels{0x0000FF, 0xFF0000}));
    EXPECT_EQ(decodeBmp(bmp(1, 1, 32, "", number(0xFF123456, 4)))->pixels, Pixels{0x563412});
    const std::string masks = number(0xFF, 4) + number(0xFF00, 4) + number(0xFF0000, 4);
    EXPECT_EQ(decodeBmp(bmp(1, 1, 32, masks, number(0x123456, 4), 3))->pixels, Pixels{0x123456});
}

TEST(Bmp, WhatIsNone) {
    const std::string good = bmp(1, 2, 24, "", "\x01\x02\x03X\x04\x05\x06X");
    for (std::size_t length = 0; length < good.size(); ++length)
        EXPECT_FALSE(decodeBmp(std::string_view(good).substr(0, length))) << length;
    EXPECT_FALSE(decodeBmp("GIF89a" + std::string(100, '\0')));
    EXPECT_FALSE(decodeBmp(bmp(1, 1, 7, "", "XXXX")));
    EXPECT_FALSE(decodeBmp(bmp(1, 1, 8, "", "XXXX", 1)));
    EXPECT_FALSE(decodeBmp(bmp(0, 1, 24, "", "XXXX")));
    EXPECT_FALSE(decodeBmp(bmp(-1, 1, 24, "", "XXXX")));
    EXPECT_FALSE(decodeBmp(bmp(2147483647, -2147483647 - 1, 32, "", "XXXX")));
    EXPECT_FALSE(decodeBmp(bmp(65536, 65536, 1, "", "XXXX")));
}

TEST(Bmp, AnyBytesAreReadOrRefused) {
    std::mt19937 random(5);
    for (int k = 0; k < 20000; ++k) {
        std::string file = bmp(1 + static_cast<int>(random() % 4), 1 + static_cast<int>(random() % 4), 8, "",
                               std::string(random() % 80, 'x'));
        for (int changes = 0; changes < 3; ++changes) file[2 + random() % 52] = static_cast<char>(random());
        const auto picture = decodeBmp(file);
        if (picture) {
            EXPECT_EQ(picture->pixels.size(),
                      static_cast<std::size_t>(picture->width) * static_cast<std::size_t>(picture->height));
        }
    }
}

TEST(Bitmap, CutsWhatIsInside) {
    const Bitmap picture{3, 2, {1, 2, 3, 4, 5, 6}};
    EXPECT_EQ(picture.cut(1, 0, 2, 2).pixels, (Pixels{2, 3, 5, 6}));
    EXPECT_EQ(picture.cut(-5, 1, 100, 2147483647).pixels, (Pixels{4, 5, 6}));
    EXPECT_EQ(picture.cut(3, 0, 1, 1).width, 0);
    EXPECT_EQ(picture.cut(0, 0, -1, 1).width, 0);
    EXPECT_TRUE(picture.contains(2, 1));
    EXPECT_FALSE(picture.contains(3, 1));
}

}  // namespace
}  // namespace vorpen
