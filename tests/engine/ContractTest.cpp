// The type library that hosts see, read back at run time and compared with the contract: every
// interface's methods in their slots with their parameters, and the classes. (The records' sizes
// and offsets are checked when the contract header compiles.)
#include <windows.h>
#include <oleauto.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"

namespace {

#define TESSALY_WIDEN2(x) L##x
#define TESSALY_WIDEN(x) TESSALY_WIDEN2(x)
const wchar_t* const kTypeLibraryPath = TESSALY_WIDEN(TESSALY_TLB_PATH);

struct Method
{
    const wchar_t* name;
    const char* params; // "dir type name" per parameter, comma separated
};

struct Interface
{
    const IID* iid;
    const wchar_t* name;
    const wchar_t* base;
    int level;      // position in its chain: IUnknown's direct children are 1
    int firstSlot;  // vtable slot of the first own method
    std::vector<Method> methods;
};

const std::vector<Interface>& ContractInterfaces()
{
    static const std::vector<Interface> interfaces = {
        {&IID_IPlay, L"IPlay", L"IUnknown", 1, 3,
         {{L"GetSupportedFileExt", "out unsigned long* pdwCount, out LPWSTR** pppwszFileExtList"},
          {L"OpenFile", "in LPWSTR wszFilepath, in unsigned long dwOpenFlags, in unsigned long dwPlaybackFlags, inout _TESSALY_FILEINFO* pOpenedFileInfo"},
          {L"CloseFile", ""},
          {L"GetState", "out _TESSALY_PLAYBACK_STATE* pCurPlayState, inout double* pdCurElapseTime"},
          {L"GetFileInfo", "out _TESSALY_FILEINFO* pFileInfo"},
          {L"PlaybackControl", "in unsigned long dwControlFlag, in unsigned long dwParamSize, in unsigned char* pParam"},
          {L"SetParentWindow", "in long hWndParent"},
          {L"GetParentWindow", "out long* phWndParent"},
          {L"SetParentWindowSize", "in unsigned long dwWidth, in unsigned long dwHeight"},
          {L"GetPlaybackFlags", "out unsigned long* pdwPlaybackFlags"},
          {L"SetPlaybackFlags", "in unsigned long dwPlaybackFlags"}}},
        {&IID_IPlay2, L"IPlay2", L"IPlay", 2, 14,
         {{L"ShowMediaInfo", "in long bShow"},
          {L"SetMediaInfo", "in _TESSALY_MEDIA_INFO* pPMI"}}},
        {&IID_IPlayCD, L"IPlayCD", L"IPlay2", 3, 16,
         {{L"OpenCD", "in short wszDrive, in unsigned short wStartTrack, in unsigned short wEndTrack"},
          {L"GetDuration", "inout double* dbDuration"}}},
        {&IID_ITextDisplay, L"ITextDisplay", L"IUnknown", 1, 3,
         {{L"SetGradientBkColor", "in unsigned long crTop, in unsigned long crBottom, in long bForceRefresh"},
          {L"SetTextColor", "in unsigned long crColor, in long bForceRefresh"},
          {L"SetFont", "in LOGFONTW* plf, in long bForceRefresh"},
          {L"GetGradientBkColor", "out unsigned long* pcrTop, out unsigned long* pcrBottom"},
          {L"GetTextColor", "out unsigned long* pcrColor"}}},
        {&IID_IPlayEvents, L"IPlayEvents", L"IUnknown", 1, 3,
         {{L"OnPlayComplete", ""},
          {L"OnPlayError", "in HRESULT hrError"},
          {L"OnPlayProgress", "in double dProgress, in _TESSALY_PLAYBACK_STATE CurPlayState"}}},
        {&IID_IPlayCDEvents, L"IPlayCDEvents", L"IPlayEvents", 2, 6,
         {{L"OnPlayTrackComplete", ""}}},
        {&IID_IQueryFileInfo, L"IQueryFileInfo", L"IUnknown", 1, 3,
         {{L"GetFileInfo", "in LPWSTR wszFilepath, out _TESSALY_FILEINFO* pOpenedFileInfo"}}},
    };
    return interfaces;
}

std::string Narrow(const wchar_t* text)
{
    std::string s;
    for (; text && *text; ++text)
        s += static_cast<char>(*text);
    return s;
}

std::string NameOf(ITypeInfo* pInfo, MEMBERID memid = MEMBERID_NIL)
{
    BSTR bstrName = nullptr;
    if (FAILED(pInfo->GetDocumentation(memid, &bstrName, nullptr, nullptr, nullptr)))
        return "?";
    std::string name = Narrow(bstrName);
    SysFreeString(bstrName);
    return name;
}

std::string TypeName(ITypeInfo* pInfo, const TYPEDESC& td)
{
    switch (td.vt)
    {
    case VT_UI4: return "unsigned long";
    case VT_I4: return "long";
    case VT_I2: return "short";
    case VT_UI2: return "unsigned short";
    case VT_UI1: return "unsigned char";
    case VT_R8: return "double";
    case VT_LPWSTR: return "LPWSTR";
    case VT_HRESULT: return "HRESULT";
    case VT_PTR: return TypeName(pInfo, *td.lptdesc) + "*";
    case VT_USERDEFINED:
    {
        ComPtr<ITypeInfo> ref;
        if (FAILED(pInfo->GetRefTypeInfo(td.hreftype, &ref)))
            return "?ref";
        return NameOf(ref.Get());
    }
    default: return "vt" + std::to_string(td.vt);
    }
}

std::string Direction(USHORT flags)
{
    const bool in = (flags & PARAMFLAG_FIN) != 0;
    const bool out = (flags & PARAMFLAG_FOUT) != 0;
    return in && out ? "inout" : in ? "in" : out ? "out" : "none";
}

std::string DescribeParams(ITypeInfo* pInfo, const FUNCDESC* pFunc)
{
    std::vector<BSTR> names(pFunc->cParams + 1);
    UINT cNames = 0;
    pInfo->GetNames(pFunc->memid, names.data(), static_cast<UINT>(names.size()), &cNames);
    std::string text;
    for (SHORT i = 0; i < pFunc->cParams; ++i)
    {
        const ELEMDESC& e = pFunc->lprgelemdescParam[i];
        if (i)
            text += ", ";
        text += Direction(e.paramdesc.wParamFlags) + " " + TypeName(pInfo, e.tdesc) + " " +
                (static_cast<UINT>(i) + 1 < cNames ? Narrow(names[i + 1]) : "?");
    }
    for (UINT i = 0; i < cNames; ++i)
        SysFreeString(names[i]);
    return text;
}

class TypeLibrary : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, LoadTypeLibEx(kTypeLibraryPath, REGKIND_NONE, &m_lib)) << TESSALY_TLB_PATH;
    }

    ComPtr<ITypeLib> m_lib;
};

TEST_F(TypeLibrary, EveryMethodHasTheContractsSlotMemberIdAndParameters)
{
    for (const Interface& itf : ContractInterfaces())
    {
        SCOPED_TRACE(Narrow(itf.name));
        ComPtr<ITypeInfo> info;
        ASSERT_EQ(S_OK, m_lib->GetTypeInfoOfGuid(*itf.iid, &info));
        EXPECT_EQ(Narrow(itf.name), NameOf(info.Get()));

        TYPEATTR* pAttr = nullptr;
        ASSERT_EQ(S_OK, info->GetTypeAttr(&pAttr));
        EXPECT_EQ(TKIND_INTERFACE, pAttr->typekind) << "custom vtable interface, not dispatch";
        EXPECT_EQ(0, pAttr->wTypeFlags & (TYPEFLAG_FDUAL | TYPEFLAG_FDISPATCHABLE));
        EXPECT_EQ(itf.methods.size(), pAttr->cFuncs);
        EXPECT_EQ(1, pAttr->cImplTypes);
        EXPECT_EQ((itf.firstSlot + itf.methods.size()) * sizeof(void*), pAttr->cbSizeVft) << "a slot is a pointer";
        info->ReleaseTypeAttr(pAttr);

        HREFTYPE hBase = 0;
        ASSERT_EQ(S_OK, info->GetRefTypeOfImplType(0, &hBase));
        ComPtr<ITypeInfo> base;
        ASSERT_EQ(S_OK, info->GetRefTypeInfo(hBase, &base));
        EXPECT_EQ(Narrow(itf.base), NameOf(base.Get()));

        for (size_t i = 0; i < itf.methods.size(); ++i)
        {
            const Method& m = itf.methods[i];
            SCOPED_TRACE(Narrow(m.name));
            FUNCDESC* pFunc = nullptr;
            ASSERT_EQ(S_OK, info->GetFuncDesc(static_cast<UINT>(i), &pFunc));
            EXPECT_EQ(Narrow(m.name), NameOf(info.Get(), pFunc->memid));
            EXPECT_EQ(static_cast<MEMBERID>(0x60000000 + itf.level * 0x10000 + static_cast<int>(i)), pFunc->memid);
            EXPECT_EQ((itf.firstSlot + static_cast<int>(i)) * static_cast<int>(sizeof(void*)), pFunc->oVft);
            EXPECT_EQ(CC_STDCALL, pFunc->callconv);
            EXPECT_EQ(FUNC_PUREVIRTUAL, pFunc->funckind);
            EXPECT_EQ(VT_HRESULT, pFunc->elemdescFunc.tdesc.vt);
            EXPECT_EQ(0, pFunc->cParamsOpt);
            EXPECT_EQ(m.params, DescribeParams(info.Get(), pFunc));

            BSTR bstrDoc = nullptr;
            EXPECT_EQ(S_OK, info->GetDocumentation(pFunc->memid, nullptr, &bstrDoc, nullptr, nullptr));
            EXPECT_EQ(nullptr, bstrDoc) << "no method has a help string";
            SysFreeString(bstrDoc);
            info->ReleaseFuncDesc(pFunc);
        }
    }
}

struct Implemented
{
    const char* name;
    INT flags;
};

void ExpectCoclass(ITypeLib* pLib, const CLSID& clsid, const char* name, const char* help,
                   const std::vector<Implemented>& interfaces)
{
    SCOPED_TRACE(name);
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(S_OK, pLib->GetTypeInfoOfGuid(clsid, &info));
    BSTR bstrName = nullptr, bstrDoc = nullptr;
    ASSERT_EQ(S_OK, info->GetDocumentation(MEMBERID_NIL, &bstrName, &bstrDoc, nullptr, nullptr));
    EXPECT_EQ(name, Narrow(bstrName));
    EXPECT_EQ(help, Narrow(bstrDoc));
    SysFreeString(bstrName);
    SysFreeString(bstrDoc);

    TYPEATTR* pAttr = nullptr;
    ASSERT_EQ(S_OK, info->GetTypeAttr(&pAttr));
    EXPECT_EQ(TKIND_COCLASS, pAttr->typekind);
    EXPECT_TRUE(pAttr->wTypeFlags & TYPEFLAG_FCANCREATE);
    ASSERT_EQ(interfaces.size(), pAttr->cImplTypes);
    info->ReleaseTypeAttr(pAttr);
    for (UINT i = 0; i < interfaces.size(); ++i)
    {
        HREFTYPE href = 0;
        ASSERT_EQ(S_OK, info->GetRefTypeOfImplType(i, &href));
        ComPtr<ITypeInfo> itf;
        ASSERT_EQ(S_OK, info->GetRefTypeInfo(href, &itf));
        EXPECT_EQ(interfaces[i].name, NameOf(itf.Get()));
        INT flags = 0;
        ASSERT_EQ(S_OK, info->GetImplTypeFlags(i, &flags));
        EXPECT_EQ(interfaces[i].flags, flags) << interfaces[i].name;
    }
}

TEST_F(TypeLibrary, ClassesNameTheirDefaultAndSourceInterfaces)
{
    ExpectCoclass(m_lib.Get(), CLSID_Play, "Play", "Play Class",
                  {{"IPlay", IMPLTYPEFLAG_FDEFAULT}, {"IPlay2", 0}, {"IPlayCD", 0}, {"ITextDisplay", 0},
                   {"IPlayEvents", IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE},
                   {"IPlayCDEvents", IMPLTYPEFLAG_FSOURCE}});
    ExpectCoclass(m_lib.Get(), CLSID_QueryFileInfo, "QueryFileInfo", "QueryFileInfo Class",
                  {{"IQueryFileInfo", IMPLTYPEFLAG_FDEFAULT}});
}

} // namespace
