// What the parser reports from headers written field by field, well-formed and damaged. Every
// header ends at a guard page, so a read outside its bytes crashes the case instead of passing.
#include <gtest/gtest.h>

#include "CAsfHeaderBuilder.h"
#include "CParseProbe.h"
#include "inspect/CASFFileParser.h"
#include "inspect/CByteView.h"

namespace {

using Builder = CAsfHeaderBuilder;
const Builder::AudioFormat kStereo{0x161, 2, 44100, 16000, 1487, 16, 0};
const std::string kStereoText = "0x161 2ch 44100Hz 16000B/s 1487 16bit type 2";
enum Child { kFile, kAudio, kVideo, kExtension, kBitrates };

Builder Standard()
{
    return Builder().FileProperties(80000000, 3000, 700000).AudioStream(1, kStereo).VideoStream(2, 320, 240, 24, "WMV3")
        .HeaderExtension({{2, 500000, 400000}}).StreamBitrates({{1, 64000}, {2, 600000}}).ContentDescription();
}
const std::string kStandardVideo = "WMV3 320x240x24 5s 25fps 400000 500000bps";

// The bytes with a little-endian field of cb bytes overwritten.
std::vector<uint8_t> Put(std::vector<uint8_t> bytes, size_t offset, uint64_t value, size_t cb)
{
    Builder::PutU64(bytes, offset, value, cb);
    return bytes;
}

TEST(ASFHeader, ReportsTheFieldsOfTheLastStreamOfEachKindAndCopesWithDamage)
{
    struct Case { std::string what; std::vector<uint8_t> bytes; std::string video, audio; };
    const auto video = [](uint16_t flags) { return Builder().VideoStream(flags, 176, 144, 12, "WMV1"); };
    const auto withFile = [](uint64_t play, uint64_t preroll) { return Builder().FileProperties(play, preroll, 0).VideoStream(1, 2, 2, 8, "WMVP").Build(); };
    std::vector<Case> cases = {
        {"every object", Builder().FileProperties(123456789000ULL, 3000, 500000).ContentDescription()
             .AudioStream(1, {0x161, 2, 44100, 16000, 1487, 16, 10}, std::vector<uint8_t>(10, 0x11)).UnknownObject(40)
             .VideoStream(2, 640, -480, 24, "WMV3").HeaderExtension({{2, 800000, 333667}, {1, 64000, 0}})
             .ExtendedContentDescription().StreamBitrates({{1, 128000}, {2, 900000}}).Build(),
         "WMV3 640x-480x24 12342s 29.97fps 333667 800000bps", kStereoText},
        {"several streams", Builder().VideoStream(1, 320, 240, 24, "WMV2").AudioStream(2, kStereo)
             .VideoStream(3, 1280, 720, 32, "WVP2").AudioStream(4, {0x162, 6, 48000, 24000, 4096, 24, 0})
             .HeaderExtension({{1, 111, 400000}, {3, 333, 200000}}).Build(),
         "WVP2 1280x720x32 0s 50fps 200000 333bps", "0x162 6ch 48000Hz 24000B/s 4096 24bit type 10"},
        {"records only", video(5).StreamBitrates({{4, 1}, {5, 250000}}).Build(), "WMV1 176x144x12 0s 0fps 0 250000bps", "none"},
        {"extension wins", video(5).StreamBitrates({{5, 250000}}).HeaderExtension({{5, 190000, 0}}).Build(), "WMV1 176x144x12 0s 0fps 0 190000bps", "none"},
        {"other stream's", video(5).HeaderExtension({{6, 190000, 400000}}).Build(), "WMV1 176x144x12 0s 0fps 0 0bps", "none"},
        {"masked record", video(5).StreamBitrates({{0x0085, 777}}).Build(), "WMV1 176x144x12 0s 0fps 0 777bps", "none"},
        {"preroll", withFile(41210000, 3100), "WMVP 2x2x8 1s 0fps 0 0bps", "none"},
        {"truncated", withFile(29999999, 0), "WMVP 2x2x8 2s 0fps 0 0bps", "none"},
        {"wraps", withFile(10000000, 2000), "WMVP 2x2x8 1271310318s 0fps 0 0bps", "none"},
    };
    for (const auto& c : {std::make_pair(1, 1), std::make_pair(8, 14), std::make_pair(0, 0), std::make_pair(12, 12)})
    {
        const Builder::AudioFormat format{0x160, uint16_t(c.first), 22050, 2000, 64, 16, 0};
        cases.push_back({"channels", Builder().FileProperties(50000000, 0, 1).AudioStream(1, format).Build(), "none",
                         "0x160 " + std::to_string(c.first) + "ch 22050Hz 2000B/s 64 16bit type " + std::to_string(c.second)});
    }
    // The audio object's size steps the walk by its low 32 bits; a step that lands nowhere ends it.
    const Builder standard = Standard();
    const uint64_t real = standard.ChildSize(kAudio), sizeAt = standard.ChildOffset(kAudio) + 16;
    for (uint64_t size : std::vector<uint64_t>{real, 0x100000000ULL + real, 0xFFFFFFFF00000000ULL + real})
        cases.push_back({"size " + std::to_string(size), Put(standard.Build(), sizeAt, size, 8), kStandardVideo, kStereoText});
    for (uint64_t size : std::vector<uint64_t>{0, 8, standard.Build().size() + 1, 0xFFFFFFF0, 0xFFFFFFFF, UINT64_MAX})
        cases.push_back({"size " + std::to_string(size), Put(standard.Build(), sizeAt, size, 8), "none", kStereoText});
    // The object count bounds the walk as a signed number.
    for (const auto& c : {std::make_pair(1000u, 2), std::make_pair(0x7FFFFFFFu, 2), std::make_pair(2u, 1), std::make_pair(1u, 0),
                          std::make_pair(0u, 0), std::make_pair(0x80000000u, 0), std::make_pair(0xFFFFFFFFu, 0)})
        cases.push_back({"count " + std::to_string(c.first), Put(standard.Build(), 24, c.first, 4),
                         c.second == 2 ? kStandardVideo : "none", c.second ? kStereoText : "none"});
    // The extension's data size against its objects (the first names another stream), and its
    // inner objects' sizes; the outer walk goes on after it either way.
    const Builder extended = Builder().VideoStream(2, 320, 240, 24, "WMV3").HeaderExtension({{3, 1, 1}, {2, 500000, 400000}})
        .AudioStream(1, kStereo);
    const size_t dataSize = extended.ChildOffset(1) + 42, innerSize = dataSize + 4 + 16;
    const std::string found = "WMV3 320x240x24 0s 25fps 400000 500000bps", lost = "WMV3 320x240x24 0s 0fps 0 0bps";
    for (const auto& c : {std::make_tuple(dataSize, 176ULL, 4, true), std::make_tuple(dataSize, 88ULL, 4, false),
                          std::make_tuple(dataSize, 23ULL, 4, false), std::make_tuple(dataSize, 0x7FFFFFFFULL, 4, true),
                          std::make_tuple(dataSize, 0x80000000ULL, 4, false), std::make_tuple(innerSize, 0ULL, 8, false),
                          std::make_tuple(innerSize, 0xFFFFFFFFULL, 8, false)})
        cases.push_back({"extension " + std::to_string(std::get<1>(c)), Put(extended.Build(), std::get<0>(c), std::get<1>(c), std::get<2>(c)),
                         std::get<3>(c) ? found : lost, kStereoText});
    // Stream numbers are masked to 7 bits in stream properties, not in extended ones.
    for (const auto& c : {std::make_tuple(0x0001, 1, true), std::make_tuple(0x007F, 127, true), std::make_tuple(0x00FF, 127, true),
                          std::make_tuple(0x8005, 5, true), std::make_tuple(0x0080, 0, true), std::make_tuple(0x0080, 128, false),
                          std::make_tuple(0x0005, 133, false)})
        cases.push_back({"number " + std::to_string(std::get<0>(c)),
                         Builder().VideoStream(uint16_t(std::get<0>(c)), 8, 8, 24, "WMVA").HeaderExtension({{uint16_t(std::get<1>(c)), 1000, 400000}}).Build(),
                         std::get<2>(c) ? "WMVA 8x8x24 0s 25fps 400000 1000bps" : "WMVA 8x8x24 0s 0fps 0 0bps", "none"});
    // Fields that promise more than follows read zeros: a WAVEFORMATEX's cbSize; 65535 bitrate
    // records of which one is there, the rest read as stream 0 at 0 bps.
    Builder::AudioFormat format = kStereo;
    format.cbSize = 0xFFFF;
    cases.push_back({"cbSize", Builder().AudioStream(1, format).Build(false), "none", kStereoText});
    const Builder twice = Builder().VideoStream(5, 8, 8, 24, "WMV3").StreamBitrates({{5, 250000}, {5, 1}});
    cases.push_back({"one of two records", Put(twice.Build(), twice.ChildOffset(1) + 24, 1, 2), "WMV3 8x8x24 0s 0fps 0 250000bps", "none"});
    for (uint16_t flags : {0x0002, 0x0080})
    {
        const Builder records = Builder().VideoStream(flags, 8, 8, 24, "WMV3").StreamBitrates({{flags, 600000}});
        cases.push_back({"records " + std::to_string(flags), Put(records.Build(false), records.ChildOffset(1) + 24, 0xFFFF, 2),
                         flags == 2 ? "WMV3 8x8x24 0s 0fps 0 600000bps" : "WMV3 8x8x24 0s 0fps 0 0bps", "none"});
    }
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        const CParseProbe p(c.bytes);
        EXPECT_EQ(CASFFileParser::kOk, p.hr);
        EXPECT_EQ(CASFFileParser::kOk, p.infoResult);
        EXPECT_EQ(c.video, p.Video());
        EXPECT_EQ(c.audio, p.Audio());
    }
}

// Cut at every length, the header reports exactly what lies wholly inside: a stream once its type
// identifier is, its format once that is, frame data once the extended object is.
TEST(ASFHeader, TruncatedAtEveryLengthReportsWhatLiesInside)
{
    const Builder builder = Standard();
    const std::vector<uint8_t> full = builder.Build();
    const CParseProbe whole(full);
    const size_t audio = builder.ChildOffset(kAudio), video = builder.ChildOffset(kVideo);
    const size_t esp = builder.ChildOffset(kExtension) + 46;
    ASSERT_EQ(kStandardVideo, whole.Video());
    for (size_t length = 16; length <= full.size(); ++length)
    {
        SCOPED_TRACE(length);
        const CParseProbe p(std::vector<uint8_t>(full.begin(), full.begin() + long(length)));
        ASSERT_EQ(CASFFileParser::kOk, p.hr);
        ASSERT_EQ(length >= audio + 40, p.bAudio);
        ASSERT_EQ(length >= video + 40, p.bVideo);
        if (length >= audio + 78 + 16) { EXPECT_EQ(kStereoText, p.Audio()); }
        if (p.bVideo) { EXPECT_EQ(5.0, p.video.dDuration); }
        if (length >= video + 78 + 31 && (length < esp + 16 || length >= esp + 88))
        {
            EXPECT_EQ(length < esp + 16 ? "WMV3 320x240x24 5s 0fps 0 0bps" : kStandardVideo, p.Video());
        }
    }
    // Too short or foreign; the identifier alone is a header of no objects.
    for (const std::vector<uint8_t>& bytes : {std::vector<uint8_t>{}, std::vector<uint8_t>{0x30},
                                              std::vector<uint8_t>(full.begin(), full.begin() + 15),
                                              std::vector<uint8_t>{'R', 'I', 'F', 'F', 36, 0, 0, 0}})
        EXPECT_EQ(CASFFileParser::kInvalidData, CParseProbe(bytes).hr) << bytes.size();
}

TEST(ASFHeader, EachParseStartsAfreshUnlessTheFileIsRejected)
{
    CASFFileParser parser;
    CParseProbe fresh;
    fresh.Collect(parser);
    EXPECT_EQ(CASFFileParser::kOk, fresh.infoResult);
    EXPECT_EQ("none none", fresh.Video() + " " + fresh.Audio());

    const std::vector<uint8_t> full = Standard().Build();
    for (bool bExtended : {false, true})
    {
        ASSERT_EQ(CASFFileParser::kOk, CParseProbe(parser, Standard().ContentEncryption(bExtended).Build()).hr);
        EXPECT_TRUE(parser.IsContentProtected());
        EXPECT_FALSE(parser.HeaderOverrunsFile());
        // A header longer than its bytes is read as far as it goes, and told apart.
        const CParseProbe longer(parser, Put(full, 16, bExtended ? 0x80000000ULL : full.size() + 1, 8));
        EXPECT_EQ(kStandardVideo + " " + kStereoText, longer.Video() + " " + longer.Audio());
        EXPECT_FALSE(parser.IsContentProtected());
        EXPECT_TRUE(parser.HeaderOverrunsFile());
        EXPECT_EQ(CASFFileParser::kOk, CParseProbe(parser, std::vector<uint8_t>(full.begin(), full.begin() + 100)).hr);
        EXPECT_TRUE(parser.HeaderOverrunsFile());
    }
    // A rejected file leaves what the last one gave; the next one replaces it all.
    ASSERT_EQ(CASFFileParser::kOk, CParseProbe(parser, Put(Standard().ContentEncryption(true).Build(), 16, UINT64_MAX, 8)).hr);
    const CParseProbe rejected(parser, {'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'A', 'V', 'E'});
    EXPECT_EQ(CASFFileParser::kInvalidData, rejected.hr);
    EXPECT_TRUE(parser.HeaderOverrunsFile() && parser.IsContentProtected());
    EXPECT_EQ(kStandardVideo + " " + kStereoText, rejected.Video() + " " + rejected.Audio());
    const CParseProbe audioOnly(parser, Builder().AudioStream(1, kStereo).Build());
    EXPECT_EQ("none " + kStereoText, audioOnly.Video() + " " + audioOnly.Audio());
    EXPECT_FALSE(parser.HeaderOverrunsFile() || parser.IsContentProtected());
}

// The bounded reader under the parser (and the fuzzer's oracle): little-endian, zeros past the
// end, and a high-water mark of how far anything looked.
TEST(ASFHeader, ByteViewReadsZerosPastTheEndAndMarksHowFarItLooked)
{
    const CGuardedBuffer bytes({0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09});
    const CByteView view(bytes.Data(), bytes.Size());
    const uint8_t tail[] = {0x08, 0x09, 0x00, 0x00};
    EXPECT_EQ(0x05040302u, view.ReadU32(1));
    EXPECT_EQ(0x0201u, view.ReadU16(0));
    EXPECT_EQ(5u, view.HighWaterMark());
    EXPECT_EQ(0x09080706ULL, view.ReadU64(5));  // straddles the end
    EXPECT_EQ(0u, view.ReadU64(UINT64_MAX - 3));  // no wrap back to the start
    EXPECT_EQ(9u, view.HighWaterMark());
    EXPECT_TRUE(view.Equals(7, tail, sizeof(tail)) && !view.Equals(6, tail, sizeof(tail)));
    EXPECT_TRUE(view.Contains(0, 9) && view.Contains(9, 0) && !view.Contains(1, 9) && !view.Contains(10, 0));
    EXPECT_FALSE(view.Contains(1, UINT64_MAX) || CByteView(nullptr, 100).Contains(0, 1));
}

} // namespace
