// Damaged and hostile headers: each gives a defined result, and since every header ends at a
// guard page, a read outside the bytes would crash the test instead of passing unnoticed.
#include <gtest/gtest.h>

#include <cstring>

#include "CAsfHeaderBuilder.h"
#include "CParseProbe.h"
#include "inspect/CASFFileParser.h"

namespace {

using Builder = CAsfHeaderBuilder;

const Builder::AudioFormat kStereo{0x161, 2, 44100, 16000, 1487, 16, 0};
enum Child { kFile, kAudio, kVideo, kExtension, kBitrates, kContent };

Builder Standard()
{
    return Builder()
        .FileProperties(80000000, 3000, 700000)
        .AudioStream(1, kStereo)
        .VideoStream(2, 320, 240, 24, "WMV3")
        .HeaderExtension({{2, 500000, 400000}})
        .StreamBitrates({{1, 64000}, {2, 600000}})
        .ContentDescription();
}

std::vector<uint8_t> Truncated(std::vector<uint8_t> bytes, size_t length)
{
    bytes.resize(length);
    return bytes;
}

TEST(ASFHostileHeader, TooShortOrForeignBytesAreNotAnAsfFile)
{
    const auto full = Standard().Build();
    EXPECT_EQ(CASFFileParser::kInvalidData, CParseProbe(std::vector<uint8_t>{}).hr);
    EXPECT_EQ(CASFFileParser::kInvalidData, CParseProbe({0x30}).hr);
    EXPECT_EQ(CASFFileParser::kInvalidData, CParseProbe(Truncated(full, 15)).hr);
    EXPECT_EQ(CASFFileParser::kInvalidData, CParseProbe({'R', 'I', 'F', 'F', 36, 0, 0, 0}).hr);

    // The identifier alone is a header: an object count read as zero walks nothing.
    const CParseProbe idOnly(Truncated(full, 16));
    EXPECT_EQ(CASFFileParser::kOk, idOnly.hr);
    EXPECT_FALSE(idOnly.bVideo);
    EXPECT_FALSE(idOnly.bAudio);
}

TEST(ASFHostileHeader, AHeaderLongerThanItsBytesIsReadAsFarAsItGoesAndToldApart)
{
    const auto full = Standard().Build();
    CASFFileParser parser;
    EXPECT_EQ(CASFFileParser::kOk, CParseProbe(parser, full).hr);
    EXPECT_FALSE(parser.HeaderOverrunsFile());

    auto claimsMore = full;
    Builder::PutU64(claimsMore, 16, 0x80000000ull);
    const CParseProbe huge(parser, claimsMore);
    EXPECT_EQ(CASFFileParser::kOk, huge.hr);
    EXPECT_TRUE(huge.bAudio && huge.bVideo);
    EXPECT_TRUE(parser.HeaderOverrunsFile());

    EXPECT_EQ(CASFFileParser::kOk, CParseProbe(parser, Truncated(full, 100)).hr);
    EXPECT_TRUE(parser.HeaderOverrunsFile()) << "cut inside the header";
    EXPECT_EQ(CASFFileParser::kOk, CParseProbe(parser, full).hr);
    EXPECT_FALSE(parser.HeaderOverrunsFile()) << "each header read sets it again";
}

TEST(ASFHostileHeader, TruncatedAtEveryLengthReportsExactlyWhatLiesInside)
{
    const Builder builder = Standard();
    const auto full = builder.Build();
    const CParseProbe whole(full);
    const size_t audio = builder.ChildOffset(kAudio);
    const size_t video = builder.ChildOffset(kVideo);
    const size_t esp = builder.ChildOffset(kExtension) + 46;  // first inner object
    ASSERT_EQ(25.0, whole.video.dFrameRate);
    ASSERT_EQ(5.0, whole.video.dDuration);

    for (size_t length = 16; length <= full.size(); ++length)
    {
        SCOPED_TRACE(length);
        const CParseProbe p(Truncated(full, length));
        ASSERT_EQ(CASFFileParser::kOk, p.hr);
        // A stream counts once its type identifier, 24 bytes in, is wholly inside the file.
        ASSERT_EQ(length >= audio + 40, p.bAudio);
        ASSERT_EQ(length >= video + 40, p.bVideo);
        if (length >= audio + 78 + 16)
        {
            EXPECT_EQ(0, std::memcmp(&whole.audio, &p.audio, sizeof(p.audio)));
        }
        if (!p.bVideo)
            continue;
        EXPECT_EQ(whole.video.dDuration, p.video.dDuration);
        if (length >= video + 78 + 31)
        {
            EXPECT_EQ(whole.video.dwFourCC, p.video.dwFourCC);
            EXPECT_EQ(whole.video.lWidth, p.video.lWidth);
        }
        if (length < esp + 16)
        {
            EXPECT_EQ(0.0, p.video.dFrameRate);
        }
        if (length >= esp + 88)
        {
            EXPECT_EQ(25.0, p.video.dFrameRate);
            EXPECT_EQ(500000u, p.video.dwBitrate);
        }
    }
}

TEST(ASFHostileHeader, ChildObjectSizesStepByTheirLowThirtyTwoBitsOrEndTheWalk)
{
    const Builder builder = Standard();
    const auto full = builder.Build();
    const uint64_t real = builder.ChildSize(kAudio);
    const struct
    {
        uint64_t size;
        bool bReachesVideo;
    } cases[] = {
        {real, true},
        {0, false},  // the same object again and again: nothing new
        {8, false},  // lands inside the object, whose next "size" points far past the end
        {full.size() + 1, false},
        {0xFFFFFFF0ULL, false},
        {0xFFFFFFFFULL, false},
        {0xFFFFFFFFFFFFFFFFULL, false},
        {0x100000000ULL + real, true},
        {0xFFFFFFFF00000000ULL + real, true},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.size);
        auto bytes = full;
        Builder::PutU64(bytes, builder.ChildOffset(kAudio) + 16, c.size);
        const CParseProbe p(bytes);
        EXPECT_EQ(CASFFileParser::kOk, p.hr);
        EXPECT_TRUE(p.bAudio);  // handled before its size is used
        EXPECT_EQ(c.bReachesVideo, p.bVideo);
    }
}

TEST(ASFHostileHeader, HeaderObjectCountBoundsTheWalkAsASignedNumber)
{
    const Builder builder = Standard();
    const struct
    {
        uint32_t count;
        bool bAudio;
        bool bVideo;
    } cases[] = {
        {1000, true, true},  // more than present: the walk ends at the end of the file
        {0x7FFFFFFF, true, true},
        {2, true, false},
        {1, false, false},
        {0, false, false},
        {0x80000000, false, false},
        {0xFFFFFFFF, false, false},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.count);
        auto bytes = builder.Build();
        Builder::PutU32(bytes, 24, c.count);
        const CParseProbe p(bytes);
        EXPECT_EQ(CASFFileParser::kOk, p.hr);
        EXPECT_EQ(c.bAudio, p.bAudio);
        EXPECT_EQ(c.bVideo, p.bVideo);
        if (c.bVideo)
        {
            EXPECT_EQ(500000u, p.video.dwBitrate);
        }
    }
}

TEST(ASFHostileHeader, HeaderExtensionDataSizeThatDisagreesWithItsObjects)
{
    // The first inner object names another stream; the video stream's comes second.
    const Builder builder = Builder()
                                .VideoStream(2, 320, 240, 24, "WMV3")
                                .HeaderExtension({{3, 1, 1}, {2, 500000, 400000}})
                                .AudioStream(1, kStereo);
    const size_t extension = builder.ChildOffset(1);
    const size_t firstInner = extension + 46;
    const struct
    {
        const char* what;
        size_t offset;
        uint64_t value;
        bool bSizeField;  // an 8-byte object size rather than the 4-byte data size
        double frameRate;
    } cases[] = {
        {"as built", extension + 42, 176, false, 25.0},
        {"covers the first object only", extension + 42, 88, false, 0.0},
        {"smaller than an object header", extension + 42, 23, false, 0.0},
        {"runs on past the extension", extension + 42, 0x7FFFFFFF, false, 25.0},
        {"negative as a signed number", extension + 42, 0x80000000, false, 0.0},
        {"inner object of size 0", firstInner + 16, 0, true, 0.0},
        {"inner object past the end", firstInner + 16, 0xFFFFFFFF, true, 0.0},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        auto bytes = builder.Build();
        if (c.bSizeField)
            Builder::PutU64(bytes, c.offset, c.value);
        else
            Builder::PutU32(bytes, c.offset, static_cast<uint32_t>(c.value));
        const CParseProbe p(bytes);
        EXPECT_EQ(CASFFileParser::kOk, p.hr);
        EXPECT_EQ(c.frameRate, p.video.dFrameRate);
        EXPECT_TRUE(p.bAudio);  // the outer walk goes on after the extension either way
    }
}

TEST(ASFHostileHeader, StreamNumbersAreMaskedInStreamAndBitrateObjectsButNotInExtendedOnes)
{
    const struct
    {
        uint16_t flags;
        uint16_t extendedNumber;
        bool bMatches;
    } cases[] = {
        {0x0001, 1, true},   {0x007F, 127, true}, {0x00FF, 127, true}, {0x0085, 5, true},
        {0x8005, 5, true},   {0x0080, 0, true},   {0x0080, 128, false}, {0x0005, 133, false},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.flags);
        const CParseProbe p(Builder()
                                .VideoStream(c.flags, 8, 8, 24, "WMVA")
                                .HeaderExtension({{c.extendedNumber, 1000, 400000}})
                                .Build());
        EXPECT_EQ(c.bMatches ? 25.0 : 0.0, p.video.dFrameRate);
    }
    const CParseProbe record(
        Builder().VideoStream(5, 8, 8, 24, "WMVA").StreamBitrates({{0x0085, 777}}).Build());
    EXPECT_EQ(777u, record.video.dwBitrate);
}

TEST(ASFHostileHeader, FieldsThatOverstateWhatFollowsReadZerosNotBeyondTheFile)
{
    // cbSize promises 65535 format bytes, but the file ends with the WAVEFORMATEX.
    Builder::AudioFormat format = kStereo;
    format.cbSize = 0xFFFF;
    const CParseProbe audio(Builder().AudioStream(1, format).Build(false));
    ASSERT_TRUE(audio.bAudio);
    EXPECT_EQ(kStereo.nChannels, audio.audio.nChannels);
    EXPECT_EQ(kStereo.nSamplesPerSec, audio.audio.nSamplesPerSec);
    EXPECT_EQ(kStereo.wBitsPerSample, audio.audio.wBitsPerSample);

    // 65535 bitrate records announced, one present: the rest read as stream 0 at 0 bps, which
    // only a stream numbered 0 notices.
    for (const uint16_t flags : {0x0002, 0x0080})
    {
        SCOPED_TRACE(flags);
        const Builder builder = Builder().VideoStream(flags, 8, 8, 24, "WMV3").StreamBitrates({{flags, 600000}});
        auto bytes = builder.Build(false);
        bytes[builder.ChildOffset(1) + 24] = 0xFF;
        bytes[builder.ChildOffset(1) + 25] = 0xFF;
        const CParseProbe records(bytes);
        EXPECT_EQ(CASFFileParser::kOk, records.hr);
        EXPECT_EQ(flags == 0x0080 ? 0u : 600000u, records.video.dwBitrate);
    }
}

} // namespace
