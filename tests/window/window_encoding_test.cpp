// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/encoding.h"

namespace vorpen {
namespace {

TEST(WindowEncoding, bytesAreOfTheWesternCodePage) {
    EXPECT_EQ(toQString("\x80 \xB5m"), QString::fromUtf8("€ µm"));
    EXPECT_EQ(fromQString(QString::fromUtf8("€ µm")), "\x80 \xB5m");
}

TEST(WindowEncoding, aCharacterWithoutAByteIsAQuestionMark) {
    EXPECT_EQ(fromQString(QString::fromUtf8("中")), "?");
}

}  // namespace
}  // namespace vorpen
