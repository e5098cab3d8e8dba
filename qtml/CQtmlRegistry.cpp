#include "qtml/CQtmlRegistry.h"

CQtmlRegistry& CQtmlRegistry::Instance()
{
    static CQtmlRegistry registry;
    return registry;
}

// Steps of 16 keep the handles looking like aligned pointers to code that checks them.
uintptr_t CQtmlRegistry::NewHandle()
{
    std::lock_guard<std::mutex> guard(m_lock);
    m_nextHandle += 16;
    return m_nextHandle;
}

std::shared_ptr<CPortAssociation> CQtmlRegistry::FindPortOfWindow(HWND hWnd)
{
    return m_ports.Find(reinterpret_cast<uintptr_t>(PortOfWindow(hWnd)));
}

GrafPtr CQtmlRegistry::PortOfWindow(HWND hWnd)
{
    if (!hWnd)
        return nullptr;
    const uintptr_t handle = m_ports.FindHandleIf([hWnd](const CPortAssociation& port) { return port.Window() == hWnd; });
    return reinterpret_cast<GrafPtr>(handle);
}

void CQtmlRegistry::SetCurrentPort(GrafPtr port)
{
    std::lock_guard<std::mutex> guard(m_lock);
    m_currentPort = port;
}

HWND CQtmlRegistry::CurrentPortWindow()
{
    GrafPtr port;
    {
        std::lock_guard<std::mutex> guard(m_lock);
        port = m_currentPort;
    }
    auto association = m_ports.Find(reinterpret_cast<uintptr_t>(port));
    return association ? association->Window() : nullptr;
}

int16_t CQtmlRegistry::OpenFile(const std::string& path)
{
    std::lock_guard<std::mutex> guard(m_lock);
    for (int tries = 0; tries < 0x7FFF; ++tries)
    {
        const int16_t ref = m_nextFileRef;
        m_nextFileRef = static_cast<int16_t>(ref == 0x7FFF ? 1 : ref + 1);
        if (m_files.emplace(ref, path).second)
            return ref;
    }
    return 0;
}

bool CQtmlRegistry::FilePath(int16_t ref, std::string* pPath)
{
    std::lock_guard<std::mutex> guard(m_lock);
    auto it = m_files.find(ref);
    if (it == m_files.end())
        return false;
    *pPath = it->second;
    return true;
}

bool CQtmlRegistry::CloseFile(int16_t ref)
{
    std::lock_guard<std::mutex> guard(m_lock);
    return m_files.erase(ref) != 0;
}

void CQtmlRegistry::CloseAll()
{
    for (auto& controller : m_controllers.RemoveAll())
        controller->Close();
    for (auto& movie : m_movies.RemoveAll())
        movie->Close();
    m_importers.RemoveAll();
    for (auto& port : m_ports.RemoveAll())
        port->End();
    std::lock_guard<std::mutex> guard(m_lock);
    m_files.clear();
    m_currentPort = nullptr;
}
