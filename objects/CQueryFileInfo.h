// The QueryFileInfo object: answers a file's duration, size and attributes by opening it with a
// dispatcher of its own and closing it again at once. Nothing is shown and nothing is played.
#pragma once

#include <windows.h>

#include <memory>

#include "engine/CComObjectRoot.h"
#include "engine/TessalyContract.h"

class CMediaPlayer;

class CQueryFileInfo : public IQueryFileInfo, public CComObjectRoot
{
public:
    CQueryFileInfo();
    ~CQueryFileInfo() override;

    void FinalRelease();
    IUnknown* GetUnknown() { return static_cast<IQueryFileInfo*>(this); }
    void* InternalQueryInterface(REFIID riid);

    STDMETHODIMP GetFileInfo(LPWSTR wszFilepath, TESSALY_FILEINFO* pOpenedFileInfo) override;

private:
    HRESULT InitPlaybackEngine(LPCWSTR pwszFile);

    HWND m_hHiddenWnd = nullptr;
    std::unique_ptr<CMediaPlayer> m_pMediaPlayer;
};
