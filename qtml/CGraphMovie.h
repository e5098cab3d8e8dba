// A movie played by a DirectShow filter graph (RenderFile of the path). Its video, if any, is
// drawn by the graph's video window made a child of the port window and placed at the movie box.
//
// Wine's graph is only dependable when seeks happen while it is stopped (a seek while paused after
// the end leaves a later Stop hanging, and seeks while running can lose the end notice), so a
// stop is Stop plus restoring the position, and a seek while playing stops, seeks and runs again.
#pragma once

#include <windows.h>
#include <dshow.h>
#include <wrl/client.h>

#include <memory>
#include <string>

#include "qtml/CMovie.h"

class CGraphMovie : public CMovie
{
public:
    // Builds the graph on the calling thread; an error code when the file does not render.
    static OSErr Create(const std::string& path, HWND hPortWnd, std::shared_ptr<CMovie>* pMovie);

    static constexpr TimeScale kTimeScale = 600;

protected:
    TimeValue OnDuration() override;
    TimeScale OnScale() override { return kTimeScale; }
    void OnPlace(const Rect& oldBox, const Rect& newBox) override;
    bool OnHasPictures() override { return m_pVideoWindow != nullptr; }
    void OnStart() override;
    void OnStop() override;
    OSErr OnGoTo(TimeValue time) override;
    TimeValue OnCurrentTime() override;
    bool OnIsPlaying() override { return m_bRunning; }
    bool OnService() override;
    bool OnNeedsTicks() override { return m_bRunning; }
    void OnClose() override;

private:
    explicit CGraphMovie(HWND hPortWnd);
    OSErr Build(const std::string& path);
    void UseSystemClock();
    void ShowVideoInPort();
    LONGLONG Position();
    void StopAt(LONGLONG position);
    void DiscardEvents();

    Microsoft::WRL::ComPtr<IGraphBuilder> m_pGraph;
    Microsoft::WRL::ComPtr<IMediaControl> m_pControl;
    Microsoft::WRL::ComPtr<IMediaSeeking> m_pSeeking;
    Microsoft::WRL::ComPtr<IMediaEventEx> m_pEvents;
    Microsoft::WRL::ComPtr<IVideoWindow> m_pVideoWindow;
    LONGLONG m_llDuration = 0; // 100 ns units; 0 when the graph does not know it
    bool m_bRunning = false;
};
