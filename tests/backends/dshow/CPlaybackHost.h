// What a host application is to the engine's dispatcher: a top-level window that records the
// input reaching it, the dispatcher as the engine builds it (its DirectShow back-end in view
// through a probe), the dispatcher's events with their arrival times, and the thread's message
// loop. COM lives as long as the host.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "backends/dshow/CDShowPlayer.h"
#include "dispatch/CMediaPlayer.h"
#include "dispatch/CWindowsMediaRoute.h"

// The DirectShow back-end with its graph and windows in view, and its metadata editor replaceable
// (unset, the platform's answers).
class CDShowPlayerProbe : public CDShowPlayer
{
public:
    IGraphBuilder* Graph() const { return m_pGB.Get(); }
    IMediaControl* MediaControl() const { return m_pMC.Get(); }
    IVideoWindow* VideoWindow() const { return m_pVideoWindow.Get(); }
    HWND BackgroundWindow() const { return m_hBackgroundWnd; }
    HWND EventWindow() const { return m_hEventWnd; }
    std::function<HRESULT(IWMMetadataEditor**)> editorFactory;

protected:
    HRESULT CreateMetadataEditor(IWMMetadataEditor** ppEditor) override
    {
        return editorFactory ? editorFactory(ppEditor) : CDShowPlayer::CreateMetadataEditor(ppEditor);
    }
};

class CPlaybackHost
{
public:
    struct Event
    {
        DWORD dwCode;
        ULONG_PTR ulParam; // the progress value is kept in dProgress instead
        double dProgress;
        ULONGLONG tick;
    };
    struct Input
    {
        UINT uMsg;
        WPARAM wParam;
        LPARAM lParam;
    };

    // pRoute, when given, replaces the engine's Windows Media route.
    explicit CPlaybackHost(int nWidth = 320, int nHeight = 240, std::unique_ptr<CWindowsMediaRoute> pRoute = nullptr);
    CPlaybackHost(const CPlaybackHost&) = delete;
    CPlaybackHost& operator=(const CPlaybackHost&) = delete;
    ~CPlaybackHost();

    // Init for the file, then OpenFile, as the Play object does it.
    HRESULT Open(const std::wstring& path, TESSALY_FILEINFO* pInfo, DWORD dwPlaybackFlags = 1);
    // Open, made again (up to four tries, each printed) while the busy platform renders only part
    // or nothing of a file it renders whole on other tries (13 % of bare RenderFile calls under
    // load); accepted() may ask for more of the result.
    HRESULT OpenWhole(const std::wstring& path, TESSALY_FILEINFO* pInfo, const std::function<void()>& beforeEach = [] {},
                      const std::function<bool()>& accepted = [] { return true; });
    bool PumpUntil(const std::function<bool()>& done, DWORD dwTimeoutMs);
    void PumpFor(DWORD dwMs);
    bool PumpUntilEnd(DWORD dwTimeoutMs); // until a completion or an error event
    void Resize(int nWidth, int nHeight); // the window's client size, as a user would change it

    size_t Count(DWORD dwCode) const;
    std::vector<double> Progress() const;

    CMediaPlayer& Player() { return *m_pPlayer; }
    CDShowPlayerProbe& DShow() { return *m_pDShow; }
    HWND Window() const { return m_hWnd; }

    std::vector<Event> events;
    std::vector<Input> inputs;

private:
    static LRESULT CALLBACK WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);
    static HRESULT OnEvent(DWORD dwEvent, ULONG_PTR ulParam, void* pContext);

    HWND m_hWnd = nullptr;
    CDShowPlayerProbe* m_pDShow = nullptr;
    std::unique_ptr<CMediaPlayer> m_pPlayer;
};
