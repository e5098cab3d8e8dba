#include "hosts/player/CScreenshot.h"

#include <gdiplus.h>

#include <vector>

namespace {

HRESULT PngEncoder(CLSID* pClsid)
{
    UINT nEncoders = 0, cbEncoders = 0;
    if (Gdiplus::GetImageEncodersSize(&nEncoders, &cbEncoders) != Gdiplus::Ok || cbEncoders == 0)
        return E_FAIL;
    std::vector<BYTE> buffer(cbEncoders);
    auto* pEncoders = reinterpret_cast<Gdiplus::ImageCodecInfo*>(buffer.data());
    if (Gdiplus::GetImageEncoders(nEncoders, cbEncoders, pEncoders) != Gdiplus::Ok)
        return E_FAIL;
    for (UINT i = 0; i < nEncoders; ++i)
        if (lstrcmpiW(pEncoders[i].MimeType, L"image/png") == 0)
        {
            *pClsid = pEncoders[i].Clsid;
            return S_OK;
        }
    return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
}

} // namespace

HRESULT CScreenshot::Save(HWND hWnd, const std::wstring& path)
{
    RECT rc;
    if (!GetClientRect(hWnd, &rc) || rc.right <= 0 || rc.bottom <= 0)
        return E_INVALIDARG;

    // Read back what the window holds rather than asking it to paint, so that what the renderer
    // drew into it stays in; and from the window, not the screen, so that another program's
    // window over it does not end up in the picture.
    HDC hdcWindow = GetDC(hWnd);
    HDC hdcMem = CreateCompatibleDC(hdcWindow);
    HBITMAP hBitmap = CreateCompatibleBitmap(hdcWindow, rc.right, rc.bottom);
    HRESULT hr = E_OUTOFMEMORY;
    if (hdcMem && hBitmap)
    {
        HGDIOBJ hOld = SelectObject(hdcMem, hBitmap);
        const BOOL bCopied = BitBlt(hdcMem, 0, 0, rc.right, rc.bottom, hdcWindow, 0, 0, SRCCOPY);
        SelectObject(hdcMem, hOld);
        hr = bCopied ? SaveBitmap(hBitmap, path) : HRESULT_FROM_WIN32(GetLastError());
    }
    if (hBitmap)
        DeleteObject(hBitmap);
    if (hdcMem)
        DeleteDC(hdcMem);
    ReleaseDC(hWnd, hdcWindow);
    return hr;
}

HRESULT CScreenshot::SaveBitmap(HBITMAP hBitmap, const std::wstring& path)
{
    Gdiplus::GdiplusStartupInput input;
    ULONG_PTR token = 0;
    if (Gdiplus::GdiplusStartup(&token, &input, nullptr) != Gdiplus::Ok)
        return E_FAIL;
    HRESULT hr;
    {
        CLSID clsid;
        hr = PngEncoder(&clsid);
        if (SUCCEEDED(hr))
        {
            Gdiplus::Bitmap bitmap(hBitmap, nullptr);
            hr = bitmap.Save(path.c_str(), &clsid, nullptr) == Gdiplus::Ok ? S_OK : E_FAIL;
        }
    }
    Gdiplus::GdiplusShutdown(token);
    return hr;
}
