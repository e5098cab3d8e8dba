// Writes ASF headers field after field, so that tests can state headers no encoder here produces
// (WMV9 FourCCs, extended stream properties, odd stream numbers, objects it does not know) and damage them at known places.
#pragma once
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

class CAsfHeaderBuilder
{
public:
    // A WAVEFORMATEX; cbSize is written as given, whatever extra bytes follow.
    struct AudioFormat { uint16_t wFormatTag, nChannels; uint32_t nSamplesPerSec, nAvgBytesPerSec; uint16_t nBlockAlign, wBitsPerSample, cbSize; };
    struct ExtendedStream { uint16_t wStreamNumber; uint32_t dwDataBitrate; int64_t llAvgTimePerFrame; };

    CAsfHeaderBuilder& FileProperties(uint64_t playDuration100ns, uint64_t prerollMs, uint32_t maxBitrate);
    CAsfHeaderBuilder& AudioStream(uint16_t flags, const AudioFormat& format, const std::vector<uint8_t>& extra = {});
    CAsfHeaderBuilder& VideoStream(uint16_t flags, int32_t width, int32_t height, uint16_t bitCount, const char* fourCC);
    CAsfHeaderBuilder& HeaderExtension(const std::vector<ExtendedStream>& streams);
    CAsfHeaderBuilder& StreamBitrates(const std::vector<std::pair<uint16_t, uint32_t>>& records);
    CAsfHeaderBuilder& UnknownObject(size_t cbBody);
    CAsfHeaderBuilder& ContentEncryption(bool bExtended) { return Add(EncryptionObject(bExtended)); }
    static std::vector<uint8_t> EncryptionObject(bool bExtended);  // content encryption, or its extended form
    // The header object with every child, then the start of a Data object unless told otherwise.
    std::vector<uint8_t> Build(bool bWithDataObject = true) const;
    size_t ChildOffset(size_t index) const;  // index == the count: where the children end
    static std::vector<uint8_t> Put(std::vector<uint8_t> bytes, size_t offset, uint64_t value, size_t cb);  // little-endian

private:
    CAsfHeaderBuilder& Add(std::vector<uint8_t> child) { m_children.push_back(std::move(child)); return *this; }
    std::vector<std::vector<uint8_t>> m_children;
};
