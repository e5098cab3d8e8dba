// The dispatcher under test, built through its seam with scripted back-ends in the engine's
// search order (each with the extension table of the real back-end it stands for), a scripted
// CD back-end, a Windows Media route that tests can steer, a host window and a real message loop.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

#include "CCallLog.h"
#include "CScriptedBackEnd.h"
#include "CScriptedCDGraph.h"
#include "dispatch/CMediaPlayer.h"
#include "dispatch/CWindowsMediaRoute.h"

using CTestBackEnd = CScriptedBackEnd<CPlayerBase>;

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
    bool PrefersMediaPlayerControl(LPCWSTR pwszFile) const override;
};

class MediaPlayerTest : public ::testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    // Init for the file, a clean log, then OpenFile.
    HRESULT Open(LPCWSTR pwszFile, TESSALY_FILEINFO* pInfo = nullptr, DWORD dwOpenFlags = 0,
                 DWORD dwPlaybackFlags = 1);
    // Opens and starts playing, then cleans the log.
    void OpenAndPlay(LPCWSTR pwszFile);

    // Dispatches this thread's messages until done() holds or the time runs out.
    bool PumpUntil(const std::function<bool()>& done, DWORD dwTimeoutMs = 5000);
    void PumpFor(DWORD dwMs);
    bool PumpUntilProgressCount(size_t n) { return PumpUntil([&] { return progress.size() >= n; }); }

    static HRESULT OnEvent(DWORD dwEvent, ULONG_PTR ulParam, void* pContext);

    CCallLog log;
    std::vector<double> progress;
    HWND hWndParent = nullptr;
    CTestBackEnd* pDS = nullptr;
    CTestBackEnd* pPV = nullptr;
    CTestBackEnd* pWMP = nullptr;
    CTestBackEnd* pQT = nullptr;
    CTestBackEnd* pQA = nullptr;
    CScriptedCDGraph* pCD = nullptr;
    std::unique_ptr<CMediaPlayerProbe> player;
};

using Entries = std::vector<std::string>;
