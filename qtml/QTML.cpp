#include "qtml/QTML.h"

OSErr InitializeQTML(long)
{
    return qtmlDllLoadErr;
}

void TerminateQTML()
{
}

OSErr EnterMovies()
{
    return qtmlDllLoadErr;
}

void ExitMovies()
{
}

OSErr Gestalt(OSType, long* pResponse)
{
    if (pResponse)
        *pResponse = 0;
    return gestaltUndefSelectorErr;
}
