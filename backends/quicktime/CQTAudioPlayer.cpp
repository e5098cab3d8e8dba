#include "backends/quicktime/CQTAudioPlayer.h"

#include "trace/Trace.h"

namespace {

const LPCWSTR g_FileExt[] = {
    L".AIFF", L".AIF", L".AIFC", L".CDDA", L".AMR", L".AU", L".SND", L".ULW", L".M4A", L".M4B",
    L".M4P", L".GSM", L".AAC", L".ADTS"};

} // namespace

// Until the audio worker lands, Init keeps the base's failure.
CQTAudioPlayer::CQTAudioPlayer()
{
    m_ppwszFileExt = g_FileExt;
    m_dwFileExtCount = ARRAYSIZE(g_FileExt);
}

// The base would answer every open with success; until this back-end can play, it refuses.
HRESULT CQTAudioPlayer::OpenFile(LPCWSTR, DWORD, DWORD)
{
    TESSALY_TRACE("E:CQTAudioPlayer::OpenFile> QuickTime audio playback is not available");
    return E_NOTIMPL;
}
