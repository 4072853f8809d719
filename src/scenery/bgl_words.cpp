#include "scenery/bgl_words.h"

#include "core/base/run_state.h"
#include "core/base/text.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <stdexcept>

namespace vlt {

constexpr uint64_t kWord = 4;  // bytes

BglWords::BglWords(std::istream& file, size_t window) : m_file(file), m_most(window / kWord)
{
    read(0, m_most);
}

uint64_t BglWords::size()
{
    if (!m_size) {
        m_file.clear();
        m_file.seekg(0, std::ios::end);
        const std::streamoff end = m_file.tellg();
        m_size = end > 0 ? static_cast<uint64_t>(end) / kWord : 0;
        m_place = std::numeric_limits<uint64_t>::max();
    }
    return *m_size;
}

void BglWords::read(uint64_t index, size_t count)
{
    if (m_place != index * kWord) {
        m_file.clear();
        m_file.seekg(static_cast<std::streamoff>(index * kWord));
    }
    m_window.resize(count);
    m_file.read(reinterpret_cast<char*>(m_window.data()), static_cast<std::streamsize>(count * kWord));
    const auto came = static_cast<uint64_t>(std::max<std::streamsize>(m_file.gcount(), 0));
    m_window.resize(came / kWord);
    m_first = index;
    m_place = index * kWord + came;
    if constexpr (std::endian::native == std::endian::big) {
        for (uint32_t& word : m_window) {
            word = word >> 24 | (word >> 8 & 0xFF00) | (word << 8 & 0xFF0000) | word << 24;
        }
    }
}

void BglWords::load(uint64_t index)
{
    if (index >= size()) {
        throw std::out_of_range(format("word {} of {}", index, size()));
    }
    if (gf_stopping()) {
        throw std::out_of_range("the run is to stop");
    }
    read(index, std::min<uint64_t>(m_most, size() - index));
    if (m_window.empty()) {
        throw std::out_of_range(format("word {} can't be read", index));
    }
}

float BglWords::real(uint64_t index)
{
    return std::bit_cast<float>((*this)[index]);
}

uint8_t BglWords::byte(uint64_t offset)
{
    return static_cast<uint8_t>((*this)[offset / kWord] >> offset % kWord * 8);
}

void BglWords::step()
{
    if (++m_steps > size()) {
        throw std::out_of_range(format("more records than fit into {} words", size()));
    }
}

}  // namespace vlt
