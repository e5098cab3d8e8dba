#include "CTempFolder.h"

#include <windows.h>
#include <shellapi.h>
#include <shlobj.h>

CTempFolder::CTempFolder()
{
    wchar_t wszTemp[MAX_PATH];
    GetTempPathW(MAX_PATH, wszTemp);
    static LONG s_lCount = 0;
    m_root = std::wstring(wszTemp) + L"tessaly-hosts-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
             std::to_wstring(InterlockedIncrement(&s_lCount));
    CreateDirectoryW(m_root.c_str(), nullptr);
}

CTempFolder::~CTempFolder()
{
    const std::wstring from = m_root + L'\0'; // the list of one that the shell reads
    SHFILEOPSTRUCTW op = {nullptr, FO_DELETE, from.c_str(), nullptr, FOF_NOCONFIRMATION | FOF_NOERRORUI | FOF_SILENT, FALSE, nullptr, nullptr};
    SHFileOperationW(&op);
}

std::wstring CTempFolder::Path(const std::wstring& relative) const
{
    return relative.empty() ? m_root : m_root + L"\\" + relative;
}

std::wstring CTempFolder::MakeFolder(const std::wstring& relative) const
{
    SHCreateDirectoryExW(nullptr, Path(relative).c_str(), nullptr);
    return Path(relative);
}

std::wstring CTempFolder::Write(const std::wstring& relative, const std::string& bytes) const
{
    MakeFolder(relative.substr(0, relative.find_last_of(L'\\') + 1));
    HANDLE hFile = CreateFileW(Path(relative).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD cbWritten = 0;
    WriteFile(hFile, bytes.data(), static_cast<DWORD>(bytes.size()), &cbWritten, nullptr);
    CloseHandle(hFile);
    return Path(relative);
}

std::wstring CTempFolder::CopyIn(const std::wstring& source, const std::wstring& relative) const
{
    MakeFolder(relative.substr(0, relative.find_last_of(L'\\') + 1));
    CopyFileW(source.c_str(), Path(relative).c_str(), FALSE);
    return Path(relative);
}
