// Collecting re-parsed ranges and handing them to the view; the colouring order; line markers.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <random>
#include <thread>

#include "platform/run_loop.hpp"
#include "syntax/coloring_order.hpp"
#include "syntax/invalidation_manager.hpp"
#include "syntax/line_marker.hpp"

namespace vx::test {
namespace {

TEST(Invalidation, RangesMergeAndFollowEdits) {
    EXPECT_EQ(mergeRanges({{10, 5}, {0, 3}, {3, 2}, {14, 6}, {30, 0}, {40, 1}}),
              (std::vector<Range>{{0, 5}, {10, 10}, {40, 1}}));

    RunLoop loop;
    VXTextAttributeInvalidationManager manager(&loop);
    manager.addRange({0, 10});
    manager.addRange({20, 5});
    manager.addRange({50, 5});
    manager.addRange({10, 2});  // touches the first
    EXPECT_EQ(manager.pendingRanges(), (std::vector<Range>{{0, 12}, {20, 5}, {50, 5}}));
    // Three characters replaced by eight inside the second range; the third moves by five.
    manager.noteEdit({21, 3}, 5);
    EXPECT_EQ(manager.pendingRanges(), (std::vector<Range>{{0, 12}, {20, 10}, {55, 5}}));
    // A deletion that swallows a range: no characters of it are left to colour.
    manager.noteEdit({18, 15}, -15);
    EXPECT_EQ(manager.pendingRanges(), (std::vector<Range>{{0, 12}, {40, 5}}));
}

// A keystroke at many carets reaches the waiting ranges as one list of edits: the result must be
// the one the edits give one by one, whatever the ranges and edits (inside, across, between).
TEST(Invalidation, EditsInOnePassFollowTheSameRulesAsOneByOne) {
    std::mt19937 random(17);
    RunLoop loop;
    for (int round = 0; round < 300; ++round) {
        VXTextAttributeInvalidationManager batched(&loop), single(&loop);
        uint64_t at = 0;
        for (int i = 0; i < 8; ++i) {
            at += random() % 12;
            const Range r{at, 1 + random() % 10};
            batched.addRange(r);
            single.addRange(r);
            at = r.end();
        }
        std::vector<VXTextAttributeInvalidationManager::Edit> edits;
        uint64_t length = at + 20, next = 0;
        for (int i = 0; i < 6 && next < length; ++i) {
            const uint64_t location = next + random() % 8;
            if (location > length) break;
            const uint64_t removed = std::min<uint64_t>(random() % 6, length - location);
            const int64_t change = static_cast<int64_t>(random() % 5) - static_cast<int64_t>(removed);
            edits.push_back({{location, removed}, change});
            next = static_cast<uint64_t>(static_cast<int64_t>(location + removed) + change);
            length = static_cast<uint64_t>(static_cast<int64_t>(length) + change);
        }
        batched.noteEdits(edits);
        for (const auto& edit : edits) single.noteEdit(edit.oldRange, edit.changeInLength);
        ASSERT_EQ(batched.pendingRanges(), single.pendingRanges()) << "round " << round;
    }
}

TEST(Invalidation, DeliveredLaterOnTheLoopVisibleFirst) {
    RunLoop loop;
    VXTextAttributeInvalidationManager manager(&loop);
    std::vector<std::vector<Range>> deliveries;
    manager.setDelegate([&](const std::vector<Range>& ranges) { deliveries.push_back(ranges); });
    manager.setVisibleRange({100, 50});
    // Reports from another thread, many lines in a row.
    std::thread parser([&] {
        for (uint64_t line = 0; line < 20; ++line) manager.didParseRange({line * 10, 10}, false);
        manager.didParseRange({120, 5}, false);
        manager.didParseRange({500, 5}, true);  // clean: nothing to colour
    });
    parser.join();
    EXPECT_TRUE(deliveries.empty()) << "delivered before the loop turned";
    loop.runOnce(std::chrono::milliseconds(0));
    ASSERT_EQ(deliveries.size(), 1u);
    EXPECT_EQ(deliveries[0], (std::vector<Range>{{0, 200}}));

    manager.didParseRange({0, 10}, false);
    manager.didParseRange({130, 10}, false);
    manager.didParseRange({300, 10}, false);
    loop.runOnce(std::chrono::milliseconds(0));
    ASSERT_EQ(deliveries.size(), 2u);
    EXPECT_EQ(deliveries[1], (std::vector<Range>{{130, 10}, {0, 10}, {300, 10}}));
}

TEST(ColoringOrder, VisibleLinesFarAheadOfTheWalkComeFirst) {
    VXColoringOrder order;
    EXPECT_EQ(order.linesAhead(0, 10000).length, 0u);  // nothing shown
    order.setVisibleLines(5000, 40);
    EXPECT_EQ(order.linesAhead(0, 10000), (Range{5000, 40 + VXColoringOrder::kLookahead}));
    EXPECT_EQ(order.linesAhead(5010, 10000).length, 0u);  // the walk is there already
    EXPECT_EQ(order.linesAhead(4900, 10000).length, 0u);  // within a turn of it
    EXPECT_EQ(order.linesAhead(0, 5020), (Range{5000, 20}));  // the document ends first
}

TEST(LineMarker, ReadersWaitForAPendingLine) {
    VXSyntaxLineMarker marker;
    marker.holdFuture();
    marker.holdFuture();  // holding twice is holding once
    std::atomic<bool> done = false;
    std::thread reader([&] {
        marker.lineZones();
        done = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(done);
    EXPECT_FALSE(marker.currentZones().has_value());  // never parsed
    marker.releaseFuture();
    reader.join();
    EXPECT_TRUE(done);
}

TEST(LineMarker, LocationsAndIndexMap) {
    VXSyntaxLineMarker marker;
    marker.setLocations({10, 6}, {10, 4});  // "ab😀" then CR LF
    EXPECT_EQ(marker.conventionalRange(), (Range{10, 6}));
    EXPECT_EQ(marker.contentRange(), (Range{10, 4}));
    marker.offsetLocationsBy(-10);
    EXPECT_EQ(marker.range(), (Range{0, 6}));
    const std::u16string text = u"ab\U0001F600\r\n";
    const auto& map = marker.makeUnicodeMap(text.data(), text.size());
    EXPECT_EQ(map.utf8OffsetForUtf16(2), 2u);
    EXPECT_EQ(map.utf8OffsetForUtf16(4), 6u);
    marker.recycleIndexMap();
    EXPECT_EQ(marker.indexMap(), nullptr);
}

}  // namespace
}  // namespace vx::test
