// What the engine knows of its CD audio source filter: the class it creates and the private
// interface it configures it through. The filter is an in-process server of its own
// (tessaly_cdsource.dll), registered like any filter.
#pragma once

#include <windows.h>
#include <unknwn.h>

// {1238B11E-EC16-416E-ACBC-8C6DED5B7126}
static const CLSID CLSID_TessalyCDAudioSource = {
    0x1238b11e, 0xec16, 0x416e, {0xac, 0xbc, 0x8c, 0x6d, 0xed, 0x5b, 0x71, 0x26}};

// {D1038F69-657F-4679-9D4C-9305882EDE68}
static const IID IID_ICDAudioSourceConfig = {
    0xd1038f69, 0x657f, 0x4679, {0x9d, 0x4c, 0x93, 0x05, 0x88, 0x2e, 0xde, 0x68}};

// How the filter reads a real drive (an image is always read raw).
enum CDAudioReadMode
{
    CDAudioRead_Default = 0,  // raw reads, no retry on a read error
    CDAudioRead_Raw = 1,      // raw reads; a sector that cannot be read is retried once, then played as silence
};

struct ICDAudioSourceConfig : public IUnknown
{
    // The engine passes CDAudioRead_Raw before the first Load. E_INVALIDARG for unknown modes.
    virtual HRESULT STDMETHODCALLTYPE SetReadMode(DWORD dwMode) = 0;
    // Bytes of audio the downstream pin has accepted (Receive answered S_OK) since the last Load.
    virtual HRESULT STDMETHODCALLTYPE GetDeliveredBytes(ULONGLONG* pcbDelivered) = 0;
};
