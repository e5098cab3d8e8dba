#include "backends/wmp/CWMPPlayer.h"

#include "engine/Trace.h"

namespace {

// One empty entry: no real extension matches it, so only the Windows Media route leads here,
// yet hosts still see the entry in the supported-extension list.
const LPCWSTR g_FileExt[] = {L""};

} // namespace

// Until the control host lands, Init keeps the base's failure.
CWMPPlayer::CWMPPlayer()
{
    m_ppwszFileExt = g_FileExt;
    m_dwFileExtCount = ARRAYSIZE(g_FileExt);
}

// The base would answer every open with success; until this back-end can play, it refuses.
HRESULT CWMPPlayer::OpenFile(LPCWSTR, DWORD, DWORD)
{
    TESSALY_TRACE("E:CWMPPlayer::OpenFile> Media Player control playback is not available");
    return E_NOTIMPL;
}
