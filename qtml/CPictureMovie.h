// A picture shown as a movie, drawn with GDI+ into the port window at the movie box. A still has
// no length; an animation's time line is the sum of its frame delays in hundredths of a second,
// and its frames advance by the time that passed whenever the movie is serviced.
#pragma once

#include <windows.h>

#include <memory>

#include "qtml/CMovie.h"

class CPicture;

class CPictureMovie : public CMovie
{
public:
    CPictureMovie(std::shared_ptr<CPicture> picture, HWND hPortWnd);

    static constexpr TimeScale kAnimationTimeScale = 100;
    static constexpr TimeScale kStillTimeScale = 600;

protected:
    TimeValue OnDuration() override { return m_duration; }
    TimeScale OnScale() override;
    void OnPlace(const Rect& oldBox, const Rect& newBox) override;
    bool OnHasPictures() override { return true; }
    void OnStart() override;
    void OnStop() override;
    OSErr OnGoTo(TimeValue time) override;
    TimeValue OnCurrentTime() override;
    bool OnIsPlaying() override { return m_bPlaying; }
    bool OnService() override;
    bool OnNeedsTicks() override { return m_bPlaying; }
    void OnPaint() override;
    void OnClose() override;

private:
    // The time line as it stands now; a movie that is not looping is held at its end.
    TimeValue Elapsed() const;
    size_t FrameAt(TimeValue time) const;
    void DrawFrame(HDC hdc);

    std::shared_ptr<CPicture> m_picture;
    TimeValue m_duration = 0;
    bool m_bPlaying = false;
    TimeValue m_startTime = 0;   // where the time line stood when it last started or stopped
    ULONGLONG m_ullStartTick = 0;
    size_t m_shownFrame = 0;
};
