// The one media type the filter delivers: CD audio as it is on the disc, 44.1 kHz stereo 16-bit
// PCM (MEDIATYPE_Audio, MEDIASUBTYPE_PCM, FORMAT_WaveFormatEx).
#pragma once

#include <windows.h>

#include <dshow.h>
#include <mmreg.h>

class CCDMediaType
{
public:
    static WAVEFORMATEX Format();

    // Fills *pmt with the type; the format block comes from CoTaskMemAlloc (E_OUTOFMEMORY and
    // nothing allocated when it cannot).
    static HRESULT Fill(AM_MEDIA_TYPE* pmt);
    // The type in memory of its own (CoTaskMemAlloc, format block too), as enumerators hand out.
    static AM_MEDIA_TYPE* Create();
    // Frees what Fill allocated, or the whole of what Create made.
    static void FreeFormat(AM_MEDIA_TYPE* pmt);
    static void Delete(AM_MEDIA_TYPE* pmt);

    // Exactly this type (a longer format block is fine when its WAVEFORMATEX part matches).
    static bool Matches(const AM_MEDIA_TYPE& mt);
    // A type a connection may ask for: null, or one whose every part is either left open
    // (GUID_NULL) or matches.
    static bool Allows(const AM_MEDIA_TYPE* pmt);
};
