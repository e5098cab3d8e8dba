#include "objects/CQueryFileInfo.h"

#include "dispatch/CMediaPlayer.h"
#include "engine/ComBoundary.h"
#include "base/CUtility.h"
#include "trace/Trace.h"

CQueryFileInfo::CQueryFileInfo() : m_pMediaPlayer(std::make_unique<CMediaPlayer>())
{
}

CQueryFileInfo::~CQueryFileInfo() = default;

void* CQueryFileInfo::InternalQueryInterface(REFIID riid)
{
    return riid == IID_IQueryFileInfo ? static_cast<IQueryFileInfo*>(this) : nullptr;
}

void CQueryFileInfo::FinalRelease()
{
    if (m_pMediaPlayer)
    {
        m_pMediaPlayer->CloseFile();
        m_pMediaPlayer->Destroy();
        m_pMediaPlayer.reset();
    }
    CUtility::DestroyInternalWindow(&m_hHiddenWnd);
}

HRESULT CQueryFileInfo::InitPlaybackEngine(LPCWSTR pwszFile)
{
    if (!m_hHiddenWnd)
    {
        m_hHiddenWnd = CUtility::CreateInternalWindow(L"CQueryFileInfo.Hidden.WndClass", L"CQueryFileInfo.Hidden.Window",
                                                      DefWindowProcW, nullptr, nullptr, FALSE, FALSE);
        if (!m_hHiddenWnd)
        {
            TESSALY_TRACE("E:CQueryFileInfo::InitPlaybackEngine> Failed to create hidden window...");
            return HRESULT_FROM_WIN32(GetLastError());
        }
    }
    const HRESULT hr = m_pMediaPlayer->Init(pwszFile);
    // With no file open the dispatcher answers E_FAIL here but keeps the window for the next open.
    m_pMediaPlayer->SetParentWindow(m_hHiddenWnd);
    return hr;
}

STDMETHODIMP CQueryFileInfo::GetFileInfo(LPWSTR wszFilepath, TESSALY_FILEINFO* pOpenedFileInfo)
{
    return ComBoundary([&]() -> HRESULT {
        TESSALY_TRACE("S:CQueryFileInfo::GetFileInfo>");
        if (IsBadWritePtr(pOpenedFileInfo, sizeof(TESSALY_FILEINFO)))
        {
            TESSALY_TRACE("E:CQueryFileInfo::GetFileInfo> Invalid param: pOpenedFileInfo");
            return E_INVALIDARG;
        }
        HRESULT hr = InitPlaybackEngine(wszFilepath);
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CQueryFileInfo::GetFileInfo> InitPlaybackEngine failed");
            return hr;
        }
        hr = m_pMediaPlayer->OpenFile(wszFilepath, 0, 0, pOpenedFileInfo);
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CQueryFileInfo::GetFileInfo> m_pMediaPlayer->OpenFile failed");
            return hr;
        }
        m_pMediaPlayer->CloseFile();
        return S_OK;
    });
}
