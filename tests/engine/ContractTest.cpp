// The type library hosts see: each method in its slot with its member id and parameter count, and each class's interfaces.
#include <windows.h>
#include <oleauto.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"

namespace {

std::string NameOf(ITypeInfo* pInfo, MEMBERID memid = MEMBERID_NIL)
{
    BSTR bstr = nullptr;
    const bool bNamed = SUCCEEDED(pInfo->GetDocumentation(memid, &bstr, nullptr, nullptr, nullptr));
    const std::string name = bNamed ? std::string(bstr, bstr + SysStringLen(bstr)) : "?";
    SysFreeString(bstr);
    return name;
}

TEST(TypeLibrary, MethodsSitInTheContractsSlotsAndClassesNameTheirInterfaces)
{
    ComPtr<ITypeLib> lib;
    ASSERT_EQ(S_OK, LoadTypeLibEx(L"" TESSALY_TLB_PATH, REGKIND_NONE, &lib));
    const struct
    {
        const GUID* guid;
        std::string name;
        int level, firstSlot;             // depth below IUnknown; slot of the first own method
        std::vector<std::string> members; // base, then "method/parameters"; a class: "interface flags" (1 default, 2 source)
    } types[] = {
        {&IID_IPlay, "IPlay", 1, 3, {"IUnknown", "GetSupportedFileExt/2", "OpenFile/4", "CloseFile/0", "GetState/2",
          "GetFileInfo/1", "PlaybackControl/3", "SetParentWindow/1", "GetParentWindow/1", "SetParentWindowSize/2",
          "GetPlaybackFlags/1", "SetPlaybackFlags/1"}},
        {&IID_IPlay2, "IPlay2", 2, 14, {"IPlay", "ShowMediaInfo/1", "SetMediaInfo/1"}},
        {&IID_IPlayCD, "IPlayCD", 3, 16, {"IPlay2", "OpenCD/3", "GetDuration/1"}},
        {&IID_ITextDisplay, "ITextDisplay", 1, 3, {"IUnknown", "SetGradientBkColor/3", "SetTextColor/2", "SetFont/2",
          "GetGradientBkColor/2", "GetTextColor/1"}},
        {&IID_IPlayEvents, "IPlayEvents", 1, 3, {"IUnknown", "OnPlayComplete/0", "OnPlayError/1", "OnPlayProgress/2"}},
        {&IID_IPlayCDEvents, "IPlayCDEvents", 2, 6, {"IPlayEvents", "OnPlayTrackComplete/0"}},
        {&IID_IQueryFileInfo, "IQueryFileInfo", 1, 3, {"IUnknown", "GetFileInfo/2"}},
        {&CLSID_Play, "Play", 0, 0, {"IPlay 1", "IPlay2 0", "IPlayCD 0", "ITextDisplay 0", "IPlayEvents 3", "IPlayCDEvents 2"}},
        {&CLSID_QueryFileInfo, "QueryFileInfo", 0, 0, {"IQueryFileInfo 1"}},
    };
    for (const auto& t : types)
    {
        SCOPED_TRACE(t.name);
        const bool bClass = t.level == 0;
        const UINT cMembers = static_cast<UINT>(t.members.size()), cImplemented = bClass ? cMembers : 1u, cMethods = cMembers - cImplemented;
        ComPtr<ITypeInfo> info;
        ASSERT_EQ(S_OK, lib->GetTypeInfoOfGuid(*t.guid, &info));
        EXPECT_EQ(t.name, NameOf(info.Get()));
        TYPEATTR* pAttr = nullptr;
        ASSERT_EQ(S_OK, info->GetTypeAttr(&pAttr));
        EXPECT_EQ(bClass ? TKIND_COCLASS : TKIND_INTERFACE, pAttr->typekind);
        EXPECT_EQ(bClass ? TYPEFLAG_FCANCREATE : 0, pAttr->wTypeFlags & (TYPEFLAG_FCANCREATE | TYPEFLAG_FDUAL | TYPEFLAG_FDISPATCHABLE));
        EXPECT_EQ(std::make_pair(cMethods, cImplemented), std::make_pair(UINT(pAttr->cFuncs), UINT(pAttr->cImplTypes)));
        EXPECT_EQ(bClass ? 0u : (t.firstSlot + cMethods) * sizeof(void*), pAttr->cbSizeVft);
        info->ReleaseTypeAttr(pAttr);
        for (UINT i = 0; i < cImplemented; ++i)
        {
            HREFTYPE href = 0;
            ComPtr<ITypeInfo> itf;
            INT flags = -1;
            ASSERT_EQ(S_OK, info->GetRefTypeOfImplType(i, &href));
            ASSERT_EQ(S_OK, info->GetRefTypeInfo(href, &itf));
            ASSERT_EQ(S_OK, info->GetImplTypeFlags(i, &flags));
            EXPECT_EQ(t.members[i], NameOf(itf.Get()) + (bClass ? " " + std::to_string(flags) : ""));
        }
        for (UINT i = 0; i < cMethods; ++i)
        {
            FUNCDESC* pFunc = nullptr;
            ASSERT_EQ(S_OK, info->GetFuncDesc(i, &pFunc));
            EXPECT_EQ(t.members[i + 1], NameOf(info.Get(), pFunc->memid) + "/" + std::to_string(pFunc->cParams));
            EXPECT_EQ(static_cast<MEMBERID>(0x60000000 + t.level * 0x10000 + static_cast<int>(i)), pFunc->memid);
            EXPECT_EQ((t.firstSlot + static_cast<int>(i)) * static_cast<int>(sizeof(void*)), pFunc->oVft);
            EXPECT_EQ(std::make_pair(CC_STDCALL, VARTYPE(VT_HRESULT)), std::make_pair(pFunc->callconv, pFunc->elemdescFunc.tdesc.vt));
            info->ReleaseFuncDesc(pFunc);
        }
    }
}

} // namespace
