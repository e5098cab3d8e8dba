#include "backends/dshow/CDShowPlayer.h"

#include "engine/Trace.h"

namespace {

const LPCWSTR g_FileExt[] = {
    L".MP3", L".WAV", L".WMA", L".AVI", L".MPEG", L".MPG", L".MPA", L".MPE", L".M1V", L".M1A",
    L".MPV", L".ASF", L".DAT", L".WMV", L".DIVX", L".VOB", L".OGG", L".FLAC", L".KMV"};

} // namespace

// Until graph building lands, Init keeps the base's failure: files of this table are still
// routed here, and their OpenFile fails here rather than being played by another back-end.
CDShowPlayer::CDShowPlayer()
{
    m_ppwszFileExt = g_FileExt;
    m_dwFileExtCount = ARRAYSIZE(g_FileExt);
}

// The base would answer every open with success; until this back-end can play, it refuses.
HRESULT CDShowPlayer::OpenFile(LPCWSTR, DWORD, DWORD)
{
    TESSALY_TRACE("E:CDShowPlayer::OpenFile> DirectShow playback is not available");
    return E_NOTIMPL;
}
