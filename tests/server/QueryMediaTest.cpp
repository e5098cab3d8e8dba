// QueryFileInfo on real files that ffmpeg wrote when the tests were built, compared with what
// ffprobe read from them.
#include <windows.h>
#include <objbase.h>

#include <gtest/gtest.h>

#include <string>

#include "CPictureFiles.h"
#include "CTestMedia.h"
#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"

namespace {

class QueryMedia : public ::testing::TestWithParam<const char*>
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_QueryFileInfo, nullptr, CLSCTX_INPROC_SERVER, IID_IQueryFileInfo,
                                         &m_query));
    }
    void TearDown() override
    {
        m_query.Reset();
        CoUninitialize();
    }
    HRESULT Query(const char* pszName, TESSALY_FILEINFO* pInfo) { return Query(CTestMedia::Path(pszName), pInfo); }
    HRESULT Query(std::wstring path, TESSALY_FILEINFO* pInfo) { return m_query->GetFileInfo(&path[0], pInfo); }

    ComPtr<IQueryFileInfo> m_query;
};

TEST_P(QueryMedia, AnswersTheFilesDurationSizeAndAttributes)
{
    CTestMedia::Truth truth;
    ASSERT_TRUE(CTestMedia::Read(GetParam(), &truth));
    TESSALY_FILEINFO info = {0xFFFFFFFF, -1.0, 7, 7};
    ASSERT_EQ(S_OK, Query(GetParam(), &info));
    const bool bVideo = truth.dwWidth != 0;
    EXPECT_EQ(TESSALY_FILEINFO_SEEKABLE | (bVideo ? 0u : TESSALY_FILEINFO_AUDIO_ONLY), info.dwAttributeMask);
    EXPECT_NEAR(truth.dDuration, info.dDuration, 0.05) << "within a frame";
    EXPECT_EQ(truth.dwWidth, info.dwWidth);
    EXPECT_EQ(truth.dwHeight, info.dwHeight);
}

INSTANTIATE_TEST_SUITE_P(EachFormat, QueryMedia,
                         ::testing::Values("tone.wav", "tone.mp3", "tone.wma", "clip.wmv", "clip.avi", "tone.ogg",
                                           "tone.flac"),
                         [](const ::testing::TestParamInfo<const char*>& param) {
                             std::string name = param.param;
                             for (char& c : name)
                                 if (c == '.')
                                     c = '_';
                             return name;
                         });

using QueryFailures = QueryMedia;

TEST_F(QueryFailures, AMissingOrDamagedFileGivesTheBackEndsErrorAndTheNextQuerySucceeds)
{
    for (const char* pszBad : {"missing.mp3", "noise.avi", "empty.wav"})
    {
        TESSALY_FILEINFO info = {7, 7.0, 7, 7};
        const HRESULT hr = Query(pszBad, &info);
        EXPECT_TRUE(FAILED(hr)) << pszBad << " 0x" << std::hex << hr;
        EXPECT_NE(TESSALY_E_NOTSUPPORTED, hr) << "the back-end took the file and failed it";
        EXPECT_EQ(7u, info.dwAttributeMask) << pszBad;
        EXPECT_EQ(7.0, info.dDuration);

        TESSALY_FILEINFO good = {};
        EXPECT_EQ(S_OK, Query("tone.wav", &good)) << "after " << pszBad;
        EXPECT_EQ(TESSALY_FILEINFO_AUDIO_ONLY | TESSALY_FILEINFO_SEEKABLE, good.dwAttributeMask);
    }
}

TEST_F(QueryFailures, FilesOfTwoKindsInARowOnOneObjectBothAnswer)
{
    TESSALY_FILEINFO video = {}, sound = {};
    EXPECT_EQ(S_OK, Query("clip.wmv", &video));
    EXPECT_EQ(S_OK, Query("tone.flac", &sound));
    EXPECT_EQ(S_OK, Query("clip.wmv", &video));
    EXPECT_EQ(160u, video.dwWidth);
    EXPECT_EQ(0u, sound.dwWidth);
}

TEST_F(QueryFailures, APictureAnswersItsSizeAndAnEmptyOneLeavesTheRecord)
{
    CPictureFiles files;
    const std::wstring jpeg = files.Encode(L"photo.jpg", 48, 40, [](int, int) { return RGB(0, 160, 0); });
    TESSALY_FILEINFO info = {7, 7.0, 7, 7};
    ASSERT_EQ(S_OK, Query(jpeg, &info));
    EXPECT_EQ(TESSALY_FILEINFO_PICTURE, info.dwAttributeMask);
    EXPECT_EQ(0.0, info.dDuration);
    EXPECT_EQ(48u, info.dwWidth);
    EXPECT_EQ(40u, info.dwHeight);

    // Hosts have always been told this for a file with nothing in it.
    info = {7, 7.0, 7, 7};
    EXPECT_EQ(E_OUTOFMEMORY, Query(files.Bytes(L"empty.png", {}), &info));
    EXPECT_EQ(7u, info.dwAttributeMask);
    EXPECT_EQ(7.0, info.dDuration);
    EXPECT_EQ(7u, info.dwWidth);
    ASSERT_EQ(S_OK, Query(jpeg, &info)) << "a refusal leaves the object able to answer";
}

} // namespace
