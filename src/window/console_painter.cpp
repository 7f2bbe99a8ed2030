// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/console_painter.h"

#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>
#include <algorithm>
#include <cmath>
#include <vector>

#include "base/encoding.h"
#include "console/markup.h"
#include "window/encoding.h"

namespace vorpen {
namespace {

constexpr Colour overflowColour = 0x0000AA;
constexpr std::string_view overflowSign = "\x85";

constexpr int indexPercent = 75;  ///< size of raised and lowered text

/// The letters' size for which a line has a height.
int letterSize(const QFont& face, int height) {
    QFont probe = face;
    constexpr int large = 1000;  // so that rounding does not count
    probe.setPixelSize(large);
    const double line = QFontMetricsF(probe).height();
    return std::max(1, static_cast<int>(std::lround(height * large / std::max(line, 1.0))));
}

QFont consoleFont(int height, char code) {
    QFont font;
    font.setFamilies({"Courier New", "Liberation Mono", "DejaVu Sans Mono", "monospace"});
    font.setStyleHint(QFont::TypeWriter);
    font.setFixedPitch(true);
    font.setWeight(code == '*' ? QFont::Bold : QFont::Normal);
    font.setItalic(code == '/');
    font.setUnderline(code == '=');
    font.setKerning(false);
    const bool isIndex = code == '^' || code == '_';
    font.setPixelSize(letterSize(font, isIndex ? height * indexPercent / 100 : height));
    // A whole number of pixels for each character.
    const double width = QFontMetricsF(font).horizontalAdvance('M');
    font.setLetterSpacing(QFont::AbsoluteSpacing, std::max(1.0, std::round(width)) - width);
    return font;
}

}  // namespace

QRgb rgbOf(Colour colour) {
    return qRgb(static_cast<int>(colour & 0xFF), static_cast<int>(colour >> 8 & 0xFF),
                static_cast<int>(colour >> 16 & 0xFF));
}

void ConsolePainter::setSize(int pixels) {
    size_ = pixels;
    faces_.clear();
    const QFontMetricsF measure(faceOf('.').font);
    metrics_.charWidth = std::max(1, static_cast<int>(std::lround(measure.horizontalAdvance('M'))));
    metrics_.lineHeight =
        std::max({1, pixels, static_cast<int>(std::ceil(measure.ascent() + measure.descent()))});
}

const ConsolePainter::Face& ConsolePainter::faceOf(char code) {
    // Other codes change no more than the colour.
    const char kind = std::string_view("*/=^_$").find(code) == std::string_view::npos ? '.' : code;
    const auto known = faces_.find(kind);
    if (known != faces_.end()) return known->second;
    Face face{consoleFont(size_, kind), 0};
    face.ascent = static_cast<int>(std::lround(QFontMetricsF(face.font).ascent()));
    return faces_.emplace(kind, std::move(face)).first->second;
}

/// Answers the width of the run.
int ConsolePainter::drawRun(QPainter& painter, int x, int y, std::string_view text, char code,
                            Colour colour) {
    const Face& face = faceOf(code);
    const QString shown = code == '$' ? QString::fromStdString(symbolToUtf8(text)) : toQString(text);
    painter.setFont(face.font);
    painter.setPen(QColor(rgbOf(colour)));
    painter.drawText(QPointF(x, y + face.ascent), shown);
    return static_cast<int>(std::lround(QFontMetricsF(face.font).horizontalAdvance(shown)));
}

void ConsolePainter::drawOverflowMark(QPainter& painter, int y, int right) {
    const int x = right - metrics_.charWidth - 1;
    painter.fillRect(x, y, metrics_.charWidth + 1, metrics_.lineHeight, Qt::white);
    drawRun(painter, x, y, overflowSign, '.', overflowColour);
}

void ConsolePainter::drawPlain(QPainter& painter, int x, int y, std::string_view text, Colour colour,
                               int right) {
    const int visible = x < right ? (right - x) / metrics_.charWidth + 1 : 0;
    drawRun(painter, x, y, text.substr(0, static_cast<std::size_t>(visible)), '.', colour);
}

void ConsolePainter::drawMarkedUp(QPainter& painter, int x, int y, std::string_view text, Colour background,
                                  int right) {
    std::vector<TextRun> runs;
    const std::string plain = decode(text, 0, runs);
    struct Piece {
        int x, y;
        std::string_view text;
        char code;
        Colour colour;
    };
    std::vector<Piece> pieces;
    const int startX = x;
    std::size_t begin = 0;
    bool overflows = false;
    for (std::size_t k = 0; k < runs.size() && !overflows; ++k) {
        const TextRun& run = runs[k];
        std::string_view part = std::string_view(plain).substr(begin, run.end - begin);
        begin = run.end;
        if (part.empty()) continue;
        // What lies far beyond the edge is neither measured nor drawn.
        const bool keepsEnd = runs.front().code == '-';
        const auto most = static_cast<std::size_t>(std::max((right - startX) / metrics_.charWidth, 0) + 2);
        if (!keepsEnd && run.code != '^' && run.code != '_') part = part.substr(0, most);
        pieces.push_back({x, y - run.rise * size_ / 8, part, run.code, run.colour});
        const bool sharesPlace = run.code == '_' && k + 1 < runs.size() && runs[k + 1].code == '^';
        if (sharesPlace) continue;
        const Face& face = faceOf(run.code);
        const QString shown = run.code == '$' ? QString::fromStdString(symbolToUtf8(part)) : toQString(part);
        x += static_cast<int>(std::lround(QFontMetricsF(face.font).horizontalAdvance(shown)));
        overflows = x > right && !keepsEnd;
    }
    // The end stays in sight: all is moved left by what is too much.
    const bool losesStart = x > right && !overflows;
    const int shift = losesStart ? right - x - 1 : 0;
    if (background != 0xFFFFFF)
        painter.fillRect(startX, y, std::min(x, right) - startX, metrics_.lineHeight,
                         QColor(rgbOf(background)));
    for (const Piece& piece : pieces)
        drawRun(painter, piece.x + shift, piece.y, piece.text, piece.code, piece.colour);
    if (overflows) drawOverflowMark(painter, y, right);
    if (losesStart) {
        painter.fillRect(0, y, metrics_.charWidth + 1, metrics_.lineHeight, Qt::white);
        drawRun(painter, 0, y, overflowSign, '.', overflowColour);
    }
}

}  // namespace vorpen
