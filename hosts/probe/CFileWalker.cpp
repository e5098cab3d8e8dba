#include "hosts/probe/CFileWalker.h"

#include <windows.h>

#include <algorithm>

#include "hosts/common/CFullPath.h"

namespace {

struct FolderEntry
{
    std::wstring name;
    bool bFolder;
};

bool NameLess(const FolderEntry& a, const FolderEntry& b)
{
    return CompareStringOrdinal(a.name.c_str(), -1, b.name.c_str(), -1, TRUE) == CSTR_LESS_THAN;
}

} // namespace

std::vector<CProbeTarget> CFileWalker::Expand(const std::vector<std::wstring>& paths)
{
    std::vector<CProbeTarget> targets;
    for (const std::wstring& path : paths)
    {
        const std::wstring full = CFullPath::Of(path);
        const DWORD dwAttributes = GetFileAttributesW(full.c_str());
        if (dwAttributes == INVALID_FILE_ATTRIBUTES)
            targets.push_back({full, HRESULT_FROM_WIN32(GetLastError())});
        else if (dwAttributes & FILE_ATTRIBUTE_DIRECTORY)
            AddFolder(full, targets);
        else
            targets.push_back({full, S_OK});
    }
    return targets;
}

void CFileWalker::AddFolder(const std::wstring& folder, std::vector<CProbeTarget>& targets)
{
    std::wstring prefix = folder;
    if (!prefix.empty() && prefix.back() != L'\\' && prefix.back() != L'/')
        prefix += L'\\';

    std::vector<FolderEntry> entries;
    WIN32_FIND_DATAW fd;
    HANDLE hFind = FindFirstFileW((prefix + L"*").c_str(), &fd);
    if (hFind == INVALID_HANDLE_VALUE)
    {
        const DWORD dwError = GetLastError();
        if (dwError != ERROR_FILE_NOT_FOUND) // an empty folder is not an error
            targets.push_back({folder, HRESULT_FROM_WIN32(dwError)});
        return;
    }
    do
    {
        const std::wstring name = fd.cFileName;
        if (name == L"." || name == L"..")
            continue;
        // Links to folders could lead round in circles; they are not followed.
        if ((fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && (fd.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT))
            continue;
        entries.push_back({name, (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0});
    } while (FindNextFileW(hFind, &fd));
    FindClose(hFind);

    std::sort(entries.begin(), entries.end(), NameLess);
    for (const FolderEntry& entry : entries)
    {
        if (entry.bFolder)
            AddFolder(prefix + entry.name, targets);
        else
            targets.push_back({prefix + entry.name, S_OK});
    }
}
