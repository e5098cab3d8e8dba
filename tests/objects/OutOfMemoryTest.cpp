// No exception leaves a COM method: each allocation the engine makes on the host's thread is made
// to fail in turn, and the call then answers its refusal, hands out nothing, leaks nothing and
// leaves the object as usable as before.
#include <windows.h>
#include <olectl.h>

#include <gtest/gtest.h>

#include <algorithm>
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
thread_local long t_nFailAt = 0; // the allocation to fail on this thread, from 1 (0: none)
thread_local long t_nMade = 0;
void* Allocate(std::size_t cb) { return t_nFailAt && ++t_nMade == t_nFailAt ? nullptr : std::malloc(cb ? cb : 1); }
} // namespace

void* operator new(std::size_t cb) { if (void* p = Allocate(cb)) return p; throw std::bad_alloc(); }
void* operator new[](std::size_t cb) { return operator new(cb); }
void* operator new(std::size_t cb, const std::nothrow_t&) noexcept { return Allocate(cb); }
void* operator new[](std::size_t cb, const std::nothrow_t&) noexcept { return Allocate(cb); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }

namespace {

class OutOfMemory : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        m_parent = CreateWindowExW(0, L"STATIC", L"host", WS_POPUP, 0, 0, 320, 240, nullptr, nullptr, nullptr, nullptr);
        ASSERT_EQ(S_OK, CComCreator<CPlay>::CreateInstance(nullptr, IID_IPlay2, &m_play));
        ASSERT_EQ(S_OK, m_play->SetParentWindow(static_cast<LONG>(reinterpret_cast<LONG_PTR>(m_parent))));
        ASSERT_EQ(S_OK, QueryTo(m_play, IID_IConnectionPointContainer, m_container));
        ASSERT_EQ(S_OK, m_container->FindConnectionPoint(IID_IPlayEvents, &m_events));
    }
    void TearDown() override
    {
        m_events.Reset();
        m_container.Reset();
        m_play.Reset();
        DestroyWindow(m_parent);
        CoUninitialize();
    }

    // Fails allocation 1, 2, ... of the call in turn, until a run makes fewer allocations than the
    // one that was to fail: that run must succeed. Answers how many allocation points were tried.
    long FailEachInTurn(const char* pszName, std::vector<HRESULT> refusals, const std::function<HRESULT()>& call,
                        const std::function<void(HRESULT)>& after)
    {
        SCOPED_TRACE(pszName);
        for (long k = 1; k < 5000 && !HasFailure(); ++k)
        {
            t_nMade = 0;
            t_nFailAt = k;
            const HRESULT hr = call();
            t_nFailAt = 0;
            after(hr);
            if (t_nMade < k)
            {
                EXPECT_EQ(S_OK, hr) << "with every allocation served";
                return k - 1;
            }
            EXPECT_NE(refusals.end(), std::find(refusals.begin(), refusals.end(), hr))
                << "allocation " << k << " failed, answer 0x" << std::hex << hr;
        }
        return 0;
    }
    // A call that hands out an object: nothing on failure, one the caller alone holds on success.
    long HandsOut(const char* pszName, const std::function<HRESULT(void**)>& call)
    {
        const LONG lLocks = CModuleLock::Count();
        void* pv = reinterpret_cast<void*>(1);
        return FailEachInTurn(pszName, {E_OUTOFMEMORY}, [&] { return call(&pv); }, [&](HRESULT hr) {
            if (SUCCEEDED(hr))
                EXPECT_EQ(0u, static_cast<IUnknown*>(pv)->Release());
            else
                EXPECT_EQ(nullptr, pv);
            EXPECT_EQ(lLocks, CModuleLock::Count()) << "an object left alive";
        });
    }

    std::vector<CRecordingSink::Entry> m_log; // the sinks outlive the Play object
    CRecordingSink m_sinks[5] = {{"a", &m_log}, {"b", &m_log}, {"c", &m_log}, {"d", &m_log}, {"e", &m_log}};
    HWND m_parent = nullptr;
    ComPtr<IPlay2> m_play;
    ComPtr<IConnectionPointContainer> m_container;
    ComPtr<IConnectionPoint> m_events;
};

TEST_F(OutOfMemory, CreatingObjectsAndEnumeratorsAnswersOutOfMemoryAndHandsOutNothing)
{
    EXPECT_GT(HandsOut("Play", [](void** ppv) { return CComCreator<CPlay>::CreateInstance(nullptr, IID_IPlay2, ppv); }),
              1) << "the dispatcher and its back-ends are allocated";
    EXPECT_GT(HandsOut("QueryFileInfo",
                       [](void** ppv) { return CComCreator<CQueryFileInfo>::CreateInstance(nullptr, IID_IQueryFileInfo, ppv); }),
              1);
    DWORD dwCookie = 0;
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(S_OK, m_events->Advise(&m_sinks[i], &dwCookie));
    EXPECT_GT(HandsOut("EnumConnectionPoints",
                       [&](void** ppv) { return m_container->EnumConnectionPoints(reinterpret_cast<IEnumConnectionPoints**>(ppv)); }),
              0);
    EXPECT_GT(HandsOut("EnumConnections",
                       [&](void** ppv) { return m_events->EnumConnections(reinterpret_cast<IEnumConnections**>(ppv)); }),
              0);
    ComPtr<IEnumConnections> original;
    ASSERT_EQ(S_OK, m_events->EnumConnections(&original));
    EXPECT_GT(HandsOut("Clone", [&](void** ppv) { return original->Clone(reinterpret_cast<IEnumConnections**>(ppv)); }), 0);
    original.Reset();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(1, m_sinks[i].OutsideRefs()) << "only the connection holds a sink";
}

TEST_F(OutOfMemory, AdvisingPastTheListsRoomIsRefusedAndTheSinkIsNotHeld)
{
    DWORD dwCookie = 0;
    for (int i = 0; i < 4; ++i)
        ASSERT_EQ(S_OK, m_events->Advise(&m_sinks[i], &dwCookie));
    EXPECT_EQ(1, FailEachInTurn("Advise", {CONNECT_E_ADVISELIMIT}, [&] { return m_events->Advise(&m_sinks[4], &dwCookie); },
                                [&](HRESULT hr) {
                                    if (SUCCEEDED(hr))
                                        EXPECT_EQ(S_OK, m_events->Unadvise(dwCookie));
                                    else
                                        EXPECT_EQ(0u, dwCookie);
                                    EXPECT_EQ(0, m_sinks[4].OutsideRefs());
                                }))
        << "the fifth sink grows the list once";
}

// A movie opens through the QuickTime back-end and its layer, which answer a failed allocation as
// the toolbox does (memFullErr, or a null track or controller): the open may then answer E_FAIL,
// or S_OK for what it reads as a sound. What must hold: no exception, and the next call succeeds.
TEST_F(OutOfMemory, OpeningAndQueryingAMovieAnswerOutOfMemoryAndTheNextCallSucceeds)
{
    const std::string folder = TESSALY_QT_MEDIA_DIR;
    std::wstring movie(folder.begin(), folder.end());
    movie += L"\\clip.mov";
    std::replace(movie.begin(), movie.end(), L'/', L'\\');
    auto open = [&] { return m_play->OpenFile(&movie[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, nullptr); };
    EXPECT_GT(FailEachInTurn("OpenFile", {E_OUTOFMEMORY, E_FAIL, S_OK}, open, [&](HRESULT) {
                  EXPECT_EQ(S_OK, m_play->CloseFile());
                  EXPECT_EQ(S_OK, open()) << "the object opens files after the failure";
                  EXPECT_EQ(S_OK, m_play->CloseFile());
              }),
              0);

    ComPtr<IQueryFileInfo> query;
    ASSERT_EQ(S_OK, CComCreator<CQueryFileInfo>::CreateInstance(nullptr, IID_IQueryFileInfo, &query));
    TESSALY_FILEINFO info = {};
    EXPECT_GT(FailEachInTurn("GetFileInfo", {E_OUTOFMEMORY, E_FAIL, S_OK}, [&] { return query->GetFileInfo(&movie[0], &info); },
                             [&](HRESULT) {
                                 TESSALY_FILEINFO again = {};
                                 EXPECT_EQ(S_OK, query->GetFileInfo(&movie[0], &again));
                                 EXPECT_EQ(160u, again.dwWidth);
                             }),
              0);
}

} // namespace
