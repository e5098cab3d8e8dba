#include "CTempFolder.h"

#include <windows.h>

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
    Remove(m_root);
}

std::wstring CTempFolder::Path(const std::wstring& relative) const
{
    return relative.empty() ? m_root : m_root + L"\\" + relative;
}

std::wstring CTempFolder::MakeFolder(const std::wstring& relative) const
{
    for (size_t nSlash = relative.find(L'\\'); nSlash != std::wstring::npos; nSlash = relative.find(L'\\', nSlash + 1))
        CreateDirectoryW(Path(relative.substr(0, nSlash)).c_str(), nullptr);
    CreateDirectoryW(Path(relative).c_str(), nullptr);
    return Path(relative);
}

std::wstring CTempFolder::Write(const std::wstring& relative, const std::string& bytes) const
{
    if (relative.find(L'\\') != std::wstring::npos)
        MakeFolder(relative.substr(0, relative.find_last_of(L'\\')));
    HANDLE hFile = CreateFileW(Path(relative).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD cbWritten = 0;
    if (hFile != INVALID_HANDLE_VALUE)
    {
        WriteFile(hFile, bytes.data(), static_cast<DWORD>(bytes.size()), &cbWritten, nullptr);
        CloseHandle(hFile);
    }
    return Path(relative);
}

std::wstring CTempFolder::CopyIn(const std::wstring& source, const std::wstring& relative) const
{
    if (relative.find(L'\\') != std::wstring::npos)
        MakeFolder(relative.substr(0, relative.find_last_of(L'\\')));
    CopyFileW(source.c_str(), Path(relative).c_str(), FALSE);
    return Path(relative);
}

void CTempFolder::Remove(const std::wstring& path)
{
    WIN32_FIND_DATAW fd;
    HANDLE hFind = FindFirstFileW((path + L"\\*").c_str(), &fd);
    for (BOOL bMore = hFind != INVALID_HANDLE_VALUE; bMore; bMore = FindNextFileW(hFind, &fd))
    {
        const std::wstring name = fd.cFileName, full = path + L"\\" + name;
        if (name == L"." || name == L"..")
            continue;
        if (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
            Remove(full);
        else
            DeleteFileW(full.c_str());
    }
    if (hFind != INVALID_HANDLE_VALUE)
        FindClose(hFind);
    RemoveDirectoryW(path.c_str());
}
