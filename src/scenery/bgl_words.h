// A scenery file as a sequence of 32-bit words, read as they are asked for.
//
// One thread per object. Only a window of the file is in memory, so its size doesn't matter. What is asked
// for beyond its end throws std::out_of_range; so does a walk of more steps than a sound file can have, and a
// stop of the run.
#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <vector>

namespace vlt {

class BglWords
{
public:
    // Reads from `file` as far as it can be read, `window` bytes at a time.
    BglWords(std::istream& file, size_t window);

    // Whole words in the file.
    [[nodiscard]] uint64_t size();
    // Whether it has so many; a small number is answered from the window.
    [[nodiscard]] bool has(uint64_t words)
    {
        return words <= m_window.size() || words <= size();
    }
    uint32_t operator[](uint64_t index)
    {
        if (index - m_first >= m_window.size()) {
            load(index);
        }
        return m_window[index - m_first];
    }
    float real(uint64_t index);
    // The byte at this offset in the file.
    uint8_t byte(uint64_t offset);
    // Counts a step of a walk: files whose records lie in each other would be walked for ever.
    void step();

private:
    void load(uint64_t index);
    void read(uint64_t index, size_t count);

    std::istream& m_file;
    size_t m_most = 0;               // words of a window
    std::optional<uint64_t> m_size;  // words, once asked for
    uint64_t m_place = 0;            // byte at which the file reads on
    uint64_t m_first = 0;            // word at which the window begins
    uint64_t m_steps = 0;
    std::vector<uint32_t> m_window;
};

}  // namespace vlt
