// The probe and the player run as a user runs them, through the registered engine: what the programs
// add, their output, exit codes, options and keys (the engine's answers are checked below them).
#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "CJsonValue.h"
#include "CTempFolder.h"
#include "hosts/common/CUtf8.h"

namespace {

std::wstring Q(const std::wstring& s) { return L"\"" + s + L"\""; }
std::wstring Media(const wchar_t* pwszName) { return CUtf8::ToWide(TESSALY_MEDIA_DIR "\\") + pwszName; }
const std::wstring kProbe = Q(CUtf8::ToWide(TESSALY_PROBE_PATH)) + L" ", kPlayer = Q(CUtf8::ToWide(TESSALY_PLAYER_PATH)) + L" ";
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

// Runs a host program as a user does, its output going to files; `whileRunning` acts on it
// meanwhile. A program still running after two minutes hangs: killed, exit code -1.
Result RunHost(std::wstring commandLine, const std::function<void()>& whileRunning = {})
{
    CTempFolder files;
    SECURITY_ATTRIBUTES sa = {sizeof(sa), nullptr, TRUE};
    STARTUPINFOW si = {};
    si.cb = sizeof(si);
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdOutput = CreateFileW(files.Path(L"out").c_str(), GENERIC_WRITE, FILE_SHARE_READ, &sa, CREATE_ALWAYS, 0, nullptr);
    si.hStdError = CreateFileW(files.Path(L"err").c_str(), GENERIC_WRITE, FILE_SHARE_READ, &sa, CREATE_ALWAYS, 0, nullptr);
    PROCESS_INFORMATION pi = {};
    CreateProcessW(nullptr, &commandLine[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi);
    CloseHandle(si.hStdOutput), CloseHandle(si.hStdError);
    if (whileRunning)
        whileRunning();
    if (WaitForSingleObject(pi.hProcess, 120000) == WAIT_TIMEOUT)
        TerminateProcess(pi.hProcess, ~0u), WaitForSingleObject(pi.hProcess, 10000);
    DWORD dwExit = ~0u;
    GetExitCodeProcess(pi.hProcess, &dwExit);
    CloseHandle(pi.hThread), CloseHandle(pi.hProcess);
    return {static_cast<int>(dwExit), Read(files.Path(L"out")), Read(files.Path(L"err"))};
}

TEST(ProbeRun, JsonListsEachFileOfAFolderAndEachMissingNameAndTheExitCodeTellsTheOutcome)
{
    CTempFolder temp;
    const std::wstring notes = temp.Write(L"notes.txt", "not media\n"), tone = temp.CopyIn(Media(L"tone.wav"), L"sub\\tone.wav");
    const Result run = RunHost(kProbe + L"--json " + Q(temp.Path()) + L" " + Q(temp.Path(L"gone.wav")));
    EXPECT_EQ(1, run.exitCode) << run.errors;
    const CJsonValue doc = CJsonValue::Parse(run.output);
    std::vector<std::string> answers;
    for (const CJsonValue& file : doc["files"].items)
        answers.push_back(file["path"].text + " " + file["resultName"].text);
    EXPECT_EQ((std::vector<std::string>{U(notes) + " TESSALY_E_NOTSUPPORTED", U(tone) + " S_OK", U(temp.Path(L"gone.wav")) + " HRESULT_FROM_WIN32(2)"}),
              answers);
    ASSERT_EQ(3u, answers.size());
    const CJsonValue& answered = doc["files"].items[1];
    EXPECT_NEAR(1.0, answered["duration"].number, 0.15);
    EXPECT_TRUE(answered["ok"].b && answered["audioOnly"].b);
    EXPECT_EQ(Read(tone).size(), answered["bytes"].number);
    EXPECT_EQ(2, doc["summary"]["failed"].number);

    const Result text = RunHost(kProbe + L"--no-progress " + Q(tone));
    EXPECT_EQ(0, text.exitCode) << "every file answered";
    EXPECT_NE(std::string::npos, text.output.find("1 files: 1 answered, 0 failed")) << text.output;
    const Result bad = RunHost(kProbe + L"--no-such-option");
    EXPECT_EQ(2, bad.exitCode);
    EXPECT_NE(std::string::npos, bad.errors.find("--no-such-option"));
    EXPECT_TRUE(bad.output.empty());
}

// The log's lines without time stamps, progress ticks, the engine's durations and error sentences.
std::vector<std::string> Steps(const std::string& log)
{
    std::vector<std::string> steps;
    std::istringstream stream(log);
    for (std::string line; std::getline(stream, line);)
        if (line.size() > 11 && line[0] == '[' && line.compare(11, 9, "progress ") != 0)
            steps.push_back(line.compare(11, 7, "opened ") == 0 ? "opened" + line.substr(line.find(" size="))
                                                                : line.substr(11, line.find(": ") - 11));
    return steps;
}

TEST(PlayerRun, KeysPauseResumeSeekAndSkipAFileThatCannotBeOpenedIsReportedAndTheListPlaysToItsEnd)
{
    CTempFolder temp;
    const std::wstring first = temp.CopyIn(Media(L"stereo.wma"), L"first.wma"), notes = temp.Write(L"notes.txt", "x"),
                       last = temp.CopyIn(Media(L"tone.wav"), L"last.wav");
    HWND hWnd = nullptr;
    const Result run = RunHost(kPlayer + L"--log --exit-after-complete " + Q(first) + L" " + Q(notes) + L" " + Q(last), [&] {
        for (int i = 0; i < 6000 && !(hWnd = FindWindowW(nullptr, L"first - Tessaly Player")); ++i) // a minute: a hang
            Sleep(10);
        for (WPARAM vk : {VK_SPACE, VK_SPACE, VK_LEFT, VK_NEXT}) // as the keyboard delivers them, wherever the focus is
            PostMessageW(hWnd, WM_KEYDOWN, vk, 0);
    });
    ASSERT_NE(nullptr, hWnd) << "no window named after the first file " << run.output;
    EXPECT_EQ(1, run.exitCode) << run.output << run.errors;
    EXPECT_EQ((std::vector<std::string>{"open " + U(first), "opened size=0x0 mask=0x3 result=0x00000000 S_OK", "play", "pause",
                                        "resume", "seek 0.000", "open " + U(notes),
                                        "error 0x8004A000 TESSALY_E_NOTSUPPORTED open " + U(notes), "open " + U(last),
                                        "opened size=0x0 mask=0x3 result=0x00000000 S_OK", "play", "complete " + U(last),
                                        "end files=3 errors=1"}),
              Steps(run.output))
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
