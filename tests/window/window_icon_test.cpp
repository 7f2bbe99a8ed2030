// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/icon.h"

namespace vorpen {
namespace {

TEST(WindowIcon, hasAPictureForEachUsualSize) {
    const QIcon icon = programIcon();
    for (const int size : {16, 32, 48, 64, 256})
        EXPECT_TRUE(icon.availableSizes().contains(QSize(size, size))) << size;
}

TEST(WindowIcon, showsAWhiteCurveWithItsLowestPointOnABlueTile) {
    for (const int size : {16, 256}) {
        const QImage picture = programIcon().pixmap(size, size).toImage();
        ASSERT_EQ(picture.size(), QSize(size, size));
        const QColor point = picture.pixelColor(size / 2, size * 46 / 64), tile = picture.pixelColor(size / 2, size / 8);
        EXPECT_GT(point.red(), 200);
        EXPECT_LT(point.blue(), 100);
        EXPECT_GT(tile.blue(), 120);
        EXPECT_LT(tile.red(), 100);
        const QColor curve = picture.pixelColor(size * 7 / 32, size * 9 / 32);
        EXPECT_GT(curve.red(), 200);
        EXPECT_GT(curve.green(), 200);
    }
}

}  // namespace
}  // namespace vorpen
