// regsvr32 on the built library, and the registry it leaves behind, key by key.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "ServerHost.h"

namespace {

std::wstring Guid(const GUID& guid)
{
    WCHAR wsz[40] = {};
    StringFromGUID2(guid, wsz, 40);
    return wsz;
}

DWORD RunRegsvr32(const std::wstring& options)
{
    std::wstring command = L"regsvr32.exe " + options + L" \"" + kServerPath + L"\"";
    STARTUPINFOW si = {};
    si.cb = sizeof(si);
    PROCESS_INFORMATION pi = {};
    if (!CreateProcessW(nullptr, &command[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi))
        return GetLastError() | 0x40000000;
    WaitForSingleObject(pi.hProcess, 60000);
    DWORD dwExit = 0xFFFFFFFF;
    GetExitCodeProcess(pi.hProcess, &dwExit);
    CloseHandle(pi.hThread);
    CloseHandle(pi.hProcess);
    return dwExit;
}

// The number of subkeys, or -1 when the key is missing.
int Subkeys(const std::wstring& key)
{
    HKEY hKey = nullptr;
    DWORD dwSubkeys = 0;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &hKey) != ERROR_SUCCESS)
        return -1;
    RegQueryInfoKeyW(hKey, nullptr, nullptr, nullptr, &dwSubkeys, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    RegCloseKey(hKey);
    return static_cast<int>(dwSubkeys);
}

// Upper case, so that paths compare without case.
std::string Upper(std::wstring s)
{
    CharUpperW(&s[0]);
    return std::string(s.begin(), s.end());
}

std::string Value(const std::wstring& key, const wchar_t* pwszName)
{
    WCHAR wsz[1024] = {};
    DWORD cb = sizeof(wsz) - sizeof(WCHAR), dwType = 0;
    if (RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), pwszName, RRF_RT_ANY, &dwType, wsz, &cb) != ERROR_SUCCESS)
        return "<missing>";
    return dwType == REG_SZ ? Upper(wsz) : "<not a string>";
}

const IID* const kInterfaces[] = {&IID_IPlay, &IID_IPlay2, &IID_IPlayCD, &IID_ITextDisplay,
                                  &IID_IPlayEvents, &IID_IPlayCDEvents, &IID_IQueryFileInfo};
const std::wstring kTypeLib = L"TypeLib\\" + Guid(LIBID_TESSALYLib);

void ExpectRegistered()
{
    struct Entry
    {
        std::wstring key;
        const wchar_t* pwszName;
        std::wstring value;
    };
    const std::wstring proxyClass = Guid(IID_IPlay2);
    std::vector<Entry> expected = {{L"Interface\\" + Guid(IID_IPlay), nullptr, L"IPlay"},
                                   {L"CLSID\\" + proxyClass + L"\\InprocServer32", nullptr, kServerPath},
                                   {kTypeLib + L"\\1.0", nullptr, L"Tessaly 1.0 Type Library"},
                                   {kTypeLib + (sizeof(void*) == 8 ? L"\\1.0\\409\\win64" : L"\\1.0\\409\\win32"), nullptr, kServerPath}};
    for (const IID* iid : kInterfaces)
        expected.push_back({L"Interface\\" + Guid(*iid) + L"\\ProxyStubClsid32", nullptr, proxyClass});
    for (const auto& c : {std::make_pair(&CLSID_Play, std::wstring(L"Play")), std::make_pair(&CLSID_QueryFileInfo, std::wstring(L"QueryFileInfo"))})
    {
        const std::wstring clsid = Guid(*c.first), classKey = L"CLSID\\" + clsid, description = c.second + L" Class";
        const std::wstring viProgId = L"Tessaly." + c.second, progId = viProgId + L".1";
        expected.insert(expected.end(), {{progId, nullptr, description}, {progId + L"\\CLSID", nullptr, clsid},
                                         {viProgId, nullptr, description}, {viProgId + L"\\CLSID", nullptr, clsid},
                                         {viProgId + L"\\CurVer", nullptr, progId}, {classKey, nullptr, description},
                                         {classKey + L"\\ProgID", nullptr, progId},
                                         {classKey + L"\\VersionIndependentProgID", nullptr, viProgId},
                                         {classKey + L"\\InprocServer32", nullptr, kServerPath},
                                         {classKey + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
                                         {classKey + L"\\TypeLib", nullptr, Guid(LIBID_TESSALYLib)}});
        EXPECT_EQ(4, Subkeys(classKey)) << "nothing but what registration writes";
    }
    for (const Entry& e : expected)
        EXPECT_EQ(Upper(e.value), Value(e.key, e.pwszName)) << Upper(e.key) << " " << Upper(e.pwszName ? e.pwszName : L"");
}

// The case leaves the library registered, as the other cases expect it.
TEST(Registration, RegisterWritesEveryKeyOverAnyLeftoverAndUnregisterRemovesThemAll)
{
    const std::wstring classKey = L"CLSID\\" + Guid(CLSID_Play);
    ASSERT_EQ(0u, RunRegsvr32(L"/s"));
    HKEY hKey = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_CLASSES_ROOT, (classKey + L"\\Leftover").c_str(), 0, nullptr, 0,
                                             KEY_WRITE, nullptr, &hKey, nullptr));
    RegCloseKey(hKey);
    ASSERT_EQ(0u, RunRegsvr32(L"/s"));
    ExpectRegistered();

    ASSERT_EQ(0u, RunRegsvr32(L"/s /u"));
    std::vector<std::wstring> gone = {classKey, L"CLSID\\" + Guid(CLSID_QueryFileInfo), L"Tessaly.Play", L"Tessaly.Play.1",
                                      L"Tessaly.QueryFileInfo", L"Tessaly.QueryFileInfo.1", L"CLSID\\" + Guid(IID_IPlay2), kTypeLib};
    for (const IID* iid : kInterfaces)
        gone.push_back(L"Interface\\" + Guid(*iid));
    for (const std::wstring& key : gone)
        EXPECT_EQ(-1, Subkeys(key)) << Upper(key);
    EXPECT_NE(-1, Subkeys(L"CLSID")) << "the shared key stays";
    ASSERT_EQ(0u, RunRegsvr32(L"/s"));
    ExpectRegistered();
}

} // namespace
