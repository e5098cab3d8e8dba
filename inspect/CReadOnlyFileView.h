// The whole of a file mapped read-only for the length of one parse. Windows only; the header
// itself stays free of Windows types so that the parser that uses it does too.
#pragma once

#include <cstdint>

#include "inspect/CByteView.h"

class CReadOnlyFileView
{
public:
    CReadOnlyFileView();
    ~CReadOnlyFileView();
    CReadOnlyFileView(const CReadOnlyFileView&) = delete;
    CReadOnlyFileView& operator=(const CReadOnlyFileView&) = delete;

    // Result codes: E_OUTOFMEMORY, the system error of the failing step, or 0x8007000D for an
    // empty file.
    int32_t Open(const wchar_t* pszPath);
    bool IsMapped() const { return m_pView != nullptr; }
    CByteView View() const { return CByteView(m_pView, m_cbFile); }

private:
    int32_t FailWithLastError(const char* pszTraceLine);
    void Close();

    void* m_hFile;
    void* m_hMapping;
    const uint8_t* m_pView;
    uint64_t m_cbFile;
};
