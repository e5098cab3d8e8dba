#include "hosts/player/CInfoPanel.h"

#include <cstdio>
#include <vector>

#include "hosts/player/CCoverArtFinder.h"
#include "hosts/player/CMediaTitle.h"

namespace {

// The player's look: a night-blue to plum gradient with warm white text.
const COLORREF kTop = RGB(16, 20, 48);
const COLORREF kBottom = RGB(92, 36, 88);
const COLORREF kText = RGB(255, 240, 214);

// The record's text fields are UTF-16 arrays typed as shorts; long text is cut, always terminated.
template <size_t N>
void Copy(short (&field)[N], const std::wstring& text)
{
    const size_t nCopied = text.size() < N ? text.size() : N - 1;
    for (size_t i = 0; i < nCopied; ++i)
        field[i] = static_cast<short>(text[i]);
    field[nCopied] = 0;
}

std::vector<HWND> Children(HWND hParent)
{
    std::vector<HWND> children;
    for (HWND hChild = GetWindow(hParent, GW_CHILD); hChild; hChild = GetWindow(hChild, GW_HWNDNEXT))
        children.push_back(hChild);
    return children;
}

std::wstring FolderName(const std::wstring& path)
{
    const size_t nSlash = path.find_last_of(L"\\/");
    if (nSlash == std::wstring::npos || nSlash == 0)
        return {};
    const size_t nParent = path.find_last_of(L"\\/", nSlash - 1);
    return path.substr(nParent == std::wstring::npos ? 0 : nParent + 1, nSlash - (nParent == std::wstring::npos ? 0 : nParent + 1));
}

std::wstring ModifiedDate(const std::wstring& path)
{
    WIN32_FILE_ATTRIBUTE_DATA data;
    SYSTEMTIME st;
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) || !FileTimeToSystemTime(&data.ftLastWriteTime, &st))
        return {};
    wchar_t wsz[16];
    swprintf(wsz, 16, L"%04u-%02u-%02u", st.wYear, st.wMonth, st.wDay);
    return wsz;
}

} // namespace

void CInfoPanel::Attach(IPlay* pPlay, HWND hParent)
{
    m_play = pPlay;
    QueryTo(m_play, IID_IPlay2, m_play2);
    QueryTo(m_play, IID_ITextDisplay, m_text);
    m_hParent = hParent;
}

void CInfoPanel::Detach()
{
    m_text.Reset();
    m_play2.Reset();
    m_play.Reset();
    m_hPanel = nullptr;
}

void CInfoPanel::Resize(UINT uWidth, UINT uHeight)
{
    if (!m_play || uWidth == 0 || uHeight == 0)
        return;
    const std::vector<HWND> before = Children(m_hParent);
    m_play->SetParentWindowSize(uWidth, uHeight);
    if (!m_hPanel && (m_hPanel = FindNewChild(before.data(), before.size())) != nullptr)
        ApplyStyle();
}

HWND CInfoPanel::FindNewChild(const HWND* phKnown, size_t nKnown) const
{
    for (HWND hChild : Children(m_hParent))
    {
        bool bKnown = false;
        for (size_t i = 0; i < nKnown && !bKnown; ++i)
            bKnown = phKnown[i] == hChild;
        if (!bKnown)
            return hChild;
    }
    return nullptr;
}

void CInfoPanel::ApplyStyle()
{
    if (!m_text)
        return;
    m_text->SetGradientBkColor(kTop, kBottom, FALSE);
    m_text->SetTextColor(kText, FALSE);
    // The system's message font, in the panel's own proportions (the engine scales it to fit).
    NONCLIENTMETRICSW metrics = {};
    metrics.cbSize = sizeof(metrics);
    LOGFONTW font = {};
    if (SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0))
        font = metrics.lfMessageFont;
    else
        lstrcpynW(font.lfFaceName, L"Tahoma", LF_FACESIZE);
    font.lfHeight = -24;
    font.lfWeight = FW_SEMIBOLD;
    font.lfQuality = ANTIALIASED_QUALITY;
    m_text->SetFont(&font, TRUE);
}

TESSALY_MEDIA_INFO CInfoPanel::Describe(const Details& details)
{
    TESSALY_MEDIA_INFO info = {};
    Copy(info.wszCoverArtPath, CCoverArtFinder::Find(details.path));
    Copy(info.wszChannelName, FolderName(details.path));
    Copy(info.wszTitle, CMediaTitle::Of(details.path));
    Copy(info.wszReleaseDate, ModifiedDate(details.path));
    wchar_t wszLine[96];
    const unsigned uSeconds = details.dDuration > 0.0 ? static_cast<unsigned>(details.dDuration + 0.5) : 0;
    swprintf(wszLine, 96, L"%u:%02u \x2014 file %u of %u\n", uSeconds / 60, uSeconds % 60,
             static_cast<unsigned>(details.nIndex + 1), static_cast<unsigned>(details.nCount));
    Copy(info.wszDescript, wszLine + details.path);
    return info;
}

HRESULT CInfoPanel::ShowFor(const Details& details, bool bAudioOnly)
{
    if (!m_hPanel || !m_play2)
        return E_FAIL;
    if (!bAudioOnly)
    {
        Hide();
        return S_OK;
    }
    TESSALY_MEDIA_INFO info = Describe(details);
    HRESULT hr = m_play2->SetMediaInfo(&info);
    if (SUCCEEDED(hr))
        hr = m_play2->ShowMediaInfo(TRUE);
    SetWindowPos(m_hPanel, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_SHOWWINDOW);
    return hr;
}

void CInfoPanel::Hide()
{
    if (m_play2)
        m_play2->ShowMediaInfo(FALSE);
    if (m_hPanel)
        ShowWindow(m_hPanel, SW_HIDE);
}
