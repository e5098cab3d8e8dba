// The names and sentences hosts show for result codes: what a user reads when a file fails.
#include <gtest/gtest.h>

#include <set>

#include "engine/TessalyContract.h"
#include "hosts/common/CResultCode.h"

namespace {

const HRESULT kEngineCodes[] = {TESSALY_E_NOTSUPPORTED,     TESSALY_E_CANNOTPLAY,         TESSALY_E_NOTSEEKABLE,
                                TESSALY_E_QT_NOTINSTALLED,  TESSALY_E_QT_VERSION,         TESSALY_E_GDIPLUS_UNAVAILABLE,
                                TESSALY_S_AUDIO_NOT_RENDERED, TESSALY_S_VIDEO_NOT_RENDERED, TESSALY_S_PARTIAL_RENDER};

TEST(ResultCode, EveryEngineCodeHasItsOwnNameAndSentence)
{
    std::set<std::wstring> names, messages;
    for (HRESULT hr : kEngineCodes)
    {
        const std::wstring name = CResultCode::Name(hr);
        EXPECT_EQ(0u, name.find(L"TESSALY_")) << std::hex << hr;
        names.insert(name);
        messages.insert(CResultCode::Message(hr));
    }
    EXPECT_EQ(std::size(kEngineCodes), names.size());
    EXPECT_EQ(std::size(kEngineCodes), messages.size());
    EXPECT_EQ(L"TESSALY_E_NOTSUPPORTED", CResultCode::Name(static_cast<HRESULT>(0x8004A000)));
    EXPECT_EQ(L"TESSALY_S_PARTIAL_RENDER", CResultCode::Name(static_cast<HRESULT>(0x0004A002)));
}

TEST(ResultCode, CodesPassedThroughFromThePlatformAreNamed)
{
    EXPECT_EQ(L"E_NOTIMPL", CResultCode::Name(E_NOTIMPL));
    EXPECT_EQ(L"REGDB_E_CLASSNOTREG", CResultCode::Name(REGDB_E_CLASSNOTREG));
    EXPECT_EQ(L"VFW_E_UNSUPPORTED_STREAM", CResultCode::Name(static_cast<HRESULT>(0x80040265)));
    EXPECT_EQ(L"HRESULT_FROM_WIN32(2)", CResultCode::Name(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)));
    // The well-known name wins over the generic wrapping of the same Windows error.
    EXPECT_EQ(L"E_ACCESSDENIED", CResultCode::Name(HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED)));
}

TEST(ResultCode, UnknownCodesFallBackToTheirValue)
{
    EXPECT_EQ(L"0x8004A0FF", CResultCode::Name(static_cast<HRESULT>(0x8004A0FF)));
    EXPECT_EQ(L"0x00000001", CResultCode::Hex(S_FALSE));
    EXPECT_EQ(L"0x80004001", CResultCode::Hex(E_NOTIMPL));
    // A failure nobody explains still gets a sentence, never an empty status line.
    EXPECT_FALSE(CResultCode::Message(static_cast<HRESULT>(0x8004A0FF)).empty());
    EXPECT_FALSE(CResultCode::Message(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)).empty());
}

} // namespace
