#include "hosts/common/CResultCode.h"

#include <olectl.h>
#include <vfwmsgs.h>

#include <cwchar>

#include "engine/TessalyContract.h"

namespace {

struct KnownCode
{
    HRESULT hr;
    const wchar_t* pwszName;
    const wchar_t* pwszMessage; // null: the system's own text is good enough
};

#define WIDE2(text) L##text
#define WIDE(text) WIDE2(text)
#define CODE(name, message) {name, WIDE(#name), message}

const KnownCode kKnownCodes[] = {
    CODE(S_OK, L"Success."),
    CODE(S_FALSE, L"Success, with nothing to do."),
    CODE(TESSALY_E_NOTSUPPORTED, L"The file type is not supported (no playback back-end takes this extension)."),
    CODE(TESSALY_E_CANNOTPLAY, L"The media cannot be played."),
    CODE(TESSALY_E_NOTSEEKABLE, L"The media cannot be positioned."),
    CODE(TESSALY_E_QT_NOTINSTALLED, L"QuickTime is not installed, so this file cannot be played."),
    CODE(TESSALY_E_QT_VERSION, L"The installed QuickTime is older than version 7.0."),
    CODE(TESSALY_E_GDIPLUS_UNAVAILABLE, L"GDI+ could not be started, so pictures cannot be shown."),
    CODE(TESSALY_S_AUDIO_NOT_RENDERED, L"Playing without sound: the audio could not be rendered."),
    CODE(TESSALY_S_VIDEO_NOT_RENDERED, L"Playing without picture: the video could not be rendered."),
    CODE(TESSALY_S_PARTIAL_RENDER, L"Some streams of the file are in formats that cannot be played."),
    CODE(E_NOTIMPL, L"This kind of file cannot be played yet (the engine lacks the feature)."),
    CODE(E_INVALIDARG, nullptr),
    CODE(E_POINTER, nullptr),
    CODE(E_FAIL, L"The operation failed."),
    CODE(E_OUTOFMEMORY, nullptr),
    CODE(E_NOINTERFACE, nullptr),
    CODE(E_ACCESSDENIED, nullptr),
    CODE(E_UNEXPECTED, nullptr),
    CODE(E_ABORT, nullptr),
    CODE(CLASS_E_NOAGGREGATION, nullptr),
    CODE(CLASS_E_CLASSNOTAVAILABLE, nullptr),
    CODE(REGDB_E_CLASSNOTREG, L"The engine is not registered (run regsvr32 on tessaly.dll)."),
    CODE(CO_E_NOTINITIALIZED, nullptr),
    CODE(CONNECT_E_NOCONNECTION, nullptr),
    CODE(CONNECT_E_ADVISELIMIT, nullptr),
    CODE(CONNECT_E_CANNOTCONNECT, nullptr),
    CODE(VFW_S_PARTIAL_RENDER, nullptr),
    CODE(VFW_S_AUDIO_NOT_RENDERED, nullptr),
    CODE(VFW_S_VIDEO_NOT_RENDERED, nullptr),
    CODE(VFW_E_NO_TYPES, nullptr),
    CODE(VFW_E_NOT_CONNECTED, nullptr),
    CODE(VFW_E_NOT_FOUND, nullptr),
    CODE(VFW_E_CANNOT_CONNECT, L"No combination of filters could connect the file's streams."),
    CODE(VFW_E_CANNOT_RENDER, L"No combination of filters could render the file's streams."),
    CODE(VFW_E_WRONG_STATE, nullptr),
    CODE(VFW_E_TYPE_NOT_ACCEPTED, nullptr),
    CODE(VFW_E_TIMEOUT, nullptr),
    CODE(VFW_E_INVALID_FILE_FORMAT, L"The file's format is invalid."),
    CODE(VFW_E_UNKNOWN_FILE_TYPE, L"The file's media type is not recognised."),
    CODE(VFW_E_CANNOT_LOAD_SOURCE_FILTER, nullptr),
    CODE(VFW_E_FILE_TOO_SHORT, L"The file is too short to be valid."),
    CODE(VFW_E_INVALID_FILE_VERSION, nullptr),
    CODE(VFW_E_NO_DECOMPRESSOR, nullptr),
    CODE(VFW_E_NO_AUDIO_HARDWARE, L"There is no audio device to play the sound on."),
    CODE(VFW_E_UNSUPPORTED_STREAM, L"The file's stream format is not supported."),
    CODE(VFW_E_BAD_VIDEOCD, nullptr),
};

#undef CODE
#undef WIDE
#undef WIDE2

const KnownCode* Find(HRESULT hr)
{
    for (const KnownCode& code : kKnownCodes)
        if (code.hr == hr)
            return &code;
    return nullptr;
}

std::wstring Trimmed(const wchar_t* pwsz, DWORD cch)
{
    std::wstring text(pwsz, cch);
    while (!text.empty() && (text.back() == L'\n' || text.back() == L'\r' || text.back() == L' '))
        text.pop_back();
    return text;
}

// DirectShow keeps its messages in its own module rather than in the system's table.
std::wstring SystemText(HRESULT hr)
{
    const DWORD dwFlags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS;
    wchar_t* pwsz = nullptr;
    DWORD cch = FormatMessageW(dwFlags | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, static_cast<DWORD>(hr), 0,
                               reinterpret_cast<LPWSTR>(&pwsz), 0, nullptr);
    if (cch == 0)
    {
        if (HMODULE hQuartz = LoadLibraryExW(L"quartz.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE))
        {
            cch = FormatMessageW(dwFlags | FORMAT_MESSAGE_FROM_HMODULE, hQuartz, static_cast<DWORD>(hr), 0,
                                 reinterpret_cast<LPWSTR>(&pwsz), 0, nullptr);
            FreeLibrary(hQuartz);
        }
    }
    if (cch == 0 || !pwsz)
        return {};
    std::wstring text = Trimmed(pwsz, cch);
    LocalFree(pwsz);
    return text;
}

} // namespace

std::wstring CResultCode::Hex(HRESULT hr)
{
    wchar_t wsz[16];
    swprintf(wsz, 16, L"0x%08lX", static_cast<unsigned long>(hr));
    return wsz;
}

std::wstring CResultCode::HexAndName(HRESULT hr)
{
    return Hex(hr) + L" " + Name(hr);
}

std::wstring CResultCode::Name(HRESULT hr)
{
    if (const KnownCode* pCode = Find(hr))
        return pCode->pwszName;
    if (HRESULT_FACILITY(hr) == FACILITY_WIN32 && FAILED(hr))
        return L"HRESULT_FROM_WIN32(" + std::to_wstring(HRESULT_CODE(hr)) + L")";
    return Hex(hr);
}

std::wstring CResultCode::Message(HRESULT hr)
{
    const KnownCode* pCode = Find(hr);
    if (pCode && pCode->pwszMessage)
        return pCode->pwszMessage;
    std::wstring text = SystemText(hr);
    if (!text.empty())
        return text;
    return FAILED(hr) ? L"The engine reported an error it gives no explanation for." : L"Success.";
}
