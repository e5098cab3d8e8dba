#include "qtml/CMovieController.h"

#include <algorithm>

#include "qtml/CMovie.h"
#include "qtml/CPortAssociation.h"
#include "qtml/CQtmlRegistry.h"

namespace {

// Long enough for any filter that only calls back into the layer and posts messages; a filter
// that never returns must not hang its closer for ever.
constexpr ULONGLONG kFilterWaitMs = 10000;

} // namespace

CMovieController::CMovieController(MovieController self, std::shared_ptr<CMovie> movie)
    : m_self(self)
    , m_movie(std::move(movie))
{
}

void CMovieController::SetFilter(MCActionFilterWithRefConUPP filter, intptr_t refCon)
{
    std::lock_guard<std::mutex> guard(m_lock);
    m_filter = filter;
    m_refCon = refCon;
}

ComponentResult CMovieController::DoAction(int16_t action, void* params)
{
    const intptr_t value = reinterpret_cast<intptr_t>(params);
    switch (action)
    {
    case mcActionGoToTime:
    {
        const auto* pRecord = static_cast<const TimeRecord*>(params);
        if (!pRecord || pRecord->scale <= 0)
            return paramErr;
        const int64_t recordTime = static_cast<int64_t>((static_cast<uint64_t>(static_cast<uint32_t>(pRecord->value.hi)) << 32) |
                                                        pRecord->value.lo);
        const int64_t time = recordTime * m_movie->Scale() / pRecord->scale;
        return m_movie->GoTo(time > 0x7FFFFFFF ? 0x7FFFFFFF : time < 0 ? 0 : static_cast<TimeValue>(time));
    }
    case mcActionSetLooping:
        m_movie->SetLooping(value != 0);
        return noErr;
    case mcActionGetFlags:
        if (!params)
            return paramErr;
        {
            std::lock_guard<std::mutex> guard(m_lock);
            *static_cast<long*>(params) = m_flags;
        }
        return noErr;
    case mcActionSetFlags:
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_flags = static_cast<long>(value);
        return noErr;
    }
    case mcActionPrerollAndPlay:
        if (static_cast<Fixed>(value) == 0)
            m_movie->Stop();
        else
            m_movie->Start();
        return noErr;
    default:
        return paramErr;
    }
}

TimeValue CMovieController::CurrentTime(TimeScale* pScale)
{
    if (pScale)
        *pScale = m_movie->Scale();
    return m_movie->CurrentTime();
}

// A thread that found the controller before another disposed of it may still get here.
ComponentResult CMovieController::IsPlayerEvent(const EventRecord& event)
{
    {
        std::lock_guard<std::mutex> guard(m_lock);
        if (m_bClosed)
            return 0;
    }
    const bool bEnded = m_movie->Service();
    KeepPortTicking();
    if (bEnded)
        CallFilter(mcActionMovieFinished, nullptr);

    switch (event.what)
    {
    case mouseDown:
        if (!IsInMovieBox(event.where))
            return 0;
        if (!CallFilter(mcActionMouseDown, const_cast<EventRecord*>(&event)))
        {
            if (m_movie->IsPlaying())
                m_movie->Stop();
            else
                m_movie->Start();
        }
        return 1;
    case updateEvt:
        m_movie->Paint();
        return 1;
    default:
        return event.message == CPortAssociation::ServiceMessage() ? 1 : 0;
    }
}

void CMovieController::KeepPortTicking()
{
    const HWND hPortWnd = m_movie->PortWindow();
    if (!hPortWnd)
        return;
    if (auto port = CQtmlRegistry::Instance().FindPortOfWindow(hPortWnd))
        port->KeepTicking(m_movie->NeedsTicks());
}

bool CMovieController::IsInMovieBox(Point where)
{
    const HWND hPortWnd = m_movie->PortWindow();
    if (!hPortWnd)
        return false;
    POINT pt = {where.h, where.v};
    if (!ScreenToClient(hPortWnd, &pt))
        return false;
    const Rect box = m_movie->Box();
    return pt.x >= box.left && pt.x < box.right && pt.y >= box.top && pt.y < box.bottom;
}

bool CMovieController::CallFilter(int16_t action, void* params)
{
    MCActionFilterWithRefConUPP filter;
    intptr_t refCon;
    {
        std::lock_guard<std::mutex> guard(m_lock);
        if (m_bClosed || !m_filter)
            return false;
        filter = m_filter;
        refCon = m_refCon;
        m_filterThreads.push_back(GetCurrentThreadId());
    }
    Boolean bHandled = 0;
    try
    {
        bHandled = filter(m_self, action, params, refCon);
    }
    catch (...)
    {
        bHandled = 0;
    }
    std::lock_guard<std::mutex> guard(m_lock);
    m_filterThreads.erase(std::find(m_filterThreads.begin(), m_filterThreads.end(), GetCurrentThreadId()));
    return bHandled != 0;
}

bool CMovieController::FilterRunsElsewhere()
{
    std::lock_guard<std::mutex> guard(m_lock);
    const DWORD dwSelf = GetCurrentThreadId();
    return std::any_of(m_filterThreads.begin(), m_filterThreads.end(), [dwSelf](DWORD id) { return id != dwSelf; });
}

// A filter running on another thread may be waiting for a message sent to this one, so the wait
// keeps taking sent messages.
void CMovieController::Close()
{
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_bClosed = true;
    }
    const ULONGLONG ullStart = GetTickCount64();
    while (FilterRunsElsewhere() && GetTickCount64() - ullStart < kFilterWaitMs)
    {
        MSG msg;
        PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 5, QS_SENDMESSAGE);
    }
}
