// The picture to show beside an audio file: one of the same name next to it (song.jpg for
// song.mp3), else the folder's own picture (folder.jpg), as music folders usually carry them.
#pragma once

#include <string>

class CCoverArtFinder
{
public:
    // The picture's path, or an empty string when there is none.
    static std::wstring Find(const std::wstring& mediaPath);

private:
    static bool IsFile(const std::wstring& path);
};
