// The objects' checks at the host boundary with null, unreadable and read-only memory, and the
// nulls the contract allows carried from another apartment.
#include <windows.h>
#include <objbase.h>

#include <gtest/gtest.h>

#include <string>

#include "ServerHost.h"
#include "tests/support/CrossApartment.h"

namespace {

// A page of the given protection followed by an inaccessible one: a record can end where access ends.
class GuardedPage
{
public:
    explicit GuardedPage(DWORD dwProtect)
    {
        DWORD dwOld = 0;
        VirtualProtect(m_pBase + 4096, 4096, PAGE_NOACCESS, &dwOld);
        VirtualProtect(m_pBase, 4096, dwProtect, &dwOld);
    }
    ~GuardedPage() { VirtualFree(m_pBase, 0, MEM_RELEASE); }
    template <class T>
    T* EndingAtGuard(size_t cb = sizeof(T)) const { return reinterpret_cast<T*>(m_pBase + 4096 - cb); }

private:
    BYTE* m_pBase = static_cast<BYTE*>(VirtualAlloc(nullptr, 8192, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
};

// The information windows among hParent's children: how many, and the last one found.
std::pair<HWND, int> InfoWindowsOf(HWND hParent)
{
    std::pair<HWND, int> found(nullptr, 0);
    EnumChildWindows(hParent, [](HWND hWnd, LPARAM lParam) -> BOOL {
        WCHAR wsz[64];
        auto* pFound = reinterpret_cast<std::pair<HWND, int>*>(lParam);
        if (GetClassNameW(hWnd, wsz, 64) && lstrcmpW(wsz, L"INFOWND.Display.WndClass") == 0)
            *pFound = {hWnd, pFound->second + 1};
        return TRUE;
    }, reinterpret_cast<LPARAM>(&found));
    return found;
}

class PlayArguments : public CServerHost
{
protected:
    HRESULT Control(ULONG dwCode, ULONG cb = 0, BYTE* p = nullptr) { return m_play->PlaybackControl(dwCode, cb, p); }
    GuardedPage m_readOnly{PAGE_READONLY}, m_readWrite{PAGE_READWRITE};
};

TEST_F(PlayArguments, OutputsAreCheckedBeforeAnythingIsWritten)
{
    ULONG count = 0, dwFlags = 0;
    LPWSTR* pList = nullptr;
    EXPECT_EQ(E_INVALIDARG, m_play->GetSupportedFileExt(nullptr, &pList));
    EXPECT_EQ(E_INVALIDARG, m_play->GetSupportedFileExt(m_readOnly.EndingAtGuard<ULONG>(), &pList));
    EXPECT_EQ(E_INVALIDARG, m_play->GetSupportedFileExt(&count, m_readOnly.EndingAtGuard<LPWSTR*>()));
    EXPECT_EQ(nullptr, pList);
    ASSERT_EQ(S_OK, m_play->GetSupportedFileExt(&count, &pList));
    ReleasePlay(); // the list belongs to the host
    ASSERT_EQ(72u, count);
    EXPECT_STREQ(L".MP3", pList[0]);
    EXPECT_STREQ(L".ADTS", pList[71]);
    for (ULONG i = 0; i < count; ++i)
        CoTaskMemFree(pList[i]);
    CoTaskMemFree(pList);
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IPlay2, &m_play));

    // GetState's outputs are optional, each checked just before it is written.
    TESSALY_PLAYBACK_STATE state = Playback_State_Busy;
    double dTime = -1.0;
    EXPECT_EQ(S_OK, m_play->GetState(nullptr, nullptr));
    EXPECT_EQ(E_INVALIDARG, m_play->GetState(m_readOnly.EndingAtGuard<TESSALY_PLAYBACK_STATE>(), &dTime));
    EXPECT_EQ(-1.0, dTime);
    EXPECT_EQ(E_INVALIDARG, m_play->GetState(&state, m_readOnly.EndingAtGuard<double>()));
    EXPECT_EQ(Playback_State_Stop, state) << "the state was already written";
    EXPECT_EQ(S_OK, m_play->GetState(&state, &dTime));
    EXPECT_EQ(0.0, dTime);

    // Before any open, file information is success even without a record, and writes nothing.
    TESSALY_FILEINFO info = {7, 7.0, 7, 7};
    EXPECT_EQ(S_OK, m_play->GetFileInfo(nullptr));
    EXPECT_EQ(S_OK, m_play->GetFileInfo(&info));
    EXPECT_EQ(7u, info.dwAttributeMask);

    EXPECT_EQ(E_INVALIDARG, m_play->GetPlaybackFlags(nullptr));
    EXPECT_EQ(S_OK, m_play->GetPlaybackFlags(&dwFlags));
    EXPECT_EQ(TESSALY_PLAYBACK_FLAG_STRETCH, dwFlags);
    EXPECT_EQ(S_OK, m_play->SetPlaybackFlags(0xA5A50000));
    EXPECT_EQ(S_OK, m_play->GetPlaybackFlags(&dwFlags));
    EXPECT_EQ(0xA5A50000u, dwFlags) << "stored as given";
}

TEST_F(PlayArguments, ControlCodesTheSeekPositionAndTheOpenRecordAreChecked)
{
    double dPosition = 1.0;
    BYTE* const p = reinterpret_cast<BYTE*>(&dPosition);
    const struct
    {
        ULONG dwCode, cb;
        BYTE* pParam;
        HRESULT hr;
    } controls[] = {
        {0, 0, nullptr, TESSALY_E_NOTSUPPORTED}, {4, 0, nullptr, TESSALY_E_NOTSUPPORTED}, {7, 8, p, TESSALY_E_NOTSUPPORTED},
        {0xFFFFFFFF, 0, nullptr, TESSALY_E_NOTSUPPORTED},
        {TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 0, p, E_INVALIDARG}, {TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 8, nullptr, E_INVALIDARG},
        {TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 8, m_readOnly.EndingAtGuard<BYTE>(4), E_INVALIDARG}, // half unreadable
        // Checks passed, the engine refuses: nothing is open. One readable byte passes the check.
        {TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 1, p, E_FAIL}, {TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 8, p, E_FAIL},
        {TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr, E_FAIL}, {TESSALY_PLAYBACK_CONTROL_PAUSE, 0, nullptr, E_FAIL},
        {TESSALY_PLAYBACK_CONTROL_STOP, 0, nullptr, E_FAIL},
    };
    for (const auto& c : controls)
        EXPECT_EQ(c.hr, Control(c.dwCode, c.cb, c.pParam)) << c.dwCode << " " << c.cb;

    WCHAR song[] = L"C:\\Media\\song.mp3", notes[] = L"C:\\Media\\notes.txt";
    TESSALY_FILEINFO info = {7, 7.0, 7, 7};
    EXPECT_EQ(E_INVALIDARG, m_play->OpenFile(song, 0, 1, m_readOnly.EndingAtGuard<TESSALY_FILEINFO>()));
    EXPECT_EQ(TESSALY_E_NOTSUPPORTED, m_play->OpenFile(notes, 0, 1, &info));
    EXPECT_EQ(7u, info.dwAttributeMask);
    EXPECT_EQ(S_OK, m_play->CloseFile()) << "closing with nothing open";
}

TEST_F(PlayArguments, TheParentMustBeAWindowOrNullAndItsNewSizeBringsOneHiddenInformationWindow)
{
    LONG hWnd = 1;
    HWND stale = CreateWindowExW(0, L"STATIC", L"gone", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    DestroyWindow(stale);
    EXPECT_EQ(E_INVALIDARG, m_play->SetParentWindow(HandleOf(stale)));
    EXPECT_EQ(S_OK, m_play->GetParentWindow(&hWnd));
    EXPECT_EQ(HandleOf(m_parent), hWnd) << "the old parent stays";
    EXPECT_EQ(E_INVALIDARG, m_play->GetParentWindow(nullptr));
    EXPECT_EQ(E_INVALIDARG, m_play->GetParentWindow(m_readOnly.EndingAtGuard<LONG>()));

    EXPECT_EQ(E_INVALIDARG, m_play->SetParentWindowSize(0, 240));
    EXPECT_EQ(E_INVALIDARG, m_play->SetParentWindowSize(320, 0));
    EXPECT_EQ(S_OK, m_play->SetParentWindowSize(320, 240)) << "the parent's own size";
    EXPECT_EQ(E_FAIL, m_play->ShowMediaInfo(TRUE)) << "no information window yet";
    EXPECT_EQ(0, InfoWindowsOf(m_parent).second);
    EXPECT_EQ(S_OK, m_play->SetParentWindowSize(800, 600));
    const auto found = InfoWindowsOf(m_parent);
    ASSERT_EQ(1, found.second);
    EXPECT_FALSE(IsWindowVisible(found.first)) << "the engine never shows it";
    RECT rc;
    GetWindowRect(found.first, &rc);
    EXPECT_EQ(320, rc.right - rc.left) << "placed over the parent's real client area";
    EXPECT_EQ(240, rc.bottom - rc.top);
    EXPECT_EQ(S_OK, m_play->ShowMediaInfo(TRUE));
    EXPECT_EQ(S_OK, m_play->SetParentWindowSize(640, 200));
    EXPECT_EQ(1, InfoWindowsOf(m_parent).second) << "made once, never again";

    EXPECT_EQ(S_OK, m_play->SetParentWindow(0));
    EXPECT_EQ(S_OK, m_play->GetParentWindow(&hWnd));
    EXPECT_EQ(0, hWnd);
    ReleasePlay();
    EXPECT_EQ(0, InfoWindowsOf(m_parent).second) << "destroyed with the object";
}

TEST_F(PlayArguments, TextAndMediaCallsNeedTheInformationWindowThenRoundTripWithTheirChecks)
{
    ULONG crTop = 0, crBottom = 0, crText = 0;
    TESSALY_MEDIA_INFO empty = {};
    ComPtr<ITextDisplay> text;
    ASSERT_EQ(S_OK, QueryTo(m_play, IID_ITextDisplay, text));
    for (HRESULT hr : {m_play->SetMediaInfo(&empty), text->SetGradientBkColor(1, 2, FALSE), text->SetTextColor(3, FALSE),
                       text->SetFont(nullptr, FALSE), text->GetGradientBkColor(&crTop, &crBottom), text->GetTextColor(&crText)})
        EXPECT_EQ(E_FAIL, hr);

    ASSERT_EQ(S_OK, m_play->SetParentWindowSize(640, 480));
    EXPECT_EQ(S_OK, text->GetGradientBkColor(&crTop, &crBottom));
    EXPECT_EQ(S_OK, text->GetTextColor(&crText));
    EXPECT_EQ((std::vector<ULONG>{0x660000, 0xFF0000, 0xFFFFFF}), (std::vector<ULONG>{crTop, crBottom, crText})) << "defaults";
    EXPECT_EQ(S_OK, text->SetGradientBkColor(0x112233, 0x445566, TRUE));
    EXPECT_EQ(S_OK, text->SetTextColor(0x00FF00, FALSE));
    EXPECT_EQ(S_OK, text->GetGradientBkColor(&crTop, &crBottom));
    EXPECT_EQ(S_OK, text->GetTextColor(&crText));
    EXPECT_EQ((std::vector<ULONG>{0x112233, 0x445566, 0x00FF00}), (std::vector<ULONG>{crTop, crBottom, crText}));
    for (HRESULT hr : {text->GetGradientBkColor(nullptr, &crBottom), text->GetGradientBkColor(&crTop, nullptr),
                       text->GetTextColor(nullptr), text->GetTextColor(m_readOnly.EndingAtGuard<ULONG>()),
                       text->SetFont(m_readWrite.EndingAtGuard<LOGFONTW>(sizeof(LOGFONTW) - 1), TRUE), m_play->SetMediaInfo(nullptr),
                       m_play->SetMediaInfo(m_readWrite.EndingAtGuard<TESSALY_MEDIA_INFO>(sizeof(TESSALY_MEDIA_INFO) - 1))})
        EXPECT_EQ(E_INVALIDARG, hr);
    LOGFONTW* pFont = m_readWrite.EndingAtGuard<LOGFONTW>();
    ZeroMemory(pFont, sizeof(*pFont));
    pFont->lfHeight = -20;
    lstrcpyW(pFont->lfFaceName, L"Tahoma");
    EXPECT_EQ(S_OK, text->SetFont(pFont, TRUE));
    EXPECT_EQ(S_OK, text->SetFont(nullptr, TRUE)) << "back to the default fonts";
    TESSALY_MEDIA_INFO* pWhole = m_readWrite.EndingAtGuard<TESSALY_MEDIA_INFO>(); // strings without a terminator
    ZeroMemory(pWhole, sizeof(*pWhole));
    for (short& c : pWhole->wszTitle)
        c = L'T';
    EXPECT_EQ(S_OK, m_play->SetMediaInfo(pWhole));
}

// The proxy carries the unique pointers' nulls to the object, which answers as in process; an
// [out] pointer stays a reference the proxy itself refuses.
TEST_F(PlayArguments, NullsTheContractAllowsReachTheObjectsFromAnotherApartment)
{
    ASSERT_EQ(S_OK, m_play->SetParentWindowSize(640, 480));
    ComPtr<ITextDisplay> text;
    ComPtr<IQueryFileInfo> query;
    ASSERT_EQ(S_OK, QueryTo(m_play, IID_ITextDisplay, text));
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_QueryFileInfo, nullptr, CLSCTX_INPROC_SERVER, IID_IQueryFileInfo, &query));
    std::wstring path = CTestMedia::Path("clip.wmv");
    std::vector<HRESULT> results;
    TESSALY_PLAYBACK_STATE state = Playback_State_Busy;
    TESSALY_FILEINFO direct = {}, viaProxy = {}, refused = {7, 7.0, 7, 7};
    ASSERT_EQ(S_OK, CallFromAnotherApartment<IPlay2>(m_play.Get(), IID_IPlay2, [&](IPlay2* remote) {
        results = {remote->OpenFile(&path[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, nullptr), remote->GetState(&state, nullptr),
                   remote->GetState(nullptr, nullptr), remote->SetMediaInfo(nullptr)};
    }));
    ASSERT_EQ(S_OK, CallFromAnotherApartment<ITextDisplay>(text.Get(), IID_ITextDisplay, [&](ITextDisplay* remote) {
        LOGFONTW font = {};
        font.lfHeight = -20;
        results.push_back(remote->SetFont(&font, TRUE));
        results.push_back(remote->SetFont(nullptr, FALSE));
    }));
    ASSERT_EQ(S_OK, CallFromAnotherApartment<IQueryFileInfo>(query.Get(), IID_IQueryFileInfo, [&](IQueryFileInfo* remote) {
        WCHAR unknown[] = L"C:\\Media\\clip.zzz";
        results.push_back(remote->GetFileInfo(unknown, &refused));
        results.push_back(remote->GetFileInfo(&path[0], &viaProxy));
    }));
    EXPECT_EQ((std::vector<HRESULT>{S_OK, S_OK, HRESULT_FROM_WIN32(RPC_X_NULL_REF_POINTER), E_INVALIDARG, S_OK, S_OK,
                                    TESSALY_E_NOTSUPPORTED, S_OK}), results);
    EXPECT_EQ(Playback_State_Stop, state);
    ASSERT_EQ(S_OK, query->GetFileInfo(&path[0], &direct));
    EXPECT_EQ(0, memcmp(&direct, &viaProxy, sizeof(direct))) << "a real file answers the same through the proxy";
    EXPECT_EQ(160u, viaProxy.dwWidth);
}

// QueryFileInfo refuses a record it cannot write, leaves the record alone on a refusal and answers after one.
TEST_F(PlayArguments, QueryFileInfoRefusalsLeaveTheRecordAloneAndTheNextQueryAnswers)
{
    ReleasePlay();
    DestroyWindow(m_parent);
    m_parent = nullptr;
    ComPtr<IQueryFileInfo> query;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_QueryFileInfo, nullptr, CLSCTX_INPROC_SERVER, IID_IQueryFileInfo, &query));
    WCHAR song[] = L"C:\\song.mp3";
    EXPECT_EQ(E_INVALIDARG, query->GetFileInfo(song, nullptr));
    EXPECT_EQ(E_INVALIDARG, query->GetFileInfo(song, m_readOnly.EndingAtGuard<TESSALY_FILEINFO>()));
    for (const std::wstring& path : {std::wstring(L"C:\\Media\\notes.txt"), std::wstring(L"C:\\Media\\noextension"),
                                     CTestMedia::Path("missing.mp3"), CTestMedia::Path("noise.avi")})
    {
        TESSALY_FILEINFO info = {7, 7.0, 7, 7}, good = {};
        const HRESULT hr = query->GetFileInfo(const_cast<LPWSTR>(path.c_str()), &info);
        EXPECT_EQ(path.find(L"Media") != std::wstring::npos, hr == TESSALY_E_NOTSUPPORTED) << std::hex << hr;
        EXPECT_TRUE(FAILED(hr));
        EXPECT_EQ((std::vector<double>{7, 7.0, 7, 7}),
                  (std::vector<double>{double(info.dwAttributeMask), info.dDuration, double(info.dwWidth), double(info.dwHeight)}));
        std::wstring wav = CTestMedia::Path("tone.wav");
        EXPECT_EQ(S_OK, query->GetFileInfo(&wav[0], &good));
        EXPECT_EQ(TESSALY_FILEINFO_AUDIO_ONLY | TESSALY_FILEINFO_SEEKABLE, good.dwAttributeMask);
    }
}

} // namespace
