#include "CParseProbe.h"

#include <cstring>

#include "CGuardedBuffer.h"
#include "inspect/CASFFileParser.h"
#include "inspect/CByteView.h"

namespace {

const uint8_t kPattern = 0xA5;

template <typename T>
bool StillPattern(const T& value)
{
    const uint8_t* p = reinterpret_cast<const uint8_t*>(&value);
    for (size_t i = 0; i < sizeof(T); ++i)
    {
        if (p[i] != kPattern)
            return false;
    }
    return true;
}

} // namespace

CParseProbe::CParseProbe(const std::vector<uint8_t>& bytes)
{
    CASFFileParser parser;
    Parse(parser, bytes);
}

CParseProbe::CParseProbe(CASFFileParser& parser, const std::vector<uint8_t>& bytes)
{
    Parse(parser, bytes);
}

void CParseProbe::Parse(CASFFileParser& parser, const std::vector<uint8_t>& bytes)
{
    CGuardedBuffer buffer(bytes);
    CByteView view(buffer.Data(), buffer.Size());
    hr = parser.ParseHeader(view);
    cbTouched = view.HighWaterMark();
    Collect(parser);
}

void CParseProbe::Collect(CASFFileParser& parser)
{
    std::memset(&video, kPattern, sizeof(video));
    std::memset(&audio, kPattern, sizeof(audio));
    std::memset(&channelType, kPattern, sizeof(channelType));
    infoResult = parser.GetAVFileInfo(&video, &audio, &channelType);
    bVideo = !StillPattern(video);
    bAudio = !StillPattern(audio);
    bChannelType = !StillPattern(channelType);
}
