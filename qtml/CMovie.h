// A movie as the toolbox's caller sees it: a time line in a time scale of its own, a box in the
// window of the port it was made in, play and stop, a position. The transport can be driven from
// one thread while another services the movie, so every public call takes the movie's lock and
// the kinds of movie implement the protected hooks under it. After Close every call is a no-op.
#pragma once

#include <windows.h>

#include <mutex>

#include "qtml/QTML.h"

class CMovie
{
public:
    explicit CMovie(HWND hPortWnd);
    virtual ~CMovie() = default;
    CMovie(const CMovie&) = delete;
    CMovie& operator=(const CMovie&) = delete;

    HWND PortWindow() const { return m_hPortWnd; }

    TimeValue Duration();
    TimeScale Scale();
    Rect Box();
    void SetBox(const Rect& box);
    bool HasPictures();

    void Start();
    void Stop();
    // The time is in the movie's own scale; it is held to the movie's length.
    OSErr GoTo(TimeValue time);
    TimeValue CurrentTime();
    bool IsPlaying();
    void SetLooping(bool bLooping);

    // The periodic work: answers true once when the movie has just run to its end and stopped
    // there (a looping movie starts over instead and never answers true).
    bool Service();
    // Whether the movie needs periodic work although nothing else happens (an animation).
    bool NeedsTicks();
    void Paint();

    void Close();

protected:
    virtual TimeValue OnDuration() = 0;
    virtual TimeScale OnScale() = 0;
    virtual void OnPlace(const Rect& oldBox, const Rect& newBox) = 0;
    virtual bool OnHasPictures() = 0;
    virtual void OnStart() = 0;
    virtual void OnStop() = 0;
    virtual OSErr OnGoTo(TimeValue time) = 0;
    virtual TimeValue OnCurrentTime() = 0;
    virtual bool OnIsPlaying() = 0;
    virtual bool OnService() = 0;
    virtual bool OnNeedsTicks() = 0;
    virtual void OnPaint() {}
    virtual void OnClose() = 0;

    // Makes the port window's thread service the movie soon, from whatever thread this runs on.
    void RequestService() const;

    bool IsLooping() const { return m_bLooping; }
    const Rect& CurrentBox() const { return m_box; }
    void SetInitialBox(const Rect& box) { m_box = box; }

private:
    std::recursive_mutex m_lock;
    HWND m_hPortWnd;
    Rect m_box = {0, 0, 0, 0};
    bool m_bLooping = false;
    bool m_bClosed = false;
};
