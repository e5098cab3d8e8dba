// The text the filter's Load takes instead of a file name: a drive letter (either case), a slash
// and one track ("D/3") or a first and last track ("D/3-7"). Track numbers are those of a disc,
// 1 to 99, written with one or two digits; nothing else may surround them.
#pragma once

#include <windows.h>

class CTrackRequest
{
public:
    // S_OK; E_INVALIDARG for text of any other shape (null included);
    // HRESULT_FROM_WIN32(ERROR_NOT_FOUND) when the first track comes after the last, a range
    // no disc can hold. The members change only on S_OK.
    HRESULT Parse(LPCWSTR pwszRequest);

    WCHAR Drive() const { return m_wcDrive; } // upper case
    int First() const { return m_nFirst; }
    int Last() const { return m_nLast; }

private:
    WCHAR m_wcDrive = 0;
    int m_nFirst = 0;
    int m_nLast = 0;
};
