#include "hosts/probe/CJsonReport.h"

#include <cmath>
#include <cstdio>

#include "hosts/common/CResultCode.h"
#include "hosts/common/CUtf8.h"

namespace {

std::string Number(double d)
{
    if (!std::isfinite(d))
        return "null"; // JSON has no infinities, and an endless stream is possible
    char sz[64];
    snprintf(sz, sizeof(sz), "%.6f", d);
    return sz;
}

std::string Bool(bool b)
{
    return b ? "true" : "false";
}

std::string Code(HRESULT hr)
{
    return "\"result\": " + CJsonReport::Quote(CResultCode::Hex(hr)) +
           ", \"resultName\": " + CJsonReport::Quote(CResultCode::Name(hr));
}

} // namespace

std::string CJsonReport::Quote(const std::wstring& text)
{
    std::string out = "\"";
    for (const char c : CUtf8::FromWide(text))
    {
        const unsigned char uc = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            (out += '\\') += c;
        else if (uc < 0x20)
        {
            char sz[8];
            snprintf(sz, sizeof(sz), "\\u%04x", uc);
            out += sz;
        }
        else
            out += c;
    }
    return out + "\"";
}

void CJsonReport::Begin()
{
    m_write("{\"files\": [");
}

void CJsonReport::Add(const CProbeResult& result)
{
    std::string entry = m_bFirst ? "\n  {" : ",\n  {";
    m_bFirst = false;
    entry += "\"path\": " + Quote(result.path);
    entry += ", \"bytes\": " + (result.llBytes < 0 ? std::string("null") : std::to_string(result.llBytes));
    entry += ", \"ok\": " + Bool(result.Succeeded()) + ", " + Code(result.hr);
    if (result.Succeeded())
    {
        entry += ", \"duration\": " + Number(result.info.dDuration);
        entry += ", \"width\": " + std::to_string(result.info.dwWidth);
        entry += ", \"height\": " + std::to_string(result.info.dwHeight);
        entry += ", \"mask\": " + std::to_string(result.info.dwAttributeMask);
        entry += ", \"audioOnly\": " + Bool(result.Has(TESSALY_FILEINFO_AUDIO_ONLY));
        entry += ", \"seekable\": " + Bool(result.Has(TESSALY_FILEINFO_SEEKABLE));
        entry += ", \"picture\": " + Bool(result.Has(TESSALY_FILEINFO_PICTURE));
    }
    else
        entry += ", \"message\": " + Quote(CResultCode::Message(result.hr));
    m_write(entry + "}");
}

void CJsonReport::End(const CProbeSummary& summary)
{
    std::string text = m_bFirst ? "],\n" : "\n],\n";
    text += " \"summary\": {\"files\": " + std::to_string(summary.Files());
    text += ", \"succeeded\": " + std::to_string(summary.Succeeded());
    text += ", \"failed\": " + std::to_string(summary.Failed());
    text += ", \"mediaSeconds\": " + Number(summary.MediaSeconds());
    text += ", \"seconds\": " + Number(summary.Elapsed());
    text += ", \"queriesPerSecond\": " + Number(summary.QueriesPerSecond());
    text += ", \"failures\": [";
    bool bFirst = true;
    for (const auto& failure : summary.Failures())
    {
        text += bFirst ? "{" : ", {";
        bFirst = false;
        text += Code(failure.first) + ", \"count\": " + std::to_string(failure.second) + "}";
    }
    m_write(text + "]}}\n");
}
