// The panel's layout at several sizes, what the window paints in each mode (gradient, cover art,
// text in the host's colour and fonts, black), when it asks to be painted, and the GDI objects
// it gives back.
#include "CGdiObjectCount.h"
#include "InfoWndTest.h"

namespace {

using InfoWndPanel = InfoWndTest;

// The panel as it must look: the gradient, the record's text in "times" of the given heights
// (title, channel, description), each field clipped to its box.
CWindowPixels ReferencePanel(const CInfoWndProbe& info, const TESSALY_MEDIA_INFO& record, COLORREF crTop,
                             COLORREF crBottom, COLORREF crText, const LONG (&heights)[3])
{
    return CWindowPixels(640, 480, [&](HDC hdc) {
        auto rgb = [](COLORREF cr, int nShift) { return static_cast<COLOR16>(((cr >> nShift) & 0xFF) << 8); };
        TRIVERTEX vertices[2] = {{0, 0, rgb(crTop, 0), rgb(crTop, 8), rgb(crTop, 16), 0},
                                 {640, 480, rgb(crBottom, 0), rgb(crBottom, 8), rgb(crBottom, 16), 0}};
        GRADIENT_RECT gradientRect = {0, 1};
        GradientFill(hdc, vertices, 2, &gradientRect, 1, GRADIENT_FILL_RECT_V);
        SetBkMode(hdc, TRANSPARENT);
        SetTextColor(hdc, crText);
        auto draw = [&](const short* pField, RECT rc, LONG nHeight, LONG nWeight, UINT uFormat) {
            const LOGFONTW lf = Font(L"times", nHeight, nWeight);
            HGDIOBJ hOld = SelectObject(hdc, CreateFontIndirectW(&lf));
            IntersectClipRect(hdc, rc.left, rc.top, rc.right, rc.bottom);
            DrawTextW(hdc, reinterpret_cast<LPCWSTR>(pField), -1, &rc, uFormat | DT_CENTER);
            SelectClipRgn(hdc, nullptr);
            DeleteObject(SelectObject(hdc, hOld));
        };
        draw(record.wszChannelName, info.m_rcChannel, heights[1], FW_SEMIBOLD, DT_VCENTER | DT_SINGLELINE);
        draw(record.wszTitle, info.m_rcTitle, heights[0], FW_NORMAL, DT_VCENTER | DT_WORDBREAK);
        draw(record.wszReleaseDate, info.m_rcReleaseDate, heights[0], FW_NORMAL, DT_VCENTER | DT_SINGLELINE);
        draw(record.wszDescript, info.m_rcDescript, heights[2], FW_NORMAL, DT_WORDBREAK | DT_EDITCONTROL);
    });
}

// The proportions are single-precision constants: 500 × 0.04f is just under 20, and 800 × 0.04f,
// 800 × 0.225f, 600 × 0.255f and 600 × 0.2f all land just under whole numbers. An empty size
// keeps the last layout.
TEST_F(InfoWndPanel, BoxesTruncateTheSinglePrecisionProportionsAndAnEmptySizeKeepsThem)
{
    const std::vector<LONG> k640x480 = {25, 19, 168, 141, 183, 19, 615, 50, 183, 50, 615, 110,
                                        183, 110, 615, 141, 25, 160, 615, 461, 0, 383, 640, 480};
    const std::vector<LONG> k640x500 = {25, 19, 168, 146, 183, 19, 615, 51, 183, 51, 615, 113,
                                        183, 113, 615, 146, 25, 165, 615, 481, 0, 399, 640, 500};
    const std::vector<LONG> k800x600 = {31, 23, 210, 175, 229, 23, 769, 62, 229, 62, 769, 138,
                                        229, 138, 769, 175, 31, 198, 769, 577, 0, 479, 800, 600};
    const std::tuple<int, int, std::vector<LONG>> kSizes[] = {
        {640, 480, k640x480}, {640, 500, k640x500}, {800, 600, k800x600}, {0, 600, k800x600}, {800, 0, k800x600}};
    for (const auto& [nWidth, nHeight, expected] : kSizes)
    {
        Resize(nWidth, nHeight);
        std::vector<LONG> boxes; // cover art, channel, title, release date, description, caption
        for (const RECT& rc : {info->m_rcCoverArt, info->m_rcChannel, info->m_rcTitle, info->m_rcReleaseDate, info->m_rcDescript, info->m_rcCaption})
            boxes.insert(boxes.end(), {rc.left, rc.top, rc.right, rc.bottom});
        EXPECT_EQ(expected, boxes) << nWidth << " x " << nHeight;
    }
}

TEST_F(InfoWndPanel, PanelIsTheHostsGradientAndTextColourInFontsScaledToTheBoxesAndNullRestoresTheDefaultSizes)
{
    FillSampleRecord();
    info->SetTextColor(RGB(255, 255, 0), FALSE);
    ShowPanelOn(RGB(200, 30, 10), RGB(20, 140, 250));
    EXPECT_EQ(0, Grab().CountDifferent(ReferencePanel(*info, record, RGB(200, 30, 10), RGB(20, 140, 250), RGB(255, 255, 0), {-24, -24, -23}), CLIENT));
    const LOGFONTW lf = Font(L"courier", -30);
    EXPECT_EQ(S_OK, info->SetFont(&lf, TRUE));
    EXPECT_TRUE(NeedsPaint());
    ValidateRect(hWnd, nullptr);
    EXPECT_EQ(S_OK, info->SetFont(nullptr, TRUE)); // the default fonts, and the window left as painted
    EXPECT_FALSE(NeedsPaint());
    Paint();
    HDC hdc = GetDC(hWnd);
    const int nDpi = GetDeviceCaps(hdc, LOGPIXELSY);
    ReleaseDC(hWnd, hdc);
    const LONG defaults[3] = {-MulDiv(12, nDpi, 72), -MulDiv(14, nDpi, 72), -MulDiv(10, nDpi, 72)};
    EXPECT_EQ(0, Grab().CountDifferent(ReferencePanel(*info, record, RGB(200, 30, 10), RGB(20, 140, 250), RGB(255, 255, 0), defaults), CLIENT));
}

TEST_F(InfoWndPanel, CoverArtFillsItsBoxAlongTheLongerSideCentredAndALaterOneReusesTheBitmap)
{
    // A wide picture takes the box's width (143 × 0.5 = 71 high, 25 down); a tall one its height
    // (122 ÷ 4 = 30 wide, 56 across).
    const std::pair<SIZE, RECT> kPictures[] = {{{200, 100}, {25, 44, 168, 115}}, {{50, 200}, {81, 19, 111, 141}}};
    for (const auto& [size, rc] : kPictures)
    {
        info->ClearMediaInfo();
        ASSERT_TRUE(info->LoadCoverArt(files.Encode(L"art.bmp", size.cx, size.cy, [](int, int) { return RED; }).c_str()));
        ShowPanelOn(NAVY);
        const CWindowPixels pixels = Grab();
        EXPECT_EQ(0, pixels.CountOther(rc, RED)) << size.cx << " x " << size.cy;
        EXPECT_EQ((rc.right - rc.left) * (rc.bottom - rc.top), pixels.CountOther({24, 18, 169, 142}, NAVY)) << "nothing else";
    }
    // A later picture is drawn into the first one's 40 × 80 bitmap: only that corner of it shows.
    info->ClearMediaInfo();
    ASSERT_TRUE(info->LoadCoverArt(files.Encode(L"small.bmp", 40, 80, [](int, int) { return RED; }).c_str()));
    ASSERT_TRUE(info->LoadCoverArt(files.Encode(L"large.bmp", 200, 100, [](int, int) { return BLUE; }).c_str()));
    Paint();
    const CWindowPixels pixels = Grab();
    EXPECT_EQ(0, pixels.CountOther({25, 44, 45, 90}, BLUE));
    EXPECT_EQ(143 * 71, pixels.CountOther({25, 44, 168, 115}, RED));
    EXPECT_EQ(68 * 71, pixels.CountOther({100, 44, 168, 115}, BLUE));
    info->ClearMediaInfo();
    Paint();
    EXPECT_EQ(0, Grab().CountOther(CLIENT, NAVY));
}

TEST_F(InfoWndPanel, BlackUnlessShownInAPanelOrCaptionModeWhoseStripIsTheBottomFifth)
{
    FillSampleRecord();
    ASSERT_TRUE(info->LoadCoverArt(files.Encode(L"art.bmp", 60, 60, [](int, int) { return RED; }).c_str()));
    const std::pair<DWORD, BOOL> kBlack[] = {{INFO_MODE_NONE, TRUE}, {INFO_MODE_MEDIA, FALSE}, {INFO_MODE_CAPTION, FALSE}, {3, FALSE}};
    for (const auto& [dwMode, bShow] : kBlack) // 3 is no mode and changes nothing
    {
        EXPECT_EQ(dwMode == 3 ? E_INVALIDARG : S_OK, info->SetDisplayMode(dwMode, TRUE));
        info->ShowMediaInfo(bShow);
        Paint();
        EXPECT_EQ(0, Grab().CountOther(CLIENT, BLACK)) << "mode " << dwMode << " shown " << bShow;
    }
    SetField(record.wszDescript, L"");
    info->SetGradientBkColor(NAVY, NAVY, FALSE);
    info->ShowMediaInfo(TRUE);
    EXPECT_EQ(E_INVALIDARG, info->SetDisplayMode(3, TRUE));
    Paint();
    const CWindowPixels pixels = Grab();
    EXPECT_EQ(0, pixels.CountOther({0, 0, 640, 383}, BLACK));
    EXPECT_EQ(0, pixels.CountOther({0, 383, 640, 480}, NAVY));
}

TEST_F(InfoWndPanel, OnlyChangedColoursInvalidateAndOnlyWhenForced)
{
    ShowPanelOn(NAVY);
    info->SetTextColor(RGB(255, 255, 0), FALSE);
    ValidateRect(hWnd, nullptr);
    info->SetGradientBkColor(NAVY, NAVY, TRUE);
    info->SetTextColor(RGB(255, 255, 0), TRUE);
    EXPECT_FALSE(NeedsPaint());
    info->SetGradientBkColor(RED, RED, FALSE); // the window keeps what it shows until its next paint
    EXPECT_FALSE(NeedsPaint());
    EXPECT_EQ(0, Grab().CountOther(CLIENT, NAVY));
    Paint();
    EXPECT_EQ(0, Grab().CountOther(CLIENT, RED));
    info->SetGradientBkColor(BLUE, RED, TRUE);
    EXPECT_TRUE(NeedsPaint());
    ValidateRect(hWnd, nullptr);
    info->SetTextColor(RGB(0, 255, 0), TRUE);
    EXPECT_TRUE(NeedsPaint());
}

TEST_F(InfoWndPanel, AWindowLifeLeavesNoGdiObjectBehindAndTheObjectTakesItsWindowAlong)
{
    const std::wstring cover = files.Encode(L"art.bmp", 120, 90, [](int, int) { return RED; });
    FillSampleRecord();
    const LOGFONTW lf = Font(L"arial", -18);
    auto life = [&] {
        CreateWindows();
        info->LoadCoverArt(cover.c_str());
        info->LoadCoverArt(cover.c_str()); // into the same bitmap
        ShowPanelOn(RGB(1, 2, 3));
        info->SetFont(&lf, TRUE);
        Resize(500, 400);
        Paint();
        SendMessageW(hWnd, WM_LBUTTONDOWN, 0, MAKELPARAM(250, 300)); // scrolls: it overflows
        SendMessageW(hWnd, WM_TIMER, CInfoWnd::SCROLL_TIMER_ID, 0);
        info->SetDisplayMode(INFO_MODE_CAPTION, TRUE);
        Paint();
        info->SetFont(nullptr, FALSE);
        info->ClearMediaInfo();
        const HWND hWndInfo = hWnd;
        DestroyWindows();
        EXPECT_FALSE(IsWindow(hWndInfo));
    };
    DestroyWindows();
    life(); // the platform's own first-use objects (caches, stock objects) appear here
    const int nBefore = LiveGdiObjects();
    ASSERT_GT(nBefore, 0);
    for (int i = 0; i < 3; ++i)
        life();
    EXPECT_EQ(nBefore, LiveGdiObjects());
}

} // namespace
