#include "CAsfHeaderBuilder.h"

#include <cstdlib>
#include <string>

namespace {

// GUIDs in their registry text form; the byte order in the file is worked out here, apart from
// the parser's own table, so that a slip in either shows up as a test failure.
const char kHeader[] = "75B22630-668E-11CF-A6D9-00AA0062CE6C", kData[] = "75B22636-668E-11CF-A6D9-00AA0062CE6C";
const char kFile[] = "8CABDCA1-A947-11CF-8EE4-00C00C205365", kStream[] = "B7DC0791-A9B7-11CF-8EE6-00C00C205365";
const char kExtension[] = "5FBF03B5-A92E-11CF-8EE3-00C00C205365", kReserved1[] = "ABD3D211-A9BA-11CF-8EE6-00C00C205365";
const char kExtendedStream[] = "14E6A5CB-C672-4332-8399-A96952065B5A", kBitrates[] = "7BF875CE-468D-11D1-8D82-006097C9A2B2";
const char kAudio[] = "F8699E40-5B4D-11CF-A8FD-00805F5C442B", kVideo[] = "BC19EFC0-5B4D-11CF-A8FD-00805F5C442B";
const char kNoErrorCorrection[] = "20FB5700-5B55-11CF-A8FD-00805F5C442B", kUnknown[] = "DEADBEEF-0000-4000-8000-00000000CAFE";
const char kEncryption[] = "2211B3FB-BD23-11D2-B4B7-00A0C955FC6E", kExtendedEncryption[] = "298AE614-2622-4C17-B935-DAE07EE9289C";

struct Writer
{
    std::vector<uint8_t> bytes;
    Writer& Int(uint64_t value, int cb) { for (int i = 0; i < cb; ++i) bytes.push_back(uint8_t(value >> (8 * i))); return *this; }
    Writer& U8(uint64_t v) { return Int(v, 1); }
    Writer& U16(uint64_t v) { return Int(v, 2); }
    Writer& U32(uint64_t v) { return Int(v, 4); }
    Writer& U64(uint64_t v) { return Int(v, 8); }
    Writer& Append(const std::vector<uint8_t>& more) { bytes.insert(bytes.end(), more.begin(), more.end()); return *this; }
    Writer& Guid(const std::string& text)  // the first three groups little-endian, the last eight bytes as written
    {
        const auto hex = [&](size_t at, size_t n) { return std::strtoull(text.substr(at, n).c_str(), nullptr, 16); };
        Int(hex(0, 8), 4).Int(hex(9, 4), 2).Int(hex(14, 4), 2);
        for (size_t at : {19, 21, 24, 26, 28, 30, 32, 34})
            U8(hex(at, 2));
        return *this;
    }
};

// An object: its ID and size, then the body.
std::vector<uint8_t> Object(const char* id, const std::vector<uint8_t>& body) { return Writer().Guid(id).U64(24 + body.size()).Append(body).bytes; }
std::vector<uint8_t> StreamProperties(const char* type, uint16_t flags, const std::vector<uint8_t>& specific)
{
    return Object(kStream, Writer().Guid(type).Guid(kNoErrorCorrection).U64(0).U32(specific.size()).U32(0).U16(flags).U32(0).Append(specific).bytes);
}

} // namespace

CAsfHeaderBuilder& CAsfHeaderBuilder::FileProperties(uint64_t playDuration100ns, uint64_t prerollMs, uint32_t maxBitrate)
{
    // File ID, size, creation date, packets; play, send, preroll; flags, packet sizes, maximum bitrate.
    return Add(Object(kFile, Writer().Guid(kUnknown).U64(0x12345).U64(0).U64(10).U64(playDuration100ns).U64(playDuration100ns)
                                 .U64(prerollMs).U32(2).U32(3200).U32(3200).U32(maxBitrate).bytes));
}

CAsfHeaderBuilder& CAsfHeaderBuilder::AudioStream(uint16_t flags, const AudioFormat& f, const std::vector<uint8_t>& extra)
{
    return Add(StreamProperties(kAudio, flags, Writer().U16(f.wFormatTag).U16(f.nChannels).U32(f.nSamplesPerSec).U32(f.nAvgBytesPerSec)
                                                   .U16(f.nBlockAlign).U16(f.wBitsPerSample).U16(f.cbSize).Append(extra).bytes));
}

// The encoded width and height differ from the bitmap's on purpose: the bitmap's count.
CAsfHeaderBuilder& CAsfHeaderBuilder::VideoStream(uint16_t flags, int32_t width, int32_t height, uint16_t bitCount, const char* fourCC)
{
    Writer v;  // then the FourCC, and image size, resolution and colours
    v.U32(uint32_t(width) + 16).U32(uint32_t(height) + 16).U8(2).U16(40).U32(40).U32(uint32_t(width)).U32(uint32_t(height)).U16(1).U16(bitCount);
    v.Append(std::vector<uint8_t>(fourCC, fourCC + 4)).Append(std::vector<uint8_t>(20, 0));
    return Add(StreamProperties(kVideo, flags, v.bytes));
}

CAsfHeaderBuilder& CAsfHeaderBuilder::HeaderExtension(const std::vector<ExtendedStream>& streams)
{
    Writer inner;  // each: times, bitrate, buffer, alternate values, max object size, flags, number, no names, no systems
    for (const ExtendedStream& s : streams)
        inner.Append(Object(kExtendedStream, Writer().U64(0).U64(0).U32(s.dwDataBitrate).U32(3000).U32(3000).U32(0).U32(0).U32(0).U32(4000)
                                                 .U32(0).U16(s.wStreamNumber).U16(0).U64(uint64_t(s.llAvgTimePerFrame)).U32(0).bytes));
    return Add(Object(kExtension, Writer().Guid(kReserved1).U16(6).U32(inner.bytes.size()).Append(inner.bytes).bytes));
}

CAsfHeaderBuilder& CAsfHeaderBuilder::StreamBitrates(const std::vector<std::pair<uint16_t, uint32_t>>& records)
{
    Writer w = Writer().U16(records.size());
    for (const auto& r : records)
        w.U16(r.first).U32(r.second);
    return Add(Object(kBitrates, w.bytes));
}

CAsfHeaderBuilder& CAsfHeaderBuilder::UnknownObject(size_t cbBody) { return Add(Object(kUnknown, std::vector<uint8_t>(cbBody, 0))); }

// Secret data, protection type "DRM", key identifier and licence address, as a packager writes them.
std::vector<uint8_t> CAsfHeaderBuilder::EncryptionObject(bool bExtended)
{
    return bExtended ? Object(kExtendedEncryption, Writer().U32(4).U32(0x3C3F786D).bytes)
                     : Object(kEncryption, Writer().U32(4).U32(0x0BADF00D).U32(4).U8('D').U8('R').U8('M').U8(0).U32(3).U8('k').U8('1')
                                               .U8(0).U32(1).U8(0).bytes);
}

std::vector<uint8_t> CAsfHeaderBuilder::Build(bool bWithDataObject) const
{
    Writer w;
    w.Guid(kHeader).U64(ChildOffset(m_children.size())).U32(m_children.size()).U8(1).U8(2);
    for (const auto& child : m_children)
        w.Append(child);
    return bWithDataObject ? w.Guid(kData).U64(50).Guid(kUnknown).U64(0).U16(0x0101).bytes : w.bytes;
}

size_t CAsfHeaderBuilder::ChildOffset(size_t index) const
{
    size_t offset = 30;
    for (size_t i = 0; i < index; ++i)
        offset += m_children.at(i).size();
    return offset;
}

std::vector<uint8_t> CAsfHeaderBuilder::Put(std::vector<uint8_t> bytes, size_t offset, uint64_t value, size_t cb)
{
    for (size_t i = 0; i < cb; ++i)
        bytes.at(offset + i) = static_cast<uint8_t>(value >> (8 * i));
    return bytes;
}
