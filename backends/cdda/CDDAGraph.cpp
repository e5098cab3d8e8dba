#include "backends/cdda/CDDAGraph.h"

#include <cstdio>
#include <utility>

#include "backends/dshow/CFilterGraphHelper.h"
#include "cdsource/CDAudioSource.h"
#include "base/CUtility.h"
#include "base/EngineMessages.h"
#include "trace/Trace.h"

namespace {

// Positions compare with a single-precision millionth of a second: a difference that is not a
// number is never greater.
const double kTolerance = static_cast<double>(0.000001f);
const double kFramesPerSecond = 75.0;

// "D/3" for one track, "D/3-7" for a range.
void FormatTrackRequest(WCHAR wcDrive, WORD wStart, WORD wEnd, WCHAR (&szRequest)[260])
{
    if (wStart == wEnd)
        swprintf(szRequest, 260, L"%c/%d", wcDrive, wStart);
    else
        swprintf(szRequest, 260, L"%c/%d-%d", wcDrive, wStart, wEnd);
}

} // namespace

CDDAGraph::CDDAGraph(DeviceFactory deviceFor) : m_deviceFor(std::move(deviceFor)) {}

HRESULT CDDAGraph::Init()
{
    HRESULT hr = CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER,
                                  IID_IGraphBuilder, &m_pGraph);
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CDDAGraph::Init> CoCreateInstance <CLSID_FilterGraph> failed");
        return hr;
    }
    hr = QueryTo(m_pGraph, IID_IMediaEventEx, m_pMediaEvent);
    if (FAILED(hr))
        return hr;
    hr = QueryTo(m_pGraph, IID_IMediaSeeking, m_pMediaSeek);
    if (FAILED(hr))
        return hr;
    m_bInitialized = true;
    return S_OK;
}

void CDDAGraph::Destroy()
{
    m_pSourceFilter.Reset();
    if (m_pMediaEvent)
        m_pMediaEvent->SetNotifyWindow(0, 0, 0);
    m_pMediaEvent.Reset();
    m_pMediaSeek.Reset();
    m_pGraph.Reset();
}

// The CD has no picture and is opened only by OpenCD: the file operations have nothing to do.
HRESULT CDDAGraph::SetParentWindow(HWND) { return S_OK; }
HRESULT CDDAGraph::SetParentWindowSize(DWORD, DWORD) { return S_OK; }
HRESULT CDDAGraph::OpenFile(LPCWSTR, DWORD, DWORD) { return S_OK; }
HRESULT CDDAGraph::CloseFile() { return S_OK; }
HRESULT CDDAGraph::SetPlaybackFlags(DWORD) { return S_OK; }
HRESULT CDDAGraph::Reserved(DWORD) { return S_OK; }

HRESULT CDDAGraph::GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable, DWORD* pdwWidth,
                               DWORD* pdwHeight, BOOL* pbPicture)
{
    *pbAudioOnly = TRUE;
    *pdDuration = 0.0;
    *pbSeekable = TRUE;
    *pdwWidth = 0;
    *pdwHeight = 0;
    *pbPicture = FALSE;
    return S_OK;
}

HRESULT CDDAGraph::ControlGraph(const std::function<HRESULT(IMediaControl*)>& control)
{
    ComPtr<IMediaControl> mediaControl;
    if (FAILED(QueryTo(m_pGraph, IID_IMediaControl, mediaControl)))
        return 1;
    return SUCCEEDED(control(mediaControl.Get())) ? 0 : 1;
}

HRESULT CDDAGraph::Play()
{
    const HRESULT hr = ControlGraph([](IMediaControl* pControl) { return pControl->Run(); });
    if (hr != 0)
    {
        TESSALY_TRACE("E:CDDAGraph::Play> IMediaControl::Run failed");
        ControlGraph([](IMediaControl* pControl) { return pControl->Stop(); });
    }
    return hr;
}

HRESULT CDDAGraph::Pause()
{
    return ControlGraph([](IMediaControl* pControl) { return pControl->Pause(); });
}

HRESULT CDDAGraph::Resume()
{
    return Play();
}

HRESULT CDDAGraph::Stop()
{
    const HRESULT hr = ControlGraph([](IMediaControl* pControl) { return pControl->Stop(); });
    SetCurTime(0.0);
    return hr;
}

HRESULT CDDAGraph::SetCurTime(double dSeconds)
{
    if (!m_pMediaSeek)
        return E_FAIL;
    // A position in the range's stream, not in the current track.
    LONGLONG llTarget = CUtility::SecondsToReferenceTime(dSeconds);
    LONGLONG llEarliest = 0;
    LONGLONG llLatest = 0;
    // A graph that cannot say what is available (Wine's is a stub: it succeeds and writes nothing)
    // would otherwise clamp every seek to the start: its duration bounds the range instead.
    if (FAILED(m_pMediaSeek->GetAvailable(&llEarliest, &llLatest)) || llLatest <= llEarliest)
    {
        llEarliest = 0;
        if (FAILED(m_pMediaSeek->GetDuration(&llLatest)))
            llLatest = 0;
    }
    TESSALY_TRACE("Playback > Seek Range are %f - %f\n", CUtility::ReferenceTimeToSeconds(llEarliest),
                  CUtility::ReferenceTimeToSeconds(llLatest));
    if (llTarget < llEarliest)
        llTarget = llEarliest;
    if (llTarget > llLatest)
        llTarget = llLatest;
    const HRESULT hr = m_pMediaSeek->SetPositions(&llTarget, AM_SEEKING_AbsolutePositioning, nullptr,
                                                  AM_SEEKING_NoPositioning);
    if (SUCCEEDED(hr))
    {
        m_bSeeked = true;
        TESSALY_TRACE("Playback > Seek To: %f\n", dSeconds);
    }
    else
    {
        TESSALY_TRACE("Playback > Error on Seek To : %f\n", dSeconds);
    }
    return hr;
}

HRESULT CDDAGraph::GetCurTime(double* pdSeconds)
{
    if (!m_pMediaSeek)
        return 1;
    LONGLONG llPosition = 0;
    if (FAILED(m_pMediaSeek->GetCurrentPosition(&llPosition)))
    {
        TESSALY_TRACE("CDDAGraph::GetCurTime> m_pMediaSeek->GetCurrentPosition failed");
        return 1;
    }
    double dTime = llPosition / 10000000.0;
    if (m_nStartTrack < m_nEndTrack && !m_bSeeked && m_nCurTrack > m_nStartTrack &&
        dTime - m_dCurTrackStart > kTolerance)
        dTime -= m_dCurTrackStart;
    const int nIndex = m_nCurTrack - m_nStartTrack;
    if (dTime - m_dCurTrackDuration > kTolerance && nIndex >= 0 &&
        static_cast<size_t>(nIndex) < m_TrackDurations.size())
    {
        ++m_nCurTrack;
        m_dCurTrackStart = m_bSeeked ? m_dCurTrackDuration : m_dCurTrackStart + m_dCurTrackDuration;
        // Past the range's last track there is no next length: the current track then measures 0.
        const size_t nNext = static_cast<size_t>(nIndex) + 1;
        m_dCurTrackDuration = nNext < m_TrackDurations.size() ? m_TrackDurations[nNext] : 0.0;
        dTime = 0.0;
        m_bSeeked = false;
        PostMessageW(m_hEventHandlerWnd, WM_CDDA_TRACK_COMPLETE, 0, 0);
    }
    *pdSeconds = dTime;
    return 0;
}

HRESULT CDDAGraph::OnEngineNotify(WPARAM, LPARAM)
{
    if (!m_pMediaEvent)
        return 0;
    long lCode = 0;
    LONG_PTR lParam1 = 0;
    LONG_PTR lParam2 = 0;
    const HRESULT hr = m_pMediaEvent->GetEvent(&lCode, &lParam1, &lParam2, 0);
    if (hr != S_OK)
        return hr;
    if (lCode == EC_COMPLETE)
        PostMessageW(m_hEventHandlerWnd, WM_CDDA_PLAYBACK_COMPLETE, 0, 0);
    else if (lCode == EC_USERABORT)
        Stop();
    // Some events carry allocated parameters; ignoring an event must not leak them.
    m_pMediaEvent->FreeEventParams(lCode, lParam1, lParam2);
    return 0;
}

HRESULT CDDAGraph::GetDuration(double* pdDuration)
{
    const double dRounded = static_cast<double>(static_cast<long long>(m_dCurTrackDuration + 0.5));
    const double dTruncated = static_cast<double>(static_cast<long long>(m_dCurTrackDuration));
    *pdDuration = dRounded != dTruncated ? dTruncated + 1.0 : dTruncated;
    return S_OK;
}

HRESULT CDDAGraph::OpenCD(WCHAR wcDrive, WORD wStartTrack, WORD wEndTrack)
{
    TESSALY_TRACE("S:CDDAGraph::OpenCD> %c %u-%u", static_cast<char>(wcDrive), wStartTrack, wEndTrack);
    if (wStartTrack > wEndTrack)
        return 1;
    m_TrackDurations = GetTrackDurations(wcDrive, wStartTrack, wEndTrack);
    if (m_TrackDurations.empty())
        return 1;
    WCHAR szRequest[260] = {};
    FormatTrackRequest(wcDrive, wStartTrack, wEndTrack, szRequest);

    if (!m_pSourceFilter)
    {
        // Without our source filter no range can ever play: say so rather than open nothing.
        const HRESULT hr = CoCreateInstance(CLSID_TessalyCDAudioSource, nullptr, CLSCTX_INPROC_SERVER,
                                            IID_IBaseFilter, &m_pSourceFilter);
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CDDAGraph::OpenCD> CoCreateInstance <CLSID_TessalyCDAudioSource> failed");
            return hr;
        }
        ComPtr<ICDAudioSourceConfig> config;
        if (SUCCEEDED(QueryTo(m_pSourceFilter, IID_ICDAudioSourceConfig, config)))
            config->SetReadMode(CDAudioRead_Raw);
    }
    ClearGraph();

    ComPtr<IFileSourceFilter> fileSource;
    if (SUCCEEDED(QueryTo(m_pSourceFilter, IID_IFileSourceFilter, fileSource)))
    {
        const DWORD dwStart = GetTickCount();
        fileSource->Load(szRequest, nullptr);
        char szNarrow[260] = {};
        CUtility::WideToAnsi(szNarrow, szRequest, 260);
        TESSALY_TRACE("Open CD %s:%d-%d time = %d\n", szNarrow, wStartTrack, wEndTrack,
                      static_cast<int>(GetTickCount() - dwStart));
    }
    if (m_pGraph)
    {
        // A range that did not load leaves a graph that plays nothing; Play tells.
        m_pGraph->AddFilter(m_pSourceFilter.Get(), nullptr);
        ComPtr<IBaseFilter> renderer;
        if (SUCCEEDED(CreateAudioRenderer(0, &renderer)))
        {
            m_pGraph->AddFilter(renderer.Get(), nullptr);
            ComPtr<IPin> output;
            ComPtr<IPin> input;
            if (CFilterGraphHelper::FindOutputPin(m_pSourceFilter.Get(), &output) == S_OK &&
                CFilterGraphHelper::FindInputPin(renderer.Get(), &input) == S_OK)
                m_pGraph->ConnectDirect(output.Get(), input.Get(), nullptr);
        }
    }
    if (m_pMediaEvent)
        m_pMediaEvent->SetNotifyWindow(reinterpret_cast<OAHWND>(m_hEventHandlerWnd), WM_CDDA_GRAPH_NOTIFY, 0);

    m_nStartTrack = wStartTrack;
    m_nEndTrack = wEndTrack;
    m_nCurTrack = wStartTrack;
    m_dCurTrackDuration = m_TrackDurations.front();
    m_bSeeked = false;
    // m_dCurTrackStart stays as the previous range left it.
    return S_OK;
}

void CDDAGraph::ClearGraph()
{
    if (!m_pGraph)
        return;
    ControlGraph([](IMediaControl* pControl) { return pControl->Stop(); });
    ComPtr<IEnumFilters> filters;
    if (FAILED(m_pGraph->EnumFilters(&filters)))
        return;
    std::vector<ComPtr<IBaseFilter>> found;
    ComPtr<IBaseFilter> filter;
    while (filters->Next(1, &filter, nullptr) == S_OK)
        found.push_back(std::move(filter));
    for (const ComPtr<IBaseFilter>& each : found)
        m_pGraph->RemoveFilter(each.Get());
}

std::vector<double> CDDAGraph::GetTrackDurations(WCHAR wcDrive, WORD wFirst, WORD wLast)
{
    std::vector<double> durations;
    if (wLast == 0)
        wLast = wFirst;
    std::unique_ptr<CCDAudioDevice> device = m_deviceFor(wcDrive);
    MCIDEVICEID deviceId = 0;
    if (!device || !OpenCDAudioDevice(*device, wcDrive, &deviceId))
        return durations;
    for (int nTrack = wFirst; nTrack <= wLast; ++nTrack)
        durations.push_back(GetTrackLength(*device, deviceId, nTrack));
    CloseCDAudioDevice(*device, deviceId);
    return durations;
}

bool CDDAGraph::OpenCDAudioDevice(CCDAudioDevice& device, WCHAR wcDrive, MCIDEVICEID* pDeviceId)
{
    WCHAR szElement[3] = {wcDrive, L':', 0};
    MCI_OPEN_PARMSW open = {};
    open.lpstrDeviceType = reinterpret_cast<LPCWSTR>(static_cast<ULONG_PTR>(MCI_DEVTYPE_CD_AUDIO));
    open.lpstrElementName = szElement;
    if (device.SendCommand(0, MCI_OPEN, MCI_OPEN_TYPE_ID | MCI_OPEN_ELEMENT, reinterpret_cast<DWORD_PTR>(&open)) != 0)
    {
        TESSALY_TRACE("Init: Failing Opening CDAudio Device.\n");
        return false;
    }
    MCI_SET_PARMS set = {};
    set.dwTimeFormat = MCI_FORMAT_TMSF;
    device.SendCommand(open.wDeviceID, MCI_SET, MCI_SET_TIME_FORMAT, reinterpret_cast<DWORD_PTR>(&set));
    *pDeviceId = open.wDeviceID;
    return true;
}

void CDDAGraph::CloseCDAudioDevice(CCDAudioDevice& device, MCIDEVICEID deviceId)
{
    device.SendCommand(deviceId, MCI_CLOSE, MCI_WAIT, 0);
}

double CDDAGraph::GetTrackLength(CCDAudioDevice& device, MCIDEVICEID deviceId, int nTrack)
{
    if (deviceId == 0 || nTrack == 0)
        return 0.0;
    MCI_STATUS_PARMS status = {};
    status.dwItem = MCI_STATUS_LENGTH;
    status.dwTrack = static_cast<DWORD>(nTrack);
    if (device.SendCommand(deviceId, MCI_STATUS, MCI_STATUS_ITEM | MCI_TRACK | MCI_WAIT,
                           reinterpret_cast<DWORD_PTR>(&status)) != 0)
        return 0.0;
    const DWORD_PTR dwPacked = status.dwReturn;
    const int nMinutes = static_cast<int>(dwPacked & 0xFF);
    const int nSeconds = static_cast<int>((dwPacked >> 8) & 0xFF);
    const int nFrames = static_cast<int>((dwPacked >> 16) & 0xFF);
    return nMinutes * 60 + nSeconds + nFrames * (1.0 / kFramesPerSecond);
}

HRESULT CDDAGraph::CreateAudioRenderer(int nKind, IBaseFilter** ppRenderer)
{
    const CLSID& clsid = nKind == 0 ? CLSID_DSoundRender : CLSID_AudioRender;
    return CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                            reinterpret_cast<void**>(ppRenderer));
}
