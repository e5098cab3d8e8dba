// What a movie puts in its port window: a picture painted there at the movie box, a video window
// made a child of it and placed at the box, and nothing left behind by a disposed movie.
#include <windows.h>

#include <gtest/gtest.h>

#include <vector>

#include "CQtmlTestSupport.h"

namespace {

BOOL CALLBACK AddChild(HWND hChild, LPARAM lParam)
{
    reinterpret_cast<std::vector<HWND>*>(lParam)->push_back(hChild);
    return TRUE;
}

std::vector<HWND> ChildrenOf(HWND hWnd)
{
    std::vector<HWND> children;
    EnumChildWindows(hWnd, AddChild, reinterpret_cast<LPARAM>(&children));
    return children;
}

RECT RectInParent(HWND hChild)
{
    RECT rc;
    GetWindowRect(hChild, &rc);
    MapWindowPoints(HWND_DESKTOP, GetParent(hChild), reinterpret_cast<POINT*>(&rc), 2);
    return rc;
}

COLORREF PixelAt(HWND hWnd, int x, int y)
{
    HDC hdc = GetDC(hWnd);
    const COLORREF color = GetPixel(hdc, x, y);
    ReleaseDC(hWnd, hdc);
    return color;
}

class PortWindowTest : public QtmlPortTest
{
protected:
    void Repaint()
    {
        InvalidateRect(m_port.Window(), nullptr, TRUE);
        UpdateWindow(m_port.Window());
        PumpFor(100);
    }
};

// The window's own paint erases with a black brush after the controller has seen the update: the
// picture must still be there afterwards.
TEST_F(PortWindowTest, PicturePaintsAtTheMovieBoxAndScalesWithIt)
{
    Open("still.png");
    Repaint();
    EXPECT_NE(RGB(0, 0, 0), PixelAt(m_port.Window(), 32, 24));
    EXPECT_EQ(RGB(0, 0, 0), PixelAt(m_port.Window(), 100, 80));

    const Rect twice = {0, 0, 96, 128};
    SetMovieBox(m_movie, &twice);
    Repaint();
    EXPECT_NE(RGB(0, 0, 0), PixelAt(m_port.Window(), 100, 80));
}

TEST_F(PortWindowTest, VideoWindowIsAChildOfThePortAtTheMovieBox)
{
    ASSERT_TRUE(ChildrenOf(m_port.Window()).empty());
    Open("clip.mov");
    std::vector<HWND> children = ChildrenOf(m_port.Window());
    ASSERT_EQ(1u, children.size());
    RECT rc = RectInParent(children[0]);
    EXPECT_EQ(0, rc.left);
    EXPECT_EQ(0, rc.top);
    EXPECT_EQ(160, rc.right);
    EXPECT_EQ(120, rc.bottom);
    EXPECT_TRUE(IsWindowVisible(children[0]));

    const Rect placed = {10, 20, 70, 100};
    SetMovieBox(m_movie, &placed);
    rc = RectInParent(children[0]);
    EXPECT_EQ(20, rc.left);
    EXPECT_EQ(10, rc.top);
    EXPECT_EQ(100, rc.right);
    EXPECT_EQ(70, rc.bottom);

    m_port.SetController(nullptr);
    DisposeMovieController(m_mc);
    DisposeMovie(m_movie);
    PumpFor(100);
    EXPECT_TRUE(ChildrenOf(m_port.Window()).empty());
}

} // namespace
