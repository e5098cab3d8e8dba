// The probe's answers for real media files match what the files are.
#include <windows.h>

#include <gtest/gtest.h>

#include "CChildProcess.h"
#include "CHostRun.h"
#include "CJsonValue.h"
#include "CTempFolder.h"
#include "HostPaths.h"
#include "hosts/common/CUtf8.h"

namespace {

struct Expected
{
    const wchar_t* pwszSource;
    const wchar_t* pwszPlaced; // where it goes in the folder tree the probe walks
    double dDuration;
    unsigned uWidth, uHeight;
    bool bAudioOnly;
};

// What tests/inspect/make-media.sh asks ffmpeg for.
const Expected kFiles[] = {
    {L"tone.wav", L"tone.wav", 1.0, 0, 0, true},
    {L"stereo.wma", L"sub\\deeper\\stereo.wma", 2.0, 0, 0, true},
    {L"clip.wmv", L"sub\\clip.wmv", 2.0, 320, 240, false},
};

TEST(ProbeMedia, JsonForAGeneratedFolderMatchesTheFilesRealProperties)
{
    CTempFolder temp;
    for (const Expected& file : kFiles)
        temp.CopyIn(CHostRun::Media(file.pwszSource), file.pwszPlaced);

    const CChildProcess::Result run = CChildProcess::Run(CChildProcess::Quote(kProbePath) + L" --json " +
                                                 CChildProcess::Quote(temp.Path()));
    EXPECT_EQ(0, run.exitCode) << run.output << run.errors;
    const CJsonValue doc = CJsonValue::Parse(run.output);
    ASSERT_EQ(std::size(kFiles), doc["files"].items.size()) << run.output;

    for (const Expected& file : kFiles)
    {
        SCOPED_TRACE(CUtf8::FromWide(file.pwszPlaced));
        const std::wstring path = temp.Path(file.pwszPlaced);
        const CJsonValue* pEntry = nullptr;
        for (const CJsonValue& entry : doc["files"].items)
            if (entry["path"].text == CUtf8::FromWide(path))
                pEntry = &entry;
        ASSERT_NE(nullptr, pEntry) << run.output;
        const CJsonValue& entry = *pEntry;
        EXPECT_TRUE(entry["ok"].b) << entry["resultName"].text;
        EXPECT_EQ("S_OK", entry["resultName"].text);
        EXPECT_NEAR(file.dDuration, entry["duration"].number, 0.15);
        EXPECT_EQ(file.bAudioOnly, entry["audioOnly"].b);
        EXPECT_TRUE(entry["seekable"].b);
        EXPECT_FALSE(entry["picture"].b);
        if (!file.bAudioOnly)
        {
            EXPECT_EQ(file.uWidth, entry["width"].number);
            EXPECT_EQ(file.uHeight, entry["height"].number);
        }
        WIN32_FILE_ATTRIBUTE_DATA data;
        ASSERT_TRUE(GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data));
        EXPECT_EQ(data.nFileSizeLow, entry["bytes"].number);
    }
    EXPECT_EQ(std::size(kFiles), doc["summary"]["succeeded"].number);
    EXPECT_NEAR(5.0, doc["summary"]["mediaSeconds"].number, 0.45);
}

} // namespace
