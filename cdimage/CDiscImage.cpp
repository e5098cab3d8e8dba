#include "cdimage/CDiscImage.h"

#include <algorithm>
#include <limits>

#include "cdimage/CBinaryFile.h"

namespace {

// One byte more than the parser accepts, so that a longer file still fails there as too long
// instead of being cut into a sheet that parses.
const size_t kSheetReadLimit = 64 * 1024 + 1;

// A file that holds no track's beginning still takes its place on the disc; raw frames are the
// only measure it can have.
const uint32_t kUnclaimedSectorBytes = CDiscImage::kAudioSectorBytes;

// Disc positions are summed in 64 bits and held below this, so that no sum of hostile file
// sizes can wrap. A track at or past it lies far beyond 32 bits of frames and is refused, so the
// positions of the tracks that are kept are all exact.
const uint64_t kPositionCeiling = uint64_t(1) << 40;

uint64_t CappedSum(uint64_t a, uint64_t b)
{
    return std::min(kPositionCeiling, std::min(a, kPositionCeiling) + std::min(b, kPositionCeiling));
}

bool IsSeparator(char c)
{
    return c == '/' || c == '\\';
}

// A FILE name is taken relative to the sheet's folder unless it is absolute: a root, a drive
// letter or a share. Sheets written on Windows separate with backslashes, which only Windows
// itself reads as separators.
std::string ResolveFileName(const std::string& cuePath, std::string name)
{
#if !defined(_WIN32)
    std::replace(name.begin(), name.end(), '\\', '/');
#endif
    if (name.empty())
        return name;
    const bool bAbsolute = IsSeparator(name[0]) || (name.size() >= 2 && name[1] == ':' &&
                                                   ((name[0] >= 'A' && name[0] <= 'Z') || (name[0] >= 'a' && name[0] <= 'z')));
    if (bAbsolute)
        return name;
    size_t cbFolder = cuePath.size();
    while (cbFolder > 0 && !IsSeparator(cuePath[cbFolder - 1]))
        --cbFolder;
    return cuePath.substr(0, cbFolder) + name;
}

} // namespace

CDiscImage::Status CDiscImage::Open(const char* pszCuePath)
{
    m_tracks.clear();
    m_paths.clear();
    if (!pszCuePath || !*pszCuePath)
        return kCannotReadSheet;
    const std::string cuePath(pszCuePath);

    std::string text(kSheetReadLimit, '\0');
    {
        CBinaryFile sheetFile;
        if (!sheetFile.OpenRead(cuePath))
            return kCannotReadSheet;
        text.resize(sheetFile.Read(&text[0], text.size()));
    }
    CCueSheet sheet;
    if (sheet.Parse(text.data(), text.size()) != CCueSheet::kOk)
        return kBadSheet;

    std::vector<std::string> paths;
    std::vector<uint64_t> sizes;
    for (const std::string& name : sheet.Files())
    {
        paths.push_back(ResolveFileName(cuePath, name));
        CBinaryFile file;
        uint64_t cbFile = 0;
        if (!file.OpenRead(paths.back()) || !file.Size(&cbFile))
            return kMissingFile;
        sizes.push_back(cbFile);
    }
    const Status status = Layout(sheet, sizes);
    if (status == kOk)
        m_paths = std::move(paths);
    return status;
}

CDiscImage::Status CDiscImage::Build(const CCueSheet& sheet, const std::vector<uint64_t>& fileSizes)
{
    m_paths.clear();
    return Layout(sheet, fileSizes);
}

// Walks the files in order. Within a file a track's first byte follows from the one before it
// (its sectors times the sector size of the track they belong to), since a file may mix data
// sectors of another size with audio; the disc position adds up whole files.
CDiscImage::Status CDiscImage::Layout(const CCueSheet& sheet, const std::vector<uint64_t>& fileSizes)
{
    m_tracks.clear();
    const std::vector<std::string>& files = sheet.Files();
    const std::vector<CueTrack>& cue = sheet.Tracks();
    if (cue.empty())
        return kBadSheet;
    if (fileSizes.size() < files.size())
        return kMissingFile;

    std::vector<DiscTrack> tracks;
    // Of each track, from the first frame of the file that holds the first track: files before
    // that one lie wholly before the disc's first sector.
    std::vector<uint64_t> discPositions;
    uint64_t ullFileStart = 0;  // disc position of the current file's first frame
    size_t t = 0;
    for (size_t f = 0; f < files.size(); ++f)
    {
        const uint64_t cbFile = fileSizes[f];
        size_t tEnd = t;
        while (tEnd < cue.size() && cue[tEnd].nFile == f)
            ++tEnd;
        if (tEnd == t)
        {
            if (!tracks.empty())
                ullFileStart = CappedSum(ullFileStart, cbFile / kUnclaimedSectorBytes);
            continue;
        }

        uint64_t ullOffset = uint64_t(cue[t].ulIndex01) * cue[t].ulSectorSize;
        for (size_t k = t; k < tEnd; ++k)
        {
            const CueTrack& source = cue[k];
            // What a parsed sheet always satisfies; a sheet object in any other state is refused.
            if (source.ulSectorSize == 0 || (source.bAudio && source.ulSectorSize != kAudioSectorBytes) ||
                (k > t && source.ulIndex01 <= cue[k - 1].ulIndex01))
                return kBadSheet;
            if (k > t)
                ullOffset += uint64_t(source.ulIndex01 - cue[k - 1].ulIndex01) * cue[k - 1].ulSectorSize;
            // Not one whole sector of the track in the file: its beginning is cut off.
            if (ullOffset >= cbFile || cbFile - ullOffset < source.ulSectorSize)
                return kTruncated;

            const uint64_t ullSectors = (k + 1 < tEnd) ? uint64_t(cue[k + 1].ulIndex01 - source.ulIndex01)
                                                       : (cbFile - ullOffset) / source.ulSectorSize;
            if (ullSectors > std::numeric_limits<uint32_t>::max())
                return kBadSheet;
            DiscTrack track;
            track.nNumber = source.nNumber;
            track.bAudio = source.bAudio;
            track.nFile = f;
            track.ullFileOffset = ullOffset;
            track.ulSectorSize = source.ulSectorSize;
            track.ulSectors = static_cast<uint32_t>(ullSectors);
            tracks.push_back(track);
            discPositions.push_back(CappedSum(ullFileStart, source.ulIndex01));
        }
        const CueTrack& last = cue[tEnd - 1];
        ullFileStart = CappedSum(CappedSum(ullFileStart, last.ulIndex01), tracks.back().ulSectors);
        t = tEnd;
    }
    // Tracks naming a file the sheet does not list cannot come from the parser either.
    if (t != cue.size())
        return kBadSheet;

    // Positions count from the first track's INDEX 01, where a disc's first track begins. A disc
    // whose end lies beyond 32 bits of frames is thousands of times longer than any CD: the sheet
    // and the file sizes do not describe one (refused, never cut short or wrapped).
    const uint64_t ullOrigin = discPositions.front();
    for (size_t k = 0; k < tracks.size(); ++k)
    {
        const uint64_t ullFirst = discPositions[k] - ullOrigin;
        if (ullFirst + tracks[k].ulSectors > std::numeric_limits<uint32_t>::max())
            return kBadSheet;
        tracks[k].ulFirstSector = static_cast<uint32_t>(ullFirst);
    }
    m_tracks = std::move(tracks);
    return kOk;
}

const DiscTrack* CDiscImage::FindTrack(int nNumber) const
{
    for (const DiscTrack& track : m_tracks)
    {
        if (track.nNumber == nNumber)
            return &track;
    }
    return nullptr;
}

// Every call opens the file afresh: the streaming thread reads while others may look at the table
// of contents, and no shared file position is left to get in anyone's way.
bool CDiscImage::ReadAudio(int nTrack, uint32_t ulSector, uint32_t ulCount, uint8_t* pBuffer) const
{
    const DiscTrack* pTrack = FindTrack(nTrack);
    if (!pTrack || !pTrack->bAudio || pTrack->ulSectorSize != kAudioSectorBytes || pTrack->nFile >= m_paths.size())
        return false;
    if (ulSector > pTrack->ulSectors || ulCount > pTrack->ulSectors - ulSector)
        return false;
    const uint64_t cbRead = uint64_t(ulCount) * kAudioSectorBytes;
    if (cbRead > std::numeric_limits<size_t>::max() || (ulCount > 0 && !pBuffer))
        return false;
    if (ulCount == 0)
        return true;
    CBinaryFile file;
    return file.OpenRead(m_paths[pTrack->nFile]) &&
           file.ReadAt(pTrack->ullFileOffset + uint64_t(ulSector) * kAudioSectorBytes, pBuffer, static_cast<size_t>(cbRead));
}
