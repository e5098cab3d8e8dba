#include "CChildProcess.h"

namespace {

// Takes what is waiting in a pipe without blocking: a process the child started may have
// inherited the pipe's other end, so its end of file may never come.
void TakeAvailable(HANDLE hRead, std::string& out)
{
    DWORD cbAvailable = 0, cbRead = 0;
    char buffer[4096];
    while (PeekNamedPipe(hRead, nullptr, 0, nullptr, &cbAvailable, nullptr) && cbAvailable &&
           ReadFile(hRead, buffer, cbAvailable < sizeof(buffer) ? cbAvailable : sizeof(buffer), &cbRead, nullptr) && cbRead)
        out.append(buffer, cbRead);
}

} // namespace

std::wstring CChildProcess::Quote(const std::wstring& argument)
{
    if (!argument.empty() && argument.find_first_of(L" \t\"") == std::wstring::npos)
        return argument;
    std::wstring quoted = L"\"";
    size_t nBackslashes = 0;
    for (wchar_t c : argument)
    {
        nBackslashes = c == L'\\' ? nBackslashes + 1 : 0;
        if (c == L'"')
            quoted.append(nBackslashes + 1, L'\\'); // the backslashes before it doubled, and its own
        quoted += c;
    }
    return quoted.append(nBackslashes, L'\\') + L"\"";
}

CChildProcess::CChildProcess(const std::wstring& commandLine)
{
    SECURITY_ATTRIBUTES sa = {sizeof(sa), nullptr, TRUE};
    HANDLE hOutWrite = nullptr, hErrWrite = nullptr;
    CreatePipe(&m_hOutRead, &hOutWrite, &sa, 0);
    CreatePipe(&m_hErrRead, &hErrWrite, &sa, 0);
    SetHandleInformation(m_hOutRead, HANDLE_FLAG_INHERIT, 0);
    SetHandleInformation(m_hErrRead, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW si = {};
    si.cb = sizeof(si);
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    si.hStdOutput = hOutWrite;
    si.hStdError = hErrWrite;
    std::wstring line = commandLine;
    if (!CreateProcessW(nullptr, &line[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &m_pi))
        m_pi = {};
    CloseHandle(hOutWrite);
    CloseHandle(hErrWrite);
}

CChildProcess::~CChildProcess()
{
    if (m_pi.hProcess)
    {
        if (WaitForSingleObject(m_pi.hProcess, 0) == WAIT_TIMEOUT)
            TerminateProcess(m_pi.hProcess, static_cast<UINT>(-1));
        CloseHandle(m_pi.hThread);
        CloseHandle(m_pi.hProcess);
    }
    CloseHandle(m_hOutRead);
    CloseHandle(m_hErrRead);
}

CChildProcess::Result CChildProcess::Finish(DWORD dwGuardMs)
{
    if (!m_pi.hProcess)
        return m_result;
    const ULONGLONG ullGuardEnd = GetTickCount64() + dwGuardMs;
    DWORD dwWait = WAIT_TIMEOUT;
    while (dwWait == WAIT_TIMEOUT)
    {
        dwWait = WaitForSingleObject(m_pi.hProcess, 20);
        if (dwWait == WAIT_TIMEOUT && GetTickCount64() > ullGuardEnd)
            TerminateProcess(m_pi.hProcess, static_cast<UINT>(-1));
        TakeAvailable(m_hOutRead, m_result.output);
        TakeAvailable(m_hErrRead, m_result.errors);
    }
    DWORD dwExit = 0;
    GetExitCodeProcess(m_pi.hProcess, &dwExit);
    m_result.exitCode = static_cast<int>(dwExit);
    return m_result;
}

CChildProcess::Result CChildProcess::Run(const std::wstring& commandLine, DWORD dwGuardMs)
{
    return CChildProcess(commandLine).Finish(dwGuardMs);
}
