// Figures, not tests: for every format the picture back-end takes, how long it takes from
// OpenFile until the picture window has painted it (the first open of that format in the
// process and the median of the later ones), and how many frames the cross-fade really draws in
// how long. Nothing here fails on timing; the figures are for a person to read.
// Run under Wine: picture_benchmark.exe [opens per format] [fades]
#include <windows.h>

#include <gdiplus.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "CPictureFiles.h"
#include "CPictureStage.h"
#include "engine/TessalyContract.h"

namespace {

const int kHostWidth = 640;
const int kHostHeight = 480;
const int kPictureWidth = 320;
const int kPictureHeight = 240;
const int kIconSize = 64;
const DWORD kFadeTimeoutMs = 5000;
const int kGoalFrames = 18;
const double kGoalLengthMs = 500.0;
const double kGoalToleranceMs = 50.0;

double Milliseconds(const LARGE_INTEGER& from, const LARGE_INTEGER& to)
{
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return 1000.0 * static_cast<double>(to.QuadPart - from.QuadPart) / static_cast<double>(frequency.QuadPart);
}

LARGE_INTEGER Now()
{
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    return now;
}

double Median(std::vector<double> values)
{
    if (values.empty())
        return -1.0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// A gradient rather than one flat colour, so that the compressing encoders have real work and
// the decoders are not timed on a trivially small file.
COLORREF Gradient(int x, int y)
{
    return RGB(x * 255 / kPictureWidth, y * 255 / kPictureHeight, 128);
}

struct Format
{
    const char* pszName;
    std::function<std::wstring(const CPictureFiles&)> write;
};

std::vector<Format> Formats()
{
    auto encoded = [](const wchar_t* pwszName) {
        return [pwszName](const CPictureFiles& files) {
            return files.Encode(pwszName, kPictureWidth, kPictureHeight, Gradient);
        };
    };
    const COLORREF crFill = RGB(255, 160, 0);
    return {
        {"a.bmp", encoded(L"a.bmp")},
        {"a.dib", encoded(L"a.dib")},
        {"a.jpg", encoded(L"a.jpg")},
        {"a.jpeg", encoded(L"a.jpeg")},
        {"a.jpe", encoded(L"a.jpe")},
        {"a.jfif", encoded(L"a.jfif")},
        {"a.png", encoded(L"a.png")},
        {"a.tif", encoded(L"a.tif")},
        {"a.tiff", encoded(L"a.tiff")},
        {"a.ico", [crFill](const CPictureFiles& files) { return files.Icon(L"a.ico", kIconSize, crFill); }},
        {"a.wmf",
         [crFill](const CPictureFiles& files) {
             return files.WindowsMetafile(L"a.wmf", kPictureWidth, kPictureHeight, crFill);
         }},
        {"a.emf",
         [crFill](const CPictureFiles& files) {
             return files.EnhancedMetafile(L"a.emf", kPictureWidth, kPictureHeight, crFill);
         }},
    };
}

// Watches the picture window from outside the engine: its procedure is chained behind this one,
// so every paint the window really ran is counted, and the fade's frames are told apart from
// the paint that only prepares a fade (that one runs before the fade timer is on).
class CPaintWatch
{
public:
    explicit CPaintWatch(CPictViewerProbe& viewer) : m_viewer(viewer), m_hWnd(viewer.PictureWindow())
    {
        SetPropW(m_hWnd, kProperty, this);
        m_pfnChained = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(m_hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CPaintWatch::Proc)));
    }
    ~CPaintWatch()
    {
        if (IsWindow(m_hWnd))
        {
            SetWindowLongPtrW(m_hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(m_pfnChained));
            RemovePropW(m_hWnd, kProperty);
        }
    }
    CPaintWatch(const CPaintWatch&) = delete;
    CPaintWatch& operator=(const CPaintWatch&) = delete;

    void Reset()
    {
        nPaints = 0;
        nFadeFrames = 0;
        bFadePrepared = false;
        bFadeEnded = false;
    }

    int nPaints = 0;
    int nFadeFrames = 0;
    // The fade's clock starts when its first paint has prepared it, not at OpenFile.
    bool bFadePrepared = false;
    LARGE_INTEGER fadePrepared = {};
    LARGE_INTEGER firstFrame = {};
    LARGE_INTEGER lastFrame = {};
    bool bFadeEnded = false;
    LARGE_INTEGER fadeEnd = {};

private:
    static constexpr const wchar_t* kProperty = L"Tessaly.Benchmark.PaintWatch";

    static LRESULT CALLBACK Proc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
    {
        auto* pWatch = static_cast<CPaintWatch*>(GetPropW(hWnd, kProperty));
        if (!pWatch)
            return DefWindowProcW(hWnd, uMsg, wParam, lParam);
        return pWatch->OnMessage(hWnd, uMsg, wParam, lParam);
    }

    LRESULT OnMessage(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
    {
        const bool bWasFading = m_viewer.Fading();
        const bool bWasTimed = m_viewer.FadeTimerOn();
        const bool bFadeFrame = uMsg == WM_PAINT && bWasFading && bWasTimed;
        const LRESULT lResult = CallWindowProcW(m_pfnChained, hWnd, uMsg, wParam, lParam);
        // Taken after the window's own handling, so a frame counts once it is on the screen.
        const LARGE_INTEGER now = Now();
        if (uMsg == WM_PAINT)
            ++nPaints;
        if (bWasFading && !bWasTimed && m_viewer.FadeTimerOn())
        {
            bFadePrepared = true;
            fadePrepared = now;
        }
        if (bFadeFrame)
        {
            if (nFadeFrames++ == 0)
                firstFrame = now;
            lastFrame = now;
        }
        if (bWasFading && !m_viewer.Fading())
        {
            bFadeEnded = true;
            fadeEnd = now;
        }
        return lResult;
    }

    CPictViewerProbe& m_viewer;
    HWND m_hWnd;
    WNDPROC m_pfnChained = nullptr;
};

// The bare platform's share of an open: GDI+ loads the same file and draws it fitted and centred
// into a window of the picture window's size, with nothing of the engine around it. Milliseconds,
// or a negative value when GDI+ cannot load the file as one picture.
double BareLoadAndDraw(const std::wstring& path, HWND hWnd)
{
    RECT rc;
    GetClientRect(hWnd, &rc);
    const LARGE_INTEGER before = Now();
    Gdiplus::Image image(path.c_str());
    const UINT uWidth = image.GetWidth(), uHeight = image.GetHeight();
    if (image.GetLastStatus() != Gdiplus::Ok || !uWidth || !uHeight)
        return -1.0;
    const double dScale = std::min(static_cast<double>(rc.right) / uWidth, static_cast<double>(rc.bottom) / uHeight);
    const int nWidth = static_cast<int>(uWidth * dScale), nHeight = static_cast<int>(uHeight * dScale);
    HDC hdc = GetDC(hWnd);
    {
        Gdiplus::Graphics graphics(hdc);
        graphics.DrawImage(&image, (rc.right - nWidth) / 2, (rc.bottom - nHeight) / 2, nWidth, nHeight);
    }
    ReleaseDC(hWnd, hdc);
    GdiFlush();
    return Milliseconds(before, Now());
}

// One viewer per format, so the first open of every row lands on an empty viewer as a host's
// first picture does, and the later ones replace a picture shown, as in a slide show.
void MeasureOpens(const CPictureFiles& files, int nOpens)
{
    std::printf("Open to first paint, %dx%d pictures (icon %d) in a %dx%d host, %d opens per format\n",
                kPictureWidth, kPictureHeight, kIconSize, kHostWidth, kHostHeight, nOpens);
    std::printf("The bare column loads and draws the same file with GDI+ alone, fitted into a window of the\n"
                "same size; the ratio is the engine's median open over the bare median.\n");
    std::printf("%-8s %9s %9s %11s %13s %8s %12s %6s\n", "file", "bytes", "size", "first open", "median open", "painted",
                "bare median", "ratio");
    std::vector<std::pair<const char*, std::wstring>> paths;
    // Every fixture is written before any is opened, so no row is timed with codecs the rows
    // before it had not loaded yet, other than by the opens themselves.
    for (const Format& format : Formats())
        paths.emplace_back(format.pszName, format.write(files));
    for (const auto& entry : paths)
    {
        const char* pszName = entry.first;
        const std::wstring& path = entry.second;
        if (path.empty())
        {
            std::printf("%-8s no encoder for this format on this platform\n", pszName);
            continue;
        }
        const size_t nBytes = CPictureFiles::Read(path).size();
        CPictureStage stage(kHostWidth, kHostHeight);
        CPaintWatch watch(stage.Viewer());
        std::vector<double> opens;
        HRESULT hrFailed = S_OK;
        int nPainted = 0;
        for (int i = 0; i < nOpens; ++i)
        {
            watch.Reset();
            const LARGE_INTEGER before = Now();
            const HRESULT hr = stage.Viewer().OpenFile(path.c_str(), 0, 0);
            // Sent, not posted: when it returns, the paint has composed and copied the picture.
            UpdateWindow(stage.Viewer().PictureWindow());
            const LARGE_INTEGER after = Now();
            stage.PumpFor(0);
            if (FAILED(hr))
            {
                hrFailed = hr;
                break;
            }
            opens.push_back(Milliseconds(before, after));
            nPainted += watch.nPaints > 0;
        }
        if (FAILED(hrFailed))
        {
            std::printf("%-8s %9lu %9s OpenFile failed 0x%08lx\n", pszName, static_cast<unsigned long>(nBytes), "-",
                        static_cast<unsigned long>(hrFailed));
            std::fflush(stdout);
            continue;
        }
        DWORD dwWidth = 0, dwHeight = 0;
        stage.Viewer().GetFileInfo(nullptr, nullptr, nullptr, &dwWidth, &dwHeight, nullptr);
        char szSize[32];
        std::snprintf(szSize, sizeof(szSize), "%lux%lu", static_cast<unsigned long>(dwWidth),
                      static_cast<unsigned long>(dwHeight));
        char szPainted[32];
        std::snprintf(szPainted, sizeof(szPainted), "%d/%d", nPainted, nOpens);
        const double dFirst = opens.front();
        opens.erase(opens.begin());
        std::vector<double> bare;
        for (int i = 0; i < nOpens; ++i)
        {
            const double dBare = BareLoadAndDraw(path, stage.Viewer().PictureWindow());
            if (dBare < 0)
                break;
            bare.push_back(dBare);
        }
        // As for the engine, the first load warms the codec and is left out of the median.
        if (!bare.empty())
            bare.erase(bare.begin());
        const double dOpen = Median(opens), dBare = Median(bare);
        if (dBare > 0)
            std::printf("%-8s %9lu %9s %8.1f ms %10.1f ms %8s %9.1f ms %6.2f\n", pszName,
                        static_cast<unsigned long>(nBytes), szSize, dFirst, dOpen, szPainted, dBare, dOpen / dBare);
        else
            std::printf("%-8s %9lu %9s %8.1f ms %10.1f ms %8s %12s %6s\n", pszName, static_cast<unsigned long>(nBytes),
                        szSize, dFirst, dOpen, szPainted, "not one", "-");
        std::fflush(stdout);
    }
}

void MeasureFades(const CPictureFiles& files, int nFades)
{
    auto plain = [&files](const wchar_t* pwszName, COLORREF cr) {
        return files.Encode(pwszName, kPictureWidth, kPictureHeight, [cr](int, int) { return cr; });
    };
    const std::wstring red = plain(L"red.bmp", RGB(255, 0, 0));
    const std::wstring green = plain(L"green.bmp", RGB(0, 255, 0));
    std::printf("\nCross-fade red to green, %dx%d pictures in a %dx%d host, %d fades\n", kPictureWidth,
                kPictureHeight, kHostWidth, kHostHeight, nFades);
    std::printf("goal: at least %d frames in %.0f +- %.0f ms\n", kGoalFrames, kGoalLengthMs, kGoalToleranceMs);
    std::printf("Times from the OpenFile call: the paint that prepares the fade and starts its timer, the\n"
                "first and last fade frames drawn, and the end of the fade (its length).\n");
    std::printf("%-8s %7s %11s %13s %12s %12s\n", "fade", "frames", "prepared", "first frame", "last frame",
                "length");

    CPictureStage stage(kHostWidth, kHostHeight);
    CPaintWatch watch(stage.Viewer());
    std::vector<double> frames, prepareds, firsts, lasts, lengths;
    for (int i = 0; i < nFades; ++i)
    {
        const HRESULT hrRed = stage.Open(red);
        stage.PumpFor(50);
        if (FAILED(hrRed))
        {
            std::printf("%-8d red picture failed to open 0x%08lx\n", i + 1, static_cast<unsigned long>(hrRed));
            continue;
        }
        watch.Reset();
        const LARGE_INTEGER start = Now();
        const HRESULT hr = stage.Viewer().OpenFile(green.c_str(), TESSALY_OPEN_FLAG_CROSSFADE, 0);
        UpdateWindow(stage.Viewer().PictureWindow());
        if (FAILED(hr))
        {
            std::printf("%-8d OpenFile failed 0x%08lx\n", i + 1, static_cast<unsigned long>(hr));
            continue;
        }
        const bool bEnded = stage.PumpUntil([&] { return !stage.Viewer().Fading(); }, kFadeTimeoutMs);
        // The paint that shows the new picture composed after the fade.
        stage.PumpFor(50);
        if (!bEnded || !watch.bFadeEnded)
        {
            std::printf("%-8d %7d the fade had not ended after %lu ms\n", i + 1, watch.nFadeFrames,
                        static_cast<unsigned long>(kFadeTimeoutMs));
            continue;
        }
        const double dLength = Milliseconds(start, watch.fadeEnd);
        const double dPrepared = watch.bFadePrepared ? Milliseconds(start, watch.fadePrepared) : -1.0;
        const double dFirst = watch.nFadeFrames ? Milliseconds(start, watch.firstFrame) : -1.0;
        const double dLast = watch.nFadeFrames ? Milliseconds(start, watch.lastFrame) : -1.0;
        frames.push_back(watch.nFadeFrames);
        prepareds.push_back(dPrepared);
        firsts.push_back(dFirst);
        lasts.push_back(dLast);
        lengths.push_back(dLength);
        std::printf("%-8d %7d %8.1f ms %10.1f ms %9.1f ms %9.1f ms\n", i + 1, watch.nFadeFrames, dPrepared, dFirst,
                    dLast, dLength);
        std::fflush(stdout);
    }
    if (frames.empty())
        return;
    std::printf("%-8s %7.0f %8.1f ms %10.1f ms %9.1f ms %9.1f ms\n", "median", Median(frames), Median(prepareds),
                Median(firsts), Median(lasts), Median(lengths));
    std::printf("%-8s %7d %11s %13s %12s %6.0f+-%.0f ms\n", "goal", kGoalFrames, "-", "-", "-", kGoalLengthMs,
                kGoalToleranceMs);
}

} // namespace

int main(int argc, char** argv)
{
    const int nOpens = argc > 1 ? std::max(2, std::atoi(argv[1])) : 10;
    const int nFades = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;

    // The engine starts GDI+ for its own objects; the fixtures are encoded before any of those
    // exist, so the program holds a start-up of its own around everything that uses GDI+.
    Gdiplus::GdiplusStartupInput input;
    ULONG_PTR ulToken = 0;
    if (Gdiplus::GdiplusStartup(&ulToken, &input, nullptr) != Gdiplus::Ok)
    {
        std::printf("GDI+ did not start\n");
        return 1;
    }
    {
        CPictureFiles files;
        MeasureOpens(files, nOpens);
        MeasureFades(files, nFades);
    }
    Gdiplus::GdiplusShutdown(ulToken);
    return 0;
}
