// A host's event sink as a real COM object: it records every event it receives in a log shared
// with other sinks (so the order across sinks shows), answers with a chosen result, and can run
// a step of the test from inside an event, as a host's sink would.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "engine/TessalyContract.h"

class CRecordingSink : public IPlayCDEvents
{
public:
    struct Entry { std::string sink, event; double dProgress; TESSALY_PLAYBACK_STATE state; HRESULT hrError; };

    CRecordingSink(std::string name, std::vector<Entry>* pLog, bool bAnswersCDEvents = true)
        : m_name(std::move(name)), m_pLog(pLog), m_bAnswersCDEvents(bAnswersCDEvents) {}
    virtual ~CRecordingSink() = default;

    HRESULT answer = S_OK;               // what every event method returns
    std::function<void(const char*)> onEvent; // runs inside the event, after it is logged
    bool bAnswersPlayEvents = true;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override
    {
        if (!ppv)
            return E_POINTER;
        if (riid == IID_IUnknown || (riid == IID_IPlayEvents && bAnswersPlayEvents) ||
            (riid == IID_IPlayCDEvents && m_bAnswersCDEvents))
        {
            *ppv = static_cast<IPlayCDEvents*>(this);
            AddRef();
            return S_OK;
        }
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&m_lRef)); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(InterlockedDecrement(&m_lRef)); }

    STDMETHODIMP OnPlayComplete() override { return Record("complete", 0.0, Playback_State_Busy, S_OK); }
    STDMETHODIMP OnPlayError(HRESULT hrError) override { return Record("error", 0.0, Playback_State_Busy, hrError); }
    STDMETHODIMP OnPlayProgress(double dProgress, TESSALY_PLAYBACK_STATE state) override
    {
        return Record("progress", dProgress, state, S_OK);
    }
    STDMETHODIMP OnPlayTrackComplete() override { return Record("track", 0.0, Playback_State_Busy, S_OK); }

    // References held by others: the sink starts with one of its own.
    LONG OutsideRefs() const { return m_lRef - 1; }
    DWORD Cookie() const { return static_cast<DWORD>(reinterpret_cast<UINT_PTR>(static_cast<const IPlayCDEvents*>(this))); }

private:
    HRESULT Record(const char* pszEvent, double dProgress, TESSALY_PLAYBACK_STATE state, HRESULT hrError)
    {
        m_pLog->push_back({m_name, pszEvent, dProgress, state, hrError});
        if (onEvent)
            onEvent(pszEvent);
        return answer;
    }

    std::string m_name;
    std::vector<Entry>* m_pLog;
    bool m_bAnswersCDEvents;
    LONG m_lRef = 1;
};
