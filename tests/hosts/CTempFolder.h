// A folder of the test's own under the system's temporary folder, removed with everything in it
// when the test ends. Paths inside it are relative ("a\\b.wav"); folders on the way are made.
#pragma once

#include <string>

class CTempFolder
{
public:
    CTempFolder();
    ~CTempFolder();
    CTempFolder(const CTempFolder&) = delete;
    CTempFolder& operator=(const CTempFolder&) = delete;

    std::wstring Path(const std::wstring& relative = std::wstring()) const; // no name: the folder itself
    std::wstring Write(const std::wstring& relative, const std::string& bytes) const; // answers the full path
    std::wstring CopyIn(const std::wstring& source, const std::wstring& relative) const;
    std::wstring MakeFolder(const std::wstring& relative) const;

private:
    std::wstring m_root;
};
