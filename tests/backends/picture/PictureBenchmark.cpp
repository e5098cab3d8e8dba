// Figures, not tests: for every format the picture back-end takes, the time from OpenFile until the
// picture window has painted it (the first open in the process, the median of the later ones) beside
// GDI+ alone; and how many frames the cross-fade draws in how long. Nothing here fails on timing.
// Run under Wine: picture_benchmark.exe [opens per format] [fades]
#include <windows.h>
#include <gdiplus.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "CPictureFiles.h"
#include "CPictureStage.h"
#include "engine/TessalyContract.h"

namespace {

const int kHostWidth = 640, kHostHeight = 480, kWidth = 320, kHeight = 240, kIconSize = 64;

double Now()
{
    LARGE_INTEGER now, frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return 1000.0 * static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? -1.0 : values[values.size() / 2];
}

// Chained in front of the picture window's procedure: counts the paints it really ran, and tells
// the fade's frames from the paint that only prepares a fade (before the fade timer is on).
struct CPaintWatch
{
    explicit CPaintWatch(CPictViewerProbe& v) : viewer(v), hWnd(v.PictureWindow())
    {
        s_pWatch = this;
        pfnChained = reinterpret_cast<WNDPROC>(SetWindowLongPtrW(hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Proc)));
    }
    ~CPaintWatch() { SetWindowLongPtrW(hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(pfnChained)); }
    static LRESULT CALLBACK Proc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
    {
        CPaintWatch& w = *s_pWatch;
        const bool bWasFading = w.viewer.Fading(), bWasTimed = w.viewer.FadeTimerOn();
        const LRESULT lResult = CallWindowProcW(w.pfnChained, hWnd, uMsg, wParam, lParam);
        const double dNow = Now(); // after the window's own handling: the frame is on the screen
        w.nPaints += uMsg == WM_PAINT;
        if (bWasFading && !bWasTimed && w.viewer.FadeTimerOn())
            w.dPrepared = dNow;
        if (uMsg == WM_PAINT && bWasFading && bWasTimed)
            (w.nFrames++ ? w.dLastFrame : w.dFirstFrame = w.dLastFrame) = dNow;
        if (bWasFading && !w.viewer.Fading())
            w.dEnd = dNow;
        return lResult;
    }
    void Reset() { nPaints = nFrames = 0, dPrepared = dFirstFrame = dLastFrame = dEnd = -1.0; }

    static inline CPaintWatch* s_pWatch = nullptr;
    CPictViewerProbe& viewer;
    HWND hWnd;
    WNDPROC pfnChained = nullptr;
    int nPaints = 0, nFrames = 0;
    double dPrepared = -1.0, dFirstFrame = -1.0, dLastFrame = -1.0, dEnd = -1.0;
};

// GDI+ alone loads the file and draws it fitted and centred into the window: milliseconds, or
// negative when it cannot load the file as one picture.
double BareLoadAndDraw(const std::wstring& path, HWND hWnd)
{
    RECT rc;
    GetClientRect(hWnd, &rc);
    const double dStart = Now();
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
    return Now() - dStart;
}

// One viewer per format, so that the first open lands on an empty viewer as a host's first picture
// does, and the later ones replace a picture shown, as in a slide show.
void MeasureOpens(const CPictureFiles& files, int nOpens)
{
    std::printf("Open to first paint, %dx%d pictures (icon %d) in a %dx%d host, %d opens per format\n"
                "The bare column loads and draws the same file with GDI+ alone, fitted into a window of the\n"
                "same size; the ratio is the engine's median open over the bare median.\n"
                "%-8s %9s %9s %11s %13s %8s %12s %6s\n", kWidth, kHeight, kIconSize, kHostWidth, kHostHeight, nOpens,
                "file", "bytes", "size", "first open", "median open", "painted", "bare median", "ratio");
    auto gradient = [](int x, int y) { return RGB(x * 255 / kWidth, y * 255 / kHeight, 128); }; // work for the encoders
    std::vector<std::pair<std::wstring, std::wstring>> paths; // every file written before any is opened
    for (const wchar_t* pwszName : {L"a.bmp", L"a.dib", L"a.jpg", L"a.jpeg", L"a.jpe", L"a.jfif", L"a.png", L"a.tif", L"a.tiff"})
        paths.emplace_back(pwszName, files.Encode(pwszName, kWidth, kHeight, gradient));
    paths.emplace_back(L"a.ico", files.Icon(L"a.ico", kIconSize, RGB(255, 160, 0)));
    paths.emplace_back(L"a.wmf", files.WindowsMetafile(L"a.wmf", kWidth, kHeight, RGB(255, 160, 0)));
    paths.emplace_back(L"a.emf", files.EnhancedMetafile(L"a.emf", kWidth, kHeight, RGB(255, 160, 0)));
    for (const auto& [name, path] : paths)
    {
        const std::string file(name.begin(), name.end());
        if (path.empty())
        {
            std::printf("%-8s no encoder for this format on this platform\n", file.c_str());
            continue;
        }
        const unsigned long nBytes = static_cast<unsigned long>(CPictureFiles::Read(path).size());
        CPictureStage stage(kHostWidth, kHostHeight);
        CPaintWatch watch(stage.Viewer());
        std::vector<double> opens, bare;
        HRESULT hr = S_OK;
        int nPainted = 0;
        for (int i = 0; i < nOpens && SUCCEEDED(hr); ++i)
        {
            watch.Reset();
            const double dStart = Now();
            hr = stage.Viewer().OpenFile(path.c_str(), 0, 0);
            UpdateWindow(stage.Viewer().PictureWindow()); // sent: on return the picture is painted
            opens.push_back(Now() - dStart);
            nPainted += watch.nPaints > 0;
            CMessagePump::PumpFor(0);
        }
        if (FAILED(hr))
        {
            std::printf("%-8s %9lu %9s OpenFile failed 0x%08lx\n", file.c_str(), nBytes, "-", static_cast<unsigned long>(hr));
            continue;
        }
        DWORD dwWidth = 0, dwHeight = 0;
        stage.Viewer().GetFileInfo(nullptr, nullptr, nullptr, &dwWidth, &dwHeight, nullptr);
        for (double dBare; static_cast<int>(bare.size()) < nOpens && (dBare = BareLoadAndDraw(path, stage.Viewer().PictureWindow())) >= 0;)
            bare.push_back(dBare);
        const double dFirst = opens.front(), dOpen = Median({opens.begin() + 1, opens.end()});
        const double dBare = bare.empty() ? -1.0 : Median({bare.begin() + 1, bare.end()}); // the first load warms the codec
        char szSize[32], szPainted[32], szBare[32] = "not one", szRatio[32] = "-";
        std::snprintf(szSize, sizeof(szSize), "%lux%lu", static_cast<unsigned long>(dwWidth), static_cast<unsigned long>(dwHeight));
        std::snprintf(szPainted, sizeof(szPainted), "%d/%d", nPainted, nOpens);
        if (dBare > 0)
            std::snprintf(szBare, sizeof(szBare), "%.1f ms", dBare), std::snprintf(szRatio, sizeof(szRatio), "%.2f", dOpen / dBare);
        std::printf("%-8s %9lu %9s %8.1f ms %10.1f ms %8s %12s %6s\n", file.c_str(), nBytes, szSize, dFirst, dOpen, szPainted, szBare, szRatio);
        std::fflush(stdout);
    }
}

void MeasureFades(const CPictureFiles& files, int nFades)
{
    const std::wstring red = files.Encode(L"red.bmp", kWidth, kHeight, [](int, int) { return RGB(255, 0, 0); });
    const std::wstring green = files.Encode(L"green.bmp", kWidth, kHeight, [](int, int) { return RGB(0, 255, 0); });
    std::printf("\nCross-fade red to green, %dx%d pictures in a %dx%d host, %d fades\ngoal: at least 18 frames in 500 +- 50 ms\n"
                "Times from the OpenFile call: the paint that prepares the fade and starts its timer, the\n"
                "first and last fade frames drawn, and the end of the fade (its length).\n%-8s %7s %11s %13s %12s %12s\n",
                kWidth, kHeight, kHostWidth, kHostHeight, nFades, "fade", "frames", "prepared", "first frame", "last frame", "length");
    CPictureStage stage(kHostWidth, kHostHeight);
    CPaintWatch watch(stage.Viewer());
    std::vector<double> columns[5];
    for (int i = 1; i <= nFades; ++i)
    {
        HRESULT hr = stage.Open(red);
        CMessagePump::PumpFor(50);
        watch.Reset();
        const double dStart = Now();
        if (SUCCEEDED(hr))
            hr = stage.Viewer().OpenFile(green.c_str(), TESSALY_OPEN_FLAG_CROSSFADE, 0);
        if (FAILED(hr))
        {
            std::printf("%-8d OpenFile failed 0x%08lx\n", i, static_cast<unsigned long>(hr));
            continue;
        }
        UpdateWindow(stage.Viewer().PictureWindow());
        const bool bEnded = CMessagePump::PumpUntil([&] { return !stage.Viewer().Fading(); }, 5000);
        CMessagePump::PumpFor(50); // the paint that shows the new picture after the fade
        if (!bEnded || watch.dEnd < 0)
        {
            std::printf("%-8d %7d the fade had not ended after 5000 ms\n", i, watch.nFrames);
            continue;
        }
        const double row[5] = {static_cast<double>(watch.nFrames), watch.dPrepared < 0 ? -1.0 : watch.dPrepared - dStart,
                               watch.nFrames ? watch.dFirstFrame - dStart : -1.0, watch.nFrames ? watch.dLastFrame - dStart : -1.0, watch.dEnd - dStart};
        for (int c = 0; c < 5; ++c)
            columns[c].push_back(row[c]);
        std::printf("%-8d %7d %8.1f ms %10.1f ms %9.1f ms %9.1f ms\n", i, watch.nFrames, row[1], row[2], row[3], row[4]);
        std::fflush(stdout);
    }
    if (!columns[0].empty())
        std::printf("%-8s %7.0f %8.1f ms %10.1f ms %9.1f ms %9.1f ms\n%-8s %7d %11s %13s %12s %6.0f+-%.0f ms\n", "median", Median(columns[0]),
                    Median(columns[1]), Median(columns[2]), Median(columns[3]), Median(columns[4]), "goal", 18, "-", "-", "-", 500.0, 50.0);
}

} // namespace

int main(int argc, char** argv)
{
    // The files are encoded before any engine object starts GDI+: the program holds a start of its own.
    Gdiplus::GdiplusStartupInput input;
    ULONG_PTR ulToken = 0;
    if (Gdiplus::GdiplusStartup(&ulToken, &input, nullptr) != Gdiplus::Ok)
        return std::printf("GDI+ did not start\n"), 1;
    {
        CPictureFiles files;
        MeasureOpens(files, argc > 1 ? std::max(2, std::atoi(argv[1])) : 10);
        MeasureFades(files, argc > 2 ? std::max(1, std::atoi(argv[2])) : 5);
    }
    Gdiplus::GdiplusShutdown(ulToken);
    return 0;
}
