// Ranges of a disc image played end to end through the dispatcher: the image stands for drive T,
// the CD back-end measures it through the image's device answers, and the range plays through
// our CD audio source filter into the platform's audio renderer.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "CClassObjectRegistration.h"
#include "CDiscImageWriter.h"
#include "CImageFolder.h"
#include "CPlaybackHost.h"
#include "cdimage/CDiscImageSetting.h"
#include "cdsource/CCDSourceServer.h"
#include "cdsource/CDAudioSource.h"
#include "engine/CComPtr.h"
#include "tests/support/CProcessCounts.h"

namespace {

const WCHAR kDrive = L'T';
const ULONGLONG kSectorBytes = 2352;

std::wstring Wide(const std::string& text)
{
    const int cch = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, nullptr, 0);
    std::wstring result(static_cast<size_t>(cch), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, &result[0], cch);
    result.resize(static_cast<size_t>(cch - 1));
    return result;
}

// About a second a track, of lengths that round to different whole seconds: 1 s, 1.6 s, 0.53 s.
std::vector<CDiscImageWriter::Track> Disc()
{
    return {{440.0, 75}, {660.0, 120}, {880.0, 40}};
}

class CDDAPlayback : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        m_pHost.reset(new CPlaybackHost);
        // Each filter the engine creates is kept, to ask it what reached the renderer.
        m_pRegistration.reset(new CClassObjectRegistration(CLSID_TessalyCDAudioSource, [this](REFIID riid, void** ppv) {
            CComPtr<IClassFactory> factory;
            HRESULT hr = CCDSourceServer::GetClassObject(CLSID_TessalyCDAudioSource, IID_IClassFactory, factory.Out());
            if (FAILED(hr))
                return hr;
            hr = factory->CreateInstance(nullptr, riid, ppv);
            if (SUCCEEDED(hr))
                m_filters.push_back(CComPtr<IUnknown>(static_cast<IUnknown*>(*ppv)));
            return hr;
        }));
        ASSERT_EQ(S_OK, m_pRegistration->Registered());
        ASSERT_EQ(S_OK, m_pHost->Player().Init(L""));
    }
    void TearDown() override
    {
        m_pHost.reset();
        m_filters.clear();
        m_pRegistration.reset();
        CDiscImageSetting::Clear(kDrive);
        CoUninitialize();
    }
    void UseImage(const std::vector<CDiscImageWriter::Track>& tracks)
    {
        const std::string cue = CDiscImageWriter::Write(m_folder.Path(), "disc", tracks);
        ASSERT_FALSE(cue.empty());
        ASSERT_EQ(ERROR_SUCCESS, CDiscImageSetting::Set(kDrive, Wide(cue)));
    }
    ULONGLONG Delivered()
    {
        CComPtr<ICDAudioSourceConfig> config;
        ULONGLONG cb = 0;
        if (m_filters.size() != 1 || FAILED(m_filters.front().QueryInterface(IID_ICDAudioSourceConfig, config)) ||
            FAILED(config->GetDeliveredBytes(&cb)))
            ADD_FAILURE() << "one source filter, asked " << m_filters.size();
        return cb;
    }
    double Duration()
    {
        double dDuration = -1.0;
        EXPECT_EQ(S_OK, m_pHost->Player().GetCDDuration(&dDuration));
        return dDuration;
    }
    // The event codes in order, progress left out.
    std::vector<DWORD> Milestones() const
    {
        std::vector<DWORD> codes;
        for (const CPlaybackHost::Event& e : m_pHost->events)
            if (e.dwCode != STREAMING_EVENT_PROGRESS)
                codes.push_back(e.dwCode);
        return codes;
    }
    const CPlaybackHost::Event* First(DWORD dwCode) const
    {
        for (const CPlaybackHost::Event& e : m_pHost->events)
            if (e.dwCode == dwCode)
                return &e;
        return nullptr;
    }

    CImageFolder m_folder;
    std::unique_ptr<CPlaybackHost> m_pHost;
    std::unique_ptr<CClassObjectRegistration> m_pRegistration;
    std::vector<CComPtr<IUnknown>> m_filters;
};

// The last track's own notice comes only when a progress reading sees the stream past its end
// before the end of the range is reported, so it may or may not precede the completion.
void ExpectTracksThenCompletion(const std::vector<DWORD>& milestones, size_t nTracks)
{
    ASSERT_GE(milestones.size(), nTracks);
    ASSERT_LE(milestones.size(), nTracks + 1);
    for (size_t i = 0; i + 1 < milestones.size(); ++i)
        EXPECT_EQ(static_cast<DWORD>(STREAMING_EVENT_TRACK_COMPLETE), milestones[i]) << i;
    EXPECT_EQ(static_cast<DWORD>(STREAMING_EVENT_COMPLETE), milestones.back());
}

TEST_F(CDDAPlayback, AWholeRangePlaysTrackAfterTrackInRealTimeAndEveryByteReachesTheRenderer)
{
    UseImage(Disc());
    ASSERT_EQ(S_OK, m_pHost->Player().OpenCD(kDrive, 1, 3));
    EXPECT_EQ(1.0, Duration());
    const ULONGLONG start = GetTickCount64();
    ASSERT_EQ(S_OK, m_pHost->Player().Play());
    ASSERT_TRUE(m_pHost->PumpUntil([&] { return First(STREAMING_EVENT_COMPLETE) != nullptr; }, 15000));
    ExpectTracksThenCompletion(Milestones(), 3);
    const CPlaybackHost::Event* pFirstTrack = First(STREAMING_EVENT_TRACK_COMPLETE);
    ASSERT_NE(nullptr, pFirstTrack);
    std::printf("track 1 ended after %llu ms, the range after %llu ms (1000 and 3533 of audio)\n",
                pFirstTrack->tick - start, First(STREAMING_EVENT_COMPLETE)->tick - start);
    EXPECT_GE(pFirstTrack->tick - start, 900u) << "a track ends no sooner than its sound";
    // The platform's renderer reports the end with up to half a second of sound still queued.
    EXPECT_GE(First(STREAMING_EVENT_COMPLETE)->tick - start, 3000u);
    EXPECT_EQ((75u + 120u + 40u) * kSectorBytes, Delivered());
}

TEST_F(CDDAPlayback, ARangeFromTheSecondTrackStartsThere)
{
    UseImage(Disc());
    ASSERT_EQ(S_OK, m_pHost->Player().OpenCD(kDrive, 2, 3));
    EXPECT_EQ(2.0, Duration()) << "track 2 is current (1.6 s)";
    ASSERT_EQ(S_OK, m_pHost->Player().Play());
    ASSERT_TRUE(m_pHost->PumpUntil([&] { return First(STREAMING_EVENT_COMPLETE) != nullptr; }, 15000));
    ExpectTracksThenCompletion(Milestones(), 2);
    EXPECT_EQ((120u + 40u) * kSectorBytes, Delivered());
}

TEST_F(CDDAPlayback, PauseHoldsThePositionAndPlayGoesOnToTheEnd)
{
    UseImage(Disc());
    ASSERT_EQ(S_OK, m_pHost->Player().OpenCD(kDrive, 1, 3));
    ASSERT_EQ(S_OK, m_pHost->Player().Play());
    m_pHost->PumpFor(500);
    ASSERT_EQ(S_OK, m_pHost->Player().Pause());
    m_pHost->PumpFor(100);
    const std::vector<double> paused = m_pHost->Progress();
    m_pHost->PumpFor(400);
    const std::vector<double> later = m_pHost->Progress();
    ASSERT_FALSE(later.empty());
    EXPECT_NEAR(paused.back(), later.back(), 0.05) << "no time passes while paused";
    ASSERT_EQ(S_OK, m_pHost->Player().Play());
    ASSERT_TRUE(m_pHost->PumpUntil([&] { return First(STREAMING_EVENT_COMPLETE) != nullptr; }, 15000));
    ExpectTracksThenCompletion(Milestones(), 3);
}

TEST_F(CDDAPlayback, RangesTheImageCannotPlayAreRefusedOrPlayNothing)
{
    UseImage(Disc());
    EXPECT_EQ(1, m_pHost->Player().OpenCD(kDrive, 3, 1)) << "reversed";
    // Tracks the disc does not have measure 0 s; the range opens, and plays nothing.
    for (WORD wTrack : {0, 4})
    {
        SCOPED_TRACE(wTrack);
        m_pHost->events.clear();
        EXPECT_EQ(S_OK, m_pHost->Player().OpenCD(kDrive, wTrack, wTrack));
        EXPECT_EQ(0.0, Duration());
        m_pHost->Player().Play();
        m_pHost->PumpFor(1500);
        EXPECT_EQ(0u, Delivered());
    }
}

TEST_F(CDDAPlayback, DamagedImagesAreRefused)
{
    std::vector<CDiscImageWriter::Track> tracks = Disc();
    UseImage(tracks);
    m_folder.Resize("disc.bin", 75 * kSectorBytes);
    EXPECT_EQ(1, m_pHost->Player().OpenCD(kDrive, 1, 3)) << "truncated inside track 1";
    m_folder.Remove("disc.bin");
    EXPECT_EQ(1, m_pHost->Player().OpenCD(kDrive, 1, 1)) << "the .bin is missing";
}

TEST_F(CDDAPlayback, ADataTrackInTheRangePlaysAsSilenceOfItsLength)
{
    std::vector<CDiscImageWriter::Track> tracks = Disc();
    tracks[1].bAudio = false;
    UseImage(tracks);
    ASSERT_EQ(S_OK, m_pHost->Player().OpenCD(kDrive, 1, 3));
    ASSERT_EQ(S_OK, m_pHost->Player().Play());
    ASSERT_TRUE(m_pHost->PumpUntil([&] { return First(STREAMING_EVENT_COMPLETE) != nullptr; }, 15000));
    ExpectTracksThenCompletion(Milestones(), 3);
    EXPECT_EQ((75u + 120u + 40u) * kSectorBytes, Delivered());
}

// Figures are printed; the limits catch a leak per cycle, not the platform's noise.
TEST_F(CDDAPlayback, AHundredOpensOfARangeLeaveHandlesAndMemoryFlat)
{
    UseImage(Disc());
    for (int i = 0; i < 5; ++i)
        ASSERT_EQ(S_OK, m_pHost->Player().OpenCD(kDrive, 1, 3));
    m_pHost->PumpFor(100);
    const CProcessCounts before = CProcessCounts::Take();
    for (int i = 0; i < 100; ++i)
    {
        ASSERT_EQ(S_OK, m_pHost->Player().OpenCD(kDrive, 1 + i % 2, 3)) << "cycle " << i;
        ASSERT_EQ(S_OK, m_pHost->Player().CloseFile());
    }
    m_pHost->PumpFor(200);
    const CProcessCounts growth = CProcessCounts::Take() - before;
    growth.Print("after 100 range opens and closes");
    EXPECT_LT(growth.lHandles, 30);
    EXPECT_LT(growth.lThreads, 3);
    EXPECT_LT(growth.lPrivateKb, 8 * 1024);
}

} // namespace
