// Every live object of the layer, by the handle its caller holds: movies, controllers, graphics
// importers, port associations and open movie files, and the current port. Handles are numbers
// that are never reused, so a stale handle finds nothing rather than another object.
#pragma once

#include <windows.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "qtml/CHandleTable.h"
#include "qtml/CMovie.h"
#include "qtml/CMovieController.h"
#include "qtml/CPicture.h"
#include "qtml/CPortAssociation.h"
#include "qtml/QTML.h"

class CQtmlRegistry
{
public:
    static CQtmlRegistry& Instance();

    uintptr_t NewHandle();

    CHandleTable<CMovie>& Movies() { return m_movies; }
    CHandleTable<CMovieController>& Controllers() { return m_controllers; }
    CHandleTable<CPicture>& Importers() { return m_importers; }
    CHandleTable<CPortAssociation>& Ports() { return m_ports; }

    std::shared_ptr<CPortAssociation> FindPortOfWindow(HWND hWnd);
    GrafPtr PortOfWindow(HWND hWnd);
    void SetCurrentPort(GrafPtr port);
    // The window of the current port, null when there is none or it has ended.
    HWND CurrentPortWindow();

    // 0 when every reference number is taken.
    int16_t OpenFile(const std::string& path);
    bool FilePath(int16_t ref, std::string* pPath);
    bool CloseFile(int16_t ref);

    // Ends every live object, as the layer's shut-down must before GDI+ goes.
    void CloseAll();

private:
    CQtmlRegistry() = default;

    CHandleTable<CMovie> m_movies;
    CHandleTable<CMovieController> m_controllers;
    CHandleTable<CPicture> m_importers;
    CHandleTable<CPortAssociation> m_ports;

    std::mutex m_lock;
    uintptr_t m_nextHandle = 0x1000;
    GrafPtr m_currentPort = nullptr;
    std::map<int16_t, std::string> m_files;
    int16_t m_nextFileRef = 1;
};
