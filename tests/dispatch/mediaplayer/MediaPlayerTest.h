// The dispatcher under test, built through its seam with scripted back-ends in the engine's
// search order (each with the extension table of the real back-end it stands for), a scripted
// CD back-end, a Windows Media route that tests steer by path, a host window and a message loop.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "CScriptedBackEnd.h"
#include "backends/cdda/CDDAGraph.h"
#include "backends/dshow/CDShowPlayer.h"
#include "backends/picture/CGdiplusPictViewer.h"
#include "backends/quicktime/CQTAudioPlayer.h"
#include "backends/quicktime/CQTPlayer.h"
#include "backends/wmp/CWMPPlayer.h"
#include "dispatch/CMediaPlayer.h"
#include "dispatch/CWindowsMediaRoute.h"
#include "tests/support/CMessagePump.h"

using CTestBackEnd = CScriptedBackEnd<CPlayerBase>;
using Entries = std::vector<std::string>;

class CScriptedCDGraph : public CScriptedBackEnd<CDDAGraph>
{
public:
    explicit CScriptedCDGraph(CCallLog& log) : CScriptedBackEnd<CDDAGraph>(log, "CD", nullptr, 0) {}
    double dDuration = 0.0;
    HRESULT OpenCD(WCHAR wcDrive, WORD wStart, WORD wEnd) override
    {
        return Answer("OpenCD", Format("%c,%u,%u", static_cast<char>(wcDrive), wStart, wEnd));
    }
    HRESULT GetDuration(double* pdDuration) override { return *pdDuration = dDuration, Answer("GetDuration"); }
};

// Reaches the states and the corner the dispatcher never enters by itself.
class CMediaPlayerProbe : public CMediaPlayer
{
public:
    using CMediaPlayer::CMediaPlayer;
    void ForceState(TESSALY_PLAYBACK_STATE state) { m_PlayState = state; }
    void ForgetCurrentPlayer() { m_pCurPlayer = nullptr; }
    HWND EventWindow() const { return m_hEventWnd; }
};

// Sends the Windows Media files whose path holds "protected" to the Media Player control.
class CTestWindowsMediaRoute : public CWindowsMediaRoute
{
protected:
    bool PrefersMediaPlayerControl(LPCWSTR pwszFile) const override { return wcsstr(pwszFile, L"protected"); }
};

class MediaPlayerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        hWndParent = CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW, 0, 0, 320, 240, nullptr, nullptr,
                                     nullptr, nullptr);
        ASSERT_NE(hWndParent, nullptr);
        log.NameWindow(hWndParent, "parent");
        CMediaPlayer::BackEnds backEnds;
        pDS = StandIn<CDShowPlayer>(backEnds, "DS");
        pPV = StandIn<CGdiplusPictViewer>(backEnds, "PV");
        pWMP = StandIn<CWMPPlayer>(backEnds, "WMP");
        pQT = StandIn<CQTPlayer>(backEnds, "QT");
        pQA = StandIn<CQTAudioPlayer>(backEnds, "QA");
        backEnds.pWMPPlayer = pWMP;
        backEnds.pCDDAGraph.reset(pCD = new CScriptedCDGraph(log));
        backEnds.pWindowsMediaRoute.reset(new CTestWindowsMediaRoute);
        player.reset(new CMediaPlayerProbe(std::move(backEnds)));
        player->SetEventCallback(&MediaPlayerTest::OnEvent, this);
    }
    void TearDown() override
    {
        player->Destroy();
        player.reset();
        DestroyWindow(hWndParent);
        CMessagePump::PumpFor(0);
    }

    // The real back-end's table: its strings are static, so they outlive the object asked.
    template <class TPlayer>
    CTestBackEnd* StandIn(CMediaPlayer::BackEnds& backEnds, const char* pszName)
    {
        DWORD dwCount = 0;
        LPCWSTR* ppTable = TPlayer().GetSupportedFileExt(&dwCount);
        backEnds.players.emplace_back(new CTestBackEnd(log, pszName, ppTable, dwCount));
        return static_cast<CTestBackEnd*>(backEnds.players.back().get());
    }

    static HRESULT OnEvent(DWORD dwEvent, ULONG_PTR ulParam, void* pContext)
    {
        auto pTest = static_cast<MediaPlayerTest*>(pContext);
        const char* names[] = {"unknown", "complete", "error", "progress", "track_complete"};
        if (dwEvent == STREAMING_EVENT_PROGRESS)
            pTest->progress.push_back(*reinterpret_cast<double*>(ulParam));
        pTest->log.Add(dwEvent == STREAMING_EVENT_PROGRESS
                           ? Format("event.progress(%g)", pTest->progress.back())
                           : Format("event.%s(0x%lx)", names[dwEvent < 5 ? dwEvent : 0], static_cast<unsigned long>(ulParam)));
        return S_OK;
    }

    // Init for the file, a clean log, then OpenFile.
    HRESULT Open(LPCWSTR pwszFile, TESSALY_FILEINFO* pInfo = nullptr, DWORD dwOpenFlags = 0, DWORD dwFlags = 1)
    {
        EXPECT_EQ(player->Init(pwszFile), S_OK);
        log.Clear();
        return player->OpenFile(pwszFile, dwOpenFlags, dwFlags, pInfo);
    }
    void OpenAndPlay(LPCWSTR pwszFile)
    {
        ASSERT_EQ(Open(pwszFile), S_OK);
        ASSERT_EQ(player->Play(), S_OK);
        log.Clear();
    }
    bool PumpUntil(const std::function<bool()>& done) { return CMessagePump::PumpUntil(done, 5000); }
    bool PumpUntilProgressCount(size_t n) { return PumpUntil([&] { return progress.size() >= n; }); }

    CCallLog log;
    std::vector<double> progress;
    HWND hWndParent = nullptr;
    CTestBackEnd *pDS = nullptr, *pPV = nullptr, *pWMP = nullptr, *pQT = nullptr, *pQA = nullptr;
    CScriptedCDGraph* pCD = nullptr;
    std::unique_ptr<CMediaPlayerProbe> player;
};
