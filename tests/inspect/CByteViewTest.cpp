// The bounded reader under the parser: little-endian reads that run off the end see zeros, and
// the high-water mark says how far into the file anything looked.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "CGuardedBuffer.h"
#include "inspect/CByteView.h"

namespace {

TEST(ByteView, ReadsAreLittleEndianAndBytesPastTheEndReadAsZero)
{
    const CGuardedBuffer bytes({0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09});
    const CByteView view(bytes.Data(), bytes.Size());
    EXPECT_EQ(0x0201u, view.ReadU16(0));
    EXPECT_EQ(0x05040302u, view.ReadU32(1));
    EXPECT_EQ(0x0908070605040302ULL, view.ReadU64(1));
    EXPECT_EQ(0x09080706ULL, view.ReadU64(5));  // straddles the end
    EXPECT_EQ(0x09u, view.ReadU16(8));
    EXPECT_EQ(0u, view.ReadU32(9));
    EXPECT_EQ(0u, view.ReadU64(UINT64_MAX - 3));  // no wrap back to the start

    const uint8_t tail[] = {0x08, 0x09, 0x00, 0x00};
    EXPECT_TRUE(view.Equals(7, tail, sizeof(tail)));
    EXPECT_FALSE(view.Equals(6, tail, sizeof(tail)));
}

TEST(ByteView, ContainsRejectsRangesThatEndOrWrapPastTheFile)
{
    const std::vector<uint8_t> data(30, 0);
    const CByteView view(data.data(), data.size());
    EXPECT_TRUE(view.Contains(6, 24));
    EXPECT_FALSE(view.Contains(7, 24));
    EXPECT_TRUE(view.Contains(30, 0));
    EXPECT_FALSE(view.Contains(31, 0));
    EXPECT_FALSE(view.Contains(1, UINT64_MAX));
    EXPECT_FALSE(CByteView(nullptr, 100).Contains(0, 1));  // no data, no size
}

TEST(ByteView, HighWaterMarkIsTheFurthestByteReadInsideTheFile)
{
    const std::vector<uint8_t> data(100, 0);
    const CByteView view(data.data(), data.size());
    EXPECT_EQ(0u, view.HighWaterMark());
    view.ReadU32(40);
    EXPECT_EQ(44u, view.HighWaterMark());
    view.ReadU16(10);  // an earlier read does not lower it
    EXPECT_EQ(44u, view.HighWaterMark());
    view.ReadU64(96);
    EXPECT_EQ(100u, view.HighWaterMark());
    view.ReadU64(5000);
    EXPECT_EQ(100u, view.HighWaterMark());
}

} // namespace
