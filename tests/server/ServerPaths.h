// Where the built library is, as the test programs see it inside Wine.
#pragma once

#define TESSALY_WIDEN2(x) L##x
#define TESSALY_WIDEN(x) TESSALY_WIDEN2(x)

const wchar_t* const kServerPath = TESSALY_WIDEN(TESSALY_DLL_PATH);
