// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/key_decoder.h"

#include <gtest/gtest.h>

#include <random>

namespace vorpen {
namespace {

std::string nameOf(const TerminalKey& key) {
    if (key.kind == TerminalKey::Kind::paste) return "paste:" + key.text;
    return std::string(key.control ? "^" : "") + (key.message == KeyKind::down ? "k" : "c") + std::to_string(key.code);
}

/// The keys of some bytes, which come in pieces of a size.
std::vector<std::string> keysOf(std::string_view bytes, std::size_t piece = 1000000) {
    KeyDecoder decoder;
    std::vector<std::string> keys;
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
        decoder.feed(bytes.substr(at, piece));
        while (const auto key = decoder.next()) keys.push_back(nameOf(*key));
    }
    while (const auto key = decoder.next(true)) keys.push_back(nameOf(*key));
    EXPECT_FALSE(decoder.isUnfinished());
    return keys;
}

using Keys = std::vector<std::string>;

TEST(KeyDecoder, CharactersAreWindows1252) {
    EXPECT_EQ(keysOf("a\xC3\xA9\xE2\x82\xAC"), (Keys{"c97", "c233", "c128"}));
    EXPECT_EQ(keysOf("\xF0\x9F\x98\x80"), (Keys{"c63"}));
}

TEST(KeyDecoder, BytesThatAreNoUtf8CountAlone) {
    EXPECT_EQ(keysOf("\xFF\xE9z\xC3"), (Keys{"c255", "c233", "c122", "c195"}));
}

TEST(KeyDecoder, ControlCharacters) {
    EXPECT_EQ(keysOf("\x02\x03\r\n\x7F\b\t"), (Keys{"^c2", "^c3", "c13", "c13", "c8", "c8", "c9"}));
    EXPECT_EQ(keysOf(std::string(1, '\0')), (Keys{"^c0"}));
}

TEST(KeyDecoder, Sequences) {
    EXPECT_EQ(keysOf("\x1b[A\x1b[B\x1b[C\x1b[D"), (Keys{"k38", "k40", "k39", "k37"}));
    EXPECT_EQ(keysOf("\x1bOA\x1bOH\x1bOF"), (Keys{"k38", "k36", "k35"}));
    EXPECT_EQ(keysOf("\x1b[1;5C\x1b[1;5D\x1b[1;2C"), (Keys{"^k39", "^k37", "k39"}));
    EXPECT_EQ(keysOf("\x1b[3~\x1b[1~\x1b[4~\x1b[7~\x1b[8~"), (Keys{"k46", "k36", "k35", "k36", "k35"}));
    EXPECT_EQ(keysOf("\x1b[15~\x1b[20~"), (Keys{"k116", "k120"}));
}

TEST(KeyDecoder, UnknownSequencesAreDropped) {
    EXPECT_EQ(keysOf("\x1b[99~a\x1b[<0;1;1Mb\x1b[[Ac"), (Keys{"c97", "c98", "c99"}));
}

TEST(KeyDecoder, EscapeAlone) {
    EXPECT_EQ(keysOf("\x1b"), (Keys{"c27"}));
    EXPECT_EQ(keysOf("\x1bx"), (Keys{"c27", "c120"}));
    EXPECT_EQ(keysOf("\x1b\x1b[A"), (Keys{"c27", "k38"}));
    KeyDecoder decoder;
    decoder.feed("\x1b");
    EXPECT_FALSE(decoder.next());
    EXPECT_TRUE(decoder.isUnfinished());
    EXPECT_TRUE(decoder.next(true));
}

TEST(KeyDecoder, Pastes) {
    EXPECT_EQ(keysOf("a\x1b[200~x\ny\x1b[A\x1b[201~b"), (Keys{"c97", "paste:x\ny\x1b[A", "c98"}));
    EXPECT_EQ(keysOf("\x1b[200~\x1b[201~"), (Keys{"paste:"}));
    EXPECT_EQ(keysOf("\x1b[200~never ended"), (Keys{"paste:never ended"}));
}

TEST(KeyDecoder, AnyPiecesGiveTheSameKeys) {
    const std::string bytes = "a\xC3\xA9\x1b[1;5C\x1bOA\x1b[200~p\nq\x1b[201~\x1b[3~z\xE2\x82\xAC";
    const Keys whole = keysOf(bytes);
    EXPECT_EQ(whole.size(), 8u);
    for (std::size_t piece = 1; piece < 8; ++piece) EXPECT_EQ(keysOf(bytes, piece), whole) << piece;
}

TEST(KeyDecoder, AnyBytesComeToAnEnd) {
    std::mt19937 random(2);
    for (int round = 0; round < 200; ++round) {
        std::string bytes;
        for (int i = 0; i < 300; ++i)
            bytes += random() % 3 ? static_cast<char>(random()) : "\x1b[O~0;1A2"[random() % 9];
        keysOf(bytes, 1 + random() % 20);
    }
}

TEST(KeyDecoder, ALongPasteIsReadOnce) {
    const std::string text(10000000, 'x');
    EXPECT_EQ(keysOf("\x1b[200~" + text + "\x1b[201~", 65536), (Keys{"paste:" + text}));
}

TEST(KeyDecoder, GivesBackWhatWasNotRead) {
    KeyDecoder decoder;
    decoder.feed("a\rrest");
    static_cast<void>(decoder.next());
    static_cast<void>(decoder.next());
    EXPECT_EQ(decoder.takeRest(), "rest");
    EXPECT_FALSE(decoder.isUnfinished());
}

}  // namespace
}  // namespace vorpen
