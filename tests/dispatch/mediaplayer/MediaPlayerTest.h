// The dispatcher with scripted back-ends in the engine's order (each with the real one's extension table),
// a scripted CD back-end, a Windows Media route steered by path, a host window, one log of calls and events.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "backends/cdda/CDDAGraph.h"
#include "backends/dshow/CDShowPlayer.h"
#include "backends/picture/CGdiplusPictViewer.h"
#include "backends/quicktime/CQTAudioPlayer.h"
#include "backends/quicktime/CQTPlayer.h"
#include "backends/wmp/CWMPPlayer.h"
#include "dispatch/CMediaPlayer.h"
#include "dispatch/CWindowsMediaRoute.h"
#include "tests/support/CMessagePump.h"

using Entries = std::vector<std::string>;

template <class... T>
std::string Str(const T&... values) { std::ostringstream out; return (out << ... << values), out.str(); }

inline std::string Narrow(LPCWSTR pwsz) { return pwsz ? std::string(pwsz, pwsz + wcslen(pwsz)) : "(null)"; }

struct FileInfoScript // GetFileInfo's answer; the outputs are written only with S_OK
{
    HRESULT hr = S_OK;
    BOOL bAudioOnly = FALSE, bSeekable = TRUE, bPicture = FALSE;
    double dDuration = 0.0;
    DWORD dwWidth = 0, dwHeight = 0;
};

// Every back-end, the CD one included: answers each operation as scripted in results (else S_OK),
// logs each call as "<name>.<operation>(<arguments>)"; its event window is the dispatcher's.
class CScripted : public CDDAGraph
{
public:
    CScripted(Entries& log, const char* pszName, HWND hWndParent, LPCWSTR* ppTable = nullptr, DWORD dwCount = 0)
        : m_log(log), m_name(pszName), m_hWndParent(hWndParent) { m_ppwszFileExt = ppTable, m_dwFileExtCount = dwCount; }
    ~CScripted() override { Record("deleted"); }
    std::map<std::string, HRESULT> results;
    FileInfoScript fileInfo;
    double dCurTime = 0.0;
    HWND EventHandlerWindow() const { return m_hEventHandlerWnd; }
    HRESULT Init() override { const HRESULT hr = Answer("Init"); return m_bInitialized |= SUCCEEDED(hr), hr; }
    void Destroy() override { Record("Destroy"); }
    void Activate() override { Record("Activate"); }
    void Deactivate() override { Record("Deactivate"); }
    HRESULT SetParentWindow(HWND h) override { return Answer("SetParentWindow", h ? h == m_hWndParent ? "parent" : "?" : "null"); }
    HRESULT SetParentWindowSize(DWORD dwW, DWORD dwH) override { return Answer("SetParentWindowSize", Str(dwW, ",", dwH)); }
    HRESULT OpenFile(LPCWSTR pwsz, DWORD dwOpen, DWORD dwFlags) override { return Answer("OpenFile", Str(Narrow(pwsz), ",", dwOpen, ",", dwFlags)); }
    HRESULT CloseFile() override { return Answer("CloseFile"); }
    HRESULT GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable, DWORD* pdwWidth, DWORD* pdwHeight,
                        BOOL* pbPicture) override
    {
        Record("GetFileInfo");
        if (fileInfo.hr == S_OK)
            *pbAudioOnly = fileInfo.bAudioOnly, *pdDuration = fileInfo.dDuration, *pbSeekable = fileInfo.bSeekable,
            *pdwWidth = fileInfo.dwWidth, *pdwHeight = fileInfo.dwHeight, *pbPicture = fileInfo.bPicture;
        return fileInfo.hr;
    }
    HRESULT Play() override { return Answer("Play"); }
    HRESULT Pause() override { return Answer("Pause"); }
    HRESULT Resume() override { return Answer("Resume"); }
    HRESULT Stop() override { return Answer("Stop"); }
    HRESULT SetCurTime(double dSeconds) override { return Answer("SetCurTime", Str(dSeconds)); }
    HRESULT SetPlaybackFlags(DWORD dwFlags) override { return Answer("SetPlaybackFlags", Str(dwFlags)); }
    HRESULT GetCurTime(double* pdSeconds) override { return *pdSeconds = dCurTime, Answer("GetCurTime"); }
    void SetEventHandlerWindow(HWND hWnd) override { Record("SetEventHandlerWindow"), CDDAGraph::SetEventHandlerWindow(hWnd); }
    HRESULT OnEngineNotify(WPARAM wParam, LPARAM lParam) override { return Answer("OnEngineNotify", Str(wParam, ",", lParam)); }
    HRESULT OpenCD(WCHAR wc, WORD wStart, WORD wEnd) override { return Answer("OpenCD", Str(char(wc), ",", wStart, ",", wEnd)); }

private:
    void Record(const std::string& call) { m_log.push_back(m_name + "." + call); }
    HRESULT Answer(const std::string& operation, const std::string& arguments = "")
    {
        Record(arguments.empty() ? operation : operation + "(" + arguments + ")");
        return results.count(operation) ? results[operation] : S_OK;
    }
    Entries& m_log;
    std::string m_name;
    HWND m_hWndParent;
};

class CTestWindowsMediaRoute : public CWindowsMediaRoute // "protected" in the path: the control's
{
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
        CMediaPlayer::BackEnds backEnds;
        pDS = StandIn<CDShowPlayer>(backEnds, "DS");
        pPV = StandIn<CGdiplusPictViewer>(backEnds, "PV");
        backEnds.pWMPPlayer = pWMP = StandIn<CWMPPlayer>(backEnds, "WMP");
        pQT = StandIn<CQTPlayer>(backEnds, "QT");
        pQA = StandIn<CQTAudioPlayer>(backEnds, "QA");
        backEnds.pCDDAGraph.reset(pCD = new CScripted(log, "CD", hWndParent));
        backEnds.pWindowsMediaRoute.reset(new CTestWindowsMediaRoute);
        player.reset(new CMediaPlayer(std::move(backEnds)));
        player->SetEventCallback(&MediaPlayerTest::OnEvent, this);
    }
    void TearDown() override { player->Destroy(), DestroyWindow(hWndParent), CMessagePump::PumpFor(0); }
    template <class TPlayer> // the real back-end's table, whose strings are static
    CScripted* StandIn(CMediaPlayer::BackEnds& backEnds, const char* pszName)
    {
        DWORD dwCount = 0;
        LPCWSTR* ppTable = TPlayer().GetSupportedFileExt(&dwCount);
        backEnds.players.emplace_back(new CScripted(log, pszName, hWndParent, ppTable, dwCount));
        return static_cast<CScripted*>(backEnds.players.back().get());
    }
    static HRESULT OnEvent(DWORD dwEvent, ULONG_PTR ulParam, void* pContext)
    {
        auto pTest = static_cast<MediaPlayerTest*>(pContext);
        const char* names[] = {"unknown", "complete", "error", "progress", "track_complete"};
        if (dwEvent == STREAMING_EVENT_PROGRESS)
            pTest->progress.push_back(*reinterpret_cast<double*>(ulParam));
        pTest->log.push_back(dwEvent == STREAMING_EVENT_PROGRESS ? Str("event.progress(", pTest->progress.back(), ")")
                                                                 : Str("event.", names[dwEvent < 5 ? dwEvent : 0], "(", std::hex, ulParam, ")"));
        return S_OK;
    }
    size_t Count(const std::string& entry) const { return std::count(log.begin(), log.end(), entry); }
    HRESULT Open(LPCWSTR pwszFile, TESSALY_FILEINFO* pInfo = nullptr, DWORD dwOpenFlags = 0, DWORD dwFlags = 1)
    {
        EXPECT_EQ(player->Init(pwszFile), S_OK);
        log.clear();
        return player->OpenFile(pwszFile, dwOpenFlags, dwFlags, pInfo);
    }
    bool PumpUntilProgressCount(size_t n) { return CMessagePump::PumpUntil([&] { return progress.size() >= n; }, 5000); }

    Entries log;
    std::vector<double> progress;
    HWND hWndParent = nullptr;
    CScripted *pDS = nullptr, *pPV = nullptr, *pWMP = nullptr, *pQT = nullptr, *pQA = nullptr, *pCD = nullptr;
    std::unique_ptr<CMediaPlayer> player;
};
