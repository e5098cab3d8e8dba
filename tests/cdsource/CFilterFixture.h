// What the filter's test cases share: COM on the test's thread, a filter made directly from its
// class (no registry), and a recording pin to connect it to.
#pragma once

#include <windows.h>

#include <dshow.h>

#include <gtest/gtest.h>

#include "CRecordingPin.h"
#include "cdsource/CDAudioSource.h"
#include "engine/CComPtr.h"

class CFilterFixture : public ::testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    static CComPtr<IBaseFilter> CreateFilter();
    // References held by anyone, read without changing them.
    static ULONG RefCount(IUnknown* p);

    // Connects the filter's pin to a new recording pin, made with these options.
    HRESULT ConnectRecorder(const CRecordingPin::Options& options = CRecordingPin::Options());
    // Stops the filter and takes both pins' connection down, as a graph does.
    void DisconnectRecorder();

    template <class Q>
    CComPtr<Q> Get(REFIID riid) const
    {
        CComPtr<Q> p;
        m_filter.QueryInterface(riid, p);
        return p;
    }

    CComPtr<IBaseFilter> m_filter;
    CComPtr<IPin> m_pin;
    CComPtr<IFileSourceFilter> m_source;
    CComPtr<ICDAudioSourceConfig> m_config;
    CComPtr<CRecordingPin> m_recorder;
};
