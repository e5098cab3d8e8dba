#include "qtml/CQtmlRuntime.h"

#include <dshow.h>
#include <gdiplus.h>
#include <wrl/client.h>

#include "qtml/CQtmlRegistry.h"

namespace {

thread_local OSErr t_moviesError = noErr;

} // namespace

CQtmlRuntime& CQtmlRuntime::Instance()
{
    static CQtmlRuntime runtime;
    return runtime;
}

bool CQtmlRuntime::CanMakeFilterGraph()
{
    Microsoft::WRL::ComPtr<IGraphBuilder> pGraph;
    return SUCCEEDED(CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder,
                                      reinterpret_cast<void**>(pGraph.GetAddressOf())));
}

OSErr CQtmlRuntime::Initialize()
{
    std::lock_guard<std::mutex> guard(m_lock);
    if (m_nInitializeCount > 0)
    {
        ++m_nInitializeCount;
        return noErr;
    }
    if (!CanMakeFilterGraph())
        return qtmlDllLoadErr;
    // Without GDI+ movies still play; pictures are then not found.
    Gdiplus::GdiplusStartupInput input;
    if (Gdiplus::GdiplusStartup(&m_ulGdiplusToken, &input, nullptr) != Gdiplus::Ok)
        m_ulGdiplusToken = 0;
    m_nInitializeCount = 1;
    return noErr;
}

void CQtmlRuntime::Terminate()
{
    std::lock_guard<std::mutex> guard(m_lock);
    if (m_nInitializeCount == 0 || --m_nInitializeCount > 0)
        return;
    m_nEnterCount = 0;
    CQtmlRegistry::Instance().CloseAll();
    if (m_ulGdiplusToken)
        Gdiplus::GdiplusShutdown(m_ulGdiplusToken);
    m_ulGdiplusToken = 0;
}

OSErr CQtmlRuntime::Enter()
{
    std::lock_guard<std::mutex> guard(m_lock);
    if (m_nInitializeCount == 0)
        return qtmlDllLoadErr;
    ++m_nEnterCount;
    return noErr;
}

void CQtmlRuntime::Exit()
{
    std::lock_guard<std::mutex> guard(m_lock);
    if (m_nEnterCount > 0)
        --m_nEnterCount;
}

bool CQtmlRuntime::IsStarted()
{
    std::lock_guard<std::mutex> guard(m_lock);
    return m_nInitializeCount > 0;
}

OSErr CQtmlRuntime::Gestalt(OSType selector, long* pResponse)
{
    const bool bKnown = selector == gestaltQuickTime && IsStarted();
    if (pResponse)
        *pResponse = bKnown ? kVersion : 0;
    return bKnown ? noErr : gestaltUndefSelectorErr;
}

void CQtmlRuntime::SetMoviesError(OSErr err)
{
    t_moviesError = err;
}

OSErr CQtmlRuntime::MoviesError()
{
    return t_moviesError;
}
