#include "hosts/probe/CProber.h"

#include <objbase.h>

HRESULT CProber::Create()
{
    return CoCreateInstance(CLSID_QueryFileInfo, nullptr, CLSCTX_INPROC_SERVER, IID_IQueryFileInfo, &m_query);
}

CProbeResult CProber::Probe(const CProbeTarget& target)
{
    CProbeResult result;
    result.path = target.path;
    result.hr = target.hrFound;

    WIN32_FILE_ATTRIBUTE_DATA data;
    if (GetFileAttributesExW(target.path.c_str(), GetFileExInfoStandard, &data))
        result.llBytes = (static_cast<long long>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;

    if (FAILED(result.hr))
        return result;
    if (!m_query)
    {
        result.hr = E_POINTER;
        return result;
    }
    // The engine fills the record only on success; a failure leaves the zeroed one.
    std::wstring path = target.path;
    result.hr = m_query->GetFileInfo(&path[0], &result.info);
    if (FAILED(result.hr))
        result.info = {};
    return result;
}
