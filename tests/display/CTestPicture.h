// Picture files for cover art, written as 24-bit BMP files into the test's temporary folder.
#pragma once

#include <windows.h>

#include <functional>
#include <string>

class CTestPicture
{
public:
    // A picture of one colour, or of the colour the painter gives each pixel.
    CTestPicture(int nWidth, int nHeight, COLORREF cr);
    CTestPicture(int nWidth, int nHeight, const std::function<COLORREF(int x, int y)>& painter);
    ~CTestPicture();
    CTestPicture(const CTestPicture&) = delete;
    CTestPicture& operator=(const CTestPicture&) = delete;

    LPCWSTR Path() const { return m_path.c_str(); }

private:
    std::wstring m_path;
};
