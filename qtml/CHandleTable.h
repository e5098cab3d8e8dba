// Live objects of one kind, found by the handle the toolbox's caller holds. A caller on one thread
// may dispose of an object while another thread is using it: lookups hand out shared references,
// so a disposed object lives on until the last user lets go, and a stale handle finds nothing.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

template <class T>
class CHandleTable
{
public:
    void Add(uintptr_t handle, std::shared_ptr<T> object)
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_objects[handle] = std::move(object);
    }

    std::shared_ptr<T> Find(uintptr_t handle) const
    {
        std::lock_guard<std::mutex> guard(m_lock);
        auto it = m_objects.find(handle);
        return it == m_objects.end() ? nullptr : it->second;
    }

    template <class Predicate>
    uintptr_t FindHandleIf(Predicate predicate) const
    {
        std::lock_guard<std::mutex> guard(m_lock);
        for (const auto& entry : m_objects)
        {
            if (predicate(*entry.second))
                return entry.first;
        }
        return 0;
    }

    std::shared_ptr<T> Remove(uintptr_t handle)
    {
        std::lock_guard<std::mutex> guard(m_lock);
        auto it = m_objects.find(handle);
        if (it == m_objects.end())
            return nullptr;
        std::shared_ptr<T> object = std::move(it->second);
        m_objects.erase(it);
        return object;
    }

    std::vector<std::shared_ptr<T>> RemoveAll()
    {
        std::lock_guard<std::mutex> guard(m_lock);
        std::vector<std::shared_ptr<T>> objects;
        for (auto& entry : m_objects)
            objects.push_back(std::move(entry.second));
        m_objects.clear();
        return objects;
    }

private:
    mutable std::mutex m_lock;
    std::map<uintptr_t, std::shared_ptr<T>> m_objects;
};
