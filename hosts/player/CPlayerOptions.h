// What the player was asked to do, read from its command line.
#pragma once

#include <string>
#include <vector>

class CPlayerOptions
{
public:
    // False when the command line is not usable; Error() then says why.
    bool Parse(int argc, const wchar_t* const* argv);

    const std::vector<std::wstring>& Files() const { return m_files; }
    bool Log() const { return m_bLog; }
    const std::wstring& Screenshot() const { return m_screenshot; }
    double ScreenshotAfter() const { return m_dScreenshotAfter; }
    bool ExitAfterComplete() const { return m_bExitAfterComplete; }
    bool Help() const { return m_bHelp; }
    const std::wstring& Error() const { return m_error; }

    static const wchar_t* Usage();

private:
    bool TakeValue(int argc, const wchar_t* const* argv, int& i, std::wstring& value);

    std::vector<std::wstring> m_files;
    bool m_bLog = false;
    std::wstring m_screenshot;
    double m_dScreenshotAfter = 1.5;
    bool m_bExitAfterComplete = false;
    bool m_bHelp = false;
    std::wstring m_error;
};
