#include "backends/cdda/CDiscImageAudioDevice.h"

#include <string>

namespace {

std::string Utf8(const std::wstring& text)
{
    const int cb = WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, nullptr, 0, nullptr, nullptr);
    if (cb <= 0)
        return std::string();
    std::string result(static_cast<size_t>(cb), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, &result[0], cb, nullptr, nullptr);
    result.resize(static_cast<size_t>(cb - 1));
    return result;
}

} // namespace

MCIERROR CDiscImageAudioDevice::SendCommand(MCIDEVICEID wDeviceId, UINT uMsg, DWORD_PTR dwFlags, DWORD_PTR dwParam)
{
    if (uMsg == MCI_OPEN)
        return wDeviceId == 0 ? Open(dwFlags, reinterpret_cast<MCI_OPEN_PARMSW*>(dwParam)) : MCIERR_INVALID_DEVICE_ID;
    if (!m_bOpen || wDeviceId != kDeviceId)
        return MCIERR_INVALID_DEVICE_ID;
    switch (uMsg)
    {
    case MCI_SET:
        if (!(dwFlags & MCI_SET_TIME_FORMAT))
            return MCIERR_UNSUPPORTED_FUNCTION;
        if (!dwParam)
            return MCIERR_NULL_PARAMETER_BLOCK;
        m_dwTimeFormat = reinterpret_cast<MCI_SET_PARMS*>(dwParam)->dwTimeFormat;
        return 0;
    case MCI_STATUS:
        return Status(dwFlags, reinterpret_cast<MCI_STATUS_PARMS*>(dwParam));
    case MCI_CLOSE:
        m_bOpen = false;
        return 0;
    default:
        return MCIERR_UNSUPPORTED_FUNCTION;
    }
}

MCIERROR CDiscImageAudioDevice::Open(DWORD_PTR dwFlags, MCI_OPEN_PARMSW* pParams)
{
    if (!pParams)
        return MCIERR_NULL_PARAMETER_BLOCK;
    const DWORD_PTR dwNeeded = MCI_OPEN_TYPE_ID | MCI_OPEN_ELEMENT;
    if ((dwFlags & dwNeeded) != dwNeeded ||
        pParams->lpstrDeviceType != reinterpret_cast<LPCWSTR>(static_cast<ULONG_PTR>(MCI_DEVTYPE_CD_AUDIO)))
        return MCIERR_INVALID_DEVICE_NAME;
    if (m_bOpen)
        return MCIERR_DEVICE_OPEN;
    // A drive whose disc cannot be read answers that the device is not ready, as an empty drive does.
    if (m_image.Open(Utf8(m_cuePath).c_str()) != CDiscImage::kOk)
        return MCIERR_DEVICE_NOT_READY;
    m_bOpen = true;
    m_dwTimeFormat = MCI_FORMAT_MSF;
    pParams->wDeviceID = kDeviceId;
    return 0;
}

MCIERROR CDiscImageAudioDevice::Status(DWORD_PTR dwFlags, MCI_STATUS_PARMS* pParams) const
{
    if (!pParams)
        return MCIERR_NULL_PARAMETER_BLOCK;
    if (!(dwFlags & MCI_STATUS_ITEM))
        return MCIERR_MISSING_PARAMETER;
    if (pParams->dwItem == MCI_STATUS_NUMBER_OF_TRACKS)
    {
        pParams->dwReturn = m_image.Tracks().size();
        return 0;
    }
    if (pParams->dwItem != MCI_STATUS_LENGTH || !(dwFlags & MCI_TRACK))
        return MCIERR_UNSUPPORTED_FUNCTION;
    const DiscTrack* pTrack = m_image.FindTrack(static_cast<int>(pParams->dwTrack));
    if (!pTrack)
        return MCIERR_OUTOFRANGE;
    const DWORD dwFrames = pTrack->ulSectors;
    switch (m_dwTimeFormat)
    {
    case MCI_FORMAT_MILLISECONDS:
        pParams->dwReturn = MulDiv(static_cast<int>(dwFrames), 1000, CDiscImage::kSectorsPerSecond);
        return 0;
    case MCI_FORMAT_MSF:
    case MCI_FORMAT_TMSF:
    {
        // A track's length is given in minutes, seconds and frames in both formats.
        const DWORD dwSeconds = dwFrames / CDiscImage::kSectorsPerSecond;
        pParams->dwReturn = MCI_MAKE_MSF(dwSeconds / 60, dwSeconds % 60, dwFrames % CDiscImage::kSectorsPerSecond);
        return 0;
    }
    default:
        return MCIERR_BAD_TIME_FORMAT;
    }
}
