#include "qtml/CPictureMovie.h"

#include "qtml/CPicture.h"

namespace {

RECT ToRECT(const Rect& box)
{
    return {box.left, box.top, box.right, box.bottom};
}

constexpr ULONGLONG kMsPerTimeUnit = 1000 / CPictureMovie::kAnimationTimeScale;

} // namespace

CPictureMovie::CPictureMovie(std::shared_ptr<CPicture> picture, HWND hPortWnd)
    : CMovie(hPortWnd)
    , m_picture(std::move(picture))
{
    if (m_picture->IsAnimated())
    {
        for (int delay : m_picture->FrameDelays())
            m_duration += delay;
    }
    SetInitialBox({0, 0, static_cast<int16_t>(m_picture->Height()), static_cast<int16_t>(m_picture->Width())});
    if (hPortWnd)
    {
        const RECT rc = ToRECT(CurrentBox());
        InvalidateRect(hPortWnd, &rc, FALSE);
    }
}

TimeScale CPictureMovie::OnScale()
{
    return m_picture && m_picture->IsAnimated() ? kAnimationTimeScale : kStillTimeScale;
}

void CPictureMovie::OnPlace(const Rect& oldBox, const Rect& newBox)
{
    if (!PortWindow())
        return;
    const RECT rcOld = ToRECT(oldBox);
    const RECT rcNew = ToRECT(newBox);
    InvalidateRect(PortWindow(), &rcOld, TRUE);
    InvalidateRect(PortWindow(), &rcNew, FALSE);
}

TimeValue CPictureMovie::Elapsed() const
{
    if (!m_bPlaying || m_duration <= 0)
        return m_startTime;
    const ULONGLONG ticks = (GetTickCount64() - m_ullStartTick) / kMsPerTimeUnit;
    const ULONGLONG time = static_cast<ULONGLONG>(m_startTime) + ticks;
    if (IsLooping())
        return static_cast<TimeValue>(time % static_cast<ULONGLONG>(m_duration));
    return time >= static_cast<ULONGLONG>(m_duration) ? m_duration : static_cast<TimeValue>(time);
}

size_t CPictureMovie::FrameAt(TimeValue time) const
{
    const auto& delays = m_picture->FrameDelays();
    TimeValue frameEnd = 0;
    for (size_t i = 0; i < delays.size(); ++i)
    {
        frameEnd += delays[i];
        if (time < frameEnd)
            return i;
    }
    return delays.size() - 1;
}

void CPictureMovie::OnStart()
{
    if (m_bPlaying || m_duration <= 0)
        return;
    m_ullStartTick = GetTickCount64();
    m_bPlaying = true;
}

void CPictureMovie::OnStop()
{
    m_startTime = Elapsed();
    m_bPlaying = false;
}

OSErr CPictureMovie::OnGoTo(TimeValue time)
{
    m_startTime = time;
    m_ullStartTick = GetTickCount64();
    return noErr;
}

TimeValue CPictureMovie::OnCurrentTime()
{
    return Elapsed();
}

bool CPictureMovie::OnService()
{
    if (!m_bPlaying)
        return false;
    const TimeValue now = Elapsed();
    const size_t frame = FrameAt(now);
    if (frame != m_shownFrame && PortWindow())
    {
        m_shownFrame = frame;
        if (HDC hdc = GetDC(PortWindow()))
        {
            DrawFrame(hdc);
            ReleaseDC(PortWindow(), hdc);
        }
    }
    if (IsLooping() || now < m_duration)
        return false;
    OnStop();
    return true;
}

// On the window's own thread during its paint the update region is validated here, so that the
// background erase of the caller's default paint cannot wipe the picture out afterwards.
void CPictureMovie::OnPaint()
{
    const HWND hWnd = PortWindow();
    if (!hWnd)
        return;
    m_shownFrame = FrameAt(Elapsed());
    if (GetWindowThreadProcessId(hWnd, nullptr) == GetCurrentThreadId() && GetUpdateRect(hWnd, nullptr, FALSE))
    {
        PAINTSTRUCT ps;
        if (HDC hdc = BeginPaint(hWnd, &ps))
        {
            DrawFrame(hdc);
            EndPaint(hWnd, &ps);
        }
        return;
    }
    if (HDC hdc = GetDC(hWnd))
    {
        DrawFrame(hdc);
        ReleaseDC(hWnd, hdc);
    }
}

void CPictureMovie::DrawFrame(HDC hdc)
{
    m_picture->Draw(hdc, ToRECT(CurrentBox()), m_shownFrame);
}

void CPictureMovie::OnClose()
{
    m_bPlaying = false;
    m_picture.reset();
}
