// A test back-end: answers each operation as its script says (S_OK unless scripted), records
// every call in the shared log as "<name>.<operation>(<arguments>)", and posts messages to the
// dispatcher's window as a real back-end does.
#pragma once

#include <windows.h>

#include <map>
#include <string>

#include "CCallLog.h"
#include "base/CPlayerBase.h"

// What GetFileInfo answers; the outputs are written only when bWrites is set and hr succeeds.
struct FileInfoScript
{
    HRESULT hr = S_OK;
    bool bWrites = true;
    BOOL bAudioOnly = FALSE;
    double dDuration = 0.0;
    BOOL bSeekable = TRUE;
    DWORD dwWidth = 0, dwHeight = 0;
    BOOL bPicture = FALSE;
};

std::string Narrow(LPCWSTR pwsz);
std::string Format(const char* pszFormat, ...) __attribute__((format(printf, 1, 2)));

template <class TBase>
class CScriptedBackEnd : public TBase
{
public:
    CScriptedBackEnd(CCallLog& log, const std::string& name, const LPCWSTR* ppwszExt, DWORD dwCount)
        : m_log(log), m_name(name)
    {
        this->m_ppwszFileExt = ppwszExt;
        this->m_dwFileExtCount = dwCount;
    }
    ~CScriptedBackEnd() override { Record("deleted"); }

    void Script(const std::string& operation, HRESULT hr) { m_results[operation] = hr; }
    FileInfoScript fileInfo;
    double dCurTime = 0.0;
    HWND EventHandlerWindow() const { return this->m_hEventHandlerWnd; }
    bool PostToDispatcher(UINT uMsg, WPARAM wParam = 0) const
    {
        return PostMessageW(this->m_hEventHandlerWnd, uMsg, wParam, 0) != FALSE;
    }

    HRESULT Init() override
    {
        const HRESULT hr = Answer("Init");
        this->m_bInitialized = this->m_bInitialized || SUCCEEDED(hr);
        return hr;
    }
    void Destroy() override { Record("Destroy"); }
    void Activate() override { Record("Activate"); }
    void Deactivate() override { Record("Deactivate"); }
    HRESULT SetParentWindow(HWND hWnd) override { return Answer("SetParentWindow", m_log.WindowName(hWnd)); }
    HRESULT SetParentWindowSize(DWORD dwW, DWORD dwH) override { return Answer("SetParentWindowSize", Format("%lu,%lu", dwW, dwH)); }
    HRESULT OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwFlags) override
    {
        return Answer("OpenFile", Narrow(pwszFile) + Format(",%lu,%lu", dwOpenFlags, dwFlags));
    }
    HRESULT CloseFile() override { return Answer("CloseFile"); }
    HRESULT GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable, DWORD* pdwWidth,
                        DWORD* pdwHeight, BOOL* pbPicture) override
    {
        Record("GetFileInfo");
        if (SUCCEEDED(fileInfo.hr) && fileInfo.bWrites)
        {
            *pbAudioOnly = fileInfo.bAudioOnly;
            *pdDuration = fileInfo.dDuration;
            *pbSeekable = fileInfo.bSeekable;
            *pdwWidth = fileInfo.dwWidth;
            *pdwHeight = fileInfo.dwHeight;
            *pbPicture = fileInfo.bPicture;
        }
        return fileInfo.hr;
    }
    HRESULT Play() override { return Answer("Play"); }
    HRESULT Pause() override { return Answer("Pause"); }
    HRESULT Resume() override { return Answer("Resume"); }
    HRESULT Stop() override { return Answer("Stop"); }
    HRESULT SetCurTime(double dSeconds) override { return Answer("SetCurTime", Format("%g", dSeconds)); }
    HRESULT SetPlaybackFlags(DWORD dwFlags) override { return Answer("SetPlaybackFlags", Format("0x%lx", dwFlags)); }
    HRESULT GetCurTime(double* pdSeconds) override
    {
        *pdSeconds = dCurTime;
        return Answer("GetCurTime");
    }
    void SetEventHandlerWindow(HWND hWnd) override
    {
        Record("SetEventHandlerWindow");
        TBase::SetEventHandlerWindow(hWnd);
    }
    HRESULT OnEngineNotify(WPARAM wParam, LPARAM lParam) override
    {
        return Answer("OnEngineNotify", Format("%u,%ld", static_cast<unsigned>(wParam), static_cast<long>(lParam)));
    }

protected:
    void Record(const std::string& call) { m_log.Add(m_name + "." + call); }
    // Records "<operation>" or, with arguments, "<operation>(<arguments>)".
    HRESULT Answer(const std::string& operation, const std::string& arguments = "")
    {
        Record(arguments.empty() ? operation : operation + "(" + arguments + ")");
        const auto found = m_results.find(operation);
        return found == m_results.end() ? S_OK : found->second;
    }

    CCallLog& m_log;
    std::string m_name;
    std::map<std::string, HRESULT> m_results;
};
