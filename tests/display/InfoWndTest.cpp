#include "InfoWndTest.h"

namespace {

const WCHAR HOST_CLASS[] = L"InfoWndTest.Host";

} // namespace

LRESULT CALLBACK InfoWndTest::HostProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    auto* pTest = reinterpret_cast<InfoWndTest*>(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    const bool bInput = (uMsg >= WM_KEYFIRST && uMsg <= WM_KEYLAST) || (uMsg >= WM_MOUSEFIRST && uMsg <= WM_MOUSELAST);
    if (pTest && bInput)
        pTest->hostMessages.push_back({hWnd, uMsg, wParam, lParam, 0, {0, 0}});
    return DefWindowProcW(hWnd, uMsg, wParam, lParam);
}

void InfoWndTest::CreateWindows(int nWidth, int nHeight)
{
    WNDCLASSW wc = {};
    wc.lpfnWndProc = HostProc;
    wc.hInstance = GetModuleHandleW(nullptr);
    wc.lpszClassName = HOST_CLASS;
    RegisterClassW(&wc);
    hWndHost = CreateWindowExW(0, HOST_CLASS, L"host", WS_POPUP | WS_CLIPCHILDREN, 0, 0,
                               nWidth, nHeight, nullptr, nullptr, wc.hInstance, nullptr);
    ASSERT_NE(nullptr, hWndHost);
    SetWindowLongPtrW(hWndHost, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    // Never activated, Wine does not hand the window to a window manager, whose absence
    // would cost two seconds at every destruction.
    ShowWindow(hWndHost, SW_SHOWNOACTIVATE);

    // As the Play object makes it: a hidden child with the default rectangle, then moved.
    info.reset(new CInfoWndProbe);
    info->SetMediaInfoRecord(&record);
    hWnd = info->Create(hWndHost, CWindowBase::rcDefault, nullptr,
                        WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN, 0);
    ASSERT_NE(nullptr, hWnd);
    ASSERT_EQ(hWnd, info->GetHandle());
    MoveWindow(hWnd, 0, 0, nWidth, nHeight, TRUE);
    ShowWindow(hWnd, SW_SHOWNA);
    UpdateWindow(hWnd);
}

void InfoWndTest::DestroyWindows()
{
    if (info && info->IsWindow())
        info->DestroyWindow();
    info.reset();
    if (hWndHost)
        DestroyWindow(hWndHost);
    hWndHost = hWnd = nullptr;
}

void InfoWndTest::TearDown()
{
    DestroyWindows();
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
        DispatchMessageW(&msg);
}

void InfoWndTest::Resize(int nWidth, int nHeight)
{
    SetWindowPos(hWndHost, nullptr, 0, 0, nWidth, nHeight, SWP_NOZORDER | SWP_NOACTIVATE);
    MoveWindow(hWnd, 0, 0, nWidth, nHeight, TRUE);
}

void InfoWndTest::Paint()
{
    RedrawWindow(hWnd, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
}

void InfoWndTest::SetField(short* pField, LPCWSTR pwszText)
{
    lstrcpyW(reinterpret_cast<LPWSTR>(pField), pwszText);
}

void InfoWndTest::FillSampleRecord()
{
    SetField(record.wszChannelName, L"Radio Tessaly");
    SetField(record.wszTitle, L"Evening Concert: Nocturnes and Preludes");
    SetField(record.wszReleaseDate, L"2024-05-17");
    SetField(record.wszDescript,
             L"A recording of the evening concert in the old town hall. The programme opens "
             L"with three nocturnes, followed by a set of preludes played without a break.\r\n"
             L"Recorded live; the applause has been kept.");
}

void InfoWndTest::ShowPanelOn(COLORREF crBackground)
{
    info->SetGradientBkColor(crBackground, crBackground, FALSE);
    ASSERT_EQ(S_OK, info->SetDisplayMode(INFO_MODE_MEDIA, TRUE));
    info->ShowMediaInfo(TRUE);
    Paint();
}

void InfoWndTest::DrainHostQueue()
{
    MSG msg;
    while (PeekMessageW(&msg, hWndHost, 0, 0, PM_REMOVE))
        DispatchMessageW(&msg);
}
