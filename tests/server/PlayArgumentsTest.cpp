// The Play object's checks at the host boundary, with null, unreadable and read-only memory,
// seen by a host that knows only the contract.
#include <windows.h>
#include <objbase.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/ComPtr.h"
#include "CTestMedia.h"
#include "InfoWindows.h"
#include "engine/TessalyContract.h"
#include "tests/support/CrossApartment.h"

namespace {

// Two pages: the first with the given protection, the second inaccessible, so a record can be
// placed to end exactly where readable memory ends.
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
    // An address whose next cb bytes are accessible, and nothing after them.
    template <class T>
    T* EndingAtGuard(size_t cb = sizeof(T)) const
    {
        return reinterpret_cast<T*>(m_pBase + kPage - cb);
    }
    static const size_t kPage = 4096;

private:
    BYTE* m_pBase = nullptr;
};

class PlayArguments : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IPlay2, &m_play));
        m_parent = CreateWindowExW(0, L"STATIC", L"host", WS_POPUP, 0, 0, 640, 480, nullptr, nullptr, nullptr, nullptr);
        ASSERT_NE(nullptr, m_parent);
    }
    void TearDown() override
    {
        m_play.Reset();
        DestroyWindow(m_parent);
        CoUninitialize();
    }
    LONG Handle(HWND hWnd) const { return static_cast<LONG>(reinterpret_cast<LONG_PTR>(hWnd)); }
    // The information window comes with the first new parent size.
    void MakeInfoWindow()
    {
        ASSERT_EQ(S_OK, m_play->SetParentWindow(Handle(m_parent)));
        ASSERT_EQ(S_OK, m_play->SetParentWindowSize(320, 240));
    }

    ComPtr<IPlay2> m_play;
    HWND m_parent = nullptr;
};

TEST_F(PlayArguments, SupportedExtensionsCheckBothOutputsAndOutliveTheObject)
{
    ULONG count = 0;
    LPWSTR* pList = nullptr;
    EXPECT_EQ(E_INVALIDARG, m_play->GetSupportedFileExt(nullptr, &pList));
    EXPECT_EQ(E_INVALIDARG, m_play->GetSupportedFileExt(&count, nullptr));
    GuardedPages readOnly(PAGE_READONLY);
    EXPECT_EQ(E_INVALIDARG, m_play->GetSupportedFileExt(readOnly.EndingAtGuard<ULONG>(), &pList));
    EXPECT_EQ(E_INVALIDARG, m_play->GetSupportedFileExt(&count, readOnly.EndingAtGuard<LPWSTR*>()));
    EXPECT_EQ(nullptr, pList);

    ASSERT_EQ(S_OK, m_play->GetSupportedFileExt(&count, &pList));
    m_play.Reset(); // the list belongs to the host now
    ASSERT_EQ(72u, count);
    EXPECT_STREQ(L".MP3", pList[0]);
    EXPECT_STREQ(L".EMF", pList[30]);
    EXPECT_STREQ(L"", pList[31]);
    EXPECT_STREQ(L".MOV", pList[32]);
    EXPECT_STREQ(L".ADTS", pList[71]);
    for (ULONG i = 0; i < count; ++i)
        CoTaskMemFree(pList[i]);
    CoTaskMemFree(pList);
}

TEST_F(PlayArguments, GetStateTakesOptionalOutputsAndChecksEachBeforeWriting)
{
    EXPECT_EQ(S_OK, m_play->GetState(nullptr, nullptr));
    TESSALY_PLAYBACK_STATE state = Playback_State_Busy;
    double dTime = -1.0;
    EXPECT_EQ(S_OK, m_play->GetState(&state, &dTime));
    EXPECT_EQ(Playback_State_Stop, state);
    EXPECT_EQ(0.0, dTime);

    GuardedPages readOnly(PAGE_READONLY);
    dTime = -1.0;
    EXPECT_EQ(E_INVALIDARG, m_play->GetState(readOnly.EndingAtGuard<TESSALY_PLAYBACK_STATE>(), &dTime));
    EXPECT_EQ(-1.0, dTime);
    state = Playback_State_Busy;
    EXPECT_EQ(E_INVALIDARG, m_play->GetState(&state, readOnly.EndingAtGuard<double>()));
    EXPECT_EQ(Playback_State_Stop, state) << "the state was already written";
}

TEST_F(PlayArguments, FileInformationBeforeAnyOpenIsSuccessEvenWithoutARecord)
{
    EXPECT_EQ(S_OK, m_play->GetFileInfo(nullptr));
    TESSALY_FILEINFO info = {7, 7.0, 7, 7};
    EXPECT_EQ(S_OK, m_play->GetFileInfo(&info));
    EXPECT_EQ(7u, info.dwAttributeMask);
}

TEST_F(PlayArguments, UnknownControlCodesAreNotSupported)
{
    for (ULONG code : {0ul, 4ul, 5ul, 7ul, 0xFFFFFFFFul})
        EXPECT_EQ(TESSALY_E_NOTSUPPORTED, m_play->PlaybackControl(code, 0, nullptr)) << code;
    // Known codes go to the engine, which has nothing open.
    EXPECT_EQ(E_FAIL, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    EXPECT_EQ(E_FAIL, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PAUSE, 0, nullptr));
    EXPECT_EQ(E_FAIL, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_STOP, 0, nullptr));
}

TEST_F(PlayArguments, SeekNeedsASizeAndReadableBytesButNotExactlyEight)
{
    double dPosition = 1.0;
    BYTE* p = reinterpret_cast<BYTE*>(&dPosition);
    EXPECT_EQ(E_INVALIDARG, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 0, p));
    EXPECT_EQ(E_INVALIDARG, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 8, nullptr));
    GuardedPages readable(PAGE_READONLY);
    EXPECT_EQ(E_INVALIDARG,
              m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 8, readable.EndingAtGuard<BYTE>(4)))
        << "the last four of the eight bytes are unreadable";
    // One readable byte is enough for the check; the engine then refuses: nothing is open.
    EXPECT_EQ(E_FAIL, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 1, p));
    EXPECT_EQ(E_FAIL, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 8, p));
}

TEST_F(PlayArguments, ParentWindowMustBeAWindowOrNull)
{
    LONG hWnd = 1;
    EXPECT_EQ(S_OK, m_play->GetParentWindow(&hWnd));
    EXPECT_EQ(0, hWnd);
    EXPECT_EQ(S_OK, m_play->SetParentWindow(Handle(m_parent)));

    HWND stale = CreateWindowExW(0, L"STATIC", L"gone", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    DestroyWindow(stale);
    EXPECT_EQ(E_INVALIDARG, m_play->SetParentWindow(Handle(stale)));
    EXPECT_EQ(S_OK, m_play->GetParentWindow(&hWnd));
    EXPECT_EQ(Handle(m_parent), hWnd) << "the old parent stays";

    EXPECT_EQ(S_OK, m_play->SetParentWindow(0));
    EXPECT_EQ(S_OK, m_play->GetParentWindow(&hWnd));
    EXPECT_EQ(0, hWnd);

    EXPECT_EQ(E_INVALIDARG, m_play->GetParentWindow(nullptr));
    GuardedPages readOnly(PAGE_READONLY);
    EXPECT_EQ(E_INVALIDARG, m_play->GetParentWindow(readOnly.EndingAtGuard<LONG>()));
}

TEST_F(PlayArguments, TheInformationWindowAppearsOnlyForASizeOtherThanTheParents)
{
    EXPECT_EQ(E_INVALIDARG, m_play->SetParentWindowSize(0, 480));
    EXPECT_EQ(E_INVALIDARG, m_play->SetParentWindowSize(640, 0));
    ASSERT_EQ(S_OK, m_play->SetParentWindow(Handle(m_parent)));
    EXPECT_EQ(S_OK, m_play->SetParentWindowSize(640, 480)) << "the parent's own size";
    EXPECT_EQ(E_FAIL, m_play->ShowMediaInfo(TRUE)) << "no information window yet";
    EXPECT_EQ(0, InfoWindowsOf(m_parent).count);

    EXPECT_EQ(S_OK, m_play->SetParentWindowSize(800, 600));
    const ChildSearch found = InfoWindowsOf(m_parent);
    ASSERT_EQ(1, found.count);
    EXPECT_FALSE(IsWindowVisible(found.hFound)) << "the engine never shows it";
    RECT rc;
    GetWindowRect(found.hFound, &rc);
    EXPECT_EQ(640, rc.right - rc.left) << "placed over the parent's real client area";
    EXPECT_EQ(480, rc.bottom - rc.top);
    EXPECT_EQ(S_OK, m_play->ShowMediaInfo(TRUE));

    EXPECT_EQ(S_OK, m_play->SetParentWindowSize(320, 200));
    EXPECT_EQ(1, InfoWindowsOf(m_parent).count) << "made once, never again";
    m_play.Reset();
    EXPECT_EQ(0, InfoWindowsOf(m_parent).count) << "destroyed with the object";
}

TEST_F(PlayArguments, TextAndMediaCallsNeedTheInformationWindow)
{
    ULONG crTop = 0, crBottom = 0, crText = 0;
    EXPECT_EQ(E_FAIL, m_play->ShowMediaInfo(TRUE));
    TESSALY_MEDIA_INFO info = {};
    EXPECT_EQ(E_FAIL, m_play->SetMediaInfo(&info));
    ComPtr<ITextDisplay> text;
    ASSERT_EQ(S_OK, QueryTo(m_play, IID_ITextDisplay, text));
    EXPECT_EQ(E_FAIL, text->SetGradientBkColor(1, 2, FALSE));
    EXPECT_EQ(E_FAIL, text->SetTextColor(3, FALSE));
    EXPECT_EQ(E_FAIL, text->SetFont(nullptr, FALSE));
    EXPECT_EQ(E_FAIL, text->GetGradientBkColor(&crTop, &crBottom));
    EXPECT_EQ(E_FAIL, text->GetTextColor(&crText));
}

TEST_F(PlayArguments, ColoursAndFontsRoundTripWithTheirChecks)
{
    MakeInfoWindow();
    ComPtr<ITextDisplay> text;
    ASSERT_EQ(S_OK, QueryTo(m_play, IID_ITextDisplay, text));
    ULONG crTop = 0, crBottom = 0, crText = 0;
    EXPECT_EQ(S_OK, text->GetGradientBkColor(&crTop, &crBottom));
    EXPECT_EQ(0x660000u, crTop);
    EXPECT_EQ(0xFF0000u, crBottom);
    EXPECT_EQ(S_OK, text->GetTextColor(&crText));
    EXPECT_EQ(0xFFFFFFu, crText);

    EXPECT_EQ(S_OK, text->SetGradientBkColor(0x112233, 0x445566, TRUE));
    EXPECT_EQ(S_OK, text->SetTextColor(0x00FF00, FALSE));
    EXPECT_EQ(S_OK, text->GetGradientBkColor(&crTop, &crBottom));
    EXPECT_EQ(0x112233u, crTop);
    EXPECT_EQ(0x445566u, crBottom);
    EXPECT_EQ(S_OK, text->GetTextColor(&crText));
    EXPECT_EQ(0x00FF00u, crText);

    EXPECT_EQ(E_INVALIDARG, text->GetGradientBkColor(nullptr, &crBottom));
    EXPECT_EQ(E_INVALIDARG, text->GetGradientBkColor(&crTop, nullptr));
    EXPECT_EQ(E_INVALIDARG, text->GetTextColor(nullptr));
    GuardedPages readOnly(PAGE_READONLY);
    EXPECT_EQ(E_INVALIDARG, text->GetTextColor(readOnly.EndingAtGuard<ULONG>()));

    GuardedPages readable(PAGE_READWRITE);
    EXPECT_EQ(E_INVALIDARG, text->SetFont(readable.EndingAtGuard<LOGFONTW>(91), TRUE)) << "one byte short";
    LOGFONTW* pFont = readable.EndingAtGuard<LOGFONTW>();
    ZeroMemory(pFont, sizeof(*pFont));
    pFont->lfHeight = -20;
    lstrcpyW(pFont->lfFaceName, L"Tahoma");
    EXPECT_EQ(S_OK, text->SetFont(pFont, TRUE));
    EXPECT_EQ(S_OK, text->SetFont(nullptr, TRUE)) << "back to the default fonts";
}

TEST_F(PlayArguments, MediaInformationMustBeReadableForTheWholeRecord)
{
    MakeInfoWindow();
    EXPECT_EQ(E_INVALIDARG, m_play->SetMediaInfo(nullptr));
    GuardedPages pages(PAGE_READWRITE);
    // 3656 bytes do not fit in one page's end: place the record so its last byte is unreadable.
    TESSALY_MEDIA_INFO* pShort = pages.EndingAtGuard<TESSALY_MEDIA_INFO>(sizeof(TESSALY_MEDIA_INFO) - 1);
    EXPECT_EQ(E_INVALIDARG, m_play->SetMediaInfo(pShort));
    TESSALY_MEDIA_INFO* pWhole = pages.EndingAtGuard<TESSALY_MEDIA_INFO>();
    ZeroMemory(pWhole, sizeof(*pWhole));
    // Strings that fill their arrays without a terminator are still taken whole.
    for (short& c : pWhole->wszTitle)
        c = L'T';
    EXPECT_EQ(S_OK, m_play->SetMediaInfo(pWhole));
}

TEST_F(PlayArguments, PlaybackFlagsStartWithStretchAndAreStoredAsGiven)
{
    ULONG dwFlags = 0;
    EXPECT_EQ(S_OK, m_play->GetPlaybackFlags(&dwFlags));
    EXPECT_EQ(TESSALY_PLAYBACK_FLAG_STRETCH, dwFlags);
    EXPECT_EQ(S_OK, m_play->SetPlaybackFlags(0xA5A50000));
    EXPECT_EQ(S_OK, m_play->GetPlaybackFlags(&dwFlags));
    EXPECT_EQ(0xA5A50000u, dwFlags);
    EXPECT_EQ(E_INVALIDARG, m_play->GetPlaybackFlags(nullptr));
}

TEST_F(PlayArguments, OpenChecksTheRecordOnlyAfterTheEngineStarted)
{
    GuardedPages readOnly(PAGE_READONLY);
    WCHAR path[] = L"C:\\Media\\song.mp3";
    EXPECT_EQ(E_INVALIDARG, m_play->OpenFile(path, 0, 1, readOnly.EndingAtGuard<TESSALY_FILEINFO>()));
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
    MakeInfoWindow();
    HRESULT hrOpen = E_FAIL, hrState = E_FAIL, hrNoState = E_FAIL, hrMediaInfo = E_FAIL, hrFont = E_FAIL,
            hrFontGiven = E_FAIL;
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

    ComPtr<ITextDisplay> text;
    ASSERT_EQ(S_OK, QueryTo(m_play, IID_ITextDisplay, text));
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
