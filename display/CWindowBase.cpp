#include "display/CWindowBase.h"

#include "base/CUtility.h"

namespace {

// Where reflected notifications land in the child's message range (OCM_BASE of OLE controls).
const UINT REFLECTED_MESSAGE_BASE = WM_USER + 0x1C00;

} // namespace

const RECT CWindowBase::rcDefault = {CW_USEDEFAULT, CW_USEDEFAULT, 0, 0};

CWindowBase::~CWindowBase() = default;

bool CWindowBase::RegisterWndClass() const
{
    const HINSTANCE hInstance = CUtility::ModuleInstance();
    WNDCLASSEXW wcx = {};
    wcx.cbSize = sizeof(wcx);
    if (GetClassInfoExW(hInstance, GetWndClassName(), &wcx))
        return true;
    wcx = {};
    wcx.cbSize = sizeof(wcx);
    wcx.style = CS_HREDRAW | CS_VREDRAW | CS_DBLCLKS;
    wcx.lpfnWndProc = StaticWindowProc;
    wcx.hInstance = hInstance;
    wcx.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
    wcx.lpszClassName = GetWndClassName();
    return RegisterClassExW(&wcx) != 0;
}

HWND CWindowBase::Create(HWND hWndParent, const RECT& rc, LPCWSTR pwszWindowName, DWORD dwStyle,
                         DWORD dwExStyle)
{
    if (m_hWnd || !RegisterWndClass())
        return nullptr;
    // m_hWnd is set from inside, at WM_NCCREATE, and cleared again if creation fails.
    return CreateWindowExW(dwExStyle, GetWndClassName(), pwszWindowName, dwStyle, rc.left, rc.top,
                           rc.right - rc.left, rc.bottom - rc.top, hWndParent, nullptr,
                           CUtility::ModuleInstance(), this);
}

BOOL CWindowBase::DestroyWindow()
{
    return m_hWnd ? ::DestroyWindow(m_hWnd) : FALSE;
}

LRESULT CALLBACK CWindowBase::StaticWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    if (uMsg == WM_NCCREATE)
    {
        auto* pCreate = reinterpret_cast<CREATESTRUCTW*>(lParam);
        auto* pThis = static_cast<CWindowBase*>(pCreate->lpCreateParams);
        pThis->m_hWnd = hWnd;
        SetWindowLongPtrW(hWnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(pThis));
    }

    auto* pThis = reinterpret_cast<CWindowBase*>(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    if (!pThis)
        return DefWindowProcW(hWnd, uMsg, wParam, lParam);

    LRESULT lResult = 0;
    if (!pThis->ProcessWindowMessage(hWnd, uMsg, wParam, lParam, lResult, 0))
        lResult = DefWindowProcW(hWnd, uMsg, wParam, lParam);

    if (uMsg == WM_NCDESTROY)
    {
        SetWindowLongPtrW(hWnd, GWLP_USERDATA, 0);
        pThis->m_hWnd = nullptr;
    }
    return lResult;
}

bool CWindowBase::ReflectNotifications(UINT uMsg, WPARAM wParam, LPARAM lParam,
                                       LRESULT& lResult) const
{
    HWND hWndChild = nullptr;
    switch (uMsg)
    {
    case WM_COMMAND:
    case WM_VKEYTOITEM:
    case WM_CHARTOITEM:
    case WM_HSCROLL:
    case WM_VSCROLL:
    case WM_CTLCOLORBTN:
    case WM_CTLCOLORDLG:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
    case WM_CTLCOLORMSGBOX:
    case WM_CTLCOLORSCROLLBAR:
    case WM_CTLCOLORSTATIC:
        hWndChild = reinterpret_cast<HWND>(lParam);
        break;
    case WM_NOTIFY:
        hWndChild = reinterpret_cast<const NMHDR*>(lParam)->hwndFrom;
        break;
    case WM_PARENTNOTIFY:
        if (LOWORD(wParam) == WM_CREATE || LOWORD(wParam) == WM_DESTROY)
            hWndChild = reinterpret_cast<HWND>(lParam);
        else
            hWndChild = GetDlgItem(m_hWnd, HIWORD(wParam));
        break;
    // Owner-drawn items: a zero wParam means a menu, which has no window to reflect to.
    case WM_DRAWITEM:
        if (wParam)
            hWndChild = reinterpret_cast<const DRAWITEMSTRUCT*>(lParam)->hwndItem;
        break;
    case WM_MEASUREITEM:
        if (wParam)
            hWndChild = GetDlgItem(m_hWnd, reinterpret_cast<const MEASUREITEMSTRUCT*>(lParam)->CtlID);
        break;
    case WM_COMPAREITEM:
        if (wParam)
            hWndChild = reinterpret_cast<const COMPAREITEMSTRUCT*>(lParam)->hwndItem;
        break;
    case WM_DELETEITEM:
        if (wParam)
            hWndChild = reinterpret_cast<const DELETEITEMSTRUCT*>(lParam)->hwndItem;
        break;
    default:
        break;
    }
    if (!hWndChild)
        return false;
    lResult = SendMessageW(hWndChild, REFLECTED_MESSAGE_BASE + uMsg, wParam, lParam);
    return true;
}
