// Identifiers of the ASF objects and stream types the header parser recognises, as they lie in a
// file: the GUID's first three fields little-endian, the last eight bytes in order.
#pragma once

#include <cstdint>

struct ASFObjectId
{
    uint8_t bytes[16];
};

// Written in the familiar {d1-d2-d3-d4} form so each constant can be compared with the published
// value at a glance; d4 holds the last eight bytes, first byte in the highest position.
constexpr ASFObjectId MakeASFObjectId(uint32_t d1, uint16_t d2, uint16_t d3, uint64_t d4)
{
    return ASFObjectId{{
        static_cast<uint8_t>(d1), static_cast<uint8_t>(d1 >> 8), static_cast<uint8_t>(d1 >> 16),
        static_cast<uint8_t>(d1 >> 24), static_cast<uint8_t>(d2), static_cast<uint8_t>(d2 >> 8),
        static_cast<uint8_t>(d3), static_cast<uint8_t>(d3 >> 8), static_cast<uint8_t>(d4 >> 56),
        static_cast<uint8_t>(d4 >> 48), static_cast<uint8_t>(d4 >> 40), static_cast<uint8_t>(d4 >> 32),
        static_cast<uint8_t>(d4 >> 24), static_cast<uint8_t>(d4 >> 16), static_cast<uint8_t>(d4 >> 8),
        static_cast<uint8_t>(d4)}};
}

inline constexpr ASFObjectId ASF_Header_Object =
    MakeASFObjectId(0x75B22630, 0x668E, 0x11CF, 0xA6D900AA0062CE6CULL);
inline constexpr ASFObjectId ASF_File_Properties_Object =
    MakeASFObjectId(0x8CABDCA1, 0xA947, 0x11CF, 0x8EE400C00C205365ULL);
inline constexpr ASFObjectId ASF_Stream_Properties_Object =
    MakeASFObjectId(0xB7DC0791, 0xA9B7, 0x11CF, 0x8EE600C00C205365ULL);
inline constexpr ASFObjectId ASF_Header_Extension_Object =
    MakeASFObjectId(0x5FBF03B5, 0xA92E, 0x11CF, 0x8EE300C00C205365ULL);
inline constexpr ASFObjectId ASF_Content_Description_Object =
    MakeASFObjectId(0x75B22633, 0x668E, 0x11CF, 0xA6D900AA0062CE6CULL);
inline constexpr ASFObjectId ASF_Extended_Content_Description_Object =
    MakeASFObjectId(0xD2D0A440, 0xE307, 0x11D2, 0x97F000A0C95EA850ULL);
inline constexpr ASFObjectId ASF_Stream_Bitrate_Properties_Object =
    MakeASFObjectId(0x7BF875CE, 0x468D, 0x11D1, 0x8D82006097C9A2B2ULL);
inline constexpr ASFObjectId ASF_Extended_Stream_Properties_Object =
    MakeASFObjectId(0x14E6A5CB, 0xC672, 0x4332, 0x8399A96952065B5AULL);
// Either of these in the top-level header means the content is protected by a licence.
inline constexpr ASFObjectId ASF_Content_Encryption_Object =
    MakeASFObjectId(0x2211B3FB, 0xBD23, 0x11D2, 0xB4B700A0C955FC6EULL);
inline constexpr ASFObjectId ASF_Extended_Content_Encryption_Object =
    MakeASFObjectId(0x298AE614, 0x2622, 0x4C17, 0xB935DAE07EE9289CULL);
inline constexpr ASFObjectId ASF_Audio_Media =
    MakeASFObjectId(0xF8699E40, 0x5B4D, 0x11CF, 0xA8FD00805F5C442BULL);
inline constexpr ASFObjectId ASF_Video_Media =
    MakeASFObjectId(0xBC19EFC0, 0x5B4D, 0x11CF, 0xA8FD00805F5C442BULL);
