#include "backends/picture/CGdiplusPictViewer.h"

#include "engine/Trace.h"

namespace {

const LPCWSTR g_FileExt[] = {
    L".BMP", L".DIB", L".JPG", L".JPEG", L".JPE", L".JFIF", L".PNG", L".TIF", L".TIFF", L".ICO",
    L".WMF", L".EMF"};

} // namespace

// Until the GDI+ viewer lands, Init keeps the base's failure, so pictures fail to open here.
CGdiplusPictViewer::CGdiplusPictViewer()
{
    m_ppwszFileExt = g_FileExt;
    m_dwFileExtCount = ARRAYSIZE(g_FileExt);
}

// The base would answer every open with success; until this back-end can play, it refuses.
HRESULT CGdiplusPictViewer::OpenFile(LPCWSTR, DWORD, DWORD)
{
    TESSALY_TRACE("E:CGdiplusPictViewer::OpenFile> picture display is not available");
    return E_NOTIMPL;
}
