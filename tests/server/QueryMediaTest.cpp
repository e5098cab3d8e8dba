// QueryFileInfo through the registered library: its argument checks, real files that ffmpeg wrote
// when the tests were built (compared with what ffprobe read from them), pictures, damaged files,
// and the same answers from another apartment through the library's proxy.
#include <windows.h>
#include <objbase.h>

#include <gtest/gtest.h>

#include <string>

#include "CPictureFiles.h"
#include "ServerHost.h"
#include "tests/support/CrossApartment.h"

namespace {

class QueryMedia : public ComApartment, public ::testing::WithParamInterface<const char*>
{
protected:
    void SetUp() override
    {
        ComApartment::SetUp();
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_QueryFileInfo, nullptr, CLSCTX_INPROC_SERVER, IID_IQueryFileInfo, &m_query));
    }
    void TearDown() override
    {
        m_query.Reset();
        ComApartment::TearDown();
    }
    HRESULT Query(const char* pszName, TESSALY_FILEINFO* pInfo) { return Query(CTestMedia::Path(pszName), pInfo); }
    HRESULT Query(std::wstring path, TESSALY_FILEINFO* pInfo) { return m_query->GetFileInfo(&path[0], pInfo); }
    static void ExpectUntouched(const TESSALY_FILEINFO& info, const std::string& what)
    {
        EXPECT_EQ(7u, info.dwAttributeMask) << what;
        EXPECT_EQ(7.0, info.dDuration) << what;
        EXPECT_EQ(7u, info.dwWidth) << what;
        EXPECT_EQ(7u, info.dwHeight) << what;
    }

    ComPtr<IQueryFileInfo> m_query;
};

// The files of the DirectShow back-end, then (after the "|") those of the QuickTime back-ends.
TEST_P(QueryMedia, AnswersTheFilesDurationSizeAndAttributes)
{
    const bool bQt = GetParam()[0] == '|';
    const char* pszName = GetParam() + bQt;
    CTestMedia::Truth truth;
    ASSERT_TRUE(bQt ? CTestMedia::ReadIn(TESSALY_QT_MEDIA_DIR, pszName, &truth) : CTestMedia::Read(pszName, &truth));
    TESSALY_FILEINFO info = {0xFFFFFFFF, -1.0, 7, 7};
    ASSERT_EQ(S_OK, Query(bQt ? CTestMedia::PathIn(TESSALY_QT_MEDIA_DIR, pszName) : CTestMedia::Path(pszName), &info));
    EXPECT_EQ(TESSALY_FILEINFO_SEEKABLE | (truth.dwWidth ? 0u : TESSALY_FILEINFO_AUDIO_ONLY), info.dwAttributeMask);
    EXPECT_NEAR(truth.dDuration, info.dDuration, bQt ? 0.1 : 0.05) << "within a frame; a bare AAC stream's length is an estimate";
    EXPECT_EQ(truth.dwWidth, info.dwWidth);
    EXPECT_EQ(truth.dwHeight, info.dwHeight);
}

INSTANTIATE_TEST_SUITE_P(EachFormat, QueryMedia,
                         ::testing::Values("tone.wav", "tone.mp3", "tone.wma", "clip.wmv", "clip.avi", "tone.ogg", "tone.flac",
                                           "|clip.mov", "|clip.mp4", "|clip.m4v", "|clip.3gp", "|tone.m4a", "|tone.aac"),
                         [](const ::testing::TestParamInfo<const char*>& param) {
                             std::string name = param.param + (param.param[0] == '|');
                             name[name.find('.')] = '_';
                             return name;
                         });

using QueryRefusals = QueryMedia;

// A null record is refused before the engine starts: no back-end window is made.
TEST_F(QueryRefusals, ANullRecordUnknownExtensionsAndBadFilesAreRefusedAndTheRecordIsLeftAlone)
{
    WCHAR song[] = L"C:\\song.mp3";
    EXPECT_EQ(E_INVALIDARG, m_query->GetFileInfo(song, nullptr));
    int nEngineWindows = 0;
    EnumThreadWindows(GetCurrentThreadId(), [](HWND hWnd, LPARAM lParam) -> BOOL {
        WCHAR wsz[128];
        GetClassNameW(hWnd, wsz, 128);
        *reinterpret_cast<int*>(lParam) += !lstrcmpW(wsz, L"MEDIAPLAYER.Event.Handler.WndClass") ||
                                           !lstrcmpW(wsz, L"CQueryFileInfo.Hidden.WndClass");
        return TRUE;
    }, reinterpret_cast<LPARAM>(&nEngineWindows));
    EXPECT_EQ(0, nEngineWindows);

    for (const wchar_t* pwszPath : {L"C:\\Media\\noextension", L"C:\\Media\\notes.txt", L"C:\\Media\\dot.", L""})
    {
        TESSALY_FILEINFO info = {7, 7.0, 7, 7};
        EXPECT_EQ(TESSALY_E_NOTSUPPORTED, Query(std::wstring(pwszPath), &info));
        ExpectUntouched(info, "unknown extension");
    }
    // A missing or damaged file gives the back-end's error, and the next query succeeds.
    for (const char* pszBad : {"missing.mp3", "noise.avi", "empty.wav"})
    {
        TESSALY_FILEINFO info = {7, 7.0, 7, 7};
        const HRESULT hr = Query(pszBad, &info);
        EXPECT_TRUE(FAILED(hr) && hr != TESSALY_E_NOTSUPPORTED) << pszBad << " 0x" << std::hex << hr;
        ExpectUntouched(info, pszBad);
        TESSALY_FILEINFO good = {};
        EXPECT_EQ(S_OK, Query("tone.wav", &good)) << "after " << pszBad;
        EXPECT_EQ(TESSALY_FILEINFO_AUDIO_ONLY | TESSALY_FILEINFO_SEEKABLE, good.dwAttributeMask);
    }
}

TEST_F(QueryRefusals, PicturesAndVideoInARowAnswerAndAnEmptyPictureIsOutOfMemory)
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
    ExpectUntouched(info, "empty picture");
    TESSALY_FILEINFO video = {}, sound = {};
    EXPECT_EQ(S_OK, Query("clip.wmv", &video));
    EXPECT_EQ(S_OK, Query("tone.flac", &sound));
    EXPECT_EQ(S_OK, Query(jpeg, &info)) << "a refusal leaves the object able to answer";
    EXPECT_EQ(S_OK, Query("clip.wmv", &video));
    EXPECT_EQ(160u, video.dwWidth);
    EXPECT_EQ(0u, sound.dwWidth);
}

// The DLL's own proxy/stub carries the calls of a multi-threaded apartment to the object.
TEST_F(QueryRefusals, AnotherApartmentGetsTheSameAnswersThroughTheProxy)
{
    HRESULT hrUnknown = E_FAIL, hrReal = E_FAIL;
    TESSALY_FILEINFO viaProxy = {};
    bool bProxy = false;
    std::wstring real = CTestMedia::Path("clip.wmv");
    ASSERT_EQ(S_OK, CallFromAnotherApartment<IQueryFileInfo>(m_query.Get(), IID_IQueryFileInfo, [&](IQueryFileInfo* remote) {
        bProxy = remote != m_query.Get();
        WCHAR path[] = L"C:\\Media\\clip.zzz";
        TESSALY_FILEINFO info = {};
        hrUnknown = remote->GetFileInfo(path, &info);
        hrReal = remote->GetFileInfo(&real[0], &viaProxy);
    }));
    EXPECT_TRUE(bProxy);
    EXPECT_EQ(TESSALY_E_NOTSUPPORTED, hrUnknown);
    TESSALY_FILEINFO direct = {};
    ASSERT_EQ(S_OK, m_query->GetFileInfo(&real[0], &direct));
    EXPECT_EQ(S_OK, hrReal);
    EXPECT_EQ(direct.dwAttributeMask, viaProxy.dwAttributeMask) << "a real file answers the same through the proxy";
    EXPECT_EQ(direct.dDuration, viaProxy.dDuration);
    EXPECT_EQ(direct.dwHeight, viaProxy.dwHeight);
    EXPECT_EQ(160u, viaProxy.dwWidth);
}

} // namespace
