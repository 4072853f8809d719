// A plain value that two threads use without a lock: a relaxed atomic that copies like the value.
//
// Nothing is ordered by it. A late value costs one judgement at most wherever it is used.
#pragma once

#include <atomic>

namespace vlt {

template <typename T>
class SharedValue
{
public:
    SharedValue(T value = T{}) : m_value(value) {}
    SharedValue(const SharedValue& other) : m_value(other.load()) {}
    SharedValue& operator=(const SharedValue& other)
    {
        store(other.load());
        return *this;
    }
    SharedValue& operator=(T value)
    {
        store(value);
        return *this;
    }
    operator T() const
    {
        return load();
    }
    T load() const
    {
        return m_value.load(std::memory_order_relaxed);
    }
    void store(T value)
    {
        m_value.store(value, std::memory_order_relaxed);
    }

private:
    static_assert(std::atomic<T>::is_always_lock_free);
    std::atomic<T> m_value;
};

}  // namespace vlt
