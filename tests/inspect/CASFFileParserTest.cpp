// What the parser reports from well-formed headers written field by field, and how results carry
// over between parses on one object.
#include <gtest/gtest.h>

#include "CAsfHeaderBuilder.h"
#include "CParseProbe.h"
#include "inspect/CASFFileParser.h"

namespace {

using Builder = CAsfHeaderBuilder;

const Builder::AudioFormat kStereo{0x161, 2, 44100, 16000, 1487, 16, 10};
const std::vector<uint8_t> kStereoExtra(10, 0x11);

TEST(ASFHeaderFields, EveryFieldOfAVideoAndAnAudioStream)
{
    const auto bytes = Builder()
                           .FileProperties(123456789000ULL, 3000, 500000)
                           .ContentDescription()
                           .AudioStream(1, kStereo, kStereoExtra)
                           .UnknownObject(40)
                           .VideoStream(2, 640, -480, 24, "WMV3")
                           .HeaderExtension({{2, 800000, 333667}, {1, 64000, 0}})
                           .ExtendedContentDescription()
                           .StreamBitrates({{1, 128000}, {2, 900000}})
                           .Build();
    const CParseProbe p(bytes);
    EXPECT_EQ(CASFFileParser::kOk, p.hr);
    EXPECT_EQ(CASFFileParser::kOk, p.infoResult);

    ASSERT_TRUE(p.bVideo);
    EXPECT_EQ(1, p.video.bPresent);
    EXPECT_EQ(12342.0, p.video.dDuration);  // 12,345,678 ms - 3,000 ms preroll, whole seconds
    EXPECT_EQ(0x33564D57u, p.video.dwFourCC);
    EXPECT_EQ(640, p.video.lWidth);
    EXPECT_EQ(-480, p.video.lHeight);  // bottom-up or not, the sign is the file's
    EXPECT_EQ(24, p.video.wBitDepth);
    EXPECT_DOUBLE_EQ(10000000.0 / 333667, p.video.dFrameRate);
    EXPECT_EQ(333667, p.video.llAvgTimePerFrame);
    EXPECT_EQ(800000u, p.video.dwBitrate);  // the extended object's data bitrate wins

    ASSERT_TRUE(p.bAudio);
    EXPECT_EQ(1, p.audio.bPresent);
    EXPECT_EQ(0x161, p.audio.wFormatTag);
    EXPECT_EQ(2, p.audio.nChannels);
    EXPECT_EQ(44100u, p.audio.nSamplesPerSec);
    EXPECT_EQ(16000u, p.audio.nAvgBytesPerSec);
    EXPECT_EQ(1487, p.audio.nBlockAlign);
    EXPECT_EQ(16, p.audio.wBitsPerSample);
    ASSERT_TRUE(p.bChannelType);
    EXPECT_EQ(2, p.channelType);
}

TEST(ASFHeaderFields, WindowsMediaVideo9FourCCsKeepTheirFirstCharacterInTheLowestByte)
{
    const struct
    {
        const char* text;
        uint32_t value;
    } cases[] = {{"WMV3", 0x33564D57}, {"WMVA", 0x41564D57}, {"WVP2", 0x32505657},
                 {"WMVP", 0x50564D57}, {"WMV2", 0x32564D57}};
    for (const auto& c : cases)
    {
        const CParseProbe p(Builder().VideoStream(1, 320, 240, 24, c.text).Build());
        EXPECT_EQ(c.value, p.video.dwFourCC) << c.text;
    }
}

TEST(ASFHeaderFields, OfSeveralStreamsOfAKindTheLastInHeaderOrderIsReported)
{
    const auto bytes = Builder()
                           .VideoStream(1, 320, 240, 24, "WMV2")
                           .AudioStream(2, kStereo)
                           .VideoStream(3, 1280, 720, 32, "WVP2")
                           .AudioStream(4, {0x162, 6, 48000, 24000, 4096, 24, 0})
                           .HeaderExtension({{1, 111, 400000}, {3, 333, 200000}})
                           .Build();
    const CParseProbe p(bytes);
    EXPECT_EQ(0x32505657u, p.video.dwFourCC);
    EXPECT_EQ(1280, p.video.lWidth);
    EXPECT_EQ(720, p.video.lHeight);
    EXPECT_EQ(32, p.video.wBitDepth);
    EXPECT_EQ(50.0, p.video.dFrameRate);  // stream 3's, not stream 1's
    EXPECT_EQ(333u, p.video.dwBitrate);
    EXPECT_EQ(0x162, p.audio.wFormatTag);
    EXPECT_EQ(6, p.audio.nChannels);
    EXPECT_EQ(10, p.channelType);  // six channels, no low-frequency channel counted
}

TEST(ASFHeaderFields, BitrateAndFrameDataComeFromTheExtendedObjectElseFromTheBitrateRecords)
{
    const auto video = [](Builder b) { return b.VideoStream(5, 176, 144, 12, "WMV1"); };

    const CParseProbe neither(video(Builder()).Build());
    EXPECT_EQ(0.0, neither.video.dFrameRate);
    EXPECT_EQ(0, neither.video.llAvgTimePerFrame);
    EXPECT_EQ(0u, neither.video.dwBitrate);

    const CParseProbe recordOnly(video(Builder()).StreamBitrates({{4, 1}, {5, 250000}}).Build());
    EXPECT_EQ(250000u, recordOnly.video.dwBitrate);
    EXPECT_EQ(0.0, recordOnly.video.dFrameRate);

    // Without frame data the extended object still decides the bitrate, and in either order.
    const CParseProbe noFrameData(
        video(Builder()).StreamBitrates({{5, 250000}}).HeaderExtension({{5, 190000, 0}}).Build());
    EXPECT_EQ(190000u, noFrameData.video.dwBitrate);
    EXPECT_EQ(0.0, noFrameData.video.dFrameRate);
    EXPECT_EQ(0, noFrameData.video.llAvgTimePerFrame);

    const CParseProbe otherStream(video(Builder()).HeaderExtension({{6, 190000, 400000}}).Build());
    EXPECT_EQ(0u, otherStream.video.dwBitrate);
    EXPECT_EQ(0.0, otherStream.video.dFrameRate);
}

TEST(ASFHeaderFields, DurationIsPlayTimeLessPrerollInWholeSecondsWithUnsignedWrap)
{
    const struct
    {
        uint64_t playDuration;
        uint64_t preroll;
        double seconds;
    } cases[] = {
        {123456789000ULL, 3000, 12342},
        {41210000, 3100, 1},          // 4.121 s including a 3.1 s preroll
        {29999999, 0, 2},             // truncated, never rounded
        {10000000, 2000, 1271310318}, // (2^64 - 1000) / 1000, low 32 bits
    };
    for (const auto& c : cases)
    {
        const CParseProbe p(
            Builder().FileProperties(c.playDuration, c.preroll, 0).VideoStream(1, 2, 2, 8, "WMV3").Build());
        EXPECT_EQ(c.seconds, p.video.dDuration) << c.playDuration << " - " << c.preroll;
    }
    const CParseProbe noFileProperties(Builder().VideoStream(1, 2, 2, 8, "WMV3").Build());
    EXPECT_EQ(CASFFileParser::kOk, noFileProperties.hr);
    EXPECT_EQ(0.0, noFileProperties.video.dDuration);
}

TEST(ASFHeaderFields, AudioOnlyHeaderLeavesTheVideoRecordAloneAndMapsChannels)
{
    const struct
    {
        uint16_t channels;
        uint16_t type;
    } cases[] = {{1, 1}, {2, 2}, {8, 14}, {0, 0}, {12, 12}};
    for (const auto& c : cases)
    {
        Builder::AudioFormat format = kStereo;
        format.nChannels = c.channels;
        const CParseProbe p(Builder().FileProperties(50000000, 0, 1).AudioStream(1, format).Build());
        EXPECT_FALSE(p.bVideo);
        ASSERT_TRUE(p.bChannelType);
        EXPECT_EQ(c.type, p.channelType) << c.channels << " channels";
    }
}

TEST(ASFHeaderFields, EitherEncryptionObjectMarksTheContentProtectedAndTheNextHeaderClearsIt)
{
    CASFFileParser parser;
    for (bool bExtended : {false, true})
    {
        const auto bytes = Builder().AudioStream(1, kStereo).ContentEncryption(bExtended).Build();
        ASSERT_EQ(CASFFileParser::kOk, CParseProbe(parser, bytes).hr);
        EXPECT_TRUE(parser.IsContentProtected()) << "extended " << bExtended;
        // The stream before it is read as ever.
        EXPECT_TRUE(CParseProbe(parser, bytes).bAudio);

        ASSERT_EQ(CASFFileParser::kOk, CParseProbe(parser, Builder().AudioStream(1, kStereo).UnknownObject(40).Build()).hr);
        EXPECT_FALSE(parser.IsContentProtected());
    }
}

TEST(ASFHeaderLifecycle, FreshParserHandsOutNothing)
{
    CASFFileParser parser;
    CParseProbe p;
    p.Collect(parser);
    EXPECT_EQ(CASFFileParser::kOk, p.infoResult);
    EXPECT_FALSE(p.bVideo);
    EXPECT_FALSE(p.bAudio);
    EXPECT_FALSE(p.bChannelType);
}

TEST(ASFHeaderLifecycle, ASecondParseStartsFromEmptyRecordsUnlessTheFileIsRejected)
{
    CASFFileParser parser;
    const auto video = Builder().VideoStream(1, 320, 240, 24, "WMV3").HeaderExtension({{1, 7, 1}}).Build();
    const auto audioOnly = Builder().AudioStream(2, kStereo).Build();

    ASSERT_TRUE(CParseProbe(parser, video).bVideo);
    const CParseProbe second(parser, audioOnly);
    EXPECT_FALSE(second.bVideo);
    EXPECT_TRUE(second.bAudio);

    // A rejected file is not walked, and what the previous file gave stays.
    ASSERT_TRUE(CParseProbe(parser, video).bVideo);
    const CParseProbe rejected(parser, {'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'A', 'V', 'E'});
    EXPECT_EQ(CASFFileParser::kInvalidData, rejected.hr);
    EXPECT_TRUE(rejected.bVideo);
    EXPECT_EQ(7u, rejected.video.dwBitrate);
}

} // namespace
