// A text that several threads use: it is copied in and out under a lock of its own, under which nothing is
// taken.
#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <utility>

namespace vlt {

class SharedText
{
public:
    SharedText() = default;
    explicit SharedText(std::string text) : m_text(std::move(text)) {}
    SharedText(const SharedText& other) : m_text(other.load()) {}
    SharedText& operator=(const SharedText& other)
    {
        store(other.load());
        return *this;
    }
    SharedText& operator=(std::string_view text)
    {
        store(std::string(text));
        return *this;
    }
    operator std::string() const
    {
        return load();
    }
    std::string load() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_text;
    }
    void store(std::string text)
    {
        const std::scoped_lock lock(m_mutex);
        m_text = std::move(text);
    }
    [[nodiscard]] bool empty() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_text.empty();
    }
    bool operator==(std::string_view text) const
    {
        const std::scoped_lock lock(m_mutex);
        return m_text == text;
    }

private:
    mutable std::mutex m_mutex;
    std::string m_text;  // [m_mutex]
};

}  // namespace vlt
