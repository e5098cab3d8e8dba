// Where the built host programs and the generated media are, as the tests see them inside Wine.
#pragma once

#define TESSALY_WIDEN2(x) L##x
#define TESSALY_WIDEN(x) TESSALY_WIDEN2(x)

const wchar_t* const kProbePath = TESSALY_WIDEN(TESSALY_PROBE_PATH);
const wchar_t* const kPlayerPath = TESSALY_WIDEN(TESSALY_PLAYER_PATH);
// Files written by tests/inspect/make-media.sh: tone.wav (1 s), stereo.wma (2 s, stereo),
// clip.wmv (2 s, 320x240 with sound), empty.wma and one-byte.wma (not media at all).
const wchar_t* const kMediaDir = TESSALY_WIDEN(TESSALY_MEDIA_DIR);
