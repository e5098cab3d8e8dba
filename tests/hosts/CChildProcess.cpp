#include "CChildProcess.h"


namespace {

// Takes what is waiting in a pipe without blocking: a process the child started may have
// inherited the pipe's other end, so its end of file may never come.
void TakeAvailable(HANDLE hRead, std::string& out)
{
    DWORD cbAvailable = 0;
    while (PeekNamedPipe(hRead, nullptr, 0, nullptr, &cbAvailable, nullptr) && cbAvailable)
    {
        char buffer[4096];
        DWORD cbRead = 0;
        if (!ReadFile(hRead, buffer, cbAvailable < sizeof(buffer) ? cbAvailable : sizeof(buffer), &cbRead, nullptr) ||
            cbRead == 0)
            return;
        out.append(buffer, cbRead);
    }
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
        if (c == L'\\')
            ++nBackslashes;
        else
        {
            quoted.append(c == L'"' ? 2 * nBackslashes + 1 : nBackslashes, L'\\');
            nBackslashes = 0;
        }
        quoted += c;
    }
    quoted.append(nBackslashes, L'\\');
    return quoted + L"\"";
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
    DWORD dwWait;
    do
    {
        dwWait = WaitForSingleObject(m_pi.hProcess, 20);
        TakeAvailable(m_hOutRead, m_result.output);
        TakeAvailable(m_hErrRead, m_result.errors);
        if (dwWait == WAIT_TIMEOUT && GetTickCount64() > ullGuardEnd)
            TerminateProcess(m_pi.hProcess, static_cast<UINT>(-1));
    } while (dwWait == WAIT_TIMEOUT);
    TakeAvailable(m_hOutRead, m_result.output);
    TakeAvailable(m_hErrRead, m_result.errors);
    DWORD dwExit = 0;
    GetExitCodeProcess(m_pi.hProcess, &dwExit);
    m_result.exitCode = static_cast<int>(dwExit);
    return m_result;
}

CChildProcess::Result CChildProcess::Run(const std::wstring& commandLine, DWORD dwGuardMs)
{
    return CChildProcess(commandLine).Finish(dwGuardMs);
}
