#include "backends/quicktime/CQTPlayer.h"

#include "trace/Trace.h"

namespace {

const LPCWSTR g_FileExt[] = {
    L".MOV", L".QT", L".MQV", L".DV", L".DIF", L".MP4", L".MP4V", L".3GPP", L".3GP", L".3G2",
    L".3GP2", L".M4V", L".PNTG", L".PNT", L".MAC", L".PICT", L".PIC", L".PCT", L".QTIF", L".QTI",
    L".SGI", L".RGB", L".TARGA", L".TGA", L".PSD", L".GIF"};

} // namespace

// Until the movie wrapper lands, Init keeps the base's failure.
CQTPlayer::CQTPlayer()
{
    m_ppwszFileExt = g_FileExt;
    m_dwFileExtCount = ARRAYSIZE(g_FileExt);
}

// The base would answer every open with success; until this back-end can play, it refuses.
HRESULT CQTPlayer::OpenFile(LPCWSTR, DWORD, DWORD)
{
    TESSALY_TRACE("E:CQTPlayer::OpenFile> QuickTime movie playback is not available");
    return E_NOTIMPL;
}
