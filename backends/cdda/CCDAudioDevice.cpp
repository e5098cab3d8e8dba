#include "backends/cdda/CCDAudioDevice.h"

#include "backends/cdda/CDiscImageAudioDevice.h"
#include "cdimage/CDiscImageSetting.h"

MCIERROR CCDAudioDevice::SendCommand(MCIDEVICEID wDeviceId, UINT uMsg, DWORD_PTR dwFlags, DWORD_PTR dwParam)
{
    return mciSendCommandW(wDeviceId, uMsg, dwFlags, dwParam);
}

std::unique_ptr<CCDAudioDevice> CCDAudioDevice::ForDrive(WCHAR wcDrive)
{
    const std::wstring image = CDiscImageSetting::ImageFor(wcDrive);
    if (!image.empty())
        return std::unique_ptr<CCDAudioDevice>(new CDiscImageAudioDevice(image));
    return std::unique_ptr<CCDAudioDevice>(new CCDAudioDevice);
}
