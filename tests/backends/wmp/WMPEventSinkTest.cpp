// The control's event sink as the control meets it: a COM object answering its two event
// interfaces, turning three dispatch members into messages posted to the host window.
#include <gtest/gtest.h>

#include <wmpids.h>

#include "backends/wmp/CWMPEventSink.h"
#include "base/EngineMessages.h"

namespace {

class WMPEventSink : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_hWnd = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
        ASSERT_NE(nullptr, m_hWnd);
        m_pSink = new CWMPEventSink(m_hWnd);
    }
    void TearDown() override
    {
        EXPECT_EQ(0u, m_pSink->Release());
        if (m_hWnd)
            DestroyWindow(m_hWnd);
    }

    HRESULT Fire(DISPID id, VARIANT* pArg, UINT cNamed = 0)
    {
        DISPID named = DISPID_PROPERTYPUT;
        DISPPARAMS params = {pArg, cNamed ? &named : nullptr, pArg ? 1u : 0u, cNamed};
        return m_pSink->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr);
    }

    // Every WM_WMP_EVENT waiting for the window, as (kind, value).
    std::vector<std::pair<WPARAM, LPARAM>> Posted()
    {
        std::vector<std::pair<WPARAM, LPARAM>> posted;
        MSG msg;
        while (PeekMessageW(&msg, m_hWnd, WM_WMP_EVENT, WM_WMP_EVENT, PM_REMOVE))
            posted.emplace_back(msg.wParam, msg.lParam);
        return posted;
    }

    HWND m_hWnd = nullptr;
    CWMPEventSink* m_pSink = nullptr;
};

TEST_F(WMPEventSink, StateChangesAndErrorsArePostedWithTheirValueWhateverIntegerTypeCarriesIt)
{
    VARIANT state;
    state.vt = VT_UI4; // the type this platform's control passes
    state.ulVal = 13;
    EXPECT_EQ(S_OK, Fire(DISPID_WMPCOREEVENT_OPENSTATECHANGE, &state));
    state.vt = VT_I4;
    state.lVal = 8;
    EXPECT_EQ(S_OK, Fire(DISPID_WMPCOREEVENT_PLAYSTATECHANGE, &state));
    EXPECT_EQ(S_OK, Fire(DISPID_WMPCOREEVENT_ERROR, nullptr));
    // Members of the interface that nobody here acts on are taken and post nothing.
    EXPECT_EQ(S_OK, Fire(DISPID_WMPCOREEVENT_BUFFERING, &state));
    EXPECT_EQ(S_OK, Fire(DISPID_WMPOCXEVENT_MOUSEUP, nullptr));

    const std::vector<std::pair<WPARAM, LPARAM>> expected = {
        {WMP_EVENT_OPENSTATE_CHANGED, 13}, {WMP_EVENT_PLAYSTATE_CHANGED, 8}, {WMP_EVENT_ERROR, 0}};
    EXPECT_EQ(expected, Posted());
}

TEST_F(WMPEventSink, MalformedCallsAreRefusedWithTheirOwnCodesAndPostNothing)
{
    VARIANT state;
    state.vt = VT_I4;
    state.lVal = 3;
    EXPECT_EQ(E_POINTER, m_pSink->Invoke(DISPID_WMPCOREEVENT_PLAYSTATECHANGE, IID_NULL, 0, DISPATCH_METHOD,
                                         nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(DISP_E_NONAMEDARGS, Fire(DISPID_WMPCOREEVENT_PLAYSTATECHANGE, &state, 1));
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, Fire(4999, &state));
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, Fire(DISPID_WMPOCXEVENT_MOUSEUP + 1, &state));
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, Fire(DISPID_WMPCOREEVENT_OPENSTATECHANGE, nullptr));
    state.vt = VT_DISPATCH;
    state.pdispVal = nullptr;
    EXPECT_EQ(DISP_E_TYPEMISMATCH, Fire(DISPID_WMPCOREEVENT_OPENSTATECHANGE, &state));
    EXPECT_TRUE(Posted().empty());
}

TEST_F(WMPEventSink, NothingIsPostedOnceTheHostWindowIsGone)
{
    DestroyWindow(m_hWnd);
    m_hWnd = nullptr;
    m_pSink->Error();
    m_pSink->PlayStateChange(8);
    MSG msg;
    EXPECT_FALSE(PeekMessageW(&msg, nullptr, WM_WMP_EVENT, WM_WMP_EVENT, PM_REMOVE));
}

TEST_F(WMPEventSink, AnswersBothEventInterfacesAndCountsItsReferences)
{
    IUnknown* pUnknown = nullptr;
    IDispatch* pDispatch = nullptr;
    IUnknown* pEvents = nullptr;
    IUnknown* pOcxEvents = nullptr;
    ASSERT_EQ(S_OK, m_pSink->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&pUnknown)));
    ASSERT_EQ(S_OK, m_pSink->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&pDispatch)));
    ASSERT_EQ(S_OK, m_pSink->QueryInterface(__uuidof(IWMPEvents), reinterpret_cast<void**>(&pEvents)));
    ASSERT_EQ(S_OK, m_pSink->QueryInterface(__uuidof(_WMPOCXEvents), reinterpret_cast<void**>(&pOcxEvents)));
    EXPECT_EQ(pEvents, pUnknown);
    EXPECT_EQ(static_cast<IUnknown*>(pDispatch), pOcxEvents);

    IUnknown* pOther = reinterpret_cast<IUnknown*>(0x1);
    EXPECT_EQ(E_NOINTERFACE, m_pSink->QueryInterface(IID_IConnectionPoint, reinterpret_cast<void**>(&pOther)));
    EXPECT_EQ(nullptr, pOther);
    EXPECT_EQ(E_POINTER, m_pSink->QueryInterface(IID_IUnknown, nullptr));

    EXPECT_EQ(4u, pUnknown->Release());
    EXPECT_EQ(3u, pDispatch->Release());
    EXPECT_EQ(2u, pEvents->Release());
    EXPECT_EQ(1u, pOcxEvents->Release());
}

} // namespace
