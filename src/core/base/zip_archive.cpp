#include "core/base/zip_archive.h"

#include "core/base/text.h"

#include <zip.h>

#include <array>
#include <stdexcept>

namespace vlt {

struct ZipArchive::Handle {
    zip_t* zip = nullptr;
    ~Handle()
    {
        zip_discard(zip);
    }
};

static std::string lf_openError(int code)
{
    zip_error_t error;
    zip_error_init_with_code(&error, code);
    std::string text = zip_error_strerror(&error);
    zip_error_fini(&error);
    return text;
}

ZipArchive::ZipArchive(const std::filesystem::path& path) : m_handle(std::make_unique<Handle>())
{
    int code = 0;
    m_handle->zip = zip_open(path.string().c_str(), ZIP_RDONLY, &code);
    if (m_handle->zip == nullptr) {
        throw std::runtime_error(lf_openError(code));
    }
}

ZipArchive::~ZipArchive() = default;

std::vector<std::string> ZipArchive::entries() const
{
    std::vector<std::string> names;
    const zip_int64_t count = zip_get_num_entries(m_handle->zip, 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        if (const char* name = zip_get_name(m_handle->zip, static_cast<zip_uint64_t>(i), ZIP_FL_ENC_GUESS)) {
            names.emplace_back(name);
        }
    }
    return names;
}

void ZipArchive::read(const std::string& entry, uint64_t limit,
                      const std::function<void(std::span<const char>)>& sink) const
{
    const std::unique_ptr<zip_file_t, int (*)(zip_file_t*)> file(zip_fopen(m_handle->zip, entry.c_str(), 0),
                                                                 zip_fclose);
    if (!file) {
        throw std::runtime_error(format("{}: {}", entry, zip_strerror(m_handle->zip)));
    }
    std::array<char, 65536> piece{};
    uint64_t total = 0;
    while (true) {
        const zip_int64_t got = zip_fread(file.get(), piece.data(), piece.size());
        if (got < 0) {
            throw std::runtime_error(format("{}: {}", entry, zip_file_strerror(file.get())));
        }
        if (got == 0) {
            return;
        }
        total += static_cast<uint64_t>(got);
        if (total > limit) {
            throw std::runtime_error(format("{}: larger than {} bytes", entry, limit));
        }
        sink(std::span(piece).first(static_cast<size_t>(got)));
    }
}

void gf_writeZip(const std::filesystem::path& path,
                 const std::vector<std::pair<std::string, std::string>>& entries)
{
    int code = 0;
    zip_t* zip = zip_open(path.string().c_str(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (zip == nullptr) {
        throw std::runtime_error(lf_openError(code));
    }
    for (const auto& [name, content] : entries) {
        zip_source_t* source = zip_source_buffer(zip, content.data(), content.size(), 0);
        if (source == nullptr || zip_file_add(zip, name.c_str(), source, ZIP_FL_ENC_UTF_8) < 0) {
            zip_source_free(source);
            const std::string text = zip_strerror(zip);
            zip_discard(zip);
            throw std::runtime_error(text);
        }
    }
    if (zip_close(zip) != 0) {
        const std::string text = zip_strerror(zip);
        zip_discard(zip);
        throw std::runtime_error(text);
    }
}

}  // namespace vlt
