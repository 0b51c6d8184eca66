#include <gtest/gtest.h>

#include <regex>
#include <set>

#include "quarn/os/Random.h"

using namespace quarn::os;

TEST(RandomTest, BytesAreDistinctAndOfTheAskedSize) {
    std::set<std::vector<std::uint8_t>> seen;
    for (int i = 0; i < 200; ++i) {
        auto bytes = RandomBytes(16);
        ASSERT_EQ(bytes.size(), 16u);
        EXPECT_TRUE(seen.insert(bytes).second) << "repeated 16-byte value";
    }
    EXPECT_TRUE(RandomBytes(0).empty());
}

TEST(RandomTest, LargeRequestsAreFilledCompletely) {
    // getrandom returns at most 32 MiB per call; larger buffers need the retry loop.
    auto bytes = RandomBytes(33u << 20);
    std::size_t zeroTail = 0;
    for (auto it = bytes.rbegin(); it != bytes.rend() && *it == 0; ++it) ++zeroTail;
    EXPECT_LT(zeroTail, 16u);
}

TEST(RandomTest, UuidHasCanonicalFormVersionAndVariant) {
    const std::regex form("^[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}$");
    std::set<std::string> seen;
    for (int i = 0; i < 500; ++i) {
        const auto id = NewUuidV4();
        ASSERT_EQ(id.size(), 36u);
        EXPECT_TRUE(std::regex_match(id, form)) << id;
        EXPECT_TRUE(seen.insert(id).second) << id;
    }
}
