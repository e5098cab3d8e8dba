// A double turned into an unsigned 32-bit count as every caller here wants it: not a number and
// anything not above zero give 0, anything from 2^32 - 1 up gives 2^32 - 1, the rest is
// truncated. Converting an out-of-range double directly is undefined, so it is never done.
#pragma once

#include <cstdint>

class CSaturate
{
public:
    static uint32_t ToUInt32(double value)
    {
        if (!(value > 0.0))
            return 0;
        if (value >= 4294967295.0)
            return UINT32_MAX;
        return static_cast<uint32_t>(value);
    }
};
