// The change from one picture to the next: at once by default, as a half-second cross-fade when
// the host asks for it and a picture is already shown.
#include <gtest/gtest.h>

#include <vector>

#include "CPictureCheck.h"
#include "CPictureFiles.h"
#include "CPictureStage.h"

namespace {

const COLORREF kRed = RGB(255, 0, 0);
const COLORREF kGreen = RGB(0, 255, 0);
const COLORREF kBlue = RGB(0, 0, 255);
const DWORD kCrossFade = 1;
const RECT kWhole = {0, 0, 200, 200};

struct Sample
{
    ULONGLONG tick;
    COLORREF cr;
};

class CrossFade : public ::testing::Test
{
protected:
    std::wstring Plain(const wchar_t* pwszName, COLORREF cr)
    {
        return files.Encode(pwszName, 200, 200, [cr](int, int) { return cr; });
    }

    COLORREF Centre()
    {
        HDC hdc = GetDC(stage.Viewer().PictureWindow());
        const COLORREF cr = GetPixel(hdc, 100, 100);
        ReleaseDC(stage.Viewer().PictureWindow(), hdc);
        return cr;
    }

    // The centre pixel, sampled as often as the message loop turns, until the fade is over.
    std::vector<Sample> SampleUntilFadeEnds(DWORD dwTimeoutMs)
    {
        std::vector<Sample> samples;
        stage.PumpUntil(
            [&] {
                samples.push_back({GetTickCount64(), Centre()});
                return !stage.Viewer().Fading();
            },
            dwTimeoutMs);
        return samples;
    }

    static bool StrictlyBetweenRedAndGreen(COLORREF cr)
    {
        return GetRValue(cr) > 0 && GetRValue(cr) < 255 && GetGValue(cr) > 0 && GetGValue(cr) < 255 &&
               GetBValue(cr) == 0;
    }

    CPictureFiles files;
    CPictureStage stage; // 200 x 200
};

TEST_F(CrossFade, WithTheFlagTheOldPictureFadesIntoTheNewInHalfASecond)
{
    ASSERT_EQ(S_OK, stage.Open(Plain(L"red.bmp", kRed)));
    ASSERT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kRed));

    const ULONGLONG start = GetTickCount64();
    ASSERT_EQ(S_OK, stage.Open(Plain(L"green.bmp", kGreen), kCrossFade));
    EXPECT_EQ(kRed, Centre()) << "the first paint of a fade only prepares it";
    const std::vector<Sample> samples = SampleUntilFadeEnds(3000);
    ASSERT_FALSE(stage.Viewer().Fading()) << "the fade must end";
    const ULONGLONG length = samples.back().tick - start;

    size_t nBetween = 0;
    for (const Sample& sample : samples)
        nBetween += StrictlyBetweenRedAndGreen(sample.cr);
    EXPECT_GT(nBetween, 0u) << "no frame between the two pictures in " << samples.size() << " samples";
    EXPECT_GE(length, 500u) << "the fade lasts its full length";
    EXPECT_LT(length, 2500u);

    stage.PumpFor(50);
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kGreen)) << "the fade ends on the new picture";
    EXPECT_FALSE(stage.Viewer().FadeTimerOn());
}

TEST_F(CrossFade, WithoutTheFlagTheNewPictureReplacesTheOldAtOnce)
{
    ASSERT_EQ(S_OK, stage.Open(Plain(L"red.bmp", kRed)));
    ASSERT_EQ(S_OK, stage.Open(Plain(L"green.bmp", kGreen), 0));
    EXPECT_FALSE(stage.Viewer().Fading());
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kGreen));
}

TEST_F(CrossFade, TheFirstPictureIsShownAtOnceEvenWithTheFlag)
{
    ASSERT_EQ(S_OK, stage.Open(Plain(L"red.bmp", kRed), kCrossFade));
    EXPECT_FALSE(stage.Viewer().Fading());
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kRed));
}

TEST_F(CrossFade, ANewPictureDuringAFadeEndsItAndFadesFromWhatIsShown)
{
    ASSERT_EQ(S_OK, stage.Open(Plain(L"red.bmp", kRed)));
    ASSERT_EQ(S_OK, stage.Open(Plain(L"green.bmp", kGreen), kCrossFade));
    stage.PumpFor(150);
    ASSERT_TRUE(stage.Viewer().FadeTimerOn());

    ASSERT_EQ(S_OK, stage.Open(Plain(L"blue.bmp", kBlue), kCrossFade));
    EXPECT_TRUE(stage.Viewer().Fading()) << "a new fade is pending";
    stage.PumpUntil([&] { return !stage.Viewer().Fading(); }, 3000);
    stage.PumpFor(50);
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kBlue));

    ASSERT_EQ(S_OK, stage.Open(Plain(L"red.bmp", kRed), kCrossFade));
    stage.PumpFor(100);
    ASSERT_EQ(S_OK, stage.Open(Plain(L"green.bmp", kGreen), 0));
    EXPECT_FALSE(stage.Viewer().FadeTimerOn()) << "an open without the flag stops the running fade";
    EXPECT_FALSE(stage.Viewer().Fading());
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kGreen));
}

TEST_F(CrossFade, AFailedOpenLeavesTheShownPictureOnScreenAndNothingOpen)
{
    ASSERT_EQ(S_OK, stage.Open(Plain(L"red.bmp", kRed)));
    const std::wstring text = files.Bytes(L"text.png", {'n', 'o', 't', ' ', 'a', ' ', 'p', 'n', 'g'});
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), stage.Open(text, kCrossFade));
    stage.PumpFor(100);
    EXPECT_FALSE(stage.Viewer().Fading());
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kRed));
    DWORD dwWidth = 7;
    EXPECT_EQ(E_FAIL, stage.Viewer().GetFileInfo(nullptr, nullptr, nullptr, &dwWidth, nullptr, nullptr));
    EXPECT_EQ(7u, dwWidth);
}

} // namespace
