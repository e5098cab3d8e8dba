#include "cdimage/CCueSheet.h"

#include <cstring>

namespace {

// No real sheet comes near this: 99 tracks with a title, a performer and a few indices each fit
// in a fraction of it. Anything larger is not read line by line at all.
const size_t kMaxSheetBytes = 64 * 1024;
const int kMaxTrackNumber = 99;
const uint32_t kFramesPerSecond = 75;
const uint32_t kSecondsPerMinute = 60;
// Minutes of an INDEX time: three digits already exceed any disc, and keep the frame count well
// inside 32 bits.
const size_t kMaxMinuteDigits = 3;

// What a TRACK line's type says about the sectors its file stores.
struct TrackType
{
    const char* pszName;
    bool bAudio;
    uint32_t ulSectorSize;
};

const TrackType kTrackTypes[] = {
    {"AUDIO", true, 2352},
    {"CDG", false, 2448},  // audio sectors with their subchannel, not plain audio
    {"MODE1/2048", false, 2048},
    {"MODE1/2352", false, 2352},
    {"MODE2/2048", false, 2048},
    {"MODE2/2324", false, 2324},
    {"MODE2/2336", false, 2336},
    {"MODE2/2352", false, 2352},
    {"CDI/2336", false, 2336},
    {"CDI/2352", false, 2352},
};

// Commands a player has no use for: their lines are accepted whatever follows them.
const char* const kSkippedCommands[] = {
    "TITLE", "PERFORMER", "SONGWRITER", "REM", "FLAGS", "PREGAP", "POSTGAP", "CATALOG", "ISRC", "CDTEXTFILE",
};

// File types other than raw images: their bytes are not sectors, so they are refused.
const char* const kBinaryFileType = "BINARY";

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

char Upper(char c)
{
    return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}

// A piece of one line, never owning its bytes. Commands and types are compared without regard
// to case: hand-written sheets use lower case now and then.
struct Token
{
    const char* p = nullptr;
    size_t cb = 0;

    bool Empty() const { return cb == 0; }
    bool Is(const char* pszWord) const
    {
        const size_t cbWord = std::strlen(pszWord);
        if (cbWord != cb)
            return false;
        for (size_t i = 0; i < cb; ++i)
        {
            if (Upper(p[i]) != pszWord[i])
                return false;
        }
        return true;
    }
};

// Reads blank-separated words from one line.
struct LineCursor
{
    const char* p;
    const char* pEnd;

    void SkipBlanks()
    {
        while (p < pEnd && IsBlank(*p))
            ++p;
    }
    Token Word()
    {
        SkipBlanks();
        Token t;
        t.p = p;
        while (p < pEnd && !IsBlank(*p))
            ++p;
        t.cb = static_cast<size_t>(p - t.p);
        return t;
    }
    bool AtEnd()
    {
        SkipBlanks();
        return p == pEnd;
    }
};

// A number of decimal digits only, saturating instead of overflowing so that a long run of
// digits still compares as too large.
bool ReadNumber(const Token& t, size_t cbMaxDigits, uint32_t* pValue)
{
    if (t.Empty() || t.cb > cbMaxDigits)
        return false;
    uint32_t value = 0;
    for (size_t i = 0; i < t.cb; ++i)
    {
        if (!IsDigit(t.p[i]))
            return false;
        value = value * 10 + static_cast<uint32_t>(t.p[i] - '0');
    }
    *pValue = value;
    return true;
}

// A track number: any count of digits is read (so "100" and "0100" are out of range rather than
// malformed), saturating at a value above the range.
bool ReadTrackNumber(const Token& t, int* pValue)
{
    if (t.Empty())
        return false;
    int value = 0;
    for (size_t i = 0; i < t.cb; ++i)
    {
        if (!IsDigit(t.p[i]))
            return false;
        if (value <= kMaxTrackNumber)
            value = value * 10 + (t.p[i] - '0');
    }
    *pValue = value;
    return true;
}

// mm:ss:ff with two-digit seconds and frames, as every writer of sheets puts them; a time cut
// short is malformed instead of silently meaning another position.
bool ReadTime(const Token& t, uint32_t* pFrames)
{
    const char* pFirstColon = static_cast<const char*>(std::memchr(t.p, ':', t.cb));
    if (!pFirstColon)
        return false;
    Token minutes{t.p, static_cast<size_t>(pFirstColon - t.p)};
    const size_t cbRest = t.cb - minutes.cb - 1;
    if (cbRest != 5 || pFirstColon[3] != ':')
        return false;
    Token seconds{pFirstColon + 1, 2};
    Token frames{pFirstColon + 4, 2};
    uint32_t mm = 0;
    uint32_t ss = 0;
    uint32_t ff = 0;
    if (!ReadNumber(minutes, kMaxMinuteDigits, &mm) || !ReadNumber(seconds, 2, &ss) || !ReadNumber(frames, 2, &ff))
        return false;
    if (ss >= kSecondsPerMinute || ff >= kFramesPerSecond)
        return false;
    *pFrames = (mm * kSecondsPerMinute + ss) * kFramesPerSecond + ff;
    return true;
}

// The name in a FILE line and the type after it. A quoted name may hold blanks; a bare one is
// everything up to the last word, so that an unquoted name with blanks still reads as written.
bool ReadFileLine(LineCursor cursor, std::string* pName)
{
    cursor.SkipBlanks();
    const char* pNameBegin = nullptr;
    const char* pNameEnd = nullptr;
    if (cursor.p < cursor.pEnd && *cursor.p == '"')
    {
        pNameBegin = cursor.p + 1;
        pNameEnd = static_cast<const char*>(
            std::memchr(pNameBegin, '"', static_cast<size_t>(cursor.pEnd - pNameBegin)));
        if (!pNameEnd)
            return false;
        cursor.p = pNameEnd + 1;
        // The type must be a word of its own.
        if (cursor.p == cursor.pEnd || !IsBlank(*cursor.p))
            return false;
    }
    else
    {
        const char* pLast = cursor.pEnd;
        while (pLast > cursor.p && IsBlank(pLast[-1]))
            --pLast;
        const char* pType = pLast;
        while (pType > cursor.p && !IsBlank(pType[-1]))
            --pType;
        pNameBegin = cursor.p;
        pNameEnd = pType;
        while (pNameEnd > pNameBegin && IsBlank(pNameEnd[-1]))
            --pNameEnd;
        cursor.p = pType;
    }
    const Token type = cursor.Word();
    if (!type.Is(kBinaryFileType) || !cursor.AtEnd() || pNameEnd == pNameBegin)
        return false;
    // Control characters have no place in a file name; a NUL would even cut it short when opened.
    for (const char* p = pNameBegin; p < pNameEnd; ++p)
    {
        const unsigned char c = static_cast<unsigned char>(*p);
        if (c < 0x20 || c == 0x7f)
            return false;
    }
    pName->assign(pNameBegin, pNameEnd);
    return true;
}

const TrackType* FindTrackType(const Token& t)
{
    for (const TrackType& type : kTrackTypes)
    {
        if (t.Is(type.pszName))
            return &type;
    }
    return nullptr;
}

bool IsSkipped(const Token& command)
{
    for (const char* pszCommand : kSkippedCommands)
    {
        if (command.Is(pszCommand))
            return true;
    }
    return false;
}

} // namespace

CCueSheet::Status CCueSheet::Parse(const char* pText, size_t cbText, size_t* pnLine)
{
    m_files.clear();
    m_tracks.clear();
    size_t nLine = 0;
    // Whole-text failures (too long, no tracks) belong to no line and report line 0.
    auto fail = [&](Status status, size_t nFailLine) {
        m_files.clear();
        m_tracks.clear();
        if (pnLine)
            *pnLine = nFailLine;
        return status;
    };

    if (!pText)
        cbText = 0;
    if (cbText > kMaxSheetBytes)
        return fail(kTooLong, 0);

    const char* p = pText;
    const char* const pEnd = pText + cbText;
    static const char kBom[] = "\xEF\xBB\xBF";
    if (cbText >= 3 && std::memcmp(p, kBom, 3) == 0)
        p += 3;

    bool bTrackHasIndex01 = false;
    size_t nTrackLine = 0;  // where the track still waiting for its INDEX 01 began
    while (p < pEnd)
    {
        // A line ends at LF, CR LF or a lone CR.
        const char* pLineEnd = p;
        while (pLineEnd < pEnd && *pLineEnd != '\n' && *pLineEnd != '\r')
            ++pLineEnd;
        LineCursor cursor{p, pLineEnd};
        p = pLineEnd;
        if (p < pEnd && *p++ == '\r' && p < pEnd && *p == '\n')
            ++p;
        ++nLine;

        const Token command = cursor.Word();
        if (command.Empty())
            continue;
        if (command.Is("FILE"))
        {
            std::string name;
            if (!ReadFileLine(cursor, &name))
                return fail(kSyntax, nLine);
            m_files.push_back(std::move(name));
        }
        else if (command.Is("TRACK"))
        {
            if (m_files.empty())
                return fail(kTrackOutsideFile, nLine);
            if (!m_tracks.empty() && !bTrackHasIndex01)
                return fail(kNoIndex01, nTrackLine);
            int nNumber = 0;
            if (!ReadTrackNumber(cursor.Word(), &nNumber))
                return fail(kSyntax, nLine);
            if (nNumber < 1 || nNumber > kMaxTrackNumber || (!m_tracks.empty() && nNumber <= m_tracks.back().nNumber))
                return fail(kTrackOrder, nLine);
            const TrackType* pType = FindTrackType(cursor.Word());
            if (!pType || !cursor.AtEnd())
                return fail(kSyntax, nLine);
            CueTrack track;
            track.nNumber = nNumber;
            track.bAudio = pType->bAudio;
            track.ulSectorSize = pType->ulSectorSize;
            track.nFile = m_files.size() - 1;
            m_tracks.push_back(track);
            bTrackHasIndex01 = false;
            nTrackLine = nLine;
        }
        else if (command.Is("INDEX"))
        {
            uint32_t ulIndex = 0;
            uint32_t ulFrames = 0;
            if (m_tracks.empty() || !ReadNumber(cursor.Word(), 2, &ulIndex) || !ReadTime(cursor.Word(), &ulFrames) ||
                !cursor.AtEnd())
                return fail(kSyntax, nLine);
            if (ulIndex != 1)
                continue;
            if (bTrackHasIndex01)
                return fail(kSyntax, nLine);
            // The track's sectors begin in the file this line belongs to: some rippers put a
            // track's pregap (INDEX 00) at the end of the previous file and its INDEX 01 after a
            // new FILE line.
            CueTrack& track = m_tracks.back();
            track.nFile = m_files.size() - 1;
            track.ulIndex01 = ulFrames;
            // A track that does not begin after the one before it in the same file would have no
            // sectors of its own (or a negative count).
            if (m_tracks.size() > 1)
            {
                const CueTrack& previous = m_tracks[m_tracks.size() - 2];
                if (previous.nFile == track.nFile && ulFrames <= previous.ulIndex01)
                    return fail(kNoIndex01, nLine);
            }
            bTrackHasIndex01 = true;
        }
        else if (!IsSkipped(command))
        {
            return fail(kSyntax, nLine);
        }
    }

    if (m_tracks.empty())
        return fail(kNoTracks, 0);
    if (!bTrackHasIndex01)
        return fail(kNoIndex01, nTrackLine);
    return kOk;
}
