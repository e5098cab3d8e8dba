#include "hosts/common/CStdOut.h"

namespace {

HANDLE OpenStream(DWORD dwWhich)
{
    HANDLE hOut = GetStdHandle(dwWhich);
    if (hOut == nullptr || hOut == INVALID_HANDLE_VALUE)
    {
        // Started from a console without redirection: write to that console.
        if (AttachConsole(ATTACH_PARENT_PROCESS) || GetLastError() == ERROR_ACCESS_DENIED)
            hOut = GetStdHandle(dwWhich);
    }
    return hOut == INVALID_HANDLE_VALUE ? nullptr : hOut;
}

} // namespace

CStdOut::CStdOut(Stream stream) : m_hOut(OpenStream(stream == Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE)) {}

void CStdOut::Write(const std::string& text) const
{
    if (!m_hOut)
        return;
    size_t cbDone = 0;
    while (cbDone < text.size())
    {
        DWORD cbWritten = 0;
        if (!WriteFile(m_hOut, text.data() + cbDone, static_cast<DWORD>(text.size() - cbDone), &cbWritten, nullptr) ||
            cbWritten == 0)
            return; // a closed pipe must not stop playback or probing
        cbDone += cbWritten;
    }
}

bool CStdOut::IsTerminal() const
{
    DWORD dwMode = 0;
    return m_hOut && GetConsoleMode(m_hOut, &dwMode);
}
