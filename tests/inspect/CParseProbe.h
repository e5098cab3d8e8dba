// What the parser hands out, as text: "WMV3 640x-480x24 12342s 29.97fps 333667 800000bps | 0x161
// 2ch 44100Hz 16000B/s 1487 16bit type 2", "none" for a record it left alone, "rejected " ahead
// when the parse failed. Parse hands it a copy of the bytes in a block of exactly their size, so
// that the native build's address sanitizer stops a read of even one byte past them.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

class CASFFileParser;

std::string Describe(CASFFileParser& parser, int32_t hrParse);
std::string Parse(const std::vector<uint8_t>& bytes, CASFFileParser* pParser = nullptr);
