// The player's event sink as the engine sees it: a COM object that answers for IPlayEvents only
// and hands events on until the player lets go of it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/ComPtr.h"
#include "hosts/player/CPlayerEvents.h"

namespace {

class CListener : public CPlaybackListener
{
public:
    void OnPlaybackProgress(double dSeconds, int nState) override
    {
        calls.push_back("progress " + std::to_string(dSeconds) + " " + std::to_string(nState));
    }
    void OnPlaybackComplete() override { calls.push_back("complete"); }
    void OnPlaybackError(HRESULT hrError) override { calls.push_back("error " + std::to_string(hrError)); }
    std::vector<std::string> calls;
};

TEST(PlayerEvents, AnswersForTheEventInterfaceOnly)
{
    CListener listener;
    ComPtr<CPlayerEvents> sink;
    Adopt(sink, new CPlayerEvents(&listener));
    ComPtr<IPlayEvents> events;
    EXPECT_EQ(S_OK, QueryTo(sink, IID_IPlayEvents, events));
    ComPtr<IUnknown> unknown;
    EXPECT_EQ(S_OK, QueryTo(sink, IID_IUnknown, unknown));
    ComPtr<IPlayCDEvents> cdEvents;
    EXPECT_EQ(E_NOINTERFACE, QueryTo(sink, IID_IPlayCDEvents, cdEvents));
    EXPECT_FALSE(cdEvents);
    EXPECT_EQ(E_POINTER, sink->QueryInterface(IID_IPlayEvents, nullptr));
}

TEST(PlayerEvents, HandsEventsOnUntilDetached)
{
    CListener listener;
    ComPtr<CPlayerEvents> sink;
    Adopt(sink, new CPlayerEvents(&listener));
    EXPECT_EQ(S_OK, sink->OnPlayProgress(0.5, Playback_State_Play));
    EXPECT_EQ(S_OK, sink->OnPlayComplete());
    EXPECT_EQ(S_OK, sink->OnPlayError(E_FAIL));
    sink->Detach();
    EXPECT_EQ(S_OK, sink->OnPlayComplete()); // the engine may still call; nothing reaches the player
    EXPECT_EQ((std::vector<std::string>{"progress 0.500000 1", "complete", "error " + std::to_string(E_FAIL)}),
              listener.calls);
}

} // namespace
