// Every kind of picture the back-end takes, opened through the dispatcher as a host's Play
// object opens it, and the files no decoder should accept: a clear result code each, never a
// crash, and the back-end still usable afterwards.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "CPictureFiles.h"
#include "CPictureStage.h"
#include "CPlaybackHost.h"
#include "CWindowPixels.h"

namespace {

const COLORREF kOrange = RGB(255, 128, 0);

bool Near(COLORREF a, COLORREF b, int nTolerance)
{
    return abs(GetRValue(a) - GetRValue(b)) <= nTolerance && abs(GetGValue(a) - GetGValue(b)) <= nTolerance &&
           abs(GetBValue(a) - GetBValue(b)) <= nTolerance;
}

struct Format
{
    const wchar_t* pwszName;
    std::function<std::wstring(const CPictureFiles&, const std::wstring&)> write;
    DWORD dwWidth; // 0: the platform decides (a metafile's size follows the screen's resolution)
    DWORD dwHeight;
    int nTolerance; // JPEG is lossy
};

std::wstring Encoded(const CPictureFiles& files, const std::wstring& name)
{
    return files.Encode(name, 64, 32, [](int, int) { return kOrange; });
}

const Format kFormats[] = {
    {L"a.bmp", Encoded, 64, 32, 0},
    {L"a.dib", Encoded, 64, 32, 0},
    {L"a.jpg", Encoded, 64, 32, 12},
    {L"a.jpeg", Encoded, 64, 32, 12},
    {L"a.jpe", Encoded, 64, 32, 12},
    {L"a.jfif", Encoded, 64, 32, 12},
    {L"a.png", Encoded, 64, 32, 0},
    {L"a.tif", Encoded, 64, 32, 0},
    {L"a.tiff", Encoded, 64, 32, 0},
    {L"a.ico", [](const CPictureFiles& files, const std::wstring& name) { return files.Icon(name, 32, kOrange); },
     32, 32, 0},
    {L"a.wmf",
     [](const CPictureFiles& files, const std::wstring& name) { return files.WindowsMetafile(name, 64, 32, kOrange); },
     0, 0, 0},
    {L"a.emf",
     [](const CPictureFiles& files, const std::wstring& name) { return files.EnhancedMetafile(name, 64, 32, kOrange); },
     0, 0, 0},
};

class PictureFormats : public ::testing::TestWithParam<Format>
{
protected:
    CPictureFiles files;
    CPlaybackHost host{200, 200};
};

TEST_P(PictureFormats, OpensThroughTheDispatcherAndShowsOnBlack)
{
    const Format& format = GetParam();
    const std::wstring path = format.write(files, format.pwszName);
    ASSERT_FALSE(path.empty()) << "the fixture could not be written";

    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, host.Player().Init(path.c_str()));
    ASSERT_EQ(S_OK, host.Player().OpenFile(path.c_str(), 0, 0, &info));
    EXPECT_EQ(TESSALY_FILEINFO_PICTURE, info.dwAttributeMask);
    EXPECT_EQ(0.0, info.dDuration);
    if (format.dwWidth)
    {
        EXPECT_EQ(format.dwWidth, info.dwWidth);
        EXPECT_EQ(format.dwHeight, info.dwHeight);
    }
    ASSERT_GT(info.dwWidth, 0u);
    ASSERT_LT(info.dwWidth, 200u) << "the test expects a picture smaller than the window";

    host.PumpFor(100);
    const CWindowPixels pixels(host.Window());
    EXPECT_PRED3(Near, pixels.At(100, 100), kOrange, format.nTolerance) << std::hex << pixels.At(100, 100);
    EXPECT_EQ(RGB(0, 0, 0), pixels.At(2, 2));
    EXPECT_EQ(RGB(0, 0, 0), pixels.At(197, 197));
    ASSERT_EQ(S_OK, host.Player().Play());
    EXPECT_EQ(TESSALY_E_NOTSEEKABLE, host.Player().SeekTo(1.0)) << "a picture has no time line";
}

INSTANTIATE_TEST_SUITE_P(EachExtension, PictureFormats, ::testing::ValuesIn(kFormats),
                         [](const ::testing::TestParamInfo<Format>& param) {
                             return std::string(1, static_cast<char>(param.param.pwszName[2])) +
                                    std::string(param.param.pwszName + 3, param.param.pwszName + wcslen(param.param.pwszName));
                         });

std::vector<BYTE> Prefix(const std::vector<BYTE>& bytes, size_t n)
{
    return std::vector<BYTE>(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(std::min(n, bytes.size())));
}

class DamagedPictures : public ::testing::Test
{
protected:
    // Opens a file that must fail, then checks nothing counts as open and a good picture opens.
    void ExpectRefused(const std::wstring& path, HRESULT hrExpected)
    {
        EXPECT_EQ(hrExpected, stage.Viewer().OpenFile(path.c_str(), 0, 0));
        BOOL bPicture = 7;
        EXPECT_EQ(E_FAIL, stage.Viewer().GetFileInfo(nullptr, nullptr, nullptr, nullptr, nullptr, &bPicture));
        EXPECT_EQ(7, bPicture);
        ASSERT_EQ(S_OK, stage.Open(good));
    }

    CPictureFiles files;
    CPictureStage stage;
    const std::wstring good = files.Encode(L"good.png", 16, 16, [](int, int) { return kOrange; });
};

TEST_F(DamagedPictures, AFileThatCannotBeReadIsTheOutOfMemoryCodeHostsHaveAlwaysSeen)
{
    ExpectRefused(files.Path(L"missing.png"), E_OUTOFMEMORY);
    ExpectRefused(files.Bytes(L"empty.bmp", {}), E_OUTOFMEMORY);
    CreateDirectoryW(files.Path(L"folder.jpg").c_str(), nullptr);
    ExpectRefused(files.Path(L"folder.jpg"), E_OUTOFMEMORY);
    EXPECT_EQ(E_OUTOFMEMORY, stage.Viewer().OpenFile(nullptr, 0, 0));
}

TEST_F(DamagedPictures, ContentNoDecoderAcceptsIsInvalidData)
{
    const HRESULT kInvalidData = HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
    ExpectRefused(files.Bytes(L"text.jpg", {'h', 'e', 'l', 'l', 'o', '\n'}), kInvalidData);

    std::vector<BYTE> png = CPictureFiles::Read(good);
    ASSERT_GT(png.size(), 40u);
    ExpectRefused(files.Bytes(L"header-only.png", Prefix(png, 20)), kInvalidData);
    std::vector<BYTE> flipped = png;
    for (size_t i = 8; i < 33; ++i) // the header chunk, its checksum included
        flipped[i] ^= 0x5A;
    ExpectRefused(files.Bytes(L"flipped.png", flipped), kInvalidData);

    const std::vector<BYTE> bmp = CPictureFiles::Read(files.Encode(L"b.bmp", 16, 16, [](int, int) { return kOrange; }));
    ExpectRefused(files.Bytes(L"cut.bmp", Prefix(bmp, 30)), kInvalidData);
}

TEST_F(DamagedPictures, AHeaderClaimingAnEnormousPictureIsRefused)
{
    std::vector<BYTE> bmp = CPictureFiles::Read(files.Encode(L"b.bmp", 16, 16, [](int, int) { return kOrange; }));
    ASSERT_GT(bmp.size(), 54u);
    const LONG lHuge = 1000000;
    memcpy(&bmp[18], &lHuge, sizeof(lHuge)); // width
    memcpy(&bmp[22], &lHuge, sizeof(lHuge)); // height
    ExpectRefused(files.Bytes(L"huge.bmp", bmp), HRESULT_FROM_WIN32(ERROR_INVALID_DATA));
}

TEST_F(DamagedPictures, ANameOutsideAsciiOpens)
{
    const std::wstring path = files.Encode(L"bild-\u00c6\u00d8\u00c5-\u65e5\u672c.png", 16, 16, [](int, int) { return kOrange; });
    ASSERT_FALSE(path.empty());
    DWORD dwWidth = 0;
    ASSERT_EQ(S_OK, stage.Open(path));
    EXPECT_EQ(S_OK, stage.Viewer().GetFileInfo(nullptr, nullptr, nullptr, &dwWidth, nullptr, nullptr));
    EXPECT_EQ(16u, dwWidth);
}

} // namespace
