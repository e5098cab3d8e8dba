// What the probe was asked to do, read from its command line.
#pragma once

#include <string>
#include <vector>

class CProbeOptions
{
public:
    // False when the command line is not usable; Error() then says why.
    bool Parse(int argc, const wchar_t* const* argv);

    const std::vector<std::wstring>& Paths() const { return m_paths; }
    bool Json() const { return m_bJson; }
    bool Progress() const { return m_bProgress; }
    bool Help() const { return m_bHelp; }
    const std::wstring& Error() const { return m_error; }

    static const wchar_t* Usage();

private:
    std::vector<std::wstring> m_paths;
    bool m_bJson = false;
    bool m_bProgress = true;
    bool m_bHelp = false;
    std::wstring m_error;
};
