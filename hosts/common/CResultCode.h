// Names and readable explanations for the result codes a host gets back from the engine: its own
// codes, the COM and DirectShow codes it passes through, and Windows errors.
#pragma once

#include <windows.h>

#include <string>

class CResultCode
{
public:
    // The symbolic name ("TESSALY_E_NOTSUPPORTED", "E_NOTIMPL", "HRESULT_FROM_WIN32(2)"), or the
    // hexadecimal value when the code is not one a host is expected to meet.
    static std::wstring Name(HRESULT hr);
    // "0x8004A000"
    static std::wstring Hex(HRESULT hr);
    // "0x8004A000 TESSALY_E_NOTSUPPORTED", as logs and reports show a code.
    static std::wstring HexAndName(HRESULT hr);
    // A sentence for a status line or message box.
    static std::wstring Message(HRESULT hr);
};
