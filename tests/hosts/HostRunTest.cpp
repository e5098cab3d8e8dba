// The probe and the player run as a user runs them, through the registered engine: what the
// programs themselves add, their output, exit codes, options and keys (the engine's own answers
// and playback are checked below them).
#include <windows.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "CJsonValue.h"
#include "CTempFolder.h"
#include "hosts/common/CUtf8.h"

#define TESSALY_WIDEN2(x) L##x
#define TESSALY_WIDEN(x) TESSALY_WIDEN2(x)

namespace {

std::wstring Q(const std::wstring& s) { return L"\"" + s + L"\""; }
std::wstring Media(const wchar_t* pwszName) { return TESSALY_WIDEN(TESSALY_MEDIA_DIR) L"\\" + std::wstring(pwszName); }
const std::wstring kProbe = Q(TESSALY_WIDEN(TESSALY_PROBE_PATH)) + L" ", kPlayer = Q(TESSALY_WIDEN(TESSALY_PLAYER_PATH)) + L" ";
std::string U(const std::wstring& s) { return CUtf8::FromWide(s); }

std::string Read(const std::wstring& path)
{
    std::string bytes(1 << 20, '\0');
    DWORD cbRead = 0;
    HANDLE hFile = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    ReadFile(hFile, &bytes[0], static_cast<DWORD>(bytes.size()), &cbRead, nullptr);
    CloseHandle(hFile);
    return bytes.substr(0, cbRead);
}

struct Result
{
    int exitCode;
    std::string output, errors;
};

// A host program started as a user starts it, its output going to files of its own.
class CChild
{
public:
    explicit CChild(std::wstring commandLine)
    {
        SECURITY_ATTRIBUTES sa = {sizeof(sa), nullptr, TRUE};
        STARTUPINFOW si = {};
        si.cb = sizeof(si);
        si.dwFlags = STARTF_USESTDHANDLES;
        si.hStdOutput = CreateFileW(m_files.Path(L"out").c_str(), GENERIC_WRITE, FILE_SHARE_READ, &sa, CREATE_ALWAYS, 0, nullptr);
        si.hStdError = CreateFileW(m_files.Path(L"err").c_str(), GENERIC_WRITE, FILE_SHARE_READ, &sa, CREATE_ALWAYS, 0, nullptr);
        CreateProcessW(nullptr, &commandLine[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &m_pi);
        CloseHandle(si.hStdOutput), CloseHandle(si.hStdError);
    }
    ~CChild() { TerminateProcess(m_pi.hProcess, ~0u), CloseHandle(m_pi.hThread), CloseHandle(m_pi.hProcess); }
    Result Finish() // a program still running after two minutes hangs: killed, exit code -1
    {
        if (WaitForSingleObject(m_pi.hProcess, 120000) == WAIT_TIMEOUT)
            TerminateProcess(m_pi.hProcess, ~0u), WaitForSingleObject(m_pi.hProcess, 10000);
        DWORD dwExit = ~0u;
        GetExitCodeProcess(m_pi.hProcess, &dwExit);
        return {static_cast<int>(dwExit), Read(m_files.Path(L"out")), Read(m_files.Path(L"err"))};
    }

private:
    CTempFolder m_files;
    PROCESS_INFORMATION m_pi = {};
};

Result RunHost(const std::wstring& commandLine) { return CChild(commandLine).Finish(); }

TEST(ProbeRun, JsonListsEachFileOfAFolderAndEachMissingNameAndTheExitCodeTellsTheOutcome)
{
    CTempFolder temp;
    const std::wstring notes = temp.Write(L"notes.txt", "not media\n"), tone = temp.CopyIn(Media(L"tone.wav"), L"sub\\tone.wav");
    const Result run = RunHost(kProbe + L"--json " + Q(temp.Path()) + L" " + Q(temp.Path(L"gone.wav")));
    EXPECT_EQ(1, run.exitCode) << run.errors;
    const CJsonValue doc = CJsonValue::Parse(run.output);
    ASSERT_EQ(3u, doc["files"].items.size()) << run.output;
    const CJsonValue &first = doc["files"].items[0], &second = doc["files"].items[1], &gone = doc["files"].items[2];
    EXPECT_EQ(U(notes), first["path"].text);
    EXPECT_EQ("TESSALY_E_NOTSUPPORTED", first["resultName"].text);
    EXPECT_EQ(U(tone), second["path"].text);
    EXPECT_TRUE(second["ok"].b);
    EXPECT_NEAR(1.0, second["duration"].number, 0.15);
    EXPECT_TRUE(second["audioOnly"].b);
    EXPECT_EQ(Read(tone).size(), second["bytes"].number);
    EXPECT_EQ("HRESULT_FROM_WIN32(2)", gone["resultName"].text);
    EXPECT_EQ(2, doc["summary"]["failed"].number);

    const Result text = RunHost(kProbe + L"--no-progress " + Q(tone));
    EXPECT_EQ(0, text.exitCode) << "every file answered";
    EXPECT_NE(std::string::npos, text.output.find("1 files: 1 answered, 0 failed")) << text.output;
    const Result bad = RunHost(kProbe + L"--no-such-option");
    EXPECT_EQ(2, bad.exitCode);
    EXPECT_NE(std::string::npos, bad.errors.find("--no-such-option"));
    EXPECT_TRUE(bad.output.empty());
}

// The log's lines without their time stamps, leaving out the progress ticks.
std::vector<std::string> Steps(const std::string& log)
{
    std::vector<std::string> lines;
    std::istringstream stream(log);
    for (std::string line; std::getline(stream, line);)
        if (line.size() > 11 && line[0] == '[' && line.compare(11, 9, "progress ") != 0)
            lines.push_back(line.substr(11));
    return lines;
}

TEST(PlayerRun, KeysPauseResumeSeekAndSkipAFileThatCannotBeOpenedIsReportedAndTheListPlaysToItsEnd)
{
    CTempFolder temp;
    const std::wstring first = temp.CopyIn(Media(L"stereo.wma"), L"first.wma"), notes = temp.Write(L"notes.txt", "x"),
                       last = temp.CopyIn(Media(L"tone.wav"), L"last.wav");
    CChild player(kPlayer + L"--log --exit-after-complete " + Q(first) + L" " + Q(notes) + L" " + Q(last));
    HWND hWnd = nullptr; // the player's window once its title names the first file; a minute guards against a hang
    for (int i = 0; i < 6000 && !(hWnd = FindWindowW(nullptr, L"first - Tessaly Player")); ++i)
        Sleep(10);
    ASSERT_NE(nullptr, hWnd) << player.Finish().output;
    for (WPARAM vk : {VK_SPACE, VK_SPACE, VK_LEFT, VK_NEXT}) // as the keyboard delivers them, wherever the focus is
        PostMessageW(hWnd, WM_KEYDOWN, vk, 0);
    const Result run = player.Finish();
    EXPECT_EQ(1, run.exitCode) << run.output << run.errors;
    std::vector<std::string> steps = Steps(run.output);
    for (std::string& step : steps) // the duration and the error's sentence are not the player's to choose
        step = step.compare(0, 7, "opened ") == 0 ? "opened" + step.substr(step.find(" size=")) : step.substr(0, step.find(": "));
    EXPECT_EQ((std::vector<std::string>{"open " + U(first), "opened size=0x0 mask=0x3 result=0x00000000 S_OK", "play", "pause",
                                        "resume", "seek 0.000", "open " + U(notes),
                                        "error 0x8004A000 TESSALY_E_NOTSUPPORTED open " + U(notes), "open " + U(last),
                                        "opened size=0x0 mask=0x3 result=0x00000000 S_OK", "play", "complete " + U(last),
                                        "end files=3 errors=1"}),
              steps)
        << run.output;
}

TEST(PlayerRun, WithoutLogNothingIsPrintedTheScreenshotIsWrittenAtTheEndAndBadCommandLinesAreRefused)
{
    CTempFolder temp;
    const std::wstring shot = temp.Path(L"shot.png");
    const Result quiet = RunHost(kPlayer + L"--exit-after-complete --screenshot " + Q(shot) + L" " + Q(temp.Write(L"notes.txt", "x")));
    EXPECT_EQ(1, quiet.exitCode);
    EXPECT_TRUE(quiet.output.empty()) << quiet.output;
    EXPECT_EQ(std::string("\x89PNG\r\n\x1a\n", 8), Read(shot).substr(0, 8)) << "a PNG, written as the list ended";
    const Result bad = RunHost(kPlayer + L"--screenshot-after soon");
    EXPECT_EQ(2, bad.exitCode);
    EXPECT_NE(std::string::npos, bad.errors.find("--screenshot-after")) << bad.errors;
}

} // namespace
