// The files the player plays one after the other, and which of them is current. Past the last
// one the list has ended; files added then become current in turn.
#pragma once

#include <string>
#include <vector>

class CPlaylist
{
public:
    void Add(const std::wstring& path);
    size_t Size() const { return m_files.size(); }
    bool HasCurrent() const { return m_nCurrent < m_files.size(); }
    const std::wstring& Current() const;
    size_t CurrentIndex() const { return m_nCurrent; }

    // Moves on; false when that ended the list.
    bool MoveNext();
    // Moves back, staying at the first file; false when there is nothing to move to.
    bool MovePrevious();

private:
    std::vector<std::wstring> m_files;
    size_t m_nCurrent = 0;
};
