// A Windows Media metadata editor for headers this platform's stub editor cannot read: it answers
// the device-conformance question as told and logs what the engine asks of it.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "backends/dshow/WMFormatInterfaces.h"

class CFakeMetadataEditor : public wmf::IWMMetadataEditor2, public IWMHeaderInfo3
{
public:
    struct Options
    {
        bool bOffersEditor2 = true;   // else only the first editor interface, opened with Open
        HRESULT hrOpen = S_OK;
        WORD wTemplateCount = 0;      // values of DeviceConformanceTemplate in the header
    };

    static HRESULT Create(const Options& options, std::vector<std::string>* pLog,
                          IWMMetadataEditor** ppEditor);

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_cRef; }
    ULONG STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE Open(const WCHAR* pwszFile) override;
    HRESULT STDMETHODCALLTYPE Close() override;
    HRESULT STDMETHODCALLTYPE Flush() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OpenEx(LPCWSTR pwszFile, DWORD dwAccess, DWORD dwShare) override;

    HRESULT STDMETHODCALLTYPE GetAttributeIndices(WORD wStream, LPCWSTR pwszName, WORD* pwLanguage,
                                                  WORD* pwIndices, WORD* pwCount) override;

    // Nothing else of the header is asked for.
    HRESULT STDMETHODCALLTYPE GetAttributeCount(WORD, WORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetAttributeByIndex(WORD, WORD*, WCHAR*, WORD*, WMT_ATTR_DATATYPE*, BYTE*,
                                                  WORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetAttributeByName(WORD*, LPCWSTR, WMT_ATTR_DATATYPE*, BYTE*, WORD*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetAttribute(WORD, LPCWSTR, WMT_ATTR_DATATYPE, const BYTE*, WORD) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetMarkerCount(WORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMarker(WORD, WCHAR*, WORD*, QWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE AddMarker(LPCWSTR_WMSDK_TYPE_SAFE, QWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RemoveMarker(WORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetScriptCount(WORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetScript(WORD, WCHAR*, WORD*, WCHAR*, WORD*, QWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE AddScript(LPCWSTR_WMSDK_TYPE_SAFE, LPCWSTR_WMSDK_TYPE_SAFE, QWORD) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE RemoveScript(WORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetCodecInfoCount(DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetCodecInfo(DWORD, WORD*, WCHAR*, WORD*, WCHAR*, WMT_CODEC_INFO_TYPE*, WORD*,
                                           BYTE*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetAttributeCountEx(WORD, WORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetAttributeByIndexEx(WORD, WORD, LPWSTR, WORD*, WMT_ATTR_DATATYPE*, WORD*,
                                                    BYTE*, DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ModifyAttribute(WORD, WORD, WMT_ATTR_DATATYPE, WORD, const BYTE*, DWORD) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE AddAttribute(WORD, LPCWSTR, WORD*, WMT_ATTR_DATATYPE, WORD, const BYTE*,
                                           DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeleteAttribute(WORD, WORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE AddCodecInfo(LPCWSTR_WMSDK_TYPE_SAFE, LPCWSTR_WMSDK_TYPE_SAFE,
                                           WMT_CODEC_INFO_TYPE, WORD, BYTE*) override { return E_NOTIMPL; }

private:
    CFakeMetadataEditor(const Options& options, std::vector<std::string>* pLog)
        : m_options(options), m_pLog(pLog)
    {
    }
    virtual ~CFakeMetadataEditor() = default;

    ULONG m_cRef = 1;
    Options m_options;
    std::vector<std::string>* m_pLog;
};
