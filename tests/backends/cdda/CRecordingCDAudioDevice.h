// A CD audio device that records every MCI command the back-end sends, as text, and answers
// from a script: whether the open succeeds and each track's packed minutes/seconds/frames.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "backends/cdda/CCDAudioDevice.h"

class CRecordingCDAudioDevice : public CCDAudioDevice
{
public:
    struct Script
    {
        MCIERROR openError = 0;
        MCIDEVICEID deviceId = 7;
        std::map<DWORD, DWORD> packedLengths;  // track -> MCI_MAKE_MSF(m, s, f); others fail
    };

    CRecordingCDAudioDevice(const Script& script, std::vector<std::string>* pLog) : m_script(script), m_pLog(pLog) {}

    MCIERROR SendCommand(MCIDEVICEID wDeviceId, UINT uMsg, DWORD_PTR dwFlags, DWORD_PTR dwParam) override;

    static DWORD Packed(int nMinutes, int nSeconds, int nFrames) { return MCI_MAKE_MSF(nMinutes, nSeconds, nFrames); }

private:
    Script m_script;
    std::vector<std::string>* m_pLog;
};
