// probe PATH...: asks the Tessaly engine, through its published QueryFileInfo class only, about
// media files and prints what it answers.
#include <windows.h>

#include <memory>

#include "hosts/common/CComApartment.h"
#include "hosts/common/CResultCode.h"
#include "hosts/common/CStdOut.h"
#include "hosts/common/CUtf8.h"
#include "hosts/probe/CFileWalker.h"
#include "hosts/probe/CJsonReport.h"
#include "hosts/probe/CProbeOptions.h"
#include "hosts/probe/CProber.h"
#include "hosts/probe/CProgressMeter.h"
#include "hosts/probe/CTextReport.h"

int wmain(int argc, wchar_t** argv); // the C runtime's entry point for -municode programs

int wmain(int argc, wchar_t** argv)
{
    const CStdOut out(CStdOut::Output);
    const CStdOut err(CStdOut::Error);

    CProbeOptions options;
    if (!options.Parse(argc, argv))
    {
        err.Write("probe: " + CUtf8::FromWide(options.Error()) + "\n" + CUtf8::FromWide(CProbeOptions::Usage()));
        return 2;
    }
    if (options.Help())
    {
        out.Write(CUtf8::FromWide(CProbeOptions::Usage()));
        return 0;
    }

    CComApartment apartment;
    CProber prober;
    HRESULT hr = FAILED(apartment.Result()) ? apartment.Result() : prober.Create();
    if (FAILED(hr))
    {
        err.WriteLine("probe: cannot create the engine's QueryFileInfo object: " +
                      CUtf8::FromWide(CResultCode::HexAndName(hr) + L": " + CResultCode::Message(hr)));
        return 3;
    }

    const std::vector<CProbeTarget> targets = CFileWalker::Expand(options.Paths());
    auto write = [&out](const std::string& text) { out.Write(text); };
    std::unique_ptr<CReport> report;
    if (options.Json())
        report = std::make_unique<CJsonReport>(write);
    else
        report = std::make_unique<CTextReport>(write);

    CProgressMeter meter(err, targets.size(), options.Progress());
    CProbeSummary summary;
    LARGE_INTEGER liFrequency, liStart, liEnd;
    QueryPerformanceFrequency(&liFrequency);
    QueryPerformanceCounter(&liStart);
    report->Begin();
    for (size_t i = 0; i < targets.size(); ++i)
    {
        meter.Step(i, targets[i].path);
        const CProbeResult result = prober.Probe(targets[i]);
        summary.Add(result);
        report->Add(result);
    }
    QueryPerformanceCounter(&liEnd);
    summary.SetElapsed(static_cast<double>(liEnd.QuadPart - liStart.QuadPart) / static_cast<double>(liFrequency.QuadPart));
    meter.End();
    report->End(summary);
    return summary.Failed() ? 1 : 0;
}
