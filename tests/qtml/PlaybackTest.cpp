// Playing in a port window whose messages are the controller's only heartbeat, as in the engine.
#include <windows.h>

#include <gtest/gtest.h>

#include "CQtmlTestSupport.h"

namespace {

class PlaybackTest : public QtmlPortTest
{
protected:
    // A click at a point of the port window's client area, as WinEventToMacEvent gives it.
    EventRecord ClickAt(int x, int y)
    {
        POINT pt = {x, y};
        ClientToScreen(m_port.Window(), &pt);
        MSG msg = {m_port.Window(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(x, y), GetTickCount(), pt};
        EventRecord event;
        WinEventToMacEvent(&msg, &event);
        return event;
    }
};

TEST_F(PlaybackTest, MoviePlaysInRealTimeAndTellsItsEndOnce)
{
    Open("clip.mov");
    const ULONGLONG ullStart = GetTickCount64();
    StartMovie(m_movie);
    PumpFor(600);
    TimeScale scale = 0;
    const TimeValue time = MCGetCurrentTime(m_mc, &scale);
    EXPECT_EQ(600, scale);
    EXPECT_GT(time, 180);
    EXPECT_LT(time, 600);

    ASSERT_TRUE(PumpUntil([&] { return m_filter.nFinished > 0; }, 6000));
    EXPECT_GE(GetTickCount64() - ullStart, 1900u);
    EXPECT_EQ(GetCurrentThreadId(), m_filter.dwFinishedThread);
    PumpFor(500);
    EXPECT_EQ(1, m_filter.nFinished);
    EXPECT_EQ(GetMovieDuration(m_movie), MCGetCurrentTime(m_mc, nullptr));
}

TEST_F(PlaybackTest, StopKeepsThePosition)
{
    Open("clip.mov");
    StartMovie(m_movie);
    PumpFor(500);
    StopMovie(m_movie);
    const TimeValue stopped = MCGetCurrentTime(m_mc, nullptr);
    EXPECT_GT(stopped, 150);
    PumpFor(400);
    EXPECT_EQ(stopped, MCGetCurrentTime(m_mc, nullptr));
    StartMovie(m_movie);
    PumpFor(300);
    EXPECT_GT(MCGetCurrentTime(m_mc, nullptr), stopped + 60);
}

TEST_F(PlaybackTest, GoToTimeTakesTheRecordsScaleAndPlaysOnFromThere)
{
    Open("clip.mov");
    TimeRecord record = {{1500, 0}, 1000, nullptr};
    EXPECT_EQ(noErr, MCDoAction(m_mc, mcActionGoToTime, &record));
    EXPECT_EQ(noErr, GetMoviesError());
    EXPECT_EQ(900, MCGetCurrentTime(m_mc, nullptr));

    const ULONGLONG ullStart = GetTickCount64();
    StartMovie(m_movie);
    ASSERT_TRUE(PumpUntil([&] { return m_filter.nFinished > 0; }, 5000));
    // Half a second of the two was left.
    EXPECT_LT(GetTickCount64() - ullStart, 1300u);
    EXPECT_GE(GetTickCount64() - ullStart, 400u);

    EXPECT_EQ(paramErr, MCDoAction(m_mc, mcActionGoToTime, nullptr));
    EXPECT_EQ(paramErr, GetMoviesError());
}

TEST_F(PlaybackTest, LoopingAnimationNeverFinishesAndKeepsAdvancing)
{
    Open("anim.gif");
    ASSERT_EQ(noErr, MCDoAction(m_mc, mcActionSetLooping, reinterpret_cast<void*>(1)));
    ASSERT_EQ(noErr, MCDoAction(m_mc, mcActionPrerollAndPlay, reinterpret_cast<void*>(0x00010000)));
    TimeValue previous = -1;
    int nChanges = 0;
    for (int i = 0; i < 25; ++i)
    {
        PumpFor(100);
        const TimeValue now = MCGetCurrentTime(m_mc, nullptr);
        EXPECT_GE(now, 0);
        EXPECT_LT(now, 100);
        nChanges += now != previous;
        previous = now;
    }
    EXPECT_GE(nChanges, 20);
    EXPECT_EQ(0, m_filter.nFinished);
}

TEST_F(PlaybackTest, ClickSwallowedByTheFilterLeavesTheMovieStopped)
{
    Open("anim.gif");
    m_filter.bSwallowClicks = true;
    EventRecord click = ClickAt(10, 10);
    EXPECT_EQ(1, MCIsPlayerEvent(m_mc, &click));
    EXPECT_EQ(1, m_filter.nMouseDowns);
    EXPECT_EQ(&click, m_filter.pLastParams);
    PumpFor(300);
    EXPECT_EQ(0, MCGetCurrentTime(m_mc, nullptr));

    // Outside the movie box the click is not the controller's.
    EventRecord outside = ClickAt(200, 150);
    EXPECT_EQ(0, MCIsPlayerEvent(m_mc, &outside));
    EXPECT_EQ(1, m_filter.nMouseDowns);

    // A click the filter lets through toggles play.
    m_filter.bSwallowClicks = false;
    EXPECT_EQ(1, MCIsPlayerEvent(m_mc, &click));
    PumpFor(300);
    EXPECT_GT(MCGetCurrentTime(m_mc, nullptr), 10);
}

TEST(EventTranslation, KeepsTheMessageTimeAndScreenPoint)
{
    const struct
    {
        UINT message;
        uint16_t what;
    } cases[] = {{WM_LBUTTONDOWN, mouseDown}, {WM_LBUTTONUP, mouseUp}, {WM_KEYDOWN, keyDown}, {WM_KEYUP, keyUp},
                 {WM_PAINT, updateEvt},       {WM_ACTIVATE, activateEvt}, {WM_TIMER, nullEvent}};
    for (const auto& c : cases)
    {
        MSG msg = {nullptr, c.message, 0, 0, 123456, {-5, 700}};
        EventRecord event;
        WinEventToMacEvent(&msg, &event);
        EXPECT_EQ(c.what, event.what);
        EXPECT_EQ(c.message, event.message);
        EXPECT_EQ(123456u, event.when);
        EXPECT_EQ(700, event.where.v);
        EXPECT_EQ(-5, event.where.h);
    }
}

} // namespace
