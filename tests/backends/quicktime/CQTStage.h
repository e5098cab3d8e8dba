// What the QuickTime back-ends' cases share: the files tests/qtml/make-media.sh wrote and what
// ffprobe read from the movies and sounds among them (truth.txt: name, seconds, width, height),
// and the back-ends and windows of a dispatcher as the engine builds it.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <tuple>

#include "base/CPlayerBase.h"
#include "dispatch/CMediaPlayer.h"

struct CQTStage : CMediaPlayer
{
    struct Truth
    {
        double dDuration = -1.0; // -1 for a file the table does not know
        DWORD dwWidth = 0;
        DWORD dwHeight = 0;
    };

    // A Windows path, as a host would pass it.
    static std::wstring Path(std::string name)
    {
        name = std::string(TESSALY_QT_MEDIA_DIR) + "/" + name;
        std::replace(name.begin(), name.end(), '/', '\\');
        return std::wstring(name.begin(), name.end());
    }

    static Truth Read(const std::string& name)
    {
        std::ifstream table(std::string(TESSALY_QT_MEDIA_DIR) + "/truth.txt");
        std::string entry;
        Truth truth;
        while (table >> entry >> truth.dDuration >> truth.dwWidth >> truth.dwHeight)
        {
            if (entry == name)
                return truth;
        }
        return Truth();
    }

    template <class TPlayer>
    static TPlayer* Find(CMediaPlayer& player)
    {
        for (const auto& pPlayer : player.*(&CQTStage::m_Players))
        {
            if (auto pFound = dynamic_cast<TPlayer*>(pPlayer.get()))
                return pFound;
        }
        return nullptr;
    }

    // The position the back-end of the open file reports; -1 when it reports none.
    static double Position(CMediaPlayer& player)
    {
        double dSeconds = -1.0;
        CPlayerBase* pCurrent = player.*(&CQTStage::m_pCurPlayer);
        EXPECT_EQ(S_OK, pCurrent ? pCurrent->GetCurTime(&dSeconds) : E_FAIL);
        return dSeconds;
    }

    // A window's left, top, right and bottom in its parent's client area; zeros for no window.
    static std::tuple<long, long, long, long> PlacedRect(HWND hWnd)
    {
        RECT rc = {0, 0, 0, 0};
        if (IsWindow(hWnd))
        {
            GetWindowRect(hWnd, &rc);
            MapWindowPoints(HWND_DESKTOP, GetParent(hWnd), reinterpret_cast<POINT*>(&rc), 2);
        }
        return std::make_tuple(rc.left, rc.top, rc.right, rc.bottom);
    }
};
