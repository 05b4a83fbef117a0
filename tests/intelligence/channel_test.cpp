#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <fstream>
#include <thread>

#include "intelligence/burrower_channel.hpp"
#include "support/temp_dir.hpp"

namespace vx {
namespace {

VXBurrowerMessage message(const std::string& object, const std::string& kind, const std::string& contents = "") {
    VXBurrowerMessage m;
    m.object = object;
    m.userInfo = {{burrower::kKind, kind}, {burrower::kProjectIndexDatabase, "/x/p.vxindex"}};
    if (!contents.empty()) m.userInfo[burrower::kContents] = contents;
    return m;
}

TEST(BurrowerMessage, RoundTripsAsOneLine) {
    const auto original = message("burrower-12", burrower::kFileIndex, "line one\nline \"two\"\t\xC3\xA9");
    const std::string line = VXEncodeBurrowerMessage(original);
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    auto decoded = VXDecodeBurrowerMessage(std::string_view(line).substr(0, line.size() - 1));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->name, "VXBurrower");
    EXPECT_EQ(decoded->object, "burrower-12");
    EXPECT_EQ(decoded->userInfo, original.userInfo);
    EXPECT_FALSE(VXDecodeBurrowerMessage("{\"name\": 1}"));
    EXPECT_FALSE(VXDecodeBurrowerMessage("nonsense"));
    // Bytes that are not UTF-8 are replaced, not a reason to lose the message.
    EXPECT_TRUE(VXDecodeBurrowerMessage(VXEncodeBurrowerMessage(message("b", "k", "bad \xFF byte"))));
}

TEST(BurrowerChannel, EachEditorTalksToItsOwnIndexer) {
    test::TempDir dir;
    auto first = VXBurrowerChannel::listen(dir.path() + "/burrower-1.sock");
    auto second = VXBurrowerChannel::listen(dir.path() + "/burrower-2.sock");
    ASSERT_TRUE(first && second);
    // Sent before anyone listens: kept until the indexer connects.
    first->send(message("burrower-1", burrower::kProjectOpen));
    second->send(message("burrower-2", burrower::kProjectOpen));
    second->send(message("burrower-2", burrower::kFileIndex, std::string(200'000, 'x')));  // larger than a socket buffer

    auto one = VXBurrowerConnection::connect(first->path());
    auto two = VXBurrowerConnection::connect(second->path());
    ASSERT_TRUE(one && two);
    auto got = one->receive();
    ASSERT_TRUE(got);
    EXPECT_EQ(got->object, "burrower-1");
    EXPECT_FALSE(one->hasPendingMessage());
    got = two->receive();
    ASSERT_TRUE(got);
    EXPECT_EQ(got->object, "burrower-2");
    got = two->receive();
    ASSERT_TRUE(got);
    EXPECT_EQ(got->value(burrower::kContents).size(), 200'000u);

    // Answers come back to the editor that asked.
    std::mutex mutex;
    std::condition_variable arrived;
    std::vector<std::string> replies;
    first->setReplyHandler([&](const VXBurrowerMessage& reply) {
        std::lock_guard lock(mutex);
        replies.push_back(reply.value(burrower::kKind));
        arrived.notify_all();
    });
    ASSERT_TRUE(one->reply(message("burrower-1", burrower::kProjectIndexed)));
    std::unique_lock lock(mutex);
    ASSERT_TRUE(arrived.wait_for(lock, std::chrono::seconds(5), [&] { return !replies.empty(); }));
    EXPECT_EQ(replies, (std::vector<std::string>{burrower::kProjectIndexed}));
    lock.unlock();

    // When the editor goes, its indexer reads the end; the socket file is gone.
    first.reset();
    EXPECT_FALSE(one->receive());
    EXPECT_FALSE(std::ifstream(dir.path() + "/burrower-1.sock").good());
}

}  // namespace
}  // namespace vx
