// The track text Load takes, and the range it becomes: which tracks, how long, what is read where,
// and the time arithmetic of sectors.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "cdsource/CTrackRange.h"
#include "cdsource/CTrackSpec.h"

namespace {

const HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);

TEST(TrackSpec, OneTrackOrARangeOnAnyDriveLetter)
{
    CTrackSpec spec;
    ASSERT_EQ(S_OK, spec.Parse(L"D/3"));
    EXPECT_EQ(L'D', spec.Drive());
    EXPECT_EQ(3, spec.First());
    EXPECT_EQ(3, spec.Last());

    ASSERT_EQ(S_OK, spec.Parse(L"e/3-7"));
    EXPECT_EQ(L'E', spec.Drive()); // lower case letters stand for the same drive
    EXPECT_EQ(3, spec.First());
    EXPECT_EQ(7, spec.Last());

    ASSERT_EQ(S_OK, spec.Parse(L"Z/1-99"));
    EXPECT_EQ(1, spec.First());
    EXPECT_EQ(99, spec.Last());
    ASSERT_EQ(S_OK, spec.Parse(L"a/05-05"));
    EXPECT_EQ(L'A', spec.Drive());
    EXPECT_EQ(5, spec.First());
    EXPECT_EQ(5, spec.Last());
}

TEST(TrackSpec, TextOfAnyOtherShapeIsInvalidAndChangesNothing)
{
    CTrackSpec spec;
    ASSERT_EQ(S_OK, spec.Parse(L"D/2-4"));
    for (LPCWSTR pwsz : {L"", L"D", L"D/", L"D3", L"D:/3", L"D:3", L"1/3", L"@/3", L"[/3", L"D/0", L"D/100",
                         L"D/003", L"D/3-", L"D/-3", L"D/3-0", L"D/3-100", L"D/3 ", L" D/3", L"D/3-7x", L"D/3--7",
                         L"D/3,4", L"D\\3", L"DD/3", L"D/+3", L"D/3-7-9"})
    {
        EXPECT_EQ(E_INVALIDARG, spec.Parse(pwsz)) << "\"" << std::wstring(pwsz).size() << " chars\"";
        EXPECT_EQ(L'D', spec.Drive());
        EXPECT_EQ(2, spec.First());
        EXPECT_EQ(4, spec.Last());
    }
    EXPECT_EQ(E_INVALIDARG, spec.Parse(nullptr));
}

TEST(TrackSpec, ARangeThatRunsBackwardsIsNotFound)
{
    CTrackSpec spec;
    EXPECT_EQ(kNotFound, spec.Parse(L"D/7-3"));
    EXPECT_EQ(kNotFound, spec.Parse(L"D/2-1"));
    EXPECT_EQ(0, spec.First());
}

// Sectors carry their track index and their offset in the track, so a read from the wrong place shows.
class CPatternReader : public CCDReader
{
public:
    explicit CPatternReader(const std::vector<Track>& tracks) { m_tracks = tracks; }

    HRESULT ReadAudio(size_t nIndex, uint32_t ulSector, uint32_t ulCount, uint8_t* pBuffer) override
    {
        calls.push_back({nIndex, ulSector, ulCount});
        if (FAILED(hrFail))
            return hrFail;
        for (uint32_t i = 0; i < ulCount; ++i)
            Fill(nIndex, ulSector + i, pBuffer + static_cast<size_t>(i) * kSectorBytes);
        return S_OK;
    }

    static void Fill(size_t nIndex, uint32_t ulSector, uint8_t* pSector)
    {
        for (uint32_t b = 0; b < kSectorBytes; ++b)
            pSector[b] = static_cast<uint8_t>(1 + nIndex * 31 + ulSector * 7 + b);
    }

    struct Call
    {
        size_t nIndex;
        uint32_t ulSector;
        uint32_t ulCount;
    };
    std::vector<Call> calls;
    HRESULT hrFail = S_OK;
};

std::vector<CCDReader::Track> Disc()
{
    // Tracks 1, 2 (data), 3, 5: a disc may skip numbers.
    return {{1, true, 0, 10}, {2, false, 10, 4}, {3, true, 14, 6}, {5, true, 20, 3}};
}

TEST(TrackRange, TakesTheTracksBetweenItsEndsWhenTheDiscHasBoth)
{
    CTrackRange range;
    ASSERT_EQ(S_OK, range.Select(Disc(), 1, 1));
    EXPECT_EQ(10u, range.Sectors());
    EXPECT_EQ(10u * 2352, range.Bytes());
    ASSERT_EQ(S_OK, range.Select(Disc(), 2, 5));
    EXPECT_EQ(4u + 6 + 3, range.Sectors());
    ASSERT_EQ(S_OK, range.Select(Disc(), 1, 5));
    EXPECT_EQ(23u, range.Sectors());

    // A missing end, or a backwards range, leaves the range as it was.
    EXPECT_EQ(kNotFound, range.Select(Disc(), 4, 5));
    EXPECT_EQ(kNotFound, range.Select(Disc(), 1, 4));
    EXPECT_EQ(kNotFound, range.Select(Disc(), 6, 6));
    EXPECT_EQ(kNotFound, range.Select(Disc(), 0, 1));
    EXPECT_EQ(kNotFound, range.Select(Disc(), 3, 1));
    EXPECT_EQ(kNotFound, range.Select({}, 1, 1));
    EXPECT_EQ(23u, range.Sectors());
}

TEST(TrackRange, ReadsAcrossTracksAndPlaysADataTrackAsSilence)
{
    CPatternReader reader(Disc());
    CTrackRange range;
    ASSERT_EQ(S_OK, range.Select(reader.Tracks(), 1, 3));
    // From two sectors before the end of track 1, through the data track, into track 3.
    std::vector<uint8_t> buffer(8 * 2352, 0xEE);
    ASSERT_EQ(S_OK, range.Read(reader, 8, 8, buffer.data()));

    ASSERT_EQ(2u, reader.calls.size()); // the data track is never read
    EXPECT_EQ(0u, reader.calls[0].nIndex);
    EXPECT_EQ(8u, reader.calls[0].ulSector);
    EXPECT_EQ(2u, reader.calls[0].ulCount);
    EXPECT_EQ(2u, reader.calls[1].nIndex);
    EXPECT_EQ(0u, reader.calls[1].ulSector);
    EXPECT_EQ(2u, reader.calls[1].ulCount);

    std::vector<uint8_t> expected(8 * 2352, 0);
    CPatternReader::Fill(0, 8, &expected[0]);
    CPatternReader::Fill(0, 9, &expected[2352]);
    CPatternReader::Fill(2, 0, &expected[6 * 2352]);
    CPatternReader::Fill(2, 1, &expected[7 * 2352]);
    EXPECT_TRUE(expected == buffer);
}

TEST(TrackRange, ReadsNothingPastItsEndAndPassesReaderFailuresOn)
{
    CPatternReader reader(Disc());
    CTrackRange range;
    ASSERT_EQ(S_OK, range.Select(reader.Tracks(), 3, 5));
    std::vector<uint8_t> buffer(10 * 2352);
    EXPECT_EQ(E_INVALIDARG, range.Read(reader, 8, 2, buffer.data()));
    EXPECT_EQ(E_INVALIDARG, range.Read(reader, 10, 1, buffer.data()));
    EXPECT_TRUE(reader.calls.empty());
    EXPECT_EQ(S_OK, range.Read(reader, 7, 2, buffer.data())); // the last two sectors
    ASSERT_EQ(1u, reader.calls.size());
    EXPECT_EQ(3u, reader.calls[0].nIndex);
    EXPECT_EQ(1u, reader.calls[0].ulSector);

    reader.hrFail = HRESULT_FROM_WIN32(ERROR_READ_FAULT);
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_READ_FAULT), range.Read(reader, 0, 1, buffer.data()));
}

TEST(TrackRange, SectorTimesRoundTripAndTimesInsideASectorMeanThatSector)
{
    EXPECT_EQ(0, CTrackRange::TimeOf(0));
    EXPECT_EQ(133333, CTrackRange::TimeOf(1));
    EXPECT_EQ(10000000, CTrackRange::TimeOf(75));
    EXPECT_EQ(30000000, CTrackRange::TimeOf(225));
    for (uint32_t ul : {0u, 1u, 2u, 74u, 75u, 76u, 224u, 225u, 333333u, 449999u})
        EXPECT_EQ(ul, CTrackRange::SectorAt(CTrackRange::TimeOf(ul))) << ul;
    EXPECT_EQ(0u, CTrackRange::SectorAt(133332 - 100)); // well inside the first sector
    EXPECT_EQ(1u, CTrackRange::SectorAt(266665));       // just before sector 2 begins
    EXPECT_EQ(37u, CTrackRange::SectorAt(5000000));     // half a second: 37.5 sectors
    EXPECT_EQ(0u, CTrackRange::SectorAt(-5));
    EXPECT_EQ(0xFFFFFFFFu, CTrackRange::SectorAt(0x7FFFFFFFFFFFFFFFLL)); // "the end" without overflow
}

} // namespace
