#include "qtml/CMovie.h"

#include "qtml/CPortAssociation.h"

CMovie::CMovie(HWND hPortWnd)
    : m_hPortWnd(hPortWnd)
{
}

TimeValue CMovie::Duration()
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    return m_bClosed ? 0 : OnDuration();
}

TimeScale CMovie::Scale()
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    return m_bClosed ? 0 : OnScale();
}

Rect CMovie::Box()
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    return m_box;
}

void CMovie::SetBox(const Rect& box)
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    if (m_bClosed)
        return;
    const Rect oldBox = m_box;
    m_box = box;
    OnPlace(oldBox, box);
}

bool CMovie::HasPictures()
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    return !m_bClosed && OnHasPictures();
}

void CMovie::Start()
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    if (m_bClosed)
        return;
    OnStart();
    RequestService();
}

void CMovie::Stop()
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    if (!m_bClosed)
        OnStop();
}

OSErr CMovie::GoTo(TimeValue time)
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    if (m_bClosed)
        return invalidMovie;
    const TimeValue duration = OnDuration();
    return OnGoTo(time < 0 ? 0 : time > duration ? duration : time);
}

TimeValue CMovie::CurrentTime()
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    return m_bClosed ? 0 : OnCurrentTime();
}

bool CMovie::IsPlaying()
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    return !m_bClosed && OnIsPlaying();
}

void CMovie::SetLooping(bool bLooping)
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    m_bLooping = bLooping;
}

bool CMovie::Service()
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    return !m_bClosed && OnService();
}

bool CMovie::NeedsTicks()
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    return !m_bClosed && OnNeedsTicks();
}

void CMovie::Paint()
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    if (!m_bClosed)
        OnPaint();
}

void CMovie::Close()
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    if (m_bClosed)
        return;
    m_bClosed = true;
    OnClose();
}

void CMovie::RequestService() const
{
    if (m_hPortWnd)
        PostMessageW(m_hPortWnd, CPortAssociation::ServiceMessage(), 0, 0);
}
