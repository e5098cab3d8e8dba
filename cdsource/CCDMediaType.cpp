#include "cdsource/CCDMediaType.h"

#include <cstring>

#include "cdsource/CCDReader.h"

WAVEFORMATEX CCDMediaType::Format()
{
    WAVEFORMATEX wfx;
    std::memset(&wfx, 0, sizeof(wfx));
    wfx.wFormatTag = WAVE_FORMAT_PCM;
    wfx.nChannels = 2;
    wfx.nSamplesPerSec = 44100;
    wfx.wBitsPerSample = 16;
    wfx.nBlockAlign = 4;
    wfx.nAvgBytesPerSec = 44100 * 4;
    wfx.cbSize = 0;
    return wfx;
}

HRESULT CCDMediaType::Fill(AM_MEDIA_TYPE* pmt)
{
    std::memset(pmt, 0, sizeof(*pmt));
    auto* pwfx = static_cast<WAVEFORMATEX*>(CoTaskMemAlloc(sizeof(WAVEFORMATEX)));
    if (!pwfx)
        return E_OUTOFMEMORY;
    *pwfx = Format();
    pmt->majortype = MEDIATYPE_Audio;
    pmt->subtype = MEDIASUBTYPE_PCM;
    pmt->bFixedSizeSamples = TRUE;
    pmt->bTemporalCompression = FALSE;
    pmt->lSampleSize = pwfx->nBlockAlign;
    pmt->formattype = FORMAT_WaveFormatEx;
    pmt->cbFormat = sizeof(WAVEFORMATEX);
    pmt->pbFormat = reinterpret_cast<BYTE*>(pwfx);
    return S_OK;
}

AM_MEDIA_TYPE* CCDMediaType::Create()
{
    auto* pmt = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
    if (pmt && FAILED(Fill(pmt)))
    {
        CoTaskMemFree(pmt);
        pmt = nullptr;
    }
    return pmt;
}

void CCDMediaType::FreeFormat(AM_MEDIA_TYPE* pmt)
{
    CoTaskMemFree(pmt->pbFormat);
    pmt->pbFormat = nullptr;
    pmt->cbFormat = 0;
    if (pmt->pUnk)
    {
        pmt->pUnk->Release();
        pmt->pUnk = nullptr;
    }
}

void CCDMediaType::Delete(AM_MEDIA_TYPE* pmt)
{
    if (!pmt)
        return;
    FreeFormat(pmt);
    CoTaskMemFree(pmt);
}

bool CCDMediaType::Matches(const AM_MEDIA_TYPE& mt)
{
    if (mt.majortype != MEDIATYPE_Audio || mt.subtype != MEDIASUBTYPE_PCM || mt.formattype != FORMAT_WaveFormatEx)
        return false;
    // PCM needs no extra bytes, so a PCMWAVEFORMAT-sized block (without cbSize) describes it fully.
    if (!mt.pbFormat || mt.cbFormat < sizeof(PCMWAVEFORMAT))
        return false;
    const WAVEFORMATEX wanted = Format();
    const auto* pwfx = reinterpret_cast<const WAVEFORMATEX*>(mt.pbFormat);
    return pwfx->wFormatTag == wanted.wFormatTag && pwfx->nChannels == wanted.nChannels &&
           pwfx->nSamplesPerSec == wanted.nSamplesPerSec && pwfx->wBitsPerSample == wanted.wBitsPerSample &&
           pwfx->nBlockAlign == wanted.nBlockAlign && pwfx->nAvgBytesPerSec == wanted.nAvgBytesPerSec;
}

bool CCDMediaType::Allows(const AM_MEDIA_TYPE* pmt)
{
    if (!pmt)
        return true;
    if (pmt->majortype != GUID_NULL && pmt->majortype != MEDIATYPE_Audio)
        return false;
    if (pmt->subtype != GUID_NULL && pmt->subtype != MEDIASUBTYPE_PCM)
        return false;
    if (pmt->formattype == GUID_NULL)
        return true;
    // A named format must be ours in full; the other parts may still be open.
    AM_MEDIA_TYPE full = *pmt;
    full.majortype = MEDIATYPE_Audio;
    full.subtype = MEDIASUBTYPE_PCM;
    return Matches(full);
}
