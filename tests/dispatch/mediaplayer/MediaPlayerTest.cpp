#include "MediaPlayerTest.h"

#include <cstdio>

#include "backends/dshow/CDShowPlayer.h"
#include "backends/picture/CGdiplusPictViewer.h"
#include "backends/quicktime/CQTAudioPlayer.h"
#include "backends/quicktime/CQTPlayer.h"
#include "backends/wmp/CWMPPlayer.h"

namespace {

// The real back-end's table: its strings are static, so they outlive the object asked.
template <class TPlayer>
std::unique_ptr<CTestBackEnd> StandIn(CCallLog& log, const char* pszName)
{
    TPlayer real;
    DWORD dwCount = 0;
    LPCWSTR* ppTable = real.GetSupportedFileExt(&dwCount);
    return std::unique_ptr<CTestBackEnd>(new CTestBackEnd(log, pszName, ppTable, dwCount));
}

std::string EventEntry(DWORD dwEvent, ULONG_PTR ulParam)
{
    char buffer[64];
    switch (dwEvent)
    {
    case STREAMING_EVENT_PROGRESS:
        std::snprintf(buffer, sizeof(buffer), "event.progress(%g)", *reinterpret_cast<double*>(ulParam));
        break;
    case STREAMING_EVENT_COMPLETE:
        std::snprintf(buffer, sizeof(buffer), "event.complete(%lu)", static_cast<unsigned long>(ulParam));
        break;
    case STREAMING_EVENT_ERROR:
        std::snprintf(buffer, sizeof(buffer), "event.error(0x%08lx)", static_cast<unsigned long>(ulParam));
        break;
    case STREAMING_EVENT_TRACK_COMPLETE:
        std::snprintf(buffer, sizeof(buffer), "event.track_complete(%lu)", static_cast<unsigned long>(ulParam));
        break;
    default:
        std::snprintf(buffer, sizeof(buffer), "event.unknown(%lu)", dwEvent);
        break;
    }
    return buffer;
}

} // namespace

bool CTestWindowsMediaRoute::PrefersMediaPlayerControl(LPCWSTR pwszFile) const
{
    return wcsstr(pwszFile, L"protected") != nullptr;
}

void MediaPlayerTest::SetUp()
{
    hWndParent = CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW, 0, 0, 320,
                                 240, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(hWndParent, nullptr);
    log.NameWindow(hWndParent, "parent");

    CMediaPlayer::BackEnds backEnds;
    backEnds.players.push_back(StandIn<CDShowPlayer>(log, "DS"));
    backEnds.players.push_back(StandIn<CGdiplusPictViewer>(log, "PV"));
    backEnds.players.push_back(StandIn<CWMPPlayer>(log, "WMP"));
    backEnds.players.push_back(StandIn<CQTPlayer>(log, "QT"));
    backEnds.players.push_back(StandIn<CQTAudioPlayer>(log, "QA"));
    pDS = static_cast<CTestBackEnd*>(backEnds.players[0].get());
    pPV = static_cast<CTestBackEnd*>(backEnds.players[1].get());
    pWMP = static_cast<CTestBackEnd*>(backEnds.players[2].get());
    pQT = static_cast<CTestBackEnd*>(backEnds.players[3].get());
    pQA = static_cast<CTestBackEnd*>(backEnds.players[4].get());
    backEnds.pWMPPlayer = pWMP;
    pCD = new CScriptedCDGraph(log, "CD");
    backEnds.pCDDAGraph.reset(pCD);
    backEnds.pWindowsMediaRoute.reset(new CTestWindowsMediaRoute);
    player.reset(new CMediaPlayerProbe(std::move(backEnds)));
    player->SetEventCallback(&MediaPlayerTest::OnEvent, this);
}

void MediaPlayerTest::TearDown()
{
    if (player)
        player->Destroy();
    player.reset();
    if (hWndParent)
        DestroyWindow(hWndParent);
    PumpFor(0);
}

HRESULT MediaPlayerTest::OnEvent(DWORD dwEvent, ULONG_PTR ulParam, void* pContext)
{
    auto pTest = static_cast<MediaPlayerTest*>(pContext);
    if (dwEvent == STREAMING_EVENT_PROGRESS)
        pTest->progress.push_back(*reinterpret_cast<double*>(ulParam));
    pTest->log.Add(EventEntry(dwEvent, ulParam));
    return S_OK;
}

HRESULT MediaPlayerTest::Open(LPCWSTR pwszFile, TESSALY_FILEINFO* pInfo, DWORD dwOpenFlags,
                              DWORD dwPlaybackFlags)
{
    EXPECT_EQ(player->Init(pwszFile), S_OK);
    log.Clear();
    return player->OpenFile(pwszFile, dwOpenFlags, dwPlaybackFlags, pInfo);
}

void MediaPlayerTest::OpenAndPlay(LPCWSTR pwszFile)
{
    ASSERT_EQ(Open(pwszFile), S_OK);
    ASSERT_EQ(player->Play(), S_OK);
    log.Clear();
}

bool MediaPlayerTest::PumpUntil(const std::function<bool()>& done, DWORD dwTimeoutMs)
{
    const ULONGLONG start = GetTickCount64();
    for (;;)
    {
        MSG msg;
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
        {
            TranslateMessage(&msg);
            DispatchMessageW(&msg);
            if (done())
                return true;
        }
        if (done())
            return true;
        const ULONGLONG elapsed = GetTickCount64() - start;
        if (elapsed >= dwTimeoutMs)
            return false;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(dwTimeoutMs - elapsed), QS_ALLINPUT);
    }
}

void MediaPlayerTest::PumpFor(DWORD dwMs)
{
    PumpUntil([] { return false; }, dwMs);
}
