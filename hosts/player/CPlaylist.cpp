#include "hosts/player/CPlaylist.h"

void CPlaylist::Add(const std::wstring& path)
{
    m_files.push_back(path);
}

const std::wstring& CPlaylist::Current() const
{
    static const std::wstring empty;
    return HasCurrent() ? m_files[m_nCurrent] : empty;
}

bool CPlaylist::MoveNext()
{
    if (m_nCurrent < m_files.size())
        ++m_nCurrent;
    return HasCurrent();
}

bool CPlaylist::MovePrevious()
{
    if (m_files.empty())
        return false;
    if (m_nCurrent > 0)
        --m_nCurrent;
    if (m_nCurrent >= m_files.size())
        m_nCurrent = m_files.size() - 1;
    return true;
}
