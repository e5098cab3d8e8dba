// The sink list behind each connection point, read slot by slot (the firing order it makes is
// checked through the Play object): its bounds, which slot Remove frees and the references it
// gives back.
#include <gtest/gtest.h>

#include <vector>

#include "objects/CSinkList.h"
#include "tests/support/CRecordingSink.h"

namespace {

TEST(SinkList, SlotsStayInBoundsRemoveFreesTheFirstMatchAndEveryReferenceIsGivenBackOnce)
{
    std::vector<CRecordingSink::Entry> log;
    CRecordingSink s[3] = {{"0", &log}, {"1", &log}, {"2", &log}};
    CSinkList list;
    auto add = [&](int i) { s[i].AddRef(); return list.Add(&s[i]); }; // the reference Advise hands over
    auto slots = [&] {
        std::vector<IUnknown*> at;
        for (int i = 0; i < list.Size(); ++i)
            at.push_back(list.At(i));
        EXPECT_EQ(nullptr, list.At(list.Size())) << "one past the end";
        EXPECT_EQ(nullptr, list.At(-1));
        return at;
    };
    ASSERT_TRUE(add(0));
    ASSERT_EQ(nullptr, list.At(1)) << "one past the only sink (checked first: a read past the end may crash)";
    EXPECT_EQ(std::vector<IUnknown*>{&s[0]}, slots());
    EXPECT_FALSE(list.Remove(&s[1]));
    EXPECT_FALSE(list.Remove(nullptr));
    ASSERT_TRUE(list.Remove(&s[0]));
    EXPECT_TRUE(slots().empty()) << "the only sink gone";
    EXPECT_FALSE(list.Remove(&s[0])) << "twice";
    EXPECT_EQ(0, s[0].OutsideRefs());

    ASSERT_TRUE(add(1) && add(1) && add(2));
    EXPECT_FALSE(list.Remove(&s[0]));
    ASSERT_TRUE(list.Remove(&s[1]));
    EXPECT_EQ((std::vector<IUnknown*>{nullptr, &s[1], &s[2], nullptr}), slots());
    EXPECT_EQ(1, s[1].OutsideRefs());
    list.ReleaseAll();
    EXPECT_TRUE(slots().empty());
    for (const CRecordingSink& sink : s)
        EXPECT_EQ(0, sink.OutsideRefs()) << "sink " << &sink - s;
}

} // namespace
