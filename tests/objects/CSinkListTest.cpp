// The sink list behind each connection point: its growth, slot reuse and references are what
// hosts observe as cookies and firing order.
#include <windows.h>

#include <gtest/gtest.h>

#include <vector>

#include "objects/CSinkList.h"

namespace {

class CountedSink : public IUnknown
{
public:
    LONG refs = 1;
    STDMETHODIMP QueryInterface(REFIID, void** ppv) override
    {
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++refs); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--refs); }
};

std::vector<IUnknown*> Slots(const CSinkList& list)
{
    std::vector<IUnknown*> slots;
    for (int i = 0; i < list.Size(); ++i)
        slots.push_back(list.At(i));
    return slots;
}

TEST(SinkList, OneSinkIsKeptOnItsOwnAndASecondMakesFourSlots)
{
    CountedSink a, b;
    CSinkList list;
    EXPECT_EQ(0, list.Size());
    EXPECT_EQ(nullptr, list.At(0));
    ASSERT_TRUE(list.Add(&a));
    EXPECT_EQ(1, list.Size());
    EXPECT_EQ(&a, list.At(0));
    ASSERT_TRUE(list.Add(&b));
    EXPECT_EQ((std::vector<IUnknown*>{&a, &b, nullptr, nullptr}), Slots(list));
}

TEST(SinkList, AFullListDoublesAndTheNewSinkTakesTheFirstNewSlot)
{
    CountedSink s[6];
    CSinkList list;
    for (int i = 0; i < 4; ++i)
        ASSERT_TRUE(list.Add(&s[i]));
    EXPECT_EQ(4, list.Size());
    ASSERT_TRUE(list.Add(&s[4]));
    EXPECT_EQ((std::vector<IUnknown*>{&s[0], &s[1], &s[2], &s[3], &s[4], nullptr, nullptr, nullptr}), Slots(list));
    ASSERT_TRUE(list.Add(&s[5]));
    EXPECT_EQ(&s[5], list.At(5));
    EXPECT_EQ(8, list.Size());
}

TEST(SinkList, AFreedSlotIsReusedAndTheListNeverShrinks)
{
    CountedSink s[5], late;
    CSinkList list;
    for (CountedSink& sink : s)
        list.Add(&sink);
    ASSERT_TRUE(list.Remove(&s[1]));
    EXPECT_EQ(0, s[1].refs) << "the list's reference is given back";
    EXPECT_EQ(8, list.Size());
    EXPECT_EQ(nullptr, list.At(1));
    ASSERT_TRUE(list.Add(&late));
    EXPECT_EQ(&late, list.At(1)) << "called second from now on";
    EXPECT_EQ(8, list.Size());
}

TEST(SinkList, RemovingTheOnlySinkEmptiesTheList)
{
    CountedSink a;
    CSinkList list;
    list.Add(&a);
    ASSERT_TRUE(list.Remove(&a));
    EXPECT_EQ(0, list.Size());
    EXPECT_EQ(0, a.refs);
    EXPECT_FALSE(list.Remove(&a)) << "twice";
}

TEST(SinkList, RemovingAnUnknownOrNullSinkChangesNothing)
{
    CountedSink a, b, stranger;
    CSinkList list;
    EXPECT_FALSE(list.Remove(&a)) << "empty list";
    list.Add(&a);
    EXPECT_FALSE(list.Remove(&stranger));
    EXPECT_FALSE(list.Remove(nullptr));
    list.Add(&b);
    EXPECT_FALSE(list.Remove(&stranger));
    EXPECT_EQ(1, a.refs);
    EXPECT_EQ(1, b.refs);
}

TEST(SinkList, TheSameSinkTwiceHoldsTwoSlotsAndRemovesTheFirst)
{
    CountedSink a;
    a.refs = 2; // one reference per Advise
    CSinkList list;
    list.Add(&a);
    list.Add(&a);
    ASSERT_TRUE(list.Remove(&a));
    EXPECT_EQ((std::vector<IUnknown*>{nullptr, &a, nullptr, nullptr}), Slots(list));
    EXPECT_EQ(1, a.refs);
}

TEST(SinkList, ReleaseAllGivesBackEveryReferenceOnce)
{
    CountedSink s[5];
    {
        CSinkList list;
        for (CountedSink& sink : s)
            list.Add(&sink);
        list.Remove(&s[2]);
    }
    for (CountedSink& sink : s)
        EXPECT_EQ(0, sink.refs);
}

} // namespace
