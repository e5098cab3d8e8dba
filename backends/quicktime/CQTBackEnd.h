// What the two QuickTime back-ends do alike: once QuickTime is ready, file information and the
// transport go straight to their movie wrapper. Each back-end guards the calls in its own name.
#pragma once

#include <windows.h>

#include <memory>

#include "backends/quicktime/CQuickTime.h"
#include "base/CPlayerBase.h"

class CQTBackEnd : public CPlayerBase
{
public:
    HRESULT GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable, DWORD* pdwWidth,
                        DWORD* pdwHeight, BOOL* pbPicture) override;
    HRESULT Play() override;
    HRESULT Pause() override;
    HRESULT Resume() override;
    HRESULT Stop() override;
    HRESULT SetCurTime(double dSeconds) override;
    HRESULT GetCurTime(double* pdSeconds) override;
    void SetEventHandlerWindow(HWND hWnd) override;

protected:
    // S_OK when QuickTime is started and recent enough and, where asked for, the movie object exists.
    virtual HRESULT CheckQuickTime(bool bNeedsMovieObject) const = 0;

    std::unique_ptr<CQuickTime> m_pQT;
};
