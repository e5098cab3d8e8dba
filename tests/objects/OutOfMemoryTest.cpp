// No exception leaves a COM method: each allocation the engine makes on the host's thread is made
// to fail in turn, and the call then answers E_OUTOFMEMORY (or its own documented refusal), hands
// out nothing, and leaves the object as usable as before.
#include <windows.h>
#include <olectl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include "engine/CComCreator.h"
#include "engine/CModuleLock.h"
#include "engine/ComPtr.h"
#include "objects/CPlay.h"
#include "objects/CQueryFileInfo.h"
#include "tests/support/CRecordingSink.h"

namespace {

// The allocation to fail on this thread, counted from 1 (0: none), and how many were made.
thread_local long t_nFailAt = 0;
thread_local long t_nMade = 0;

bool NextAllocationFails()
{
    return t_nFailAt != 0 && ++t_nMade == t_nFailAt;
}

} // namespace

void* operator new(std::size_t cb)
{
    void* p = NextAllocationFails() ? nullptr : std::malloc(cb ? cb : 1);
    if (!p)
        throw std::bad_alloc();
    return p;
}
void* operator new[](std::size_t cb)
{
    return operator new(cb);
}
void* operator new(std::size_t cb, const std::nothrow_t&) noexcept
{
    return NextAllocationFails() ? nullptr : std::malloc(cb ? cb : 1);
}
void* operator new[](std::size_t cb, const std::nothrow_t& tag) noexcept
{
    return operator new(cb, tag);
}
void operator delete(void* p) noexcept
{
    std::free(p);
}
void operator delete[](void* p) noexcept
{
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept
{
    std::free(p);
}
void operator delete[](void* p, std::size_t) noexcept
{
    std::free(p);
}

namespace {

struct Case
{
    const char* pszName;
    std::vector<HRESULT> refusals;    // what a call that found no memory may answer
    std::function<HRESULT()> call;    // the call, made once per allocation point
    std::function<void(HRESULT)> undo; // after each call: give back what it handed out, check what was left
};

class OutOfMemory : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        m_parent = CreateWindowExW(0, L"STATIC", L"host", WS_POPUP, 0, 0, 320, 240, nullptr, nullptr, nullptr, nullptr);
        ASSERT_EQ(S_OK, CComCreator<CPlay>::CreateInstance(nullptr, IID_IPlay2, &m_play));
        ASSERT_EQ(S_OK, m_play->SetParentWindow(static_cast<LONG>(reinterpret_cast<LONG_PTR>(m_parent))));
        ComPtr<IConnectionPointContainer> container;
        ASSERT_EQ(S_OK, QueryTo(m_play, IID_IConnectionPointContainer, container));
        ASSERT_EQ(S_OK, container->FindConnectionPoint(IID_IPlayEvents, &m_events));
    }
    void TearDown() override
    {
        m_events.Reset();
        m_play.Reset();
        DestroyWindow(m_parent);
        CoUninitialize();
    }

    // Fails allocation 1, 2, ... of the call in turn, until a run makes fewer allocations than the
    // one that was to fail: that run must succeed. Answers how many allocation points were tried.
    long FailEachAllocationInTurn(const Case& c)
    {
        for (long k = 1; k < 5000; ++k)
        {
            t_nMade = 0;
            t_nFailAt = k;
            const HRESULT hr = c.call();
            t_nFailAt = 0;
            const bool bFailed = t_nMade >= k;
            c.undo(hr);
            if (!bFailed)
            {
                EXPECT_EQ(S_OK, hr) << c.pszName << ": with every allocation served";
                std::printf("%s: %ld allocation points failed in turn\n", c.pszName, k - 1);
                return k - 1;
            }
            EXPECT_NE(c.refusals.end(), std::find(c.refusals.begin(), c.refusals.end(), hr))
                << c.pszName << ": allocation " << k << " failed, answer 0x" << std::hex << hr;
            if (HasFailure())
                return k;
        }
        ADD_FAILURE() << c.pszName << " never ran to its end";
        return 0;
    }

    HRESULT Open(std::wstring& path) { return m_play->OpenFile(&path[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, nullptr); }

    // Sinks outlive the Play object, which still holds them until TearDown.
    std::vector<CRecordingSink::Entry> m_log;
    CRecordingSink m_sinks[5] = {{"a", &m_log}, {"b", &m_log}, {"c", &m_log}, {"d", &m_log}, {"e", &m_log}};
    HWND m_parent = nullptr;
    ComPtr<IPlay2> m_play;
    ComPtr<IConnectionPoint> m_events;
};

TEST_F(OutOfMemory, CreatingObjectsAnswersOutOfMemoryAndHandsOutNothing)
{
    const LONG lLocks = CModuleLock::Count();
    for (bool bPlay : {true, false})
    {
        void* pv = reinterpret_cast<void*>(1);
        const Case c = {bPlay ? "Play" : "QueryFileInfo", {E_OUTOFMEMORY},
                        [&] {
                            return bPlay ? CComCreator<CPlay>::CreateInstance(nullptr, IID_IPlay2, &pv)
                                         : CComCreator<CQueryFileInfo>::CreateInstance(nullptr, IID_IQueryFileInfo, &pv);
                        },
                        [&](HRESULT hr) {
                            if (SUCCEEDED(hr))
                            {
                                static_cast<IUnknown*>(pv)->Release();
                            }
                            else
                            {
                                EXPECT_EQ(nullptr, pv);
                            }
                            EXPECT_EQ(lLocks, CModuleLock::Count()) << "an object left alive";
                        }};
        EXPECT_GT(FailEachAllocationInTurn(c), 1) << "the dispatcher and its back-ends are allocated";
    }
}

TEST_F(OutOfMemory, EnumeratorsAnswerOutOfMemoryAndTheObjectEnumeratesAfterwards)
{
    DWORD dwCookie = 0;
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(S_OK, m_events->Advise(&m_sinks[i], &dwCookie));

    ComPtr<IConnectionPointContainer> container;
    ASSERT_EQ(S_OK, QueryTo(m_play, IID_IConnectionPointContainer, container));
    IEnumConnectionPoints* pPoints = reinterpret_cast<IEnumConnectionPoints*>(1);
    const Case points = {"EnumConnectionPoints", {E_OUTOFMEMORY}, [&] { return container->EnumConnectionPoints(&pPoints); },
                         [&](HRESULT hr) {
                             if (SUCCEEDED(hr))
                             {
                                 EXPECT_EQ(0u, pPoints->Release());
                             }
                             else
                             {
                                 EXPECT_EQ(nullptr, pPoints);
                             }
                         }};
    EXPECT_GT(FailEachAllocationInTurn(points), 0);

    IEnumConnections* pConnections = reinterpret_cast<IEnumConnections*>(1);
    const Case connections = {"EnumConnections", {E_OUTOFMEMORY}, [&] { return m_events->EnumConnections(&pConnections); },
                              [&](HRESULT hr) {
                                  if (SUCCEEDED(hr))
                                  {
                                      EXPECT_EQ(0u, pConnections->Release());
                                  }
                                  else
                                  {
                                      EXPECT_EQ(nullptr, pConnections);
                                  }
                                  for (int i = 0; i < 3; ++i)
                                      EXPECT_EQ(1, m_sinks[i].OutsideRefs()) << "only the connection holds a sink";
                              }};
    EXPECT_GT(FailEachAllocationInTurn(connections), 0);

    ComPtr<IEnumConnections> original;
    ASSERT_EQ(S_OK, m_events->EnumConnections(&original));
    IEnumConnections* pClone = reinterpret_cast<IEnumConnections*>(1);
    const Case clone = {"Clone", {E_OUTOFMEMORY}, [&] { return original->Clone(&pClone); }, [&](HRESULT hr) {
                            if (SUCCEEDED(hr))
                            {
                                EXPECT_EQ(0u, pClone->Release());
                            }
                            else
                            {
                                EXPECT_EQ(nullptr, pClone);
                            }
                        }};
    EXPECT_GT(FailEachAllocationInTurn(clone), 0);
}

TEST_F(OutOfMemory, AdvisingPastTheListsRoomIsRefusedAndTheSinkIsNotHeld)
{
    DWORD dwCookie = 0;
    for (int i = 0; i < 4; ++i)
        ASSERT_EQ(S_OK, m_events->Advise(&m_sinks[i], &dwCookie));
    const Case advise = {"Advise", {CONNECT_E_ADVISELIMIT}, [&] { return m_events->Advise(&m_sinks[4], &dwCookie); },
                         [&](HRESULT hr) {
                             if (SUCCEEDED(hr))
                             {
                                 EXPECT_EQ(S_OK, m_events->Unadvise(dwCookie));
                             }
                             EXPECT_EQ(0, m_sinks[4].OutsideRefs());
                         }};
    EXPECT_EQ(1, FailEachAllocationInTurn(advise)) << "the fifth sink grows the list once";
}

// A movie opens through the QuickTime back-end and its layer, which allocate as they go. The layer
// answers a failed allocation as the toolbox does (memFullErr, or a null track or controller), and
// the back-end reads some of those answers as it would from QuickTime: no movie object made at
// start-up is only traced by the dispatcher and the open then answers E_FAIL; no visual track
// means a sound. What must hold: no exception, and the object opens the movie right afterwards.
TEST_F(OutOfMemory, OpeningAndQueryingAMovieAnswerOutOfMemoryAndTheNextCallSucceeds)
{
    const std::string folder = TESSALY_QT_MEDIA_DIR;
    std::wstring movie(folder.begin(), folder.end());
    movie += L"\\clip.mov";
    std::replace(movie.begin(), movie.end(), L'/', L'\\');
    const Case open = {"OpenFile", {E_OUTOFMEMORY, E_FAIL, S_OK}, [&] { return Open(movie); }, [&](HRESULT) {
                           EXPECT_EQ(S_OK, m_play->CloseFile());
                           EXPECT_EQ(S_OK, Open(movie)) << "the object opens files after the failure";
                           EXPECT_EQ(S_OK, m_play->CloseFile());
                       }};
    EXPECT_GT(FailEachAllocationInTurn(open), 0);

    ComPtr<IQueryFileInfo> query;
    ASSERT_EQ(S_OK, CComCreator<CQueryFileInfo>::CreateInstance(nullptr, IID_IQueryFileInfo, &query));
    TESSALY_FILEINFO info = {};
    const Case ask = {"GetFileInfo", {E_OUTOFMEMORY, E_FAIL, S_OK}, [&] { return query->GetFileInfo(&movie[0], &info); },
                      [&](HRESULT) {
                          TESSALY_FILEINFO again = {};
                          EXPECT_EQ(S_OK, query->GetFileInfo(&movie[0], &again));
                          EXPECT_EQ(160u, again.dwWidth);
                      }};
    EXPECT_GT(FailEachAllocationInTurn(ask), 0);
}

} // namespace
