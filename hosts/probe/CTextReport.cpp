#include "hosts/probe/CTextReport.h"

#include <cstdio>

#include "hosts/common/CResultCode.h"
#include "hosts/common/CUtf8.h"

namespace {

std::string Format(const char* pszFormat, ...) __attribute__((format(printf, 1, 2)));

std::string Format(const char* pszFormat, ...)
{
    char sz[512];
    va_list args;
    va_start(args, pszFormat);
    vsnprintf(sz, sizeof(sz), pszFormat, args);
    va_end(args);
    return sz;
}

std::string Code(HRESULT hr)
{
    return CUtf8::FromWide(CResultCode::HexAndName(hr));
}

} // namespace

std::string CTextReport::Flags(const CProbeResult& result)
{
    std::string flags;
    auto add = [&flags](const char* pszFlag) { flags += (flags.empty() ? "" : ",") + std::string(pszFlag); };
    if (result.Has(TESSALY_FILEINFO_AUDIO_ONLY))
        add("audio-only");
    if (result.Has(TESSALY_FILEINFO_SEEKABLE))
        add("seekable");
    if (result.Has(TESSALY_FILEINFO_PICTURE))
        add("picture");
    return flags.empty() ? "-" : flags;
}

void CTextReport::Begin()
{
    m_write(Format("%10s  %9s  %-26s %12s  %-36s %s\n", "duration", "size", "kind", "bytes", "result", "file"));
}

void CTextReport::Add(const CProbeResult& result)
{
    const std::string bytes = result.llBytes < 0 ? "?" : std::to_string(result.llBytes);
    const std::string path = CUtf8::FromWide(result.path);
    if (!result.Succeeded())
    {
        m_write(Format("%10s  %9s  %-26s %12s  %-36s %s: %s\n", "-", "-", "-", bytes.c_str(), Code(result.hr).c_str(),
                       path.c_str(), CUtf8::FromWide(CResultCode::Message(result.hr)).c_str()));
        return;
    }
    const std::string duration = Format("%.3f s", result.info.dDuration);
    const std::string size = result.info.dwWidth || result.info.dwHeight
                                 ? Format("%lux%lu", result.info.dwWidth, result.info.dwHeight)
                                 : "-";
    m_write(Format("%10s  %9s  %-26s %12s  %-36s %s\n", duration.c_str(), size.c_str(), Flags(result).c_str(),
                   bytes.c_str(), Code(result.hr).c_str(), path.c_str()));
}

void CTextReport::End(const CProbeSummary& summary)
{
    m_write(Format("%u files: %u answered, %u failed; %.1f s of media; %.2f s, %.1f queries per second\n",
                   summary.Files(), summary.Succeeded(), summary.Failed(), summary.MediaSeconds(), summary.Elapsed(),
                   summary.QueriesPerSecond()));
    for (const auto& failure : summary.Failures())
        m_write(Format("  %5u x %s\n", failure.second, Code(failure.first).c_str()));
}
