// The engine's view of the contract: the header generated from Tessaly.idl plus compile-time
// checks that the records keep the layout hosts were built against.
#pragma once

#include <windows.h>

#include <cstddef>

#include "Tessaly.h"

static_assert(sizeof(TESSALY_FILEINFO) == 24, "file-information record is 24 bytes");
static_assert(offsetof(TESSALY_FILEINFO, dwAttributeMask) == 0, "mask first");
static_assert(offsetof(TESSALY_FILEINFO, dDuration) == 8, "duration after four bytes of padding");
static_assert(offsetof(TESSALY_FILEINFO, dwWidth) == 16, "width after the duration");
static_assert(offsetof(TESSALY_FILEINFO, dwHeight) == 20, "height last");

static_assert(sizeof(TESSALY_MEDIA_INFO) == 3656, "media-information record is 3656 bytes");
static_assert(offsetof(TESSALY_MEDIA_INFO, dwMediaTypeBit) == 0, "media type first");
static_assert(offsetof(TESSALY_MEDIA_INFO, wszCoverArtPath) == 4, "cover art path");
static_assert(offsetof(TESSALY_MEDIA_INFO, wszChannelName) == 4 + 2 * 512, "channel name");
static_assert(offsetof(TESSALY_MEDIA_INFO, wszTitle) == 4 + 2 * 632, "title");
static_assert(offsetof(TESSALY_MEDIA_INFO, wszReleaseDate) == 4 + 2 * 752, "release date");
static_assert(offsetof(TESSALY_MEDIA_INFO, wszDescript) == 4 + 2 * 802, "description");
static_assert(sizeof(TESSALY_MEDIA_INFO::wszDescript) == 2 * 1024, "description holds 1024 units");

static_assert(sizeof(LOGFONTW) == 92, "font record is 92 bytes");
static_assert(offsetof(LOGFONTW, lfItalic) == 20, "byte fields after five longs");
static_assert(offsetof(LOGFONTW, lfFaceName) == 28, "face name after eight bytes");

static_assert(sizeof(TESSALY_PLAYBACK_STATE) == 4, "playback state is a 32-bit enumeration");
static_assert(sizeof(unsigned long) == 4, "the contract's unsigned long is 32 bits");

