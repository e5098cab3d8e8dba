// How many GDI objects the process holds, for leak checks.
#pragma once

class CGdiObjectCount
{
public:
    static int Live();
};
