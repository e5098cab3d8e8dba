// The type library hosts see, read back and compared with the contract: each method's slot,
// member id and parameters, and what each class implements.
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

std::string Narrow(BSTR text)
{
    std::string s(text, text + SysStringLen(text));
    SysFreeString(text);
    return s;
}

std::string NameOf(ITypeInfo* pInfo, MEMBERID memid = MEMBERID_NIL)
{
    BSTR bstr = nullptr;
    return SUCCEEDED(pInfo->GetDocumentation(memid, &bstr, nullptr, nullptr, nullptr)) ? Narrow(bstr) : "?";
}

std::string TypeName(ITypeInfo* pInfo, const TYPEDESC& td)
{
    static const std::pair<VARTYPE, const char*> kNames[] = {{VT_UI4, "ULONG"}, {VT_I4, "LONG"}, {VT_I2, "SHORT"},
        {VT_UI2, "USHORT"}, {VT_UI1, "BYTE"}, {VT_R8, "double"}, {VT_LPWSTR, "LPWSTR"}, {VT_HRESULT, "HRESULT"}};
    for (const auto& n : kNames)
        if (n.first == td.vt)
            return n.second;
    ComPtr<ITypeInfo> ref;
    if (td.vt == VT_PTR)
        return TypeName(pInfo, *td.lptdesc) + "*";
    return td.vt == VT_USERDEFINED && SUCCEEDED(pInfo->GetRefTypeInfo(td.hreftype, &ref)) ? NameOf(ref.Get()) : "?";
}

// "Name(dir type name, ...)" as the type library declares the method.
std::string Declaration(ITypeInfo* pInfo, const FUNCDESC* pFunc)
{
    std::vector<BSTR> names(pFunc->cParams + 1);
    UINT cNames = 0;
    pInfo->GetNames(pFunc->memid, names.data(), static_cast<UINT>(names.size()), &cNames);
    std::string text = cNames ? Narrow(names[0]) + "(" : "?(";
    for (UINT i = 0; i < static_cast<UINT>(pFunc->cParams); ++i)
    {
        const USHORT f = pFunc->lprgelemdescParam[i].paramdesc.wParamFlags;
        text += std::string(i ? ", " : "") + ((f & PARAMFLAG_FIN) ? "in" : "") + ((f & PARAMFLAG_FOUT) ? "out" : "") + " " +
                TypeName(pInfo, pFunc->lprgelemdescParam[i].tdesc) + " " + (i + 1 < cNames ? Narrow(names[i + 1]) : "?");
    }
    return text + ")";
}

TEST(TypeLibrary, MethodsSitInTheContractsSlotsWithItsParametersAndClassesNameTheirInterfaces)
{
    ComPtr<ITypeLib> lib;
    ASSERT_EQ(S_OK, LoadTypeLibEx(TESSALY_WIDEN(TESSALY_TLB_PATH), REGKIND_NONE, &lib));
    const struct
    {
        const GUID* guid;
        std::string name;
        int level, firstSlot; // depth below IUnknown; slot of the first own method
        std::vector<std::string> members; // base, methods; a class: interfaces, flags (1 default, 2 source)
    } types[] = {
        {&IID_IPlay, "IPlay", 1, 3, {"IUnknown", "GetSupportedFileExt(out ULONG* pdwCount, out LPWSTR** pppwszFileExtList)",
          "OpenFile(in LPWSTR wszFilepath, in ULONG dwOpenFlags, in ULONG dwPlaybackFlags, inout _TESSALY_FILEINFO* pOpenedFileInfo)",
          "CloseFile()", "GetState(out _TESSALY_PLAYBACK_STATE* pCurPlayState, inout double* pdCurElapseTime)",
          "GetFileInfo(out _TESSALY_FILEINFO* pFileInfo)",
          "PlaybackControl(in ULONG dwControlFlag, in ULONG dwParamSize, in BYTE* pParam)",
          "SetParentWindow(in LONG hWndParent)", "GetParentWindow(out LONG* phWndParent)",
          "SetParentWindowSize(in ULONG dwWidth, in ULONG dwHeight)", "GetPlaybackFlags(out ULONG* pdwPlaybackFlags)",
          "SetPlaybackFlags(in ULONG dwPlaybackFlags)"}},
        {&IID_IPlay2, "IPlay2", 2, 14, {"IPlay", "ShowMediaInfo(in LONG bShow)", "SetMediaInfo(in _TESSALY_MEDIA_INFO* pPMI)"}},
        {&IID_IPlayCD, "IPlayCD", 3, 16, {"IPlay2", "OpenCD(in SHORT wszDrive, in USHORT wStartTrack, in USHORT wEndTrack)",
          "GetDuration(inout double* dbDuration)"}},
        {&IID_ITextDisplay, "ITextDisplay", 1, 3, {"IUnknown",
          "SetGradientBkColor(in ULONG crTop, in ULONG crBottom, in LONG bForceRefresh)",
          "SetTextColor(in ULONG crColor, in LONG bForceRefresh)", "SetFont(in LOGFONTW* plf, in LONG bForceRefresh)",
          "GetGradientBkColor(out ULONG* pcrTop, out ULONG* pcrBottom)", "GetTextColor(out ULONG* pcrColor)"}},
        {&IID_IPlayEvents, "IPlayEvents", 1, 3, {"IUnknown", "OnPlayComplete()", "OnPlayError(in HRESULT hrError)",
          "OnPlayProgress(in double dProgress, in _TESSALY_PLAYBACK_STATE CurPlayState)"}},
        {&IID_IPlayCDEvents, "IPlayCDEvents", 2, 6, {"IPlayEvents", "OnPlayTrackComplete()"}},
        {&IID_IQueryFileInfo, "IQueryFileInfo", 1, 3, {"IUnknown",
          "GetFileInfo(in LPWSTR wszFilepath, out _TESSALY_FILEINFO* pOpenedFileInfo)"}},
        {&CLSID_Play, "Play", 0, 0, {"IPlay 1", "IPlay2 0", "IPlayCD 0", "ITextDisplay 0", "IPlayEvents 3", "IPlayCDEvents 2"}},
        {&CLSID_QueryFileInfo, "QueryFileInfo", 0, 0, {"IQueryFileInfo 1"}},
    };
    for (const auto& t : types)
    {
        SCOPED_TRACE(t.name);
        const bool bClass = t.level == 0;
        const size_t cMethods = t.members.size() - !bClass;
        ComPtr<ITypeInfo> info;
        ASSERT_EQ(S_OK, lib->GetTypeInfoOfGuid(*t.guid, &info));
        EXPECT_EQ(t.name, NameOf(info.Get()));
        TYPEATTR* pAttr = nullptr;
        ASSERT_EQ(S_OK, info->GetTypeAttr(&pAttr));
        EXPECT_EQ(bClass ? TKIND_COCLASS : TKIND_INTERFACE, pAttr->typekind);
        EXPECT_EQ(bClass ? TYPEFLAG_FCANCREATE : 0, pAttr->wTypeFlags & (TYPEFLAG_FCANCREATE | TYPEFLAG_FDUAL | TYPEFLAG_FDISPATCHABLE));
        EXPECT_EQ(bClass ? 0u : cMethods, pAttr->cFuncs);
        EXPECT_EQ(bClass ? t.members.size() : 1u, pAttr->cImplTypes);
        EXPECT_EQ(bClass ? 0u : (t.firstSlot + cMethods) * sizeof(void*), pAttr->cbSizeVft);
        info->ReleaseTypeAttr(pAttr);
        for (UINT i = 0; i < (bClass ? t.members.size() : 1u); ++i)
        {
            HREFTYPE href = 0;
            ComPtr<ITypeInfo> itf;
            INT flags = -1;
            ASSERT_EQ(S_OK, info->GetRefTypeOfImplType(i, &href));
            ASSERT_EQ(S_OK, info->GetRefTypeInfo(href, &itf));
            ASSERT_EQ(S_OK, info->GetImplTypeFlags(i, &flags));
            EXPECT_EQ(t.members[i], NameOf(itf.Get()) + (bClass ? " " + std::to_string(flags) : ""));
        }
        for (UINT i = 0; i < (bClass ? 0u : cMethods); ++i)
        {
            FUNCDESC* pFunc = nullptr;
            ASSERT_EQ(S_OK, info->GetFuncDesc(i, &pFunc));
            EXPECT_EQ(t.members[i + 1], Declaration(info.Get(), pFunc));
            EXPECT_EQ(static_cast<MEMBERID>(0x60000000 + t.level * 0x10000 + static_cast<int>(i)), pFunc->memid);
            EXPECT_EQ((t.firstSlot + static_cast<int>(i)) * static_cast<int>(sizeof(void*)), pFunc->oVft);
            EXPECT_EQ(CC_STDCALL, pFunc->callconv);
            EXPECT_EQ(VT_HRESULT, pFunc->elemdescFunc.tdesc.vt);
            info->ReleaseFuncDesc(pFunc);
        }
    }
}

} // namespace
