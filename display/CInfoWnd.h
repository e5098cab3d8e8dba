// The information window laid over the host's window: black, a caption strip under a still
// picture, or the media panel of an audio file (cover art, channel, title, release date and a
// description that scrolls on a click) on a two-colour vertical gradient. It hides the mouse
// cursor two seconds after the last movement and hands keys and clicks on to the host.
#pragma once

#include <windows.h>

#include "display/CCoverArt.h"
#include "display/CInfoFonts.h"
#include "display/CWindowBase.h"
#include "display/IVideoArea.h"
#include "engine/TessalyContract.h"

enum : DWORD
{
    INFO_MODE_NONE = 0,
    INFO_MODE_CAPTION = 2,
    INFO_MODE_MEDIA = 4
};

class CInfoWnd : public CWindowBase
{
public:
    enum : UINT_PTR
    {
        CURSOR_TIMER_ID = 100,
        SCROLL_TIMER_ID = 101
    };

    CInfoWnd();
    ~CInfoWnd() override;

    // Neither is owned. The record is the Play object's copy, read at every paint.
    void SetMediaInfoRecord(TESSALY_MEDIA_INFO* pMediaInfo) { m_pMediaInfo = pMediaInfo; }
    void SetVideoArea(IVideoArea* pVideoArea) { m_pVideoArea = pVideoArea; }

    // Fails for a mode other than the three INFO_MODE_ values, keeping the old one.
    HRESULT SetDisplayMode(DWORD dwMode, BOOL bInvalidate);
    // Any change of the value counts, so 1 after -1 is shown again.
    void ShowMediaInfo(BOOL bShow);
    void ClearMediaInfo();
    bool LoadCoverArt(LPCWSTR pwszPath);

    void SetGradientBkColor(COLORREF crTop, COLORREF crBottom, BOOL bForceRefresh);
    void GetGradientBkColor(COLORREF* pcrTop, COLORREF* pcrBottom) const;
    void SetTextColor(COLORREF crColor, BOOL bForceRefresh);
    void GetTextColor(COLORREF* pcrColor) const { *pcrColor = m_crText; }
    // Null restores the default fonts and deliberately leaves the window as painted.
    HRESULT SetFont(const LOGFONTW* plf, BOOL bForceRefresh);

protected:
    LPCWSTR GetWndClassName() const override { return L"INFOWND.Display.WndClass"; }
    bool ProcessWindowMessage(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam,
                              LRESULT& lResult, DWORD dwMsgMapID) override;
    // The clock of the cursor auto-hide.
    virtual DWORD Now() const { return GetTickCount(); }

    LRESULT OnCreate();
    void OnDestroy();
    void OnSize(int nWidth, int nHeight);
    void OnPaint();
    LRESULT OnInput(UINT uMsg, WPARAM wParam, LPARAM lParam);
    bool OnTimer(UINT_PTR nTimerId);

    void RecreateBackground(int nWidth, int nHeight);
    void ScaleFonts();
    void PaintMediaPanel(HDC hdc, const RECT& rcClient);
    void DrawScrollText(HDC hdc, const RECT& rcClient, const RECT& rcText);
    void DrawScrollStep();
    // The description box of the current mode; false in mode 0.
    bool GetActiveTextBox(RECT* prc) const;
    bool IsShowingText() const { return m_dwMode != INFO_MODE_NONE && m_bShowInfo; }
    void GetVideoArea(DWORD* pdwWidth, DWORD* pdwHeight) const;
    void ArmCursorHide();
    void StartScroll();
    void StopScroll();
    void ResetScroll();

    RECT m_rcCaption = {};
    RECT m_rcDescript = {};
    RECT m_rcCoverArt = {};
    RECT m_rcChannel = {};
    RECT m_rcTitle = {};
    RECT m_rcReleaseDate = {};
    HBITMAP m_hbmBack = nullptr;
    CCoverArt m_CoverArt;
    CInfoFonts m_Fonts;
    COLORREF m_crTop = RGB(0x00, 0x00, 0x66);
    COLORREF m_crBottom = RGB(0x00, 0x00, 0xFF);
    COLORREF m_crText = RGB(0xFF, 0xFF, 0xFF);
    BOOL m_bShowInfo = 0;
    float m_fCaptionRatio = 0.2f;
    DWORD m_dwMode = INFO_MODE_NONE;
    IVideoArea* m_pVideoArea = nullptr;
    int m_nMarginY = 0;
    int m_nMarginX = 0;
    int m_nCoverHeight = 0;
    int m_nCoverWidth = 0;
    int m_nTextWidth = 0;
    UINT_PTR m_nCursorTimer = 0;
    DWORD m_dwCursorHideTime = 0;
    TESSALY_MEDIA_INFO* m_pMediaInfo = nullptr;
    HDC m_hMemDC = nullptr;
    UINT_PTR m_nScrollTimer = 0;
    int m_nScrollOffset = 0;
    int m_nScrollExtent = 0;
};
