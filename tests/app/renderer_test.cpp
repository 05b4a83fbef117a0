#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "app/tui/renderer.hpp"
#include "app/tui/width.hpp"
#include "vt_emulator.hpp"

namespace vx::tui {
namespace {

TEST(Width, CombiningWideAndControlCharacters) {
    const std::pair<char32_t, int> cases[] = {
        {U'a', 1}, {U'é', 1}, {0x0301, 0} /* combining acute */, {0x200D, 0} /* zero-width joiner */,
        {U'中', 2}, {0xFF21, 2} /* full-width A */, {0x1F600, 2} /* emoji */, {0xFE0F, 0},
        {U'\t', 0}, {0x1B, 0}, {0x1161, 0} /* Hangul medial vowel */, {0xAC00, 2} /* Hangul syllable */,
    };
    for (auto [c, want] : cases) EXPECT_EQ(codepointWidth(c), want) << std::hex << static_cast<uint32_t>(c);
}

TEST(Screen, WideAndCombiningCharactersNeverLeaveHalfACharacter) {
    Screen screen(6, 1);
    EXPECT_EQ(screen.print(0, 0, "a中b", {}), 4);
    EXPECT_EQ(screen.rowText(0), "a中b  ");
    // Overwriting the right half of the wide character blanks its left half.
    screen.put(2, 0, U'x', {});
    EXPECT_EQ(screen.rowText(0), "a xb  ");
    // A combining mark joins the cell before it.
    int x = screen.print(0, 0, "e\xcc\x81z", {});
    EXPECT_EQ(x, 2);
    EXPECT_EQ(screen.at(0, 0).text, "e\xcc\x81");
    // A wide character that would cross the limit becomes a space.
    EXPECT_EQ(screen.print(4, 0, "中", {}, 5), 5);
    EXPECT_EQ(screen.at(4, 0).text, " ");
    EXPECT_EQ(screen.print(4, 0, "中", {}), 6);
    EXPECT_EQ(screen.at(5, 0).width, 0);
}

TEST(Palette, NearestEntriesOfTheCubeAndTheGreyRamp) {
    EXPECT_EQ(paletteIndex(0, 0, 0), 16);
    EXPECT_EQ(paletteIndex(255, 255, 255), 231);
    EXPECT_EQ(paletteIndex(255, 0, 0), 196);
    EXPECT_EQ(paletteIndex(128, 128, 128), 244);  // grey 128 is nearer 128 than cube level 135
    EXPECT_EQ(paletteIndex(0x5f, 0x87, 0xaf), 16 + 36 * 1 + 6 * 2 + 3);
}

Style randomStyle(std::mt19937& random) {
    static const Color kColors[] = {Color{}, Color::rgb(10, 20, 30), Color::rgb(200, 100, 50), Color::indexed(3)};
    Style style;
    style.foreground = kColors[random() % 4];
    style.background = kColors[random() % 4];
    style.attributes = static_cast<uint8_t>(random() % 64);
    return style;
}

void scribble(Screen& screen, std::mt19937& random, int count) {
    static const char32_t kCharacters[] = {U'a', U'b', U' ', U'中', U'é', 0x0301, U'日', 0x1F600, U'z'};
    for (int i = 0; i < count; ++i) {
        int y = static_cast<int>(random() % static_cast<unsigned>(screen.height()));
        int x = static_cast<int>(random() % static_cast<unsigned>(screen.width()));
        int length = 1 + static_cast<int>(random() % 6);
        Style style = randomStyle(random);
        for (int j = 0; j < length; ++j) x = screen.put(x, y, kCharacters[random() % std::size(kCharacters)], style);
    }
}

// Whatever frames come in whatever order, a terminal fed the renderer's output shows exactly the
// last frame: the diffing may skip cells only when they really are unchanged.
TEST(Renderer, TerminalShowsExactlyEachFrameAfterItsDiffIsApplied) {
    for (ColorMode mode : {ColorMode::TrueColor, ColorMode::Palette256}) {
        std::mt19937 random(7);
        Renderer renderer(mode);
        test::VtEmulator terminal(23, 7);
        Screen frame(23, 7);
        for (int round = 0; round < 200; ++round) {
            scribble(frame, random, round % 5 == 0 ? 30 : 2);
            frame.setCursor(Point{static_cast<int>(random() % 23), static_cast<int>(random() % 7)});
            terminal.feed(renderer.render(frame));
            const Screen& shown = terminal.screen();
            for (int y = 0; y < frame.height(); ++y) {
                ASSERT_EQ(shown.rowText(y), frame.rowText(y)) << "round " << round << " row " << y;
                for (int x = 0; x < frame.width(); ++x) {
                    if (frame.at(x, y).width == 0) continue;
                    Style want = frame.at(x, y).style;
                    if (mode == ColorMode::Palette256) {
                        for (Color* c : {&want.foreground, &want.background})
                            if (c->kind == Color::Kind::Rgb) *c = Color::indexed(paletteIndex(c->r, c->g, c->b));
                    }
                    ASSERT_EQ(shown.at(x, y).style, want) << "round " << round << " at " << x << "," << y;
                }
            }
            EXPECT_EQ(terminal.cursor(), *frame.cursor());
            EXPECT_TRUE(terminal.cursorVisible());
        }
    }
}

TEST(Renderer, SendsOnlyWhatChanged) {
    Renderer renderer;
    Screen frame(80, 24);
    for (int y = 0; y < 24; ++y) frame.print(0, y, std::string(80, 'x'), {Color::rgb(1, 2, 3), {}, kBold});
    std::string first = renderer.render(frame);
    EXPECT_GT(first.size(), 80u * 24u);
    std::string unchanged = renderer.render(frame);
    EXPECT_EQ(unchanged.find('x'), std::string::npos);
    frame.put(40, 12, U'y', {Color::rgb(1, 2, 3), {}, kBold});
    std::string one = renderer.render(frame);
    EXPECT_NE(one.find("\x1b[13;41H"), std::string::npos) << testing::PrintToString(one);
    EXPECT_EQ(std::count(one.begin(), one.end(), 'y'), 1);
    EXPECT_LT(one.size(), 80u);
    // After invalidate() (or a new size) everything is sent again.
    renderer.invalidate();
    EXPECT_GT(renderer.render(frame).size(), 80u * 24u);
}

}  // namespace
}  // namespace vx::tui
