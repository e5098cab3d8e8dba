// A picture file decoded by GDI+: a still or the frames of an animation. Decided by the file's
// content, never by its extension. A still that GDI+ has no decoder for (a Targa, for one) is
// decoded by the platform's imaging component instead when it has one, and drawn by GDI+ all the
// same. Not safe for concurrent use: its owner serialises the calls.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

namespace Gdiplus {
class GpImage;
}

class CPicture
{
public:
    // Null when the file does not decode (GDI+ must have been started).
    static std::shared_ptr<CPicture> Load(const std::string& path);
    // The file starts as a picture format does, whether or not it decodes.
    static bool LooksLikePicture(const std::string& path);

    CPicture(const CPicture&) = delete;
    CPicture& operator=(const CPicture&) = delete;
    ~CPicture();

    int Width() const { return m_nWidth; }
    int Height() const { return m_nHeight; }
    // Display time of each frame in hundredths of a second; one entry for a still.
    const std::vector<int>& FrameDelays() const { return m_frameDelays; }
    bool IsAnimated() const { return m_frameDelays.size() > 1; }

    void Draw(HDC hdc, const RECT& rcTarget, size_t frame);

private:
    CPicture() = default;
    bool Decode(const std::string& path);
    bool DecodeStream(IStream* pStream);
    bool DecodeWithImagingComponent(IStream* pStream);
    void ReleaseImage();
    void ReadFrameDelays(unsigned frameCount);

    Gdiplus::GpImage* m_pImage = nullptr;
    IStream* m_pStream = nullptr;
    std::vector<unsigned char> m_pixels; // what a bitmap made by the imaging component shows
    int m_nWidth = 0;
    int m_nHeight = 0;
    std::vector<int> m_frameDelays;
    size_t m_selectedFrame = 0;
};
