// The one door between the CD back-end and the Media Control Interface's CD audio device: every
// MCI command the back-end sends goes through SendCommand. The system's device needs a real drive;
// where the drive letter is set to stand for a disc image, an image-backed device answers the same
// commands from the image's table of contents.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <memory>

class CCDAudioDevice
{
public:
    CCDAudioDevice() = default;
    CCDAudioDevice(const CCDAudioDevice&) = delete;
    CCDAudioDevice& operator=(const CCDAudioDevice&) = delete;
    virtual ~CCDAudioDevice() = default;

    // mciSendCommandW.
    virtual MCIERROR SendCommand(MCIDEVICEID wDeviceId, UINT uMsg, DWORD_PTR dwFlags, DWORD_PTR dwParam);

    // The image-backed device where the drive letter is set to an image, else the system's.
    static std::unique_ptr<CCDAudioDevice> ForDrive(WCHAR wcDrive);
};
