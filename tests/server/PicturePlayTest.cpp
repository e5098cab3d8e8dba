// Pictures as a host meets them through the registered library: what an open says of the file,
// the picture in the host's window, and how play, stop and seek treat a still.
#include <windows.h>
#include <objbase.h>
#include <ocidl.h>

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "CPictureCheck.h"
#include "CPictureFiles.h"
#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"
#include "tests/support/CMessagePump.h"
#include "tests/support/CRecordingSink.h"

namespace {

const COLORREF kRed = RGB(255, 0, 0);
const wchar_t kHostClass[] = L"Tessaly.Test.PicturePlayHost";

CPictureFiles::Painter Solid(COLORREF cr)
{
    return [cr](int, int) { return cr; };
}

// A record filled with a pattern no answer could contain, so an untouched one shows.
TESSALY_FILEINFO Patterned()
{
    TESSALY_FILEINFO info;
    memset(&info, 0xCD, sizeof(info));
    return info;
}

bool Untouched(const TESSALY_FILEINFO& info)
{
    const TESSALY_FILEINFO pattern = Patterned();
    return memcmp(&info, &pattern, sizeof(info)) == 0;
}

class PicturePlay : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IPlay2, &m_play));
        WNDCLASSW wc = {};
        wc.lpfnWndProc = DefWindowProcW;
        wc.hInstance = GetModuleHandleW(nullptr);
        wc.lpszClassName = kHostClass;
        // White, so that black around a picture can only come from the engine's window.
        wc.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
        RegisterClassW(&wc); // the next case finds it registered
        // A popup's client area is the whole window. Shown without activation: Wine hands an
        // activated window to the absent window manager and waits two seconds to destroy it.
        m_host = CreateWindowExW(0, kHostClass, L"host", WS_POPUP, 0, 0, 200, 200, nullptr, nullptr, wc.hInstance,
                                 nullptr);
        ASSERT_NE(nullptr, m_host);
        ShowWindow(m_host, SW_SHOWNOACTIVATE);
        ASSERT_EQ(S_OK, m_play->SetParentWindow(static_cast<LONG>(reinterpret_cast<LONG_PTR>(m_host))));

        ComPtr<IConnectionPointContainer> container;
        ASSERT_EQ(S_OK, QueryTo(m_play, IID_IConnectionPointContainer, container));
        ASSERT_EQ(S_OK, container->FindConnectionPoint(IID_IPlayEvents, &m_events));
        ASSERT_EQ(S_OK, m_events->Advise(&m_sink, &m_dwCookie));
    }
    void TearDown() override
    {
        m_events.Reset();
        m_play.Reset();
        DestroyWindow(m_host);
        CoUninitialize();
    }

    HRESULT Open(const std::wstring& path, DWORD dwOpenFlags, DWORD dwPlaybackFlags, TESSALY_FILEINFO* pInfo)
    {
        std::wstring copy = path;
        const HRESULT hr = m_play->OpenFile(&copy[0], dwOpenFlags, dwPlaybackFlags, pInfo);
        RedrawWindow(m_host, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
        PumpFor(50);
        return hr;
    }
    HRESULT Control(ULONG dwControl) { return m_play->PlaybackControl(dwControl, 0, nullptr); }
    HRESULT Seek(double dSeconds)
    {
        return m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, sizeof(dSeconds),
                                       reinterpret_cast<BYTE*>(&dSeconds));
    }
    TESSALY_PLAYBACK_STATE State()
    {
        TESSALY_PLAYBACK_STATE state = Playback_State_Error;
        EXPECT_EQ(S_OK, m_play->GetState(&state, nullptr));
        return state;
    }
    bool PumpUntil(const std::function<bool()>& done, DWORD dwMilliseconds)
    {
        return CMessagePump::PumpUntil(done, dwMilliseconds);
    }
    void PumpFor(DWORD dwMilliseconds)
    {
        PumpUntil([] { return false; }, dwMilliseconds);
    }
    std::vector<double> Ticks() const
    {
        std::vector<double> ticks;
        for (const auto& e : m_log)
        {
            if (e.event == "progress")
                ticks.push_back(e.dProgress);
        }
        return ticks;
    }
    int Count(const char* pszEvent) const
    {
        int n = 0;
        for (const auto& e : m_log)
            n += e.event == pszEvent;
        return n;
    }

    CPictureFiles m_files;
    std::vector<CRecordingSink::Entry> m_log;
    CRecordingSink m_sink{"host", &m_log};
    ComPtr<IPlay2> m_play;
    ComPtr<IConnectionPoint> m_events;
    DWORD m_dwCookie = 0;
    HWND m_host = nullptr;
};

TEST_F(PicturePlay, AnOpenedPictureIsAStillOfItsOwnSizeShownInTheHostWindowEvenAfterAFailedOpen)
{
    const std::string note = "A shopping list, not a photograph.\r\n";
    const std::wstring text = m_files.Bytes(L"notes.jpg", std::vector<BYTE>(note.begin(), note.end()));
    TESSALY_FILEINFO info = Patterned();
    ASSERT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), Open(text, 0, 0, &info));
    EXPECT_TRUE(Untouched(info));

    // The back-end that refused the last file takes this one: it must get the window back.
    const std::wstring red = m_files.Encode(L"red.png", 64, 32, Solid(kRed));
    ASSERT_EQ(S_OK, Open(red, 0, 0, &info));
    EXPECT_EQ(TESSALY_FILEINFO_PICTURE, info.dwAttributeMask) << "neither seekable nor sound";
    EXPECT_EQ(0.0, info.dDuration);
    EXPECT_EQ(64u, info.dwWidth);
    EXPECT_EQ(32u, info.dwHeight);
    EXPECT_TRUE(ShowsPictureAt(m_host, {68, 84, 132, 116}, kRed)) << "kept at its size, centred";
}

// A still has no time line: playing it counts ticks of the progress timer, and a position to
// seek to means nothing to it.
TEST_F(PicturePlay, PlayingAPictureCountsTicksAndEverySeekIsRefused)
{
    const std::wstring red = m_files.Encode(L"red.png", 64, 32, Solid(kRed));
    ASSERT_EQ(S_OK, Open(red, 0, 0, nullptr));
    EXPECT_EQ(E_FAIL, Seek(1.0)) << "stopped, nothing plays to seek in";

    ASSERT_EQ(S_OK, Control(TESSALY_PLAYBACK_CONTROL_PLAY));
    EXPECT_EQ(Playback_State_Play, State());
    ASSERT_TRUE(PumpUntil([&] { return Ticks().size() >= 2; }, 5000));
    EXPECT_EQ(TESSALY_E_NOTSEEKABLE, Seek(60.0));
    ASSERT_TRUE(PumpUntil([&] { return Ticks().size() >= 4; }, 5000));
    const std::vector<double> ticks = Ticks();
    for (size_t i = 0; i < ticks.size(); ++i)
        EXPECT_EQ(static_cast<double>(i + 1), ticks[i]) << "tick " << i << ": one more than the last, seek or not";

    ASSERT_EQ(S_OK, Control(TESSALY_PLAYBACK_CONTROL_STOP));
    EXPECT_EQ(Playback_State_Stop, State());
    EXPECT_EQ(0, Count("complete")) << "a still never ends by itself";
    EXPECT_EQ(0, Count("error"));
    EXPECT_TRUE(ShowsPictureAt(m_host, {68, 84, 132, 116}, kRed)) << "stopping leaves the picture up";
}

} // namespace
