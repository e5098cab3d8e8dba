// The title a person would give a file: its title tag where the platform's property handlers read
// one, else its name without folder and extension.
#pragma once

#include <string>

class CMediaTitle
{
public:
    static std::wstring Of(const std::wstring& path);
    static std::wstring FromName(const std::wstring& path);

private:
    static std::wstring FromTags(const std::wstring& path);
};
