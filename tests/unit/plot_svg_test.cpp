// SPDX-License-Identifier: GPL-3.0-or-later

// The characters of a figure file.

#include <gtest/gtest.h>

#include "plot/svg_surface.h"

namespace vorpen {
namespace {

/// What a drawing writes behind the head of the file.
template <class Draw>
std::string body(Draw draw) {
    std::string out;
    SvgSurface surface(out, 570, 406);
    const std::size_t head = out.size();
    draw(surface);
    return out.substr(head);
}

PlotStyle redStyle() {
    PlotStyle style;
    style.lineColour = 0x0000AA;
    style.width = 3;
    style.fillColour = 0xC8FFFE;
    return style;
}

TEST(Svg, HeadAndEndOfAFile) {
    std::string out;
    SvgSurface surface(out, 570, 406);
    surface.finish();
    EXPECT_EQ(out,
              "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\n"
              "<svg width=\"570\" height=\"406\"\n"
              "xmlns=\"http://www.w3.org/2000/svg\" stroke=\"black\"  stroke-width=\"1\" "
              "stroke-linecap=\"round\" stroke-linejoin=\"round\" fill=\"none\"\n"
              ">\n"
              "</svg>\n");
}

TEST(Svg, TextIsAppendedToWhatStandsThere) {
    std::string out = "before";
    SvgSurface(out, 1, 1).finish();
    EXPECT_TRUE(out.starts_with("before<?xml"));
}

TEST(Svg, ClipPathOfAFrame) {
    EXPECT_EQ(body([](SvgSurface& s) {
                  s.beginFrame({12, {}, {57, 8, 541, 345}, {}, 0});
              }),
              "<clipPath id = \"myClip12\"> <rect x = \"57\" y = \"8\" width = \"484\" height = \"337\"/> "
              "</clipPath>\n");
}

TEST(Svg, Groups) {
    EXPECT_EQ(body([](SvgSurface& s) {
                  s.beginStroke(redStyle());
                  s.endGroup(GroupEnd::Line);
              }),
              "<svg stroke=\"rgb(170,0,0)\" stroke-width=\"3\">\n</svg>\n");
    EXPECT_EQ(body([](SvgSurface& s) {
                  s.beginStrokeAndFill(redStyle());
                  s.endGroup(GroupEnd::Bare);
              }),
              "<svg stroke=\"rgb(170,0,0)\" stroke-width=\"3\" fill=\"rgb(254,255,200)\">\n</svg>");
}

TEST(Svg, GroupsLeftOpenAreClosedAtTheEnd) {
    EXPECT_EQ(
        body([](SvgSurface& s) {
            s.beginStroke(redStyle());
            s.endGroup(GroupEnd::LeftOpen);
            s.beginStroke(redStyle());
            s.endGroup(GroupEnd::LeftOpen);
            s.finish();
        }),
        "<svg stroke=\"rgb(170,0,0)\" stroke-width=\"3\">\n<svg stroke=\"rgb(170,0,0)\" stroke-width=\"3\">\n"
        "</svg>\n</svg>\n</svg>\n");
}

TEST(Svg, Lines) {
    const std::vector<Pixel> points = {{1, -2}, {300, 4}, {-32768, 32767}};
    EXPECT_EQ(body([&](SvgSurface& s) { s.polyline(std::span(points).first(2)); }),
              "<line x1=\"1\" y1=\"-2\" x2=\"300\" y2=\"4\"></line>\n");
    EXPECT_EQ(
        body([&](SvgSurface& s) { s.polyline(points); }),
        "<polyline points=\"\n1 -2, 300 4, -32768 32767, \n\" clip-path=\"url(#myClip0)\"></polyline>\n");
    EXPECT_EQ(
        body([&](SvgSurface& s) {
            s.beginFrame({3, {}, {0, 0, 0, 0}, {}, 0});
            s.polygon(std::span(points).first(1));
        }),
        "<clipPath id = \"myClip3\"> <rect x = \"0\" y = \"0\" width = \"0\" height = \"0\"/> </clipPath>\n"
        "<polygon points=\"\n1 -2, \n\" clip-path=\"url(#myClip3)\"></polygon>\n");
}

TEST(Svg, NumbersOfAllLengths) {
    std::vector<Pixel> points;
    std::string expected;
    for (const int n : {0, 9, 10, 99, 100, 999, 1000, 9999, 32767, -1, -32768, 65535}) {
        points.push_back({n, -n});
        expected += std::to_string(n) + " " + std::to_string(-n) + ", ";
    }
    EXPECT_EQ(body([&](SvgSurface& s) { s.polyline(points); }),
              "<polyline points=\"\n" + expected + "\n\" clip-path=\"url(#myClip0)\"></polyline>\n");
}

TEST(Svg, ALongLineIsWrittenWhole) {
    std::vector<Pixel> points(5000);
    std::string expected;
    for (int k = 0; k < 5000; ++k) {
        points[static_cast<std::size_t>(k)] = {k, k - 2500};
        expected += std::to_string(k) + " " + std::to_string(k - 2500) + ", ";
    }
    EXPECT_EQ(body([&](SvgSurface& s) { s.polyline(points); }),
              "<polyline points=\"\n" + expected + "\n\" clip-path=\"url(#myClip0)\"></polyline>\n");
}

TEST(Svg, Shapes) {
    EXPECT_EQ(body([](SvgSurface& s) {
                  s.box({57, 8, 541, 345}, true);
              }),
              "<rect x = \"57\" y = \"8\" width = \"484\"  height = \"337\"/>\n");
    EXPECT_EQ(body([](SvgSurface& s) {
                  s.bar({1, 2, 4, 8});
              }),
              "<rect x=\"1\" y=\"2\" width =\"3\" height=\"6\"></rect>\n");
    EXPECT_EQ(body([](SvgSurface& s) { s.circle({1, 2}, 3); }), "<circle cx=\"1\" cy=\"2\" r=\"3\"/>\n");
}

TEST(Svg, TextGroups) {
    const auto group = [](TextAnchor anchor, TextBaseline baseline) {
        return body([&](SvgSurface& s) {
            s.beginText({anchor, baseline});
            s.endText();
        });
    };
    EXPECT_EQ(group(TextAnchor::End, TextBaseline::Alphabetic),
              "<svg style=\"fill: #000000; stroke: none; text-anchor:end; dominant-baseline:auto; "
              "xml-space:preserve\">\n</svg>\n");
    EXPECT_EQ(group(TextAnchor::Middle, TextBaseline::Middle),
              "<svg style=\"fill: #000000; stroke: none; text-anchor:middle; dominant-baseline:middle; "
              "xml-space:preserve\">\n</svg>\n");
    EXPECT_EQ(group(TextAnchor::Start, TextBaseline::Top),
              "<svg style=\"fill: #000000; stroke: none; text-anchor:start; dominant-baseline:hanging; "
              "xml-space:preserve\">\n</svg>\n");
}

std::string textElement(std::string_view bytes, Face face = Face::Times) {
    Font font;
    font.face = face;
    const std::string element = body([&](SvgSurface& s) { s.text({5, 7}, bytes, font, 0x0000AA); });
    constexpr std::string_view front = "<text x=\"5\" y=\"7\" xml:space=\"preserve\">\n", back = "</text>\n";
    EXPECT_TRUE(element.starts_with(front) && element.ends_with(back)) << element;
    return element.substr(front.size(), element.size() - front.size() - back.size());
}

TEST(Svg, TextIsEscapedUtf8) {
    EXPECT_EQ(textElement("a<b & c>d \"e\" 'f'"), "a&lt;b &amp; c&gt;d \"e\" 'f'");
    EXPECT_EQ(textElement("caf\xE9 \x80"), "caf\xC3\xA9 \xE2\x82\xAC");
    EXPECT_EQ(textElement("a\xA3\xA5", Face::Symbol), "α≤∞");
    EXPECT_EQ(textElement("<", Face::Symbol), "&lt;");
}

TEST(Svg, BytesThatNoXmlMayHoldAreReplaced) {
    EXPECT_EQ(textElement(std::string_view("a\0b\x1F\t\x7F", 6)),
              "a\xEF\xBF\xBD"
              "b\xEF\xBF\xBD\t\x7F");
    EXPECT_EQ(textElement("\xEF\xBF\xBF!"), "\xEF\xBF\xBD!");
}

TEST(Svg, TurnedText) {
    EXPECT_EQ(
        body([](SvgSurface& s) {
            s.beginText({TextAnchor::End, TextBaseline::Middle, 90});
            s.text({20, 190}, "up", {}, 0);
            s.endText();
            s.beginText({});
            s.text({1, 2}, "flat", {}, 0);
            s.endText();
        }),
        "<svg style=\"fill: #000000; stroke: none; text-anchor:end; dominant-baseline:middle; "
        "xml-space:preserve\">\n"
        "<text x=\"20\" y=\"190\" xml:space=\"preserve\" transform=\"translate(-170,190) rotate(-90)\">\n"
        "up</text>\n</svg>\n"
        "<svg style=\"fill: #000000; stroke: none; text-anchor:start; dominant-baseline:auto; "
        "xml-space:preserve\">\n"
        "<text x=\"1\" y=\"2\" xml:space=\"preserve\">\nflat</text>\n</svg>\n");
}

TEST(Svg, WidthsAreThoseOfAViewersFont) {
    std::string out;
    const SvgSurface surface(out, 1, 1);
    // a file does not carry the size of a text, so it does not count
    EXPECT_EQ(surface.textWidth("x", selectFont(Face::Times, 40, '.', 0)), 8);
    EXPECT_EQ(surface.textWidth("W", selectFont(Face::Times, 20, '*', 0)), 15);
    EXPECT_EQ(surface.textWidth(std::string(100000, 'W'), {}), 32767);
}

}  // namespace
}  // namespace vorpen
