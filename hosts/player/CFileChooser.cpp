#include "hosts/player/CFileChooser.h"

#include <commdlg.h>
#include <objbase.h>
#include <shellapi.h>

#include <cwchar>

std::vector<std::wstring> CFileChooser::Dropped(HDROP hDrop)
{
    std::vector<std::wstring> files;
    const UINT nFiles = DragQueryFileW(hDrop, 0xFFFFFFFF, nullptr, 0);
    for (UINT i = 0; i < nFiles; ++i)
    {
        std::wstring path(DragQueryFileW(hDrop, i, nullptr, 0) + 1, L'\0');
        path.resize(DragQueryFileW(hDrop, i, &path[0], static_cast<UINT>(path.size())));
        files.push_back(path);
    }
    DragFinish(hDrop);
    return files;
}

std::wstring CFileChooser::Filter(IPlay* pPlay)
{
    // The engine's own list of extensions, so the dialog offers what it can play.
    std::wstring patterns;
    ULONG nCount = 0;
    LPWSTR* ppwszList = nullptr;
    if (pPlay && SUCCEEDED(pPlay->GetSupportedFileExt(&nCount, &ppwszList)) && ppwszList)
    {
        for (ULONG i = 0; i < nCount; ++i)
        {
            if (ppwszList[i] && ppwszList[i][0])
                patterns += (patterns.empty() ? L"*" : L";*") + std::wstring(ppwszList[i]);
            CoTaskMemFree(ppwszList[i]);
        }
        CoTaskMemFree(ppwszList);
    }
    std::wstring filter;
    if (!patterns.empty())
        filter += L"Media files" + std::wstring(1, L'\0') + patterns + std::wstring(1, L'\0');
    filter += L"All files" + std::wstring(1, L'\0') + L"*.*" + std::wstring(2, L'\0');
    return filter;
}

std::vector<std::wstring> CFileChooser::Choose(HWND hOwner, IPlay* pPlay)
{
    const std::wstring filter = Filter(pPlay);
    std::vector<wchar_t> buffer(32768, L'\0');
    OPENFILENAMEW ofn = {};
    ofn.lStructSize = sizeof(ofn);
    ofn.hwndOwner = hOwner;
    ofn.lpstrFilter = filter.c_str();
    ofn.lpstrFile = buffer.data();
    ofn.nMaxFile = static_cast<DWORD>(buffer.size());
    ofn.Flags = OFN_ALLOWMULTISELECT | OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_HIDEREADONLY;
    if (!GetOpenFileNameW(&ofn))
        return {};
    // One name is the full path; several come as the folder followed by the names.
    std::vector<std::wstring> parts;
    for (const wchar_t* pwsz = buffer.data(); *pwsz; pwsz += wcslen(pwsz) + 1)
        parts.push_back(pwsz);
    std::vector<std::wstring> files;
    if (parts.size() == 1)
        files = parts;
    else
        for (size_t i = 1; i < parts.size(); ++i)
            files.push_back(parts[0] + L"\\" + parts[i]);
    return files;
}
