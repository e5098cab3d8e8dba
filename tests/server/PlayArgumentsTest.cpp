// The objects' checks at the host boundary, with null, unreadable and read-only memory.
#include <windows.h>
#include <objbase.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "ServerHost.h"
#include "tests/support/CrossApartment.h"

namespace {

// A page of the given protection followed by an inaccessible one: a record can end where access ends.
struct GuardedPage
{
    BYTE* const pBase = static_cast<BYTE*>(VirtualAlloc(nullptr, 8192, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
    explicit GuardedPage(DWORD dwProtect, DWORD dwOld = 0)
    {
        VirtualProtect(pBase + 4096, 4096, PAGE_NOACCESS, &dwOld);
        VirtualProtect(pBase, 4096, dwProtect, &dwOld);
    }
    ~GuardedPage() { VirtualFree(pBase, 0, MEM_RELEASE); }
    template <class T> T* EndingAtGuard(size_t cb = sizeof(T)) const { return reinterpret_cast<T*>(pBase + 4096 - cb); }
};

const TESSALY_FILEINFO kUntouched = {7, 7.0, 7, 7};

class PlayArguments : public CServerHost
{
protected:
    HWND InfoWindow(HWND hAfter = nullptr) { return FindWindowExW(m_parent, hAfter, L"INFOWND.Display.WndClass", nullptr); }
    GuardedPage m_readOnly{PAGE_READONLY}, m_readWrite{PAGE_READWRITE};
};

TEST_F(PlayArguments, OutputsAreCheckedBeforeAnythingIsWrittenAndTheExtensionListBelongsToTheHost)
{
    ULONG count = 0, dwFlags = 0;
    LPWSTR* pList = nullptr;
    TESSALY_PLAYBACK_STATE state = Playback_State_Busy;
    double dTime = -1.0;
    LONG hWnd = 1;
    for (HRESULT hr : {m_play->GetSupportedFileExt(nullptr, &pList), m_play->GetSupportedFileExt(m_readOnly.EndingAtGuard<ULONG>(), &pList),
                       m_play->GetSupportedFileExt(&count, m_readOnly.EndingAtGuard<LPWSTR*>()), m_play->GetPlaybackFlags(nullptr),
                       m_play->GetState(m_readOnly.EndingAtGuard<TESSALY_PLAYBACK_STATE>(), &dTime),
                       m_play->GetParentWindow(nullptr), m_play->GetParentWindow(m_readOnly.EndingAtGuard<LONG>())})
        EXPECT_EQ(E_INVALIDARG, hr);
    EXPECT_EQ(nullptr, pList);
    EXPECT_EQ(-1.0, dTime);
    EXPECT_EQ(E_INVALIDARG, m_play->GetState(&state, m_readOnly.EndingAtGuard<double>()));
    EXPECT_EQ(Playback_State_Stop, state) << "each output is checked just before it is written";
    EXPECT_EQ(S_OK, m_play->GetState(nullptr, nullptr)) << "both are optional";
    EXPECT_EQ(S_OK, m_play->GetState(&state, &dTime));
    EXPECT_EQ(0.0, dTime);
    EXPECT_EQ(S_OK, m_play->GetParentWindow(&hWnd));
    EXPECT_EQ(HandleOf(m_parent), hWnd);
    TESSALY_FILEINFO info = kUntouched; // before any open: success even without a record, and nothing written
    EXPECT_EQ(S_OK, m_play->GetFileInfo(nullptr));
    EXPECT_EQ(S_OK, m_play->GetFileInfo(&info));
    EXPECT_EQ(0, memcmp(&info, &kUntouched, sizeof(info)));
    EXPECT_EQ(S_OK, m_play->GetPlaybackFlags(&dwFlags));
    EXPECT_EQ(TESSALY_PLAYBACK_FLAG_STRETCH, dwFlags);
    EXPECT_EQ(S_OK, m_play->SetPlaybackFlags(0xA5A50000));
    EXPECT_EQ(S_OK, m_play->GetPlaybackFlags(&dwFlags));
    EXPECT_EQ(0xA5A50000u, dwFlags) << "stored as given";
    ASSERT_EQ(S_OK, m_play->GetSupportedFileExt(&count, &pList));
    ReleasePlay();
    ASSERT_EQ(72u, count);
    EXPECT_STREQ(L".MP3", pList[0]);
    EXPECT_STREQ(L".ADTS", pList[71]);
    for (ULONG i = 0; i < count; ++i)
        CoTaskMemFree(pList[i]);
    CoTaskMemFree(pList);
}

TEST_F(PlayArguments, ControlCodesTheSeekPositionAndTheOpenAndQueryRecordsAreChecked)
{
    double dPosition = 1.0;
    BYTE* const p = reinterpret_cast<BYTE*>(&dPosition);
    const struct
    {
        ULONG dwCode, cb;
        BYTE* pParam;
        HRESULT hr;
    } controls[] = {
        {TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 0, p, E_INVALIDARG}, {TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 8, nullptr, E_INVALIDARG},
        {TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 8, m_readOnly.EndingAtGuard<BYTE>(4), E_INVALIDARG}, // half unreadable
        // Checks passed, the engine refuses: nothing is open. One readable byte passes the check.
        {TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 1, p, E_FAIL}, {TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 8, p, E_FAIL},
        {TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr, E_FAIL}, {TESSALY_PLAYBACK_CONTROL_PAUSE, 0, nullptr, E_FAIL},
        {TESSALY_PLAYBACK_CONTROL_STOP, 0, nullptr, E_FAIL},
    };
    for (const auto& c : controls)
        EXPECT_EQ(c.hr, m_play->PlaybackControl(c.dwCode, c.cb, c.pParam)) << c.dwCode << " " << c.cb;
    for (ULONG dwCode : {0ul, 4ul, 5ul, 7ul, 0xFFFFFFFFul})
        EXPECT_EQ(TESSALY_E_NOTSUPPORTED, m_play->PlaybackControl(dwCode, 8, p)) << dwCode;
    WCHAR song[] = L"C:\\Media\\song.mp3", notes[] = L"C:\\Media\\notes.txt";
    TESSALY_FILEINFO info = kUntouched;
    EXPECT_EQ(E_INVALIDARG, m_play->OpenFile(song, 0, 1, m_readOnly.EndingAtGuard<TESSALY_FILEINFO>()));
    EXPECT_EQ(TESSALY_E_NOTSUPPORTED, m_play->OpenFile(notes, 0, 1, &info));
    EXPECT_EQ(0, memcmp(&info, &kUntouched, sizeof(info)));
    EXPECT_EQ(S_OK, m_play->CloseFile()) << "closing with nothing open";
    ComPtr<IPlayCD> cd;
    ASSERT_EQ(S_OK, QueryTo(m_play, IID_IPlayCD, cd));
    EXPECT_EQ(S_FALSE, cd->OpenCD(L'Q', 1, 2)) << "no disc nor image: the range is refused with S_FALSE";
    ComPtr<IQueryFileInfo> query;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_QueryFileInfo, nullptr, CLSCTX_INPROC_SERVER, IID_IQueryFileInfo, &query));
    EXPECT_EQ(E_INVALIDARG, query->GetFileInfo(song, nullptr));
    EXPECT_EQ(E_INVALIDARG, query->GetFileInfo(song, m_readOnly.EndingAtGuard<TESSALY_FILEINFO>()));
}

TEST_F(PlayArguments, TheParentMustBeAWindowOrNullAndItsNewSizeBringsOneHiddenInformationWindow)
{
    LONG hWnd = 1;
    HWND stale = CreateWindowExW(0, L"STATIC", L"gone", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    DestroyWindow(stale);
    EXPECT_EQ(E_INVALIDARG, m_play->SetParentWindow(HandleOf(stale)));
    EXPECT_EQ(S_OK, m_play->GetParentWindow(&hWnd));
    EXPECT_EQ(HandleOf(m_parent), hWnd) << "the old parent stays";
    EXPECT_EQ(E_INVALIDARG, m_play->SetParentWindowSize(0, 240));
    EXPECT_EQ(E_INVALIDARG, m_play->SetParentWindowSize(320, 0));
    EXPECT_EQ(S_OK, m_play->SetParentWindowSize(320, 240)) << "the parent's own size";
    EXPECT_EQ(E_FAIL, m_play->ShowMediaInfo(TRUE)) << "no information window yet";
    EXPECT_EQ(nullptr, InfoWindow());
    EXPECT_EQ(S_OK, m_play->SetParentWindowSize(800, 600));
    const HWND hInfo = InfoWindow();
    ASSERT_NE(nullptr, hInfo);
    EXPECT_FALSE(IsWindowVisible(hInfo)) << "the engine never shows it";
    RECT rc;
    EXPECT_TRUE(GetWindowRect(hInfo, &rc) && rc.right - rc.left == 320 && rc.bottom - rc.top == 240) << "over the parent's client area";
    EXPECT_EQ(S_OK, m_play->ShowMediaInfo(TRUE));
    EXPECT_EQ(S_OK, m_play->SetParentWindowSize(640, 200));
    EXPECT_EQ(hInfo, InfoWindow());
    EXPECT_EQ(nullptr, InfoWindow(hInfo)) << "made once, never again";
    EXPECT_EQ(S_OK, m_play->SetParentWindow(0));
    EXPECT_EQ(S_OK, m_play->GetParentWindow(&hWnd));
    EXPECT_EQ(0, hWnd);
    ReleasePlay();
    EXPECT_EQ(nullptr, InfoWindow()) << "destroyed with the object";
}

TEST_F(PlayArguments, TextAndMediaCallsNeedTheInformationWindowAndCheckTheirArgumentsInAndAcrossApartments)
{
    ULONG crTop = 0, crBottom = 0, crText = 0;
    TESSALY_MEDIA_INFO empty = {};
    ComPtr<ITextDisplay> text;
    ASSERT_EQ(S_OK, QueryTo(m_play, IID_ITextDisplay, text));
    for (HRESULT hr : {m_play->SetMediaInfo(&empty), text->SetGradientBkColor(1, 2, FALSE), text->SetTextColor(3, FALSE),
                       text->SetFont(nullptr, FALSE), text->GetGradientBkColor(&crTop, &crBottom), text->GetTextColor(&crText)})
        EXPECT_EQ(E_FAIL, hr);
    ASSERT_EQ(S_OK, m_play->SetParentWindowSize(640, 480));
    for (HRESULT hr : {text->GetGradientBkColor(nullptr, &crBottom), text->GetGradientBkColor(&crTop, nullptr),
                       text->GetTextColor(nullptr), text->GetTextColor(m_readOnly.EndingAtGuard<ULONG>()),
                       text->SetFont(m_readWrite.EndingAtGuard<LOGFONTW>(sizeof(LOGFONTW) - 1), TRUE), m_play->SetMediaInfo(nullptr),
                       m_play->SetMediaInfo(m_readWrite.EndingAtGuard<TESSALY_MEDIA_INFO>(sizeof(TESSALY_MEDIA_INFO) - 1))})
        EXPECT_EQ(E_INVALIDARG, hr);
    ZeroMemory(m_readWrite.EndingAtGuard<LOGFONTW>(), sizeof(LOGFONTW));
    EXPECT_EQ(S_OK, text->SetFont(m_readWrite.EndingAtGuard<LOGFONTW>(), TRUE)) << "the whole record is readable";
    EXPECT_EQ(S_OK, text->SetFont(nullptr, TRUE)) << "back to the default fonts";
    TESSALY_MEDIA_INFO* pWhole = m_readWrite.EndingAtGuard<TESSALY_MEDIA_INFO>();
    ZeroMemory(pWhole, sizeof(*pWhole));
    std::fill(std::begin(pWhole->wszTitle), std::end(pWhole->wszTitle), L'T'); // no terminator: taken whole
    EXPECT_EQ(S_OK, m_play->SetMediaInfo(pWhole));
    EXPECT_EQ(S_OK, text->GetTextColor(&crText));
    EXPECT_EQ(0xFFFFFFu, crText) << "white by default";
    // From another apartment the proxy carries the unique pointers' nulls to the object, which
    // answers as in process; an [out] pointer stays a reference the proxy itself refuses.
    std::wstring path = CTestMedia::Path("clip.wmv");
    std::vector<HRESULT> results;
    TESSALY_PLAYBACK_STATE state = Playback_State_Busy;
    ASSERT_EQ(S_OK, CallFromAnotherApartment<IPlay2>(m_play.Get(), IID_IPlay2, [&](IPlay2* remote) {
        results = {remote->OpenFile(&path[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, nullptr), remote->GetState(&state, nullptr),
                   remote->GetState(nullptr, nullptr), remote->SetMediaInfo(nullptr)};
    }));
    ASSERT_EQ(S_OK, CallFromAnotherApartment<ITextDisplay>(text.Get(), IID_ITextDisplay, [&](ITextDisplay* remote) {
        LOGFONTW font = {};
        results.insert(results.end(), {remote->SetFont(&font, TRUE), remote->SetFont(nullptr, FALSE)});
    }));
    EXPECT_EQ((std::vector<HRESULT>{S_OK, S_OK, HRESULT_FROM_WIN32(RPC_X_NULL_REF_POINTER), E_INVALIDARG, S_OK, S_OK}), results);
    EXPECT_EQ(Playback_State_Stop, state);
}

} // namespace
