// Figures, not tests: per format, OpenFile until the picture is painted, beside GDI+ alone; the cross-fade's
// frames and times. Nothing fails on timing. Run: picture_benchmark.exe [opens per format] [fades]
#include <windows.h>
#include <gdiplus.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>
#include "CFigures.h"
#include "CPictureFiles.h"
#include "CPictureStage.h"
#include "engine/TessalyContract.h"

namespace {

const int kHostWidth = 640, kHostHeight = 480, kWidth = 320, kHeight = 240, kIconSize = 64;

double Median(const std::vector<double>& values) // of all but the first, which warms the codec
{
    return values.empty() ? -1.0 : CFigures::Median(std::vector<double>(values.begin() + 1, values.end()));
}

// GDI+ alone loads the file and draws it fitted and centred: milliseconds, or negative when it cannot.
double BareLoadAndDraw(const std::wstring& path, HWND hWnd)
{
    RECT rc;
    GetClientRect(hWnd, &rc);
    const double dStart = CFigures::NowMs();
    Gdiplus::Image image(path.c_str());
    const UINT uWidth = image.GetWidth(), uHeight = image.GetHeight();
    if (image.GetLastStatus() != Gdiplus::Ok || !uWidth || !uHeight)
        return -1.0;
    const double dScale = std::min(static_cast<double>(rc.right) / uWidth, static_cast<double>(rc.bottom) / uHeight);
    const int nWidth = static_cast<int>(uWidth * dScale), nHeight = static_cast<int>(uHeight * dScale);
    HDC hdc = GetDC(hWnd);
    Gdiplus::Graphics(hdc).DrawImage(&image, (rc.right - nWidth) / 2, (rc.bottom - nHeight) / 2, nWidth, nHeight);
    ReleaseDC(hWnd, hdc);
    GdiFlush();
    return CFigures::NowMs() - dStart;
}

// A viewer per format: the first open lands on an empty viewer, the later ones replace a picture shown.
void MeasureOpens(const CPictureFiles& files, int nOpens)
{
    std::printf("Open to first paint, %dx%d pictures (icon %d) in a %dx%d host, %d opens per format; bare: GDI+ alone, ratio: median "
                "open over bare\n%-8s %9s %9s %11s %13s %8s %12s %6s\n", kWidth, kHeight, kIconSize, kHostWidth, kHostHeight, nOpens,
                "file", "bytes", "size", "first open", "median open", "painted", "bare median", "ratio");
    auto gradient = [](int x, int y) { return RGB(x * 255 / kWidth, y * 255 / kHeight, 128); }; // work for the encoders
    std::vector<std::wstring> paths; // all written before any is opened
    for (const wchar_t* pwszName : {L"a.bmp", L"a.dib", L"a.jpg", L"a.jpeg", L"a.jpe", L"a.jfif", L"a.png", L"a.tif", L"a.tiff"})
        paths.push_back(files.Encode(pwszName, kWidth, kHeight, gradient));
    paths.insert(paths.end(), {files.Icon(L"a.ico", kIconSize, RGB(255, 160, 0)), files.WindowsMetafile(L"a.wmf", kWidth, kHeight, RGB(255, 160, 0)),
                               files.EnhancedMetafile(L"a.emf", kWidth, kHeight, RGB(255, 160, 0))});
    for (const std::wstring& path : paths)
    {
        const std::string file(path.begin() + path.find_last_of(L'\\') + 1, path.end());
        const unsigned long nBytes = static_cast<unsigned long>(CPictureFiles::Read(path).size());
        CPictureStage stage(kHostWidth, kHostHeight);
        CPictViewerProbe& viewer = stage.Viewer();
        std::vector<double> opens, bare;
        HRESULT hr = path.empty() ? E_NOTIMPL : S_OK; // no encoder for the format here
        int nPainted = 0;
        for (int i = 0; i < nOpens && SUCCEEDED(hr); ++i)
        {
            const double dStart = CFigures::NowMs();
            hr = viewer.OpenFile(path.c_str(), 0, 0);
            nPainted += GetUpdateRect(viewer.PictureWindow(), nullptr, FALSE) != FALSE; // what UpdateWindow paints
            UpdateWindow(viewer.PictureWindow()); // sent: on return the picture is painted
            opens.push_back(CFigures::NowMs() - dStart);
            CMessagePump::PumpFor(0);
        }
        if (FAILED(hr))
        {
            std::printf("%-8s %9lu %9s OpenFile failed 0x%08lx\n", file.c_str(), nBytes, "-", static_cast<unsigned long>(hr));
            continue;
        }
        DWORD dwWidth = 0, dwHeight = 0;
        viewer.GetFileInfo(nullptr, nullptr, nullptr, &dwWidth, &dwHeight, nullptr);
        for (double dBare; static_cast<int>(bare.size()) < nOpens && (dBare = BareLoadAndDraw(path, viewer.PictureWindow())) >= 0;)
            bare.push_back(dBare);
        const double dOpen = Median(opens), dBare = Median(bare);
        char szSize[32], szPainted[32], szBare[32] = "not one", szRatio[32] = "-";
        std::snprintf(szSize, 32, "%lux%lu", dwWidth, dwHeight);
        std::snprintf(szPainted, 32, "%d/%d", nPainted, nOpens);
        if (dBare > 0)
        {
            std::snprintf(szBare, 32, "%.1f ms", dBare);
            std::snprintf(szRatio, 32, "%.2f", dOpen / dBare);
        }
        std::printf("%-8s %9lu %9s %8.1f ms %10.1f ms %8s %12s %6s\n", file.c_str(), nBytes, szSize, opens[0], dOpen, szPainted, szBare, szRatio);
        std::fflush(stdout);
    }
}

void MeasureFades(const CPictureFiles& files, int nFades)
{
    const std::wstring red = files.Encode(L"red.bmp", kWidth, kHeight, [](int, int) { return RGB(255, 0, 0); });
    const std::wstring green = files.Encode(L"green.bmp", kWidth, kHeight, [](int, int) { return RGB(0, 255, 0); });
    std::printf("\nCross-fade red to green, %dx%d pictures in a %dx%d host, %d fades, goal: at least 18 frames in 500 +- 50 ms\n"
                "Times from OpenFile: the paint that starts the fade's timer, its first and last frames, its end\n%-8s %7s %11s %13s %12s %12s\n",
                kWidth, kHeight, kHostWidth, kHostHeight, nFades, "fade", "frames", "prepared", "first frame", "last frame", "length");
    CPictureStage stage(kHostWidth, kHostHeight);
    CPictViewerProbe& viewer = stage.Viewer();
    std::vector<double> columns[5] = {{0}, {0}, {0}, {0}, {0}}; // a first value, left out of the medians
    for (int i = 1; i <= nFades; ++i)
    {
        HRESULT hr = stage.Open(red);
        CMessagePump::PumpFor(50);
        const double dStart = CFigures::NowMs();
        if (SUCCEEDED(hr))
            hr = viewer.OpenFile(green.c_str(), TESSALY_OPEN_FLAG_CROSSFADE, 0);
        UpdateWindow(viewer.PictureWindow()); // the paint that prepares the fade and starts its timer
        double row[5] = {0, viewer.FadeTimerOn() ? CFigures::NowMs() - dStart : -1.0, -1.0, -1.0, -1.0}; // frames, prepared, first, last, end
        for (MSG msg; SUCCEEDED(hr) && viewer.Fading() && CFigures::NowMs() - dStart < 5000;) // a host's loop, the frames told apart
        {
            if (!PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE) && MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT) != WAIT_FAILED)
                continue;
            const bool bFrame = msg.message == WM_PAINT && msg.hwnd == viewer.PictureWindow() && viewer.FadeTimerOn();
            DispatchMessageW(&msg);
            const double dNow = CFigures::NowMs() - dStart; // after the window's own handling: the frame is on the screen
            if (bFrame)
            {
                if (row[0]++ == 0)
                    row[2] = dNow; // the first frame
                row[3] = dNow;     // the last so far
            }
            row[4] = viewer.Fading() ? -1.0 : dNow;
        }
        CMessagePump::PumpFor(50); // the paint that shows the new picture after the fade
        if (FAILED(hr) || row[4] < 0)
        {
            std::printf("%-8d %7.0f the fade failed (0x%08lx) or had not ended after 5000 ms\n", i, row[0], static_cast<unsigned long>(hr));
            continue;
        }
        for (int c = 0; c < 5; ++c)
            columns[c].push_back(row[c]);
        std::printf("%-8d %7.0f %8.1f ms %10.1f ms %9.1f ms %9.1f ms\n", i, row[0], row[1], row[2], row[3], row[4]);
        std::fflush(stdout);
    }
    if (columns[0].size() > 1)
        std::printf("%-8s %7.0f %8.1f ms %10.1f ms %9.1f ms %9.1f ms\n%-8s %7d %11s %13s %12s %6.0f+-%.0f ms\n", "median", Median(columns[0]),
                    Median(columns[1]), Median(columns[2]), Median(columns[3]), Median(columns[4]), "goal", 18, "-", "-", "-", 500.0, 50.0);
}

} // namespace

int main(int argc, char** argv)
{
    Gdiplus::GdiplusStartupInput input; // the files are encoded before any engine object starts GDI+
    ULONG_PTR ulToken = 0;
    if (Gdiplus::GdiplusStartup(&ulToken, &input, nullptr) != Gdiplus::Ok)
    {
        std::printf("GDI+ did not start\n");
        return 1;
    }
    {
        CPictureFiles files;
        MeasureOpens(files, argc > 1 ? std::max(2, std::atoi(argv[1])) : 10);
        MeasureFades(files, argc > 2 ? std::max(1, std::atoi(argv[2])) : 5);
    }
    Gdiplus::GdiplusShutdown(ulToken);
    return 0;
}
