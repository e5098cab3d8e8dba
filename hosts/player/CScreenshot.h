// Writes what a window shows, children and video included, to a PNG file.
#pragma once

#include <windows.h>

#include <string>

class CScreenshot
{
public:
    static HRESULT Save(HWND hWnd, const std::wstring& path);

private:
    static HRESULT SaveBitmap(HBITMAP hBitmap, const std::wstring& path);
};
