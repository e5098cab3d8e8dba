// What the parser reports from headers written field by field, well-formed and damaged (natively
// under the address sanitizer, which stops any read outside their bytes).
#include <gtest/gtest.h>

#include <tuple>

#include "CAsfHeaderBuilder.h"
#include "CParseProbe.h"
#include "inspect/CASFFileParser.h"
#include "inspect/CByteView.h"

namespace {

using Builder = CAsfHeaderBuilder;
const Builder::AudioFormat kStereo{0x161, 2, 44100, 16000, 1487, 16, 0};
const std::string kStereoText = "0x161 2ch 44100Hz 16000B/s 1487 16bit type 2", kVideoText = "WMV3 320x240x24 5s 25fps 400000 500000bps";
const std::string kStandard = kVideoText + " | " + kStereoText;
enum Child { kFile, kAudio, kVideo };

Builder Standard()
{
    return Builder().FileProperties(80000000, 3000, 700000).AudioStream(1, kStereo).VideoStream(2, 320, 240, 24, "WMV3")
        .HeaderExtension({{2, 500000, 400000}}).StreamBitrates({{1, 64000}, {2, 600000}}).UnknownObject(14);
}

TEST(ASFHeader, ReportsTheFieldsOfTheLastStreamOfEachKindAndCopesWithDamage)
{
    const auto video = [](uint16_t flags) { return Builder().VideoStream(flags, 176, 144, 12, "WMV1"); };
    const auto withFile = [](uint64_t play, uint64_t preroll) { return Builder().FileProperties(play, preroll, 0).VideoStream(1, 2, 2, 8, "WMVP").Build(); };
    const std::vector<uint8_t> bare = Builder().Build();
    std::vector<std::pair<std::vector<uint8_t>, std::string>> cases = {
        {Builder().FileProperties(123456789000ULL, 3000, 500000)
             .AudioStream(1, {0x161, 2, 44100, 16000, 1487, 16, 10}, std::vector<uint8_t>(10, 0x11)).UnknownObject(40)
             .VideoStream(2, 640, -480, 24, "WMV3").HeaderExtension({{2, 800000, 333667}, {1, 64000, 0}})
             .StreamBitrates({{1, 128000}, {2, 900000}}).Build(),
         "WMV3 640x-480x24 12342s 29.97fps 333667 800000bps | " + kStereoText},
        {Builder().VideoStream(1, 320, 240, 24, "WMV2").AudioStream(2, kStereo).VideoStream(3, 1280, 720, 32, "WVP2")
             .AudioStream(4, {0x162, 6, 48000, 24000, 4096, 24, 0}).HeaderExtension({{1, 111, 400000}, {3, 333, 200000}}).Build(),
         "WVP2 1280x720x32 0s 50fps 200000 333bps | 0x162 6ch 48000Hz 24000B/s 4096 24bit type 10"},
        {video(5).StreamBitrates({{4, 1}, {5, 250000}}).Build(), "WMV1 176x144x12 0s 0fps 0 250000bps | none"},
        {video(5).StreamBitrates({{5, 250000}}).HeaderExtension({{5, 190000, 0}}).Build(), "WMV1 176x144x12 0s 0fps 0 190000bps | none"},
        {video(5).HeaderExtension({{6, 190000, 400000}}).Build(), "WMV1 176x144x12 0s 0fps 0 0bps | none"},
        {video(5).StreamBitrates({{0x0085, 777}}).Build(), "WMV1 176x144x12 0s 0fps 0 777bps | none"},
        {withFile(41210000, 3100), "WMVP 2x2x8 1s 0fps 0 0bps | none"},  // the preroll is taken off
        {withFile(29999999, 0), "WMVP 2x2x8 2s 0fps 0 0bps | none"},
        {withFile(10000000, 2000), "WMVP 2x2x8 1271310318s 0fps 0 0bps | none"},  // and wraps
        // A WAVEFORMATEX's cbSize promising more than follows; too short or foreign; the identifier alone.
        {Builder().AudioStream(1, {0x161, 2, 44100, 16000, 1487, 16, 0xFFFF}).Build(false), "none | " + kStereoText},
        {{}, "rejected none | none"}, {{'R', 'I', 'F', 'F', 36, 0, 0, 0}, "rejected none | none"},
        {std::vector<uint8_t>(bare.begin(), bare.begin() + 15), "rejected none | none"}, {std::vector<uint8_t>(bare.begin(), bare.begin() + 16), "none | none"},
    };
    for (const auto& c : {std::make_pair(1, 1), std::make_pair(8, 14), std::make_pair(0, 0), std::make_pair(12, 12)})
        cases.push_back({Builder().AudioStream(1, {0x160, uint16_t(c.first), 22050, 2000, 64, 16, 0}).Build(),
                         "none | 0x160 " + std::to_string(c.first) + "ch 22050Hz 2000B/s 64 16bit type " + std::to_string(c.second)});
    // The audio object's size steps the walk by its low 32 bits; a step that lands nowhere ends it.
    const Builder standard = Standard();
    const std::vector<uint8_t> full = standard.Build();
    const uint64_t real = standard.ChildOffset(kVideo) - standard.ChildOffset(kAudio), sizeAt = standard.ChildOffset(kAudio) + 16;
    for (uint64_t size : std::vector<uint64_t>{real, 0x100000000ULL + real, 0xFFFFFFFF00000000ULL + real, 0, 8, full.size() + 1, 0xFFFFFFFF, UINT64_MAX})
        cases.push_back({Builder::Put(full, sizeAt, size, 8), uint32_t(size) == real ? kStandard : "none | " + kStereoText});
    // Cut inside: a stream is there once its type identifier is, its fields once they are.
    for (size_t cut : {39, 40})
        cases.push_back({std::vector<uint8_t>(full.begin(), full.begin() + long(standard.ChildOffset(kVideo) + cut)),
                         (cut == 39 ? "none | " : " 0x0x0 5s 0fps 0 0bps | ") + kStereoText});
    // The object count bounds the walk as a signed number.
    for (const auto& c : std::vector<std::pair<uint32_t, std::string>>{{1000, kStandard}, {0x7FFFFFFF, kStandard}, {2, "none | " + kStereoText},
                                                                         {1, "none | none"}, {0, "none | none"}, {0x80000000, "none | none"}})
        cases.push_back({Builder::Put(full, 24, c.first, 4), c.second});
    // The extension's data size against its objects (the first names another stream), and its
    // inner objects' sizes; the outer walk goes on after it either way.
    const Builder extended = Builder().VideoStream(2, 320, 240, 24, "WMV3").HeaderExtension({{3, 1, 1}, {2, 500000, 400000}}).AudioStream(1, kStereo);
    const size_t dataSize = extended.ChildOffset(1) + 42, innerSize = dataSize + 4 + 16;
    for (const auto& c : {std::make_tuple(dataSize, 176ULL, 4, true), std::make_tuple(dataSize, 88ULL, 4, false),
                          std::make_tuple(dataSize, 23ULL, 4, false), std::make_tuple(dataSize, 0x7FFFFFFFULL, 4, true),
                          std::make_tuple(dataSize, 0x80000000ULL, 4, false), std::make_tuple(innerSize, 0ULL, 8, false),
                          std::make_tuple(innerSize, 0xFFFFFFFFULL, 8, false)})
        cases.push_back({Builder::Put(extended.Build(), std::get<0>(c), std::get<1>(c), size_t(std::get<2>(c))),
                         (std::get<3>(c) ? "WMV3 320x240x24 0s 25fps 400000 500000bps | " : "WMV3 320x240x24 0s 0fps 0 0bps | ") + kStereoText});
    // Stream numbers are masked to 7 bits in stream properties, not in extended ones.
    for (const auto& c : {std::make_tuple(0x00FF, 127, true), std::make_tuple(0x8005, 5, true), std::make_tuple(0x0080, 128, false), std::make_tuple(0x0005, 133, false)})
        cases.push_back({Builder().VideoStream(uint16_t(std::get<0>(c)), 8, 8, 24, "WMVA").HeaderExtension({{uint16_t(std::get<1>(c)), 1000, 400000}}).Build(),
                         std::get<2>(c) ? "WMVA 8x8x24 0s 25fps 400000 1000bps | none" : "WMVA 8x8x24 0s 0fps 0 0bps | none"});
    // A record count of one over two records reads one; of 65535 over one, the rest read as stream 0 at 0 bps.
    const Builder twice = Builder().VideoStream(5, 8, 8, 24, "WMV3").StreamBitrates({{5, 250000}, {5, 1}});
    cases.push_back({Builder::Put(twice.Build(), twice.ChildOffset(1) + 24, 1, 2), "WMV3 8x8x24 0s 0fps 0 250000bps | none"});
    for (uint16_t flags : {0x0002, 0x0080})
    {
        const Builder records = Builder().VideoStream(flags, 8, 8, 24, "WMV3").StreamBitrates({{flags, 600000}});
        cases.push_back({Builder::Put(records.Build(false), records.ChildOffset(1) + 24, 0xFFFF, 2),
                         flags == 2 ? "WMV3 8x8x24 0s 0fps 0 600000bps | none" : "WMV3 8x8x24 0s 0fps 0 0bps | none"});
    }
    for (size_t i = 0; i < cases.size(); ++i)
        EXPECT_EQ(cases[i].second, Parse(cases[i].first)) << "case " << i;
    // Nothing after the header object (its six children) is looked at.
    CByteView view(full.data(), full.size());
    EXPECT_EQ(CASFFileParser::kOk, CASFFileParser().ParseHeader(view));
    EXPECT_LE(view.HighWaterMark(), standard.ChildOffset(6));
}

TEST(ASFHeader, EachParseStartsAfreshUnlessTheFileIsRejected)
{
    CASFFileParser parser;
    EXPECT_EQ("none | none", Describe(parser, CASFFileParser::kOk));
    const std::vector<uint8_t> full = Standard().Build();
    for (bool bExtended : {false, true})
    {
        ASSERT_EQ(kStandard, Parse(Standard().ContentEncryption(bExtended).Build(), &parser));
        EXPECT_TRUE(parser.IsContentProtected() && !parser.HeaderOverrunsFile());
        // A header longer than its bytes, by one or far more, is read as far as it goes and told apart.
        EXPECT_EQ(kStandard, Parse(Builder::Put(full, 16, bExtended ? 0x80000000ULL : full.size() + 1, 8), &parser));
        EXPECT_TRUE(!parser.IsContentProtected() && parser.HeaderOverrunsFile());
    }
    // A rejected file leaves what the last one gave; the next one replaces it all.
    ASSERT_EQ(kStandard, Parse(Builder::Put(Standard().ContentEncryption(true).Build(), 16, UINT64_MAX, 8), &parser));
    EXPECT_EQ("rejected " + kStandard, Parse({'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'A', 'V', 'E'}, &parser));
    EXPECT_TRUE(parser.HeaderOverrunsFile() && parser.IsContentProtected());
    EXPECT_EQ("none | " + kStereoText, Parse(Builder().AudioStream(1, kStereo).Build(), &parser));
    EXPECT_FALSE(parser.HeaderOverrunsFile() || parser.IsContentProtected());
}

} // namespace
