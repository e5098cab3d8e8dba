#include "qtml/CPicture.h"

#include <gdiplus.h>
#include <wincodec.h>
#include <shlwapi.h>
#include <wrl/client.h>

#include <cstring>

namespace {

namespace gdip = Gdiplus::DllExports;

// GIF frame delays are stored in hundredths of a second; browsers and QuickTime alike show a
// frame that claims no delay for a tenth of a second.
constexpr int kDefaultFrameDelay = 10;
constexpr PROPID kPropertyTagFrameDelay = 0x5100;

bool ReadHead(const std::string& path, unsigned char* pHead, DWORD cbHead, DWORD* pcbRead)
{
    HANDLE hFile = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return false;
    const BOOL bRead = ReadFile(hFile, pHead, cbHead, pcbRead, nullptr);
    CloseHandle(hFile);
    return bRead != FALSE;
}

// Reads only what the decoders look at, so that asking whether a large movie is a picture costs
// no more than its header.
IStream* OpenFileStream(const std::string& path)
{
    const int cch = MultiByteToWideChar(CP_ACP, 0, path.c_str(), -1, nullptr, 0);
    if (cch <= 0)
        return nullptr;
    std::wstring widePath(static_cast<size_t>(cch), L'\0');
    MultiByteToWideChar(CP_ACP, 0, path.c_str(), -1, &widePath[0], cch);
    IStream* pStream = nullptr;
    if (FAILED(SHCreateStreamOnFileEx(widePath.c_str(), STGM_READ | STGM_SHARE_DENY_NONE, FILE_ATTRIBUTE_NORMAL, FALSE,
                                      nullptr, &pStream)))
        return nullptr;
    return pStream;
}

// The whole file in a memory stream, so that the file is not held open while the picture is shown.
IStream* ReadFileIntoStream(const std::string& path)
{
    HANDLE hFile = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return nullptr;
    LARGE_INTEGER size = {};
    IStream* pStream = nullptr;
    if (GetFileSizeEx(hFile, &size) && size.QuadPart > 0 && size.QuadPart < 0x40000000)
    {
        const DWORD cb = static_cast<DWORD>(size.QuadPart);
        HGLOBAL hMem = GlobalAlloc(GMEM_MOVEABLE, cb);
        if (hMem)
        {
            DWORD cbRead = 0;
            void* pMem = GlobalLock(hMem);
            const BOOL bRead = ReadFile(hFile, pMem, cb, &cbRead, nullptr);
            GlobalUnlock(hMem);
            if (!bRead || cbRead != cb || FAILED(CreateStreamOnHGlobal(hMem, TRUE, &pStream)))
            {
                GlobalFree(hMem);
                pStream = nullptr;
            }
        }
    }
    CloseHandle(hFile);
    return pStream;
}

} // namespace

std::shared_ptr<CPicture> CPicture::Load(const std::string& path)
{
    std::shared_ptr<CPicture> picture(new CPicture());
    if (!picture->Decode(path))
        return nullptr;
    return picture;
}

bool CPicture::LooksLikePicture(const std::string& path)
{
    unsigned char head[8] = {};
    DWORD cbRead = 0;
    if (!ReadHead(path, head, sizeof(head), &cbRead) || cbRead < 4)
        return false;
    static const struct
    {
        const char* pSignature;
        size_t cb;
    } signatures[] = {{"GIF8", 4}, {"\x89PNG", 4}, {"\xFF\xD8\xFF", 3}, {"BM", 2}, {"II*\0", 4}, {"MM\0*", 4}};
    for (const auto& signature : signatures)
    {
        if (std::memcmp(head, signature.pSignature, signature.cb) == 0)
            return true;
    }
    return false;
}

CPicture::~CPicture()
{
    ReleaseImage();
    if (m_pStream)
        m_pStream->Release();
}

bool CPicture::Decode(const std::string& path)
{
    IStream* pProbe = OpenFileStream(path);
    if (!pProbe)
        return false;
    const bool bPicture = DecodeStream(pProbe);
    ReleaseImage();
    pProbe->Release();
    if (!bPicture)
        return false;
    m_pStream = ReadFileIntoStream(path);
    if (!m_pStream || !DecodeStream(m_pStream))
        return false;
    UINT width = 0, height = 0;
    if (gdip::GdipGetImageWidth(m_pImage, &width) != Gdiplus::Ok ||
        gdip::GdipGetImageHeight(m_pImage, &height) != Gdiplus::Ok || width == 0 || height == 0)
        return false;
    m_nWidth = static_cast<int>(width);
    m_nHeight = static_cast<int>(height);
    UINT frameCount = 0;
    if (gdip::GdipImageGetFrameCount(m_pImage, &Gdiplus::FrameDimensionTime, &frameCount) != Gdiplus::Ok)
        frameCount = 1;
    ReadFrameDelays(frameCount);
    return true;
}

bool CPicture::DecodeStream(IStream* pStream)
{
    if (gdip::GdipLoadImageFromStream(pStream, &m_pImage) == Gdiplus::Ok && m_pImage)
        return true;
    m_pImage = nullptr;
    return DecodeWithImagingComponent(pStream);
}

void CPicture::ReleaseImage()
{
    if (m_pImage)
        gdip::GdipDisposeImage(m_pImage);
    m_pImage = nullptr;
    m_pixels.clear();
}

// The first frame in premultiplied 32-bit pixels, which a GDI+ bitmap then shows in place.
bool CPicture::DecodeWithImagingComponent(IStream* pStream)
{
    using Microsoft::WRL::ComPtr;
    ComPtr<IWICImagingFactory> pFactory;
    ComPtr<IWICBitmapDecoder> pDecoder;
    ComPtr<IWICBitmapFrameDecode> pFrame;
    ComPtr<IWICFormatConverter> pConverter;
    const LARGE_INTEGER zero = {};
    UINT width = 0, height = 0;
    if (FAILED(pStream->Seek(zero, STREAM_SEEK_SET, nullptr)) ||
        FAILED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                                reinterpret_cast<void**>(pFactory.GetAddressOf()))) ||
        FAILED(pFactory->CreateDecoderFromStream(pStream, nullptr, WICDecodeMetadataCacheOnDemand, &pDecoder)) ||
        FAILED(pDecoder->GetFrame(0, &pFrame)) || FAILED(pFrame->GetSize(&width, &height)) || width == 0 ||
        height == 0 || width > 0x7FFF || height > 0x7FFF || FAILED(pFactory->CreateFormatConverter(&pConverter)) ||
        FAILED(pConverter->Initialize(pFrame.Get(), GUID_WICPixelFormat32bppPBGRA, WICBitmapDitherTypeNone, nullptr, 0,
                                      WICBitmapPaletteTypeCustom)))
        return false;
    const UINT stride = width * 4;
    m_pixels.resize(static_cast<size_t>(stride) * height);
    if (FAILED(pConverter->CopyPixels(nullptr, stride, static_cast<UINT>(m_pixels.size()), m_pixels.data())))
        return false;
    Gdiplus::GpBitmap* pBitmap = nullptr;
    if (gdip::GdipCreateBitmapFromScan0(static_cast<INT>(width), static_cast<INT>(height), static_cast<INT>(stride),
                                        PixelFormat32bppPARGB, m_pixels.data(), &pBitmap) != Gdiplus::Ok)
        return false;
    m_pImage = pBitmap;
    return true;
}

void CPicture::ReadFrameDelays(unsigned frameCount)
{
    m_frameDelays.assign(frameCount > 1 ? frameCount : 1, kDefaultFrameDelay);
    if (frameCount <= 1)
        return;
    UINT cb = 0;
    if (gdip::GdipGetPropertyItemSize(m_pImage, kPropertyTagFrameDelay, &cb) != Gdiplus::Ok ||
        cb < sizeof(Gdiplus::PropertyItem))
        return;
    std::vector<unsigned char> buffer(cb);
    auto* pItem = reinterpret_cast<Gdiplus::PropertyItem*>(buffer.data());
    if (gdip::GdipGetPropertyItem(m_pImage, kPropertyTagFrameDelay, cb, pItem) != Gdiplus::Ok || !pItem->value)
        return;
    const size_t count = pItem->length / sizeof(LONG);
    const auto* pDelays = static_cast<const LONG*>(pItem->value);
    for (size_t i = 0; i < count && i < m_frameDelays.size(); ++i)
        m_frameDelays[i] = pDelays[i] > 0 ? static_cast<int>(pDelays[i]) : kDefaultFrameDelay;
}

void CPicture::Draw(HDC hdc, const RECT& rcTarget, size_t frame)
{
    if (IsAnimated() && frame != m_selectedFrame && frame < m_frameDelays.size() &&
        gdip::GdipImageSelectActiveFrame(m_pImage, &Gdiplus::FrameDimensionTime, static_cast<UINT>(frame)) == Gdiplus::Ok)
        m_selectedFrame = frame;
    Gdiplus::GpGraphics* pGraphics = nullptr;
    if (gdip::GdipCreateFromHDC(hdc, &pGraphics) != Gdiplus::Ok)
        return;
    gdip::GdipDrawImageRectI(pGraphics, m_pImage, rcTarget.left, rcTarget.top, rcTarget.right - rcTarget.left,
                             rcTarget.bottom - rcTarget.top);
    gdip::GdipDeleteGraphics(pGraphics);
}
