// The movie controller: the transport actions on its movie and the heartbeat (MCIsPlayerEvent)
// that does the movie's periodic work and tells the caller's action filter about the end of the
// movie and about clicks. The filter calls back into the layer on the same thread, so it is
// called with no lock held; once Close returns, it is neither running nor called again.
#pragma once

#include <windows.h>

#include <memory>
#include <mutex>
#include <vector>

#include "qtml/QTML.h"

class CMovie;

class CMovieController
{
public:
    CMovieController(MovieController self, std::shared_ptr<CMovie> movie);
    CMovieController(const CMovieController&) = delete;
    CMovieController& operator=(const CMovieController&) = delete;

    const std::shared_ptr<CMovie>& Movie() const { return m_movie; }

    void SetFilter(MCActionFilterWithRefConUPP filter, intptr_t refCon);
    // An error code for an action it cannot carry out; GetMoviesError then reports it too.
    ComponentResult DoAction(int16_t action, void* params);
    TimeValue CurrentTime(TimeScale* pScale);
    ComponentResult IsPlayerEvent(const EventRecord& event);

    void Close();

private:
    // Answers the filter's result, false when there is none or the controller is closed.
    bool CallFilter(int16_t action, void* params);
    bool IsInMovieBox(Point where);
    void KeepPortTicking();

    const MovieController m_self;
    const std::shared_ptr<CMovie> m_movie;
    bool FilterRunsElsewhere();

    std::mutex m_lock;
    MCActionFilterWithRefConUPP m_filter = nullptr;
    intptr_t m_refCon = 0;
    long m_flags = 0;
    bool m_bClosed = false;
    std::vector<DWORD> m_filterThreads; // one entry per filter call in progress
};
