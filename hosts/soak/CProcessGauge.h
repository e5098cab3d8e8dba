// What a soak watches of its own process: kernel handles, USER and GDI objects, threads and
// private bytes. Some platforms (Wine among them) answer every handle count with 0, so handles
// are also counted by asking for each small handle value whether it is open.
#pragma once

#include <windows.h>

#include <string>

struct CProcessGauge
{
    long lHandles = 0;
    long lUserObjects = 0;
    long lGdiObjects = 0;
    long lThreads = 0;
    long long llPrivateBytes = 0;

    static CProcessGauge Read();
    std::string Line() const;
};
