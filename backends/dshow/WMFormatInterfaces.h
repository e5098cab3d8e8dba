// What the engine needs of the Windows Media Format SDK beyond mingw-w64: its headers lack the
// editor's second interface, and its import libraries define none of the interface identifiers.
#pragma once

#include <windows.h>

#include <wmsdkidl.h>

namespace wmf {

// {96406BD9-2B2B-11D3-B36B-00C04F6108FF}
inline constexpr IID IID_IWMMetadataEditor = {
    0x96406bd9, 0x2b2b, 0x11d3, {0xb3, 0x6b, 0x00, 0xc0, 0x4f, 0x61, 0x08, 0xff}};

// {203CFFE3-2E18-4FDF-B59D-6E71530534CF}
inline constexpr IID IID_IWMMetadataEditor2 = {
    0x203cffe3, 0x2e18, 0x4fdf, {0xb5, 0x9d, 0x6e, 0x71, 0x53, 0x05, 0x34, 0xcf}};

// {96406BDA-2B2B-11D3-B36B-00C04F6108FF}
inline constexpr IID IID_IWMHeaderInfo = {
    0x96406bda, 0x2b2b, 0x11d3, {0xb3, 0x6b, 0x00, 0xc0, 0x4f, 0x61, 0x08, 0xff}};

// {15CC68E3-27CC-4ECD-B222-3F5D02D80BD5}
inline constexpr IID IID_IWMHeaderInfo3 = {
    0x15cc68e3, 0x27cc, 0x4ecd, {0xb2, 0x22, 0x3f, 0x5d, 0x02, 0xd8, 0x0b, 0xd5}};

struct IWMMetadataEditor2 : public IWMMetadataEditor
{
    virtual HRESULT STDMETHODCALLTYPE OpenEx(LPCWSTR pwszFilename, DWORD dwDesiredAccess,
                                             DWORD dwShareMode) = 0;
};

} // namespace wmf
