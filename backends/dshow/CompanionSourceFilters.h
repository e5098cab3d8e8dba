// The Ogg and FLAC source filters of the engine's own family. They ship separately; a machine
// without them plays those files through DirectShow's automatic rendering instead.
#pragma once

#include <windows.h>

#include <unknwn.h>

// {DD62DBDB-8321-4FF6-BFEF-3923093D4C75}
inline constexpr CLSID CLSID_OggSourceFilter = {
    0xdd62dbdb, 0x8321, 0x4ff6, {0xbf, 0xef, 0x39, 0x23, 0x09, 0x3d, 0x4c, 0x75}};

// {9D0B8FAF-9AF0-407B-9A52-3336BF7353B9}
inline constexpr CLSID CLSID_FlacSourceFilter = {
    0x9d0b8faf, 0x9af0, 0x407b, {0x9a, 0x52, 0x33, 0x36, 0xbf, 0x73, 0x53, 0xb9}};

// {2148E531-8909-4203-AF6C-50FCBD1BB6FC}
inline constexpr IID IID_ISourceFilterSetup = {
    0x2148e531, 0x8909, 0x4203, {0xaf, 0x6c, 0x50, 0xfc, 0xbd, 0x1b, 0xb6, 0xfc}};

// Both filters take their setup before a file is loaded; the engine always passes 1.
struct ISourceFilterSetup : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE Setup(DWORD dwValue) = 0;
};
