// The two readers behind the filter: a disc image (with the exact failure codes of a damaged one)
// and a drive (its table of contents arithmetic and its read-error policy, with a test double
// standing in for the device), and the choice between them by drive letter.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "CDiscImageWriter.h"
#include "CImageDrive.h"
#include "CImageFolder.h"
#include "cdimage/CDiscImageSetting.h"
#include "cdsource/CDAudioSource.h"
#include "cdsource/CDiscImageReader.h"
#include "cdsource/CDriveReader.h"

namespace {

const HRESULT kFileNotFound = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
const HRESULT kHandleEof = HRESULT_FROM_WIN32(ERROR_HANDLE_EOF);
const HRESULT kBadFormat = HRESULT_FROM_WIN32(ERROR_BAD_FORMAT);
const HRESULT kReadFault = HRESULT_FROM_WIN32(ERROR_READ_FAULT);

std::wstring Wide(const std::string& utf8)
{
    std::wstring wide(utf8.size() + 1, L'\0');
    const int cch = MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), -1, &wide[0], static_cast<int>(wide.size()));
    wide.resize(cch > 0 ? static_cast<size_t>(cch - 1) : 0);
    return wide;
}

std::vector<int16_t> LeftOf(const std::vector<uint8_t>& bytes)
{
    std::vector<int16_t> left;
    for (size_t b = 0; b + 3 < bytes.size(); b += 4)
        left.push_back(static_cast<int16_t>(bytes[b] | (bytes[b + 1] << 8)));
    return left;
}

TEST(DiscImageReader, MeasuresTheTracksAndReadsTheirSamples)
{
    CImageFolder folder;
    std::vector<CDiscImageWriter::Track> tracks = CDiscImageWriter::ThreeTones();
    tracks.insert(tracks.begin() + 1, CDiscImageWriter::Track{0.0, 30, false});
    const std::string cue = CDiscImageWriter::Write(folder.Path(), "disc", tracks);
    ASSERT_FALSE(cue.empty());

    CDiscImageReader reader;
    ASSERT_EQ(S_OK, reader.Open(Wide(cue)));
    ASSERT_EQ(4u, reader.Tracks().size());
    const uint32_t ulFirst[] = {0, 75, 105, 195};
    for (size_t i = 0; i < 4; ++i)
    {
        EXPECT_EQ(static_cast<int>(i + 1), reader.Tracks()[i].nNumber);
        EXPECT_EQ(tracks[i].bAudio, reader.Tracks()[i].bAudio);
        EXPECT_EQ(tracks[i].ulSectors, reader.Tracks()[i].ulSectors);
        EXPECT_EQ(ulFirst[i], reader.Tracks()[i].ulFirstSector);
    }

    // Track 3 (660 Hz), sectors 10 and 11.
    std::vector<uint8_t> buffer(2 * 2352);
    ASSERT_EQ(S_OK, reader.ReadAudio(2, 10, 2, buffer.data()));
    const std::vector<int16_t> left = LeftOf(buffer);
    for (size_t n = 0; n < left.size(); ++n)
        ASSERT_EQ(CDiscImageWriter::Sample(tracks[2], 10 * 588 + n), left[n]) << n;
    // The data track is not audio, and nothing lies past a track's end.
    EXPECT_EQ(kReadFault, reader.ReadAudio(1, 0, 1, buffer.data()));
    EXPECT_EQ(kReadFault, reader.ReadAudio(0, 74, 2, buffer.data()));
    EXPECT_EQ(E_INVALIDARG, reader.ReadAudio(4, 0, 1, buffer.data()));
}

TEST(DiscImageReader, DamagedImagesFailWithTheirOwnCodes)
{
    CImageFolder folder;
    const std::string cue = CDiscImageWriter::Write(folder.Path(), "disc", CDiscImageWriter::ThreeTones());
    ASSERT_FALSE(cue.empty());

    EXPECT_EQ(kFileNotFound, CDiscImageReader().Open(Wide(folder.Path("absent.cue"))));

    // The last track begins exactly where the file now ends.
    folder.Resize("disc.bin", 165ull * 2352);
    EXPECT_EQ(kHandleEof, CDiscImageReader().Open(Wide(cue)));
    folder.Resize("disc.bin", 100ull * 2352);
    EXPECT_EQ(kHandleEof, CDiscImageReader().Open(Wide(cue)));

    folder.Remove("disc.bin");
    EXPECT_EQ(kFileNotFound, CDiscImageReader().Open(Wide(cue)));

    folder.Write("bad.cue", "FILE \"disc.bin\" BINARY\r\n  TRACK 01 AUDIO\r\n    INDEX 01 00:00:xx\r\n");
    EXPECT_EQ(kBadFormat, CDiscImageReader().Open(Wide(folder.Path("bad.cue"))));
    folder.Write("empty.cue", "REM nothing here\r\n");
    EXPECT_EQ(kBadFormat, CDiscImageReader().Open(Wide(folder.Path("empty.cue"))));
}

TEST(DiscImageReader, AnImageThatShrinksAfterOpeningFailsTheReadNotTheProcess)
{
    CImageFolder folder;
    const std::string cue = CDiscImageWriter::Write(folder.Path(), "disc", CDiscImageWriter::ThreeTones());
    CDiscImageReader reader;
    ASSERT_EQ(S_OK, reader.Open(Wide(cue)));
    folder.Resize("disc.bin", 50ull * 2352);
    std::vector<uint8_t> buffer(2352);
    EXPECT_EQ(S_OK, reader.ReadAudio(0, 49, 1, buffer.data()));
    EXPECT_EQ(kReadFault, reader.ReadAudio(0, 50, 1, buffer.data()));
    EXPECT_EQ(kReadFault, reader.ReadAudio(2, 0, 1, buffer.data()));
}

TEST(CDReader, ALetterWithAnImageReadsTheImageAndOneWithoutTriesTheDrive)
{
    CImageDrive drive(L'K', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    std::unique_ptr<CCDReader> reader;
    ASSERT_EQ(S_OK, CCDReader::Open(L'k', CDAudioRead_Default, &reader));
    ASSERT_TRUE(reader);
    ASSERT_EQ(3u, reader->Tracks().size());
    EXPECT_EQ(90u, reader->Tracks()[1].ulSectors);

    // An image that is gone is the image's failure: the letter does not fall back to a drive.
    drive.Folder().Remove("disc.cue");
    EXPECT_EQ(kFileNotFound, CCDReader::Open(L'K', CDAudioRead_Default, &reader));
    EXPECT_FALSE(reader);

    // No image, and no such drive here: a Win32 failure of the drive's own.
    ASSERT_EQ(ERROR_SUCCESS, CDiscImageSetting::Clear(L'B'));
    const HRESULT hr = CCDReader::Open(L'B', CDAudioRead_Default, &reader);
    std::printf("no drive B: hr = 0x%08lx\n", static_cast<unsigned long>(hr));
    EXPECT_TRUE(FAILED(hr));
    EXPECT_EQ(FACILITY_WIN32, HRESULT_FACILITY(hr));
    EXPECT_FALSE(reader);
}

TEST(DriveReader, ADeviceThatIsNoCDDriveFailsWithItsWin32Error)
{
    // Z: is a drive here (the root of the file system), but it has no table of contents.
    for (WCHAR wc : {L'Z', L'C', L'B'})
    {
        CDriveReader reader(CDAudioRead_Raw);
        const HRESULT hr = reader.Open(wc);
        std::printf("drive %c: hr = 0x%08lx\n", static_cast<char>(wc), static_cast<unsigned long>(hr));
        EXPECT_TRUE(FAILED(hr));
        EXPECT_EQ(FACILITY_WIN32, HRESULT_FACILITY(hr));
        EXPECT_TRUE(reader.Tracks().empty());
    }
}

struct TocEntry
{
    uint32_t ulAddress; // frames from the first track's start
    bool bData;
};

CDROM_TOC MakeToc(int nFirst, const std::vector<TocEntry>& entries) // the last entry is the lead-out
{
    CDROM_TOC toc;
    std::memset(&toc, 0, sizeof(toc));
    toc.FirstTrack = static_cast<UCHAR>(nFirst);
    toc.LastTrack = static_cast<UCHAR>(nFirst + static_cast<int>(entries.size()) - 2);
    const size_t cb = 2 + entries.size() * sizeof(TRACK_DATA);
    toc.Length[0] = static_cast<UCHAR>(cb >> 8);
    toc.Length[1] = static_cast<UCHAR>(cb & 0xFF);
    for (size_t i = 0; i < entries.size(); ++i)
    {
        TRACK_DATA& data = toc.TrackData[i];
        data.Control = entries[i].bData ? 4 : 0;
        data.Adr = 1;
        data.TrackNumber = static_cast<UCHAR>(i + 1 < entries.size() ? nFirst + static_cast<int>(i) : 0xAA);
        const uint32_t ulFrames = entries[i].ulAddress + 150;
        data.Address[1] = static_cast<UCHAR>(ulFrames / 75 / 60);
        data.Address[2] = static_cast<UCHAR>(ulFrames / 75 % 60);
        data.Address[3] = static_cast<UCHAR>(ulFrames % 75);
    }
    return toc;
}

TEST(DriveReader, TableOfContentsGivesEachTrackItsStartAndLength)
{
    std::vector<CCDReader::Track> tracks;
    // An enhanced CD: two audio tracks, then a data track in a second session.
    ASSERT_EQ(S_OK, CDriveReader::TracksFromToc(
                        MakeToc(1, {{0, false}, {20000, false}, {51400, true}, {60000, false}}), &tracks));
    ASSERT_EQ(3u, tracks.size());
    EXPECT_EQ(1, tracks[0].nNumber);
    EXPECT_EQ(0u, tracks[0].ulFirstSector);
    EXPECT_EQ(20000u, tracks[0].ulSectors);
    EXPECT_TRUE(tracks[0].bAudio);
    EXPECT_EQ(20000u, tracks[1].ulFirstSector);
    EXPECT_EQ(20000u, tracks[1].ulSectors); // the gap between the sessions is no audio
    EXPECT_EQ(3, tracks[2].nNumber);
    EXPECT_FALSE(tracks[2].bAudio);
    EXPECT_EQ(51400u, tracks[2].ulFirstSector);
    EXPECT_EQ(8600u, tracks[2].ulSectors);

    // A mixed-mode CD: data first, audio after it keeps its whole length. Numbering may start later.
    ASSERT_EQ(S_OK, CDriveReader::TracksFromToc(MakeToc(4, {{0, true}, {15000, false}, {30000, false}}), &tracks));
    ASSERT_EQ(2u, tracks.size());
    EXPECT_EQ(4, tracks[0].nNumber);
    EXPECT_FALSE(tracks[0].bAudio);
    EXPECT_EQ(5, tracks[1].nNumber);
    EXPECT_EQ(15000u, tracks[1].ulSectors);
}

TEST(DriveReader, TablesThatMakeNoSenseAreBadFormat)
{
    std::vector<CCDReader::Track> tracks{{1, true, 0, 1}};
    CDROM_TOC toc = MakeToc(1, {{0, false}, {100, false}});
    toc.FirstTrack = 0;
    EXPECT_EQ(kBadFormat, CDriveReader::TracksFromToc(toc, &tracks));
    toc = MakeToc(3, {{0, false}, {100, false}});
    toc.LastTrack = 2;
    EXPECT_EQ(kBadFormat, CDriveReader::TracksFromToc(toc, &tracks));
    toc = MakeToc(1, {{0, false}, {100, false}, {200, false}});
    toc.Length[1] -= 8; // the lead-out is not there
    EXPECT_EQ(kBadFormat, CDriveReader::TracksFromToc(toc, &tracks));
    EXPECT_EQ(kBadFormat, CDriveReader::TracksFromToc(MakeToc(1, {{0, false}, {100, false}, {100, false}}), &tracks));
    toc = MakeToc(1, {{0, false}, {100, false}});
    toc.TrackData[0].Address[2] = 1; // before the two seconds of lead-in
    EXPECT_EQ(kBadFormat, CDriveReader::TracksFromToc(toc, &tracks));
    ASSERT_EQ(1u, tracks.size()); // left as it was
}

// A drive whose sectors fail a given number of times before they read.
class CScriptedDrive : public CDriveReader
{
public:
    explicit CScriptedDrive(DWORD dwMode) : CDriveReader(dwMode) { m_tracks = {{1, true, 1000, 100}, {2, false, 1100, 50}}; }

    std::map<uint32_t, int> failures; // by disc address: reads that fail before one succeeds
    std::vector<std::pair<uint32_t, uint32_t>> reads;

    static uint8_t Byte(uint32_t ulAddress, uint32_t b) { return static_cast<uint8_t>(ulAddress * 13 + b); }

protected:
    DWORD RawRead(uint32_t ulAddress, uint32_t ulCount, uint8_t* pBuffer) override
    {
        reads.push_back({ulAddress, ulCount});
        for (uint32_t i = 0; i < ulCount; ++i)
        {
            auto it = failures.find(ulAddress + i);
            if (it != failures.end() && it->second > 0)
            {
                --it->second;
                return ERROR_CRC;
            }
            for (uint32_t b = 0; b < kSectorBytes; ++b)
                pBuffer[i * kSectorBytes + b] = Byte(ulAddress + i, b);
        }
        return ERROR_SUCCESS;
    }
};

bool SectorHolds(const std::vector<uint8_t>& buffer, uint32_t ulIndex, uint32_t ulAddress)
{
    for (uint32_t b = 0; b < 2352; ++b)
    {
        if (buffer[ulIndex * 2352 + b] != (ulAddress == 0 ? 0 : CScriptedDrive::Byte(ulAddress, b)))
            return false;
    }
    return true;
}

TEST(DriveReader, ReadsInPiecesADriveTakesAtTrackAddresses)
{
    CScriptedDrive drive(CDAudioRead_Default);
    std::vector<uint8_t> buffer(60 * 2352);
    ASSERT_EQ(S_OK, drive.ReadAudio(0, 10, 60, buffer.data()));
    ASSERT_EQ(3u, drive.reads.size());
    EXPECT_EQ(std::make_pair(1010u, 27u), drive.reads[0]);
    EXPECT_EQ(std::make_pair(1037u, 27u), drive.reads[1]);
    EXPECT_EQ(std::make_pair(1064u, 6u), drive.reads[2]);
    EXPECT_TRUE(SectorHolds(buffer, 0, 1010));
    EXPECT_TRUE(SectorHolds(buffer, 59, 1069));
    EXPECT_EQ(E_INVALIDARG, drive.ReadAudio(0, 95, 6, buffer.data()));
    EXPECT_EQ(E_INVALIDARG, drive.ReadAudio(1, 0, 1, buffer.data())); // data
    EXPECT_EQ(E_INVALIDARG, drive.ReadAudio(2, 0, 1, buffer.data()));
}

TEST(DriveReader, DefaultModeStopsAtTheFirstBadReadWithItsError)
{
    CScriptedDrive drive(CDAudioRead_Default);
    drive.failures[1003] = 1;
    std::vector<uint8_t> buffer(8 * 2352);
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_CRC), drive.ReadAudio(0, 0, 8, buffer.data()));
    EXPECT_EQ(1u, drive.reads.size());
}

TEST(DriveReader, RawModeRetriesABadSectorOnceThenPlaysItAsSilence)
{
    std::vector<uint8_t> buffer(8 * 2352);
    {
        // Bad in the batch and alone, good on the retry: the sound is all there.
        CScriptedDrive drive(CDAudioRead_Raw);
        drive.failures[1003] = 2;
        ASSERT_EQ(S_OK, drive.ReadAudio(0, 0, 8, buffer.data()));
        for (uint32_t i = 0; i < 8; ++i)
            EXPECT_TRUE(SectorHolds(buffer, i, 1000 + i)) << i;
    }
    {
        // Bad every time: that sector alone is silent, its neighbours are whole, and it is read
        // once in the batch, once alone and once more, no more.
        CScriptedDrive drive(CDAudioRead_Raw);
        drive.failures[1003] = 1000;
        drive.failures[1006] = 1;
        ASSERT_EQ(S_OK, drive.ReadAudio(0, 0, 8, buffer.data()));
        for (uint32_t i = 0; i < 8; ++i)
            EXPECT_TRUE(SectorHolds(buffer, i, i == 3 ? 0 : 1000 + i)) << i;
        EXPECT_EQ(1000 - 3, drive.failures[1003]);
        size_t nSingle = 0;
        for (const auto& read : drive.reads)
            nSingle += read.second == 1;
        EXPECT_EQ(10u, nSingle); // each of the eight alone, sectors 3 and 6 once more
    }
}

} // namespace
