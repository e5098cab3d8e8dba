// A folder of the test's own under the system's temporary folder, removed with everything in it
// when the test ends.
#pragma once

#include <string>

class CTempFolder
{
public:
    CTempFolder();
    ~CTempFolder();
    CTempFolder(const CTempFolder&) = delete;
    CTempFolder& operator=(const CTempFolder&) = delete;

    // The full path of a name inside the folder ("a\\b.wav"); no name: the folder itself.
    std::wstring Path(const std::wstring& relative = std::wstring()) const;
    // Writes a file (making the folders on its way) and returns its full path.
    std::wstring Write(const std::wstring& relative, const std::string& bytes) const;
    std::wstring CopyIn(const std::wstring& source, const std::wstring& relative) const;
    std::wstring MakeFolder(const std::wstring& relative) const;

private:
    static void Remove(const std::wstring& path);
    std::wstring m_root;
};
