#include "cdimage/CDiscImageSetting.h"

#include <vector>

namespace {

const wchar_t kImagesKey[] = L"Software\\Tessaly\\CD Audio\\Images";
// Longer than any path Windows opens (32767 characters); a larger value is not a path.
const DWORD kMaxPathChars = 32768;

// The value name for a drive letter, or false when the character is no drive letter.
bool ValueName(WCHAR wcDrive, WCHAR (&name)[2])
{
    if (wcDrive >= L'a' && wcDrive <= L'z')
        wcDrive = static_cast<WCHAR>(wcDrive - L'a' + L'A');
    if (wcDrive < L'A' || wcDrive > L'Z')
        return false;
    name[0] = wcDrive;
    name[1] = L'\0';
    return true;
}

} // namespace

std::wstring CDiscImageSetting::ImageFor(WCHAR wcDrive)
{
    WCHAR name[2];
    if (!ValueName(wcDrive, name))
        return std::wstring();
    HKEY hKey = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, kImagesKey, 0, KEY_QUERY_VALUE, &hKey) != ERROR_SUCCESS)
        return std::wstring();

    std::wstring path;
    // The value may change between asking its size and reading it: ask again then, a few times.
    for (int attempt = 0; attempt < 4; ++attempt)
    {
        DWORD dwType = 0;
        DWORD cbValue = 0;
        if (RegQueryValueExW(hKey, name, nullptr, &dwType, nullptr, &cbValue) != ERROR_SUCCESS || dwType != REG_SZ ||
            cbValue / sizeof(WCHAR) > kMaxPathChars)
            break;
        // Room for a terminator the stored value may lack.
        std::vector<WCHAR> buffer(cbValue / sizeof(WCHAR) + 1, L'\0');
        DWORD cbRead = cbValue;
        const LONG result = RegQueryValueExW(hKey, name, nullptr, &dwType, reinterpret_cast<BYTE*>(buffer.data()), &cbRead);
        if (result == ERROR_MORE_DATA)
            continue;
        if (result == ERROR_SUCCESS && dwType == REG_SZ && cbRead <= cbValue)
        {
            size_t cch = cbRead / sizeof(WCHAR);
            while (cch > 0 && buffer[cch - 1] == L'\0')
                --cch;
            path.assign(buffer.data(), cch);
        }
        break;
    }
    RegCloseKey(hKey);
    return path;
}

LONG CDiscImageSetting::Set(WCHAR wcDrive, const std::wstring& cuePath)
{
    WCHAR name[2];
    if (!ValueName(wcDrive, name) || cuePath.empty() || cuePath.size() >= kMaxPathChars ||
        cuePath.find(L'\0') != std::wstring::npos)
        return ERROR_INVALID_PARAMETER;
    HKEY hKey = nullptr;
    LONG result = RegCreateKeyExW(HKEY_CURRENT_USER, kImagesKey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_SET_VALUE,
                                  nullptr, &hKey, nullptr);
    if (result != ERROR_SUCCESS)
        return result;
    const DWORD cbData = static_cast<DWORD>((cuePath.size() + 1) * sizeof(WCHAR));
    result = RegSetValueExW(hKey, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(cuePath.c_str()), cbData);
    RegCloseKey(hKey);
    return result;
}

// Clearing a letter that has no setting is done already.
LONG CDiscImageSetting::Clear(WCHAR wcDrive)
{
    WCHAR name[2];
    if (!ValueName(wcDrive, name))
        return ERROR_INVALID_PARAMETER;
    HKEY hKey = nullptr;
    LONG result = RegOpenKeyExW(HKEY_CURRENT_USER, kImagesKey, 0, KEY_SET_VALUE, &hKey);
    if (result == ERROR_FILE_NOT_FOUND)
        return ERROR_SUCCESS;
    if (result != ERROR_SUCCESS)
        return result;
    result = RegDeleteValueW(hKey, name);
    RegCloseKey(hKey);
    return result == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : result;
}
