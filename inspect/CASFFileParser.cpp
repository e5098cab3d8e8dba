#include "inspect/CASFFileParser.h"

#include <cinttypes>
#include <new>

#include "inspect/CChannelLayout.h"
#include "trace/Trace.h"
#include "inspect/ASFObjectId.h"
#include "inspect/CByteView.h"

#if defined(_WIN32)
#include "inspect/CReadOnlyFileView.h"
#endif

namespace {

bool IsObject(const CByteView& view, uint64_t offset, const ASFObjectId& id)
{
    return view.Equals(offset, id.bytes, sizeof(id.bytes));
}

// Objects are stepped over by the low half of their 64-bit size only.
uint32_t StepSize(const CByteView& view, uint64_t object)
{
    return static_cast<uint32_t>(view.ReadU64(object + 16));
}

const int kHundredNsPerMs = 10000;
const int kMsPerSecond = 1000;
const uint8_t kStreamNumberMask = 0x7F;
const uint64_t kObjectHeaderSize = 24;

} // namespace

CASFFileParser::CASFFileParser()
    : m_dwVideoStreamNumber(0xFFFFFFFF),
      m_VideoInfo(),
      m_dwAudioStreamNumber(0xFFFFFFFF),
      m_AudioInfo(),
      m_dwMaxBitrate(0)
{
}

CASFFileParser::~CASFFileParser() = default;

#if defined(_WIN32)
int32_t CASFFileParser::Open(const wchar_t* pszPath)
{
    CReadOnlyFileView file;
    const int32_t hr = file.Open(pszPath);
    // A failed size query can report success when the system left no error number; there is
    // still nothing to read then.
    if (!file.IsMapped())
        return hr;
    return ParseHeader(file.View());
}
#endif

int32_t CASFFileParser::ParseHeader(const CByteView& view)
{
    if (!IsObject(view, 0, ASF_Header_Object))
    {
        TESSALY_TRACE("E:CASFFileParser::Open> Invalid ASF file");
        return kInvalidData;
    }

    // The stream numbers and the maximum bitrate survive on purpose until a new file sets them.
    m_VideoInfo = ASF_VIDEO_INFO();
    m_AudioInfo = ASF_AUDIO_INFO();
    m_StreamInfos.clear();
    m_bContentProtected = false;
    m_bHeaderOverrun = view.ReadU64(16) > view.Size();

    using Handler = void (CASFFileParser::*)(const CByteView&, uint64_t);
    static const struct
    {
        const ASFObjectId* pId;
        Handler handler;
    } kHandlers[] = {
        {&ASF_File_Properties_Object, &CASFFileParser::GetFileProperties},
        {&ASF_Stream_Properties_Object, &CASFFileParser::GetStreamProperties},
        {&ASF_Header_Extension_Object, &CASFFileParser::ScanExtendedHeader},
        {&ASF_Content_Description_Object, &CASFFileParser::GetContentProperties},
        {&ASF_Extended_Content_Description_Object, &CASFFileParser::GetExtContentProperties},
        {&ASF_Stream_Bitrate_Properties_Object, &CASFFileParser::GetStreamBitrateProperties},
        {&ASF_Content_Encryption_Object, &CASFFileParser::NoteContentProtection},
        {&ASF_Extended_Content_Encryption_Object, &CASFFileParser::NoteContentProtection},
    };

    // A count with the top bit set walks nothing.
    const int32_t nObjects = static_cast<int32_t>(view.ReadU32(24));
    uint64_t object = 30;
    for (int32_t i = 0; i < nObjects; ++i)
    {
        for (const auto& entry : kHandlers)
        {
            if (IsObject(view, object, *entry.pId))
            {
                (this->*entry.handler)(view, object);
                break;
            }
        }
        // A zero size would hand the same object to its handler once per remaining count, and
        // handling the same bytes again changes nothing; a hostile count near 2^31 would only
        // spin for minutes.
        const uint32_t cbStep = StepSize(view, object);
        if (cbStep == 0)
            break;
        object += cbStep;
        if (!view.Contains(object, kObjectHeaderSize))
            break;
    }
    return kOk;
}

int32_t CASFFileParser::GetAVFileInfo(ASF_VIDEO_INFO* pVideoInfo, ASF_AUDIO_INFO* pAudioInfo,
                                      uint16_t* pChannelType)
{
    if (m_VideoInfo.bPresent && pVideoInfo)
    {
        *pVideoInfo = m_VideoInfo;
        const CStreamInfo* pStream =
            GetStreamInfoPtr(static_cast<uint16_t>(m_dwVideoStreamNumber), false);
        if (!pStream)
        {
            TESSALY_TRACE("S:CASFFileParser::GetAVFileInfo> Can't get Video stream info");
        }
        else if (pStream->m_bExtended)
        {
            pVideoInfo->dFrameRate = pStream->m_dFrameRate;
            pVideoInfo->llAvgTimePerFrame = pStream->m_llAvgTimePerFrame;
            pVideoInfo->dwBitrate = pStream->m_dwDataBitrate;
        }
        else
        {
            pVideoInfo->dwBitrate = pStream->m_dwAverageBitrate;
        }
    }
    if (m_AudioInfo.bPresent)
    {
        if (pAudioInfo)
            *pAudioInfo = m_AudioInfo;
        if (pChannelType)
            *pChannelType = CChannelLayout::ToMTPChannelType(m_AudioInfo.nChannels, false);
    }
    return kOk;
}

void CASFFileParser::GetFileProperties(const CByteView& view, uint64_t object)
{
    // Play Duration counts 100-ns units and includes the preroll, which counts milliseconds. A
    // preroll longer than the play time wraps, as unsigned arithmetic does.
    const uint64_t playDuration = view.ReadU64(object + 64);
    const uint64_t preroll = view.ReadU64(object + 80);
    const uint32_t seconds =
        static_cast<uint32_t>((playDuration / kHundredNsPerMs - preroll) / kMsPerSecond);
    m_VideoInfo.dDuration = seconds;
    m_dwMaxBitrate = view.ReadU32(object + 100);

    TESSALY_TRACE("S:CASFFileParser::GetFileProperties> < == File Header Attributes == >");
    TESSALY_TRACE("S:CASFFileParser::GetFileProperties>      - File Size = %" PRId64,
                  static_cast<int64_t>(view.ReadU64(object + 40)));
    TESSALY_TRACE("S:CASFFileParser::GetFileProperties>     - Duration = %d sec",
                  static_cast<int>(seconds));
    TESSALY_TRACE("S:CASFFileParser::GetFileProperties>     - Max Bitrate = %d bps",
                  static_cast<int>(m_dwMaxBitrate));
}

void CASFFileParser::GetStreamProperties(const CByteView& view, uint64_t object)
{
    const uint32_t number = view.ReadU16(object + 72) & kStreamNumberMask;
    const uint64_t format = object + 78;
    TESSALY_TRACE("S:CASFFileParser::GetStreamProperties> < == Stream Properties == >");
    TESSALY_TRACE("S:CASFFileParser::GetStreamProperties>     - Stream Number = %d",
                  static_cast<int>(number));

    if (IsObject(view, object + 24, ASF_Audio_Media))
    {
        m_dwAudioStreamNumber = number;
        m_AudioInfo.bPresent = 1;
        m_AudioInfo.wFormatTag = view.ReadU16(format);
        m_AudioInfo.nChannels = view.ReadU16(format + 2);
        m_AudioInfo.nSamplesPerSec = view.ReadU32(format + 4);
        m_AudioInfo.nAvgBytesPerSec = view.ReadU32(format + 8);
        m_AudioInfo.nBlockAlign = view.ReadU16(format + 12);
        m_AudioInfo.wBitsPerSample = view.ReadU16(format + 14);

        TESSALY_TRACE("S:CASFFileParser::GetStreamProperties>     - Stream Type = Audio");
        TESSALY_TRACE("S:CASFFileParser::GetStreamProperties>     - BitsPerSample = %d",
                      m_AudioInfo.wBitsPerSample);
        TESSALY_TRACE("S:CASFFileParser::GetStreamProperties>     - NumOfChannels = %d",
                      m_AudioInfo.nChannels);
        TESSALY_TRACE("S:CASFFileParser::GetStreamProperties>     - Sampling Rate = %d Hz",
                      static_cast<int>(m_AudioInfo.nSamplesPerSec));
        TESSALY_TRACE("S:CASFFileParser::GetStreamProperties>     - Wave FormatTag = 0x%x",
                      m_AudioInfo.wFormatTag);
        TESSALY_TRACE("S:CASFFileParser::GetStreamProperties>     - Avg Bytes Per Sec = %d",
                      static_cast<int>(m_AudioInfo.nAvgBytesPerSec));
        TESSALY_TRACE("S:CASFFileParser::GetStreamProperties>     - Bitrate = %d bps",
                      static_cast<int>(m_AudioInfo.nAvgBytesPerSec * 8));
    }
    else if (IsObject(view, object + 24, ASF_Video_Media))
    {
        // The encoded image size ahead of the BITMAPINFOHEADER is not used: the picture size is
        // the bitmap header's.
        const uint64_t bitmapInfo = format + 11;
        m_dwVideoStreamNumber = number;
        m_VideoInfo.bPresent = 1;
        m_VideoInfo.lWidth = static_cast<int32_t>(view.ReadU32(bitmapInfo + 4));
        m_VideoInfo.lHeight = static_cast<int32_t>(view.ReadU32(bitmapInfo + 8));
        m_VideoInfo.wBitDepth = view.ReadU16(bitmapInfo + 14);
        m_VideoInfo.dwFourCC = view.ReadU32(bitmapInfo + 16);

        const uint32_t fourCC = m_VideoInfo.dwFourCC;
        TESSALY_TRACE("S:CASFFileParser::GetStreamProperties>     - Stream Type = Video");
        TESSALY_TRACE("S:CASFFileParser::GetStreamProperties>     - Width = %d",
                      static_cast<int>(m_VideoInfo.lWidth));
        TESSALY_TRACE("S:CASFFileParser::GetStreamProperties>     - Height = %d",
                      static_cast<int>(m_VideoInfo.lHeight));
        TESSALY_TRACE("S:CASFFileParser::GetStreamProperties>     - FourCC = '%c%c%c%c'",
                      static_cast<char>(fourCC), static_cast<char>(fourCC >> 8),
                      static_cast<char>(fourCC >> 16), static_cast<char>(fourCC >> 24));
        TESSALY_TRACE("S:CASFFileParser::GetStreamProperties>     - Bit depth = %d",
                      m_VideoInfo.wBitDepth);
    }
}

void CASFFileParser::ScanExtendedHeader(const CByteView& view, uint64_t object)
{
    uint32_t remaining = view.ReadU32(object + 42);
    if (remaining < kObjectHeaderSize)
        return;

    // The inner walk is bounded by the file rather than by the extension object, so a data
    // size that overstates the objects walks on into whatever follows.
    uint64_t inner = object + 46;
    while (static_cast<int32_t>(remaining) > 0)
    {
        if (IsObject(view, inner, ASF_Extended_Stream_Properties_Object))
        {
            const uint16_t number = view.ReadU16(inner + 72);
            const uint32_t dataBitrate = view.ReadU32(inner + 40);
            const int64_t avgTimePerFrame = static_cast<int64_t>(view.ReadU64(inner + 76));
            const double frameRate =
                avgTimePerFrame != 0 ? 10000000.0 / static_cast<double>(avgTimePerFrame) : 0.0;

            TESSALY_TRACE("S:CASFFileParser::ScanExtendedHeader> < == Extended Stream Properties == >");
            TESSALY_TRACE("S:CASFFileParser::ScanExtendedHeader>     - Stream Number = %d", number);
            TESSALY_TRACE("S:CASFFileParser::ScanExtendedHeader>     - Stream Data Bitrate = %d bps",
                          static_cast<int>(dataBitrate));
            if (CStreamInfo* pStream = GetStreamInfoPtr(number, true))
            {
                pStream->m_bExtended = 1;
                pStream->m_dwDataBitrate = dataBitrate;
                pStream->m_dFrameRate = frameRate;
                pStream->m_llAvgTimePerFrame = avgTimePerFrame;
            }
            else
            {
                TESSALY_TRACE("S:CASFFileParser::ScanExtendedHeader> can't get stream info pointer for stream number = %d",
                              number);
            }
        }
        // An inner object of size 0 would never let the walk move on.
        const uint32_t cbStep = StepSize(view, inner);
        if (cbStep == 0)
            break;
        inner += cbStep;
        remaining -= cbStep;
        if (!view.Contains(inner, kObjectHeaderSize))
            break;
    }
}

void CASFFileParser::GetContentProperties(const CByteView&, uint64_t)
{
    TESSALY_TRACE("S:CASFFileParser::GetContentProperties> < == Content Description == >");
}

void CASFFileParser::GetExtContentProperties(const CByteView&, uint64_t)
{
    TESSALY_TRACE("S:CASFFileParser::GetExtContentProperties> < == Extended Content Description == >");
}

void CASFFileParser::GetStreamBitrateProperties(const CByteView& view, uint64_t object)
{
    // The lines below carry the extended content prefix on purpose: log readers match on them.
    TESSALY_TRACE("S:CASFFileParser::GetExtContentProperties> < == Stream Bitrate Properties == >");
    const uint16_t nRecords = view.ReadU16(object + 24);
    for (uint32_t i = 0; i < nRecords; ++i)
    {
        const uint64_t record = object + 26 + 6 * static_cast<uint64_t>(i);
        const uint16_t number = view.ReadU16(record) & kStreamNumberMask;
        const uint32_t averageBitrate = view.ReadU32(record + 2);
        TESSALY_TRACE("S:CASFFileParser::GetExtContentProperties>     - Stream Number = %d", number);
        TESSALY_TRACE("S:CASFFileParser::GetExtContentProperties>     - Stream Bitrate = %d bps",
                      static_cast<int>(averageBitrate));
        if (CStreamInfo* pStream = GetStreamInfoPtr(number, true))
            pStream->m_dwAverageBitrate = averageBitrate;
        else
            TESSALY_TRACE("S:CASFFileParser::GetStreamBitrateProperties> can't get stream info pointer for stream number = %d",
                          number);
        // Every record wholly past the end of the file reads as stream 0 at 0 bps, so the first
        // of them stands for all the rest; a hostile count of 65535 in each of many objects
        // would otherwise keep the caller busy for minutes.
        if (!view.Contains(record, 1))
            break;
    }
}

CStreamInfo* CASFFileParser::GetStreamInfoPtr(uint16_t wStreamNumber, bool bCreate)
{
    auto it = m_StreamInfos.find(wStreamNumber);
    if (it != m_StreamInfos.end())
        return &it->second;
    if (!bCreate)
    {
        TESSALY_TRACE("S:CASFFileParser::GetStreamInfoPtr> StreamInfo No. = %d Not Found...",
                      wStreamNumber);
        return nullptr;
    }
    TESSALY_TRACE("S:CASFFileParser::GetStreamInfoPtr> Creating StreamInfo...");
    try
    {
        return &m_StreamInfos.try_emplace(wStreamNumber, wStreamNumber).first->second;
    }
    catch (const std::bad_alloc&)
    {
        TESSALY_TRACE("S:CASFFileParser::GetStreamInfoPtr> Can't add stream number %d",
                      wStreamNumber);
        return nullptr;
    }
}

// Only the object's presence matters: what it holds is for a licence server, not for playback.
void CASFFileParser::NoteContentProtection(const CByteView&, uint64_t)
{
    m_bContentProtected = true;
}
