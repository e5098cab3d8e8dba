#include "CTestPicture.h"

#include <vector>

CTestPicture::CTestPicture(int nWidth, int nHeight, COLORREF cr)
    : CTestPicture(nWidth, nHeight, [cr](int, int) { return cr; })
{
}

CTestPicture::CTestPicture(int nWidth, int nHeight, const std::function<COLORREF(int x, int y)>& painter)
{
    WCHAR wszFolder[MAX_PATH];
    WCHAR wszPath[MAX_PATH];
    GetTempPathW(MAX_PATH, wszFolder);
    GetTempFileNameW(wszFolder, L"art", 0, wszPath);
    m_path = wszPath;

    const int nStride = (nWidth * 3 + 3) & ~3;
    std::vector<BYTE> rows(static_cast<size_t>(nStride) * nHeight);
    for (int y = 0; y < nHeight; ++y)
    {
        BYTE* pRow = &rows[static_cast<size_t>(nHeight - 1 - y) * nStride]; // bottom row first
        for (int x = 0; x < nWidth; ++x)
        {
            const COLORREF cr = painter(x, y);
            pRow[3 * x] = GetBValue(cr);
            pRow[3 * x + 1] = GetGValue(cr);
            pRow[3 * x + 2] = GetRValue(cr);
        }
    }
    BITMAPINFOHEADER info = {};
    info.biSize = sizeof(info);
    info.biWidth = nWidth;
    info.biHeight = nHeight;
    info.biPlanes = 1;
    info.biBitCount = 24;
    info.biSizeImage = static_cast<DWORD>(rows.size());
    BITMAPFILEHEADER file = {};
    file.bfType = 0x4D42; // "BM"
    file.bfOffBits = sizeof(file) + sizeof(info);
    file.bfSize = file.bfOffBits + info.biSizeImage;

    HANDLE hFile = CreateFileW(wszPath, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD dwWritten = 0;
    WriteFile(hFile, &file, sizeof(file), &dwWritten, nullptr);
    WriteFile(hFile, &info, sizeof(info), &dwWritten, nullptr);
    WriteFile(hFile, rows.data(), info.biSizeImage, &dwWritten, nullptr);
    CloseHandle(hFile);
}

CTestPicture::~CTestPicture()
{
    DeleteFileW(m_path.c_str());
}
