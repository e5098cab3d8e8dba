// The filter's streaming thread and the positions it delivers between. While the filter is
// paused or running, the thread fills the downstream allocator's samples with whole sectors of
// the range, stamps them with stream times counted from the segment's start, hands them to the
// connected input pin and ends the segment with EndOfStream. Positions are in sectors of the range.
//
// Delivery always begins at the start position: the one the last Load or seek set, not where an
// earlier delivery stopped (the graph seeks its sources to where it wants them to go on from).
#pragma once

#include <windows.h>

#include <dshow.h>

#include <cstdint>

#include "cdsource/CCDReader.h"
#include "cdsource/CTrackRange.h"
#include "engine/ComPtr.h"

class CSampleStreamer
{
public:
    struct Target
    {
        IPin* pPin;                  // the connected input pin: NewSegment, EndOfStream
        IMemInputPin* pInput;        // the same pin's Receive
        IMemAllocator* pAllocator;   // the connection's allocator, committed while the thread runs
        uint32_t ulSectorsPerSample; // whole sectors, as many as the allocator's buffers hold
        IMediaEventSink* pEvents;    // the graph's, for EC_ERRORABORT; may be null; not counted
    };

    CSampleStreamer();
    ~CSampleStreamer();
    CSampleStreamer(const CSampleStreamer&) = delete;
    CSampleStreamer& operator=(const CSampleStreamer&) = delete;

    // What to deliver from (both null: nothing, which delivers an empty segment); positions go
    // to the whole range and the count of delivered bytes to 0. Only while no thread runs; the
    // reader and range must outlive the next Stop.
    void SetSource(CCDReader* pReader, const CTrackRange* pRange);

    uint32_t Sectors() const;
    // Start as set; current: where delivery has got to (the start until a sample is taken);
    // stop: the sector delivery ends before.
    void GetPositions(uint32_t* pulStart, uint32_t* pulCurrent, uint32_t* pulStop) const;
    // Only while no thread runs. ulStart <= ulStop <= Sectors().
    void SetPositions(uint32_t ulStart, uint32_t ulStop);
    // Any time: a running thread ends its segment there, or at once if it is already past it.
    void SetStop(uint32_t ulStop);

    // Bytes the downstream pin accepted (Receive answered S_OK) since SetSource.
    uint64_t DeliveredBytes() const;

    // Commits the allocator and starts the thread at the start position; the target's
    // interfaces are held until Stop.
    HRESULT Start(const Target& target);
    // Ends the thread and waits for it: the allocator is decommitted so that a GetBuffer
    // waiting for a free sample returns at once. A Receive waiting downstream must be released
    // by the downstream filter (it is stopped first, or flushed). Nothing happens without a thread.
    void Stop();
    bool IsStarted() const { return m_hThread != nullptr; }
    // Started, and the thread has not ended its segment (at the end, or downstream refused).
    bool IsDelivering() const { return m_hThread && WaitForSingleObject(m_hThread, 0) == WAIT_TIMEOUT; }

private:
    static DWORD WINAPI ThreadProc(void* pvThis);
    void Deliver();
    bool StopRequested() const;
    // A sample could not be filled: the graph hears why and the segment ends.
    void Abort(HRESULT hr);

    mutable CRITICAL_SECTION m_cs; // the positions and the byte count, shared with the thread
    CCDReader* m_pReader = nullptr;
    const CTrackRange* m_pRange = nullptr;
    uint32_t m_ulStart = 0;
    uint32_t m_ulCurrent = 0;
    uint32_t m_ulStop = 0;
    uint64_t m_ullDelivered = 0;

    HANDLE m_hThread = nullptr;
    volatile LONG m_lStopRequested = 0;
    ComPtr<IPin> m_pPin;
    ComPtr<IMemInputPin> m_pInput;
    ComPtr<IMemAllocator> m_pAllocator;
    uint32_t m_ulSectorsPerSample = 1;
    IMediaEventSink* m_pEvents = nullptr;
};
