// The per-user setting that makes a drive letter stand for an image, in the test prefix's
// registry. The CD source filter reads the same value, so where and how it is stored matters.
#include <gtest/gtest.h>

#include <windows.h>

#include <string>

#include "cdimage/CDiscImageSetting.h"

namespace {

// A letter no other test sets.
const WCHAR kDrive = L'Y';

// The stored value as the registry holds it, read without the class.
std::wstring RawValue(const wchar_t* pszName, DWORD* pdwType)
{
    WCHAR value[512] = {};
    DWORD cbValue = sizeof(value) - sizeof(WCHAR);
    *pdwType = REG_NONE;
    if (RegGetValueW(HKEY_CURRENT_USER, L"Software\\Tessaly\\CD Audio\\Images", pszName, RRF_RT_ANY, pdwType, value,
                     &cbValue) != ERROR_SUCCESS)
        return std::wstring();
    return value;
}

TEST(DiscImageSetting, SetReadBackInEitherCaseAndClear)
{
    const std::wstring path = L"C:\\Images\\M\u00fcsik disc\\album.cue";
    ASSERT_EQ(ERROR_SUCCESS, CDiscImageSetting::Set(L'y', path));
    EXPECT_EQ(path, CDiscImageSetting::ImageFor(L'Y'));
    EXPECT_EQ(path, CDiscImageSetting::ImageFor(L'y'));
    EXPECT_EQ(std::wstring(), CDiscImageSetting::ImageFor(L'X'));
    DWORD dwType = REG_NONE;
    EXPECT_EQ(path, RawValue(L"Y", &dwType));
    EXPECT_EQ(static_cast<DWORD>(REG_SZ), dwType);

    EXPECT_EQ(ERROR_SUCCESS, CDiscImageSetting::Clear(kDrive));
    EXPECT_EQ(std::wstring(), CDiscImageSetting::ImageFor(kDrive));
    EXPECT_EQ(std::wstring(), RawValue(L"Y", &dwType));
    EXPECT_EQ(ERROR_SUCCESS, CDiscImageSetting::Clear(L'y'));
    EXPECT_EQ(static_cast<LONG>(ERROR_INVALID_PARAMETER), CDiscImageSetting::Set(L'1', path));
}

} // namespace
