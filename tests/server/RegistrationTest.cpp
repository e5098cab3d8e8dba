// regsvr32 on the built library, and the registry it leaves behind, key by key.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "ServerPaths.h"
#include "engine/TessalyContract.h"

namespace {

std::wstring GuidString(const GUID& guid)
{
    WCHAR wsz[40] = {};
    StringFromGUID2(guid, wsz, 40);
    return wsz;
}

DWORD RunRegsvr32(const wchar_t* pwszOptions)
{
    std::wstring command = std::wstring(L"regsvr32.exe ") + pwszOptions + L" \"" + kServerPath + L"\"";
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

bool KeyExists(const std::wstring& key)
{
    HKEY hKey = nullptr;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &hKey) != ERROR_SUCCESS)
        return false;
    RegCloseKey(hKey);
    return true;
}

// The string value, or "<missing>".
std::wstring Value(const std::wstring& key, const wchar_t* pwszName = nullptr)
{
    WCHAR wsz[1024] = {};
    DWORD cb = sizeof(wsz) - sizeof(WCHAR);
    DWORD dwType = 0;
    if (RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), pwszName, RRF_RT_ANY, &dwType, wsz, &cb) != ERROR_SUCCESS)
        return L"<missing>";
    return dwType == REG_SZ ? std::wstring(wsz) : L"<not a string>";
}

std::string Narrow(const std::wstring& s)
{
    return std::string(s.begin(), s.end());
}

int CountSubkeys(const std::wstring& key)
{
    HKEY hKey = nullptr;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &hKey) != ERROR_SUCCESS)
        return -1;
    DWORD dwSubkeys = 0;
    RegQueryInfoKeyW(hKey, nullptr, nullptr, nullptr, &dwSubkeys, nullptr, nullptr, nullptr, nullptr, nullptr,
                     nullptr, nullptr);
    RegCloseKey(hKey);
    return static_cast<int>(dwSubkeys);
}

struct ClassNames
{
    const CLSID* clsid;
    const wchar_t* description;
    const wchar_t* progId;
    const wchar_t* viProgId;
};

const ClassNames kClasses[] = {
    {&CLSID_Play, L"Play Class", L"Tessaly.Play.1", L"Tessaly.Play"},
    {&CLSID_QueryFileInfo, L"QueryFileInfo Class", L"Tessaly.QueryFileInfo.1", L"Tessaly.QueryFileInfo"},
};

const IID* const kInterfaces[] = {&IID_IPlay, &IID_IPlay2, &IID_IPlayCD, &IID_ITextDisplay,
                                  &IID_IPlayEvents, &IID_IPlayCDEvents, &IID_IQueryFileInfo};

void ExpectRegistered()
{
    for (const ClassNames& c : kClasses)
    {
        SCOPED_TRACE(Narrow(c.progId));
        const std::wstring clsid = GuidString(*c.clsid);
        const std::wstring classKey = L"CLSID\\" + clsid;
        EXPECT_EQ(c.description, Value(c.progId));
        EXPECT_EQ(clsid, Value(std::wstring(c.progId) + L"\\CLSID"));
        EXPECT_EQ(c.description, Value(c.viProgId));
        EXPECT_EQ(clsid, Value(std::wstring(c.viProgId) + L"\\CLSID"));
        EXPECT_EQ(c.progId, Value(std::wstring(c.viProgId) + L"\\CurVer"));
        EXPECT_EQ(c.description, Value(classKey));
        EXPECT_EQ(c.progId, Value(classKey + L"\\ProgID"));
        EXPECT_EQ(c.viProgId, Value(classKey + L"\\VersionIndependentProgID"));
        EXPECT_EQ(0, lstrcmpiW(kServerPath, Value(classKey + L"\\InprocServer32").c_str()))
            << Narrow(Value(classKey + L"\\InprocServer32"));
        EXPECT_EQ(L"Apartment", Value(classKey + L"\\InprocServer32", L"ThreadingModel"));
        EXPECT_EQ(GuidString(LIBID_TESSALYLib), Value(classKey + L"\\TypeLib"));
        EXPECT_EQ(4, CountSubkeys(classKey)) << "nothing but what registration writes";
    }

    const std::wstring proxyClass = GuidString(IID_IPlay2);
    for (const IID* iid : kInterfaces)
    {
        const std::wstring key = L"Interface\\" + GuidString(*iid);
        EXPECT_EQ(proxyClass, Value(key + L"\\ProxyStubClsid32")) << Narrow(key);
    }
    EXPECT_EQ(L"IPlay", Value(L"Interface\\" + GuidString(IID_IPlay))) << "the interface's name";
    EXPECT_EQ(0, lstrcmpiW(kServerPath, Value(L"CLSID\\" + proxyClass + L"\\InprocServer32").c_str()));

    const std::wstring typeLibKey = L"TypeLib\\" + GuidString(LIBID_TESSALYLib) + L"\\1.0";
    EXPECT_EQ(L"Tessaly 1.0 Type Library", Value(typeLibKey));
    // Registered under the system kind of the library's target, in this process's registry view.
    const std::wstring pathKey = typeLibKey + (sizeof(void*) == 8 ? L"\\409\\win64" : L"\\409\\win32");
    EXPECT_EQ(0, lstrcmpiW(kServerPath, Value(pathKey).c_str())) << Narrow(Value(pathKey));
}

void ExpectUnregistered()
{
    for (const ClassNames& c : kClasses)
    {
        EXPECT_FALSE(KeyExists(L"CLSID\\" + GuidString(*c.clsid))) << Narrow(c.progId);
        EXPECT_FALSE(KeyExists(c.progId));
        EXPECT_FALSE(KeyExists(c.viProgId));
    }
    for (const IID* iid : kInterfaces)
        EXPECT_FALSE(KeyExists(L"Interface\\" + GuidString(*iid)));
    EXPECT_FALSE(KeyExists(L"CLSID\\" + GuidString(IID_IPlay2)));
    EXPECT_FALSE(KeyExists(L"TypeLib\\" + GuidString(LIBID_TESSALYLib)));
    EXPECT_TRUE(KeyExists(L"CLSID")) << "the shared CLSID key stays";
}

// Every case leaves the library registered, as the other server tests expect it.
TEST(Registration, RegisterWritesEveryKeyAndUnregisterRemovesThemAll)
{
    ASSERT_EQ(0u, RunRegsvr32(L"/s"));
    ExpectRegistered();
    ASSERT_EQ(0u, RunRegsvr32(L"/s /u"));
    ExpectUnregistered();
    ASSERT_EQ(0u, RunRegsvr32(L"/s"));
    ExpectRegistered();
}

TEST(Registration, RegisteringAgainLeavesOneCleanClassKey)
{
    ASSERT_EQ(0u, RunRegsvr32(L"/s"));
    const std::wstring classKey = L"CLSID\\" + GuidString(CLSID_Play);
    HKEY hKey = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_CLASSES_ROOT, (classKey + L"\\Leftover").c_str(), 0, nullptr, 0,
                                             KEY_WRITE, nullptr, &hKey, nullptr));
    RegCloseKey(hKey);
    ASSERT_EQ(5, CountSubkeys(classKey));

    ASSERT_EQ(0u, RunRegsvr32(L"/s"));
    EXPECT_FALSE(KeyExists(classKey + L"\\Leftover"));
    ExpectRegistered();
}

} // namespace
