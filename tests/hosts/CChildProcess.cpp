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

CChildProcess CChildProcess::Run(const std::wstring& commandLine, DWORD dwGuardMs)
{
    CChildProcess result;
    SECURITY_ATTRIBUTES sa = {sizeof(sa), nullptr, TRUE};
    HANDLE hOutRead, hOutWrite, hErrRead, hErrWrite;
    CreatePipe(&hOutRead, &hOutWrite, &sa, 0);
    CreatePipe(&hErrRead, &hErrWrite, &sa, 0);
    SetHandleInformation(hOutRead, HANDLE_FLAG_INHERIT, 0);
    SetHandleInformation(hErrRead, HANDLE_FLAG_INHERIT, 0);

    STARTUPINFOW si = {};
    si.cb = sizeof(si);
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    si.hStdOutput = hOutWrite;
    si.hStdError = hErrWrite;
    PROCESS_INFORMATION pi = {};
    std::wstring line = commandLine;
    const BOOL bStarted = CreateProcessW(nullptr, &line[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi);
    CloseHandle(hOutWrite);
    CloseHandle(hErrWrite);
    if (bStarted)
    {
        const ULONGLONG ullGuardEnd = GetTickCount64() + dwGuardMs;
        DWORD dwWait;
        do
        {
            dwWait = WaitForSingleObject(pi.hProcess, 20);
            TakeAvailable(hOutRead, result.output);
            TakeAvailable(hErrRead, result.errors);
            if (dwWait == WAIT_TIMEOUT && GetTickCount64() > ullGuardEnd)
                TerminateProcess(pi.hProcess, static_cast<UINT>(-1));
        } while (dwWait == WAIT_TIMEOUT);
        TakeAvailable(hOutRead, result.output);
        TakeAvailable(hErrRead, result.errors);
        DWORD dwExit = 0;
        GetExitCodeProcess(pi.hProcess, &dwExit);
        result.exitCode = static_cast<int>(dwExit);
        CloseHandle(pi.hThread);
        CloseHandle(pi.hProcess);
    }
    CloseHandle(hOutRead);
    CloseHandle(hErrRead);
    return result;
}
