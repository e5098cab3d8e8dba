// The per-user setting that makes a drive letter stand for an image, in the test prefix's
// registry. The CD source filter reads the same value, so where and how it is stored matters.
#include <gtest/gtest.h>

#include <windows.h>

#include <string>

#include "cdimage/CDiscImageSetting.h"

namespace {

// Drive Y, which no other test sets; the value is also read as stored, without the class.
TEST(DiscImageSetting, SetReadBackInEitherCaseAndClear)
{
    const auto stored = [] {
        WCHAR value[512] = {};
        DWORD cbValue = sizeof(value) - sizeof(WCHAR);
        RegGetValueW(HKEY_CURRENT_USER, L"Software\\Tessaly\\CD Audio\\Images", L"Y", RRF_RT_REG_SZ, nullptr, value,
                     &cbValue);
        return std::wstring(value);
    };
    const std::wstring path = L"C:\\Images\\M\u00fcsik disc\\album.cue";
    ASSERT_EQ(ERROR_SUCCESS, CDiscImageSetting::Set(L'y', path));
    EXPECT_EQ(path, CDiscImageSetting::ImageFor(L'Y'));
    EXPECT_EQ(path, stored());  // a REG_SZ named by the upper-case letter

    EXPECT_EQ(ERROR_SUCCESS, CDiscImageSetting::Clear(L'Y'));
    EXPECT_EQ(L"", CDiscImageSetting::ImageFor(L'Y'));
    EXPECT_EQ(L"", stored());
    EXPECT_EQ(static_cast<LONG>(ERROR_INVALID_PARAMETER), CDiscImageSetting::Set(L'1', path));
}

} // namespace
