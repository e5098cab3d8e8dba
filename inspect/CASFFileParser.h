// Reads the header of an ASF file (.wma, .wmv, .asf) into the properties of its last audio and
// last video stream, without any media framework. The parsing works on a read-only byte view and
// needs no Windows; only opening a file by path is Windows code.
#pragma once

#include <cstdint>
#include <map>

#include "inspect/ASFInfo.h"
#include "inspect/CStreamInfo.h"

class CByteView;

class CASFFileParser
{
public:
    static constexpr int32_t kOk = 0;
    // ERROR_INVALID_DATA as a result code: an empty file, or one that is not ASF.
    static constexpr int32_t kInvalidData = static_cast<int32_t>(0x8007000D);

    CASFFileParser();
    virtual ~CASFFileParser();

#if defined(_WIN32)
    // Maps the whole file read-only, reads its header and closes it again before returning.
    int32_t Open(const wchar_t* pszPath);
#endif

    // Reads a header held in memory: kOk, or kInvalidData when the bytes do not start with an
    // ASF header object (the members are then left as they were).
    int32_t ParseHeader(const CByteView& view);

    // Writes each record only when the header had a stream of that kind; the caller's memory is
    // otherwise left alone, so callers clear their records first. Null pointers are skipped.
    int32_t GetAVFileInfo(ASF_VIDEO_INFO* pVideoInfo, ASF_AUDIO_INFO* pAudioInfo,
                          uint16_t* pChannelType);

    // Whether the last header read declared content protection (an encryption object).
    bool IsContentProtected() const { return m_bContentProtected; }

    // Whether the last header read declares itself longer than the bytes that hold it: a file cut
    // inside its header, or a size field overwritten with a far larger number.
    bool HeaderOverrunsFile() const { return m_bHeaderOverrun; }

private:
    // Each handler gets the offset of its object's first byte inside the view.
    void GetFileProperties(const CByteView& view, uint64_t object);
    void GetStreamProperties(const CByteView& view, uint64_t object);
    void ScanExtendedHeader(const CByteView& view, uint64_t object);
    void GetContentProperties(const CByteView& view, uint64_t object);
    void GetExtContentProperties(const CByteView& view, uint64_t object);
    void GetStreamBitrateProperties(const CByteView& view, uint64_t object);
    void NoteContentProtection(const CByteView& view, uint64_t object);
    CStreamInfo* GetStreamInfoPtr(uint16_t wStreamNumber, bool bCreate);

    uint32_t m_dwVideoStreamNumber;
    ASF_VIDEO_INFO m_VideoInfo;
    uint32_t m_dwAudioStreamNumber;
    ASF_AUDIO_INFO m_AudioInfo;
    uint32_t m_dwMaxBitrate;
    std::map<uint16_t, CStreamInfo> m_StreamInfos;
    bool m_bContentProtected = false;
    bool m_bHeaderOverrun = false;
};
