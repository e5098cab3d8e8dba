// Window messages between the engine's own objects. Back-ends post them to the dispatcher's
// hidden window (or to their own windows); none of them reaches the host.
#pragma once

#include <windows.h>

constexpr UINT WM_QT_ATTACH_PORT = WM_USER + 100;
constexpr UINT WM_DSHOW_GRAPH_NOTIFY = WM_USER + 101;
constexpr UINT WM_DSHOW_PLAYBACK_COMPLETE = WM_USER + 102;
constexpr UINT WM_DSHOW_PLAYBACK_ERROR = WM_USER + 103;
constexpr UINT WM_QT_PLAYBACK_COMPLETE = WM_USER + 110;
constexpr UINT WM_WMP_PLAYBACK_COMPLETE = WM_USER + 113;
constexpr UINT WM_WMP_PLAYBACK_ERROR = WM_USER + 114;
constexpr UINT WM_WMP_EVENT = WM_USER + 120;
constexpr UINT WM_CDDA_GRAPH_NOTIFY = WM_USER + 130;
constexpr UINT WM_CDDA_PLAYBACK_COMPLETE = WM_USER + 131;
constexpr UINT WM_CDDA_TRACK_COMPLETE = WM_USER + 132;
