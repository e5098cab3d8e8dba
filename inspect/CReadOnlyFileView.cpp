#include "inspect/CReadOnlyFileView.h"

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <memory>
#include <new>

#include "trace/Trace.h"

namespace {

// Taken before anything else runs: writing a trace line may change the thread's last error.
int32_t LastErrorAsResult()
{
    return HRESULT_FROM_WIN32(GetLastError());
}

} // namespace

CReadOnlyFileView::CReadOnlyFileView()
    : m_hFile(INVALID_HANDLE_VALUE), m_hMapping(nullptr), m_pView(nullptr), m_cbFile(0)
{
}

CReadOnlyFileView::~CReadOnlyFileView()
{
    Close();
}

// The trace lines name the parser's Open: to whoever reads the log this is that step.
int32_t CReadOnlyFileView::Open(const wchar_t* pszPath)
{
    Close();
    if (!pszPath)
        return E_INVALIDARG;

    // The path is copied before any file access, so running out of memory is told apart from
    // every failure of the file itself.
    const size_t cchPath = std::wcslen(pszPath) + 1;
    std::unique_ptr<wchar_t[]> pathCopy(new (std::nothrow) wchar_t[cchPath]);
    if (!pathCopy)
    {
        TESSALY_TRACE("E:CASFFileParser::Open> failed to allocate memory to store filepath");
        return E_OUTOFMEMORY;
    }
    std::copy(pszPath, pszPath + cchPath, pathCopy.get());

    m_hFile = CreateFileW(pathCopy.get(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                          FILE_ATTRIBUTE_NORMAL, nullptr);
    if (m_hFile == INVALID_HANDLE_VALUE)
        return FailWithLastError("E:CASFFileParser::Open> CreateFile failed");

    // A low word of all ones is taken as failure without asking GetLastError whether it was one;
    // a 32-bit process could not map a file of such a size whole anyway.
    DWORD sizeHigh = 0;
    const DWORD sizeLow = GetFileSize(m_hFile, &sizeHigh);
    if (sizeLow == INVALID_FILE_SIZE)
        return FailWithLastError("E:CASFFileParser::Open> GetFileSize failed");
    m_cbFile = (static_cast<uint64_t>(sizeHigh) << 32) | sizeLow;
    if (m_cbFile == 0)
    {
        TESSALY_TRACE("E:CASFFileParser::Open> filesize is zero");
        Close();
        return HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
    }

    m_hMapping = CreateFileMappingW(m_hFile, nullptr, PAGE_READONLY, 0, 0, nullptr);
    if (!m_hMapping)
        return FailWithLastError("E:CASFFileParser::Open> CreateFileMapping failed");
    m_pView = static_cast<const uint8_t*>(MapViewOfFile(m_hMapping, FILE_MAP_READ, 0, 0, 0));
    if (!m_pView)
        return FailWithLastError("E:CASFFileParser::Open> MapViewOfFile failed");
    return S_OK;
}

int32_t CReadOnlyFileView::FailWithLastError(const char* pszTraceLine)
{
    const int32_t hr = LastErrorAsResult();
    TESSALY_TRACE("%s", pszTraceLine);
    Close();
    return hr;
}

void CReadOnlyFileView::Close()
{
    if (m_pView)
        UnmapViewOfFile(m_pView);
    if (m_hMapping)
        CloseHandle(m_hMapping);
    if (m_hFile != INVALID_HANDLE_VALUE)
        CloseHandle(m_hFile);
    m_pView = nullptr;
    m_hMapping = nullptr;
    m_hFile = INVALID_HANDLE_VALUE;
    m_cbFile = 0;
}
