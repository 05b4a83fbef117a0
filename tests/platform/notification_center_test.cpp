#include "platform/notification_center.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/run_loop.hpp"

namespace vx {
namespace {

using namespace std::chrono_literals;

TEST(NotificationCenter, ObserversMatchByNameAndObject) {
    NotificationCenter center;
    int document = 0, other = 0;
    std::vector<std::string> seen;
    auto byName = center.addObserver("com.vellumexapp.lineendingchanged", nullptr,
                                     [&](const Notification& n) { seen.push_back("name:" + n.name); });
    auto byObject = center.addObserver("", &document, [&](const Notification& n) { seen.push_back("object:" + n.name); });
    auto both = center.addObserver("com.vellumexapp.fileencodingchanged", &document, [&](const Notification& n) {
        seen.push_back("both:" + std::to_string(n.userInfo.at("encoding").integerValue().value_or(-1)));
    });

    center.postNotificationName("com.vellumexapp.lineendingchanged", &other);
    center.postNotificationName("com.vellumexapp.fileencodingchanged", &document, {{"encoding", 4}});
    center.postNotificationName("unrelated", &other);
    EXPECT_EQ(seen, (std::vector<std::string>{"name:com.vellumexapp.lineendingchanged",
                                              "object:com.vellumexapp.fileencodingchanged", "both:4"}));
}

TEST(NotificationCenter, TokensRemoveObserversEvenDuringAPost) {
    NotificationCenter center;
    int calls = 0;
    ObserverToken second;
    auto first = center.addObserver("n", nullptr, [&](const Notification&) {
        ++calls;
        second.reset();  // removes the next observer before it is called
    });
    second = center.addObserver("n", nullptr, [&](const Notification&) { calls += 100; });
    center.postNotificationName("n", nullptr);
    EXPECT_EQ(calls, 1);
    {
        auto scoped = center.addObserver("n", nullptr, [&](const Notification&) { calls += 10; });
    }
    center.removeObserver(first);
    center.postNotificationName("n", nullptr);
    EXPECT_EQ(calls, 1);
}

TEST(NotificationCenter, ObserversWithARunLoopHearOnItsTurn) {
    NotificationCenter& center = NotificationCenter::defaultCenter();
    int heard = 0;
    auto token = center.addObserver("posted-later", nullptr, [&](const Notification&) { ++heard; }, &RunLoop::main());
    center.postNotificationName("posted-later", nullptr);
    EXPECT_EQ(heard, 0);
    EXPECT_TRUE(RunLoop::main().runUntil([&] { return heard == 1; }, 2s));
}

}  // namespace
}  // namespace vx
