#include "CFilterFixture.h"

#include "cdsource/CCDAudioSource.h"
#include "engine/CComCreator.h"

void CFilterFixture::SetUp()
{
    ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    m_filter = CreateFilter();
    ASSERT_TRUE(m_filter);
    ASSERT_EQ(S_OK, m_filter->FindPin(L"Output", &m_pin));
    ASSERT_EQ(S_OK, m_filter.QueryInterface(IID_IFileSourceFilter, m_source));
    ASSERT_EQ(S_OK, m_filter.QueryInterface(IID_ICDAudioSourceConfig, m_config));
}

void CFilterFixture::TearDown()
{
    if (m_recorder)
        DisconnectRecorder();
    m_config.Reset();
    m_source.Reset();
    m_pin.Reset();
    if (m_filter)
    {
        // Every reference the case took is back: this one is the last.
        EXPECT_EQ(0u, m_filter.Detach()->Release());
    }
    CoUninitialize();
}

CComPtr<IBaseFilter> CFilterFixture::CreateFilter()
{
    CComPtr<IBaseFilter> filter;
    EXPECT_EQ(S_OK, CComCreator<CCDAudioSource>::CreateInstance(nullptr, IID_IBaseFilter, filter.Out()));
    return filter;
}

ULONG CFilterFixture::RefCount(IUnknown* p)
{
    p->AddRef();
    return p->Release();
}

HRESULT CFilterFixture::ConnectRecorder(const CRecordingPin::Options& options)
{
    m_recorder.Attach(new CRecordingPin(options));
    return m_pin->Connect(static_cast<IPin*>(m_recorder.Get()), nullptr);
}

void CFilterFixture::DisconnectRecorder()
{
    m_recorder->Unblock();
    EXPECT_EQ(S_OK, m_filter->Stop());
    m_pin->Disconnect();
    m_recorder->Disconnect();
    m_recorder->ReleaseSamples();
    EXPECT_EQ(1, m_recorder->Refs());
    m_recorder.Reset();
}
