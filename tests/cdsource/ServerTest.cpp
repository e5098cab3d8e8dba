// The library's registration under HKEY_CLASSES_ROOT, through the code its exports call (the
// exports themselves run when regsvr32 registers it for server_tests, whose PlayCD.* cases create
// the filter by class). It writes the shared registry of the test prefix.
#include <windows.h>

#include <dshow.h>

#include <gtest/gtest.h>

#include <string>

#include "cdsource/CCDSourceRegistrar.h"
#include "cdsource/CCDSourceServer.h"
#include "cdsource/CDAudioSource.h"

namespace {

std::wstring ReadValue(const std::wstring& key, LPCWSTR pwszName = nullptr)  // "(none)" when not there
{
    WCHAR wsz[MAX_PATH] = {};
    DWORD cb = sizeof(wsz);
    return RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), pwszName, RRF_RT_REG_SZ, nullptr, wsz, &cb) ? L"(none)" : wsz;
}

// Registered twice, one clean registration: the class by its path, free-threaded, with its name,
// and among the filters. The prefix may have it registered already (other programs play through
// it); it is registered again at the end if so.
TEST(Server, RegistersAndUnregistersTheFilterAndMakesOnlyItsClass)
{
    ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    WCHAR wszClsid[40] = {}, wszCategory[40] = {};
    ASSERT_TRUE(StringFromGUID2(CLSID_TessalyCDAudioSource, wszClsid, 40) && StringFromGUID2(CLSID_LegacyAmFilterCategory, wszCategory, 40));
    const std::wstring classKey = L"CLSID\\" + std::wstring(wszClsid), filterKey = L"CLSID\\" + std::wstring(wszCategory) + L"\\Instance\\" + wszClsid;
    const std::wstring registeredPath = ReadValue(classKey + L"\\InprocServer32");
    EXPECT_EQ(E_POINTER, CCDSourceRegistrar::Register(nullptr));
    ASSERT_EQ(S_OK, CCDSourceRegistrar::Register(L"C:\\Some Folder\\tessaly_cdsource.dll"));
    ASSERT_EQ(S_OK, CCDSourceRegistrar::Register(L"C:\\Other\\tessaly_cdsource.dll"));
    EXPECT_EQ(L"Tessaly CD Audio Source|C:\\Other\\tessaly_cdsource.dll|Both|Tessaly CD Audio Source",
              ReadValue(classKey) + L"|" + ReadValue(classKey + L"\\InprocServer32") + L"|" +
              ReadValue(classKey + L"\\InprocServer32", L"ThreadingModel") + L"|" + ReadValue(filterKey, L"FriendlyName"));
    ASSERT_EQ(S_OK, CCDSourceRegistrar::Unregister());
    EXPECT_EQ(L"(none)|(none)", ReadValue(classKey) + L"|" + ReadValue(filterKey, L"FriendlyName"));
    EXPECT_EQ(S_OK, CCDSourceRegistrar::Unregister());  // already gone is done
    EXPECT_EQ(S_OK, registeredPath == L"(none)" ? S_OK : CCDSourceRegistrar::Register(registeredPath.c_str()));
    void* pv = &pv;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, CCDSourceServer::GetClassObject(CLSID_FilterGraph, IID_IClassFactory, &pv));
    EXPECT_EQ(nullptr, pv);
    CoUninitialize();
}

} // namespace
