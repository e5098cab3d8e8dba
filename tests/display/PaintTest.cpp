// What the window paints in each mode: gradient, cover art, text in the host's fonts, black.
#include <windows.h>

#include <gdiplus.h>

#include "CTestPicture.h"
#include "InfoWndTest.h"

using namespace Gdiplus::DllExports;

namespace {

const COLORREF BLACK = RGB(0, 0, 0);
const COLORREF NAVY = RGB(0, 0, 0x60);
const COLORREF RED = RGB(220, 30, 30);
const COLORREF BLUE = RGB(30, 60, 230);
const RECT CLIENT = {0, 0, 640, 480};

void Gradient(HDC hdc, const RECT& rc, COLORREF crTop, COLORREF crBottom)
{
    TRIVERTEX vertices[2] = {
        {rc.left, rc.top, static_cast<COLOR16>(GetRValue(crTop) << 8), static_cast<COLOR16>(GetGValue(crTop) << 8),
         static_cast<COLOR16>(GetBValue(crTop) << 8), 0},
        {rc.right, rc.bottom, static_cast<COLOR16>(GetRValue(crBottom) << 8),
         static_cast<COLOR16>(GetGValue(crBottom) << 8), static_cast<COLOR16>(GetBValue(crBottom) << 8), 0}};
    GRADIENT_RECT gradientRect = {0, 1};
    GradientFill(hdc, vertices, 2, &gradientRect, 1, GRADIENT_FILL_RECT_V);
}

struct FontHeights
{
    LONG nTitle, nChannel, nDescript;
};

void DrawReferenceText(HDC hdc, const FontHeights& heights, LONG nWeight, LPCWSTR pwszText, RECT rc,
                       UINT uFormat)
{
    LOGFONTW lf = {};
    lf.lfCharSet = DEFAULT_CHARSET;
    lstrcpyW(lf.lfFaceName, L"times");
    lf.lfWeight = nWeight;
    lf.lfHeight = uFormat & DT_EDITCONTROL ? heights.nDescript
                  : nWeight == FW_SEMIBOLD  ? heights.nChannel
                                            : heights.nTitle;
    HFONT hFont = CreateFontIndirectW(&lf);
    HGDIOBJ hOld = SelectObject(hdc, hFont);
    HRGN hrgn = CreateRectRgnIndirect(&rc);
    SelectClipRgn(hdc, hrgn);
    DrawTextW(hdc, pwszText, -1, &rc, uFormat);
    SelectClipRgn(hdc, nullptr);
    DeleteObject(hrgn);
    SelectObject(hdc, hOld);
    DeleteObject(hFont);
}

// The panel as it must look: the default gradient, white text of the record in "times".
CWindowPixels ReferencePanel(const CInfoWndProbe& info, const TESSALY_MEDIA_INFO& record,
                             const FontHeights& heights)
{
    auto text = [](const short* pField) { return reinterpret_cast<LPCWSTR>(pField); };
    return CWindowPixels(640, 480, [&](HDC hdc) {
        Gradient(hdc, CLIENT, RGB(0, 0, 0x66), RGB(0, 0, 0xFF));
        SetBkMode(hdc, TRANSPARENT);
        SetTextColor(hdc, RGB(255, 255, 255));
        DrawReferenceText(hdc, heights, FW_SEMIBOLD, text(record.wszChannelName), info.ChannelBox(),
                          DT_CENTER | DT_VCENTER | DT_SINGLELINE);
        DrawReferenceText(hdc, heights, FW_NORMAL, text(record.wszTitle), info.TitleBox(),
                          DT_CENTER | DT_VCENTER | DT_WORDBREAK);
        DrawReferenceText(hdc, heights, FW_NORMAL, text(record.wszReleaseDate), info.ReleaseDateBox(),
                          DT_CENTER | DT_VCENTER | DT_SINGLELINE);
        DrawReferenceText(hdc, heights, FW_NORMAL, text(record.wszDescript), info.DescriptBox(),
                          DT_CENTER | DT_WORDBREAK | DT_EDITCONTROL);
    });
}

using InfoWndPaint = InfoWndTest;

TEST_F(InfoWndPaint, GradientRunsFromTheHostsTopColourToItsBottomColour)
{
    const COLORREF crTop = RGB(200, 30, 10);
    const COLORREF crBottom = RGB(20, 140, 250);
    info->SetGradientBkColor(crTop, crBottom, TRUE);
    info->SetDisplayMode(INFO_MODE_MEDIA, TRUE);
    info->ShowMediaInfo(TRUE);
    Paint();
    const CWindowPixels pixels = Grab();
    EXPECT_EQ(0, pixels.CountOther({0, 0, 640, 1}, crTop));
    // The last row is one step short of the bottom colour, as the platform's fill makes it.
    const COLORREF crLast = pixels.At(0, 479);
    EXPECT_EQ(0, pixels.CountOther({0, 479, 640, 480}, crLast));
    EXPECT_LE(abs(GetRValue(crLast) - GetRValue(crBottom)), 1);
    EXPECT_LE(abs(GetGValue(crLast) - GetGValue(crBottom)), 1);
    EXPECT_LE(abs(GetBValue(crLast) - GetBValue(crBottom)), 1);
    const CWindowPixels reference(640, 480, [&](HDC hdc) { Gradient(hdc, CLIENT, crTop, crBottom); });
    EXPECT_EQ(0, pixels.CountDifferent(reference, CLIENT));
}

TEST_F(InfoWndPaint, TextUsesTheBoxesAndTheFontsScaledToThem)
{
    FillSampleRecord();
    info->SetDisplayMode(INFO_MODE_MEDIA, TRUE);
    info->ShowMediaInfo(TRUE);
    Paint();
    EXPECT_EQ(0, Grab().CountDifferent(ReferencePanel(*info, record, {-24, -24, -23}), CLIENT));
}

TEST_F(InfoWndPaint, NullFontRestoresTheDefaultPointSizesWithoutRepainting)
{
    FillSampleRecord();
    info->SetDisplayMode(INFO_MODE_MEDIA, TRUE);
    info->ShowMediaInfo(TRUE);
    LOGFONTW lf = {};
    lstrcpyW(lf.lfFaceName, L"courier");
    lf.lfHeight = -30;
    EXPECT_EQ(S_OK, info->SetFont(&lf, TRUE));
    EXPECT_TRUE(NeedsPaint());
    ValidateRect(hWnd, nullptr);

    EXPECT_EQ(S_OK, info->SetFont(nullptr, TRUE));
    EXPECT_FALSE(NeedsPaint());
    Paint();
    HDC hdc = GetDC(hWnd);
    const int nDpi = GetDeviceCaps(hdc, LOGPIXELSY);
    ReleaseDC(hWnd, hdc);
    const FontHeights defaults = {-MulDiv(12, nDpi, 72), -MulDiv(14, nDpi, 72), -MulDiv(10, nDpi, 72)};
    EXPECT_EQ(0, Grab().CountDifferent(ReferencePanel(*info, record, defaults), CLIENT));
}

TEST_F(InfoWndPaint, CoverArtFillsTheBoxAlongItsLongerSideAndIsCentredAcross)
{
    struct Case
    {
        int nWidth, nHeight;
        RECT rcExpected;
    };
    // A wide picture takes the box's width (143 × 0.5 = 71 high, 25 down); a tall one its
    // height (122 ÷ 4 = 30 wide, 56 across).
    for (const Case& c : {Case{200, 100, {25, 44, 168, 115}}, Case{50, 200, {81, 19, 111, 141}}})
    {
        const CTestPicture picture(c.nWidth, c.nHeight, RED);
        info->ClearMediaInfo();
        ASSERT_TRUE(info->LoadCoverArt(picture.Path()));
        ShowPanelOn(NAVY);
        const CWindowPixels pixels = Grab();
        EXPECT_EQ(0, pixels.CountOther(c.rcExpected, RED)) << c.nWidth << "x" << c.nHeight;
        // Nothing else in the box or around it.
        const int nArea = (c.rcExpected.right - c.rcExpected.left) * (c.rcExpected.bottom - c.rcExpected.top);
        EXPECT_EQ(nArea, pixels.CountOther({24, 18, 169, 142}, NAVY));
    }
}

TEST_F(InfoWndPaint, ALaterPictureIsDrawnIntoTheFirstPicturesBitmap)
{
    const CTestPicture small(40, 80, RED);
    const CTestPicture large(200, 100, BLUE);
    ASSERT_TRUE(info->LoadCoverArt(small.Path()));
    ASSERT_TRUE(info->LoadCoverArt(large.Path()));
    ShowPanelOn(NAVY);
    const CWindowPixels pixels = Grab();
    // Only the 40 × 80 corner that the old bitmap holds can show: the top left of the
    // picture's place (25, 44)-(168, 115) is blue, its right half never is.
    EXPECT_EQ(0, pixels.CountOther({25, 44, 45, 90}, BLUE));
    EXPECT_EQ(143 * 71, pixels.CountOther({25, 44, 168, 115}, RED)); // nothing of the first picture
    int nBlue = 0;
    for (int y = 44; y < 115; ++y)
        for (int x = 100; x < 168; ++x)
            nBlue += pixels.At(x, y) == BLUE;
    EXPECT_EQ(0, nBlue);

    info->ClearMediaInfo();
    Paint();
    EXPECT_EQ(0, Grab().CountOther(CLIENT, NAVY));
}

TEST_F(InfoWndPaint, BlackUnlessShownInAPanelOrCaptionMode)
{
    FillSampleRecord();
    const CTestPicture picture(60, 60, RED);
    info->LoadCoverArt(picture.Path());
    struct Case
    {
        DWORD dwMode;
        BOOL bShow;
    };
    for (const Case& c : {Case{INFO_MODE_NONE, TRUE}, Case{INFO_MODE_MEDIA, FALSE}, Case{INFO_MODE_CAPTION, FALSE}})
    {
        info->SetDisplayMode(c.dwMode, TRUE);
        info->ShowMediaInfo(c.bShow);
        Paint();
        EXPECT_EQ(0, Grab().CountOther(CLIENT, BLACK)) << "mode " << c.dwMode << " shown " << c.bShow;
    }
}

TEST_F(InfoWndPaint, AnUnknownModeFailsAndKeepsThePanel)
{
    ShowPanelOn(NAVY);
    EXPECT_EQ(E_INVALIDARG, info->SetDisplayMode(3, TRUE));
    Paint();
    EXPECT_EQ(0, Grab().CountOther(CLIENT, NAVY));
}

TEST_F(InfoWndPaint, OnlyChangedColoursInvalidateAndOnlyWhenForced)
{
    ShowPanelOn(NAVY);
    info->SetTextColor(RGB(255, 255, 0), FALSE);
    ValidateRect(hWnd, nullptr);
    info->SetGradientBkColor(NAVY, NAVY, TRUE);
    info->SetTextColor(RGB(255, 255, 0), TRUE);
    EXPECT_FALSE(NeedsPaint());

    // Unforced: the window keeps what it shows until its next paint.
    info->SetGradientBkColor(RED, RED, FALSE);
    EXPECT_FALSE(NeedsPaint());
    EXPECT_EQ(0, Grab().CountOther(CLIENT, NAVY));
    Paint();
    EXPECT_EQ(0, Grab().CountOther(CLIENT, RED));

    info->SetGradientBkColor(BLUE, BLUE, TRUE);
    EXPECT_TRUE(NeedsPaint());
    ValidateRect(hWnd, nullptr);
    info->SetTextColor(RGB(0, 255, 0), TRUE);
    EXPECT_TRUE(NeedsPaint());

    COLORREF crTop = 0, crBottom = 0, crText = 0;
    info->GetGradientBkColor(&crTop, &crBottom);
    info->GetTextColor(&crText);
    EXPECT_EQ(BLUE, crTop);
    EXPECT_EQ(BLUE, crBottom);
    EXPECT_EQ(RGB(0, 255, 0), crText);
}

// Leaves a picture of the panel in the build tree for a person to look at.
TEST_F(InfoWndPaint, SnapshotOfTheSamplePanelIsWrittenAsPng)
{
    FillSampleRecord();
    const CTestPicture cover(300, 300, [](int x, int y) {
        const int dx = x - 150, dy = y - 150;
        const int r2 = dx * dx + dy * dy;
        return r2 < 20 * 20 ? RGB(240, 240, 240) : r2 < 140 * 140 ? RGB(30 + y / 3, 30, 60 + x / 3) : RGB(250, 200, 40);
    });
    ASSERT_TRUE(info->LoadCoverArt(cover.Path()));
    info->SetDisplayMode(INFO_MODE_MEDIA, TRUE);
    info->ShowMediaInfo(TRUE);
    Paint();
    const CWindowPixels pixels = Grab();
    ASSERT_TRUE(pixels.SavePng(TESSALY_PANEL_PNG));

    // The file decodes back to what the window showed; the square cover stands centred in
    // its box, (35, 19)-(157, 141), with the white disc in the middle.
    EXPECT_EQ(RGB(240, 240, 240), pixels.At(96, 80));
    Gdiplus::GpBitmap* pPng = nullptr;
    ASSERT_EQ(Gdiplus::Ok, GdipCreateBitmapFromFile(TESSALY_PANEL_PNG, &pPng));
    UINT nWidth = 0, nHeight = 0;
    GdipGetImageWidth(pPng, &nWidth);
    GdipGetImageHeight(pPng, &nHeight);
    int nDifferent = 0;
    for (int y = 0; y < 480; y += 3)
    {
        for (int x = 0; x < 640; x += 3)
        {
            Gdiplus::ARGB argb = 0;
            GdipBitmapGetPixel(pPng, x, y, &argb);
            nDifferent += RGB((argb >> 16) & 0xFF, (argb >> 8) & 0xFF, argb & 0xFF) != pixels.At(x, y);
        }
    }
    GdipDisposeImage(pPng);
    EXPECT_EQ(640u, nWidth);
    EXPECT_EQ(480u, nHeight);
    EXPECT_EQ(0, nDifferent);
}

} // namespace
