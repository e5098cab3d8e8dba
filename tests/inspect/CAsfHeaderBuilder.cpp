#include "CAsfHeaderBuilder.h"

#include <cstdlib>
#include <string>

namespace {

// GUIDs in their registry text form; the byte order in the file is worked out here, apart from
// the parser's own table, so that a slip in either shows up as a test failure.
const char kHeaderObject[] = "75B22630-668E-11CF-A6D9-00AA0062CE6C", kDataObject[] = "75B22636-668E-11CF-A6D9-00AA0062CE6C";
const char kFileProperties[] = "8CABDCA1-A947-11CF-8EE4-00C00C205365", kStreamProperties[] = "B7DC0791-A9B7-11CF-8EE6-00C00C205365";
const char kHeaderExtension[] = "5FBF03B5-A92E-11CF-8EE3-00C00C205365", kReserved1[] = "ABD3D211-A9BA-11CF-8EE6-00C00C205365";
const char kExtendedStreamProperties[] = "14E6A5CB-C672-4332-8399-A96952065B5A";
const char kStreamBitrateProperties[] = "7BF875CE-468D-11D1-8D82-006097C9A2B2";
const char kContentDescription[] = "75B22633-668E-11CF-A6D9-00AA0062CE6C";
const char kExtendedContentDescription[] = "D2D0A440-E307-11D2-97F0-00A0C95EA850";
const char kAudioMedia[] = "F8699E40-5B4D-11CF-A8FD-00805F5C442B", kVideoMedia[] = "BC19EFC0-5B4D-11CF-A8FD-00805F5C442B";
const char kNoErrorCorrection[] = "20FB5700-5B55-11CF-A8FD-00805F5C442B";
const char kContentEncryption[] = "2211B3FB-BD23-11D2-B4B7-00A0C955FC6E";
const char kExtendedContentEncryption[] = "298AE614-2622-4C17-B935-DAE07EE9289C";
const char kUnknown[] = "DEADBEEF-0000-4000-8000-00000000CAFE";

struct Writer
{
    std::vector<uint8_t> bytes;
    Writer& Int(uint64_t value, int cb)
    {
        for (int i = 0; i < cb; ++i)
            bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
        return *this;
    }
    Writer& U8(uint8_t v) { return Int(v, 1); }
    Writer& U16(uint16_t v) { return Int(v, 2); }
    Writer& U32(uint32_t v) { return Int(v, 4); }
    Writer& U64(uint64_t v) { return Int(v, 8); }
    Writer& Append(const std::vector<uint8_t>& more) { bytes.insert(bytes.end(), more.begin(), more.end()); return *this; }
    // The first three groups little-endian, the last eight bytes in the order written.
    Writer& Guid(const std::string& text)
    {
        const auto hex = [&](size_t at, size_t n) { return std::strtoull(text.substr(at, n).c_str(), nullptr, 16); };
        Int(hex(0, 8), 4).Int(hex(9, 4), 2).Int(hex(14, 4), 2);
        for (size_t at : {19, 21, 24, 26, 28, 30, 32, 34})
            U8(static_cast<uint8_t>(hex(at, 2)));
        return *this;
    }
};

// Object ID and Object Size, then the body.
std::vector<uint8_t> Object(const char* id, const std::vector<uint8_t>& body)
{
    return Writer().Guid(id).U64(24 + body.size()).Append(body).bytes;
}

std::vector<uint8_t> StreamProperties(const char* type, uint16_t flags, const std::vector<uint8_t>& typeSpecific)
{
    Writer w;
    w.Guid(type).Guid(kNoErrorCorrection).U64(0).U32(static_cast<uint32_t>(typeSpecific.size())).U32(0);
    return Object(kStreamProperties, w.U16(flags).U32(0).Append(typeSpecific).bytes);
}

} // namespace

CAsfHeaderBuilder& CAsfHeaderBuilder::FileProperties(uint64_t playDuration100ns, uint64_t prerollMs, uint32_t maxBitrate)
{
    Writer w;
    w.Guid(kUnknown).U64(0x12345).U64(0).U64(10);  // file ID, file size, creation date, packets
    w.U64(playDuration100ns).U64(playDuration100ns).U64(prerollMs);  // play, send, preroll
    w.U32(2).U32(3200).U32(3200).U32(maxBitrate);  // flags, packet sizes, maximum bitrate
    return Add(Object(kFileProperties, w.bytes));
}

CAsfHeaderBuilder& CAsfHeaderBuilder::AudioStream(uint16_t flags, const AudioFormat& f, const std::vector<uint8_t>& extra)
{
    Writer wfx;
    wfx.U16(f.wFormatTag).U16(f.nChannels).U32(f.nSamplesPerSec).U32(f.nAvgBytesPerSec);
    wfx.U16(f.nBlockAlign).U16(f.wBitsPerSample).U16(f.cbSize).Append(extra);
    return Add(StreamProperties(kAudioMedia, flags, wfx.bytes));
}

CAsfHeaderBuilder& CAsfHeaderBuilder::VideoStream(uint16_t flags, int32_t width, int32_t height, uint16_t bitCount,
                                                  const char* fourCC)
{
    Writer v;
    // Encoded width and height deliberately differ from the bitmap's, which is what counts.
    v.U32(static_cast<uint32_t>(width) + 16).U32(static_cast<uint32_t>(height) + 16).U8(2).U16(40);
    v.U32(40).U32(static_cast<uint32_t>(width)).U32(static_cast<uint32_t>(height)).U16(1).U16(bitCount);
    for (int i = 0; i < 4; ++i)
        v.U8(static_cast<uint8_t>(fourCC[i]));
    v.Append(std::vector<uint8_t>(20, 0));  // image size, resolution, colours
    return Add(StreamProperties(kVideoMedia, flags, v.bytes));
}

CAsfHeaderBuilder& CAsfHeaderBuilder::HeaderExtension(const std::vector<ExtendedStream>& streams)
{
    Writer inner;
    for (const ExtendedStream& s : streams)
    {
        Writer e;
        e.U64(0).U64(0).U32(s.dwDataBitrate).U32(3000).U32(3000);  // times, bitrate, buffer
        e.U32(0).U32(0).U32(0).U32(4000).U32(0);  // alternate values, max object size, flags
        e.U16(s.wStreamNumber).U16(0).U64(static_cast<uint64_t>(s.llAvgTimePerFrame)).U16(0).U16(0);  // no names, no systems
        inner.Append(Object(kExtendedStreamProperties, e.bytes));
    }
    Writer w;
    w.Guid(kReserved1).U16(6).U32(static_cast<uint32_t>(inner.bytes.size())).Append(inner.bytes);
    return Add(Object(kHeaderExtension, w.bytes));
}

CAsfHeaderBuilder& CAsfHeaderBuilder::StreamBitrates(const std::vector<std::pair<uint16_t, uint32_t>>& records)
{
    Writer w;
    w.U16(static_cast<uint16_t>(records.size()));
    for (const auto& r : records)
        w.U16(r.first).U32(r.second);
    return Add(Object(kStreamBitrateProperties, w.bytes));
}

CAsfHeaderBuilder& CAsfHeaderBuilder::ContentDescription()  // a title "T", nothing else
{
    return Add(Object(kContentDescription, Writer().U16(4).U16(0).U16(0).U16(0).U16(0).U16('T').U16(0).bytes));
}
CAsfHeaderBuilder& CAsfHeaderBuilder::ExtendedContentDescription() { return Add(Object(kExtendedContentDescription, Writer().U16(0).bytes)); }

std::vector<uint8_t> CAsfHeaderBuilder::EncryptionObject(bool bExtended)
{
    if (bExtended)
        return Object(kExtendedContentEncryption, Writer().U32(4).U32(0x3C3F786D).bytes);
    // Secret data, protection type "DRM", key identifier and licence address, as a packager writes them.
    Writer w;
    w.U32(4).U32(0x0BADF00D).U32(4).U8('D').U8('R').U8('M').U8(0).U32(3).U8('k').U8('1').U8(0).U32(1).U8(0);
    return Object(kContentEncryption, w.bytes);
}

CAsfHeaderBuilder& CAsfHeaderBuilder::ContentEncryption(bool bExtended) { return Add(EncryptionObject(bExtended)); }
CAsfHeaderBuilder& CAsfHeaderBuilder::UnknownObject(size_t cbBody) { return Add(Object(kUnknown, std::vector<uint8_t>(cbBody, 0))); }

std::vector<uint8_t> CAsfHeaderBuilder::Build(bool bWithDataObject) const
{
    Writer children, w;
    for (const auto& child : m_children)
        children.Append(child);
    w.Guid(kHeaderObject).U64(30 + children.bytes.size()).U32(static_cast<uint32_t>(m_children.size())).U8(1).U8(2);
    w.Append(children.bytes);
    if (bWithDataObject)
        w.Guid(kDataObject).U64(50).Guid(kUnknown).U64(0).U16(0x0101);
    return w.bytes;
}

size_t CAsfHeaderBuilder::ChildOffset(size_t index) const
{
    size_t offset = 30;
    for (size_t i = 0; i < index; ++i)
        offset += m_children.at(i).size();
    m_children.at(index);  // throws for no such child
    return offset;
}

void CAsfHeaderBuilder::PutU32(std::vector<uint8_t>& bytes, size_t offset, uint32_t value) { PutU64(bytes, offset, value, 4); }
void CAsfHeaderBuilder::PutU64(std::vector<uint8_t>& bytes, size_t offset, uint64_t value, size_t cb)
{
    for (size_t i = 0; i < cb; ++i)
        bytes.at(offset + i) = static_cast<uint8_t>(value >> (8 * i));
}
