// Opening movies and pictures: what the engine reads of them, and damaged files.
#include <windows.h>

#include <gtest/gtest.h>

#include <cmath>

#include "CQtmlTestSupport.h"

namespace {

class MovieFormatTest : public QtmlTest, public ::testing::WithParamInterface<const char*>
{
};

TEST_P(MovieFormatTest, ReportsLengthSizeAndPicturesLikeFfprobe)
{
    const CTruth truth = ReadTruth(GetParam());
    ASSERT_GT(truth.dSeconds, 0.0);
    Movie movie = nullptr;
    ASSERT_EQ(noErr, OpenMovie(MediaPath(GetParam()), &movie));
    ASSERT_NE(nullptr, movie);

    EXPECT_EQ(600, GetMovieTimeScale(movie));
    // Within one frame of 25 a second.
    EXPECT_NEAR(truth.dSeconds * 600, GetMovieDuration(movie), 24);
    EXPECT_EQ(0x00010000, GetMoviePreferredRate(movie));
    Rect box = {-1, -1, -1, -1};
    GetMovieBox(movie, &box);
    EXPECT_EQ(0, box.top);
    EXPECT_EQ(0, box.left);
    EXPECT_EQ(truth.nHeight, box.bottom);
    EXPECT_EQ(truth.nWidth, box.right);
    const Track track = GetMovieIndTrackType(movie, 1, VisualMediaCharacteristic,
                                             movieTrackCharacteristic | movieTrackEnabledOnly);
    EXPECT_EQ(truth.nWidth > 0, track != nullptr);

    MovieController mc = NewMovieController(movie, &box, mcTopLeftMovie | mcNotVisible);
    ASSERT_NE(nullptr, mc);
    TimeScale scale = 0;
    EXPECT_EQ(0, MCGetCurrentTime(mc, &scale));
    EXPECT_EQ(600, scale);
    DisposeMovieController(mc);
    DisposeMovie(movie);
    EXPECT_EQ(noErr, GetMoviesError());
    // The handle is gone: calls with it do nothing and say so.
    EXPECT_EQ(0, GetMovieDuration(movie));
    EXPECT_EQ(paramErr, GetMoviesError());
}

INSTANTIATE_TEST_SUITE_P(Formats, MovieFormatTest, ::testing::Values("clip.mov", "clip.mp4", "tone.m4a"));

using PictureTest = QtmlTest;

TEST_F(PictureTest, ImporterFoundByContentNotByExtension)
{
    FSSpec location;
    GraphicsImportComponent importer = reinterpret_cast<GraphicsImportComponent>(1);
    ASSERT_EQ(noErr, NativePathNameToFSSpec(MediaPath("still.pict").c_str(), &location, 0));
    ASSERT_EQ(noErr, GetGraphicsImporterForFile(&location, &importer));
    EXPECT_NE(nullptr, importer);
    EXPECT_EQ(noErr, CloseComponent(importer));
    EXPECT_EQ(paramErr, CloseComponent(importer));

    ASSERT_EQ(noErr, NativePathNameToFSSpec(MediaPath("clip.mov").c_str(), &location, 0));
    importer = reinterpret_cast<GraphicsImportComponent>(1);
    EXPECT_EQ(cantFindHandler, GetGraphicsImporterForFile(&location, &importer));
    EXPECT_EQ(nullptr, importer);
}

// A Targa has no GDI+ decoder; handed to the filter graph it would play as a tenth of a second
// of noise.
TEST_F(PictureTest, StillsAreMoviesOfNoLengthEvenWithoutAGdiplusDecoder)
{
    for (const char* pszName : {"still.pict", "still.tga"})
    {
        SCOPED_TRACE(pszName);
        FSSpec location;
        GraphicsImportComponent importer = nullptr;
        ASSERT_EQ(noErr, NativePathNameToFSSpec(MediaPath(pszName).c_str(), &location, 0));
        EXPECT_EQ(noErr, GetGraphicsImporterForFile(&location, &importer));
        CloseComponent(importer);

        Movie movie = nullptr;
        ASSERT_EQ(noErr, OpenMovie(MediaPath(pszName), &movie));
        EXPECT_EQ(0, GetMovieDuration(movie));
        EXPECT_EQ(600, GetMovieTimeScale(movie));
        Rect box;
        GetMovieBox(movie, &box);
        EXPECT_EQ(48, box.bottom);
        EXPECT_EQ(64, box.right);
        EXPECT_NE(nullptr, GetMovieIndTrackType(movie, 1, VisualMediaCharacteristic,
                                                movieTrackCharacteristic | movieTrackEnabledOnly));
        DisposeMovie(movie);
    }
}

TEST_F(PictureTest, AnimatedGifTimeLineIsTheSumOfItsFrameDelays)
{
    Movie movie = nullptr;
    ASSERT_EQ(noErr, OpenMovie(MediaPath("anim.gif"), &movie));
    EXPECT_EQ(100, GetMovieTimeScale(movie));
    EXPECT_EQ(100, GetMovieDuration(movie));
    Rect box;
    GetMovieBox(movie, &box);
    EXPECT_EQ(60, box.bottom);
    EXPECT_EQ(80, box.right);
    DisposeMovie(movie);
}

using DamagedFileTest = QtmlTest;

TEST_F(DamagedFileTest, EveryDamagedFileEndsInInvalidMovieWithinSeconds)
{
    for (const char* pszName : {"cut.mov", "cut.m4a", "cut.gif", "noise.mov", "noise.gif", "empty.mov", "empty.m4a"})
    {
        SCOPED_TRACE(pszName);
        const ULONGLONG ullStart = GetTickCount64();
        Movie movie = reinterpret_cast<Movie>(1);
        EXPECT_EQ(invalidMovie, OpenMovie(MediaPath(pszName), &movie));
        EXPECT_EQ(nullptr, movie);
        EXPECT_EQ(invalidMovie, GetMoviesError());
        EXPECT_LT(GetTickCount64() - ullStart, 10000u);
    }
}

TEST_F(DamagedFileTest, MissingFileOrFolderIsNotFound)
{
    FSSpec location;
    int16_t ref = -1;
    ASSERT_EQ(noErr, NativePathNameToFSSpec(MediaPath("absent.mov").c_str(), &location, 0));
    EXPECT_EQ(fnfErr, OpenMovieFile(&location, &ref, fsRdPerm));
    ASSERT_EQ(noErr, NativePathNameToFSSpec(TESSALY_QT_MEDIA_DIR, &location, 0));
    EXPECT_EQ(fnfErr, OpenMovieFile(&location, &ref, fsRdPerm));
    EXPECT_EQ(paramErr, NativePathNameToFSSpec("", &location, 0));
    EXPECT_EQ(paramErr, NativePathNameToFSSpec(std::string(300, 'a').c_str(), &location, 0));
}

} // namespace
