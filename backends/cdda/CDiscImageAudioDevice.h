// The CD audio device's answers for a disc image: the commands the CD back-end sends (open by
// drive letter, time format, track length, close), answered from the image's table of contents
// as the system's device answers them for a disc in a drive.
#pragma once

#include "backends/cdda/CCDAudioDevice.h"
#include "cdimage/CDiscImage.h"

#include <string>

class CDiscImageAudioDevice : public CCDAudioDevice
{
public:
    // The one device identifier this device hands out.
    static const MCIDEVICEID kDeviceId = 1;

    explicit CDiscImageAudioDevice(const std::wstring& cuePath) : m_cuePath(cuePath) {}

    MCIERROR SendCommand(MCIDEVICEID wDeviceId, UINT uMsg, DWORD_PTR dwFlags, DWORD_PTR dwParam) override;

private:
    MCIERROR Open(DWORD_PTR dwFlags, MCI_OPEN_PARMSW* pParams);
    MCIERROR Status(DWORD_PTR dwFlags, MCI_STATUS_PARMS* pParams) const;

    std::wstring m_cuePath;
    CDiscImage m_image;
    bool m_bOpen = false;
    DWORD m_dwTimeFormat = MCI_FORMAT_MSF;
};
