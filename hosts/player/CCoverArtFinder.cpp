#include "hosts/player/CCoverArtFinder.h"

#include <windows.h>

namespace {

const wchar_t* const kPictureExtensions[] = {L".jpg", L".jpeg", L".png", L".bmp", L".gif"};
const wchar_t* const kFolderPictures[] = {L"folder.jpg", L"cover.jpg", L"folder.png", L"cover.png"};

} // namespace

std::wstring CCoverArtFinder::Find(const std::wstring& mediaPath)
{
    const size_t nSlash = mediaPath.find_last_of(L"\\/");
    const size_t nDot = mediaPath.find_last_of(L'.');
    const std::wstring stem =
        nDot != std::wstring::npos && (nSlash == std::wstring::npos || nDot > nSlash) ? mediaPath.substr(0, nDot) : mediaPath;
    for (const wchar_t* pwszExtension : kPictureExtensions)
        if (IsFile(stem + pwszExtension))
            return stem + pwszExtension;

    const std::wstring folder = nSlash == std::wstring::npos ? std::wstring() : mediaPath.substr(0, nSlash + 1);
    for (const wchar_t* pwszName : kFolderPictures)
        if (IsFile(folder + pwszName))
            return folder + pwszName;
    return {};
}

bool CCoverArtFinder::IsFile(const std::wstring& path)
{
    const DWORD dwAttributes = GetFileAttributesW(path.c_str());
    return dwAttributes != INVALID_FILE_ATTRIBUTES && !(dwAttributes & FILE_ATTRIBUTE_DIRECTORY);
}
