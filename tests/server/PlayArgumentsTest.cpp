// The Play object's checks at the host boundary, with null, unreadable and read-only memory,
// seen by a host that knows only the contract.
#include <windows.h>
#include <objbase.h>

#include <gtest/gtest.h>

#include <string>

#include "ServerHost.h"
#include "tests/support/CrossApartment.h"

namespace {

// Two pages: the first with the given protection, the second inaccessible, so a record can be
// placed to end exactly where accessible memory ends.
class GuardedPages
{
public:
    explicit GuardedPages(DWORD dwProtect)
    {
        m_pBase = static_cast<BYTE*>(VirtualAlloc(nullptr, 2 * kPage, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
        DWORD dwOld = 0;
        VirtualProtect(m_pBase + kPage, kPage, PAGE_NOACCESS, &dwOld);
        VirtualProtect(m_pBase, kPage, dwProtect, &dwOld);
    }
    ~GuardedPages() { VirtualFree(m_pBase, 0, MEM_RELEASE); }
    template <class T>
    T* EndingAtGuard(size_t cb = sizeof(T)) const { return reinterpret_cast<T*>(m_pBase + kPage - cb); }
    static const size_t kPage = 4096;

private:
    BYTE* m_pBase = nullptr;
};

class PlayArguments : public CServerHost
{
protected:
    HRESULT Control(ULONG dwCode, ULONG cb = 0, BYTE* p = nullptr) { return m_play->PlaybackControl(dwCode, cb, p); }
    // The information window comes with the first parent size other than the parent's own.
    ComPtr<ITextDisplay> MakeInfoWindow()
    {
        EXPECT_EQ(S_OK, m_play->SetParentWindowSize(640, 480));
        ComPtr<ITextDisplay> text;
        EXPECT_EQ(S_OK, QueryTo(m_play, IID_ITextDisplay, text));
        return text;
    }
    GuardedPages m_readOnly{PAGE_READONLY};
    GuardedPages m_readWrite{PAGE_READWRITE};
};

TEST_F(PlayArguments, OutputsAreCheckedBeforeAnythingIsWritten)
{
    ULONG count = 0, dwFlags = 0;
    LPWSTR* pList = nullptr;
    EXPECT_EQ(E_INVALIDARG, m_play->GetSupportedFileExt(nullptr, &pList));
    EXPECT_EQ(E_INVALIDARG, m_play->GetSupportedFileExt(&count, nullptr));
    EXPECT_EQ(E_INVALIDARG, m_play->GetSupportedFileExt(m_readOnly.EndingAtGuard<ULONG>(), &pList));
    EXPECT_EQ(E_INVALIDARG, m_play->GetSupportedFileExt(&count, m_readOnly.EndingAtGuard<LPWSTR*>()));
    EXPECT_EQ(nullptr, pList);
    ASSERT_EQ(S_OK, m_play->GetSupportedFileExt(&count, &pList));
    ReleasePlay(); // the list belongs to the host now
    ASSERT_EQ(72u, count);
    EXPECT_STREQ(L".MP3", pList[0]);
    EXPECT_STREQ(L".ADTS", pList[71]);
    for (ULONG i = 0; i < count; ++i)
        CoTaskMemFree(pList[i]);
    CoTaskMemFree(pList);
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IPlay2, &m_play));

    // GetState's outputs are optional, and each is checked just before it is written.
    EXPECT_EQ(S_OK, m_play->GetState(nullptr, nullptr));
    TESSALY_PLAYBACK_STATE state = Playback_State_Busy;
    double dTime = -1.0;
    EXPECT_EQ(S_OK, m_play->GetState(&state, &dTime));
    EXPECT_EQ(Playback_State_Stop, state);
    EXPECT_EQ(0.0, dTime);
    dTime = -1.0;
    EXPECT_EQ(E_INVALIDARG, m_play->GetState(m_readOnly.EndingAtGuard<TESSALY_PLAYBACK_STATE>(), &dTime));
    EXPECT_EQ(-1.0, dTime);
    state = Playback_State_Busy;
    EXPECT_EQ(E_INVALIDARG, m_play->GetState(&state, m_readOnly.EndingAtGuard<double>()));
    EXPECT_EQ(Playback_State_Stop, state) << "the state was already written";

    // Before any open, file information is success even without a record, and writes nothing.
    EXPECT_EQ(S_OK, m_play->GetFileInfo(nullptr));
    TESSALY_FILEINFO info = {7, 7.0, 7, 7};
    EXPECT_EQ(S_OK, m_play->GetFileInfo(&info));
    EXPECT_EQ(7u, info.dwAttributeMask);

    EXPECT_EQ(S_OK, m_play->GetPlaybackFlags(&dwFlags));
    EXPECT_EQ(TESSALY_PLAYBACK_FLAG_STRETCH, dwFlags);
    EXPECT_EQ(S_OK, m_play->SetPlaybackFlags(0xA5A50000));
    EXPECT_EQ(S_OK, m_play->GetPlaybackFlags(&dwFlags));
    EXPECT_EQ(0xA5A50000u, dwFlags) << "stored as given";
    EXPECT_EQ(E_INVALIDARG, m_play->GetPlaybackFlags(nullptr));
}

TEST_F(PlayArguments, ControlCodesAndTheSeekPositionAreChecked)
{
    for (ULONG code : {0ul, 4ul, 5ul, 7ul, 0xFFFFFFFFul})
        EXPECT_EQ(TESSALY_E_NOTSUPPORTED, Control(code)) << code;
    // Known codes go to the engine, which has nothing open.
    for (ULONG code : {TESSALY_PLAYBACK_CONTROL_PLAY, TESSALY_PLAYBACK_CONTROL_PAUSE, TESSALY_PLAYBACK_CONTROL_STOP})
        EXPECT_EQ(E_FAIL, Control(code)) << code;

    double dPosition = 1.0;
    BYTE* p = reinterpret_cast<BYTE*>(&dPosition);
    EXPECT_EQ(E_INVALIDARG, Control(TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 0, p));
    EXPECT_EQ(E_INVALIDARG, Control(TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 8, nullptr));
    EXPECT_EQ(E_INVALIDARG, Control(TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 8, m_readOnly.EndingAtGuard<BYTE>(4)))
        << "the last four of the eight bytes are unreadable";
    // One readable byte is enough for the check; the engine then refuses: nothing is open.
    EXPECT_EQ(E_FAIL, Control(TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 1, p));
    EXPECT_EQ(E_FAIL, Control(TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 8, p));
}

TEST_F(PlayArguments, TheParentMustBeAWindowOrNullAndItsNewSizeBringsOneHiddenInformationWindow)
{
    LONG hWnd = 1;
    EXPECT_EQ(S_OK, m_play->GetParentWindow(&hWnd));
    EXPECT_EQ(HandleOf(m_parent), hWnd);
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
    EXPECT_EQ(E_FAIL, m_play->SetMediaInfo(&empty));
    EXPECT_EQ(E_FAIL, text->SetGradientBkColor(1, 2, FALSE));
    EXPECT_EQ(E_FAIL, text->SetTextColor(3, FALSE));
    EXPECT_EQ(E_FAIL, text->SetFont(nullptr, FALSE));
    EXPECT_EQ(E_FAIL, text->GetGradientBkColor(&crTop, &crBottom));
    EXPECT_EQ(E_FAIL, text->GetTextColor(&crText));

    text = MakeInfoWindow();
    EXPECT_EQ(S_OK, text->GetGradientBkColor(&crTop, &crBottom));
    EXPECT_EQ(S_OK, text->GetTextColor(&crText));
    EXPECT_EQ((std::vector<ULONG>{0x660000, 0xFF0000, 0xFFFFFF}), (std::vector<ULONG>{crTop, crBottom, crText})) << "defaults";
    EXPECT_EQ(S_OK, text->SetGradientBkColor(0x112233, 0x445566, TRUE));
    EXPECT_EQ(S_OK, text->SetTextColor(0x00FF00, FALSE));
    EXPECT_EQ(S_OK, text->GetGradientBkColor(&crTop, &crBottom));
    EXPECT_EQ(S_OK, text->GetTextColor(&crText));
    EXPECT_EQ((std::vector<ULONG>{0x112233, 0x445566, 0x00FF00}), (std::vector<ULONG>{crTop, crBottom, crText}));
    EXPECT_EQ(E_INVALIDARG, text->GetGradientBkColor(nullptr, &crBottom));
    EXPECT_EQ(E_INVALIDARG, text->GetGradientBkColor(&crTop, nullptr));
    EXPECT_EQ(E_INVALIDARG, text->GetTextColor(nullptr));
    EXPECT_EQ(E_INVALIDARG, text->GetTextColor(m_readOnly.EndingAtGuard<ULONG>()));

    EXPECT_EQ(E_INVALIDARG, text->SetFont(m_readWrite.EndingAtGuard<LOGFONTW>(91), TRUE)) << "one byte short";
    LOGFONTW* pFont = m_readWrite.EndingAtGuard<LOGFONTW>();
    ZeroMemory(pFont, sizeof(*pFont));
    pFont->lfHeight = -20;
    lstrcpyW(pFont->lfFaceName, L"Tahoma");
    EXPECT_EQ(S_OK, text->SetFont(pFont, TRUE));
    EXPECT_EQ(S_OK, text->SetFont(nullptr, TRUE)) << "back to the default fonts";

    // Media information must be readable for the whole record; strings filling their arrays
    // without a terminator are still taken whole.
    EXPECT_EQ(E_INVALIDARG, m_play->SetMediaInfo(nullptr));
    EXPECT_EQ(E_INVALIDARG, m_play->SetMediaInfo(m_readWrite.EndingAtGuard<TESSALY_MEDIA_INFO>(sizeof(TESSALY_MEDIA_INFO) - 1)));
    TESSALY_MEDIA_INFO* pWhole = m_readWrite.EndingAtGuard<TESSALY_MEDIA_INFO>();
    ZeroMemory(pWhole, sizeof(*pWhole));
    for (short& c : pWhole->wszTitle)
        c = L'T';
    EXPECT_EQ(S_OK, m_play->SetMediaInfo(pWhole));
}

TEST_F(PlayArguments, OpenChecksTheRecordOnlyAfterTheEngineStarted)
{
    WCHAR path[] = L"C:\\Media\\song.mp3";
    EXPECT_EQ(E_INVALIDARG, m_play->OpenFile(path, 0, 1, m_readOnly.EndingAtGuard<TESSALY_FILEINFO>()));
    WCHAR unknown[] = L"C:\\Media\\notes.txt";
    TESSALY_FILEINFO info = {7, 7.0, 7, 7};
    EXPECT_EQ(TESSALY_E_NOTSUPPORTED, m_play->OpenFile(unknown, 0, 1, &info));
    EXPECT_EQ(7u, info.dwAttributeMask);
    EXPECT_EQ(S_OK, m_play->CloseFile()) << "closing with nothing open";
}

// A host in another apartment may pass the nulls the contract allows: the proxy carries them to the
// object, which answers as it does in process (the generated proxy refuses a null reference
// pointer itself, with RPC_X_NULL_REF_POINTER, before the object sees it).
TEST_F(PlayArguments, NullsTheContractAllowsReachTheObjectFromAnotherApartment)
{
    ComPtr<ITextDisplay> text = MakeInfoWindow();
    HRESULT hrOpen = E_FAIL, hrState = E_FAIL, hrNoState = E_FAIL, hrMediaInfo = E_FAIL, hrFont = E_FAIL, hrFontGiven = E_FAIL;
    TESSALY_PLAYBACK_STATE state = Playback_State_Busy;
    ASSERT_EQ(S_OK, CallFromAnotherApartment<IPlay2>(m_play.Get(), IID_IPlay2, [&](IPlay2* remote) {
        std::wstring path = CTestMedia::Path("tone.wav");
        hrOpen = remote->OpenFile(&path[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, nullptr);
        hrState = remote->GetState(&state, nullptr);
        hrNoState = remote->GetState(nullptr, nullptr);
        hrMediaInfo = remote->SetMediaInfo(nullptr);
    }));
    EXPECT_EQ(S_OK, hrOpen);
    EXPECT_EQ(S_OK, hrState);
    EXPECT_EQ(Playback_State_Stop, state);
    EXPECT_EQ(HRESULT_FROM_WIN32(RPC_X_NULL_REF_POINTER), hrNoState) << "an [out] pointer stays a reference pointer";
    EXPECT_EQ(E_INVALIDARG, hrMediaInfo) << "the object's own refusal, not the proxy's";
    ASSERT_EQ(S_OK, CallFromAnotherApartment<ITextDisplay>(text.Get(), IID_ITextDisplay, [&](ITextDisplay* remote) {
        LOGFONTW font = {};
        font.lfHeight = -20;
        lstrcpyW(font.lfFaceName, L"Tahoma");
        hrFontGiven = remote->SetFont(&font, TRUE);
        hrFont = remote->SetFont(nullptr, FALSE);
    }));
    EXPECT_EQ(S_OK, hrFontGiven);
    EXPECT_EQ(S_OK, hrFont) << "back to the default fonts";
}

} // namespace
