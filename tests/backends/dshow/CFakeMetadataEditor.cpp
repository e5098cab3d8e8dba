#include "CFakeMetadataEditor.h"

#include "CTestMedia.h"

HRESULT CFakeMetadataEditor::Create(const Options& options, std::vector<std::string>* pLog,
                                    IWMMetadataEditor** ppEditor)
{
    *ppEditor = new CFakeMetadataEditor(options, pLog);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CFakeMetadataEditor::QueryInterface(REFIID riid, void** ppv)
{
    *ppv = nullptr;
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, wmf::IID_IWMMetadataEditor))
        *ppv = static_cast<IWMMetadataEditor*>(this);
    else if (IsEqualIID(riid, wmf::IID_IWMMetadataEditor2) && m_options.bOffersEditor2)
        *ppv = static_cast<wmf::IWMMetadataEditor2*>(this);
    else if (IsEqualIID(riid, wmf::IID_IWMHeaderInfo) || IsEqualIID(riid, wmf::IID_IWMHeaderInfo3))
        *ppv = static_cast<IWMHeaderInfo3*>(this);
    if (!*ppv)
        return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

ULONG STDMETHODCALLTYPE CFakeMetadataEditor::Release()
{
    const ULONG cRef = --m_cRef;
    if (cRef == 0)
        delete this;
    return cRef;
}

HRESULT STDMETHODCALLTYPE CFakeMetadataEditor::Open(const WCHAR* pwszFile)
{
    m_pLog->push_back("Open(" + CTestMedia::Narrow(pwszFile) + ")");
    return m_options.hrOpen;
}

HRESULT STDMETHODCALLTYPE CFakeMetadataEditor::OpenEx(LPCWSTR pwszFile, DWORD dwAccess, DWORD dwShare)
{
    m_pLog->push_back("OpenEx(" + CTestMedia::Narrow(pwszFile) + ", " +
                      (dwAccess == GENERIC_READ ? "GENERIC_READ" : std::to_string(dwAccess)) + ", " +
                      (dwShare == FILE_SHARE_READ ? "FILE_SHARE_READ" : std::to_string(dwShare)) + ")");
    return m_options.hrOpen;
}

HRESULT STDMETHODCALLTYPE CFakeMetadataEditor::Close()
{
    m_pLog->push_back("Close");
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CFakeMetadataEditor::GetAttributeIndices(WORD wStream, LPCWSTR pwszName,
                                                                   WORD* pwLanguage, WORD* pwIndices,
                                                                   WORD* pwCount)
{
    m_pLog->push_back("GetAttributeIndices(" + std::to_string(wStream) + ", " + CTestMedia::Narrow(pwszName) +
                      (pwLanguage || pwIndices ? ", with buffers)" : ")"));
    *pwCount = m_options.wTemplateCount;
    return S_OK;
}
