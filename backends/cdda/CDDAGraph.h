// Plays a range of audio CD tracks. The dispatcher keeps it apart from the back-ends it picks by
// extension and reaches it through OpenCD and GetDuration. Track lengths come from the CD audio
// device before playback; the range then plays as one stream through the CD audio source filter,
// and the position the dispatcher asks for every 100 ms is turned into a position inside the
// current track, which is where track ends are noticed.
#pragma once

#include <windows.h>

#include <dshow.h>

#include <functional>
#include <memory>
#include <vector>

#include "backends/cdda/CCDAudioDevice.h"
#include "base/CPlayerBase.h"
#include "engine/ComPtr.h"

class CDDAGraph : public CPlayerBase
{
public:
    typedef std::function<std::unique_ptr<CCDAudioDevice>(WCHAR wcDrive)> DeviceFactory;

    // The CD audio device for a drive letter comes from deviceFor (the system's, or an image's).
    explicit CDDAGraph(DeviceFactory deviceFor = CCDAudioDevice::ForDrive);
    ~CDDAGraph() override = default;

    HRESULT Init() override;
    void Destroy() override;
    HRESULT SetParentWindow(HWND hWndParent) override;
    HRESULT SetParentWindowSize(DWORD dwWidth, DWORD dwHeight) override;
    HRESULT OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwPlaybackFlags) override;
    HRESULT CloseFile() override;
    HRESULT GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable, DWORD* pdwWidth,
                        DWORD* pdwHeight, BOOL* pbPicture) override;
    HRESULT Play() override;
    HRESULT Pause() override;
    HRESULT Resume() override;
    HRESULT Stop() override;
    HRESULT SetCurTime(double dSeconds) override;
    HRESULT SetPlaybackFlags(DWORD dwPlaybackFlags) override;
    HRESULT GetCurTime(double* pdSeconds) override;
    HRESULT OnEngineNotify(WPARAM wParam, LPARAM lParam) override;
    HRESULT Reserved(DWORD dwValue) override;

    // S_OK when the range was loaded, 1 when it was refused.
    virtual HRESULT OpenCD(WCHAR wcDrive, WORD wStartTrack, WORD wEndTrack);
    // The current track's length in whole seconds.
    virtual HRESULT GetDuration(double* pdDuration);

protected:
    std::vector<double> GetTrackDurations(WCHAR wcDrive, WORD wFirst, WORD wLast);
    bool OpenCDAudioDevice(CCDAudioDevice& device, WCHAR wcDrive, MCIDEVICEID* pDeviceId);
    void CloseCDAudioDevice(CCDAudioDevice& device, MCIDEVICEID deviceId);
    double GetTrackLength(CCDAudioDevice& device, MCIDEVICEID deviceId, int nTrack);
    HRESULT CreateAudioRenderer(int nKind, IBaseFilter** ppRenderer);

    ComPtr<IGraphBuilder> m_pGraph;
    ComPtr<IMediaEventEx> m_pMediaEvent;
    ComPtr<IMediaSeeking> m_pMediaSeek;
    ComPtr<IBaseFilter> m_pSourceFilter;
    std::vector<double> m_TrackDurations;
    int m_nStartTrack = 0;
    int m_nEndTrack = 0;
    int m_nCurTrack = 0;
    double m_dCurTrackStart = 0.0;
    double m_dCurTrackDuration = 0.0;
    bool m_bSeeked = false;

private:
    // Takes out of the graph what an earlier range put in, so that the next range plays.
    void ClearGraph();
    // 0 when the graph's control did it, 1 when it refused or could not be had.
    HRESULT ControlGraph(const std::function<HRESULT(IMediaControl*)>& control);

    DeviceFactory m_deviceFor;
};
