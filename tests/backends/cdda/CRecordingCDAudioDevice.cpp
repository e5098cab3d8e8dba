#include "CRecordingCDAudioDevice.h"

#include <cstdio>

namespace {

std::string Narrow(LPCWSTR pwsz)
{
    std::string text;
    for (; pwsz && *pwsz; ++pwsz)
        text += static_cast<char>(*pwsz);
    return text;
}

std::string Hex(DWORD_PTR dwValue)
{
    char sz[32];
    std::snprintf(sz, sizeof sz, "0x%lx", static_cast<unsigned long>(dwValue));
    return sz;
}

} // namespace

MCIERROR CRecordingCDAudioDevice::SendCommand(MCIDEVICEID wDeviceId, UINT uMsg, DWORD_PTR dwFlags, DWORD_PTR dwParam)
{
    const std::string head = std::to_string(wDeviceId) + " " + Hex(dwFlags) + " ";
    switch (uMsg)
    {
    case MCI_OPEN:
    {
        auto* pOpen = reinterpret_cast<MCI_OPEN_PARMSW*>(dwParam);
        m_pLog->push_back("open " + head + std::to_string(reinterpret_cast<ULONG_PTR>(pOpen->lpstrDeviceType)) + " " +
                          Narrow(pOpen->lpstrElementName));
        if (m_script.openError == 0)
            pOpen->wDeviceID = m_script.deviceId;
        return m_script.openError;
    }
    case MCI_SET:
        m_pLog->push_back("set " + head + std::to_string(reinterpret_cast<MCI_SET_PARMS*>(dwParam)->dwTimeFormat));
        return 0;
    case MCI_STATUS:
    {
        auto* pStatus = reinterpret_cast<MCI_STATUS_PARMS*>(dwParam);
        m_pLog->push_back("status " + head + std::to_string(pStatus->dwItem) + " " + std::to_string(pStatus->dwTrack));
        const auto found = m_script.packedLengths.find(pStatus->dwTrack);
        if (found == m_script.packedLengths.end())
            return MCIERR_OUTOFRANGE;
        pStatus->dwReturn = found->second;
        return 0;
    }
    case MCI_CLOSE:
        m_pLog->push_back("close " + head);
        return 0;
    default:
        m_pLog->push_back("other " + std::to_string(uMsg));
        return MCIERR_UNSUPPORTED_FUNCTION;
    }
}
