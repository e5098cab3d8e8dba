// Copies of the test media whose ASF header declares content protection, written byte by byte as
// a packager would: an encryption object added to the header.
#pragma once

#include <string>

class CTempFolder;

class CProtectedMedia
{
public:
    // The copy's path in folder, or "" when the medium could not be read.
    static std::wstring Copy(const CTempFolder& folder, const char* pszName, bool bExtended);
};
